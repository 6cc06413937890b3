#include "tools/sensor_story.h"

#include <utility>

#include "tools/sensor_client.h"

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;
using Kind = DeviceEvent::Kind;

class SensorStory {
 public:
  SensorStory(Teller& teller, SensorDriver& phone)
      : teller_(teller), phone_(phone), client_(teller.events()) {}

  bool RegisterEarly();
  bool Unfold();
  bool TakeACall();
  bool SnapShut();
  bool Deregister();

 private:
  int heard() const { return CallbacksOf(kSensorProperties, teller_.observed()); }

  Teller& teller_;
  SensorDriver& phone_;
  SensorClient client_;
};

bool SensorStory::RegisterEarly() {
  teller_.Scene("A client registers for the sensors before their service is up");
  teller_.Say("Both registrations succeed. The library says in a warning on standard error that");
  teller_.Say("the service is not ready, and looks for it once a second. Nothing is heard yet.");
  if (!teller_.Check(client_.Register() && client_.absent_sensors().empty(),
                     "a registration was refused")) {
    return false;
  }
  if (!teller_.Pause(600ms)) return false;
  if (!teller_.Check(heard() == 0, "a sensor was heard before there was a service")) return false;
  teller_.Say("The service comes up. At its next look the library finds it.");
  phone_.StartSensorService();
  return teller_.See(Kind::kServiceStarted, kSensorService, 1, "the start of the service") &&
         teller_.See(Kind::kCallbackRegistered, kSensorService, 2, "both sensors' enabling") &&
         teller_.Hear(kProximity, 5) && teller_.Hear(kHingeAngle, 0) && teller_.CheckThreads() &&
         teller_.Pause(500ms);
}

bool SensorStory::Unfold() {
  teller_.Scene("Somebody unfolds the phone");
  teller_.Say("The hinge reports 29.5, 60, 89.6, 135.2 and 180 degrees. The client hears whole");
  teller_.Say("numbers, cut off: 89.6 is 89.");
  constexpr std::pair<float, int> kAngles[] = {
      {29.5F, 29}, {60, 60}, {89.6F, 89}, {135.2F, 135}, {180, 180}};
  for (const auto& [reported, heard] : kAngles) {
    phone_.SetHingeAngles({reported});
    if (!teller_.Hear(kHingeAngle, heard) || !teller_.Pause(250ms)) return false;
  }
  return teller_.Pause(250ms);
}

bool SensorStory::TakeACall() {
  teller_.Scene("It is held to an ear for a call, and taken away again");
  phone_.SetProximity(0);
  if (!teller_.Hear(kProximity, 0) || !teller_.Pause(500ms)) return false;
  phone_.SetProximity(5);
  return teller_.Hear(kProximity, 5) && teller_.Pause(500ms);
}

bool SensorStory::SnapShut() {
  teller_.Scene("It is snapped shut");
  teller_.Say(
      "The hinge reports 18 angles in one delivery, the last one 0. What comes faster than");
  teller_.Say("the client is called folds into fewer calls; the last reading is always heard.");
  std::vector<float> angles;
  for (int angle = 170; angle >= 0; angle -= 10) angles.push_back(static_cast<float>(angle));
  const int before = teller_.observed().callbacks(kHingeAngle);
  phone_.SetHingeAngles(angles);
  if (!teller_.Hear(kHingeAngle, 0) || !teller_.Pause(500ms)) return false;
  const int calls = teller_.observed().callbacks(kHingeAngle) - before;
  teller_.Say("Here that took " + Counted(calls, "call") + ".");
  return teller_.Check(calls <= static_cast<int>(angles.size()),
                       "there were more calls than readings") &&
         teller_.Check(teller_.observed().value(kHingeAngle) == Value(0),
                       "an older reading came last");
}

bool SensorStory::Deregister() {
  teller_.Scene("The client deregisters from the sensors");
  teller_.Say(
      "The last client's leaving disables a sensor. The phone is opened once more, and the");
  teller_.Say("client hears nothing of it.");
  const int before = heard();
  if (!teller_.Check(client_.Deregister(), "the deregistration was refused")) return false;
  if (!teller_.See(Kind::kCallbackUnregistered, kSensorService, 2, "both sensors' disabling")) {
    return false;
  }
  phone_.SetHingeAngles({90});
  return teller_.Pause(300ms) &&
         teller_.Check(heard() == before, "a callback came after the deregistration");
}

}  // namespace

bool TellOfTheSensors(Teller& teller, SensorDriver& phone) {
  SensorStory story(teller, phone);
  return story.RegisterEarly() && story.Unfold() && story.TakeACall() && story.SnapShut() &&
         story.Deregister();
}

}  // namespace norvik::qel::tool
