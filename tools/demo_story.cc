#include "tools/demo_story.h"

#include <stdlib.h>

#include <chrono>
#include <string>
#include <thread>

#include "tools/battery_client.h"

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;
using Kind = DeviceEvent::Kind;

// The library may wait five seconds for the service in one attempt to link.
constexpr std::chrono::seconds kLimit = 15s;

// Each scene is true while the story goes as it should; the first that is not ends it.
class Story {
 public:
  Story(Session& session, BatteryDriver& phone)
      : session_(session), phone_(phone), client_(session.events()) {}
  // As BatteryLife does.
  ~Story() { phone_.StartService(); }
  Story(const Story&) = delete;
  Story& operator=(const Story&) = delete;

  int Tell();

 private:
  bool Register();
  bool Charge();
  bool Dock();
  bool SurviveADeath();
  bool SurviveARefusal();
  bool Deregister();

  bool Hear(const BatteryProperty& property, const Value& value);
  bool See(Kind kind, int count, const std::string& what);
  bool Pause(std::chrono::milliseconds pause);
  bool Check(bool condition, const std::string& what);
  template <typename Condition>
  bool Await(Condition condition, const std::string& what);
  int Summarize(bool success);

  const Observed& observed() const { return session_.observed(); }
  Output& output() { return session_.output(); }

  Session& session_;
  BatteryDriver& phone_;
  BatteryClient client_;
  const Session::Clock::time_point begin_ = Session::Clock::now();
  bool stopped_ = false;
  std::string failure_;
};

bool Story::Register() {
  output().Heading("1. A client registers");
  output().Say("The simulated phone runs a health service; its battery is at 50 %.");
  output().Say("This program is a client: it registers a callback for each of four properties.");
  output().Say("Every value below arrived in that callback, on a thread of the library.");
  output().Explain("   Lines with ** tell what happens on the phone; no client sees those.");
  return Check(client_.Register(), "the registration was refused") && Hear(kBatteryLevel, 50) &&
         Hear(kBatteryCycleCount, 10) && Hear(kWirelessCharger, false) &&
         Hear(kDockCharger, false) &&
         Check(!observed().threads().contains(std::this_thread::get_id()),
               "a callback ran on the client's own thread") &&
         Pause(1200ms);
}

bool Story::Charge() {
  output().Heading("2. Somebody puts the phone on its wireless charger");
  phone_.SetWirelessOnline(true);
  if (!Hear(kWirelessCharger, true)) return false;
  output().Say("It charges: the level rises.");
  for (int level = 51; level <= 53; ++level) {
    if (!Pause(600ms)) return false;
    phone_.SetLevel(level);
    if (!Hear(kBatteryLevel, level)) return false;
  }
  if (!Pause(600ms)) return false;
  phone_.SetWirelessOnline(false);
  return Hear(kWirelessCharger, false) && Pause(800ms);
}

bool Story::Dock() {
  output().Heading("3. The phone is put into a dock, and taken out again");
  phone_.SetDockOnline(true);
  if (!Hear(kDockCharger, true) || !Pause(800ms)) return false;
  phone_.SetDockOnline(false);
  return Hear(kDockCharger, false) && Pause(800ms);
}

bool Story::SurviveADeath() {
  output().Heading("4. The health service dies");
  phone_.KillService();
  if (!See(Kind::kServiceDied, 1, "the death of the service")) return false;
  output().Say("The level goes on falling, but nobody is there to tell the client. In the");
  output().Say("background the library tries to link again: ten attempts, 200 ms apart.");
  phone_.SetLevel(47);
  if (!Pause(1000ms)) return false;
  output().Say("A new service comes up. Once linked, the client hears what it has missed.");
  phone_.StartService();
  return See(Kind::kCallbackRegistered, 2, "the second link") && Hear(kBatteryLevel, 47) &&
         Pause(1000ms);
}

bool Story::SurviveARefusal() {
  output().Heading("5. It dies again, and its successor refuses the first registration");
  phone_.KillService();
  if (!See(Kind::kServiceDied, 2, "the second death of the service")) return false;
  phone_.SetLevel(46);
  phone_.RefuseNextRegistration();
  phone_.StartService();
  if (!See(Kind::kCallRefused, 1, "the refusal")) return false;
  output().Say("The library logs a warning on standard error and tries once more.");
  return See(Kind::kCallbackRegistered, 3, "the third link") && Hear(kBatteryLevel, 46) &&
         Pause(1000ms);
}

bool Story::Deregister() {
  output().Heading("6. The client deregisters");
  output().Say("With its last client the library leaves the service. The level falls once more,");
  output().Say("and the client hears nothing of it.");
  const int heard = observed().callbacks();
  if (!Check(client_.Deregister(), "the deregistration was refused")) return false;
  if (!See(Kind::kCallbackUnregistered, 1, "the end of the link")) return false;
  phone_.SetLevel(45);
  return Pause(500ms) &&
         Check(observed().callbacks() == heard, "a callback came after the deregistration");
}

bool Story::Hear(const BatteryProperty& property, const Value& value) {
  return Await([&] { return observed().value(property) == value; },
               "the callback for " + std::string(property.name) + ": " + InWords(property, value));
}

bool Story::See(Kind kind, int count, const std::string& what) {
  return Await([&] { return observed().count(kind) >= count; }, what);
}

// For whoever reads along; events go on being shown.
bool Story::Pause(std::chrono::milliseconds pause) {
  stopped_ = session_.WaitFor([] { return false; }, pause) == Session::Wake::kStop;
  return !stopped_;
}

bool Story::Check(bool condition, const std::string& what) {
  if (!condition) failure_ = what;
  return condition;
}

template <typename Condition>
bool Story::Await(Condition condition, const std::string& what) {
  const Session::Wake wake = session_.WaitFor(condition, kLimit);
  stopped_ = wake == Session::Wake::kStop;
  if (wake == Session::Wake::kTime) {
    failure_ = "waited " + std::to_string(kLimit.count()) + " s in vain for " + what;
  }
  return wake == Session::Wake::kEvent;
}

int Story::Tell() {
  const bool success =
      Register() && Charge() && Dock() && SurviveADeath() && SurviveARefusal() && Deregister();
  return Summarize(success);
}

int Story::Summarize(bool success) {
  const auto seconds = std::chrono::round<std::chrono::seconds>(Session::Clock::now() - begin_);
  const std::string counts =
      Counted(observed().callbacks(), "callback") + ", " +
      Counted(observed().count(Kind::kServiceDied), "death") + " of the service, " +
      Counted(observed().count(Kind::kCallRefused), "refusal") + " and " +
      Counted(observed().relinks(), "relink") + " in " + std::to_string(seconds.count()) + " s";
  if (success) {
    output().Summary(true, "Demo OK: all went as told; observed " + counts + ".", observed());
    return EXIT_SUCCESS;
  }
  if (stopped_) {
    output().Summary(false, "Demo stopped before its end; observed " + counts + ".", observed());
    return EXIT_SUCCESS;
  }
  output().Summary(false, "Demo FAILED: " + failure_ + "; observed " + counts + ".", observed());
  return EXIT_FAILURE;
}

}  // namespace

int TellStory(Session& session, BatteryDriver& driver) {
  return Story(session, driver).Tell();
}

}  // namespace norvik::qel::tool
