// ThermalInfo's clients: how they come and go.
#include <android/log.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "thermal/thermal_info.h"

namespace norvik::qel::audio {

namespace {

constexpr char kLogTag[] = "audio_hw_thermal";

}  // namespace

int ThermalInfo::RegisterThermalCallback(int id, const std::string& type_name,
                                         const ThermalClientInfo& info) {
  int result = 0;
  Callbacks leaving;
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (deinitializing_) return -EINVAL;
    if (GetThermalService()) {
      result = RegisterThermalCallbackWithLock(id, type_name, info);
    } else if (!pending_callbacks_.contains(id)) {
      __android_log_print(ANDROID_LOG_DEBUG, kLogTag,
                          "%s: Add %d to pending queue because of thermal service isn't ready.",
                          __func__, id);
      pending_callbacks_.emplace(id, std::pair(type_name, info));
      restore_thread_->Start();
    }
    leaving = TakeLeaving();
  }
  Stop(leaving);
  return result;
}

int ThermalInfo::RegisterThermalCallbackWithLock(int id, const std::string& type_name,
                                                 const ThermalClientInfo& info) {
  // Used as it comes: a service may have temperatures of an unknown type, too.
  const auto type = static_cast<TemperatureType>(GetThermalTypeByName(type_name));
  __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s: type %s", __func__, type_name.c_str());
  const auto found = std::find_if(
      thermal_callbacks_.begin(), thermal_callbacks_.end(),
      [&](const auto& callback) { return callback->supported_temperature_type() == type; });
  if (found != thermal_callbacks_.end()) return (*found)->AddClientCallback(id, info, thermal_);

  auto callback = std::make_unique<AudioThermalCallback>(type);
  if (!callback->Initialize(thermal_)) return -EINVAL;
  const int result = callback->AddClientCallback(id, info, thermal_);
  if (result == 0) {
    thermal_callbacks_.push_back(std::move(callback));
  } else {
    // Joined here, under lock_ and perhaps by a worker: it never had a client that could wait.
    callback->Deinitialize(thermal_);
    callback->StopCallbackThread();
  }
  return result;
}

int ThermalInfo::DeregisterThermalCallback(int id) {
  int result = 0;
  Callbacks leaving;
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (GetThermalService()) {
      result = DeregisterThermalCallbackWithLock(id);
    } else if (pending_callbacks_.erase(id) != 0) {
      __android_log_print(
          ANDROID_LOG_DEBUG, kLogTag,
          "%s: remove %d from pending queue because of thermal service isn't ready.", __func__, id);
    } else {
      __android_log_print(ANDROID_LOG_WARN, kLogTag, "%s: double remove for id %d", __func__, id);
    }
    leaving = TakeLeaving();
  }
  Stop(leaving);
  return result;
}

int ThermalInfo::DeregisterThermalCallbackWithLock(int id) {
  const auto found = std::find_if(thermal_callbacks_.begin(), thermal_callbacks_.end(),
                                  [&](const auto& callback) { return callback->HasClient(id); });
  if (found == thermal_callbacks_.end()) return -EINVAL;
  const int result = (*found)->RemoveClientCallback(id);
  if (!(*found)->HasClients()) {
    Leave(std::move(*found));
    thermal_callbacks_.erase(found);
  }
  return result;
}

bool ThermalInfo::RestorePendingThermalCallback() {
  std::lock_guard<std::mutex> lock(lock_);
  if (!ConnectToLivingService()) {
    __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "%s: thermal service isn't ready", __func__);
    return false;
  }
  for (const auto& [id, registration] : pending_callbacks_) {
    const auto& [type_name, info] = registration;
    const int result = RegisterThermalCallbackWithLock(id, type_name, info);
    __android_log_print(ANDROID_LOG_DEBUG, kLogTag,
                        "%s: %s to register client %d callback(type:%s name:%s)", __func__,
                        result < 0 ? "unable " : "able", id, type_name.c_str(),
                        info.temperature_name.c_str());
  }
  // Also those that have failed: they are not tried again.
  pending_callbacks_.clear();
  return true;
}

void ThermalInfo::Leave(std::unique_ptr<AudioThermalCallback> callback) {
  callback->Deinitialize(thermal_);
  leaving_callbacks_.push_back(std::move(callback));
}

ThermalInfo::Callbacks ThermalInfo::TakeLeaving() {
  if (RepeatedThread::IsWorker()) {
    for (auto& callback : leaving_callbacks_) {
      callback->RequestExit();
      retired_callbacks_.push_back(std::move(callback));
    }
    leaving_callbacks_.clear();
  }
  Callbacks stoppable;
  stoppable.swap(leaving_callbacks_);
  const auto ended =
      std::stable_partition(retired_callbacks_.begin(), retired_callbacks_.end(),
                            [](const auto& callback) { return !callback->HasEnded(); });
  std::move(ended, retired_callbacks_.end(), std::back_inserter(stoppable));
  retired_callbacks_.erase(ended, retired_callbacks_.end());
  return stoppable;
}

void ThermalInfo::Stop(const Callbacks& callbacks) {
  for (const auto& callback : callbacks) callback->StopCallbackThread();
}

ThermalInfo::Callbacks ThermalInfo::TakeAllLeft() {
  Callbacks all;
  all.swap(leaving_callbacks_);
  std::move(retired_callbacks_.begin(), retired_callbacks_.end(), std::back_inserter(all));
  retired_callbacks_.clear();
  return all;
}

}  // namespace norvik::qel::audio
