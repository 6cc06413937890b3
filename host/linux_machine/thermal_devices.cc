#include "thermal_devices.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "device_files.h"

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
  std::optional<std::string> type = files.PrintableText("type", Absence::kANotice);
  if (!type) return;
  reading->zones.push_back({
      .syspath = syspath,
      .type = std::move(*type),
      // Without the file, the zone cannot be disabled (old kernels).
      .acts = files.OneOf("mode", kModeWords).value_or(true),
      .millidegrees = files.Number("temp", {kAbsoluteZeroMillidegrees, kHottestMillidegrees},
                                   Absence::kANotice),
      .trips = ReadTrips(files),
  });
}

void AddCoolingDevice(const std::string& syspath, DeviceFiles& files, ThermalReading* reading) {
  std::optional<std::string> type = files.PrintableText("type", Absence::kANotice);
  if (!type) return;
  const int64_t max =
      files.Number("max_state", {0, kMaxInt32}, Absence::kANotice).value_or(kMaxInt32);
  const std::optional<int32_t> state = files.Number("cur_state", {0, max}, Absence::kANotice);
  if (!state) return;
  reading->cooling_devices.push_back(
      {.syspath = syspath, .type = std::move(*type), .state = *state});
}

void AddDevice(const std::string& syspath, ThermalReading* reading) {
  const std::string name = DeviceName(syspath);
  const bool is_zone = name.starts_with("thermal_zone");
  if (!is_zone && !name.starts_with("cooling_device")) return;
  auto files = DeviceFiles::Open(syspath, &reading->faults);
  if (!files) return;
  (is_zone ? AddZone : AddCoolingDevice)(syspath, *files, reading);
}

}  // namespace

ThermalReading ReadThermalDevices(std::vector<std::string> syspaths) {
  std::stable_sort(syspaths.begin(), syspaths.end(),
                   [](const auto& a, const auto& b) { return DeviceNumber(a) < DeviceNumber(b); });
  ThermalReading all;
  for (const std::string& syspath : syspaths) {
    ThermalReading one;
    AddDevice(syspath, &one);
    std::vector<Fault> vanished;
    // The device was removed during the reading. Drops its incomplete values and their faults.
    if (!IsStillThere(syspath, &vanished)) one = {.faults = std::move(vanished)};
    std::move(one.zones.begin(), one.zones.end(), std::back_inserter(all.zones));
    std::move(one.cooling_devices.begin(), one.cooling_devices.end(),
              std::back_inserter(all.cooling_devices));
    std::move(one.faults.begin(), one.faults.end(), std::back_inserter(all.faults));
  }
  return all;
}

}  // namespace norvik::qel::linux_machine
