// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <aidl/android/hardware/thermal/BnThermalChangedCallback.h>
#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/hardware/thermal/2.0/IThermal.h>
#include <android/hardware/thermal/2.0/IThermalChangedCallback.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/StrongPointer.h>

#include <memory>
#include <mutex>
#include <vector>

#include "common/thread_annotations.h"

namespace aidl::android::hardware::thermal {

// An adapter that shows an AIDL thermal service as HIDL thermal 2.0, so that the thermal logic is
// written once.
//
// Results are in the ThermalStatus that the result callbacks receive; the transport is always ok,
// and nothing is logged. Records are converted one by one, in order. Types that HIDL 2.0 does not
// have become TemperatureType::UNKNOWN or CoolingType::COMPONENT. The operations of HIDL 1.0 are
// refused.
//
// The service must not be null: the caller checks. (With a null service the operations of HIDL 2.0
// report the error and then dereference it. Those of HIDL 1.0 need no service.)
//
// Threads: any. Result callbacks run on the caller's thread, before the call returns.
// Locks: lock_ guards the list of callbacks. It is held during a registration or unregistration,
// including the call to the service and the result callback, which must not register or unregister
// with the same wrapper. Queries and reports take no lock.
class ThermalHidlWrapper : public ::android::hardware::thermal::V2_0::IThermal {
 public:
  template <typename T>
  using Return = ::android::hardware::Return<T>;
  using HidlCallback = ::android::hardware::thermal::V2_0::IThermalChangedCallback;
  using HidlTemperatureType = ::android::hardware::thermal::V2_0::TemperatureType;
  using HidlCoolingType = ::android::hardware::thermal::V2_0::CoolingType;

  // In this class the bare name IThermal is the HIDL base.
  explicit ThermalHidlWrapper(
      const std::shared_ptr<::aidl::android::hardware::thermal::IThermal>& thermal_service);
  // Registered callbacks stay registered and continue to receive reports: the service holds them.
  ~ThermalHidlWrapper() override;
  ThermalHidlWrapper(const ThermalHidlWrapper&) = delete;
  ThermalHidlWrapper& operator=(const ThermalHidlWrapper&) = delete;

  Return<void> getTemperatures(getTemperatures_cb callback) override;
  Return<void> getCpuUsages(getCpuUsages_cb callback) override;
  Return<void> getCoolingDevices(getCoolingDevices_cb callback) override;

  Return<void> getCurrentTemperatures(bool filter_type, HidlTemperatureType type,
                                      getCurrentTemperatures_cb callback) override;
  Return<void> getTemperatureThresholds(bool filter_type, HidlTemperatureType type,
                                        getTemperatureThresholds_cb callback) override;
  Return<void> registerThermalChangedCallback(const ::android::sp<HidlCallback>& callback,
                                              bool filter_type, HidlTemperatureType type,
                                              registerThermalChangedCallback_cb result) override
      QEL_EXCLUDES(lock_);
  Return<void> unregisterThermalChangedCallback(const ::android::sp<HidlCallback>& callback,
                                                unregisterThermalChangedCallback_cb result) override
      QEL_EXCLUDES(lock_);
  Return<void> getCurrentCoolingDevices(bool filter_type, HidlCoolingType type,
                                        getCurrentCoolingDevices_cb callback) override;

  // Whether the service's process is alive, as far as this process knows. False by the time a death
  // notification runs.
  bool IsServiceAlive() const;

  // Asks the service to write its dump to the first descriptor of `handle`.
  Return<void> debug(
      const ::android::hardware::hidl_handle& handle,
      const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& options) override;

  class IThermalChangedCallbackWrapper;

 private:
  using Wrappers = std::vector<std::shared_ptr<IThermalChangedCallbackWrapper>>;

  // The entry for `callback`, or the end.
  Wrappers::iterator Find(const ::android::sp<HidlCallback>& callback) QEL_REQUIRES(lock_);

  // Members are released in reverse order.
  const std::shared_ptr<::aidl::android::hardware::thermal::IThermal> thermal_service_;
  std::mutex lock_;
  // In the order of registration, one for each HIDL callback.
  Wrappers callback_wrappers_ QEL_GUARDED_BY(lock_);
};

// A HIDL callback as the AIDL service knows it. The wrapper and the service share its ownership.
//
// Threads: reports arrive on the process's binder threads.
class ThermalHidlWrapper::IThermalChangedCallbackWrapper : public BnThermalChangedCallback {
 public:
  explicit IThermalChangedCallbackWrapper(const ::android::sp<HidlCallback>& callback);

  // Always ok: a failure of the HIDL callback does not concern the service.
  ndk::ScopedAStatus notifyThrottling(const Temperature& temperature) override;

  const ::android::sp<HidlCallback>& callback_hidl() const { return callback_hidl_; }

 private:
  const ::android::sp<HidlCallback> callback_hidl_;
};

}  // namespace aidl::android::hardware::thermal
