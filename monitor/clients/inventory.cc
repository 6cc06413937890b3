// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/inventory.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

bool IsFound(std::string_view service, const std::vector<ServiceState>& services) {
  return StateOf(service, services).is_found;
}

// Empty if `key` is not a sensor's, or if the device lacks the sensor.
std::string DescriptionOfSensor(std::string_view key) {
  const auto* const property = SensorPropertyOf(key);
  return property != nullptr ? DescriptionOf(property->sensor) : "";
}

Item ToItem(std::string_view service, const Property& property) {
  return {.service = service, .key = std::string(property.key), .unit = property.unit};
}

Item ToItem(std::string_view service, const TemperatureReport& report) {
  Item item = {.service = service,
               .key = KeyOf(report),
               .unit = PropertyOf(KeyOf(report)).unit,
               .value = report.value ? Value(*report.value) : Value(),
               .severity = report.severity};
  if (!IsWatchableType(report.type))
    item.remark = "cannot be watched, only asked for: unknown type";
  return item;
}

// `value`: nullopt if the service cannot be queried.
void SetValue(const std::optional<Value>& value, Item& item) {
  item.value = value.value_or(Value());
  if (!value) item.remark = "the call fails";
}

// Adds each part to the source of its item, and collects the power supplies to list. A temperature
// that has a part, but that the service does not report, becomes an item without a value.
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

Severity WorstOf(const Item& item) {
  return std::max(WorstOf(item.value), item.severity.value_or(Severity::kNone));
}

std::string ValueOf(const Item& item) {
  std::string text = InWords({.key = {}, .unit = item.unit}, item.value);
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
    for (const auto& report : *temperatures) keys.push_back(KeyOf(report));
  }
  for (const Property* property : kChargeLimitProperties) keys.emplace_back(property->key);
  return keys;
}

std::string KnownTemperatures(const std::vector<TemperatureReport>& reports) {
  constexpr size_t kMost = 20;
  std::string names = reports.empty() ? "none" : "";
  for (size_t i = 0; i < reports.size() && i < kMost; ++i) {
    names += (i == 0 ? "" : ", ") + KeyOf(reports[i]);
  }
  return "; the thermal service reports " + names +
         (reports.size() > kMost ? ", ... (quorvel list)" : "");
}

std::string FailureOf(std::string_view service, const std::string& otherwise) {
  const std::vector<ServiceState> services = LookUpServices();
  const ServiceState& state =
      service == kThermalService ? ThermalServiceOf(services) : StateOf(service, services);
  std::string reason = state.answers ? otherwise : state.error;
  if (!state.is_found) reason = state.instance + " is not found";
  return "the " + std::string(service) + " service cannot be asked: " + reason +
         "; quorvel doctor tells more";
}

std::string SilenceOf(std::string_view service) {
  return FailureOf(service, "it has not reported anything within " +
                                std::to_string(kReportLimit.count()) + " s");
}

void NoteIgnoredBatteries(Session& session) {
  for (const DevicePart& part : session.device().Parts()) {
    // The service itself says that it takes a battery for an accessory's.
    const bool is_told = part.remark.ends_with("accessory");
    if (part.kind != kBatteryFamily || !part.item.empty() || is_told) continue;
    session.events()->Post(DeviceEvent{.kind = DeviceEvent::Kind::kNotice,
                                       .service = std::string(kHealthService),
                                       .detail = part.name + ": " + part.remark});
  }
}

Session::Wake WaitForReadings(Session& session, const Client& client,
                              Session::Clock::time_point until) {
  constexpr std::chrono::seconds kGrace(1);
  const std::vector<const SensorProperty*> sensors = client.sensors();
  const Observed& observed = session.observed();
  const auto all_heard = [&] {
    return std::all_of(sensors.begin(), sensors.end(), [&](const SensorProperty* sensor) {
      return observed.callbacks(sensor->key) > 0;
    });
  };
  const auto all_reported = [&] {
    return std::all_of(sensors.begin(), sensors.end(), [&](const SensorProperty* sensor) {
      return observed.callbacks(sensor->key) > 1 || observed.value(sensor->key) != Value(0);
    });
  };
  const Session::Wake wake = session.WaitFor(all_heard, until - Session::Clock::now());
  if (wake != Session::Wake::kEvent) return wake;
  // Not an error: 0 may be the reading of a sensor that has sent no event.
  const bool stopped = session.WaitFor(all_reported, kGrace) == Session::Wake::kStop;
  return stopped ? Session::Wake::kStop : Session::Wake::kEvent;
}

Value ReadingOf(const SensorProperty& sensor, const Client& client, const Session& session) {
  return client.Lacks(sensor) ? Absent() : session.observed().value(sensor.key);
}

InventoryReader::InventoryReader(Session& session) : session_(session), client_(session.events()) {
  static_cast<void>(client_.Join(kSensorFamily));  // a sensor that is refused stays unknown
}

Session::Wake InventoryReader::WaitForSensors() {
  if (!IsFound(kSensorService, LookUpServices())) return Session::Wake::kTime;
  return WaitForReadings(session_, client_, Session::Clock::now() + kReportLimit);
}

Inventory InventoryReader::Read() {
  Inventory inventory = {.services = LookUpServices()};
  std::vector<Item>& items = inventory.items;
  // A query of a service that does not run would wait for it.
  const bool has_health = IsFound(kHealthService, inventory.services);
  for (const BatteryProperty* property : kBatteryProperties) {
    Item& item = items.emplace_back(ToItem(kHealthService, *property));
    if (has_health) SetValue(client_.Read(*property), item);
  }
  const bool has_sensors = IsFound(kSensorService, inventory.services);
  for (const SensorProperty* property : kSensorProperties) {
    Item& item = items.emplace_back(ToItem(kSensorService, *property));
    if (has_sensors) item.value = ReadingOf(*property, client_, session_);
  }
  const auto temperatures = PlatformTemperatures();
  const ServiceState& thermal = ThermalServiceOf(inventory.services);
  if (temperatures) {
    for (const TemperatureReport& report : *temperatures) {
      items.push_back(ToItem(thermal.service, report));
    }
  }
  const auto limits = temperatures ? client_.ReadLimits() : std::nullopt;
  for (size_t i = 0; i < kChargeLimitProperties.size(); ++i) {
    Item& item = items.emplace_back(ToItem(thermal.service, *kChargeLimitProperties[i]));
    if (thermal.is_found)
      SetValue(limits ? std::optional<Value>((*limits)[i]) : std::nullopt, item);
  }
  AddParts(session_.device().Parts(), &inventory);
  items[1].source = items[0].source;  // the batteries, also of the cycle count
  for (Item& item : items) {
    if (has_sensors && item.source.empty()) item.source = DescriptionOfSensor(item.key);
    if (item.source.empty()) item.source = std::string(item.service) + " service";
  }
  session_.ShowPending();  // the notices
  return inventory;
}

}  // namespace norvik::qel::monitor
