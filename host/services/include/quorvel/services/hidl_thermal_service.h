// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A HIDL 2.0 thermal service as a device maker would write it. The caller provides the data.
#pragma once

#include <android/hardware/thermal/2.0/IThermal.h>

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/callback_list.h"
#include "quorvel/services/service_event.h"
#include "quorvel/services/thermal_data.h"

namespace norvik::qel::services {

enum class HidlThermalOperation {
  kGetTemperatures,
  kGetCpuUsages,
  kGetCoolingDevices,
  kGetCurrentTemperatures,
  kGetTemperatureThresholds,
  kRegisterThermalChangedCallback,
  kUnregisterThermalChangedCallback,
  kGetCurrentCoolingDevices,
  kCount,
};

std::string_view HidlThermalOperationName(HidlThermalOperation operation);

inline constexpr char kHidlThermalInstance[] = "android.hardware.thermal@2.0::IThermal/default";

// Like ThermalService, but a refusal is a status FAILURE with a message.
//
// Threads, locks: see ThermalService.
class HidlThermalService : public android::hardware::thermal::V2_0::IThermal {
 public:
  template <typename T>
  using Return = android::hardware::Return<T>;
  using ThermalStatus = android::hardware::thermal::V1_0::ThermalStatus;
  using TemperatureType = android::hardware::thermal::V2_0::TemperatureType;
  using CoolingType = android::hardware::thermal::V2_0::CoolingType;
  using Callback = android::sp<android::hardware::thermal::V2_0::IThermalChangedCallback>;

  explicit HidlThermalService(ThermalData data, ServiceObserver observer = nullptr);

  // Replaces the data. Notifies the callbacks of changed severities, and of throttling temperatures
  // that have been removed.
  void Report(const ThermalData& data) QUORVEL_EXCLUDES(lock_);
  // Notifies the callbacks without changing the data.
  void Notify(const aidl::android::hardware::thermal::Temperature& temperature)
      QUORVEL_EXCLUDES(lock_);
  ThermalData data() const QUORVEL_EXCLUDES(lock_);
  size_t callback_count() const QUORVEL_EXCLUDES(lock_);

  Return<void> getTemperatures(getTemperatures_cb _hidl_cb) override;
  Return<void> getCpuUsages(getCpuUsages_cb _hidl_cb) override;
  Return<void> getCoolingDevices(getCoolingDevices_cb _hidl_cb) override;
  Return<void> getCurrentTemperatures(bool filterType, TemperatureType type,
                                      getCurrentTemperatures_cb _hidl_cb) override;
  Return<void> getTemperatureThresholds(bool filterType, TemperatureType type,
                                        getTemperatureThresholds_cb _hidl_cb) override;
  Return<void> registerThermalChangedCallback(const Callback& callback, bool filterType,
                                              TemperatureType type,
                                              registerThermalChangedCallback_cb _hidl_cb) override;
  Return<void> unregisterThermalChangedCallback(
      const Callback& callback, unregisterThermalChangedCallback_cb _hidl_cb) override;
  Return<void> getCurrentCoolingDevices(bool filterType, CoolingType type,
                                        getCurrentCoolingDevices_cb _hidl_cb) override;

 protected:
  // The decision on a call: it fails with a transport error or a status, or does its normal work.
  struct Verdict {
    android::hardware::Status transport = {};
    ThermalStatus status = {.code = android::hardware::thermal::V1_0::ThermalStatusCode::SUCCESS,
                            .debugMessage = {}};
    bool works() const {
      return transport.isOk() &&
             status.code == android::hardware::thermal::V1_0::ThermalStatusCode::SUCCESS;
    }
    static Verdict Failure(const std::string& message);
  };
  // Called at the start of every call. May block.
  virtual Verdict Permit(HidlThermalOperation operation);

 private:
  // Calls Permit() and reports a refusal to the observer.
  Verdict Ask(HidlThermalOperation operation);
  void TellRefusal(HidlThermalOperation operation, const std::string& reason) const;
  // `read` returns the elements of the answer.
  template <typename Handler, typename Read>
  Return<void> Answer(HidlThermalOperation operation, const Handler& _hidl_cb, Read read);
  // `change` returns the error message of the call, or null if it succeeds.
  template <typename Handler, typename Change>
  Return<void> Perform(HidlThermalOperation operation, ServiceEvent::Kind kind,
                       const Handler& _hidl_cb, Change change);
  void SendLocked(const aidl::android::hardware::thermal::Temperature& temperature)
      QUORVEL_REQUIRES(lock_);
  void Tell(ServiceEvent::Kind kind, std::string detail = {}) const;
  void TellReport(services::Report report) const;

  const ServiceObserver observer_;
  mutable std::mutex lock_;
  ThermalData data_ QUORVEL_GUARDED_BY(lock_);
  CallbackList<Callback, TemperatureType> callbacks_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::services
