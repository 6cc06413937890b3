// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <utility>

#include "cli/command_table.h"
#include "cli/commands.h"
#include "cli/session.h"
#include "clients/inventory.h"
#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

using Reading = std::pair<Property, Value>;

// A device for one query. It has no session: a signal ends the program at once, even while a
// service does not answer.
class AskedDevice {
 public:
  // Starts the device, and prints its notices about the command's service.
  AskedDevice(const Options& options, Output& output)
      : device_(options.device->make(
            [events = events_](DeviceEvent event) { events->Post(std::move(event)); })) {
    device_->Start({.verbose = options.verbose});
    while (const std::optional<Event> event = events_->Take()) {
      const auto& what = std::get<DeviceEvent>(event->what);
      const bool is_notice = what.kind == DeviceEvent::Kind::kNotice;
      if (is_notice && what.service.starts_with(options.command->service)) output.Note(*event);
    }
  }

  const std::shared_ptr<EventQueue>& events() const { return events_; }

 private:
  const std::shared_ptr<EventQueue> events_ = std::make_shared<EventQueue>();
  const std::unique_ptr<Device> device_;
};

bool IsKnown(const Value& value) {
  const auto* const several = std::get_if<Severities>(&value);
  return value != Value() && value != Value(Absent()) && (several == nullptr || !several->empty());
}

// `hint`: appended to the message that names the missing values.
int ShowReadings(const std::vector<Reading>& readings, Output& output,
                 const std::string& hint = {}) {
  std::string missing;
  for (const auto& [property, value] : readings) {
    output.ShowReading(property, value);
    if (!IsKnown(value)) missing += (missing.empty() ? "" : ", ") + std::string(property.name);
  }
  if (missing.empty()) return EXIT_SUCCESS;
  Complain("unknown or not present: " + missing + hint);
  return kExitUnknown;
}

int Fail(const std::string& text) {
  Complain(text);
  return EXIT_FAILURE;
}

}  // namespace

int GetBattery(const Options& options, Output& output) {
  const AskedDevice device(options, output);
  Client client(device.events());
  std::vector<Reading> readings;
  for (const BatteryProperty* property : kBatteryProperties) {
    const std::optional<Value> value = client.Read(*property);
    if (!value) {
      return Fail("the health service cannot be asked for the " + std::string(property->name));
    }
    readings.emplace_back(*property, *value);
  }
  return ShowReadings(readings, output);
}

// The library has no getters for sensors, only callbacks.
int GetSensors(const Options& options, Output& output) {
  Session session(options, output, {.show_events = false});
  Client client(session.events());
  if (!client.Join(kSensorFamily)) return session.Fail(kRefusal);
  const auto wake = WaitForReadings(session, client, Session::Clock::now() + kReportLimit);
  if (wake == Session::Wake::kStop) return kExitInterrupted;
  if (wake == Session::Wake::kTime && session.observed().callbacks() == 0) {
    return session.Fail(SilenceOf(kSensorService));
  }
  std::vector<Reading> readings;
  readings.reserve(kSensorProperties.size());
  for (const SensorProperty* property : kSensorProperties) {
    readings.emplace_back(*property, ReadingOf(*property, client, session));
  }
  return ShowReadings(readings, output);
}

int GetTemperatures(const Options& options, Output& output) {
  const AskedDevice device(options, output);
  Client client(device.events());
  const auto values = client.ReadTemperatures(options.operands);
  if (!values) return Fail("the thermal service cannot be asked");
  std::vector<Reading> readings;
  for (size_t i = 0; i < values->size(); ++i) {
    const std::string& name = options.operands[i];
    readings.emplace_back(Property{.key = name, .name = name, .unit = kCelsius}, (*values)[i]);
  }
  const auto is_absent = [](const Reading& reading) { return reading.second == Value(Absent()); };
  const bool any_is_absent = std::any_of(readings.begin(), readings.end(), is_absent);
  return ShowReadings(readings, output,
                      any_is_absent ? KnownTemperatures(/*with_type=*/false) : "");
}

int GetChargeLimits(const Options& options, Output& output) {
  const AskedDevice device(options, output);
  Client client(device.events());
  const auto limits = client.ReadLimits();
  if (!limits) return Fail("the thermal service cannot be asked");
  std::vector<Reading> readings;
  for (size_t i = 0; i < limits->size(); ++i) {
    readings.emplace_back(*kChargeLimitProperties[i], (*limits)[i]);
  }
  return ShowReadings(readings, output);
}

}  // namespace norvik::qel::monitor
