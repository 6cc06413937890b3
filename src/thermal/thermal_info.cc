// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "audio_hw_thermal"

#include "thermal/thermal_info.h"

#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <log/log.h>

#include <cstdint>

#include "common/dump_writer.h"
#include "common/live_objects.h"
#include "common/owner_thread.h"

namespace norvik::qel::audio {

namespace {

using ::android::sp;
using ::android::hardware::Return;
using AidlThermal = ::aidl::android::hardware::thermal::IThermal;

constexpr size_t kExpectedTypes = 8;

using ThermalReconnectedThread = OwnerThread<&ThermalInfo::ReconnectToThermalService>;
using ThermalRestoreCallbackThread = OwnerThread<&ThermalInfo::RestorePendingThermalCallback>;

}  // namespace

ThermalInfo::ThermalInfo() {
  bcl_temperatures_.reserve(static_cast<size_t>(GetBatteryChargeLimitCapacity()));
  pending_callbacks_.max_load_factor(1.0F);
}

ThermalInfo::~ThermalInfo() = default;

bool ThermalInfo::Initialize() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    reconnect_thread_ = std::make_unique<ThermalReconnectedThread>(
        this, "thermal_reconnect", /*pause_ms=*/30, /*repeat_count=*/5);
    reconnect_thread_->Initialize();
    restore_thread_ = std::make_unique<ThermalRestoreCallbackThread>(
        this, "thermal_restore", /*pause_ms=*/1000, /*repeat_count=*/10);
    restore_thread_->Initialize();
    thermal_callbacks_.reserve(kExpectedTypes);
  }
  LiveObjects<ThermalInfo>::Shared().Add(this);
  return true;
}

void ThermalInfo::Deinitialize() {
  sp<ThermalDeathRecipient> death_recipient;
  {
    std::lock_guard<std::mutex> lock(lock_);
    // A death recipient that a client's call creates from now on notifies no object.
    deinitializing_ = true;
    death_recipient = thermal_death_recipient_;
  }
  // With no lock held: the workers' actions take lock_, and so does a notification under way.
  if (reconnect_thread_ != nullptr) reconnect_thread_->Deinitialize();
  if (restore_thread_ != nullptr) restore_thread_->Deinitialize();
  if (death_recipient != nullptr) death_recipient->Detach();
  LeavingCallbacks::Callbacks callbacks;
  {
    std::lock_guard<std::mutex> lock(lock_);
    bcl_temperatures_.clear();
    if (thermal_ != nullptr) {
      const Return<bool> unlinked = thermal_->unlinkToDeath(thermal_death_recipient_);
      if (!unlinked.isOk()) {
        ALOGW("Failed to unlink to death (HIDL): %s", unlinked.description().c_str());
      }
    }
    for (auto& callback : thermal_callbacks_) Leave(std::move(callback));
    thermal_callbacks_.clear();
    callbacks = leaving_callbacks_.TakeAll();
  }
  LeavingCallbacks::Join(callbacks);
  // An AIDL death notification may be running, or about to run: neither unlinking nor deleting
  // waits for it.
  LiveObjects<ThermalInfo>::Shared().Remove(this);
}

bool ThermalInfo::GetThermalService() {
  if (!ConnectToThermalService()) return false;
  // No notification comes for a link that a death has refused: this replaces it.
  if (thermal_service_died_) reconnect_thread_->Start();
  return true;
}

bool ThermalInfo::ConnectToThermalService() {
  if (thermal_ != nullptr && !thermal_service_died_) return true;
  bool died = false;
  if (!ConnectToAidlService(died) && !ConnectToHidlService(died)) return false;
  if (thermal_service_died_) {
    thermal_service_died_ = false;
    ALOGD("%s: recover thermal service connection", "GetThermalService");
  }
  if (died) {
    // Registering would fail, too. The next connection does it.
    thermal_service_died_ = true;
    return true;
  }
  // Here and nowhere else, so that the service sees each callback once, whichever thread connects.
  for (const auto& callback : thermal_callbacks_) callback->RestoreCallback(thermal_);
  return true;
}

