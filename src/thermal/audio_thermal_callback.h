// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <android/hardware/thermal/2.0/IThermal.h>
#include <android/hardware/thermal/2.0/types.h>
#include <utils/StrongPointer.h>

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/dump_writer.h"
#include "common/repeated_thread.h"
#include "common/thread_annotations.h"
#include "quorvel.h"
#include "thermal/audio_thermal_changed_callback.h"

namespace norvik::qel::audio {

// One client of one temperature.
struct ThermalClientInfo {
  ThermalCallbackFunc callback;  // never null
  std::string temperature_name;  // compared exactly
  void* cookie;                  // handed back on every call; not owned
};

// The clients of one type of temperatures, with one registration at the thermal service.
//
// Threads: ThermalInfo, with its lock held, which serializes its calls; binder threads
// (UpdateTemperature); the "thermal_callback" worker of this object, which calls the clients.
// Locks: lock_ comes after ThermalInfo's and AudioThermalChangedCallback's, before the worker's
// own. Calls to the service are made with it held, calls to clients are not.
// Life: Initialize(), the rest, Deinitialize(), StopCallbackThread(), the destructor. A client may
// be running during the last two: never call them with a lock held that a client can need.
class AudioThermalCallback {
 public:
  using IThermal = ::android::hardware::thermal::V2_0::IThermal;
  using Temperature = ::android::hardware::thermal::V2_0::Temperature;
  using TemperatureType = ::android::hardware::thermal::V2_0::TemperatureType;

  explicit AudioThermalCallback(TemperatureType type);
  ~AudioThermalCallback();
  AudioThermalCallback(const AudioThermalCallback&) = delete;
  AudioThermalCallback& operator=(const AudioThermalCallback&) = delete;

  // Creates the worker and registers with the service. True also when the service refuses: the
  // refusal is logged, and the next connection registers again.
  bool Initialize(const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);
  // Unregisters from the service, drops the clients and ignores further reports. A client that is
  // being called continues: StopCallbackThread() has to follow.
  void Deinitialize(const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);

  // Makes the worker end, without waiting for it.
  void RequestExit();
  bool HasEnded();
  // Ends and joins the worker; waits for a client that is being called.
  void StopCallbackThread();

  // 0, and the client receives the present severity; -EINVAL for an id that is already registered
  // or a name that the service does not report.
  int AddClientCallback(int id, const ThermalClientInfo& info,
                        const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);
  // 0; -EINVAL for an unknown id.
  int RemoveClientCallback(int id) QEL_EXCLUDES(lock_);
  bool HasClient(int id) QEL_EXCLUDES(lock_);
  bool HasClients() QEL_EXCLUDES(lock_);

  // Registers on a new connection.
  void RestoreCallback(const ::android::sp<IThermal>& thermal) QEL_EXCLUDES(lock_);
  void RegisterCallbackToThermal(const ::android::sp<IThermal>& thermal) QEL_REQUIRES(lock_);
  void DeregisterCallbackToThermal(const ::android::sp<IThermal>& thermal) QEL_REQUIRES(lock_);

  // Queues a report and starts a dispatch.
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
  std::unordered_map<int, ThermalClientInfo> clients_ QEL_GUARDED_BY(lock_);  // by id
  std::vector<Temperature> temperatures_ QEL_GUARDED_BY(lock_);               // not dispatched yet
  // Set by Initialize() before any other thread knows this object, then only read.
  ::android::sp<AudioThermalChangedCallback> thermal_changed_callback_;
  const TemperatureType supported_temperature_type_;
  std::unique_ptr<RepeatedThread> callback_thread_;  // as the callback
};

}  // namespace norvik::qel::audio
