// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The local and remote sides of the sensor service.
#include "quorvel/fake/sensor_service_interface.h"

#include "remote_call.h"

namespace norvik::qel::fake {

namespace {

class BpSensorEvents : public ProxyOf<ISensorEvents> {
 public:
  using ProxyOf::ProxyOf;
  ndk::ScopedAStatus onEvents(const std::vector<ASensorEvent>& events) override {
    return Send(&ISensorEvents::onEvents, events);
  }
};

class BpSensorService : public ProxyOf<ISensorService> {
 public:
  using ProxyOf::ProxyOf;
  ndk::ScopedAStatus getSensorList(std::vector<SensorDescription>* out) override {
    return Call(&ISensorService::getSensorList, out);
  }
  ndk::ScopedAStatus getDefaultSensor(int32_t type,
                                      std::optional<SensorDescription>* out) override {
    return Call(&ISensorService::getDefaultSensor, type, out);
  }
  ndk::ScopedAStatus createEventQueue(const std::shared_ptr<ISensorEvents>& events,
                                      int64_t* out_queue) override {
    return Call(&ISensorService::createEventQueue, events, out_queue);
  }
  ndk::ScopedAStatus destroyEventQueue(int64_t queue) override {
    return Call(&ISensorService::destroyEventQueue, queue);
  }
  ndk::ScopedAStatus enableSensor(int64_t queue, int32_t handle, int32_t period_us,
                                  int64_t max_latency_us) override {
    return Call(&ISensorService::enableSensor, queue, handle, period_us, max_latency_us);
  }
  ndk::ScopedAStatus disableSensor(int64_t queue, int32_t handle) override {
    return Call(&ISensorService::disableSensor, queue, handle);
  }
};

}  // namespace

std::shared_ptr<ISensorEvents> ISensorEvents::fromBinder(const ndk::SpAIBinder& binder) {
  return FromBinder<ISensorEvents, BpSensorEvents>(binder);
}

ndk::SpAIBinder BnSensorEvents::createBinder() {
  return MakeLocal<ISensorEvents>(ref<ndk::ICInterface>());
}

ndk::SpAIBinder BnSensorService::createBinder() {
  return MakeLocal<ISensorService>(ref<ndk::ICInterface>());
}

}  // namespace norvik::qel::fake

namespace aidl::android::frameworks::sensorservice {

namespace fake = ::norvik::qel::fake;

std::shared_ptr<ISensorManager> ISensorManager::fromBinder(const ndk::SpAIBinder& binder) {
  return fake::FromBinder<fake::ISensorService, fake::BpSensorService>(binder);
}

}  // namespace aidl::android::frameworks::sensorservice