bool ThermalInfo::ConnectToLivingService() {
  return ConnectToThermalService() && !thermal_service_died_;
}

bool ThermalInfo::ConnectToAidlService(bool& died) {
  const std::string instance = std::string(AidlThermal::descriptor) + "/default";
  if (!AServiceManager_isDeclared(instance.c_str())) {
    ALOGW("Thermal AIDL service is not declared");
    return false;
  }
  const ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
  const std::shared_ptr<AidlThermal> service = AidlThermal::fromBinder(binder);
  if (service == nullptr) {
    ALOGW("Unable to get Thermal AIDL service, this will be retried...");
    return false;
  }
  const sp<ThermalHidlWrapper> wrapper = sp<ThermalHidlWrapper>::make(service);
  thermal_ = wrapper;
  wrapper_ = wrapper;
  if (aidl_death_recipient_.get() == nullptr) {
    aidl_death_recipient_.set(AIBinder_DeathRecipient_new(onThermalAidlBinderDied));
    // The cookie is not owned, so nothing has to be done when a link ends. Without this callback
    // the platform logs a warning at every link.
    AIBinder_DeathRecipient_setOnUnlinked(aidl_death_recipient_.get(), [](void* /*cookie*/) {});
  }
  const binder_status_t link =
      AIBinder_linkToDeath(service->asBinder().get(), aidl_death_recipient_.get(), this);
  if (link != STATUS_OK) {
    ALOGW("Failed to link to death (AIDL): %d", link);
  }
  died = link == STATUS_DEAD_OBJECT;
  return true;
}

bool ThermalInfo::ConnectToHidlService(bool& died) {
  const sp<IThermal> service = IThermal::tryGetService("default", /*getStub=*/false);
  if (service == nullptr) return false;
  if (thermal_death_recipient_ == nullptr) {
    thermal_death_recipient_ = sp<ThermalDeathRecipient>::make(deinitializing_ ? nullptr : this);
  }
  const Return<bool> link = service->linkToDeath(thermal_death_recipient_, /*cookie=*/0);
  if (!link.isOk()) {
    ALOGW("Failed to link to death (HIDL): %s", link.description().c_str());
  }
  died = link.isOk() ? !static_cast<bool>(link) : link.isDeadObject();
  thermal_ = service;
  wrapper_.clear();
  return true;
}

void ThermalInfo::ThermalServiceDied() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    thermal_service_died_ = true;
  }
  reconnect_thread_->Start();
}

void ThermalInfo::onThermalAidlBinderDied(void* cookie) {
  if (cookie == nullptr) return;
  LiveObjects<ThermalInfo>::Shared().Visit(
      cookie, [](ThermalInfo& thermal_info) { thermal_info.HandleAidlDeathNotification(); });
}

void ThermalInfo::HandleAidlDeathNotification() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    // The notification can be for an earlier object at this address. To connect again would then
    // register this object's callbacks with a living service twice.
    if (wrapper_ == nullptr || wrapper_->IsServiceAlive()) return;
    thermal_service_died_ = true;
  }
  reconnect_thread_->Start();
}

bool ThermalInfo::ReconnectToThermalService() {
  std::lock_guard<std::mutex> lock(lock_);
  if (ConnectToLivingService()) return true;
  // The worker itself counts: a death during its last pause gives it one more run, not five.
  if (!thermal_callbacks_.empty() && RepeatedThread::IsLastAttempt()) restore_thread_->Start();
  return false;
}

void ThermalInfo::Dump(int fd) {
  DumpWriter out;
  out.Print("ThermalInfo:\n");
  {
    std::lock_guard<std::mutex> lock(lock_);
    for (const Temperature& temperature : bcl_temperatures_) {
      out.Print("  bcl type = %d\n", static_cast<int>(temperature.type));
      out.Print("  bcl name = %s\n", temperature.name.c_str());
      out.Print("  bcl status = %d\n", static_cast<int>(temperature.throttlingStatus));
      out.Print("\n");
    }
    for (const auto& callback : thermal_callbacks_) callback->Dump(out);
  }
  out.WriteTo(fd);
}

}  // namespace norvik::qel::audio
