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
#include "thermal/thermal_death_recipient.h"
#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

namespace norvik::qel::audio {

// What the device tells of its heat, through one handle to a thermal service: the AIDL one behind
// ThermalHidlWrapper, or the HIDL one.
//
// Connection. The first operation that needs the service looks it up. After the service's death
// every operation does, and so do two workers:
// 1. "thermal_reconnect" tries five times, 30 ms apart.
// 2. "thermal_restore" tries ten times, 1000 ms apart: after a failed series of the first worker
//    while there are clients, and for the registrations that wait in pending_callbacks_.
// Whichever thread connects registers every type that has clients in the same hold of lock_. A new
// type registers itself. So a service sees each callback once on a connection. A refusal is logged
// and not repeated.
//
// Threads: clients, binder and HIDL threads (notifications, death notices), the two workers, and a
// "thermal_callback" worker for each type of temperatures that has clients; those call the clients,
// with no lock held, and clients may call every operation but Deinitialize(). Initialize() and
// Deinitialize() once each, by the owner; beside Deinitialize() nothing but what clients call.
// Locks, outer before inner: the entry in LiveObjects or ThermalDeathRecipient's lock, then lock_,
// then AudioThermalCallback's, then ThermalHidlWrapper's, then a worker's own. Calls to the service
// are made with lock_ held.
//
// How an AudioThermalCallback goes. Its worker has to be joined, and may at that time be in a
// client that waits for lock_ or is itself the one whose call makes the object go, or waits for
// another worker's client that does the same to it. Therefore:
// - Under lock_ it is unregistered, detached and taken out of thermal_callbacks_, in one hold:
//   of several threads that deregister its last client, one finds it, and the service is told once.
//   From then on it has no client, no notification reaches it, and nobody finds it.
// - It is joined once lock_ is free. So its worker can get lock_, and gets to its end as soon as
//   the clients that it is calling return.
// - A worker (of any object of the library) joins none that may still be running: it asks that
//   worker to end and leaves the object in retired_callbacks_. So no worker waits for another one
//   or for itself, and a chain of threads that wait ends with one that does not.
// - Later registrations and deregistrations destroy what lies there and has ended, which waits for
//   no client.
// - Deinitialize() refuses registrations from its beginning on. In the hold of lock_ in which it
//   empties thermal_callbacks_ it takes all that lies about: nothing can be left there afterwards.
//   What a worker has collected by then it joins before its own end, which Deinitialize() awaits.
class ThermalInfo {
 public:
  using IThermal = ::android::hardware::thermal::V2_0::IThermal;
  using Temperature = ::android::hardware::thermal::V2_0::Temperature;
  using TemperatureType = ::android::hardware::thermal::V2_0::TemperatureType;

  ThermalInfo();
  // Deinitialize() has come first; it stops the threads.
  ~ThermalInfo();
  ThermalInfo(const ThermalInfo&) = delete;
  ThermalInfo& operator=(const ThermalInfo&) = delete;

  // Makes the two workers, idle. The thermal service is not contacted.
  [[nodiscard]] bool Initialize() QEL_EXCLUDES(lock_);
  // Joins the workers and leaves the service. Also after an Initialize() that failed half-way.
  void Deinitialize() QEL_EXCLUDES(lock_);

  // The severities of the battery's limits that concern audio; as of the last query, or after one.
  std::vector<int> GetBatteryChargeLimitCurrent(bool use_cached) QEL_EXCLUDES(lock_);
  std::vector<int> GetBatteryChargeLimitVoltage(bool use_cached) QEL_EXCLUDES(lock_);
  // The same of any type, as of the last query.
  std::vector<int> FilterBCLData(const TemperatureType& type) QEL_EXCLUDES(lock_);
  // How many there usually are at most.
  int GetBatteryChargeLimitCapacity() const;
  // The query. Without a service the last one's result stays; when a call fails nothing does.
  void GetCurrentBCLFromThermalService() QEL_EXCLUDES(lock_);

  // 0, also for a registration that waits for the service; -EINVAL for an id that the type has
  // already, for a name that the service does not report, and once Deinitialize() has begun.
  [[nodiscard]] int RegisterThermalCallback(int id, const std::string& type_name,
                                            const ThermalClientInfo& info) QEL_EXCLUDES(lock_);
  // 0; -EINVAL for an unknown id. While no service can be reached only registrations that wait are
  // looked at, and the result is always 0.
  [[nodiscard]] int DeregisterThermalCallback(int id) QEL_EXCLUDES(lock_);
  // The same with the service at hand.
  [[nodiscard]] int RegisterThermalCallbackWithLock(int id, const std::string& type_name,
                                                    const ThermalClientInfo& info)
      QEL_REQUIRES(lock_);
  // What it takes out of service is left in leaving_callbacks_, which the caller empties with
  // TakeLeaving().
  [[nodiscard]] int DeregisterThermalCallbackWithLock(int id) QEL_REQUIRES(lock_);

