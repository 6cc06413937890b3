// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The inventory of a device: every value that a command can name, with its source.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/session.h"
#include "clients/client.h"
#include "clients/device.h"
#include "clients/platform.h"
#include "output/output.h"

namespace norvik::qel::monitor {

struct Item {
  std::string_view service;  // kHealthService and the like
  std::string key;           // "battery_level", "SKIN:skin"
  std::string_view unit = {};
  Value value = {};                       // unknown if the service does not run
  std::optional<Severity> severity = {};  // of a temperature
  std::string source = {};                // "BAT0, BAT1", "health service"
  std::string remark = {};                // "cannot be read"
};

Severity WorstOf(const Item& item);
// "36.5 degrees C, SEVERE"
std::string ValueOf(const Item& item);
Fields ToFields(const Item& item);

struct Inventory {
  std::vector<ServiceState> services;
  std::vector<Item> items = {};
  // Power supplies that are the source of no value, or that have a remark.
  std::vector<DevicePart> supplies = {};
};

// The keys of all items, without asking for values.
std::vector<std::string> KeysOf();

// The end of a message about an unknown temperature: "; the thermal service reports CPU:cpu".
std::string KnownTemperatures(const std::vector<TemperatureReport>& reports);
// The message about a service that cannot be queried, with the reason and the next step.
// `otherwise` is the reason if the service answers.
std::string FailureOf(std::string_view service, const std::string& otherwise = "the call fails");
// The same at the end of kReportLimit.
std::string SilenceOf(std::string_view service);

// The thermal service that the library uses; the AIDL one if neither runs.
const ServiceState& ThermalServiceOf(const std::vector<ServiceState>& services);

// Posts a notice for each battery that does not count, for commands that do not list the parts.
void NoteIgnoredBatteries(Session& session);

// Waits until the client has a reading of each of its sensors. The first callback carries the
// library's stored value, which is 0 before the first event: for a sensor with only that 0, the
// wait is up to 1 s longer. kTime: a sensor's callback was not called before `until`.
Session::Wake WaitForReadings(Session& session, const Client& client,
                              Session::Clock::time_point until);
// The last value that the session observed; Absent() if the device lacks the sensor.
Value ReadingOf(const SensorProperty& sensor, const Client& client, const Session& session);

// Reads a device with a client of its own.
//
// Threads: the main thread.
class InventoryReader {
 public:
  explicit InventoryReader(Session& session);

  // Waits for the sensors' readings. kTime: the service does not run, or a reading is missing.
  Session::Wake WaitForSensors();
  // Queries the running services. The sensors' values are those that the session has observed.
  Inventory Read();

 private:
  Session& session_;
  Client client_;
};

}  // namespace norvik::qel::monitor
