// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/client.h"

#include <errno.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <system_error>
#include <thread>

namespace norvik::qel::monitor {

namespace {

struct Family {
  void (*init)(void** handle);
  void (*deinit)(void** handle);
  void (*dump)(void* handle, int fd);
};

// In the order of kClientFamilies.
constexpr Family kFamilies[] = {{InitBatteryInfo, DeinitBatteryInfo, DumpBatteryInfo},
                                {InitSensorInfo, DeinitSensorInfo, DumpSensorInfo},
                                {InitThermalInfo, DeinitThermalInfo, DumpThermalInfo}};

size_t PlaceOf(std::string_view family) {
  return static_cast<size_t>(std::find(kClientFamilies.begin(), kClientFamilies.end(), family) -
                             kClientFamilies.begin());
}

// Severity has the library's numbers.
static_assert(static_cast<int>(Severity::kNone) == QUORVEL_THROTTLING_NONE);
static_assert(static_cast<int>(Severity::kShutdown) == QUORVEL_THROTTLING_SHUTDOWN);

}  // namespace

Client::~Client() {
  for (size_t i = handles_.size(); i-- > 0;) {
    if (handles_[i] != nullptr) kFamilies[i].deinit(&handles_[i]);
  }
}

void* Client::HandleOf(std::string_view family) {
  void*& handle = handles_[PlaceOf(family)];
  if (handle == nullptr) kFamilies[PlaceOf(family)].init(&handle);
  if (handle != nullptr) return handle;
  throw std::system_error(ENOMEM, std::generic_category(),
                          "cannot make an object for " + std::string(family));
}

void Client::Learn(const TemperatureReport& report) {
  const std::string key = KeyOf(report);
  if (!TemperatureOf(key)) return;
  const bool is_known =
      std::find(temperatures_.begin(), temperatures_.end(), key) != temperatures_.end();
  if (!is_known) temperatures_.push_back(key);
}

bool Client::Join(std::string_view subject) {
  bool all = true;
  if (subject == kBatteryFamily) {
    for (const Property* property : kBatteryProperties) all &= Register(property->key);
  } else if (subject == kSensorFamily) {
    for (const Property* property : kSensorProperties) all &= Register(property->key);
  } else if (subject == kThermalFamily) {
    for (const std::string& key : temperatures_) all &= Register(key);
  } else {
    all = Register(subject);
  }
  return all;
}

bool Client::Leave(std::string_view subject) {
  bool all = true;
  for (Cookie& cookie : cookies_) {
    if (cookie.is_registered && Covers(subject, cookie.key)) all &= Deregister(cookie);
  }
  return all;
}

bool Client::Register(std::string_view key) {
  const int id = static_cast<int>(cookies_.size()) + 1;
  Cookie& cookie =
      cookies_.emplace_back(Cookie{.key = std::string(key), .id = id, .events = events_.get()});
  cookie.property = PropertyOf(cookie.key);
  int result = 0;
  if (const auto* battery = BatteryPropertyOf(key)) {
    result = battery->register_callback(HandleOf(kBatteryFamily), OnValue, &cookie);
  } else if (const auto* sensor = SensorPropertyOf(key)) {
    result = sensor->register_callback(HandleOf(kSensorFamily), id, OnValue, &cookie);
    if (result == -ENOSYS) absent_sensors_.insert(sensor);
  } else {
    const TemperatureKey temperature = SplitTemperatureKey(key).value_or(TemperatureKey());
    const ThermalCallbackParam param = {.id = id,
                                        .type_name = temperature.type.c_str(),
                                        .temperature_name = temperature.name.c_str(),
                                        .callback = OnValue};
    result = RegisterThermalCallback(HandleOf(kThermalFamily), &param, &cookie);
  }
  cookie.is_registered = result == 0;
  return result == 0 || result == -ENOSYS;
}

bool Client::Deregister(Cookie& cookie) {
  cookie.is_registered = false;
  if (const auto* battery = BatteryPropertyOf(cookie.key)) {
    return battery->deregister_callback(HandleOf(kBatteryFamily), OnValue) == 0;
  }
  if (const auto* sensor = SensorPropertyOf(cookie.key)) {
    return sensor->deregister_callback(HandleOf(kSensorFamily), cookie.id) == 0;
  }
  return DeregisterThermalCallback(HandleOf(kThermalFamily), cookie.id) == 0;
}

void Client::OnValue(int number, void* cookie) {
  Cookie& mine = *static_cast<Cookie*>(cookie);
  const Value value = Interpret(mine.key, number);
  mine.events->Post(ValueChange{.property = &mine.property,
                                .old_value = std::exchange(mine.last, value),
                                .new_value = value,
                                .thread = std::this_thread::get_id()});
}

std::vector<const SensorProperty*> Client::sensors() const {
  std::vector<const SensorProperty*> sensors;
  for (const Cookie& cookie : cookies_) {
    const auto* const sensor = SensorPropertyOf(cookie.key);
    if (sensor != nullptr && cookie.is_registered) sensors.push_back(sensor);
  }
  return sensors;
}

std::optional<Value> Client::Read(const BatteryProperty& property) {
  const int number = property.get(HandleOf(kBatteryFamily), /*use_cached=*/false);
  if (number == -EAGAIN || number == -EINVAL) return std::nullopt;
  return Interpret(property.key, number);
}

// Registers for a temperature with an empty name. A running service refuses that; without one, the
// library accepts the registration and keeps it for later.
bool Client::HasThermalService() {
  // The ids of other registrations begin at 1.
  const ThermalCallbackParam param = {
      .id = 0, .type_name = "SKIN", .temperature_name = "", .callback = OnValue};
  void* const handle = HandleOf(kThermalFamily);
  if (RegisterThermalCallback(handle, &param, &probe_) != 0) return true;
  static_cast<void>(DeregisterThermalCallback(handle, param.id));
  return false;
}

std::optional<Severities> Client::Read(const ChargeLimitProperty& property) {
  void* const handle = HandleOf(kThermalFamily);
  // The library reports neither the number of limits nor whether it failed for lack of room.
  constexpr int kEnoughForAll = 1 << 16;
  for (int room = GetBatteryChargeLimitCapacity(handle); room <= kEnoughForAll; room *= 2) {
    if (room <= 0) return std::nullopt;
    std::vector<int> numbers(static_cast<size_t>(room));
    int size = room;
    if (property.get(handle, numbers.data(), &size, /*use_cached=*/false) != 0) continue;
    Severities severities;
    std::transform(numbers.begin(), numbers.begin() + size, std::back_inserter(severities),
                   [](int number) { return static_cast<Severity>(number); });
    return severities;
  }
  return std::nullopt;
}

std::optional<std::vector<Severities>> Client::ReadLimits() {
  std::vector<Severities> limits;
  bool none = true;
  for (const ChargeLimitProperty* property : kChargeLimitProperties) {
    std::optional<Severities> severities = Read(*property);
    if (!severities) return std::nullopt;
    none &= severities->empty();
    limits.push_back(std::move(*severities));
  }
  if (none && !HasThermalService()) return std::nullopt;
  return limits;
}

std::optional<std::vector<Value>> Client::ReadTemperatures(const std::vector<std::string>& names) {
  std::vector<const char*> texts;
  texts.reserve(names.size());
  for (const std::string& name : names) texts.push_back(name.c_str());
  std::vector<thermistor> readings(names.size());
  int count = static_cast<int>(readings.size());
  if (GetBulkTemperatureByNames(HandleOf(kThermalFamily), texts.data(), count, readings.data(),
                                &count) != 0) {
    return std::nullopt;
  }
  if (count == 0 && !HasThermalService()) return std::nullopt;
  readings.resize(static_cast<size_t>(count));
  std::vector<Value> values;
  for (const std::string_view name : names) {
    // The library truncates long names.
    const std::string_view told = name.substr(0, QUORVEL_THERMISTOR_NAME_SIZE - 1);
    const auto found =
        std::find_if(readings.begin(), readings.end(),
                     [&](const thermistor& reading) { return reading.name == told; });
    values.emplace_back(Absent());
    if (found == readings.end()) continue;
    // Not finite: the service has no reading of this temperature.
    values.back() = std::isfinite(found->value) ? Value(found->value) : Value();
  }
  return values;
}

std::string Client::Dump(std::string_view family) {
  // A memory file holds a dump of any length; a pipe without a concurrent reader could fill up.
  const int fd = memfd_create("dump", MFD_CLOEXEC);
  if (fd < 0) throw std::system_error(errno, std::generic_category(), "memfd_create");
  kFamilies[PlaceOf(family)].dump(HandleOf(family), fd);
  lseek(fd, 0, SEEK_SET);
  std::string text;
  char part[1024];
  for (ssize_t size; (size = read(fd, part, sizeof part)) > 0;) {
    text.append(part, static_cast<size_t>(size));
  }
  close(fd);
  return text;
}

}  // namespace norvik::qel::monitor
