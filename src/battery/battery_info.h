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
// The service is contacted by the first registration or the first uncached getter. After its death
// the "battery_reconnect" worker links again, ten times at most, 200 ms apart; then nothing does
// until the next first registration or ReconnectToHealthService().
//
// Threads: clients, binder threads (reports, death notices) and the two workers. Initialize() and
// Deinitialize() once each, by the owner, with no other call under way. Clients are called on the
// "battery_callback" worker only, one at a time, with no lock held.
// Locks, outer before inner: the entry in LiveObjects or AudioHealthInfoCallback's lock, then
// lock_, then a worker's own. Calls to the health service are made with lock_ held.
class BatteryInfo {
 public:
  enum PropertyType {
    kBatteryLevel = 0,             // percent
    kBatteryCycleCount = 1,        // full charge cycles so far
    kWirelessChargerIsOnline = 2,  // 0: online, 1: not
    kDockChargerIsOnline = 3,      // 0: online, 1: not
  };

  struct ClientInfo {
    BatteryInfoCallback callback;  // never null; identifies the registration
    void* cookie;                  // handed back on every call; not owned
  };

  BatteryInfo();
  // Deinitialize() has come first; it stops the threads.
  ~BatteryInfo();
  BatteryInfo(const BatteryInfo&) = delete;
  BatteryInfo& operator=(const BatteryInfo&) = delete;

  // Makes the workers, idle. The health service is not contacted.
  [[nodiscard]] bool Initialize() QEL_EXCLUDES(lock_);
  // Joins the workers, then leaves the service. Also after an Initialize() that failed half-way.
  void Deinitialize() QEL_EXCLUDES(lock_);

  // 0; -EINVAL for a null callback or one that `type` has already.
  [[nodiscard]] int RegisterInfoCallback(PropertyType type, BatteryInfoCallback callback,
                                         void* cookie) QEL_EXCLUDES(lock_);
  // 0; -EINVAL for a callback that `type` does not have.
  [[nodiscard]] int DeregisterInfoCallback(PropertyType type, BatteryInfoCallback callback)
      QEL_EXCLUDES(lock_);

  // The value; -1 while none has arrived; -EAGAIN when the service was asked in vain.
  int GetBatteryLevel(bool use_cached) QEL_EXCLUDES(lock_);
  int GetBatteryCycleCount(bool use_cached) QEL_EXCLUDES(lock_);
  int GetWirelessChargerIsOnline(bool use_cached) QEL_EXCLUDES(lock_);
  int GetDockChargerIsOnline(bool use_cached) QEL_EXCLUDES(lock_);

  // Takes no lock and may mix states.
  void Dump(int fd) const;

  // Asks the service for all values. Clients hear of a change at the next dispatch only.
  bool GetInfoFromHealthService() QEL_EXCLUDES(lock_);
  // Stores what the service reported and has the clients of changed values called.
  void UpdateHealthInfo(const aidl::android::hardware::health::HealthInfo& info)
      QEL_EXCLUDES(lock_);
  // Links to the service unless linked; true when the link stands.
  [[nodiscard]] bool ReconnectToHealthService() QEL_EXCLUDES(lock_);
  // The service has died: forgets it, and has it looked for while there are clients.
  void HealthServiceDied() QEL_EXCLUDES(lock_);
  // Stores a value and marks it for the clients; true when it is new.
  bool UpdateProperty(PropertyType type, int32_t value) QEL_REQUIRES(lock_);
  // Calls the clients of every property that is marked. For the "battery_callback" worker.
  bool CallbackToClients() QEL_EXCLUDES(lock_);

  // A death notice of the platform; `cookie` is the BatteryInfo that linked, perhaps gone by now.
  static void HealthBinderDied(void* cookie);

 private:
  static constexpr size_t kPropertyCount = 4;

  bool UpdateBatteryProperties(const aidl::android::hardware::health::HealthInfo& info)
      QEL_REQUIRES(lock_);
  bool HasClients() const QEL_REQUIRES(lock_);
  // Inline: whoever asks for a cached value asks often.
  int GetProperty(PropertyType type, bool use_cached) QEL_EXCLUDES(lock_) {
    return use_cached ? UnlockedValue(type) : GetFreshProperty(type);
  }
  int GetFreshProperty(PropertyType type) QEL_EXCLUDES(lock_);

  // Looks the service up unless it is known. May block as the platform's look-up does.
  [[nodiscard]] bool IsHealthServiceReady() QEL_REQUIRES(lock_);
  void LinkToHealthService() QEL_REQUIRES(lock_);
  void UnlinkToHealthService() QEL_REQUIRES(lock_);
  void ForgetHealthService() QEL_REQUIRES(lock_);
  // For a call that the service's death has answered.
  void ForgetUnlinkedService() QEL_REQUIRES(lock_);
  void HandleDeathNotification() QEL_EXCLUDES(lock_);

  // Reads without lock_, deliberately: a getter or a dump never waits for a call to the service.
  int32_t UnlockedValue(PropertyType type) const {
    return values_[type].load(std::memory_order_relaxed);
  }

  // Members are released in reverse order.
  std::mutex lock_;
  std::array<std::vector<ClientInfo>, kPropertyCount> clients_ QEL_GUARDED_BY(lock_);
  // Written with lock_ held; atomic for the unlocked readers. -1: no value has arrived yet.
  std::array<std::atomic<int32_t>, kPropertyCount> values_;
  std::array<std::atomic<int32_t>, kPropertyCount> client_counts_{};  // for Dump()
  // The value changed, or a new client is to be told, and the clients have not been called yet.
  std::array<bool, kPropertyCount> pending_callback_ QEL_GUARDED_BY(lock_){};
  // The callback is registered and the death linked. Written with lock_ held; atomic for Dump().
  std::atomic<bool> linked_{false};
  // Set by Initialize() before any other thread knows this object, and then only read.
  std::unique_ptr<RepeatedThread> reconnect_thread_;
  std::unique_ptr<RepeatedThread> callback_thread_;
  // While a link stands, dropping this drops the death notice, too.
  std::shared_ptr<aidl::android::hardware::health::IHealth> health_service_ QEL_GUARDED_BY(lock_);
  std::shared_ptr<AudioHealthInfoCallback> health_callback_;  // as the two threads
  ndk::ScopedAIBinder_DeathRecipient death_recipient_;        // as the two threads
};

}  // namespace norvik::qel::audio
