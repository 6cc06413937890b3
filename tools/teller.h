// Tells a story that checks itself.
#pragma once

#include <chrono>
#include <string>

#include "tools/session.h"

namespace norvik::qel::tool {

// What returns bool is true while the story goes as it should: the first that is not ends it.
//
// Threads: the main thread.
class Teller {
 public:
  explicit Teller(Session& session) : session_(session) {}
  Teller(const Teller&) = delete;
  Teller& operator=(const Teller&) = delete;

  // Scenes are numbered.
  void Scene(const std::string& title);
  void Say(const std::string& text) { session_.output().Say(text); }
  // Programs do not need it.
  void Explain(const std::string& text) { session_.output().Explain("   " + text); }

  // The callback has said so, or says it in time.
  bool Hear(const Property& property, const Value& value);
  // It has happened so often, or does in time.
  bool See(DeviceEvent::Kind kind, std::string_view service, int count, const std::string& what);
  // For whoever reads along; events go on being shown.
  bool Pause(std::chrono::milliseconds pause);
  bool Check(bool condition, const std::string& what);
  // No callback has run on the thread that tells.
  bool CheckThreads();

  // Somebody wants the program to end.
  bool stopped() const { return stopped_; }
  // Why the story did not go as it should; empty also when it was stopped.
  const std::string& failure() const { return failure_; }
  const Observed& observed() const { return session_.observed(); }
  const std::shared_ptr<EventQueue>& events() { return session_.events(); }

 private:
  template <typename Condition>
  bool Await(Condition condition, const std::string& what);

  Session& session_;
  int scene_ = 0;
  bool stopped_ = false;
  std::string failure_;
};

}  // namespace norvik::qel::tool
