// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal_devices.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace norvik::qel::linux_machine {

namespace {

constexpr int32_t kAbsoluteZeroMillidegrees = -273'150;
// No part of a running machine is hotter. Drivers use far higher numbers for "none".
constexpr int32_t kHottestMillidegrees = 1'000'000;

constexpr Word<TripType> kTripWords[] = {
    {"active", TripType::kActive},
    {"passive", TripType::kPassive},
    {"hot", TripType::kHot},
    {"critical", TripType::kCritical},
};

constexpr Word<bool> kModeWords[] = {{"enabled", true}, {"disabled", false}};

std::optional<TripPoint> ReadTrip(DeviceFiles& files, int number) {
  const std::string trip = "trip_point_" + std::to_string(number);
  const std::optional<TripType> type = files.OneOf(trip + "_type", kTripWords, Absence::kANotice);
  const std::optional<int32_t> millidegrees =
      files.Number(trip + "_temp", {kMinInt32, kHottestMillidegrees}, Absence::kANotice);
  // For a trip point that is not set, drivers report 0 or a number below absolute zero.
  if (!type || !millidegrees || *millidegrees <= 0) return std::nullopt;
  return TripPoint{
      .number = number,
      .type = *type,
      .millidegrees = *millidegrees,
      .hysteresis_millidegrees =
          files.Number(trip + "_hyst", {0, kHottestMillidegrees}).value_or(0),
  };
}

std::vector<TripPoint> ReadTrips(DeviceFiles& files) {
  std::vector<TripPoint> trips;
  for (int number = 0;; ++number) {
    const std::string trip = "trip_point_" + std::to_string(number);
    if (!files.Lists(trip + "_type") && !files.Lists(trip + "_temp")) return trips;
    if (const auto read = ReadTrip(files, number)) trips.push_back(*read);
  }
}

void AddZone(const std::string& syspath, DeviceFiles& files, ThermalReading* reading) {
  std::optional<std::string> type = files.Name("type", Absence::kANotice);
  if (!type) return;
  reading->zones.push_back({
      .key = syspath,
      .device = files.name(),
      .type = std::move(*type),
      // Without the file, the zone cannot be disabled (old kernels).
      .acts = files.OneOf("mode", kModeWords).value_or(true),
      .millidegrees = files.Number("temp", {kAbsoluteZeroMillidegrees, kHottestMillidegrees},
                                   Absence::kANotice),
      .trips = ReadTrips(files),
  });
}

void AddCoolingDevice(const std::string& syspath, DeviceFiles& files, ThermalReading* reading) {
  std::optional<std::string> type = files.Name("type", Absence::kANotice);
  if (!type) return;
  const int64_t max =
      files.Number("max_state", {0, kMaxInt32}, Absence::kANotice).value_or(kMaxInt32);
  const std::optional<int32_t> state = files.Number("cur_state", {0, max}, Absence::kANotice);
  if (!state) return;
  reading->cooling_devices.push_back(
      {.key = syspath, .device = files.name(), .type = std::move(*type), .state = *state});
}

// A limit of a hwmon sensor. Its hysteresis file is an absolute temperature. For a limit that is
// not set, drivers report 0 or an impossibly high number.
std::optional<TripPoint> ReadLimit(DeviceFiles& files, const std::string& file, TripType type) {
  const std::optional<int32_t> limit = files.Number(file, {kMinInt32, kMaxInt32});
  if (!limit || *limit <= 0 || *limit > kHottestMillidegrees) return std::nullopt;
  const int32_t end = files.Number(file + "_hyst", {kMinInt32, kMaxInt32}).value_or(*limit);
  return TripPoint{.number = static_cast<int>(type),
                   .type = type,
                   .millidegrees = *limit,
                   .hysteresis_millidegrees = end > 0 && end < *limit ? *limit - end : 0};
}

std::vector<TripPoint> ReadLimits(DeviceFiles& files, const std::string& sensor) {
  std::vector<TripPoint> limits;
  for (const auto& [suffix, type] :
       {std::pair("_max", TripType::kMax), std::pair("_crit", TripType::kHwmonCritical),
        std::pair("_emergency", TripType::kEmergency)}) {
    if (const auto limit = ReadLimit(files, sensor + suffix, type)) limits.push_back(*limit);
  }
  return limits;
}

// Empty, with a fault, also if the chip reports that the sensor is faulty.
std::optional<int32_t> ReadHwmonTemperature(DeviceFiles& files, const std::string& sensor) {
  if (files.Lists(sensor + "_fault") && files.Number(sensor + "_fault", {0, 1}) == 1) {
    files.AddFault(sensor + "_fault", "1 means that the sensor is faulty");
    return std::nullopt;
  }
  return files.Number(sensor + "_input", {kAbsoluteZeroMillidegrees, kHottestMillidegrees},
                      Absence::kANotice);
}

// "temp1", "temp2" and so on, those that have a value.
std::vector<std::string> TemperaturesOf(const DeviceFiles& files) {
  constexpr std::string_view kInput = "_input";
  std::vector<std::string> sensors;
  for (const std::string& file : files.List()) {
    if (!file.starts_with("temp") || !file.ends_with(kInput)) continue;
    const std::string sensor = file.substr(0, file.size() - kInput.size());
    if (DeviceNumber(sensor) > 0 && sensor == "temp" + std::to_string(DeviceNumber(sensor))) {
      sensors.push_back(sensor);
    }
  }
  std::sort(sensors.begin(), sensors.end(),
            [](const auto& a, const auto& b) { return DeviceNumber(a) < DeviceNumber(b); });
  return sensors;
}

void AddHwmon(const std::string& syspath, DeviceFiles& files, ThermalReading* reading) {
  const std::vector<std::string> sensors = TemperaturesOf(files);
  if (sensors.empty()) return;
  const std::string chip = files.Name("name").value_or(files.name());
  // The kernel also shows each zone as a hwmon device, with underscores instead of dashes.
  const bool repeats_a_zone =
      std::any_of(reading->zones.begin(), reading->zones.end(), [&](const ThermalZone& zone) {
        std::string type = zone.type;
        std::replace(type.begin(), type.end(), '-', '_');
        return type == chip;
      });
  if (repeats_a_zone) return;
  const std::string key = syspath + "/";
  const std::string device = files.name() + ":";
  const std::string type = chip + ":";
  for (const std::string& sensor : sensors) {
    const std::string label = sensor + "_label";
    const auto told = files.Lists(label) ? files.Name(label) : std::nullopt;
    reading->zones.push_back({.key = key + sensor,
                              .device = device + sensor,
                              .type = type + told.value_or(sensor),
                              .millidegrees = ReadHwmonTemperature(files, sensor),
                              .trips = ReadLimits(files, sensor)});
  }
}

using Add = void (*)(const std::string& syspath, DeviceFiles& files, ThermalReading* reading);

// Null for a device without temperatures.
Add AddOf(const std::string& name) {
  if (name.starts_with("thermal_zone")) return AddZone;
  if (name.starts_with("cooling_device")) return AddCoolingDevice;
  return name.starts_with("hwmon") ? AddHwmon : nullptr;
}

}  // namespace

ThermalReading ReadThermalDevices(std::vector<std::string> syspaths) {
  std::stable_sort(syspaths.begin(), syspaths.end(), [](const auto& a, const auto& b) {
    const auto rank = [](const std::string& path) {
      return std::pair(DeviceName(path).starts_with("hwmon"), DeviceNumber(path));
    };
    return rank(a) < rank(b);
  });
  ThermalReading all;
  for (const std::string& syspath : syspaths) {
    const Add add = AddOf(DeviceName(syspath));
    if (add == nullptr) continue;
    const size_t zones = all.zones.size();
    const size_t cooling_devices = all.cooling_devices.size();
    const auto read = [&](DeviceFiles& files) { add(syspath, files, &all); };
    if (ReadDevice(syspath, &all.faults, read)) continue;
    all.zones.resize(zones);
    all.cooling_devices.resize(cooling_devices);
  }
  return all;
}

}  // namespace norvik::qel::linux_machine
