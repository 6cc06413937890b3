// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The proxies of the HIDL thermal interfaces.
#include <android/hardware/thermal/1.0/IThermal.h>
#include <android/hardware/thermal/2.0/IThermal.h>
#include <android/hardware/thermal/2.0/IThermalChangedCallback.h>

#include "hidl_call.h"

namespace android::hardware::thermal {

using norvik::qel::fake::CallHidl;
using norvik::qel::fake::HidlProxyOf;
using norvik::qel::fake::SendHidl;

// I is V1_0::IThermal or derived from it.
template <typename I>
class ThermalProxyOf : public HidlProxyOf<I> {
 public:
  using HidlProxyOf<I>::HidlProxyOf;
  using HidlProxyOf<I>::binder;

  Return<void> getTemperatures(V1_0::IThermal::getTemperatures_cb _hidl_cb) override {
    return CallHidl(binder(), &V1_0::IThermal::getTemperatures, _hidl_cb);
  }
  Return<void> getCpuUsages(V1_0::IThermal::getCpuUsages_cb _hidl_cb) override {
    return CallHidl(binder(), &V1_0::IThermal::getCpuUsages, _hidl_cb);
  }
  Return<void> getCoolingDevices(V1_0::IThermal::getCoolingDevices_cb _hidl_cb) override {
    return CallHidl(binder(), &V1_0::IThermal::getCoolingDevices, _hidl_cb);
  }
};

struct V1_0::BpHwThermal : public ThermalProxyOf<V1_0::IThermal> {
  using ThermalProxyOf::ThermalProxyOf;
};

struct V2_0::BpHwThermal : public ThermalProxyOf<V2_0::IThermal> {
  using ThermalProxyOf::ThermalProxyOf;

  Return<void> getCurrentTemperatures(bool filterType, V2_0::TemperatureType type,
                                      getCurrentTemperatures_cb _hidl_cb) override {
    return CallHidl(binder(), &V2_0::IThermal::getCurrentTemperatures, filterType, type, _hidl_cb);
  }
  Return<void> getTemperatureThresholds(bool filterType, V2_0::TemperatureType type,
                                        getTemperatureThresholds_cb _hidl_cb) override {
    return CallHidl(binder(), &V2_0::IThermal::getTemperatureThresholds, filterType, type,
                    _hidl_cb);
  }
  Return<void> registerThermalChangedCallback(const sp<V2_0::IThermalChangedCallback>& callback,
                                              bool filterType, V2_0::TemperatureType type,
                                              registerThermalChangedCallback_cb _hidl_cb) override {
    return CallHidl(binder(), &V2_0::IThermal::registerThermalChangedCallback, callback, filterType,
                    type, _hidl_cb);
  }
  Return<void> unregisterThermalChangedCallback(
      const sp<V2_0::IThermalChangedCallback>& callback,
      unregisterThermalChangedCallback_cb _hidl_cb) override {
    return CallHidl(binder(), &V2_0::IThermal::unregisterThermalChangedCallback, callback,
                    _hidl_cb);
  }
  Return<void> getCurrentCoolingDevices(bool filterType, V2_0::CoolingType type,
                                        getCurrentCoolingDevices_cb _hidl_cb) override {
    return CallHidl(binder(), &V2_0::IThermal::getCurrentCoolingDevices, filterType, type,
                    _hidl_cb);
  }
};

struct V2_0::BpHwThermalChangedCallback : public HidlProxyOf<V2_0::IThermalChangedCallback> {
  using HidlProxyOf::HidlProxyOf;

  Return<void> notifyThrottling(const V2_0::Temperature& temperature) override {
    return SendHidl(binder(), &V2_0::IThermalChangedCallback::notifyThrottling, temperature);
  }
};

}  // namespace android::hardware::thermal

namespace android::hardware::details {

using IBase = ::android::hidl::base::V1_0::IBase;
template struct Generated<thermal::V1_0::IThermal, IBase, thermal::V1_0::BpHwThermal>;
template struct Generated<thermal::V2_0::IThermal, thermal::V1_0::IThermal,
                          thermal::V2_0::BpHwThermal>;
template struct Generated<thermal::V2_0::IThermalChangedCallback, IBase,
                          thermal::V2_0::BpHwThermalChangedCallback>;

}  // namespace android::hardware::details
