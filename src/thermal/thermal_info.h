// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <android/binder_auto_utils.h>
#include <android/hardware/thermal/2.0/IThermal.h>
#include <android/hardware/thermal/2.0/types.h>
#include <utils/StrongPointer.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/repeated_thread.h"
#include "common/thread_annotations.h"
#include "thermal/audio_thermal_callback.h"
#include "thermal/leaving_callbacks.h"
#include "thermal/thermal_death_recipient.h"
#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

namespace norvik::qel::audio {

// The device's temperatures and throttling severities, taken from a thermal service: the AIDL one
// behind ThermalHidlWrapper, or the HIDL one.
//
// Connection. The first operation that needs the service looks it up. After the service's death
// every operation does, and so do two workers:
// 1. "thermal_reconnect" makes a quick series of attempts.
// 2. "thermal_restore" makes a slow series: after a failed quick one while there are clients, and
//    for the registrations that wait in pending_callbacks_.
// The thread that connects registers every type that has clients in the same hold of lock_; a new
// type registers itself. So a service receives each callback once on a connection. A refusal is
// logged and not repeated.
//
// Threads: callers, binder and HIDL threads (reports, death notifications), the two workers, and a
// "thermal_callback" worker for each type of temperatures that has clients. Those call the clients,
// with no lock held; clients may call every operation except Deinitialize(). The owner calls
// Initialize() and Deinitialize() once each; nothing else may run at the same time as
// Deinitialize(), except calls that clients make. LeavingCallbacks says how workers are joined.
// Locks, outer before inner: the entry in LiveObjects or ThermalDeathRecipient's lock, then lock_,
// then AudioThermalCallback's, then ThermalHidlWrapper's, then a worker's own. Calls to the service
// are made with lock_ held.
class ThermalInfo {
 public:
  using IThermal = ::android::hardware::thermal::V2_0::IThermal;
  using Temperature = ::android::hardware::thermal::V2_0::Temperature;
  using TemperatureType = ::android::hardware::thermal::V2_0::TemperatureType;

  ThermalInfo();
  // Call Deinitialize() first: it stops the threads.
  ~ThermalInfo();
  ThermalInfo(const ThermalInfo&) = delete;
  ThermalInfo& operator=(const ThermalInfo&) = delete;

  // Creates the two workers, idle. Does not contact the thermal service.
  bool Initialize() QEL_EXCLUDES(lock_);
  // Joins the workers and unregisters from the service. Also after a failed Initialize().
  void Deinitialize() QEL_EXCLUDES(lock_);

  // ---- For callers.

  // The severities of the battery charge limits that concern audio: those of the last query, or of
  // a new one.
  std::vector<int> GetBatteryChargeLimitCurrent(bool use_cached) QEL_EXCLUDES(lock_);
  std::vector<int> GetBatteryChargeLimitVoltage(bool use_cached) QEL_EXCLUDES(lock_);
  // Those of any type, of the last query.
  std::vector<int> FilterBCLData(const TemperatureType& type) QEL_EXCLUDES(lock_);
  // How many limits a caller should have room for.
  int GetBatteryChargeLimitCapacity() const;
  // Makes the query. Without a service the last result stays; after a failed call none does.
  void GetCurrentBCLFromThermalService() QEL_EXCLUDES(lock_);

  // 0, also for a registration that waits for the service; -EINVAL for an id that the type already
  // has, for a name that the service does not report, and once Deinitialize() has begun.
  int RegisterThermalCallback(int id, const std::string& type_name, const ThermalClientInfo& info)
      QEL_EXCLUDES(lock_);
  // 0; -EINVAL for an unknown id. While there is no service only waiting registrations are
  // searched, and the result is always 0.
  int DeregisterThermalCallback(int id) QEL_EXCLUDES(lock_);

  // The number; -1 for an unknown name.
  int GetThermalTypeByName(const std::string& name) const;
  // The number; -EINVAL for an unknown name.
  int GetThrottlingSeverityByName(const std::string& name) const;

