// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <aidl/android/hardware/health/HealthInfo.h>
#include <aidl/android/hardware/health/IHealth.h>
#include <android/binder_auto_utils.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "battery/audio_health_info_callback.h"
#include "common/repeated_thread.h"
#include "common/thread_annotations.h"
#include "quorvel.h"

namespace norvik::qel::audio {

// The last known value of four battery and charger properties, taken from the health service, and
// the clients that are called when one changes.
//
// The first registration or the first uncached getter contacts the service. After the service's
// death, or when the first registration could not link, the "battery_reconnect" worker links again.
// When its attempts are used up, only the next first registration or ReconnectToHealthService()
// does.
//
// Threads: callers, binder threads (reports, death notifications) and the two workers. The owner
// calls Initialize() and Deinitialize() once each, with no other call under way. Clients are called
// on the "battery_callback" worker only, one at a time, with no lock held.
// Locks, outer before inner: the entry in LiveObjects or AudioHealthInfoCallback's lock, then
// lock_, then a worker's own. Calls to the health service are made with lock_ held.
class BatteryInfo {
 public:
  enum PropertyType {
    kBatteryLevel = 0,             // percent
    kBatteryCycleCount = 1,        // full charge cycles so far
    kWirelessChargerIsOnline = 2,  // QUORVEL_CHARGER_...
    kDockChargerIsOnline = 3,      // QUORVEL_CHARGER_...
  };

  struct ClientInfo {
    BatteryInfoCallback callback;  // never null; identifies the registration
    void* cookie;                  // handed back on every call; not owned
  };

  BatteryInfo();
  // Call Deinitialize() first: it stops the threads.
  ~BatteryInfo();
  BatteryInfo(const BatteryInfo&) = delete;
  BatteryInfo& operator=(const BatteryInfo&) = delete;

  // Creates the workers, idle. Does not contact the health service.
  bool Initialize() QEL_EXCLUDES(lock_);
  // Joins the workers, then unlinks from the service. Also after a failed Initialize().
  void Deinitialize() QEL_EXCLUDES(lock_);

  // 0; -EINVAL for a null callback or one that `type` already has.
  int RegisterInfoCallback(PropertyType type, BatteryInfoCallback callback, void* cookie)
      QEL_EXCLUDES(lock_);
  // 0; -EINVAL for a callback that `type` does not have.
  int DeregisterInfoCallback(PropertyType type, BatteryInfoCallback callback) QEL_EXCLUDES(lock_);

  // The value; -1 if none has arrived yet; -EAGAIN when the service cannot be queried.
  int GetBatteryLevel(bool use_cached) QEL_EXCLUDES(lock_);
  int GetBatteryCycleCount(bool use_cached) QEL_EXCLUDES(lock_);
  int GetWirelessChargerIsOnline(bool use_cached) QEL_EXCLUDES(lock_);
  int GetDockChargerIsOnline(bool use_cached) QEL_EXCLUDES(lock_);

  // Takes no lock. The values may be of different moments.
  void Dump(int fd) const;

  // Queries the service for all values. Clients receive a change at the next dispatch only.
  bool GetInfoFromHealthService() QEL_EXCLUDES(lock_);
  // Stores a report and starts a dispatch if a value changed.
  void UpdateHealthInfo(const aidl::android::hardware::health::HealthInfo& info)
      QEL_EXCLUDES(lock_);
  // Links to the service unless linked; true when linked.
  bool ReconnectToHealthService() QEL_EXCLUDES(lock_);
  // The service has died: forgets it, and starts the reconnect worker if there are clients.
  void HealthServiceDied() QEL_EXCLUDES(lock_);
  // Stores a value and marks it for the next dispatch; true when it differs from the stored one.
  bool UpdateProperty(PropertyType type, int32_t value) QEL_REQUIRES(lock_);
  // Calls the clients of every marked property. For the "battery_callback" worker.
  bool CallbackToClients() QEL_EXCLUDES(lock_);

  // A death notification of the platform. `cookie` is the BatteryInfo that linked; it may be gone.
  static void HealthBinderDied(void* cookie);

 private:
  static constexpr size_t kPropertyCount = 4;

  bool UpdateBatteryProperties(const aidl::android::hardware::health::HealthInfo& info)
      QEL_REQUIRES(lock_);
  bool HasClients() const QEL_REQUIRES(lock_);
  // Inline: cached values are read often.
  int GetProperty(PropertyType type, bool use_cached) QEL_EXCLUDES(lock_) {
    return use_cached ? UnlockedValue(type) : GetFreshProperty(type);
  }
  int GetFreshProperty(PropertyType type) QEL_EXCLUDES(lock_);

  // Looks the service up unless it is known. May block as the platform's look-up does.
  [[nodiscard]] bool IsHealthServiceReady() QEL_REQUIRES(lock_);
  void LinkToHealthService() QEL_REQUIRES(lock_);
  void UnlinkToHealthService() QEL_REQUIRES(lock_);
  void ForgetHealthService() QEL_REQUIRES(lock_);
  // After a call that failed because the service is dead.
  void ForgetUnlinkedService() QEL_REQUIRES(lock_);
  void HandleDeathNotification() QEL_EXCLUDES(lock_);

  // Reads without lock_, deliberately: a getter or a dump never waits for a call to the service.
  int32_t UnlockedValue(PropertyType type) const {
    return values_[type].load(std::memory_order_relaxed);
  }

  // Members are released in reverse order.
  std::mutex lock_;
  std::array<std::vector<ClientInfo>, kPropertyCount> clients_ QEL_GUARDED_BY(lock_);
  // Written with lock_ held; atomic for the unlocked readers.
  std::array<std::atomic<int32_t>, kPropertyCount> values_;
  std::array<std::atomic<int32_t>, kPropertyCount> client_counts_{};  // for Dump()
  // To be dispatched: the value changed, or a new client has to receive it.
  std::array<bool, kPropertyCount> pending_callback_ QEL_GUARDED_BY(lock_){};
  // The callback is registered and the death is linked. Written with lock_ held; atomic for Dump().
  std::atomic<bool> linked_{false};
  // Set by Initialize() before any other thread knows this object, then only read.
  std::unique_ptr<RepeatedThread> reconnect_thread_;
  std::unique_ptr<RepeatedThread> callback_thread_;
  // While linked, releasing this drops the death notification.
  std::shared_ptr<aidl::android::hardware::health::IHealth> health_service_ QEL_GUARDED_BY(lock_);
  std::shared_ptr<AudioHealthInfoCallback> health_callback_;  // as the two threads
  ndk::ScopedAIBinder_DeathRecipient death_recipient_;        // as the two threads
};

}  // namespace norvik::qel::audio
