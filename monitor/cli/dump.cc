// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/session.h"
#include "clients/inventory.h"

namespace norvik::qel::monitor {

namespace {

// The temperatures of every device with thermal steps: see Device::StepsOf().
constexpr std::array<std::string_view, 2> kTemperatures = {"SKIN:skin",
                                                           "BCL_CURRENT:AUDIO_current"};

// Fills the thermal dump: reads the limits, and registers for kTemperatures if the device has them.
// Adds error messages to `wrong`.
Session::Wake Fill(Client& client, Session& session, Session::Clock::time_point until,
                   std::vector<std::string>& wrong) {
  if (!client.ReadLimits()) {
    wrong.push_back(FailureOf(kThermalService));
    return Session::Wake::kTime;
  }
  if (session.device().StepsOf(kThermalService).empty()) return Session::Wake::kEvent;
  for (const std::string_view key : kTemperatures) {
    if (client.Join(key)) continue;
    wrong.emplace_back(kRefusal);
    return Session::Wake::kTime;
  }
  const auto all_heard = [&] {
    return std::all_of(kTemperatures.begin(), kTemperatures.end(),
                       [&](std::string_view key) { return session.observed().callbacks(key) > 0; });
  };
  const auto wake = session.WaitFor(all_heard, until - Session::Clock::now());
  if (wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kThermalService));
  return wake;
}

}  // namespace

int Dump(const Options& options, Output& output) {
  Session session(options, output, {.show_events = false});
  Client client(session.events());
  // The dumps are shown even after an error: they may show the cause.
  std::vector<std::string> wrong;
  for (const std::string_view family : {kBatteryFamily, kSensorFamily}) {
    if (!client.Join(family)) wrong.emplace_back(kRefusal);
  }

  // All families share one deadline.
  const auto until = Session::Clock::now() + kReportLimit;
  if (wrong.empty()) {
    const auto heard = [&] { return CallbacksOf(kBatteryProperties, session.observed()) > 0; };
    const auto wake = session.WaitFor(heard, until - Session::Clock::now());
    if (wake == Session::Wake::kStop) return kExitInterrupted;
    if (wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kHealthService));
    const auto sensor_wake = WaitForReadings(session, client, until);
    if (sensor_wake == Session::Wake::kStop) return kExitInterrupted;
    if (sensor_wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kSensorService));
    if (Fill(client, session, until, wrong) == Session::Wake::kStop) return kExitInterrupted;
  }

  session.ShowPending();
  for (const std::string_view family : kClientFamilies) {
    output.ShowDump(family, client.Dump(family));
  }
  for (const std::string& text : wrong) Complain(text);
  return wrong.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace norvik::qel::monitor
