#include <android/log.h>

#include <cerrno>

#include "quorvel.h"
#include "sensor/sensor_info.h"

namespace {

using norvik::qel::audio::SensorInfo;

constexpr char kLogTag[] = "audio_hw_sensor_api";

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
  if (handle == nullptr) return;
  auto* sensor_info = new SensorInfo;
  if (sensor_info->Initialize()) {
    *handle = sensor_info;
    return;
  }
  sensor_info->Deinitialize();
  delete sensor_info;
  *handle = nullptr;
  __android_log_print(ANDROID_LOG_WARN, kLogTag, "%s: unable to initialize SensorData.", __func__);
}

void DeinitSensorInfo(void** handle) {
  if (handle == nullptr || *handle == nullptr) return;
  auto* sensor_info = static_cast<SensorInfo*>(*handle);
  sensor_info->Deinitialize();
  delete sensor_info;
  *handle = nullptr;
}

void DumpSensorInfo(void* handle, int fd) {
  if (handle != nullptr) static_cast<SensorInfo*>(handle)->Dump(fd);
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
