// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "audio_hw_sensor"

#include "sensor/sensor_info.h"

#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "common/client_calls.h"
#include "common/owner_thread.h"
#include "sensor/shared_poll.h"

namespace norvik::qel::audio {

namespace {

using aidl::android::frameworks::sensorservice::ISensorManager;

using SensorPollThread = OwnerThread<&SensorInfo::GetSensorUpdate>;
using SensorCallbackThread = OwnerThread<&SensorInfo::DispatchToClient>;
using SensorReconnectedThread = OwnerThread<&SensorInfo::ReconnectToSensorService>;

const char* ServiceName() {
  // Leaked on purpose: a handle that was never deinitialized may use it when the process exits.
  static const std::string& name =
      *new std::string(std::string(ISensorManager::descriptor) + "/default");
  return name.c_str();
}

// Rounds towards zero. The conversion of a value that no int can hold is undefined in C++; this
// gives what 64-bit Arm's conversion does: the nearest int, and 0 for NaN.
int Truncate(float reading) {
  using Limits = std::numeric_limits<int>;
  if (std::isnan(reading)) return 0;
  // The float nearest to the greatest int is one above it.
  if (reading >= static_cast<float>(Limits::max())) return Limits::max();
  if (reading <= static_cast<float>(Limits::min())) return Limits::min();
  return static_cast<int>(reading);
}

const char* Letter(bool flag) {
  return flag ? "T" : "F";
}

SensorInfo::AudioSensorType OtherThan(SensorInfo::AudioSensorType type) {
  return type == SensorInfo::PROXIMITY ? SensorInfo::HINGE_ANGLE : SensorInfo::PROXIMITY;
}

bool IsSensor(SensorInfo::AudioSensorType type) {
  return type == SensorInfo::PROXIMITY || type == SensorInfo::HINGE_ANGLE;
}

}  // namespace

SensorInfo::SensorInfo() = default;

SensorInfo::~SensorInfo() = default;

bool SensorInfo::Initialize() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    for (SensorState& state : sensors_) {
      state.sensor = nullptr;
      state.initialized = false;
      state.active = false;
      state.data = 0;
    }
    // ReleaseInterface() does not clear these when the service never came up, and a registration
    // after Deinitialize() may have added to them.
    for (ClientList& clients : clients_) clients.Clear();
    pending_sensors_.clear();
    poll_started_ = false;
    closing_ = false;
    poll_thread_ =
        std::make_unique<SensorPollThread>(this, "sensor_poll", /*pause_ms=*/0, /*repeat_count=*/0);
    poll_thread_->Initialize();
    callback_thread_ = std::make_unique<SensorCallbackThread>(this, "sensor_callback",
                                                              /*pause_ms=*/0, /*repeat_count=*/0);
    callback_thread_->Initialize();
    reconnect_thread_ = std::make_unique<SensorReconnectedThread>(
        this, "sensor_reconnect", /*pause_ms=*/1000, /*repeat_count=*/10);
    reconnect_thread_->Initialize();
  }
  return true;
}

void SensorInfo::Deinitialize() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    // Until the joins, the reconnect worker or a callback may still enable a sensor and so start
    // the poll again. The poll thread must end all the same.
    closing_ = true;
    if (poll_started_) StopPoll();
  }
  // With no lock held: the workers' actions take lock_.
  if (poll_thread_ != nullptr) poll_thread_->Deinitialize();
  if (callback_thread_ != nullptr) callback_thread_->Deinitialize();
  if (reconnect_thread_ != nullptr) reconnect_thread_->Deinitialize();
  ReleaseInterface();
}

void SensorInfo::ReleaseInterface() {
  if (IsInterfaceReady()) {
    for (size_t i = 0; i < kSensorCount; ++i) {
      SensorState& state = sensors_[i];
      if (state.sensor != nullptr && state.active) {
        // A refusal is ignored: the queue is destroyed in any case.
        static_cast<void>(ASensorEventQueue_disableSensor(event_queue_, state.sensor));
      }
      state.sensor = nullptr;
      state.active = false;
      state.data = 0;
      clients_[i].Clear();
    }
    static_cast<void>(ASensorManager_destroyEventQueue(sensor_manager_, event_queue_));
  }
  looper_ = nullptr;
  event_queue_ = nullptr;
  sensor_manager_ = nullptr;
}

int SensorInfo::RegisterCallback(AudioSensorType type, const ClientInfo& client) {
  if (client.callback == nullptr || client.cookie == nullptr || !IsSensor(type)) return -EINVAL;
  std::lock_guard<std::mutex> lock(lock_);
  ClientList& clients = clients_[type];
  if (clients.Contains(client.id)) {
    ALOGW("%s: id(%d) already existed!", __func__, client.id);
    return -EINVAL;
  }
  if (clients.empty()) {
    const int result = EnableSensor(type);
    if (result != 0) return result;
  }
  clients.Append(client);
  // The new client receives the last reading.
  callback_thread_->Start();
  return 0;
}

