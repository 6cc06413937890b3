// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "audio_hw_battery"

#include "battery/battery_info.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "common/client_calls.h"
#include "common/dump_writer.h"
#include "common/live_objects.h"
#include "common/owner_thread.h"

namespace norvik::qel::audio {

namespace {

using aidl::android::hardware::health::HealthInfo;
using aidl::android::hardware::health::IHealth;

constexpr std::array kPropertyNames = {
    "Battery Level",
    "Battery Cycle Count",
    "Wireless Charger Is Online",
    "Dock Charger Is Online",
};

const char* PropertyName(BatteryInfo::PropertyType type) {
  const auto index = static_cast<size_t>(type);
  return index < kPropertyNames.size() ? kPropertyNames[index] : "";
}

// Inverted on purpose, see the constants.
int32_t ChargerState(bool online) {
  return online ? QUORVEL_CHARGER_ONLINE : QUORVEL_CHARGER_OFFLINE;
}

// Whether a call failed because the service is dead. getStatus() must not be called on a null
// status.
bool IsDeadObject(const ndk::ScopedAStatus& status) {
  return status.get() != nullptr && status.getStatus() == STATUS_DEAD_OBJECT;
}

using HealthReconnectedThread = OwnerThread<&BatteryInfo::ReconnectToHealthService>;
using HealthCallbackThread = OwnerThread<&BatteryInfo::CallbackToClients>;

}  // namespace

BatteryInfo::BatteryInfo() {
  for (auto& value : values_) value.store(QUORVEL_BATTERY_UNKNOWN, std::memory_order_relaxed);
}

BatteryInfo::~BatteryInfo() = default;

bool BatteryInfo::Initialize() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    health_callback_ = ndk::SharedRefBase::make<AudioHealthInfoCallback>();
    if (health_callback_ == nullptr) return false;
    reconnect_thread_ = std::make_unique<HealthReconnectedThread>(
        this, "battery_reconnect", /*pause_ms=*/200, /*repeat_count=*/10);
    reconnect_thread_->Initialize();
    callback_thread_ = std::make_unique<HealthCallbackThread>(this, "battery_callback",
                                                              /*pause_ms=*/0, /*repeat_count=*/0);
    callback_thread_->Initialize();
    death_recipient_.set(AIBinder_DeathRecipient_new(HealthBinderDied));
    // The cookie is not owned, so nothing has to be done when a link ends. Without this callback
    // the platform logs a warning at every link.
    AIBinder_DeathRecipient_setOnUnlinked(death_recipient_.get(), [](void* /*cookie*/) {});
  }
  LiveObjects<BatteryInfo>::Shared().Add(this);
  health_callback_->SetBatteryInfo(this);
  return true;
}

void BatteryInfo::Deinitialize() {
  // With no lock held: the workers' actions take lock_.
  if (reconnect_thread_ != nullptr) reconnect_thread_->Deinitialize();
  if (callback_thread_ != nullptr) callback_thread_->Deinitialize();
  if (health_callback_ != nullptr) health_callback_->SetBatteryInfo(nullptr);
  {
    std::lock_guard<std::mutex> lock(lock_);
    UnlinkToHealthService();
  }
  death_recipient_.set(nullptr);
  // A notification may be running, or about to run: neither unlinking nor deleting waits for it.
  LiveObjects<BatteryInfo>::Shared().Remove(this);
}

int BatteryInfo::RegisterInfoCallback(PropertyType type, BatteryInfoCallback callback,
                                      void* cookie) {
  if (callback == nullptr) return -EINVAL;
  std::lock_guard<std::mutex> lock(lock_);
  std::vector<ClientInfo>& clients = clients_[type];
  const bool registered =
      std::any_of(clients.begin(), clients.end(),
                  [&](const ClientInfo& client) { return client.callback == callback; });
  if (registered) return -EINVAL;

  const bool first_client = !HasClients();
  clients.push_back({.callback = callback, .cookie = cookie});
  client_counts_[type].store(static_cast<int32_t>(clients.size()), std::memory_order_relaxed);
  if (first_client) {
    // The service reports its data when the callback is registered: this client's first value.
    LinkToHealthService();
    if (!linked_) {
      ALOGW("%s: health service isn't ready. start to restore callback.", __func__);
      reconnect_thread_->Start();
    }
  } else if (values_[type] != QUORVEL_BATTERY_UNKNOWN) {
    pending_callback_[type] = true;
    callback_thread_->Start();
  } else {
    ALOGD("%s: %s will updated while getting valid value from health service.", __func__,
          PropertyName(type));
  }
  return 0;
}

