// What has really been seen: the demo claims nothing else.
#pragma once

#include <map>
#include <set>
#include <string>
#include <thread>

#include "tools/event.h"

namespace norvik::qel::tool {

// Threads: the main thread.
class Observed {
 public:
  void Note(const Event& event);

  int callbacks() const { return callbacks_; }
  int count(DeviceEvent::Kind kind) const;
  // Links after the first.
  int relinks() const;
  // As the callbacks heard it last.
  Value value(const Property& property) const;
  // The threads that callbacks ran on.
  const std::set<std::thread::id>& threads() const { return threads_; }

 private:
  int callbacks_ = 0;
  std::map<DeviceEvent::Kind, int> device_events_;
  std::map<const Property*, Value> values_;
  std::set<std::thread::id> threads_;
};

// "1 death", "2 deaths".
std::string Counted(int count, const std::string& noun);

}  // namespace norvik::qel::tool
