/* SPDX-FileCopyrightText: 2026 The quorvel developers
 * SPDX-License-Identifier: Apache-2.0
 */

/* Every function of quorvel.h from C11, without a service. */
#define _POSIX_C_SOURCE 200809L

#include <errno.h>
#include <stdio.h>
#include <unistd.h>

#include "quorvel.h"

/* Programs that were built with other values would misread the library. */
_Static_assert(QUORVEL_BATTERY_UNKNOWN == -1, "no value");
_Static_assert(QUORVEL_CHARGER_ONLINE == 0 && QUORVEL_CHARGER_OFFLINE == 1, "inverted");
_Static_assert(QUORVEL_THERMAL_TYPE_UNKNOWN == -1, "no type");
_Static_assert(QUORVEL_THERMAL_TYPE_CPU == 0 && QUORVEL_THERMAL_TYPE_NPU == 9, "types");
_Static_assert(QUORVEL_THROTTLING_NONE == 0 && QUORVEL_THROTTLING_SHUTDOWN == 6, "severities");

static int failures = 0;

#define CHECK(condition) \
  if (!(condition)) ++failures, fprintf(stderr, "line %d: %s\n", __LINE__, #condition)

static void OnValue(int value, void* cookie) {
  *(int*)cookie = value;
}

static const struct {
  int (*get)(void* handle, bool use_cached);
  int (*enlist)(void* handle, BatteryInfoCallback callback, void* cookie);
  int (*leave)(void* handle, BatteryInfoCallback callback);
} kProperties[] = {
    {GetBatteryLevel, RegisterBatteryLevelCallback, DeregisterBatteryLevelCallback},
    {GetBatteryCycleCount, RegisterBatteryCycleCountCallback, DeregisterBatteryCycleCountCallback},
    {GetWirelessChargerIsOnline, RegisterWirelessChargerIsOnlineCallback,
     DeregisterWirelessChargerIsOnlineCallback},
    {GetDockChargerIsOnline, RegisterDockChargerIsOnlineCallback,
     DeregisterDockChargerIsOnlineCallback},
};

static void TestBattery(void) {
  InitBatteryInfo(NULL);
  DeinitBatteryInfo(NULL);
  DumpBatteryInfo(NULL, STDERR_FILENO);
  int value = 0;
  void* handle = NULL;
  DeinitBatteryInfo(&handle);
  InitBatteryInfo(&handle);
  CHECK(handle != NULL);
  for (size_t i = 0; i < sizeof kProperties / sizeof kProperties[0]; ++i) {
    CHECK(kProperties[i].get(NULL, true) == -EINVAL);
    CHECK(kProperties[i].get(NULL, false) == -EINVAL);
    CHECK(kProperties[i].get(handle, true) == QUORVEL_BATTERY_UNKNOWN);
    CHECK(kProperties[i].get(handle, false) == -EAGAIN);
    CHECK(kProperties[i].enlist(NULL, OnValue, &value) == -EINVAL);
    CHECK(kProperties[i].enlist(handle, NULL, &value) == -EINVAL);
    CHECK(kProperties[i].enlist(handle, OnValue, NULL) == 0);
    CHECK(kProperties[i].enlist(handle, OnValue, &value) == -EINVAL);
  }
  DumpBatteryInfo(handle, STDERR_FILENO);
  for (size_t i = 0; i < sizeof kProperties / sizeof kProperties[0]; ++i) {
    CHECK(kProperties[i].leave(NULL, OnValue) == -EINVAL);
    CHECK(kProperties[i].leave(handle, NULL) == -EINVAL);
    CHECK(kProperties[i].leave(handle, OnValue) == 0);
    CHECK(kProperties[i].leave(handle, OnValue) == -EINVAL);
  }
  DeinitBatteryInfo(&handle);
  CHECK(handle == NULL);
  CHECK(value == 0);
}

static const struct {
  int (*enlist)(void* handle, int id, SensorCallbackFunc callback, void* cookie);
  int (*leave)(void* handle, int id);
} kSensors[] = {
    {RegisterProximitySensorCallback, DeregisterProximitySensorCallback},
    {RegisterHingeAngleSensorCallback, DeregisterHingeAngleSensorCallback},
};

static void TestSensors(void) {
  InitSensorInfo(NULL);
  DeinitSensorInfo(NULL);
  DumpSensorInfo(NULL, STDERR_FILENO);
  int value = 0;
  void* handle = NULL;
  DeinitSensorInfo(&handle);
  InitSensorInfo(&handle);
  CHECK(handle != NULL);
  for (size_t i = 0; i < sizeof kSensors / sizeof kSensors[0]; ++i) {
    CHECK(kSensors[i].enlist(NULL, 1, OnValue, &value) == -EINVAL);
    CHECK(kSensors[i].enlist(handle, 1, NULL, &value) == -EINVAL);
    CHECK(kSensors[i].enlist(handle, 1, OnValue, NULL) == -EINVAL);
    CHECK(kSensors[i].leave(NULL, 1) == -EINVAL);
    CHECK(kSensors[i].leave(handle, 1) == -EINVAL);
    CHECK(kSensors[i].enlist(handle, 1, OnValue, &value) == 0);
    CHECK(kSensors[i].enlist(handle, 1, OnValue, &value) == -EINVAL);
  }
  DumpSensorInfo(handle, STDERR_FILENO);
  CHECK(kSensors[0].leave(handle, 1) == 0);
  DeinitSensorInfo(&handle);
  CHECK(handle == NULL);
  CHECK(value == 0);
}

static void TestThermal(void) {
  int value = 0;
  void* handle = NULL;
  InitThermalInfo(NULL);
  DeinitThermalInfo(&handle);
  InitThermalInfo(&handle);
  CHECK(handle != NULL);
  int size = 1;
  CHECK(GetBatteryChargeLimitCurrent(handle, &value, &size, false) == 0);
  CHECK(size == 0);
  CHECK(GetBatteryChargeLimitVoltage(handle, &value, NULL, true) == -EINVAL);
  CHECK(GetBatteryChargeLimitCapacity(handle) == 16);
  CHECK(GetThermalTypeByName(handle, "NPU") == QUORVEL_THERMAL_TYPE_NPU);
  CHECK(GetThermalTypeByName(handle, "npu") == QUORVEL_THERMAL_TYPE_UNKNOWN);
  CHECK(GetThrottlingSeverityByName(handle, "SHUTDOWN") == QUORVEL_THROTTLING_SHUTDOWN);
  const char* names[] = {"skin"};
  thermistor reading = {.name = "untouched"};
  int count = 1;
  CHECK(GetBulkTemperatureByNames(handle, names, 1, &reading, &count) == 0);
  CHECK(count == 0);
  const ThermalCallbackParam param = {1, "SKIN", "skin", OnValue};
  const ThermalCallbackParam bad[] = {
      {1, NULL, "skin", OnValue}, {1, "SKIN", NULL, OnValue}, {1, "SKIN", "skin", NULL}};
  for (size_t i = 0; i < sizeof bad / sizeof bad[0]; ++i) {
    CHECK(RegisterThermalCallback(handle, &bad[i], &value) == -EINVAL);
  }
  CHECK(RegisterThermalCallback(NULL, &param, &value) == -EINVAL);
  CHECK(RegisterThermalCallback(handle, NULL, &value) == -EINVAL);
  CHECK(RegisterThermalCallback(handle, &param, NULL) == -EINVAL);
  CHECK(RegisterThermalCallback(handle, &param, &value) == 0);
  DumpThermalInfo(handle, STDERR_FILENO);
  DumpThermalInfo(NULL, STDERR_FILENO);
  CHECK(DeregisterThermalCallback(NULL, 1) == -EINVAL);
  CHECK(DeregisterThermalCallback(handle, 1) == 0);
  DeinitThermalInfo(&handle);
  CHECK(handle == NULL);
  CHECK(value == 0);
}

int main(void) {
  TestBattery();
  TestSensors();
  TestThermal();
  return failures == 0 ? 0 : 1;
}