  // The temperatures of these names, each once, sorted by name; nullopt for no names. Empty without
  // a service, or when the call fails.
  std::optional<std::vector<Temperature>> GetBulkTemperatureByNames(
      const std::vector<std::string_view>& names) QEL_EXCLUDES(lock_);

  void Dump(int fd) QEL_EXCLUDES(lock_);

  // ---- For the workers.

  // Connects unless connected; false to try again. For "thermal_reconnect". Its last attempt starts
  // the other worker if there are clients.
  bool ReconnectToThermalService() QEL_EXCLUDES(lock_);
  // Connects unless connected, and registers what waits; false to try again. For "thermal_restore".
  bool RestorePendingThermalCallback() QEL_EXCLUDES(lock_);

  // ---- For the platform.

  // The service has died: the worker looks for it at once, and so does every later operation.
  void ThermalServiceDied() QEL_EXCLUDES(lock_);
  // An AIDL death notification. `cookie` is the ThermalInfo that linked; it may be gone.
  static void onThermalAidlBinderDied(void* cookie);

  // ---- Under lock_, as parts of the operations above.

  // Connects unless connected; true when thermal_ can be used. Waits for no service.
  bool GetThermalService() QEL_REQUIRES(lock_);
  // Registration and deregistration when connected. The second adds to leaving_callbacks_, which
  // the caller has to Take().
  int RegisterThermalCallbackWithLock(int id, const std::string& type_name,
                                      const ThermalClientInfo& info) QEL_REQUIRES(lock_);
  int DeregisterThermalCallbackWithLock(int id) QEL_REQUIRES(lock_);

 private:
  using ThermalHidlWrapper = ::aidl::android::hardware::thermal::ThermalHidlWrapper;

  // As GetThermalService(), without starting the worker: a link that the service's death has
  // refused counts as made, with thermal_service_died_ set.
  [[nodiscard]] bool ConnectToThermalService() QEL_REQUIRES(lock_);
  // For the workers, which try again: a refused link is a failure. No death notification will come
  // for it, and a worker that started itself would never give up.
  [[nodiscard]] bool ConnectToLivingService() QEL_REQUIRES(lock_);
  // True when there is such a service; `died` when it has refused the link because it is dead.
  [[nodiscard]] bool ConnectToAidlService(bool& died) QEL_REQUIRES(lock_);
  [[nodiscard]] bool ConnectToHidlService(bool& died) QEL_REQUIRES(lock_);
  void HandleAidlDeathNotification() QEL_EXCLUDES(lock_);

  // Deinitializes `callback` and adds it to leaving_callbacks_.
  void Leave(std::unique_ptr<AudioThermalCallback> callback) QEL_REQUIRES(lock_);

  // Members are released in reverse order.
  bool thermal_service_died_ QEL_GUARDED_BY(lock_) = false;  // thermal_ is the dead service's
  std::mutex lock_;
  std::vector<Temperature> bcl_temperatures_ QEL_GUARDED_BY(lock_);
  ::android::sp<IThermal> thermal_ QEL_GUARDED_BY(lock_);
  // thermal_ when that is the adapter, otherwise null.
  ::android::sp<ThermalHidlWrapper> wrapper_ QEL_GUARDED_BY(lock_);
  std::vector<std::unique_ptr<AudioThermalCallback>> thermal_callbacks_ QEL_GUARDED_BY(lock_);
  LeavingCallbacks leaving_callbacks_ QEL_GUARDED_BY(lock_);
  bool deinitializing_ QEL_GUARDED_BY(lock_) = false;
  // Each is created by the first link of its kind.
  ::android::sp<ThermalDeathRecipient> thermal_death_recipient_ QEL_GUARDED_BY(lock_);
  ndk::ScopedAIBinder_DeathRecipient aidl_death_recipient_ QEL_GUARDED_BY(lock_);
  // Set by Initialize() before any other thread knows this object, then only read.
  std::unique_ptr<RepeatedThread> reconnect_thread_;
  std::unique_ptr<RepeatedThread> restore_thread_;
  // By client id: the name of the type, and the client.
  std::unordered_map<int, std::pair<std::string, ThermalClientInfo>> pending_callbacks_
      QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
