#include "tools/battery_story.h"

#include "tools/battery_client.h"

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;
using Kind = DeviceEvent::Kind;

class BatteryStory {
 public:
  BatteryStory(Teller& teller, BatteryDriver& phone)
      : teller_(teller), phone_(phone), client_(teller.events()) {}
  // As BatteryLife does.
  ~BatteryStory() { phone_.StartService(); }
  BatteryStory(const BatteryStory&) = delete;
  BatteryStory& operator=(const BatteryStory&) = delete;

  bool Register();
  bool Charge();
  bool Dock();
  bool SurviveADeath();
  bool SurviveARefusal();
  bool Deregister();

 private:
  Teller& teller_;
  BatteryDriver& phone_;
  BatteryClient client_;
};

bool BatteryStory::Register() {
  teller_.Scene("A client registers");
  teller_.Say("The simulated phone runs a health service; its battery is at 50 %.");
  teller_.Say("This program is a client: it registers a callback for each of four properties.");
  teller_.Say("Every value below arrived in that callback, on a thread of the library.");
  teller_.Explain("Lines with ** tell what happens on the phone; no client sees those.");
  return teller_.Check(client_.Register(), "the registration was refused") &&
         teller_.Hear(kBatteryLevel, 50) && teller_.Hear(kBatteryCycleCount, 10) &&
         teller_.Hear(kWirelessCharger, false) && teller_.Hear(kDockCharger, false) &&
         teller_.CheckThreads() && teller_.Pause(700ms);
}

bool BatteryStory::Charge() {
  teller_.Scene("Somebody puts the phone on its wireless charger");
  phone_.SetWirelessOnline(true);
  if (!teller_.Hear(kWirelessCharger, true)) return false;
  teller_.Say("It charges: the level rises.");
  for (int level = 51; level <= 53; ++level) {
    if (!teller_.Pause(300ms)) return false;
    phone_.SetLevel(level);
    if (!teller_.Hear(kBatteryLevel, level)) return false;
  }
  if (!teller_.Pause(300ms)) return false;
  phone_.SetWirelessOnline(false);
  return teller_.Hear(kWirelessCharger, false) && teller_.Pause(400ms);
}

bool BatteryStory::Dock() {
  teller_.Scene("The phone is put into a dock, and taken out again");
  phone_.SetDockOnline(true);
  if (!teller_.Hear(kDockCharger, true) || !teller_.Pause(400ms)) return false;
  phone_.SetDockOnline(false);
  return teller_.Hear(kDockCharger, false) && teller_.Pause(400ms);
}

bool BatteryStory::SurviveADeath() {
  teller_.Scene("The health service dies");
  phone_.KillService();
  if (!teller_.See(Kind::kServiceDied, kHealthService, 1, "the death of the service")) return false;
  teller_.Say("The level goes on falling, but nobody is there to tell the client. In the");
  teller_.Say("background the library tries to link again: ten attempts, 200 ms apart.");
  phone_.SetLevel(47);
  if (!teller_.Pause(600ms)) return false;
  teller_.Say("A new service comes up. Once linked, the client hears what it has missed.");
  phone_.StartService();
  return teller_.See(Kind::kCallbackRegistered, kHealthService, 2, "the second link") &&
         teller_.Hear(kBatteryLevel, 47) && teller_.Pause(500ms);
}

bool BatteryStory::SurviveARefusal() {
  teller_.Scene("It dies again, and its successor refuses the first registration");
  phone_.KillService();
  if (!teller_.See(Kind::kServiceDied, kHealthService, 2, "the second death of the service"))
    return false;
  phone_.SetLevel(46);
  phone_.RefuseNextRegistration();
  phone_.StartService();
  if (!teller_.See(Kind::kCallRefused, kHealthService, 1, "the refusal")) return false;
  teller_.Say("The library logs a warning on standard error and tries once more.");
  return teller_.See(Kind::kCallbackRegistered, kHealthService, 3, "the third link") &&
         teller_.Hear(kBatteryLevel, 46) && teller_.Pause(500ms);
}

bool BatteryStory::Deregister() {
  teller_.Scene("The client deregisters");
  teller_.Say("With its last client the library leaves the service. The level falls once more,");
  teller_.Say("and the client hears nothing of it.");
  const int heard = teller_.observed().callbacks();
  if (!teller_.Check(client_.Deregister(), "the deregistration was refused")) return false;
  if (!teller_.See(Kind::kCallbackUnregistered, kHealthService, 1, "the end of the link"))
    return false;
  phone_.SetLevel(45);
  return teller_.Pause(300ms) && teller_.Check(teller_.observed().callbacks() == heard,
                                               "a callback came after the deregistration");
}

}  // namespace

bool TellOfTheBattery(Teller& teller, BatteryDriver& phone) {
  BatteryStory story(teller, phone);
  return story.Register() && story.Charge() && story.Dock() && story.SurviveADeath() &&
         story.SurviveARefusal() && story.Deregister();
}

}  // namespace norvik::qel::tool
