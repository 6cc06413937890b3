// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The temperatures of the simulated phone and its two thermal services, controlled by tests.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "quorvel/fake/platform_scripts.h"
#include "quorvel/services/hidl_thermal_service.h"
#include "quorvel/services/service_event.h"
#include "quorvel/services/thermal_data.h"
#include "quorvel/services/thermal_service.h"

namespace norvik::qel::simulated {

// The two services that a phone can have: new phones have AIDL, old ones HIDL. Each is declared,
// started, killed and scripted separately.
enum class ThermalPath { kAidl, kHidl };

// The temperatures, thresholds, cooling devices, scripts and call counts belong to the phone. They
// outlive the services, which can be killed and restarted. Both services report the same data; HIDL
// reports types that it does not have as UNKNOWN.
//
// Threads: any. Start() and Kill() of the same path must not run concurrently.
class Thermal {
 public:
  using ThermalData = services::ThermalData;
  using Temperature = aidl::android::hardware::thermal::Temperature;
  using ThrottlingSeverity = aidl::android::hardware::thermal::ThrottlingSeverity;

  // Declares the AIDL service; no service is running. The initial state, without throttling:
  //   cpu                                40 degrees
  //   skin, battery, usb_port, speaker   30 degrees
  //   battery_voltage, AUDIO_voltage     3900 mV
  //   battery_current, AUDIO_current     500 mA
  //   battery_level                      50 percent
  //   cooling devices                    cpu, battery, speaker: 0
  explicit Thermal(services::ServiceObserver observer = nullptr);
  // Kills the services and removes their declarations.
  ~Thermal();
  Thermal(const Thermal&) = delete;
  Thermal& operator=(const Thermal&) = delete;

  void Declare(ThermalPath path);
  void Undeclare(ThermalPath path);

  // Starts a new process with a new service under the same name. Kills a running one first.
  void Start(ThermalPath path);
  void Kill(ThermalPath path);

  // Changes the state. Running services report changed severities and cooling devices.
  void Change(const std::function<void(ThermalData&)>& change);
  // An unknown name throws std::invalid_argument with the known ones.
  //
  // SetTemperature() leaves the severity as it is, also above a threshold: how services derive
  // one from the other differs from phone to phone. Some consider several sensors, a hysteresis or
  // a time. Call SetSeverity(), too.
  void SetTemperature(const std::string& name, float value);
  void SetSeverity(const std::string& name, ThrottlingSeverity severity);
  void SetCooling(const std::string& name, int64_t value);
  // Makes the running services notify this temperature, independent of the state.
  void Notify(const Temperature& temperature);
  ThermalData data() const;

  // The number of temperature callbacks registered with the running service. 0 if it is not
  // running.
  size_t callback_count(ThermalPath path) const;
  // The same for cooling-device callbacks, which only the AIDL service has.
  size_t cooling_callback_count() const;

  // The script of an operation: outcomes of the next calls, count of calls. For HIDL, an exception
  // becomes a status FAILURE with the outcome's message; a status other than STATUS_OK becomes a
  // transport error.
  fake::Script& on(services::ThermalOperation operation);
  fake::Script& on(services::HidlThermalOperation operation);
  // The same for a function of the platform. The whole phone shares these scripts.
  fake::Script& on(fake::BinderFunction function) { return platform_scripts_.on(function); }

 private:
  class AidlService;
  class HidlService;
  struct Phone;

  const services::EventSender& events(ThermalPath path) const {
    return path == ThermalPath::kAidl ? aidl_events_ : hidl_events_;
  }

  const services::EventSender aidl_events_;
  const services::EventSender hidl_events_;
  const fake::PlatformScripts platform_scripts_;
  const std::shared_ptr<Phone> phone_;
};

}  // namespace norvik::qel::simulated
