#include "tools/teller.h"

#include <thread>

namespace norvik::qel::tool {

namespace {

// The library may wait five seconds for the service in one attempt to link.
constexpr std::chrono::seconds kLimit(15);

}  // namespace

void Teller::Scene(const std::string& title) {
  session_.output().Heading(std::to_string(++scene_) + ". " + title);
}

bool Teller::Hear(const Property& property, const Value& value) {
  return Await([&] { return observed().value(property) == value; },
               "the callback for " + std::string(property.name) + ": " + InWords(property, value));
}

bool Teller::See(DeviceEvent::Kind kind, std::string_view service, int count,
                 const std::string& what) {
  return Await([&] { return observed().count(kind, service) >= count; }, what);
}

bool Teller::Pause(std::chrono::milliseconds pause) {
  stopped_ = session_.WaitFor([] { return false; }, pause) == Session::Wake::kStop;
  return !stopped_;
}

bool Teller::Check(bool condition, const std::string& what) {
  if (!condition) failure_ = what;
  return condition;
}

bool Teller::CheckThreads() {
  return Check(!observed().threads().contains(std::this_thread::get_id()),
               "a callback ran on the client's own thread");
}

template <typename Condition>
bool Teller::Await(Condition condition, const std::string& what) {
  const Session::Wake wake = session_.WaitFor(condition, kLimit);
  stopped_ = wake == Session::Wake::kStop;
  if (wake == Session::Wake::kTime) {
    failure_ = "waited " + std::to_string(kLimit.count()) + " s in vain for " + what;
  }
  return wake == Session::Wake::kEvent;
}

}  // namespace norvik::qel::tool
