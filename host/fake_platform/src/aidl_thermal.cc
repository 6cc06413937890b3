// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The local and remote sides of the AIDL thermal interface.
#include <aidl/android/hardware/thermal/BnCoolingDeviceChangedCallback.h>
#include <aidl/android/hardware/thermal/BnThermal.h>
#include <aidl/android/hardware/thermal/BnThermalChangedCallback.h>
#include <aidl/android/hardware/thermal/BpCoolingDeviceChangedCallback.h>
#include <aidl/android/hardware/thermal/BpThermal.h>
#include <aidl/android/hardware/thermal/BpThermalChangedCallback.h>

#include "remote_call.h"

namespace aidl::android::hardware::thermal {

namespace fake = ::norvik::qel::fake;

namespace {

constexpr AIBinder_Class kThermalClass = {"android.hardware.thermal.IThermal", fake::ObjectOf,
                                          fake::DestroyArgs};
constexpr AIBinder_Class kThermalChangedCallbackClass = {
    "android.hardware.thermal.IThermalChangedCallback", fake::ObjectOf, fake::DestroyArgs};
constexpr AIBinder_Class kCoolingDeviceChangedCallbackClass = {
    "android.hardware.thermal.ICoolingDeviceChangedCallback", fake::ObjectOf, fake::DestroyArgs};

}  // namespace

const char* IThermal::descriptor = kThermalClass.descriptor;

std::shared_ptr<IThermal> IThermal::fromBinder(const ndk::SpAIBinder& binder) {
  return fake::FromBinder<IThermal, BpThermal, kThermalClass>(binder);
}

bool IThermal::setDefaultImpl(const std::shared_ptr<IThermal>& impl) {
  return fake::SetDefaultImpl(impl);
}

const std::shared_ptr<IThermal>& IThermal::getDefaultImpl() {
  return fake::DefaultImpl<IThermal>();
}

BnThermal::BnThermal() = default;
BnThermal::~BnThermal() = default;

ndk::SpAIBinder BnThermal::createBinder() {
  return fake::MakeLocal<kThermalClass>(ref<ndk::ICInterface>());
}

ndk::ScopedAStatus BnThermal::getInterfaceVersion(int32_t* out) {
  *out = version;
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus BnThermal::getInterfaceHash(std::string* out) {
  *out = hash;
  return ndk::ScopedAStatus::ok();
}

struct BpThermal::Asked {
  fake::AskedOnce<int32_t> version;
  fake::AskedOnce<std::string> hash;
};

BpThermal::BpThermal(const ndk::SpAIBinder& binder)
    : BpCInterface(binder), asked_(std::make_unique<Asked>()) {}
BpThermal::~BpThermal() = default;

ndk::ScopedAStatus BpThermal::getCoolingDevices(std::vector<CoolingDevice>* out) {
  return fake::CallRemote(asBinder(), &IThermal::getCoolingDevices, out);
}

ndk::ScopedAStatus BpThermal::getCoolingDevicesWithType(CoolingType type,
                                                        std::vector<CoolingDevice>* out) {
  return fake::CallRemote(asBinder(), &IThermal::getCoolingDevicesWithType, type, out);
}

ndk::ScopedAStatus BpThermal::getTemperatures(std::vector<Temperature>* out) {
  return fake::CallRemote(asBinder(), &IThermal::getTemperatures, out);
}

ndk::ScopedAStatus BpThermal::getTemperaturesWithType(TemperatureType type,
                                                      std::vector<Temperature>* out) {
  return fake::CallRemote(asBinder(), &IThermal::getTemperaturesWithType, type, out);
}

ndk::ScopedAStatus BpThermal::getTemperatureThresholds(std::vector<TemperatureThreshold>* out) {
  return fake::CallRemote(asBinder(), &IThermal::getTemperatureThresholds, out);
}

ndk::ScopedAStatus BpThermal::getTemperatureThresholdsWithType(
    TemperatureType type, std::vector<TemperatureThreshold>* out) {
  return fake::CallRemote(asBinder(), &IThermal::getTemperatureThresholdsWithType, type, out);
}

ndk::ScopedAStatus BpThermal::registerThermalChangedCallback(
    const std::shared_ptr<IThermalChangedCallback>& callback) {
  return fake::CallRemote(asBinder(), &IThermal::registerThermalChangedCallback, callback);
}

ndk::ScopedAStatus BpThermal::registerThermalChangedCallbackWithType(
    const std::shared_ptr<IThermalChangedCallback>& callback, TemperatureType type) {
  return fake::CallRemote(asBinder(), &IThermal::registerThermalChangedCallbackWithType, callback,
                          type);
}

ndk::ScopedAStatus BpThermal::unregisterThermalChangedCallback(
    const std::shared_ptr<IThermalChangedCallback>& callback) {
  return fake::CallRemote(asBinder(), &IThermal::unregisterThermalChangedCallback, callback);
}

ndk::ScopedAStatus BpThermal::registerCoolingDeviceChangedCallbackWithType(
    const std::shared_ptr<ICoolingDeviceChangedCallback>& callback, CoolingType type) {
  return fake::CallRemote(asBinder(), &IThermal::registerCoolingDeviceChangedCallbackWithType,
                          callback, type);
}

ndk::ScopedAStatus BpThermal::unregisterCoolingDeviceChangedCallback(
    const std::shared_ptr<ICoolingDeviceChangedCallback>& callback) {
  return fake::CallRemote(asBinder(), &IThermal::unregisterCoolingDeviceChangedCallback, callback);
}

ndk::ScopedAStatus BpThermal::getInterfaceVersion(int32_t* out) {
  return asked_->version.Get(out, [this](int32_t* value) {
    return fake::CallRemote(asBinder(), &IThermal::getInterfaceVersion, value);
  });
}

ndk::ScopedAStatus BpThermal::getInterfaceHash(std::string* out) {
  return asked_->hash.Get(out, [this](std::string* value) {
    return fake::CallRemote(asBinder(), &IThermal::getInterfaceHash, value);
  });
}

const char* IThermalChangedCallback::descriptor = kThermalChangedCallbackClass.descriptor;

std::shared_ptr<IThermalChangedCallback> IThermalChangedCallback::fromBinder(
    const ndk::SpAIBinder& binder) {
  return fake::FromBinder<IThermalChangedCallback, BpThermalChangedCallback,
                          kThermalChangedCallbackClass>(binder);
}

bool IThermalChangedCallback::setDefaultImpl(const std::shared_ptr<IThermalChangedCallback>& impl) {
  return fake::SetDefaultImpl(impl);
}

const std::shared_ptr<IThermalChangedCallback>& IThermalChangedCallback::getDefaultImpl() {
  return fake::DefaultImpl<IThermalChangedCallback>();
}

BnThermalChangedCallback::BnThermalChangedCallback() = default;
BnThermalChangedCallback::~BnThermalChangedCallback() = default;

ndk::SpAIBinder BnThermalChangedCallback::createBinder() {
  return fake::MakeLocal<kThermalChangedCallbackClass>(ref<ndk::ICInterface>());
}

ndk::ScopedAStatus BnThermalChangedCallback::getInterfaceVersion(int32_t* out) {
  *out = version;
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus BnThermalChangedCallback::getInterfaceHash(std::string* out) {
  *out = hash;
  return ndk::ScopedAStatus::ok();
}

struct BpThermalChangedCallback::Asked {
  fake::AskedOnce<int32_t> version;
  fake::AskedOnce<std::string> hash;
};

BpThermalChangedCallback::BpThermalChangedCallback(const ndk::SpAIBinder& binder)
    : BpCInterface(binder), asked_(std::make_unique<Asked>()) {}
BpThermalChangedCallback::~BpThermalChangedCallback() = default;

ndk::ScopedAStatus BpThermalChangedCallback::notifyThrottling(const Temperature& temperature) {
  return fake::SendRemote(asBinder(), &IThermalChangedCallback::notifyThrottling, temperature);
}

ndk::ScopedAStatus BpThermalChangedCallback::getInterfaceVersion(int32_t* out) {
  return asked_->version.Get(out, [this](int32_t* value) {
    return fake::CallRemote(asBinder(), &IThermalChangedCallback::getInterfaceVersion, value);
  });
}

ndk::ScopedAStatus BpThermalChangedCallback::getInterfaceHash(std::string* out) {
  return asked_->hash.Get(out, [this](std::string* value) {
    return fake::CallRemote(asBinder(), &IThermalChangedCallback::getInterfaceHash, value);
  });
}

const char* ICoolingDeviceChangedCallback::descriptor =
    kCoolingDeviceChangedCallbackClass.descriptor;

std::shared_ptr<ICoolingDeviceChangedCallback> ICoolingDeviceChangedCallback::fromBinder(
    const ndk::SpAIBinder& binder) {
  return fake::FromBinder<ICoolingDeviceChangedCallback, BpCoolingDeviceChangedCallback,
                          kCoolingDeviceChangedCallbackClass>(binder);
}

bool ICoolingDeviceChangedCallback::setDefaultImpl(
    const std::shared_ptr<ICoolingDeviceChangedCallback>& impl) {
  return fake::SetDefaultImpl(impl);
}

const std::shared_ptr<ICoolingDeviceChangedCallback>&
ICoolingDeviceChangedCallback::getDefaultImpl() {
  return fake::DefaultImpl<ICoolingDeviceChangedCallback>();
}

BnCoolingDeviceChangedCallback::BnCoolingDeviceChangedCallback() = default;
BnCoolingDeviceChangedCallback::~BnCoolingDeviceChangedCallback() = default;

ndk::SpAIBinder BnCoolingDeviceChangedCallback::createBinder() {
  return fake::MakeLocal<kCoolingDeviceChangedCallbackClass>(ref<ndk::ICInterface>());
}

ndk::ScopedAStatus BnCoolingDeviceChangedCallback::getInterfaceVersion(int32_t* out) {
  *out = version;
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus BnCoolingDeviceChangedCallback::getInterfaceHash(std::string* out) {
  *out = hash;
  return ndk::ScopedAStatus::ok();
}

struct BpCoolingDeviceChangedCallback::Asked {
  fake::AskedOnce<int32_t> version;
  fake::AskedOnce<std::string> hash;
};

BpCoolingDeviceChangedCallback::BpCoolingDeviceChangedCallback(const ndk::SpAIBinder& binder)
    : BpCInterface(binder), asked_(std::make_unique<Asked>()) {}
BpCoolingDeviceChangedCallback::~BpCoolingDeviceChangedCallback() = default;

ndk::ScopedAStatus BpCoolingDeviceChangedCallback::notifyCoolingDeviceChanged(
    const CoolingDevice& coolingDevice) {
  return fake::SendRemote(asBinder(), &ICoolingDeviceChangedCallback::notifyCoolingDeviceChanged,
                          coolingDevice);
}

ndk::ScopedAStatus BpCoolingDeviceChangedCallback::getInterfaceVersion(int32_t* out) {
  return asked_->version.Get(out, [this](int32_t* value) {
    return fake::CallRemote(asBinder(), &ICoolingDeviceChangedCallback::getInterfaceVersion, value);
  });
}

ndk::ScopedAStatus BpCoolingDeviceChangedCallback::getInterfaceHash(std::string* out) {
  return asked_->hash.Get(out, [this](std::string* value) {
    return fake::CallRemote(asBinder(), &ICoolingDeviceChangedCallback::getInterfaceHash, value);
  });
}

}  // namespace aidl::android::hardware::thermal
