// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thermal state of a device, in the types of the AIDL interface, which has the most.
#pragma once

#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>
#include <android/hardware/thermal/2.0/types.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::services {

struct ThermalData {
  std::vector<aidl::android::hardware::thermal::Temperature> temperatures = {};
  std::vector<aidl::android::hardware::thermal::TemperatureThreshold> thresholds = {};
  std::vector<aidl::android::hardware::thermal::CoolingDevice> cooling_devices = {};
};

// What a service does with a change of its data.
struct ThermalChanges {
  // For the observer: the temperatures that are new or have changed in any way, and those removed.
  std::vector<Report> reports = {};
  // For the callbacks: the temperatures whose severity has changed. A new one counts as NONE
  // before; one that was throttling and has been removed is NONE, with the value NaN.
  std::vector<aidl::android::hardware::thermal::Temperature> severities = {};
  // The cooling devices that are new or have changed.
  std::vector<aidl::android::hardware::thermal::CoolingDevice> cooling_devices = {};
};
ThermalChanges Compare(const ThermalData& before, const ThermalData& now);

// The data of a thermal service, which the derived class sends to its callbacks.
//
// Threads: any. Locks: lock_ is held while a report is sent, so that every callback receives the
// reports in order. This cannot deadlock: callbacks belong to other processes, so sending does not
// wait for the receiver, and no last reference is released under lock_. (A callback of the same
// process is called directly and must not call the service.)
class ThermalReporter {
 public:
  // Replaces the data. Notifies the callbacks of changed severities and cooling devices, and of
  // throttling temperatures that have been removed.
  void Report(const ThermalData& data) QUORVEL_EXCLUDES(lock_);
  // Notifies the callbacks without changing the data.
  void Notify(const aidl::android::hardware::thermal::Temperature& temperature)
      QUORVEL_EXCLUDES(lock_);
  ThermalData data() const QUORVEL_EXCLUDES(lock_);

 protected:
  ThermalReporter(std::string service, ThermalData data, ServiceObserver observer)
      : events_(std::move(service), std::move(observer)), data_(std::move(data)) {}
  ~ThermalReporter() = default;

  // One-way calls: they fail only if the receiver's process has died, which needs no action.
  virtual void Send(const aidl::android::hardware::thermal::Temperature& temperature) = 0;
  virtual void Send(const aidl::android::hardware::thermal::CoolingDevice& device) = 0;

  const EventSender events_;

 private:
  mutable std::mutex lock_;
  ThermalData data_ QUORVEL_GUARDED_BY(lock_);
};

// Conversions to HIDL 2.0. A type that HIDL does not have becomes UNKNOWN, or COMPONENT for a
// cooling device. A missing threshold becomes NaN.
android::hardware::thermal::V2_0::TemperatureType ToHidl(
    aidl::android::hardware::thermal::TemperatureType type);
android::hardware::thermal::V2_0::Temperature ToHidl(
    const aidl::android::hardware::thermal::Temperature& temperature);
android::hardware::thermal::V2_0::TemperatureThreshold ToHidl(
    const aidl::android::hardware::thermal::TemperatureThreshold& threshold);
android::hardware::thermal::V2_0::CoolingDevice ToHidl(
    const aidl::android::hardware::thermal::CoolingDevice& device);

}  // namespace norvik::qel::services
