// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "audio_hw_sensor_api"

#include <log/log.h>

#include <cerrno>

#include "common/handle.h"
#include "quorvel.h"
#include "sensor/sensor_info.h"

namespace {

using norvik::qel::audio::DeinitHandle;
using norvik::qel::audio::DumpHandle;
using norvik::qel::audio::InitHandle;
using norvik::qel::audio::SensorInfo;

int Register(void* handle, SensorInfo::AudioSensorType type, int id, SensorCallbackFunc callback,
             void* cookie) {
  if (handle == nullptr || callback == nullptr || cookie == nullptr) return -EINVAL;
  return static_cast<SensorInfo*>(handle)->RegisterCallback(
      type, {.need_to_update = true, .id = id, .callback = callback, .cookie = cookie});
}

int Deregister(void* handle, SensorInfo::AudioSensorType type, int id) {
  if (handle == nullptr) return -EINVAL;
  return static_cast<SensorInfo*>(handle)->DeregisterCallback(type, id);
}

}  // namespace

extern "C" {

void InitSensorInfo(void** handle) {
  if (!InitHandle<SensorInfo>(handle)) ALOGW("%s: unable to initialize SensorData.", __func__);
}

void DeinitSensorInfo(void** handle) {
  DeinitHandle<SensorInfo>(handle);
}

void DumpSensorInfo(void* handle, int fd) {
  DumpHandle<SensorInfo>(handle, fd);
}

int RegisterProximitySensorCallback(void* handle, int id, SensorCallbackFunc callback,
                                    void* cookie) {
  return Register(handle, SensorInfo::PROXIMITY, id, callback, cookie);
}

int DeregisterProximitySensorCallback(void* handle, int id) {
  return Deregister(handle, SensorInfo::PROXIMITY, id);
}

int RegisterHingeAngleSensorCallback(void* handle, int id, SensorCallbackFunc callback,
                                     void* cookie) {
  return Register(handle, SensorInfo::HINGE_ANGLE, id, callback, cookie);
}

int DeregisterHingeAngleSensorCallback(void* handle, int id) {
  return Deregister(handle, SensorInfo::HINGE_ANGLE, id);
}

}  // extern "C"
