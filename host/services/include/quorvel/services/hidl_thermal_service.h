// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A HIDL 2.0 thermal service as a device maker would write it. The caller provides the data.
#pragma once

#include <android/hardware/thermal/2.0/IThermal.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

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
// Threads, locks: see ThermalReporter.
class HidlThermalService : public android::hardware::thermal::V2_0::IThermal,
                           public ThermalReporter {
 public:
  template <typename T>
  using Return = android::hardware::Return<T>;
  using ThermalStatus = android::hardware::thermal::V1_0::ThermalStatus;
  using TemperatureType = android::hardware::thermal::V2_0::TemperatureType;
  using CoolingType = android::hardware::thermal::V2_0::CoolingType;
  using Callback = android::sp<android::hardware::thermal::V2_0::IThermalChangedCallback>;

  explicit HidlThermalService(ThermalData data, ServiceObserver observer = nullptr)
      : ThermalReporter("thermal (HIDL)", std::move(data), std::move(observer)) {}

  size_t callback_count() const { return callbacks_.size(); }

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
  // `read` returns the elements of the answer.
  template <typename Handler, typename Read>
  Return<void> Answer(HidlThermalOperation operation, const Handler& _hidl_cb, Read read);
  // `change` returns the error message of the call, or null if it succeeds.
  template <typename Handler, typename Change>
  Return<void> Perform(HidlThermalOperation operation, ServiceEvent::Kind kind,
                       const Handler& _hidl_cb, Change change);
  void Send(const aidl::android::hardware::thermal::Temperature& temperature) override;
  // The interface has no callbacks for cooling devices.
  void Send(const aidl::android::hardware::thermal::CoolingDevice& /*device*/) override {}

  CallbackList<Callback, TemperatureType> callbacks_;
};

}  // namespace norvik::qel::services
