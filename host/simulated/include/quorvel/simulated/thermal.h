// The simulated phone's temperatures and its two thermal services, under remote control.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "quorvel/fake/script.h"
#include "quorvel/services/hidl_thermal_service.h"
#include "quorvel/services/service_event.h"
#include "quorvel/services/thermal_data.h"
#include "quorvel/services/thermal_service.h"

namespace norvik::qel::simulated {

// The two services that a phone can have. Phones of today have the first, old ones the second;
// either is declared, started, killed and scripted for itself.
enum class ThermalPath { kAidl, kHidl };

// The temperatures, the thresholds, the cooling devices, the scripts and the call counts belong to
// the phone: they outlive the services, which can die and come back, and both services give the
// same account of them. What HIDL has no type for comes as UNKNOWN there.
//
// Threads: any, but one at a time starts and kills the service of a path.
class Thermal {
 public:
  using ThermalData = services::ThermalData;
  using Temperature = aidl::android::hardware::thermal::Temperature;
  using ThrottlingSeverity = aidl::android::hardware::thermal::ThrottlingSeverity;

  // Declares the AIDL service; none runs yet. All is cool: cpu 40 degrees, skin, battery, usb_port
  // and speaker 30, battery_voltage 3900 mV, battery_current 500 mA, battery_level 50 percent,
  // AUDIO_voltage and AUDIO_current as those of the battery; a cooling device each for cpu, battery
  // and speaker, at 0.
  explicit Thermal(services::ServiceObserver observer = nullptr);
  // Kills the services and takes their declarations back.
  ~Thermal();
  Thermal(const Thermal&) = delete;
  Thermal& operator=(const Thermal&) = delete;

  void Declare(ThermalPath path);
  void Undeclare(ThermalPath path);

  // A new process with a new service under the old name. Kills the one that runs, if any.
  void Start(ThermalPath path);
  void Kill(ThermalPath path);

  // Changes the state; running services report changes of severity and of cooling devices.
  void Change(const std::function<void(ThermalData&)>& change);
  void SetTemperature(const std::string& name, float value);
  void SetSeverity(const std::string& name, ThrottlingSeverity severity);
  void SetCooling(const std::string& name, int64_t value);
  // Makes the running services notify this temperature, whatever the state says.
  void Notify(const Temperature& temperature);
  ThermalData data() const;

  // How many callbacks for temperatures the running service holds; 0 while none runs.
  size_t callback_count(ThermalPath path) const;
  // The same of those for cooling devices, which only the AIDL service has.
  size_t cooling_callback_count() const;

  // What the next calls of an operation do, and how often it has been called. For HIDL an outcome
  // with an exception is a status FAILURE with the outcome's message, and any other status is a
  // transport that fails.
  fake::Script& on(services::ThermalOperation operation);
  fake::Script& on(services::HidlThermalOperation operation);

 private:
  class AidlService;
  class HidlService;
  struct Phone;

  void StartAidl();
  void StartHidl();
  // Whether one was running.
  [[nodiscard]] bool KillAidl();
  [[nodiscard]] bool KillHidl();
  void Tell(services::ServiceEvent::Kind kind, ThermalPath path) const;

  const services::ServiceObserver observer_;
  const std::shared_ptr<Phone> phone_;
};

}  // namespace norvik::qel::simulated
