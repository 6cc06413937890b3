// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The local and remote sides of the sensor service.
#include "quorvel/fake/sensor_service_interface.h"

#include "remote_call.h"

namespace norvik::qel::fake {

namespace {

using aidl::android::frameworks::sensorservice::ISensorManager;

constexpr AIBinder_Class kServiceClass = {"android.frameworks.sensorservice.ISensorManager",
                                          ObjectOf, DestroyArgs};
constexpr AIBinder_Class kEventsClass = {"norvik.qel.fake.ISensorEvents", ObjectOf, DestroyArgs};

class BpSensorEvents : public ndk::BpCInterface<ISensorEvents> {
 public:
  using BpCInterface::BpCInterface;
  ndk::ScopedAStatus onEvents(const std::vector<ASensorEvent>& events) override {
    return SendRemote(asBinder(), &ISensorEvents::onEvents, events);
  }
};

class BpSensorService : public ndk::BpCInterface<ISensorService> {
 public:
  using BpCInterface::BpCInterface;
  ndk::ScopedAStatus getSensorList(std::vector<SensorDescription>* out) override {
    return CallRemote(asBinder(), &ISensorService::getSensorList, out);
  }
  ndk::ScopedAStatus getDefaultSensor(int32_t type,
                                      std::optional<SensorDescription>* out) override {
    return CallRemote(asBinder(), &ISensorService::getDefaultSensor, type, out);
  }
  ndk::ScopedAStatus createEventQueue(const std::shared_ptr<ISensorEvents>& events,
                                      int64_t* out_queue) override {
    return CallRemote(asBinder(), &ISensorService::createEventQueue, events, out_queue);
  }
  ndk::ScopedAStatus destroyEventQueue(int64_t queue) override {
    return CallRemote(asBinder(), &ISensorService::destroyEventQueue, queue);
  }
  ndk::ScopedAStatus enableSensor(int64_t queue, int32_t handle, int32_t period_us,
                                  int64_t max_latency_us) override {
    return CallRemote(asBinder(), &ISensorService::enableSensor, queue, handle, period_us,
                      max_latency_us);
  }
  ndk::ScopedAStatus disableSensor(int64_t queue, int32_t handle) override {
    return CallRemote(asBinder(), &ISensorService::disableSensor, queue, handle);
  }
};

}  // namespace

const char* ISensorEvents::descriptor = kEventsClass.descriptor;

std::shared_ptr<ISensorEvents> ISensorEvents::fromBinder(const ndk::SpAIBinder& binder) {
  return FromBinder<ISensorEvents, BpSensorEvents, kEventsClass>(binder);
}

ndk::SpAIBinder BnSensorEvents::createBinder() {
  return MakeLocal<kEventsClass>(ref<ndk::ICInterface>());
}

ndk::SpAIBinder BnSensorService::createBinder() {
  return MakeLocal<kServiceClass>(ref<ndk::ICInterface>());
}

}  // namespace norvik::qel::fake

namespace aidl::android::frameworks::sensorservice {

namespace fake = ::norvik::qel::fake;

const char* ISensorManager::descriptor = fake::kServiceClass.descriptor;

std::shared_ptr<ISensorManager> ISensorManager::fromBinder(const ndk::SpAIBinder& binder) {
  return fake::FromBinder<fake::ISensorService, fake::BpSensorService, fake::kServiceClass>(binder);
}

}  // namespace aidl::android::frameworks::sensorservice
