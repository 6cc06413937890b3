// A HIDL thermal service, version 2.0, as a device maker would write it, over whatever knows the
// temperatures.
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

// As ThermalService, in the terms of HIDL: a refusal is a status FAILURE with a message.
//
// Threads, locks: as ThermalService.
class HidlThermalService : public android::hardware::thermal::V2_0::IThermal {
 public:
  template <typename T>
  using Return = android::hardware::Return<T>;
  using ThermalStatus = android::hardware::thermal::V1_0::ThermalStatus;
  using TemperatureType = android::hardware::thermal::V2_0::TemperatureType;
  using CoolingType = android::hardware::thermal::V2_0::CoolingType;
  using Callback = android::sp<android::hardware::thermal::V2_0::IThermalChangedCallback>;

  explicit HidlThermalService(ThermalData data, ServiceObserver observer = nullptr);

  // Replaces the data and tells the callbacks of the changes, and of what throttled and has gone.
  void Report(const ThermalData& data) QUORVEL_EXCLUDES(lock_);
  // Tells the callbacks without a change of the data.
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
  // What becomes of a call: a transport that fails, or a status; its own work only with neither.
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
  // Asked before a call does anything. May block.
  virtual Verdict Permit(HidlThermalOperation operation);

 private:
  // Permit(), and the observer hears of a refusal.
  Verdict Ask(HidlThermalOperation operation);
  void TellRefusal(HidlThermalOperation operation, const std::string& reason) const;
  // `read` gives the elements of the answer.
  template <typename Handler, typename Read>
  Return<void> Answer(HidlThermalOperation operation, const Handler& _hidl_cb, Read read);
  // `change` gives what the call fails with; null when it does not.
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
