// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/session.h"
#include "clients/battery_client.h"
#include "clients/inventory.h"
#include "clients/sensor_client.h"
#include "clients/sensor_readings.h"
#include "clients/thermal_client.h"
#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

// True when all have been heard.
bool ShowReadings(const SensorClient& client, const Observed& observed, Output& output) {
  const auto absent = client.absent_sensors();
  bool complete = true;
  for (const SensorProperty* property : kSensorProperties) {
    const bool is_absent = std::find(absent.begin(), absent.end(), property) != absent.end();
    const Value value = is_absent ? Value(Absent()) : observed.value(*property);
    complete &= value != Value();
    output.ShowReading(*property, value);
  }
  return complete;
}

int CannotAskForHeat() {
  Complain("the thermal service cannot be asked");
  return EXIT_FAILURE;
}

}  // namespace

int GetBattery(const Options& options, Output& output) {
  // No session: this waits for nothing but the service, and signals may end that at once.
  const std::unique_ptr<Device> device = options.device->make([](const DeviceEvent&) {});
  device->Start({.verbose = options.verbose});
  BatteryClient client(std::make_shared<EventQueue>());
  for (const BatteryProperty* property : kBatteryProperties) {
    const std::optional<Value> value = client.Read(*property);
    if (!value) {
      Complain("the health service cannot be asked for the " + std::string(property->name));
      return EXIT_FAILURE;
    }
    output.ShowReading(*property, *value);
  }
  return EXIT_SUCCESS;
}

// The library has no function that reads a sensor: only callbacks tell.
int GetSensors(const Options& options, Output& output) {
  Session session(options, output, {.show_events = false});
  SensorClient client(session.events());
  if (!client.Register()) {
    Complain(kRefusal);
    return EXIT_FAILURE;
  }
  const auto wake = WaitForReadings(session, client, Session::Clock::now() + kReportLimit);
  if (wake == Session::Wake::kStop) return EXIT_SUCCESS;
  if (wake == Session::Wake::kTime && session.observed().callbacks() == 0) {
    Complain(SilenceOf(kSensorService));
    return EXIT_FAILURE;
  }
  if (ShowReadings(client, session.observed(), output)) return EXIT_SUCCESS;
  Complain("a sensor has not been heard");
  return EXIT_FAILURE;
}

// These two do without a session, as GetBattery() does.
int GetTemperatures(const Options& options, Output& output) {
  const std::unique_ptr<Device> device = options.device->make([](const DeviceEvent&) {});
  device->Start({.verbose = options.verbose});
  ThermalClient client(std::make_shared<EventQueue>());
  const auto values = client.ReadTemperatures(options.operands);
  if (!values) return CannotAskForHeat();
  for (size_t i = 0; i < values->size(); ++i) {
    const std::string& name = options.operands[i];
    output.ShowReading({.key = name, .name = name, .unit = kCelsius}, (*values)[i]);
  }
  const bool complete = std::count(values->begin(), values->end(), Value(Absent())) == 0;
  if (complete) return EXIT_SUCCESS;
  Complain("the thermal service does not report all of these temperatures" +
           KnownTemperatures(/*with_type=*/false));
  return EXIT_FAILURE;
}

int GetChargeLimits(const Options& options, Output& output) {
  const std::unique_ptr<Device> device = options.device->make([](const DeviceEvent&) {});
  device->Start({.verbose = options.verbose});
  ThermalClient client(std::make_shared<EventQueue>());
  const auto limits = client.ReadLimits();
  if (!limits) return CannotAskForHeat();
  for (size_t i = 0; i < limits->size(); ++i) {
    output.ShowReading(*kChargeLimitProperties[i], (*limits)[i]);
  }
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
