// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "audio_hw_battery_api"

#include <log/log.h>

#include <cerrno>

#include "battery/battery_info.h"
#include "common/handle.h"
#include "quorvel.h"

namespace {

using norvik::qel::audio::BatteryInfo;
using norvik::qel::audio::DeinitHandle;
using norvik::qel::audio::DumpHandle;
using norvik::qel::audio::InitHandle;

int Get(void* handle, int (BatteryInfo::*getter)(bool), bool use_cached) {
  if (handle == nullptr) return -EINVAL;
  return (static_cast<BatteryInfo*>(handle)->*getter)(use_cached);
}

int Register(void* handle, BatteryInfo::PropertyType type, BatteryInfoCallback callback,
             void* cookie) {
  if (handle == nullptr || callback == nullptr) return -EINVAL;
  return static_cast<BatteryInfo*>(handle)->RegisterInfoCallback(type, callback, cookie);
}

int Deregister(void* handle, BatteryInfo::PropertyType type, BatteryInfoCallback callback) {
  if (handle == nullptr || callback == nullptr) return -EINVAL;
  return static_cast<BatteryInfo*>(handle)->DeregisterInfoCallback(type, callback);
}

}  // namespace

extern "C" {

void InitBatteryInfo(void** handle_out) {
  if (!InitHandle<BatteryInfo>(handle_out))
    ALOGW("%s: unable to initialize BatteryInfo.", __func__);
}

void DeinitBatteryInfo(void** handle_inout) {
  DeinitHandle<BatteryInfo>(handle_inout);
}

void DumpBatteryInfo(void* handle, int fd) {
  DumpHandle<BatteryInfo>(handle, fd);
}

int GetBatteryLevel(void* handle, bool use_cached) {
  return Get(handle, &BatteryInfo::GetBatteryLevel, use_cached);
}

int GetBatteryCycleCount(void* handle, bool use_cached) {
  return Get(handle, &BatteryInfo::GetBatteryCycleCount, use_cached);
}

int GetWirelessChargerIsOnline(void* handle, bool use_cached) {
  return Get(handle, &BatteryInfo::GetWirelessChargerIsOnline, use_cached);
}

int GetDockChargerIsOnline(void* handle, bool use_cached) {
  return Get(handle, &BatteryInfo::GetDockChargerIsOnline, use_cached);
}

int RegisterBatteryLevelCallback(void* handle, BatteryInfoCallback callback, void* cookie) {
  return Register(handle, BatteryInfo::kBatteryLevel, callback, cookie);
}

int DeregisterBatteryLevelCallback(void* handle, BatteryInfoCallback callback) {
  return Deregister(handle, BatteryInfo::kBatteryLevel, callback);
}

int RegisterBatteryCycleCountCallback(void* handle, BatteryInfoCallback callback, void* cookie) {
  return Register(handle, BatteryInfo::kBatteryCycleCount, callback, cookie);
}

int DeregisterBatteryCycleCountCallback(void* handle, BatteryInfoCallback callback) {
  return Deregister(handle, BatteryInfo::kBatteryCycleCount, callback);
}

int RegisterWirelessChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback,
                                            void* cookie) {
  return Register(handle, BatteryInfo::kWirelessChargerIsOnline, callback, cookie);
}

int DeregisterWirelessChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback) {
  return Deregister(handle, BatteryInfo::kWirelessChargerIsOnline, callback);
}

int RegisterDockChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback, void* cookie) {
  return Register(handle, BatteryInfo::kDockChargerIsOnline, callback, cookie);
}

int DeregisterDockChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback) {
  return Deregister(handle, BatteryInfo::kDockChargerIsOnline, callback);
}

}  // extern "C"