int BatteryInfo::DeregisterInfoCallback(PropertyType type, BatteryInfoCallback callback) {
  if (callback == nullptr) return -EINVAL;
  std::lock_guard<std::mutex> lock(lock_);
  std::vector<ClientInfo>& clients = clients_[type];
  const auto client =
      std::find_if(clients.begin(), clients.end(),
                   [&](const ClientInfo& candidate) { return candidate.callback == callback; });
  if (client == clients.end()) return -EINVAL;
  clients.erase(client);
  client_counts_[type].store(static_cast<int32_t>(clients.size()), std::memory_order_relaxed);
  if (!HasClients()) UnlinkToHealthService();
  return 0;
}

int BatteryInfo::GetBatteryLevel(bool use_cached) {
  return GetProperty(kBatteryLevel, use_cached);
}

int BatteryInfo::GetBatteryCycleCount(bool use_cached) {
  return GetProperty(kBatteryCycleCount, use_cached);
}

int BatteryInfo::GetWirelessChargerIsOnline(bool use_cached) {
  return GetProperty(kWirelessChargerIsOnline, use_cached);
}

int BatteryInfo::GetDockChargerIsOnline(bool use_cached) {
  return GetProperty(kDockChargerIsOnline, use_cached);
}

int BatteryInfo::GetFreshProperty(PropertyType type) {
  return GetInfoFromHealthService() ? UnlockedValue(type) : -EAGAIN;
}

void BatteryInfo::Dump(int fd) const {
  DumpWriter out;
  out.Print("BatteryInfo:\n");
  out.Print("  linked to services = %s\n", linked_.load(std::memory_order_relaxed) ? "T" : "F");
  for (size_t i = 0; i < kPropertyCount; ++i) {
    const auto type = static_cast<PropertyType>(i);
    out.Print("  %s = %d (clients:%d)\n", PropertyName(type), UnlockedValue(type),
              client_counts_[i].load(std::memory_order_relaxed));
  }
  out.WriteTo(fd);
}

bool BatteryInfo::GetInfoFromHealthService() {
  std::lock_guard<std::mutex> lock(lock_);
  if (!IsHealthServiceReady()) return false;
  HealthInfo info;
  const ndk::ScopedAStatus status = health_service_->getHealthInfo(&info);
  if (!status.isOk()) {
    ALOGW("%s: Unable to get healthInfo", __func__);
    if (IsDeadObject(status)) ForgetUnlinkedService();
    return false;
  }
  // No dispatch: a query does not call clients. A change that it brings goes with the next one.
  static_cast<void>(UpdateBatteryProperties(info));
  return true;
}

void BatteryInfo::UpdateHealthInfo(const HealthInfo& info) {
  bool changed = false;
  {
    std::lock_guard<std::mutex> lock(lock_);
    changed = UpdateBatteryProperties(info);
  }
  if (changed) callback_thread_->Start();
}

bool BatteryInfo::UpdateBatteryProperties(const HealthInfo& info) {
  bool changed = UpdateProperty(kBatteryLevel, info.batteryLevel);
  changed |= UpdateProperty(kBatteryCycleCount, info.batteryCycleCount);
  changed |= UpdateProperty(kWirelessChargerIsOnline, ChargerState(info.chargerWirelessOnline));
  changed |= UpdateProperty(kDockChargerIsOnline, ChargerState(info.chargerDockOnline));
  return changed;
}

bool BatteryInfo::UpdateProperty(PropertyType type, int32_t value) {
  const int32_t old_value = values_[type].load(std::memory_order_relaxed);
  if (old_value == value) return false;
  ALOGD("%s: update %s from %d to %d", __func__, PropertyName(type), old_value, value);
  values_[type].store(value, std::memory_order_relaxed);
  pending_callback_[type] = true;
  return true;
}

bool BatteryInfo::CallbackToClients() {
  ClientCalls calls;
  {
    std::lock_guard<std::mutex> lock(lock_);
    for (size_t i = 0; i < kPropertyCount; ++i) {
      if (!std::exchange(pending_callback_[i], false)) continue;
      const int32_t value = values_[i].load(std::memory_order_relaxed);
      for (const ClientInfo& client : clients_[i]) {
        calls.Add({.callback = client.callback,
                   .cookie = client.cookie,
                   .value = value,
                   .property = static_cast<int>(i)});
      }
    }
  }
  // Checked once: a message that is dropped costs several times as much as calling a client.
  const bool logs = __android_log_is_loggable(ANDROID_LOG_DEBUG, LOG_TAG, ANDROID_LOG_VERBOSE) != 0;
  for (const ClientCall& call : calls.all()) {
    if (logs) {
      ALOGD("%s: callback data[%s] = %d", __func__,
            PropertyName(static_cast<PropertyType>(call.property)), call.value);
    }
    call.callback(call.value, call.cookie);
  }
  return true;
}

