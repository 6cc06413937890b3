// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The local and remote sides of the HIDL thermal interfaces.
#include <android/hardware/thermal/1.0/IThermal.h>
#include <android/hardware/thermal/2.0/IThermal.h>
#include <android/hardware/thermal/2.0/IThermalChangedCallback.h>

#include "hidl_call.h"
#include "hidl_lookup.h"

namespace norvik::qel::fake {

namespace {

namespace V1_0 = ::android::hardware::thermal::V1_0;
namespace V2_0 = ::android::hardware::thermal::V2_0;
using ::android::sp;
using ::android::hardware::Return;

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

class ThermalProxy : public ThermalProxyOf<V2_0::IThermal> {
 public:
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

class ThermalChangedCallbackProxy : public HidlProxyOf<V2_0::IThermalChangedCallback> {
 public:
  using HidlProxyOf::HidlProxyOf;

  HidlProxyOf::Return<void> notifyThrottling(const V2_0::Temperature& temperature) override {
    return SendHidl(binder(), &V2_0::IThermalChangedCallback::notifyThrottling, temperature);
  }
};

}  // namespace

template <>
struct RemoteSide<V1_0::IThermal> {
  using Type = ThermalProxyOf<V1_0::IThermal>;
};
template <>
struct RemoteSide<V2_0::IThermal> {
  using Type = ThermalProxy;
};
template <>
struct RemoteSide<V2_0::IThermalChangedCallback> {
  using Type = ThermalChangedCallbackProxy;
};

}  // namespace norvik::qel::fake

namespace android::hardware::thermal {

namespace fake = ::norvik::qel::fake;
using ::android::hidl::base::V1_0::IBase;

const char* V1_0::IThermal::descriptor = "android.hardware.thermal@1.0::IThermal";

Return<void> V1_0::IThermal::interfaceChain(interfaceChain_cb _hidl_cb) {
  _hidl_cb({descriptor, IBase::descriptor});
  return Void();
}

Return<void> V1_0::IThermal::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {
  _hidl_cb(descriptor);
  return Void();
}

Return<sp<V1_0::IThermal>> V1_0::IThermal::castFrom(const sp<V1_0::IThermal>& parent,
                                                    bool /*emitError*/) {
  return parent;
}

Return<sp<V1_0::IThermal>> V1_0::IThermal::castFrom(const sp<IBase>& parent, bool emitError) {
  return fake::CastFrom<V1_0::IThermal>(parent, emitError);
}

sp<V1_0::IThermal> V1_0::IThermal::tryGetService(const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<V1_0::IThermal>(fake::TryGetHidl(descriptor, serviceName, getStub));
}

sp<V1_0::IThermal> V1_0::IThermal::getService(const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<V1_0::IThermal>(fake::GetHidl(descriptor, serviceName, getStub));
}

status_t V1_0::IThermal::registerAsService(const std::string& serviceName) {
  return fake::AddHidl(this, serviceName);
}

const char* V2_0::IThermal::descriptor = "android.hardware.thermal@2.0::IThermal";

Return<void> V2_0::IThermal::interfaceChain(interfaceChain_cb _hidl_cb) {
  _hidl_cb({descriptor, V1_0::IThermal::descriptor, IBase::descriptor});
  return Void();
}

Return<void> V2_0::IThermal::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {
  _hidl_cb(descriptor);
  return Void();
}

Return<sp<V2_0::IThermal>> V2_0::IThermal::castFrom(const sp<V2_0::IThermal>& parent,
                                                    bool /*emitError*/) {
  return parent;
}

Return<sp<V2_0::IThermal>> V2_0::IThermal::castFrom(const sp<V1_0::IThermal>& parent,
                                                    bool emitError) {
  return fake::CastFrom<V2_0::IThermal>(parent, emitError);
}

Return<sp<V2_0::IThermal>> V2_0::IThermal::castFrom(const sp<IBase>& parent, bool emitError) {
  return fake::CastFrom<V2_0::IThermal>(parent, emitError);
}

sp<V2_0::IThermal> V2_0::IThermal::tryGetService(const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<V2_0::IThermal>(fake::TryGetHidl(descriptor, serviceName, getStub));
}

sp<V2_0::IThermal> V2_0::IThermal::getService(const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<V2_0::IThermal>(fake::GetHidl(descriptor, serviceName, getStub));
}

status_t V2_0::IThermal::registerAsService(const std::string& serviceName) {
  return fake::AddHidl(this, serviceName);
}

const char* V2_0::IThermalChangedCallback::descriptor =
    "android.hardware.thermal@2.0::IThermalChangedCallback";

Return<void> V2_0::IThermalChangedCallback::interfaceChain(interfaceChain_cb _hidl_cb) {
  _hidl_cb({descriptor, IBase::descriptor});
  return Void();
}

Return<void> V2_0::IThermalChangedCallback::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {
  _hidl_cb(descriptor);
  return Void();
}

Return<sp<V2_0::IThermalChangedCallback>> V2_0::IThermalChangedCallback::castFrom(
    const sp<V2_0::IThermalChangedCallback>& parent, bool /*emitError*/) {
  return parent;
}

Return<sp<V2_0::IThermalChangedCallback>> V2_0::IThermalChangedCallback::castFrom(
    const sp<IBase>& parent, bool emitError) {
  return fake::CastFrom<V2_0::IThermalChangedCallback>(parent, emitError);
}

sp<V2_0::IThermalChangedCallback> V2_0::IThermalChangedCallback::tryGetService(
    const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<V2_0::IThermalChangedCallback>(
      fake::TryGetHidl(descriptor, serviceName, getStub));
}

sp<V2_0::IThermalChangedCallback> V2_0::IThermalChangedCallback::getService(
    const std::string& serviceName, bool getStub) {
  return fake::FromHidlBinder<V2_0::IThermalChangedCallback>(
      fake::GetHidl(descriptor, serviceName, getStub));
}

status_t V2_0::IThermalChangedCallback::registerAsService(const std::string& serviceName) {
  return fake::AddHidl(this, serviceName);
}

}  // namespace android::hardware::thermal