  // The number; -1 for an unknown name.
  int GetThermalTypeByName(const std::string& name) const;
  // The number; -EINVAL for an unknown name.
  int GetThrottlingSeverityByName(const std::string& name) const;

  // The temperatures of these names, each once, sorted by name; nothing for no names. Without a
  // service, or when the call fails, there are none.
  [[nodiscard]] std::optional<std::vector<Temperature>> GetBulkTemperatureByNames(
      const std::vector<std::string_view>& names) QEL_EXCLUDES(lock_);

  // Composes under lock_, writes with no lock held.
  void Dump(int fd) QEL_EXCLUDES(lock_);

  // Makes the link unless it stands; true when thermal_ can be used. Waits for no service.
  [[nodiscard]] bool GetThermalService() QEL_REQUIRES(lock_);
  // The service has died: the next operation looks for it, and the worker does so at once.
  void ThermalServiceDied() QEL_EXCLUDES(lock_);
  // A death notice of the platform; `cookie` is the ThermalInfo that linked, perhaps gone by now.
  static void onThermalAidlBinderDied(void* cookie);
  // Connects unless connected; false when that has to be tried again. For the "thermal_reconnect"
  // worker. Its last attempt hands on to the other worker if there are clients.
  [[nodiscard]] bool ReconnectToThermalService() QEL_EXCLUDES(lock_);
  // Connects unless connected, and registers what waits; false while there is no service. For the
  // "thermal_restore" worker.
  [[nodiscard]] bool RestorePendingThermalCallback() QEL_EXCLUDES(lock_);

 private:
  using ThermalHidlWrapper = ::aidl::android::hardware::thermal::ThermalHidlWrapper;
  using Callbacks = std::vector<std::unique_ptr<AudioThermalCallback>>;

  // As GetThermalService(), without starting the worker: a link that the service's death has
  // refused counts as made, with thermal_service_died_ set.
  [[nodiscard]] bool ConnectToThermalService() QEL_REQUIRES(lock_);
  // For the workers, which try again: a refused link is a failure. No death notification will
  // come for it, and a worker that started itself would never give up.
  [[nodiscard]] bool ConnectToLivingService() QEL_REQUIRES(lock_);
  // True when there is such a service; `died` when it has refused the link because it is dead.
  [[nodiscard]] bool ConnectToAidlService(bool& died) QEL_REQUIRES(lock_);
  [[nodiscard]] bool ConnectToHidlService(bool& died) QEL_REQUIRES(lock_);
  void HandleAidlDeathNotification() QEL_EXCLUDES(lock_);

  // Takes `callback` out of service; what is left of it is to be stopped.
  void Leave(std::unique_ptr<AudioThermalCallback> callback) QEL_REQUIRES(lock_);
  // What the caller has to Stop() once lock_ is free.
  Callbacks TakeLeaving() QEL_REQUIRES(lock_);
  // The same for the end of all.
  Callbacks TakeAllLeft() QEL_REQUIRES(lock_);
  static void Stop(const Callbacks& callbacks);

  // Members are released in reverse order.
  bool thermal_service_died_ QEL_GUARDED_BY(lock_) = false;  // thermal_ is a dead one's
  std::mutex lock_;
  std::vector<Temperature> bcl_temperatures_ QEL_GUARDED_BY(lock_);
  ::android::sp<IThermal> thermal_ QEL_GUARDED_BY(lock_);
  // thermal_ when that is the facade, otherwise null.
  ::android::sp<ThermalHidlWrapper> wrapper_ QEL_GUARDED_BY(lock_);
  Callbacks thermal_callbacks_ QEL_GUARDED_BY(lock_);
  // Taken out of service in the present hold of lock_; empty while it is free.
  Callbacks leaving_callbacks_ QEL_GUARDED_BY(lock_);
  // Taken out of service by workers, not joined yet.
  Callbacks retired_callbacks_ QEL_GUARDED_BY(lock_);
  bool deinitializing_ QEL_GUARDED_BY(lock_) = false;
  // Each made by the first link of its kind.
  ::android::sp<ThermalDeathRecipient> thermal_death_recipient_ QEL_GUARDED_BY(lock_);
  ndk::ScopedAIBinder_DeathRecipient aidl_death_recipient_ QEL_GUARDED_BY(lock_);
  // Set by Initialize() before any other thread knows this object, and then only read.
  std::unique_ptr<RepeatedThread> reconnect_thread_;
  std::unique_ptr<RepeatedThread> restore_thread_;
  // By client id: the name of the type, and the client.
  std::unordered_map<int, std::pair<std::string, ThermalClientInfo>> pending_callbacks_
      QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
