// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

#include <android/binder_ibinder.h>
#include <android/binder_status.h>
#include <hidl/HidlTransportSupport.h>
#include <string.h>

#include <algorithm>
#include <utility>

#include "thermal_hidl_wrapper/aidl_to_hidl.h"

namespace aidl::android::hardware::thermal {

namespace {

namespace V1_0 = ::android::hardware::thermal::V1_0;
namespace V2_0 = ::android::hardware::thermal::V2_0;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;

constexpr char kUnsupported[] = "Operation unsupported by Thermal HIDL wrapper";
constexpr char kNotInitialized[] =
    "Thermal AIDL HAL client used by HIDL wrapper was not initialized";
constexpr char kNullCallback[] = "Invalid nullptr callback";
constexpr char kRegistered[] = "The callback was already registered through wrapper";
constexpr char kNotRegistered[] = "The callback was not registered through wrapper before";

V1_0::ThermalStatus Success() {
  return {.code = V1_0::ThermalStatusCode::SUCCESS, .debugMessage = {}};
}

V1_0::ThermalStatus Failure(const char* message) {
  return {.code = V1_0::ThermalStatusCode::FAILURE, .debugMessage = message};
}

// A call may return a null status, which the getters must not receive.
bool IsOk(const ndk::ScopedAStatus& status) {
  return status.get() != nullptr && AStatus_isOk(status.get());
}

V1_0::ThermalStatus ToThermalStatus(const ndk::ScopedAStatus& status) {
  if (IsOk(status)) return Success();
  return Failure(status.get() != nullptr ? AStatus_getMessage(status.get()) : "");
}

// The end of the three queries: converts the service's answer.
template <typename Hidl, typename Aidl, typename Callback>
Return<void> Answer(const ndk::ScopedAStatus& status, const std::vector<Aidl>& records,
                    const Callback& callback) {
  hidl_vec<Hidl> converted;
  if (IsOk(status)) {
    converted.resize(records.size());
    for (size_t i = 0; i < records.size(); ++i) converted[i] = ToHidl(records[i]);
  }
  callback(ToThermalStatus(status), converted);
  return Void();
}

}  // namespace

ThermalHidlWrapper::ThermalHidlWrapper(
    const std::shared_ptr<::aidl::android::hardware::thermal::IThermal>& thermal_service)
    : thermal_service_(thermal_service) {}

ThermalHidlWrapper::~ThermalHidlWrapper() {
  // The newest first: a vector's own order of destruction is unspecified.
  while (!callback_wrappers_.empty()) callback_wrappers_.pop_back();
}

Return<void> ThermalHidlWrapper::getTemperatures(getTemperatures_cb callback) {
  callback(Failure(kUnsupported), {});
  return Void();
}

Return<void> ThermalHidlWrapper::getCpuUsages(getCpuUsages_cb callback) {
  callback(Failure(kUnsupported), {});
  return Void();
}

Return<void> ThermalHidlWrapper::getCoolingDevices(getCoolingDevices_cb callback) {
  callback(Failure(kUnsupported), {});
  return Void();
}

// Queries, registration and unregistration report a null service and then use it all the same: the
// report diagnoses a caller's bug, it is not a result to continue with.
Return<void> ThermalHidlWrapper::getCurrentTemperatures(bool filter_type, HidlTemperatureType type,
                                                        getCurrentTemperatures_cb callback) {
  if (thermal_service_ == nullptr) callback(Failure(kNotInitialized), {});
  std::vector<Temperature> temperatures;
  const ndk::ScopedAStatus status = filter_type
                                        ? thermal_service_->getTemperaturesWithType(
                                              static_cast<TemperatureType>(type), &temperatures)
                                        : thermal_service_->getTemperatures(&temperatures);
  return Answer<V2_0::Temperature>(status, temperatures, callback);
}

Return<void> ThermalHidlWrapper::getTemperatureThresholds(bool filter_type,
                                                          HidlTemperatureType type,
                                                          getTemperatureThresholds_cb callback) {
  if (thermal_service_ == nullptr) callback(Failure(kNotInitialized), {});
  std::vector<TemperatureThreshold> thresholds;
  const ndk::ScopedAStatus status = filter_type
                                        ? thermal_service_->getTemperatureThresholdsWithType(
                                              static_cast<TemperatureType>(type), &thresholds)
                                        : thermal_service_->getTemperatureThresholds(&thresholds);
  return Answer<V2_0::TemperatureThreshold>(status, thresholds, callback);
}

Return<void> ThermalHidlWrapper::getCurrentCoolingDevices(bool filter_type, HidlCoolingType type,
                                                          getCurrentCoolingDevices_cb callback) {
  if (thermal_service_ == nullptr) callback(Failure(kNotInitialized), {});
  std::vector<CoolingDevice> devices;
  const ndk::ScopedAStatus status = filter_type ? thermal_service_->getCoolingDevicesWithType(
                                                      static_cast<CoolingType>(type), &devices)
                                                : thermal_service_->getCoolingDevices(&devices);
  return Answer<V2_0::CoolingDevice>(status, devices, callback);
}

Return<void> ThermalHidlWrapper::registerThermalChangedCallback(
    const ::android::sp<HidlCallback>& callback, bool filter_type, HidlTemperatureType type,
    registerThermalChangedCallback_cb result) {
  if (thermal_service_ == nullptr) result(Failure(kNotInitialized));
  if (callback == nullptr) {
    result(Failure(kNullCallback));
    return Void();
  }
  // Declared before the lock: a wrapper that is not kept is released with the lock free.
  std::shared_ptr<IThermalChangedCallbackWrapper> wrapper;
  std::lock_guard<std::mutex> lock(lock_);
  if (Find(callback) != callback_wrappers_.end()) {
    result(Failure(kRegistered));
    return Void();
  }
  wrapper = ndk::SharedRefBase::make<IThermalChangedCallbackWrapper>(callback);
  const ndk::ScopedAStatus status = filter_type
                                        ? thermal_service_->registerThermalChangedCallbackWithType(
                                              wrapper, static_cast<TemperatureType>(type))
                                        : thermal_service_->registerThermalChangedCallback(wrapper);
  if (IsOk(status)) callback_wrappers_.push_back(wrapper);
  result(ToThermalStatus(status));
  return Void();
}

Return<void> ThermalHidlWrapper::unregisterThermalChangedCallback(
    const ::android::sp<HidlCallback>& callback, unregisterThermalChangedCallback_cb result) {
  if (thermal_service_ == nullptr) result(Failure(kNotInitialized));
  if (callback == nullptr) {
    result(Failure(kNullCallback));
    return Void();
  }
  std::shared_ptr<IThermalChangedCallbackWrapper> wrapper;  // as above
  std::lock_guard<std::mutex> lock(lock_);
  const auto found = Find(callback);
  if (found == callback_wrappers_.end()) {
    result(Failure(kNotRegistered));
    return Void();
  }
  wrapper = *found;
  const ndk::ScopedAStatus status = thermal_service_->unregisterThermalChangedCallback(wrapper);
  if (IsOk(status)) callback_wrappers_.erase(found);
  result(ToThermalStatus(status));
  return Void();
}

ThermalHidlWrapper::Wrappers::iterator ThermalHidlWrapper::Find(
    const ::android::sp<HidlCallback>& callback) {
  return std::find_if(
      callback_wrappers_.begin(), callback_wrappers_.end(), [&](const auto& wrapper) {
        return ::android::hardware::interfacesEqual(wrapper->callback_hidl(), callback);
      });
}

bool ThermalHidlWrapper::IsServiceAlive() const {
  return AIBinder_isAlive(thermal_service_->asBinder().get());
}

Return<void> ThermalHidlWrapper::debug(const hidl_handle& handle,
                                       const hidl_vec<hidl_string>& options) {
  const native_handle_t* const native = handle.getNativeHandle();
  if (native == nullptr || native->numFds <= 0) return Void();
  // Leaked on purpose: a local service may keep the pointers. A few bytes per dump.
  const char** const arguments = new const char*[options.size()];
  for (size_t i = 0; i < options.size(); ++i) arguments[i] = strdup(options[i].c_str());
  static_cast<void>(
      thermal_service_->dump(native->data[0], arguments, static_cast<uint32_t>(options.size())));
  return Void();
}

ThermalHidlWrapper::IThermalChangedCallbackWrapper::IThermalChangedCallbackWrapper(
    const ::android::sp<HidlCallback>& callback)
    : callback_hidl_(callback) {}

ndk::ScopedAStatus ThermalHidlWrapper::IThermalChangedCallbackWrapper::notifyThrottling(
    const Temperature& temperature) {
  const Return<void> forwarded = callback_hidl_->notifyThrottling(ToHidl(temperature));
  // Checked and dropped: a failed Return that was never checked ends the process.
  static_cast<void>(forwarded.isOk());
  return ndk::ScopedAStatus::ok();
}

}  // namespace aidl::android::hardware::thermal
