// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/thermal_client.h"

#include <errno.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "clients/read_dump.h"

namespace norvik::qel::monitor {

namespace {

// Clients are counted from 1.
constexpr int kProbeId = 0;

// Severities are the library's numbers.
static_assert(static_cast<int>(Severity::kNone) == QUORVEL_THROTTLING_NONE);
static_assert(static_cast<int>(Severity::kShutdown) == QUORVEL_THROTTLING_SHUTDOWN);

Value Interpret(const thermistor& reading) {
  // A service may not know what a sensor reads.
  return std::isfinite(reading.value) ? Value(reading.value) : Value();
}

}  // namespace

ThermalClient::ThermalClient(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {
  InitThermalInfo(&handle_);
  if (handle_ == nullptr) {
    throw std::system_error(ENOMEM, std::generic_category(), "cannot make a thermal object");
  }
}

ThermalClient::~ThermalClient() {
  DeinitThermalInfo(&handle_);
}

bool ThermalClient::Register(const ThermalProperty& property) {
  const int id = static_cast<int>(cookies_.size()) + 1;
  Cookie& cookie =
      cookies_.emplace_back(Cookie{.property = &property, .id = id, .events = events_.get()});
  const ThermalCallbackParam param = {.id = id,
                                      .type_name = property.type_name,
                                      .temperature_name = property.temperature_name,
                                      .callback = OnSeverity};
  return RegisterThermalCallback(handle_, &param, &cookie) == 0;
}

bool ThermalClient::Deregister(const ThermalProperty& property) {
  const auto cookie =
      std::find_if(cookies_.rbegin(), cookies_.rend(),
                   [&](const Cookie& candidate) { return candidate.property == &property; });
  return cookie != cookies_.rend() && DeregisterThermalCallback(handle_, cookie->id) == 0;
}

void ThermalClient::OnSeverity(int number, void* cookie) {
  Cookie& mine = *static_cast<Cookie*>(cookie);
  const Value value = static_cast<Severity>(number);
  mine.events->Post(ValueChange{.property = mine.property,
                                .old_value = std::exchange(mine.last, value),
                                .new_value = value,
                                .thread = std::this_thread::get_id()});
}

// A service refuses a temperature without a name. Where there is none the registration waits.
bool ThermalClient::HasService() {
  const ThermalCallbackParam param = {
      .id = kProbeId, .type_name = "SKIN", .temperature_name = "", .callback = OnSeverity};
  if (RegisterThermalCallback(handle_, &param, &probe_) != 0) return true;
  static_cast<void>(DeregisterThermalCallback(handle_, kProbeId));
  return false;
}

std::optional<Severities> ThermalClient::Read(const ChargeLimitProperty& property) {
  // The library tells neither how many there are nor whether the room is what it complains of.
  constexpr int kEnoughForAll = 1 << 16;
  for (int room = GetBatteryChargeLimitCapacity(handle_); room <= kEnoughForAll; room *= 2) {
    if (room <= 0) return std::nullopt;
    std::vector<int> numbers(static_cast<size_t>(room));
    int size = room;
    if (property.get(handle_, numbers.data(), &size, /*use_cached=*/false) != 0) continue;
    Severities severities;
    std::transform(numbers.begin(), numbers.begin() + size, std::back_inserter(severities),
                   [](int number) { return static_cast<Severity>(number); });
    return severities;
  }
  return std::nullopt;
}

std::optional<std::vector<Severities>> ThermalClient::ReadLimits() {
  std::vector<Severities> limits;
  bool none = true;
  for (const ChargeLimitProperty* property : kChargeLimitProperties) {
    std::optional<Severities> severities = Read(*property);
    if (!severities) return std::nullopt;
    none &= severities->empty();
    limits.push_back(std::move(*severities));
  }
  if (none && !HasService()) return std::nullopt;
  return limits;
}

std::optional<std::vector<Value>> ThermalClient::ReadTemperatures(
    const std::vector<std::string>& names) {
  std::vector<const char*> texts;
  texts.reserve(names.size());
  for (const std::string& name : names) texts.push_back(name.c_str());
  std::vector<thermistor> readings(names.size());
  int count = static_cast<int>(readings.size());
  if (GetBulkTemperatureByNames(handle_, texts.data(), count, readings.data(), &count) != 0) {
    return std::nullopt;
  }
  if (count == 0 && !HasService()) return std::nullopt;
  readings.resize(static_cast<size_t>(count));
  std::vector<Value> values;
  for (const std::string_view name : names) {
    // The library cuts long names off.
    const std::string_view told = name.substr(0, QUORVEL_THERMISTOR_NAME_SIZE - 1);
    const auto found =
        std::find_if(readings.begin(), readings.end(),
                     [&](const thermistor& reading) { return reading.name == told; });
    values.push_back(found != readings.end() ? Interpret(*found) : Value(Absent()));
  }
  return values;
}

std::string ThermalClient::Dump() {
  return ReadDump(DumpThermalInfo, handle_);
}

}  // namespace norvik::qel::monitor
