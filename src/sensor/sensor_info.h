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
// are called when a sensor has reported.
//
// The first client of a sensor has it enabled; the first enabled sensor has the "sensor_poll"
// worker wait for events. While the service is absent, sensors that are asked for wait in
// pending_sensors_, and the "sensor_reconnect" worker looks for the service once a second. The
// service's death is not noticed: the platform's objects do not survive it.
//
// Threads: clients and the three workers. Initialize() and Deinitialize() in turn, by the owner,
// with no other call under way but those of callbacks. Clients are called on the "sensor_callback"
// worker only, one at a time, with no lock held.
// Locks: lock_, then a worker's own. Calls to the platform are made with lock_ held, but for the
// wait for events.
class SensorInfo {
 public:
  enum AudioSensorType : int32_t {
    PROXIMITY = 0,
    HINGE_ANGLE = 1,
    UNKNOWN = 2,
  };

  using ClientInfo = SensorClient;

  SensorInfo();
  // Deinitialize() has come first; it stops the threads.
  ~SensorInfo();
  SensorInfo(const SensorInfo&) = delete;
  SensorInfo& operator=(const SensorInfo&) = delete;

  // Makes the workers, idle; clients and waiting sensors of an earlier life are forgotten. The
  // sensor service is not contacted.
  [[nodiscard]] bool Initialize() QEL_EXCLUDES(lock_);
  // Joins the workers, then gives the platform's objects back.
  void Deinitialize() QEL_EXCLUDES(lock_);

  // 0; -EINVAL for a null callback or cookie, or an id that `type` has already; else what enabling
  // the sensor gave.
  [[nodiscard]] int RegisterCallback(AudioSensorType type, const ClientInfo& client)
      QEL_EXCLUDES(lock_);
  // 0; -EINVAL for an id that `type` does not have; else what disabling the sensor gave.
  [[nodiscard]] int DeregisterCallback(AudioSensorType type, int id) QEL_EXCLUDES(lock_);

  // Calls the clients that are owed a call. For the "sensor_callback" worker.
  void DispatchToClient() QEL_EXCLUDES(lock_);
  // Reads events until no sensor is enabled any more. For the "sensor_poll" worker.
  void GetSensorUpdate() QEL_EXCLUDES(lock_);
  // Enables the sensors that wait for the service; false when it is still absent or cannot be used.
  // For the "sensor_reconnect" worker.
  [[nodiscard]] bool ReconnectToSensorService() QEL_EXCLUDES(lock_);

  // The platform's sensor type; -1 for one that it does not have.
  int GetASensorTyep(AudioSensorType type) const;
  // The reverse.
  AudioSensorType GetAudioSensorType(int sensor_type) const;
  const char* GetASensorString(AudioSensorType type) const;

  // Takes no lock and may mix states.
  void Dump(int fd);

 private:
  static constexpr size_t kSensorCount = 2;

  struct SensorState {
    const ASensor* sensor = nullptr;  // null until looked up, or when the device has none
    // Written with lock_ held; atomic for Dump().
    std::atomic<bool> initialized{false};  // has been looked up
    std::atomic<bool> active{false};       // is registered on the event queue
    std::atomic<int> data{0};              // the latest reading
  };

  [[nodiscard]] bool IsInterfaceReady() const QEL_REQUIRES(lock_);
  // Gets hold of manager, looper and queue, unless that is done. May wait as the look-up of the
  // manager does. Has the service looked for when it is absent.
  [[nodiscard]] bool InitSensorInterface() QEL_REQUIRES(lock_);
  // 0 or what registering the sensor gave; 0, too, for a sensor that has to wait for the service.
  [[nodiscard]] int EnableSensor(AudioSensorType type) QEL_REQUIRES(lock_);
  [[nodiscard]] int DisableSensor(AudioSensorType type) QEL_REQUIRES(lock_);
  // The poll thread ends at its next look.
  void StopPoll() QEL_REQUIRES(lock_);

  // Whether the poll thread is to go on.
  bool IsPollWanted() QEL_EXCLUDES(lock_);
  void ReadEvents() QEL_EXCLUDES(lock_);
  // Without lock_, which nobody else is left to take: the workers are joined, callers are gone.
  void ReleaseInterface() QEL_UNCHECKED;
  void DumpSensor(AudioSensorType type, DumpWriter& out) const;

  // Reads without lock_, deliberately: a dump never waits for the platform or a worker.
  const SensorState& UnlockedSensor(AudioSensorType type) const QEL_UNCHECKED {
    return sensors_[type];
  }
  std::vector<ClientList::State> UnlockedClients(AudioSensorType type) const QEL_UNCHECKED {
    return clients_[type].UnlockedStates();
  }

  // Members are released in reverse order.
  std::mutex lock_;
  ALooper* looper_ QEL_GUARDED_BY(lock_) = nullptr;
  ASensorEventQueue* event_queue_ QEL_GUARDED_BY(lock_) = nullptr;
  ASensorManager* sensor_manager_ QEL_GUARDED_BY(lock_) = nullptr;
  // The poll thread is to read events. Written with lock_ held; atomic for Dump().
  std::atomic<bool> poll_started_{false};
  // Deinitialize() has begun: whatever still enables a sensor no longer keeps the poll thread
  // going.
  bool closing_ QEL_GUARDED_BY(lock_) = false;
  // Set by Initialize() before any other thread knows this object, and then only read.
  std::unique_ptr<RepeatedThread> poll_thread_;
  std::unique_ptr<RepeatedThread> callback_thread_;
  std::unique_ptr<RepeatedThread> reconnect_thread_;
  std::array<SensorState, kSensorCount> sensors_ QEL_GUARDED_BY(lock_);
  std::array<ClientList, kSensorCount> clients_ QEL_GUARDED_BY(lock_);
  // Asked for while the service could not be used, in that order.
  std::vector<AudioSensorType> pending_sensors_ QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
