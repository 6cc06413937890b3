// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/session.h"
#include "clients/battery_client.h"
#include "clients/sensor_readings.h"
#include "clients/thermal_client.h"

namespace norvik::qel::monitor {

namespace {

// Gives the client something to show: limits that have been read, and clients where names of
// temperatures are known. What is wrong is added to `wrong`.
Session::Wake Fill(ThermalClient& client, Session& session, Session::Clock::time_point until,
                   std::vector<std::string>& wrong) {
  if (!client.ReadLimits()) {
    wrong.emplace_back("the thermal service cannot be asked");
    return Session::Wake::kTime;
  }
  if (session.device().thermal_driver() == nullptr) return Session::Wake::kEvent;
  for (const ThermalProperty* property : kThermalProperties) {
    if (client.Register(*property)) continue;
    wrong.emplace_back(kRefusal);
    return Session::Wake::kTime;
  }
  const auto all_heard = [&] {
    return std::all_of(kThermalProperties.begin(), kThermalProperties.end(),
                       [&](const ThermalProperty* property) {
                         return session.observed().callbacks(*property) > 0;
                       });
  };
  const auto wake = session.WaitFor(all_heard, until - Session::Clock::now());
  if (wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kThermalService));
  return wake;
}

}  // namespace

int Dump(const Options& options, Output& output) {
  Session session(options, output, {.show_events = false});
  BatteryClient battery(session.events());
  SensorClient sensors(session.events());
  ThermalClient thermal(session.events());
  // The dumps are shown also if something is wrong: they may tell why.
  std::vector<std::string> wrong;
  if (!battery.Register()) wrong.push_back(kRefusal);
  if (!sensors.Register()) wrong.push_back(kRefusal);

  // All families have the same time.
  const auto until = Session::Clock::now() + kReportLimit;
  if (wrong.empty()) {
    const auto heard = [&] { return CallbacksOf(kBatteryProperties, session.observed()) > 0; };
    const auto wake = session.WaitFor(heard, until - Session::Clock::now());
    if (wake == Session::Wake::kStop) return kExitInterrupted;
    if (wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kHealthService));
    const auto sensor_wake = WaitForReadings(session, sensors, until);
    if (sensor_wake == Session::Wake::kStop) return kExitInterrupted;
    if (sensor_wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kSensorService));
    if (Fill(thermal, session, until, wrong) == Session::Wake::kStop) return kExitInterrupted;
  }

  session.ShowPending();
  output.ShowDump("battery", battery.Dump());
  output.ShowDump("sensors", sensors.Dump());
  output.ShowDump("thermal", thermal.Dump());
  for (const std::string& text : wrong) Complain(text);
  return wrong.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace norvik::qel::monitor
