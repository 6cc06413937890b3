// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The records and enums of the HIDL thermal interfaces as text.
#include <android/binder_enums.h>
#include <android/hardware/thermal/1.0/types.h>
#include <android/hardware/thermal/2.0/types.h>

#include <cstdio>
#include <string>

#include "record_text.h"

// The sizes are part of the platform's interface.
static_assert(sizeof(android::hardware::thermal::V1_0::ThermalStatus) == 24);
static_assert(sizeof(android::hardware::thermal::V1_0::Temperature) == 40);
static_assert(sizeof(android::hardware::thermal::V1_0::CoolingDevice) == 32);
static_assert(sizeof(android::hardware::thermal::V1_0::CpuUsage) == 40);
static_assert(sizeof(android::hardware::thermal::V2_0::Temperature) == 32);
static_assert(sizeof(android::hardware::thermal::V2_0::TemperatureThreshold) == 88);
static_assert(sizeof(android::hardware::thermal::V2_0::CoolingDevice) == 32);

namespace norvik::qel::fake {
namespace {

// The name, or the number if the value has no name.
template <typename Enum>
std::string HidlEnumText(Enum value) {
  std::string name = ndk::internal::NameOf(value);
  if (!name.empty()) return name;
  char text[11];
  snprintf(text, sizeof(text), "0x%x", static_cast<uint32_t>(value));
  return text;
}

}  // namespace
}  // namespace norvik::qel::fake

namespace android::hardware::thermal::V1_0 {

using norvik::qel::fake::HidlEnumText;
using norvik::qel::fake::HidlRecordText;

std::string toString(ThermalStatusCode value) {
  return HidlEnumText(value);
}

std::string toString(TemperatureType value) {
  return HidlEnumText(value);
}

std::string toString(CoolingType value) {
  return HidlEnumText(value);
}

std::string toString(const ThermalStatus& record) {
  return HidlRecordText(QUORVEL_FAKE_FIELDS(record.code, record.debugMessage));
}

std::string toString(const Temperature& record) {
  return HidlRecordText(QUORVEL_FAKE_FIELDS(record.type, record.name, record.currentValue,
                                            record.throttlingThreshold, record.shutdownThreshold,
                                            record.vrThrottlingThreshold));
}

std::string toString(const CoolingDevice& record) {
  return HidlRecordText(QUORVEL_FAKE_FIELDS(record.type, record.name, record.currentValue));
}

std::string toString(const CpuUsage& record) {
  return HidlRecordText(
      QUORVEL_FAKE_FIELDS(record.name, record.active, record.total, record.isOnline));
}

}  // namespace android::hardware::thermal::V1_0

namespace android::hardware::thermal::V2_0 {

using norvik::qel::fake::HidlEnumText;
using norvik::qel::fake::HidlRecordText;

std::string toString(TemperatureType value) {
  return HidlEnumText(value);
}

std::string toString(CoolingType value) {
  return HidlEnumText(value);
}

std::string toString(ThrottlingSeverity value) {
  return HidlEnumText(value);
}

std::string toString(const Temperature& record) {
  return HidlRecordText(
      QUORVEL_FAKE_FIELDS(record.type, record.name, record.value, record.throttlingStatus));
}

std::string toString(const TemperatureThreshold& record) {
  return HidlRecordText(
      QUORVEL_FAKE_FIELDS(record.type, record.name, record.hotThrottlingThresholds,
                          record.coldThrottlingThresholds, record.vrThrottlingThreshold));
}

std::string toString(const CoolingDevice& record) {
  return HidlRecordText(QUORVEL_FAKE_FIELDS(record.type, record.name, record.value));
}

}  // namespace android::hardware::thermal::V2_0
