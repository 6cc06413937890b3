// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "audio_hw_thermal"

#include "thermal/audio_thermal_callback.h"

#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "common/client_calls.h"
#include "common/owner_thread.h"
#include "thermal/temperature_name.h"

namespace norvik::qel::audio {

namespace {

using ::android::sp;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::thermal::V1_0::ThermalStatus;
using ::android::hardware::thermal::V1_0::ThermalStatusCode;
using ::android::hardware::thermal::V2_0::Temperature;

constexpr size_t kExpectedTemperatures = 8;

using ThermalClientCallbackThread = OwnerThread<&AudioThermalCallback::DispatchToClient>;

}  // namespace

AudioThermalCallback::AudioThermalCallback(TemperatureType type)
    : supported_temperature_type_(type) {
  clients_.max_load_factor(1.0F);
}

AudioThermalCallback::~AudioThermalCallback() = default;

bool AudioThermalCallback::Initialize(const sp<IThermal>& thermal) {
  {
    std::lock_guard<std::mutex> lock(lock_);
    temperatures_.reserve(kExpectedTemperatures);
    thermal_changed_callback_ = sp<AudioThermalChangedCallback>::make();
    callback_thread_ = std::make_unique<ThermalClientCallbackThread>(
        this, "thermal_callback", /*pause_ms=*/0, /*repeat_count=*/0);
    callback_thread_->Initialize();
    RegisterCallbackToThermal(thermal);
  }
  // Only now: a report that comes earlier is older than what the first client receives anyway.
  thermal_changed_callback_->SetAudioThermalCallback(this);
  return true;
}

void AudioThermalCallback::Deinitialize(const sp<IThermal>& thermal) {
  {
    std::lock_guard<std::mutex> lock(lock_);
    DeregisterCallbackToThermal(thermal);
    clients_.clear();
  }
  thermal_changed_callback_->SetAudioThermalCallback(nullptr);
}

void AudioThermalCallback::RequestExit() {
  callback_thread_->RequestExit();
}

bool AudioThermalCallback::HasEnded() {
  return callback_thread_->HasEnded();
}

void AudioThermalCallback::StopCallbackThread() {
  callback_thread_->Deinitialize();
}

int AudioThermalCallback::AddClientCallback(int id, const ThermalClientInfo& info,
                                            const sp<IThermal>& thermal) {
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (clients_.contains(id)) return -EINVAL;
    std::optional<Temperature> present;
    const Return<void> answered = thermal->getCurrentTemperatures(
        /*filterType=*/true, supported_temperature_type_,
        [&](const ThermalStatus& status, const hidl_vec<Temperature>& temperatures) {
          if (status.code != ThermalStatusCode::SUCCESS) return;
          const auto found = std::find_if(temperatures.begin(), temperatures.end(),
                                          [&](const Temperature& temperature) {
                                            return NameOf(temperature) == info.temperature_name;
                                          });
          if (found != temperatures.end()) present = *found;
        });
    if (!answered.isOk()) {
      ALOGW("%s: Transaction failed.", __func__);
    }
    if (!present) {
      ALOGD("%s: name(%s) can't be found in service supported list", __func__,
            info.temperature_name.c_str());
      return -EINVAL;
    }
    clients_.emplace(id, info);
    temperatures_.push_back(*std::move(present));
  }
  callback_thread_->Start();
  return 0;
}

int AudioThermalCallback::RemoveClientCallback(int id) {
  std::lock_guard<std::mutex> lock(lock_);
  if (clients_.erase(id) == 0) return -EINVAL;
  return 0;
}

bool AudioThermalCallback::HasClient(int id) {
  std::lock_guard<std::mutex> lock(lock_);
  return clients_.contains(id);
}

bool AudioThermalCallback::HasClients() {
  std::lock_guard<std::mutex> lock(lock_);
  return !clients_.empty();
}

void AudioThermalCallback::RestoreCallback(const sp<IThermal>& thermal) {
  std::lock_guard<std::mutex> lock(lock_);
  RegisterCallbackToThermal(thermal);
}

void AudioThermalCallback::RegisterCallbackToThermal(const sp<IThermal>& thermal) {
  ThermalStatus status = {.code = ThermalStatusCode::SUCCESS, .debugMessage = {}};
  const Return<void> answered = thermal->registerThermalChangedCallback(
      thermal_changed_callback_, /*filterType=*/true, supported_temperature_type_,
      [&status](const ThermalStatus& answer) { status = answer; });
  if (status.code != ThermalStatusCode::SUCCESS) {
    ALOGW("%s: Failed to register thermal callback with type %d: %s", __func__,
          static_cast<int>(supported_temperature_type_), status.debugMessage.c_str());
  }
  if (!answered.isOk()) {
    ALOGW("%s: Transaction failed.", __func__);
  }
}

void AudioThermalCallback::DeregisterCallbackToThermal(const sp<IThermal>& thermal) {
  ThermalStatus status = {.code = ThermalStatusCode::SUCCESS, .debugMessage = {}};
  const Return<void> answered = thermal->unregisterThermalChangedCallback(
      thermal_changed_callback_, [&status](const ThermalStatus& answer) { status = answer; });
  if (status.code != ThermalStatusCode::SUCCESS) {
    ALOGW("%s: Failed to unregister thermal callback: %s", __func__, status.debugMessage.c_str());
  }
  if (!answered.isOk()) {
    ALOGW("%s: Transaction failed. ", __func__);
  }
}

void AudioThermalCallback::UpdateTemperature(const Temperature& temperature) {
  {
    std::lock_guard<std::mutex> lock(lock_);
    temperatures_.push_back(temperature);
  }
  callback_thread_->Start();
}

bool AudioThermalCallback::DispatchToClient() {
  ClientCalls calls;
  {
    std::lock_guard<std::mutex> lock(lock_);
    for (const auto& [id, client] : clients_) {
      // The oldest on purpose, and at most one call: the later records of a run are dropped.
      const auto oldest =
          std::find_if(temperatures_.begin(), temperatures_.end(),
                       [&name = client.temperature_name](const Temperature& record) {
                         return NameOf(record) == name;
                       });
      if (oldest == temperatures_.end()) continue;
      calls.Add({.callback = client.callback,
                 .cookie = client.cookie,
                 .value = static_cast<int>(oldest->throttlingStatus),
                 .property = 0});
    }
    temperatures_.clear();
  }
  calls.Make();
  return true;
}

void AudioThermalCallback::Dump(int fd) {
  DumpWriter out;
  Dump(out);
  out.WriteTo(fd);
}

void AudioThermalCallback::Dump(DumpWriter& out) {
  std::lock_guard<std::mutex> lock(lock_);
  out.Print("  audio thermal callback: %p\n", static_cast<void*>(this));
  out.Print("    supported_temperature_type_: %d\n", static_cast<int>(supported_temperature_type_));
  out.Print("    clients: \n");
  for (const auto& [id, client] : clients_) {
    out.Print("      id: %d, temperature_name:%s\n", id, client.temperature_name.c_str());
  }
}

}  // namespace norvik::qel::audio
