// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/platform.h"

#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <aidl/android/hardware/health/IHealth.h>
#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/hardware/thermal/2.0/IThermal.h>
#include <android/sensor.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>

namespace norvik::qel::monitor {

namespace {

using aidl::android::frameworks::sensorservice::ISensorManager;
using aidl::android::hardware::health::IHealth;
using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::thermal::V1_0::ThermalStatus;
using android::hardware::thermal::V1_0::ThermalStatusCode;
using AidlThermal = aidl::android::hardware::thermal::IThermal;
using AidlTemperature = aidl::android::hardware::thermal::Temperature;
using HidlThermal = android::hardware::thermal::V2_0::IThermal;
using HidlTemperature = android::hardware::thermal::V2_0::Temperature;

std::string InstanceOf(const char* descriptor) {
  return std::string(descriptor) + "/default";
}

std::string ErrorOf(const ndk::ScopedAStatus& status) {
  return status.getDescription();
}

// Requests a death notification, without which AIBinder_isAlive() does not learn of a death. The
// deletion of the recipient removes the link.
std::function<bool()> Watch(const ndk::SpAIBinder& service, std::string* error) {
  const auto recipient = std::make_shared<ndk::ScopedAIBinder_DeathRecipient>(
      AIBinder_DeathRecipient_new([](void*) {}));
  const binder_status_t status = AIBinder_linkToDeath(service.get(), recipient->get(), nullptr);
  if (status == STATUS_OK) return [service, recipient] { return AIBinder_isAlive(service.get()); };
  *error = ErrorOf(ndk::ScopedAStatus::fromStatus(status));
  return nullptr;
}

ServiceState LookUp(std::string_view service, const char* descriptor) {
  ServiceState state = {.service = service, .instance = InstanceOf(descriptor)};
  if (service != kSensorService) {
    state.is_declared = AServiceManager_isDeclared(state.instance.c_str());
  }
  const ndk::SpAIBinder binder(AServiceManager_checkService(state.instance.c_str()));
  state.is_found = binder.get() != nullptr;
  if (!state.is_found) return state;
  const binder_status_t ping = AIBinder_ping(binder.get());
  state.answers = ping == STATUS_OK;
  if (!state.answers) state.error = ErrorOf(ndk::ScopedAStatus::fromStatus(ping));
  state.is_alive = Watch(binder, &state.error);
  return state;
}

struct Recipient : android::hardware::hidl_death_recipient {
  void serviceDied(uint64_t /*cookie*/,
                   const android::wp<android::hidl::base::V1_0::IBase>& /*who*/) override {
    has_died = true;
  }
  std::atomic<bool> has_died = false;
};

sp<HidlThermal> FindHidlThermal() {
  return HidlThermal::tryGetService("default", /*getStub=*/false);
}

ServiceState LookUpHidlThermal() {
  ServiceState state = {.service = kHidlThermalService,
                        .instance = InstanceOf(HidlThermal::descriptor)};
  const sp<HidlThermal> service = FindHidlThermal();
  state.is_found = service != nullptr;
  if (!state.is_found) return state;
  const Return<void> ping = service->ping();
  state.answers = ping.isOk();
  if (!state.answers) state.error = ping.description();
  const sp<Recipient> recipient = sp<Recipient>::make();
  const Return<bool> link = service->linkToDeath(recipient, /*cookie=*/0);
  if (!link.isOk()) state.error = link.description();
  if (!link.isOk() || !static_cast<bool>(link)) return state;
  const std::shared_ptr<HidlThermal> linked(service.get(), [service, recipient](HidlThermal*) {
    static_cast<void>(service->unlinkToDeath(recipient).isOk());
  });
  state.is_alive = [linked, recipient] { return !recipient->has_died; };
  return state;
}

// Both interfaces number severities like the monitor.
template <typename Temperature>
TemperatureReport ToReport(const Temperature& temperature) {
  const float value = temperature.value;
  return {.type = toString(temperature.type),
          .name = temperature.name,
          .value = std::isfinite(value) ? std::optional(value) : std::nullopt,
          .severity = static_cast<Severity>(temperature.throttlingStatus)};
}

// The temperatures from the AIDL service instance that the library uses; nullopt on failure.
std::optional<std::vector<TemperatureReport>> AidlTemperatures() {
  const std::string instance = InstanceOf(AidlThermal::descriptor);
  if (!AServiceManager_isDeclared(instance.c_str())) return std::nullopt;
  const ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
  const std::shared_ptr<AidlThermal> service = AidlThermal::fromBinder(binder);
  std::vector<AidlTemperature> temperatures;
  if (service == nullptr || !service->getTemperatures(&temperatures).isOk()) return std::nullopt;
  std::vector<TemperatureReport> reports;
  reports.reserve(temperatures.size());
  for (const AidlTemperature& temperature : temperatures) reports.push_back(ToReport(temperature));
  return reports;
}

std::optional<std::vector<TemperatureReport>> HidlTemperatures() {
  const sp<HidlThermal> service = FindHidlThermal();
  if (service == nullptr) return std::nullopt;
  std::optional<std::vector<TemperatureReport>> reports;
  const Return<void> answered = service->getCurrentTemperatures(
      /*filterType=*/false, {},
      [&](const ThermalStatus& status, const hidl_vec<HidlTemperature>& temperatures) {
        if (status.code != ThermalStatusCode::SUCCESS) return;
        reports.emplace();
        for (const HidlTemperature& temperature : temperatures) {
          reports->push_back(ToReport(temperature));
        }
      });
  return answered.isOk() ? reports : std::nullopt;
}

}  // namespace

std::vector<ServiceState> LookUpServices() {
  return {LookUp(kHealthService, IHealth::descriptor),
          LookUp(kSensorService, ISensorManager::descriptor),
          LookUp(kThermalService, AidlThermal::descriptor), LookUpHidlThermal()};
}

bool HasBinderThreads() {
  return ABinderProcess_isThreadPoolStarted();
}

std::string DescriptionOf(Sensor sensor) {
  ASensorManager* const manager = ASensorManager_getInstanceForPackage(nullptr);
  const int type = sensor == Sensor::kProximity ? ASENSOR_TYPE_PROXIMITY : ASENSOR_TYPE_HINGE_ANGLE;
  const ASensor* const found =
      manager != nullptr ? ASensorManager_getDefaultSensor(manager, type) : nullptr;
  if (found == nullptr) return {};
  const std::string name = ASensor_getName(found);
  const std::string maker = ASensor_getVendor(found);
  return maker.empty() ? name : name + " (" + maker + ")";
}

std::optional<std::vector<TemperatureReport>> PlatformTemperatures() {
  std::optional<std::vector<TemperatureReport>> reports = AidlTemperatures();
  return reports ? reports : HidlTemperatures();
}

}  // namespace norvik::qel::monitor