bool BatteryInfo::ReconnectToHealthService() {
  std::lock_guard<std::mutex> lock(lock_);
  ALOGD("%s", __func__);
  LinkToHealthService();
  return linked_;
}

void BatteryInfo::HealthServiceDied() {
  std::lock_guard<std::mutex> lock(lock_);
  ForgetHealthService();
}

void BatteryInfo::HealthBinderDied(void* cookie) {
  if (cookie == nullptr) return;
  LiveObjects<BatteryInfo>::Shared().Visit(
      cookie, [](BatteryInfo& battery_info) { battery_info.HandleDeathNotification(); });
}

void BatteryInfo::HandleDeathNotification() {
  std::lock_guard<std::mutex> lock(lock_);
  // A notification can be late: it may be for a service that this object has replaced since, or one
  // that an earlier object at this address was linked to. To forget the present service would drop
  // its link, and the next link would register this object's callback with it a second time.
  if (health_service_ != nullptr && AIBinder_isAlive(health_service_->asBinder().get())) return;
  ForgetHealthService();
}

void BatteryInfo::ForgetHealthService() {
  health_service_.reset();
  linked_ = false;
  if (HasClients()) reconnect_thread_->Start();
}

void BatteryInfo::ForgetUnlinkedService() {
  // While linked, the death notification is on its way; releasing the proxy would drop it.
  if (!linked_) health_service_.reset();
}

bool BatteryInfo::HasClients() const {
  return std::any_of(clients_.begin(), clients_.end(),
                     [](const auto& clients) { return !clients.empty(); });
}

bool BatteryInfo::IsHealthServiceReady() {
  if (health_service_ != nullptr) return true;
  const std::string instance = std::string(IHealth::descriptor) + "/default";
  if (!AServiceManager_isDeclared(instance.c_str())) return false;
  // Waits up to 5 s for a service that is declared but not running. The platform deprecates this
  // look-up for callers that must not block; here the wait is wanted.
  const ndk::SpAIBinder binder(AServiceManager_getService(instance.c_str()));
  health_service_ = IHealth::fromBinder(binder);
  if (health_service_ == nullptr) {
    ALOGW("%s: Unable to AIDL health service", __func__);
    return false;
  }
  return true;
}

void BatteryInfo::LinkToHealthService() {
  if (!IsHealthServiceReady() || linked_) return;
  const ndk::ScopedAStatus status = health_service_->registerCallback(health_callback_);
  if (!status.isOk()) {
    ALOGW("%s: Failed to register callback to health service", __func__);
    if (IsDeadObject(status)) ForgetUnlinkedService();
    return;
  }
  const binder_status_t link =
      AIBinder_linkToDeath(health_service_->asBinder().get(), death_recipient_.get(), this);
  if (link != STATUS_OK) {
    ALOGW("%s:Failed to link to health death", __func__);
    // The result only shows whether the service is still alive.
    const ndk::ScopedAStatus undone = health_service_->unregisterCallback(health_callback_);
    if (link == STATUS_DEAD_OBJECT || IsDeadObject(undone)) ForgetUnlinkedService();
    return;
  }
  linked_ = true;
}

void BatteryInfo::UnlinkToHealthService() {
  if (!IsHealthServiceReady() || !linked_) return;
  const ndk::ScopedAStatus status = health_service_->unregisterCallback(health_callback_);
  if (!status.isOk()) {
    ALOGW("%s: Failed to unregister callback to health service", __func__);
  }
  const binder_status_t unlink =
      AIBinder_unlinkToDeath(health_service_->asBinder().get(), death_recipient_.get(), this);
  if (unlink != STATUS_OK && unlink != STATUS_DEAD_OBJECT) {
    ALOGW("%s: Failed to unlink to health death.", __func__);
  }
  linked_ = false;
  // Whether or not the notification still comes, the next client must find the service's successor.
  if (IsDeadObject(status) || unlink == STATUS_DEAD_OBJECT) ForgetUnlinkedService();
}

}  // namespace norvik::qel::audio
