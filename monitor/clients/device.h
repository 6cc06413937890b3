// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The device that the monitor observes: the interface between the monitor and the code that starts
// the services. All device-specific code is behind it, in monitor/host/ and monitor/phone/.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "clients/event.h"

namespace norvik::qel::monitor {

// Receives the events of a device, on any thread, perhaps after the device is destroyed.
using DeviceObserver = std::function<void(DeviceEvent)>;

struct DeviceSetup {
  bool verbose = false;
};

// The remark of a part whose value is missing.
inline constexpr char kCannotBeRead[] = "cannot be read";

// A part of the device: the source of a value, or a part that contributes to none.
struct DevicePart {
  std::string name;         // the kernel's: "BAT0", "thermal_zone3"
  std::string kind;         // "battery", "AC charger"
  std::string value = {};   // as text for people; may be empty
  std::string item = {};    // the value that it is a source of: "battery_level"; empty: none
  std::string remark = {};  // its share of the value, or why it is ignored; may be empty
};

// One scripted change of a device, for a demonstration.
struct DeviceStep {
  std::chrono::milliseconds pause_before;
  std::function<void()> act;
};

// Threads: the main thread.
class Device {
 public:
  virtual ~Device() = default;

  // Prepares the process for the library (binder threads, log) and starts the services. Call it
  // once, before the library's first handle is made. The device outlives the library's last handle.
  virtual void Start(const DeviceSetup& setup) = 0;
  // The scripted changes that `service` reports, as a loop that ends in its initial state. Empty
  // for a device without a script. A device with thermal steps has the temperatures SKIN:skin and
  // BCL_CURRENT:AUDIO_current.
  virtual std::vector<DeviceStep> StepsOf(std::string_view /*service*/) { return {}; }
  // Restarts a service that a step has stopped: the library's teardown would wait for it.
  virtual void EndSteps() {}
  // The parts as last read. Empty if the services do not describe their hardware.
  virtual std::vector<DevicePart> Parts() { return {}; }
};

// A scripted fault: the service refuses the next `times` calls of this kind.
struct Refusal {
  std::string service;
  std::string call;
  std::string reason = "not ready yet";
  int times = 1;
};

// The services, sensors and temperatures of a phone that plays a recording.
struct Equipment {
  std::set<std::string> services;
  std::set<Sensor> sensors;
  std::vector<TemperatureReport> temperatures;  // with their initial values
};

// A phone that plays device events. No service runs until Play() starts it. The battery level and
// the cycle count are unknown until Play() reports them.
class PlayedDevice : public Device {
 public:
  // Applies an event that originates in the device: a service starts or dies, a report, a notice.
  // Ignores those that the library's calls cause. A report needs no running service: a service that
  // starts later has its values.
  virtual void Play(const DeviceEvent& event) = 0;
  // The calls that the service can refuse.
  virtual std::vector<std::string_view> CallsOf(std::string_view service) = 0;
  // Scripts the refusals.
  virtual void Refuse(const Refusal& refusal) = 0;
};

// Null in a build without a simulated phone.
std::unique_ptr<PlayedDevice> MakePlayedDevice(const Equipment& equipment, DeviceObserver observer);

struct DeviceType {
  std::string_view name;
  std::string_view description;  // for the help
  std::unique_ptr<Device> (*make)(DeviceObserver observer);
  bool tells = true;  // it reports events to its observer
};

// The device types of this build. The first is the default.
std::span<const DeviceType> DeviceTypes();

}  // namespace norvik::qel::monitor
