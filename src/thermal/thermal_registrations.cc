// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// ThermalInfo's clients: registration and deregistration.
#define LOG_TAG "audio_hw_thermal"

#include <log/log.h>

#include <algorithm>
#include <cerrno>

#include "thermal/thermal_info.h"

namespace norvik::qel::audio {

int ThermalInfo::RegisterThermalCallback(int id, const std::string& type_name,
                                         const ThermalClientInfo& info) {
  int result = 0;
  LeavingCallbacks::Callbacks leaving;
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (deinitializing_) return -EINVAL;
    if (GetThermalService()) {
      result = RegisterThermalCallbackWithLock(id, type_name, info);
    } else if (!pending_callbacks_.contains(id)) {
      ALOGD("%s: Add %d to pending queue because of thermal service isn't ready.", __func__, id);
      pending_callbacks_.emplace(id, std::pair(type_name, info));
      restore_thread_->Start();
    }
    leaving = leaving_callbacks_.Take();
  }
  LeavingCallbacks::Join(leaving);
  return result;
}

int ThermalInfo::RegisterThermalCallbackWithLock(int id, const std::string& type_name,
                                                 const ThermalClientInfo& info) {
  // Used as it is: a service may have temperatures of an unknown type, too.
  const auto type = static_cast<TemperatureType>(GetThermalTypeByName(type_name));
  ALOGD("%s: type %s", __func__, type_name.c_str());
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
    // Joined here, under lock_ and perhaps by a worker: it never had a client that could block.
    callback->Deinitialize(thermal_);
    callback->StopCallbackThread();
  }
  return result;
}

int ThermalInfo::DeregisterThermalCallback(int id) {
  int result = 0;
  LeavingCallbacks::Callbacks leaving;
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (GetThermalService()) {
      result = DeregisterThermalCallbackWithLock(id);
    } else if (pending_callbacks_.erase(id) != 0) {
      ALOGD("%s: remove %d from pending queue because of thermal service isn't ready.", __func__,
            id);
    } else {
      ALOGW("%s: double remove for id %d", __func__, id);
    }
    leaving = leaving_callbacks_.Take();
  }
  LeavingCallbacks::Join(leaving);
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
    ALOGD("%s: thermal service isn't ready", __func__);
    return false;
  }
  for (const auto& [id, registration] : pending_callbacks_) {
    const auto& [type_name, info] = registration;
    const int result = RegisterThermalCallbackWithLock(id, type_name, info);
    ALOGD("%s: %s to register client %d callback(type:%s name:%s)", __func__,
          result < 0 ? "unable " : "able", id, type_name.c_str(), info.temperature_name.c_str());
  }
  // Including those that failed: they are not tried again.
  pending_callbacks_.clear();
  return true;
}

void ThermalInfo::Leave(std::unique_ptr<AudioThermalCallback> callback) {
  callback->Deinitialize(thermal_);
  leaving_callbacks_.Add(std::move(callback));
}

}  // namespace norvik::qel::audio
