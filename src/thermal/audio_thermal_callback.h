#pragma once

#include <android/hardware/thermal/2.0/IThermal.h>
#include <android/hardware/thermal/2.0/types.h>
#include <utils/StrongPointer.h>

#include <memory>
#include <mutex>
#include <vector>

#include "common/dump_writer.h"
#include "common/repeated_thread.h"
#include "common/thread_annotations.h"
#include "thermal/audio_thermal_changed_callback.h"
#include "thermal/thermal_listeners.h"

namespace norvik::qel::audio {

// All clients of one type of temperatures, with one registration at the thermal service.
//
// Threads: ThermalInfo's callers with its lock held, which keeps all of them in order; binder
// threads (UpdateTemperature); the own "thermal_callback" worker, on which clients are called.
// Locks: lock_ comes after ThermalInfo's and AudioThermalChangedCallback's, before the worker's
// own. Calls to the service are made with it held, calls to clients are not.
// DeviceScript: Initialize(), the rest, Deinitialize(), StopCallbackThread(), the destructor. The
// last two without a lock that a client can need, since a client may be running.
class AudioThermalCallback {
 public:
  using IThermal = ::android::hardware::thermal::V2_0::IThermal;
  using Temperature = ::android::hardware::thermal::V2_0::Temperature;
  using TemperatureType = ::android::hardware::thermal::V2_0::TemperatureType;

  explicit AudioThermalCallback(TemperatureType type);
  ~AudioThermalCallback();
  AudioThermalCallback(const AudioThermalCallback&) = delete;
  AudioThermalCallback& operator=(const AudioThermalCallback&) = delete;

  // Makes the worker and registers with the service. True, also when the service refuses: that is
  // logged, and a reconnection registers again.
  [[nodiscard]] bool Initialize(const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);
  // Leaves the service, drops the clients, and lets no notification in any more. A client that is
  // being called goes on: StopCallbackThread() has to follow.
  void Deinitialize(const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);

  // Has the worker end, without waiting for it.
  void RequestExit();
  bool HasEnded();
  // Ends and joins the worker; waits for a client that is being called.
  void StopCallbackThread();

  // 0, and the client is told the present severity; -EINVAL for an id that is there already or a
  // name that the service does not report.
  [[nodiscard]] int AddClientCallback(int id, const ThermalClientInfo& info,
                                      const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);
  // 0; -EINVAL for an id that is not there.
  [[nodiscard]] int RemoveClientCallback(int id) QEL_EXCLUDES(lock_);
  bool HasClient(int id) QEL_EXCLUDES(lock_);
  bool HasClients() QEL_EXCLUDES(lock_);

  // Registers with a service that has come up anew.
  void RestoreCallback(const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);
  void RegisterCallbackToThermal(const ::android::sp<IThermal>& thermal) QEL_REQUIRES(lock_);
  void DeregisterCallbackToThermal(const ::android::sp<IThermal>& thermal) QEL_REQUIRES(lock_);

  // Queues what the service has notified, and has the clients called.
  void UpdateTemperature(const Temperature& temperature) QEL_EXCLUDES(lock_);
  // Calls every client that has a record in the queue, with the oldest one. For the worker.
  bool DispatchToClient() QEL_EXCLUDES(lock_);

  // Writes with no lock held.
  void Dump(int fd) QEL_EXCLUDES(lock_);
  // Only composes, for a larger dump.
  void Dump(DumpWriter& out) QEL_EXCLUDES(lock_);

  TemperatureType supported_temperature_type() const { return supported_temperature_type_; }

 private:
  // Members are released in reverse order.
  std::mutex lock_;
  ThermalClients clients_ QEL_GUARDED_BY(lock_);
  // Made of the clients by the first dispatch after a change of them; null until then.
  std::shared_ptr<const ThermalListeners> listeners_ QEL_GUARDED_BY(lock_);
  std::vector<Temperature> temperatures_ QEL_GUARDED_BY(lock_);  // not dispatched yet
  // Set by Initialize() before any other thread knows this object, and then only read.
  ::android::sp<AudioThermalChangedCallback> thermal_changed_callback_;
  const TemperatureType supported_temperature_type_;
  std::unique_ptr<RepeatedThread> callback_thread_;  // as the callback
};

}  // namespace norvik::qel::audio
