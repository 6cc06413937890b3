// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "cli/commands.h"
#include "cli/device_script.h"
#include "cli/session.h"
#include "cli/thermal_operands.h"
#include "clients/battery_client.h"
#include "clients/inventory.h"
#include "clients/sensor_client.h"
#include "clients/thermal_client.h"

namespace norvik::qel::monitor {

namespace {

void Announce(const std::string& subject, const Options& options, Output& output) {
  output.Explain("Watching the " + subject + (options.duration ? "." : "; Ctrl-C ends."));
  if (options.device->tells) output.Explain(kLegend);
}

using Clock = Session::Clock;

// A service that is up answers a registration at once.
void ExplainSilence(Session& session, Clock::time_point end) {
  const auto heard = [&] { return session.observed().callbacks() > 0; };
  const auto wait = std::min<Clock::duration>(std::chrono::seconds(1), end - Clock::now());
  if (session.WaitFor(heard, wait) != Session::Wake::kTime) return;
  session.output().Explain(
      "No thermal service yet: the library looks for it ten times, once a second.");
}

}  // namespace

int WatchBattery(const Options& options, Output& output) {
  Announce("battery", options, output);
  Session session(options, output, {});
  BatteryClient client(session.events());
  if (!client.Register()) return session.Fail(kRefusal);
  DeviceScript(session.device(), options.command->service).Run(session, EndOf(options));
  return EXIT_SUCCESS;
}

int WatchSensors(const Options& options, Output& output) {
  Announce("sensors", options, output);
  Session session(options, output, {});
  SensorClient client(session.events());
  if (!client.Register()) return session.Fail(kRefusal);
  for (const SensorProperty* sensor : client.absent_sensors()) {
    output.ShowReading(*sensor, Absent());
  }
  DeviceScript(session.device(), options.command->service).Run(session, EndOf(options));
  return EXIT_SUCCESS;
}

int WatchThermal(const Options& options, Output& output) {
  const ThermalOperands operands(options.operands);  // before anything is said or started
  Announce("throttling", options, output);
  Session session(options, output, {});
  ThermalClient client(session.events());
  for (const ThermalProperty& property : operands.properties()) {
    if (client.Register(property)) continue;
    return session.Fail("the thermal service reports no temperature " + std::string(property.name) +
                            KnownTemperatures(/*with_type=*/true),
                        kExitUnknown);
  }
  const Clock::time_point end = EndOf(options);
  ExplainSilence(session, end);
  DeviceScript(session.device(), options.command->service).Run(session, end);
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