int SensorInfo::DeregisterCallback(AudioSensorType type, int id) {
  if (!IsSensor(type)) return -EINVAL;
  std::lock_guard<std::mutex> lock(lock_);
  ClientList& clients = clients_[type];
  if (!clients.Remove(id)) {
    ALOGW("%s: id(%d) didn't register!", __func__, id);
    return -EINVAL;
  }
  ALOGD("%s: remove id(%d)", __func__, id);
  return clients.empty() ? DisableSensor(type) : 0;
}

void SensorInfo::DispatchToClient() {
  ClientCalls calls;
  {
    std::lock_guard<std::mutex> lock(lock_);
    for (size_t i = 0; i < kSensorCount; ++i) {
      const bool active = sensors_[i].active;  // otherwise the marks are dropped
      const int data = sensors_[i].data;
      clients_[i].TakeMarked([&](const SensorClient& client) {
        if (!active) return;
        calls.Add({.callback = client.callback,
                   .cookie = client.cookie,
                   .value = data,
                   .property = static_cast<int>(i)});
      });
    }
  }
  calls.Make();
}

int SensorInfo::GetASensorTyep(AudioSensorType type) const {
  if (type == PROXIMITY) return ASENSOR_TYPE_PROXIMITY;
  if (type == HINGE_ANGLE) return ASENSOR_TYPE_HINGE_ANGLE;
  ALOGW("%s: unknown audio sensor %d", __func__, type);
  return ASENSOR_TYPE_INVALID;
}

SensorInfo::AudioSensorType SensorInfo::GetAudioSensorType(int sensor_type) const {
  if (sensor_type == ASENSOR_TYPE_PROXIMITY) return PROXIMITY;
  if (sensor_type == ASENSOR_TYPE_HINGE_ANGLE) return HINGE_ANGLE;
  ALOGW("%s: unknown sensor %d", __func__, sensor_type);
  return UNKNOWN;
}

const char* SensorInfo::GetASensorString(AudioSensorType type) const {
  if (type == PROXIMITY) return "PROXIMITY";
  if (type == HINGE_ANGLE) return "HINGE_ANGLE";
  ALOGW("%s: unknown audio sensor %d", __func__, type);
  return "Unknown";
}

void SensorInfo::Dump(int fd) {
  DumpWriter out;
  out.Print("SensorInfo:\n");
  out.Print("  Poll :%s\n", Letter(poll_started_.load(std::memory_order_relaxed)));
  DumpSensor(PROXIMITY, out);
  DumpSensor(HINGE_ANGLE, out);
  out.WriteTo(fd);
}

void SensorInfo::DumpSensor(AudioSensorType type, DumpWriter& out) const {
  const SensorState& state = UnlockedSensor(type);
  out.Print("  Sensor: %s\n", GetASensorString(type));
  out.Print("    initialized:%s active:%s, data:%d\n",
            Letter(state.initialized.load(std::memory_order_relaxed)),
            Letter(state.active.load(std::memory_order_relaxed)),
            state.data.load(std::memory_order_relaxed));
  for (const SensorClient& client : clients_[type].Copy()) {
    out.Print("    client id:%d need_to_update:%s\n", client.id, Letter(client.need_to_update));
  }
}

bool SensorInfo::IsInterfaceReady() const {
  return sensor_manager_ != nullptr && event_queue_ != nullptr && looper_ != nullptr;
}

bool SensorInfo::InitSensorInterface() {
  if (IsInterfaceReady()) return true;
  AIBinder* const service = AServiceManager_checkService(ServiceName());
  if (service == nullptr) {
    ALOGW("%s: sensor service isn't ready, start to reconnect!", __func__);
    reconnect_thread_->Start();
    return false;
  }
  AIBinder_decStrong(service);  // only its presence matters: the service runs
  ALOGD("%s: start to initialize sensor interface", __func__);
  sensor_manager_ = ASensorManager_getInstanceForPackage(nullptr);
  if (sensor_manager_ == nullptr) {
    ALOGE("%s: Unable to get sensorManager.", __func__);
    return false;
  }
  looper_ = ALooper_forThread();
  if (looper_ == nullptr) looper_ = ALooper_prepare(ALOOPER_PREPARE_ALLOW_NON_CALLBACKS);
  if (looper_ == nullptr) {
    ALOGE("%s: Failed to prepare an event looper.", __func__);
    return false;
  }
  event_queue_ = ASensorManager_createEventQueue(sensor_manager_, looper_, /*ident=*/0,
                                                 /*callback=*/nullptr, /*data=*/nullptr);
  if (event_queue_ == nullptr) {
    ALOGE("%s: Unable to get event queue.", __func__);
    return false;
  }
  ALOGD("%s: success to initialize sensor interface", __func__);
  return true;
}

