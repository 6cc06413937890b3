// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/inventory.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "clients/sensor_readings.h"
#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

bool IsFound(std::string_view service, const std::vector<ServiceState>& services) {
  return StateOf(service, services).is_found;
}

Sensor SensorOf(const SensorProperty& property) {
  return &property == &kProximity ? Sensor::kProximity : Sensor::kHingeAngle;
}

// Empty for anything else, and for a sensor that the device does not have.
std::string DescriptionOfSensor(std::string_view key) {
  for (const SensorProperty* property : kSensorProperties) {
    if (property->key == key) return DescriptionOf(SensorOf(*property));
  }
  return {};
}

// The platform's types of limits do not measure heat.
std::string_view UnitOf(std::string_view type) {
  if (type == "BCL_VOLTAGE") return " mV";
  if (type == "BCL_CURRENT") return " mA";
  return type == "BCL_PERCENTAGE" ? " %" : kCelsius;
}

Item ToItem(std::string_view service, const Property& property) {
  return {.service = service,
          .key = std::string(property.key),
          .name = std::string(property.name),
          .unit = property.unit};
}

Item ToItem(std::string_view service, const TemperatureReport& report) {
  Item item = {.service = service,
               .key = report.type + ":" + report.name,
               .name = report.type + ":" + report.name,
               .unit = UnitOf(report.type),
               .value = report.value ? Value(*report.value) : Value(),
               .severity = report.severity};
  if (!IsWatchable(report)) item.remark = "cannot be watched, only asked for: unknown type";
  return item;
}

// Names the parts that the items' values come from, and keeps the other ones. A temperature that
// the service does not report has a part only.
void AddParts(std::vector<DevicePart> parts, Inventory* inventory) {
  std::map<std::string, Item*> items;
  std::vector<Item> unreported;
  for (Item& item : inventory->items) items.emplace(item.key, &item);
  for (DevicePart& part : parts) {
    const bool is_temperature = part.item.find(':') != std::string::npos;
    const bool is_supply = !is_temperature && SensorPropertyOf(part.item) == nullptr;
    if (const auto found = items.find(part.item); found != items.end()) {
      Item& item = *found->second;
      item.source += (item.source.empty() ? "" : ", ") + part.name;
      if (!is_supply && !part.remark.empty()) item.remark = part.remark;
    } else if (is_temperature) {
      unreported.push_back({.service = kThermalService,
                            .key = part.item,
                            .name = part.item,
                            .source = part.name,
                            .remark = part.remark});
    }
    if (is_supply && (part.item.empty() || !part.remark.empty())) {
      inventory->supplies.push_back(std::move(part));
    }
  }
  std::move(unreported.begin(), unreported.end(), std::back_inserter(inventory->items));
}

}  // namespace

const ServiceState& ThermalServiceOf(const std::vector<ServiceState>& services) {
  const ServiceState& aidl = StateOf(kThermalService, services);
  const ServiceState& hidl = StateOf(kHidlThermalService, services);
  return hidl.is_found && !(aidl.is_found && aidl.is_declared == true) ? hidl : aidl;
}

std::string ValueOf(const Item& item) {
  std::string text = InWords({.key = {}, .name = {}, .unit = item.unit}, item.value);
  if (item.severity) text += ", " + InWords({}, Value(*item.severity));
  return text;
}

Fields ToFields(const Item& item) {
  return {{"service", std::string(item.service)},
          {"property", item.key},
          {"value", item.value},
          {"unit", std::string(item.unit.substr(std::min<size_t>(1, item.unit.size())))},
          {"severity", item.severity ? Value(*item.severity) : Value()},
          {"source", item.source},
          {"remark", item.remark}};
}

bool IsWatchable(const TemperatureReport& temperature) {
  return temperature.type == "UNKNOWN" || std::find(kThermalTypes.begin(), kThermalTypes.end(),
                                                    temperature.type) != kThermalTypes.end();
}

