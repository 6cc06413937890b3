// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a device has: every value that a command can name, with its source.
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
  std::string name;          // for people: "battery level", "SKIN:skin"
  std::string_view unit = {};
  Value value = {};                       // unknown if the service does not run
  std::optional<Severity> severity = {};  // of a temperature
  std::string source = {};                // "BAT0, BAT1", "health service"
  std::string remark = {};                // "cannot be read"
};

// "36.5 degrees C, SEVERE"
std::string ValueOf(const Item& item);
Fields ToFields(const Item& item);

struct Inventory {
  std::vector<ServiceState> services;
  std::vector<Item> items = {};
  // Power supplies that are no value's source, or that have a remark.
  std::vector<DevicePart> supplies = {};
};

// The keys of all items, without asking for values.
std::vector<std::string> KeysOf();

// For a message about a name that is not among them: "; it reports CPU:cpu, SKIN:skin". With or
// without the type. Empty if the service cannot be asked.
std::string KnownTemperatures(bool with_type);

// The one that the library uses. If neither runs: the AIDL one.
const ServiceState& ThermalServiceOf(const std::vector<ServiceState>& services);

// Waits until the client has heard what its sensors read. It is first told what the library has
// stored, which is 0 until the sensor has reported: a sensor that has only said 0 gets a second
// more. kTime: not every sensor has been heard until then.
Session::Wake WaitForReadings(Session& session, const Client& client,
                              Session::Clock::time_point until);
// What the session has observed, or Absent().
Value ReadingOf(const SensorProperty& sensor, const Client& client, const Session& session);

// Reads a device with a client of its own.
//
// Threads: the main thread.
class InventoryReader {
 public:
  explicit InventoryReader(Session& session);

  // Waits for the sensors' readings if their service runs. kTime: not all have been heard.
  Session::Wake WaitForSensors();
  // Asks the services that run. The sensors' values are those that the session has observed.
  Inventory Read();

 private:
  Session& session_;
  Client client_;
};

}  // namespace norvik::qel::monitor
