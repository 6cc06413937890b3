#include "tools/thermal_story.h"

#include <string>
#include <utility>
#include <vector>

#include "tools/thermal_client.h"

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;
using Kind = DeviceEvent::Kind;

using Readings = std::vector<std::pair<Property, Value>>;

std::string InWords(const Readings& readings) {
  std::string text = "It reads: ";
  for (size_t i = 0; i < readings.size(); ++i) {
    const auto& [property, value] = readings[i];
    text += (i > 0 ? ", " : "") + std::string(property.name) + " " + tool::InWords(property, value);
  }
  return text + ".";
}

class ThermalStory {
 public:
  ThermalStory(Teller& teller, ThermalDriver& phone)
      : teller_(teller), phone_(phone), client_(teller.events()) {}

  bool RegisterEarly();
  bool HeatUp();
  bool StrainTheBattery();
  bool SurviveACrash();
  bool CoolDown();
  bool Deregister();

 private:
  // Sets both temperatures; the client hears of the severity, and reads what was set.
  bool Heat(float skin, float cpu, Severity severity);
  int heard() const { return CallbacksOf(kThermalProperties, teller_.observed()); }

  Teller& teller_;
  ThermalDriver& phone_;
  ThermalClient client_;
};

bool ThermalStory::RegisterEarly() {
  teller_.Scene("A client registers for the heat before the thermal service is up");
  teller_.Say("It wants to know how much the phone throttles: for the skin, which is what a hand");
  teller_.Say("feels, and for the current of the battery. Both registrations succeed and wait;");
  teller_.Say("the library looks for the service once a second.");
  if (!teller_.Check(client_.Register(kSkin) && client_.Register(kAudioCurrent),
                     "a registration was refused")) {
    return false;
  }
  if (!teller_.Pause(600ms)) return false;
  if (!teller_.Check(heard() == 0, "a severity was heard before there was a service")) return false;
  phone_.StartThermalService();
  return teller_.See(Kind::kServiceStarted, kThermalService, 1, "the start of the service") &&
         teller_.See(Kind::kCallbackRegistered, kThermalService, 2, "both registrations") &&
         teller_.Hear(kSkin, Severity::kNone) && teller_.Hear(kAudioCurrent, Severity::kNone) &&
         teller_.CheckThreads() && teller_.Pause(500ms);
}

bool ThermalStory::Heat(float skin, float cpu, Severity severity) {
  static const std::vector<std::string> kNames = {"skin", "cpu"};
  phone_.SetTemperature("cpu", cpu, Severity::kNone);  // nobody has registered for it
  phone_.SetTemperature("skin", skin, severity);
  if (!teller_.Hear(kSkin, severity)) return false;
  const auto values = client_.ReadTemperatures(kNames);
  if (!teller_.Check(values.has_value(), "the temperatures could not be read")) return false;
  Readings readings;
  for (size_t i = 0; i < kNames.size(); ++i) {
    readings.push_back({{.key = kNames[i], .name = kNames[i], .unit = kCelsius}, (*values)[i]});
  }
  teller_.Say(InWords(readings));
  return teller_.Check(*values == std::vector<Value>{skin, cpu},
                       "the temperatures read are not those of the phone") &&
         teller_.Pause(500ms);
}

bool ThermalStory::HeatUp() {
  teller_.Scene("A long video call heats the phone, and it throttles");
  teller_.Say("At each callback the client reads the temperatures that it cares about, with one");
  teller_.Say("call to the service.");
  return Heat(36.5F, 71, Severity::kLight) && Heat(41.2F, 79.5F, Severity::kModerate) &&
         Heat(46, 84.3F, Severity::kSevere);
}

bool ThermalStory::StrainTheBattery() {
  teller_.Scene("The loudspeaker draws more current than the battery likes");
  teller_.Say("The client hears it, and asks how near the limits of current and voltage are.");
  phone_.SetSeverity("AUDIO_voltage", Severity::kLight);
  phone_.SetSeverity("AUDIO_current", Severity::kModerate);
  if (!teller_.Hear(kAudioCurrent, Severity::kModerate)) return false;
  const auto limits = client_.ReadLimits();
  if (!teller_.Check(limits.has_value(), "the limits could not be read")) return false;
  Readings readings;
  for (size_t i = 0; i < limits->size(); ++i) {
    readings.push_back({*kChargeLimitProperties[i], (*limits)[i]});
  }
  teller_.Say(InWords(readings));
  return teller_.Check(
             *limits == std::vector<Severities>{{Severity::kModerate}, {Severity::kLight}},
             "the limits read are not those of the phone") &&
         teller_.Pause(500ms);
}

bool ThermalStory::SurviveACrash() {
  teller_.Scene("The thermal service crashes, and a new one takes its place");
  teller_.Say("The library looks for the new one in the background, five times, 30 ms apart, and");
  teller_.Say(
      "registers with it again. The client need not do anything: it hears the next change.");
  const int before = heard();
  phone_.KillThermalService();
  phone_.StartThermalService();
  if (!teller_.See(Kind::kServiceDied, kThermalService, 1, "the death of the service") ||
      !teller_.See(Kind::kCallbackRegistered, kThermalService, 4, "both registrations anew") ||
      !teller_.Pause(500ms)) {
    return false;
  }
  return teller_.Check(heard() == before, "something was heard before the next change") &&
         Heat(50.4F, 90, Severity::kCritical);
}

bool ThermalStory::CoolDown() {
  teller_.Scene("The call ends, and the phone cools down");
  phone_.SetSeverity("AUDIO_voltage", Severity::kNone);
  phone_.SetSeverity("AUDIO_current", Severity::kNone);
  return teller_.Hear(kAudioCurrent, Severity::kNone) && Heat(40.7F, 52.2F, Severity::kModerate) &&
         Heat(31.1F, 41, Severity::kNone);
}

bool ThermalStory::Deregister() {
  teller_.Scene("The client deregisters from the heat");
  teller_.Say("The phone gets warm once more, and the client hears nothing of it.");
  const int before = heard();
  if (!teller_.Check(client_.Deregister(), "the deregistration was refused") ||
      !teller_.See(Kind::kCallbackUnregistered, kThermalService, 2, "the end of both")) {
    return false;
  }
  phone_.SetTemperature("skin", 35.8F, Severity::kLight);
  return teller_.Pause(300ms) &&
         teller_.Check(heard() == before, "a callback came after the deregistration");
}

}  // namespace

bool TellOfTheHeat(Teller& teller, ThermalDriver& phone) {
  ThermalStory story(teller, phone);
  return story.RegisterEarly() && story.HeatUp() && story.StrainTheBattery() &&
         story.SurviveACrash() && story.CoolDown() && story.Deregister();
}

}  // namespace norvik::qel::tool