int SensorInfo::EnableSensor(AudioSensorType type) {
  if (poll_thread_ == nullptr || callback_thread_ == nullptr) {
    ALOGW("%s: system isn't initialized.", __func__);
    return -ENOSYS;
  }
  if (!InitSensorInterface()) {
    const bool waits =
        std::find(pending_sensors_.begin(), pending_sensors_.end(), type) != pending_sensors_.end();
    if (!waits) pending_sensors_.push_back(type);
    return 0;
  }
  SensorState& state = sensors_[type];
  if (!state.initialized) {
    ALOGD("%s: start to initialize sensor %s", __func__, GetASensorString(type));
    state.sensor = ASensorManager_getDefaultSensor(sensor_manager_, GetASensorTyep(type));
    // Also when the device has no such sensor, or when the look-up failed: it is made once.
    state.initialized = true;
    ALOGD("%s: end to initialize sensor %s", __func__, GetASensorString(type));
  }
  if (state.sensor == nullptr) {
    ALOGW("%s: sensor %s isn't supported.", __func__, GetASensorString(type));
    return -ENOSYS;
  }
  if (state.active) {
    ALOGD("%s: already enabled.", __func__);
    return -EINVAL;
  }
  const int result = ASensorEventQueue_registerSensor(
      event_queue_, state.sensor, ASensor_getMinDelay(state.sensor), /*maxBatchReportLatencyUs=*/0);
  if (result < 0) {
    ALOGE("%s:Failed to register sensor %s", __func__, GetASensorString(type));
    return result;
  }
  if (!sensors_[OtherThan(type)].active) {
    if (poll_started_) {
      ALOGD("%s: poll already started.", __func__);
    } else {
      poll_started_ = true;
      poll_thread_->Start();
      ALOGD("%s: poll started.", __func__);
    }
  }
  state.active = true;
  return result;
}

int SensorInfo::DisableSensor(AudioSensorType type) {
  if (std::erase(pending_sensors_, type) != 0) return 0;
  SensorState& state = sensors_[type];
  if (state.sensor == nullptr) return -ENOSYS;
  if (!state.active) {
    ALOGD("%s: already disabled.", __func__);
    return -EINVAL;
  }
  const int result = ASensorEventQueue_disableSensor(event_queue_, state.sensor);
  if (result < 0) {
    ALOGE("%s: Failed to deregister sensor %s", __func__, GetASensorString(type));
    return result;
  }
  state.active = false;
  if (sensors_[OtherThan(type)].active) return result;
  if (poll_started_) {
    StopPoll();
    ALOGD("%s: poll stopped.", __func__);
  } else {
    ALOGD("%s: poll already stopped.", __func__);
  }
  return result;
}

// Both under one hold of lock_, which the poll thread takes to see whether it is wanted. SharedPoll
// says why the thread cannot miss the wake.
void SensorInfo::StopPoll() {
  poll_started_ = false;
  ALooper_wake(looper_);
}

void SensorInfo::GetSensorUpdate() {
  SharedPoll& poll = SharedPoll::Get();
  uint64_t seen = 0;
  while (IsPollWanted()) {
    if (poll.Wait(seen)) ReadEvents();
  }
}

bool SensorInfo::IsPollWanted() {
  std::lock_guard<std::mutex> lock(lock_);
  return poll_started_ && !closing_;
}

void SensorInfo::ReadEvents() {
  bool has_clients = false;
  {
    std::lock_guard<std::mutex> lock(lock_);
    ASensorEvent event = {};
    while (ASensorEventQueue_getEvents(event_queue_, &event, 1) > 0) {
      const AudioSensorType type = GetAudioSensorType(event.type);
      if (type == UNKNOWN) continue;
      sensors_[type].data = Truncate(event.data[0]);
      has_clients |= clients_[type].MarkAll();
    }
  }
  // With lock_ free: a dispatch that begins at once would wait for it.
  if (has_clients) callback_thread_->Start();
}

bool SensorInfo::ReconnectToSensorService() {
  std::lock_guard<std::mutex> lock(lock_);
  if (pending_sensors_.empty()) return true;
  if (!InitSensorInterface()) return false;
  for (const AudioSensorType type : std::exchange(pending_sensors_, {})) {
    if (EnableSensor(type) != 0) {
      ALOGW("%s: client should register proper sensor", __func__);
    }
  }
  return true;
}

}  // namespace norvik::qel::audio
