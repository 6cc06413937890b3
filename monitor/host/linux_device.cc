// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/sensor.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "clients/subjects.h"
#include "host/host.h"
#include "quorvel/linux_machine/health.h"
#include "quorvel/linux_machine/sensors.h"
#include "quorvel/linux_machine/thermal.h"

namespace norvik::qel::monitor {

namespace {

// A machine keeps its names, so the user names the file once and not at every command.
std::string TypesFile() {
  const char* const file = std::getenv("QUORVEL_THERMAL_TYPES");
  return file != nullptr ? file : "";
}

using linux_machine::PowerSupply;
using linux_machine::SensorSource;
using linux_machine::TemperatureSource;

// In the order of PowerSupply::Kind: the displayed name, and the key of the property.
const std::pair<std::string_view, std::string_view> kSupplies[] = {
    {"battery", kBatteryLevel.key},
    {"AC charger", ""},
    {"USB charger", ""},
    {"wireless charger", kWirelessCharger.key},
    {"dock charger", kDockCharger.key},
    {"power supply", ""},
};
// In the order of PowerSupply::Weight.
constexpr std::string_view kWeights[] = {"", "energy", "charge and design voltage", "the mean"};

DevicePart ToPart(const PowerSupply& supply) {
  const auto& [kind, item] = kSupplies[static_cast<size_t>(supply.kind)];
  DevicePart part = {.name = supply.name, .kind = std::string(kind)};
  if (supply.level_percent) part.value = std::to_string(*supply.level_percent) + " %";
  if (supply.online) part.value = *supply.online ? "online" : "offline";
  if (!supply.ignored_because.empty()) {
    part.remark = "ignored: " + supply.ignored_because;
    return part;
  }
  part.item = item;
  if (part.value.empty()) part.remark = kCannotBeRead;
  if (item.empty()) part.remark = "neither a wireless nor a dock charger";
  if (supply.share && supply.weight != PowerSupply::Weight::kNone) {
    part.remark = std::to_string(std::lround(100 * *supply.share)) + " % of the level, by " +
                  std::string(kWeights[static_cast<size_t>(supply.weight)]);
  }
  return part;
}

DevicePart ToPart(const TemperatureSource& source) {
  return {.name = source.device,
          .kind = "temperature",
          .item = toString(source.type) + ":" + source.name,
          .remark = source.is_readable ? "" : kCannotBeRead};
}

DevicePart ToPart(const SensorSource& source) {
  const bool is_hinge = source.type == ASENSOR_TYPE_HINGE_ANGLE;
  DevicePart part = {.name = source.device + " (" + source.name + ")",
                     .kind = "sensor",
                     .item = std::string(is_hinge ? kHingeAngle.key : kProximity.key)};
  if (source.reading == SensorSource::Reading::kNearOrFar) part.remark = "near or far";
  if (source.reading == SensorSource::Reading::kPresentOrAway) {
    part.remark = "whether a person is there";
  }
  return part;
}

class LinuxDevice : public Device {
 public:
  explicit LinuxDevice(DeviceObserver observer)
      : health_(ToServiceObserver(observer)),
        thermal_(ToServiceObserver(observer), {.types_file = TypesFile()}),
        sensors_(ToServiceObserver(std::move(observer))) {}
  ~LinuxDevice() override {
    sensors_.Stop();
    thermal_.Stop();
    health_.Stop();
  }

  void Start(const DeviceSetup& setup) override {
    BecomeHostProcess(setup);
    health_.Start();
    thermal_.Start();
    sensors_.Start();
  }
  std::vector<DevicePart> Parts() override {
    std::vector<DevicePart> parts;
    for (const PowerSupply& supply : health_.supplies()) parts.push_back(ToPart(supply));
    for (const SensorSource& source : sensors_.sources()) parts.push_back(ToPart(source));
    for (const TemperatureSource& source : thermal_.sources()) parts.push_back(ToPart(source));
    return parts;
  }

 private:
  linux_machine::Health health_;
  linux_machine::Thermal thermal_;
  linux_machine::Sensors sensors_;
};

}  // namespace

std::unique_ptr<Device> MakeLinuxDevice(DeviceObserver observer) {
  return std::make_unique<LinuxDevice>(std::move(observer));
}

}  // namespace norvik::qel::monitor
