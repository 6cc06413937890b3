// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <android/looper.h>
#include <android/sensor.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "common/dump_writer.h"
#include "common/repeated_thread.h"
#include "common/thread_annotations.h"
#include "sensor/client_list.h"

namespace norvik::qel::audio {

// The latest reading of two sensors, taken from the platform's sensor service, and the clients that
// are called when a sensor delivers an event.
//
// The first client of a sensor enables it. The first enabled sensor makes the "sensor_poll" worker
// wait for events. While the service is absent, sensors with clients wait in pending_sensors_, and
// the "sensor_reconnect" worker looks for the service. The service's death is not noticed: the
// platform's objects do not survive it.
//
// Threads: callers and the three workers. The owner calls Initialize() and Deinitialize() in turn;
// no other call may run at the same time, except those that clients make from their callbacks.
// Clients are called on the "sensor_callback" worker only, one at a time, with no lock held.
// Locks, outer before inner: lock_, then a client list's or a worker's own. Calls to the platform
// are made with lock_ held, except the wait for events.
class SensorInfo {
 public:
  enum AudioSensorType : int32_t {
    PROXIMITY = 0,
    HINGE_ANGLE = 1,
    UNKNOWN = 2,
  };

  using ClientInfo = SensorClient;

  SensorInfo();
  // Call Deinitialize() first: it stops the threads.
  ~SensorInfo();
  SensorInfo(const SensorInfo&) = delete;
  SensorInfo& operator=(const SensorInfo&) = delete;

  // Creates the workers, idle. Forgets the clients and waiting sensors of an earlier life. Does not
  // contact the sensor service.
  bool Initialize() QEL_EXCLUDES(lock_);
  // Joins the workers, then releases the platform's objects.
  void Deinitialize() QEL_EXCLUDES(lock_);

  // 0; -EINVAL for a null callback or cookie, or for an id that `type` already has; otherwise the
  // result of enabling the sensor.
  int RegisterCallback(AudioSensorType type, const ClientInfo& client) QEL_EXCLUDES(lock_);
  // 0; -EINVAL for an id that `type` does not have; otherwise the result of disabling the sensor.
  int DeregisterCallback(AudioSensorType type, int id) QEL_EXCLUDES(lock_);

  // Calls the clients that are marked. For the "sensor_callback" worker.
  void DispatchToClient() QEL_EXCLUDES(lock_);
  // Reads events until no sensor is enabled. For the "sensor_poll" worker.
  void GetSensorUpdate() QEL_EXCLUDES(lock_);
  // Enables the sensors that wait for the service; false when it is absent or cannot be used.
  // For the "sensor_reconnect" worker.
  bool ReconnectToSensorService() QEL_EXCLUDES(lock_);

  // The platform's sensor type; -1 for one that it does not have.
  int GetASensorTyep(AudioSensorType type) const;
  // The reverse.
  AudioSensorType GetAudioSensorType(int sensor_type) const;
  const char* GetASensorString(AudioSensorType type) const;

  // Takes no lock but the client lists' own: it never waits for the platform, a client or a worker.
  // The values may be of different moments.
  void Dump(int fd);

 private:
  static constexpr size_t kSensorCount = 2;

  struct SensorState {
    const ASensor* sensor = nullptr;  // null until looked up, or when the device has none
    // Written with lock_ held; atomic for Dump().
    std::atomic<bool> initialized{false};  // has been looked up
    std::atomic<bool> active{false};       // is registered on the event queue
    std::atomic<int> data{0};              // the latest reading; centimetres or degrees
  };

  [[nodiscard]] bool IsInterfaceReady() const QEL_REQUIRES(lock_);
  // Gets manager, looper and queue, unless it has them. May block as the platform's look-up of the
  // manager does. Starts the reconnect worker when the service is absent.
  [[nodiscard]] bool InitSensorInterface() QEL_REQUIRES(lock_);
  // The result of registering the sensor; 0, too, for a sensor that has to wait for the service.
  [[nodiscard]] int EnableSensor(AudioSensorType type) QEL_REQUIRES(lock_);
  [[nodiscard]] int DisableSensor(AudioSensorType type) QEL_REQUIRES(lock_);
  // The poll thread ends when it next checks IsPollWanted().
  void StopPoll() QEL_REQUIRES(lock_);

  // Whether the poll thread has to continue.
  bool IsPollWanted() QEL_EXCLUDES(lock_);
  void ReadEvents() QEL_EXCLUDES(lock_);
  // Without lock_: the workers are joined, and no caller is left.
  void ReleaseInterface() QEL_UNCHECKED;
  void DumpSensor(AudioSensorType type, DumpWriter& out) const;

  // Reads without lock_, deliberately: a dump never waits for the platform or a worker.
  const SensorState& UnlockedSensor(AudioSensorType type) const QEL_UNCHECKED {
    return sensors_[type];
  }

  // Members are released in reverse order.
  std::mutex lock_;
  ALooper* looper_ QEL_GUARDED_BY(lock_) = nullptr;
  ASensorEventQueue* event_queue_ QEL_GUARDED_BY(lock_) = nullptr;
  ASensorManager* sensor_manager_ QEL_GUARDED_BY(lock_) = nullptr;
  // The poll thread has to read events. Written with lock_ held; atomic for Dump().
  std::atomic<bool> poll_started_{false};
  // Deinitialize() has begun: a sensor that is enabled now does not keep the poll thread running.
  bool closing_ QEL_GUARDED_BY(lock_) = false;
  // Set by Initialize() before any other thread knows this object, then only read.
  std::unique_ptr<RepeatedThread> poll_thread_;
  std::unique_ptr<RepeatedThread> callback_thread_;
  std::unique_ptr<RepeatedThread> reconnect_thread_;
  std::array<SensorState, kSensorCount> sensors_ QEL_GUARDED_BY(lock_);
  std::array<ClientList, kSensorCount> clients_;  // each locks itself; changed with lock_ held
  // Sensors with clients that could not be enabled because the service was absent, oldest first.
  std::vector<AudioSensorType> pending_sensors_ QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
