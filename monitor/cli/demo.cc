// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <initializer_list>
#include <optional>
#include <sstream>
#include <string_view>

#include "cli/commands.h"
#include "cli/session.h"
#include "clients/battery_client.h"
#include "clients/sensor_client.h"
#include "clients/sensor_readings.h"
#include "clients/thermal_client.h"
#include "recording/recorder.h"
#include "recording/recording_reader.h"
#include "scenario/demo_scenario.h"
#include "scenario/playback.h"

namespace norvik::qel::monitor {

namespace {

// What the callbacks have told.
template <typename Properties>
std::string Findings(const Properties& properties, const Observed& observed) {
  std::string text;
  for (const Property* property : properties) {
    text +=
        "; " + std::string(property->name) + " " + InWords(*property, observed.value(*property));
  }
  return text;
}

void SayWhatIsMissing(Session& session) {
  const Observed& observed = session.observed();
  if (CallbacksOf(kBatteryProperties, observed) == 0) return;  // Stopped early: nothing is known.
  if (observed.value(kBatteryLevel) == Value()) {
    session.output().Say("No battery level is known: this device has no battery, or hides it.");
  }
  if (observed.value(kWirelessCharger) == Value(false) &&
      observed.value(kDockCharger) == Value(false)) {
    session.output().Say("No wireless charger and no dock charger is online.");
  }
}

// What is wrong, or nothing.
std::string ObserveBattery(BatteryClient& client, Session& session,
                           Session::Clock::time_point until) {
  if (!client.Register()) return "a registration was refused";
  const auto heard = [&] { return CallbacksOf(kBatteryProperties, session.observed()) > 0; };
  const auto wake = session.WaitFor(heard, until - Session::Clock::now());
  return wake == Session::Wake::kTime ? SilenceOf(kHealthService) : "";
}

std::string ObserveSensors(SensorClient& client, Session& session,
                           Session::Clock::time_point until) {
  if (!client.Register()) return "a sensor's registration was refused";
  for (const SensorProperty* sensor : client.absent_sensors()) {
    session.output().Say("This device has no " + std::string(sensor->name) + " sensor.");
  }
  const auto wake = WaitForReadings(session, client, until);
  return wake == Session::Wake::kTime ? SilenceOf(kSensorService) : "";
}

// No function of the library lists the temperatures by name.
std::string ObserveLimits(Session& session) {
  ThermalClient client(session.events());
  const auto limits = client.ReadLimits();
  if (!limits) return "the thermal service cannot be asked";
  for (size_t i = 0; i < limits->size(); ++i) {
    session.output().ShowReading(*kChargeLimitProperties[i], (*limits)[i]);
  }
  return "";
}

// Shows what a device has, without being able to change it.
int ObserveDevice(const Options& options, Session& session, Recorder* recorder) {
  Output& output = session.output();
  const auto begin = Session::Clock::now();
  const auto end = begin + options.duration.value_or(std::chrono::seconds(5));
  output.Heading("A client registers with the device '" + std::string(options.device->name) + "'");
  output.Say("Values arrive in the client's callback, on a thread of the library.");
  output.Explain("   Lines with ** come from the device itself.");
  BatteryClient battery(session.events());
  SensorClient sensors(session.events());
  while (session.WaitUntil(Session::Clock::now()) == Session::Wake::kEvent) {
    // The device has told by now what it has.
  }
  for (const std::string_view family : {kBatteryFamily, kSensorFamily}) {
    if (recorder != nullptr) recorder->NoteAct(ClientJoined{.subject = std::string(family)});
  }
  std::string failure = ObserveBattery(battery, session, begin + kReportLimit);
  if (failure.empty()) failure = ObserveSensors(sensors, session, begin + kReportLimit);
  if (failure.empty()) failure = ObserveLimits(session);
  const Observed& observed = session.observed();
  if (!failure.empty()) {
    output.Summary(false, "Demo FAILED: " + failure + ".", observed);
    return EXIT_FAILURE;
  }
  session.WaitFor([] { return false; }, end - Session::Clock::now());
  SayWhatIsMissing(session);
  output.Summary(true,
                 "Demo done: the callbacks were called " + Counted(observed.callbacks(), "time") +
                     Findings(kBatteryProperties, observed) +
                     Findings(sensors.sensors(), observed) + ".",
                 observed);
  return EXIT_SUCCESS;
}

int TellStory(const Options& options, Output& output) {
  if (options.duration) {
    Complain("--for: the story of the device '" + std::string(options.device->name) +
             "' has its own length");
    return kExitUsage;
  }
  std::istringstream text{std::string(kDemoScenario)};
  return PlayBack(ReadRecording(text, kDemoScenarioName), {.title = "Demo"}, options, output);
}

}  // namespace

int Demo(const Options& options, Output& output) {
  if (options.device->tells_demo) return TellStory(options, output);
  std::optional<Recorder> recorder;
  if (!options.record.empty()) {
    recorder.emplace(options.record, options.existing, options.device->name);
  }
  Session session(options, output, {.listener = [&](const Event& event) {
                    return !recorder || recorder->Note(event);
                  }});
  const int exit_code = ObserveDevice(options, session, recorder ? &*recorder : nullptr);
  if (!recorder || recorder->failure().empty()) return exit_code;
  Complain(recorder->failure());
  return EXIT_FAILURE;
}

}  // namespace norvik::qel::monitor
