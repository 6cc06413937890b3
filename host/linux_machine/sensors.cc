// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/linux_machine/sensors.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <utility>
#include <vector>

#include "device_files.h"
#include "iio_channels.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/thread_annotations.h"
#include "running_service.h"
#include "watched_class.h"

namespace norvik::qel::linux_machine {

using services::ServiceEvent;

namespace {

// A type of sensor that this machine may have.
struct Sensor {
  int32_t type;
  int32_t handle;
  const char* string_type;
  const char* lack;  // the notice if there is none
  std::optional<IioChannel> channel = {};
  bool is_listed = false;
  std::optional<float> last_report = {};
};

using AllSensors = std::array<Sensor, 2>;

const AllSensors kNoSensors = {{
    {.type = ASENSOR_TYPE_PROXIMITY,
     .handle = 1,
     .string_type = "android.sensor.proximity",
     .lack = "this machine has no proximity sensor"},
    {.type = ASENSOR_TYPE_HINGE_ANGLE,
     .handle = 2,
     .string_type = "android.sensor.hinge_angle",
     .lack = "this machine has no hinge angle sensor"},
}};

SensorSource ToSource(int32_t type, const IioChannel& channel) {
  using Reading = SensorSource::Reading;
  SensorSource source = {.type = type, .name = channel.name, .device = DeviceName(channel.syspath)};
  const auto set = [&](Reading reading, float maximum) {
    source.reading = reading;
    source.maximum = maximum;
  };
  using enum IioChannel::Kind;
  if (channel.kind == kNearness) set(Reading::kNearOrFar, kFarCentimetres);
  if (channel.kind == kPresence) set(Reading::kPresentOrAway, kFarCentimetres);
  if (channel.kind == kAngle || channel.kind == kDegrees) set(Reading::kDegrees, 360);
  return source;
}

}  // namespace

// Locks: reading_lock_ before the lock of SensorService.
class Sensors::Service : public WatchedClass, public services::SensorService {
 public:
  Service(std::chrono::milliseconds period, services::ServiceObserver observer)
      : WatchedClass({"iio"}, "IIO devices", period),
        SensorService({}, WakingObserver(std::move(observer))) {}

  ndk::ScopedAStatus enableSensor(int64_t queue, int32_t handle, int32_t period_us,
                                  int64_t max_latency_us) override;

  bool has_listeners() const override;
  void ReadForListeners() override;
  int64_t measurement_count() const { return measurements_; }
  std::vector<SensorSource> sources() const;

 private:
  void ReadLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_) override;
  void UseLocked(Sensor& sensor, const std::optional<IioChannel>& channel)
      QUORVEL_REQUIRES(reading_lock_);
  void MeasureLocked(Sensor& sensor) QUORVEL_REQUIRES(reading_lock_);

  AllSensors sensors_ QUORVEL_GUARDED_BY(reading_lock_) = kNoSensors;
  bool has_looked_ QUORVEL_GUARDED_BY(reading_lock_) = false;
  std::atomic<int64_t> measurements_ = 0;
};

ndk::ScopedAStatus Sensors::Service::enableSensor(int64_t queue, int32_t handle, int32_t period_us,
                                                  int64_t max_latency_us) {
  {
    // Enabling sends the latest reading: measure first, so that it is current.
    std::lock_guard<std::mutex> lock(reading_lock_);
    for (Sensor& sensor : sensors_) {
      if (sensor.handle == handle) MeasureLocked(sensor);
    }
  }
  return SensorService::enableSensor(queue, handle, period_us, max_latency_us);
}

bool Sensors::Service::has_listeners() const {
  return std::any_of(kNoSensors.begin(), kNoSensors.end(),
                     [this](const Sensor& sensor) { return listeners(sensor.type) != 0; });
}

std::vector<SensorSource> Sensors::Service::sources() const {
  std::lock_guard<std::mutex> lock(reading_lock_);
  std::vector<SensorSource> sources;
  for (const Sensor& sensor : sensors_) {
    if (sensor.channel) sources.push_back(ToSource(sensor.type, *sensor.channel));
  }
  return sources;
}

void Sensors::Service::ReadForListeners() {
  std::lock_guard<std::mutex> lock(reading_lock_);
  for (Sensor& sensor : sensors_) {
    if (listeners(sensor.type) != 0) MeasureLocked(sensor);
  }
}

void Sensors::Service::ReadLocked(const std::vector<std::string>& syspaths) {
  const FoundChannels found = FindChannels(syspaths);
  NoticeFaultsLocked(found.faults);
  auto& [proximity, hinge] = sensors_;
  UseLocked(proximity, found.proximity);
  UseLocked(hinge, found.hinge);
  has_looked_ = true;
}

void Sensors::Service::UseLocked(Sensor& sensor, const std::optional<IioChannel>& channel) {
  if (!channel && (sensor.channel || !has_looked_)) AddNoticeLocked(sensor.lack);
  if (!channel) {
    sensor.last_report.reset();
    Forget(sensor.type);
  }
  const bool was_presence = sensor.channel && sensor.channel->kind == IioChannel::Kind::kPresence;
  if (channel && channel->kind == IioChannel::Kind::kPresence && !was_presence) {
    AddNoticeLocked(DeviceName(channel->syspath) +
                    ": tells whether a person is there, no distance: near or far");
  }
  sensor.channel = channel;
  if (!channel || std::exchange(sensor.is_listed, true)) return;
  Add({.handle = sensor.handle,
       .type = sensor.type,
       .name = channel->name,
       .string_type = sensor.string_type});
}

void Sensors::Service::MeasureLocked(Sensor& sensor) {
  if (!sensor.channel) return;
  ++measurements_;
  std::vector<Fault> faults;
  const std::optional<float> value = Measure(*sensor.channel, &faults);
  NoticeFaultsLocked(faults);
  if (std::exchange(sensor.last_report, value) == value) return;
  if (value) {
    Report({{.type = sensor.type, .value = *value}});
  } else {
    Forget(sensor.type);
  }
}

Sensors::Sensors(services::ServiceObserver observer, SensorSettings settings)
    : events_("sensor", std::move(observer)), settings_(settings) {}

Sensors::~Sensors() {
  Stop();
}

void Sensors::Start() {
  Stop();
  service_ = ndk::SharedRefBase::make<Service>(settings_.period, events_.observer());
  running_ =
      std::make_unique<RunningService>(service_, service_, services::kSensorInstance, events_);
}

void Sensors::Stop() {
  if (service_ == nullptr) return;
  running_ = nullptr;
  service_ = nullptr;
  static_cast<void>(fake::WaitUntilDelivered());
  events_.Send(ServiceEvent::Kind::kDied);
}

std::vector<SensorSource> Sensors::sources() const {
  return service_ != nullptr ? service_->sources() : std::vector<SensorSource>{};
}

int Sensors::listeners(int32_t type) const {
  return service_ != nullptr ? service_->listeners(type) : 0;
}

int64_t Sensors::measurement_count() const {
  return service_ != nullptr ? service_->measurement_count() : 0;
}

}  // namespace norvik::qel::linux_machine