std::vector<std::string> KeysOf() {
  std::vector<std::string> keys;
  keys.reserve(std::size(kBatteryProperties) + std::size(kSensorProperties));
  for (const Property* property : kBatteryProperties) keys.emplace_back(property->key);
  const bool has_sensors = IsFound(kSensorService, LookUpServices());
  for (const SensorProperty* property : kSensorProperties) {
    if (has_sensors && !DescriptionOfSensor(property->key).empty())
      keys.emplace_back(property->key);
  }
  if (const auto temperatures = PlatformTemperatures()) {
    for (const auto& report : *temperatures) keys.push_back(report.type + ":" + report.name);
  }
  for (const Property* property : kChargeLimitProperties) keys.emplace_back(property->key);
  return keys;
}

std::string KnownTemperatures(bool with_type) {
  constexpr size_t kMost = 20;
  const auto reports = PlatformTemperatures();
  if (!reports) return {};
  std::string names;
  size_t count = 0;
  for (const TemperatureReport& report : *reports) {
    if (with_type && !IsWatchable(report)) continue;
    if (++count > kMost) break;
    names +=
        (count == 1 ? "; it reports " : ", ") + (with_type ? report.type + ":" : "") + report.name;
  }
  if (count == 0) return "; it reports none";
  return count > kMost ? names + ", ... (quorvel list)" : names;
}

InventoryReader::InventoryReader(Session& session)
    : session_(session),
      battery_(session.events()),
      sensors_(session.events()),
      thermal_(session.events()) {
  static_cast<void>(sensors_.Register());  // a sensor that is refused stays unknown
}

Session::Wake InventoryReader::WaitForSensors() {
  if (!IsFound(kSensorService, LookUpServices())) return Session::Wake::kTime;
  return WaitForReadings(session_, sensors_, Session::Clock::now() + kReportLimit);
}

Inventory InventoryReader::Read() {
  Inventory inventory = {.services = LookUpServices()};
  AddBattery(IsFound(kHealthService, inventory.services), &inventory.items);
  AddSensors(IsFound(kSensorService, inventory.services), &inventory.items);
  AddTemperatures(ThermalServiceOf(inventory.services).service, &inventory.items);
  AddParts(session_.device().Parts(), &inventory);
  const bool has_sensors = IsFound(kSensorService, inventory.services);
  for (Item& item : inventory.items) {
    if (has_sensors && item.source.empty()) item.source = DescriptionOfSensor(item.key);
    if (item.source.empty()) item.source = std::string(item.service) + " service";
  }
  return inventory;
}

// A query of a service that does not run would wait for it.
void InventoryReader::AddBattery(bool is_there, std::vector<Item>* items) {
  for (const BatteryProperty* property : kBatteryProperties) {
    Item& item = items->emplace_back(ToItem(kHealthService, *property));
    if (is_there) item.value = battery_.Read(*property).value_or(Value());
  }
}

void InventoryReader::AddSensors(bool is_there, std::vector<Item>* items) const {
  const std::vector<const SensorProperty*> absent = sensors_.absent_sensors();
  for (const SensorProperty* property : kSensorProperties) {
    Item& item = items->emplace_back(ToItem(kSensorService, *property));
    if (!is_there) continue;
    const bool is_absent = std::find(absent.begin(), absent.end(), property) != absent.end();
    item.value = is_absent ? Value(Absent()) : session_.observed().value(*property);
  }
}

void InventoryReader::AddTemperatures(std::string_view service, std::vector<Item>* items) {
  const auto temperatures = PlatformTemperatures();
  if (temperatures) {
    for (const TemperatureReport& report : *temperatures) items->push_back(ToItem(service, report));
  }
  const auto limits = temperatures ? thermal_.ReadLimits() : std::nullopt;
  for (size_t i = 0; i < kChargeLimitProperties.size(); ++i) {
    Item& item = items->emplace_back(ToItem(kThermalService, *kChargeLimitProperties[i]));
    if (limits) item.value = (*limits)[i];
  }
}

}  // namespace norvik::qel::monitor
