// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The device that the monitor looks at: the seam between the monitor and whatever brings the
// services up. Everything that knows a device in particular is behind it, in the device files.
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

// Called with what the device reports, on any thread, also after the device is gone.
using DeviceObserver = std::function<void(DeviceEvent)>;

struct DeviceSetup {
  bool verbose = false;
};

// A part of the device: what a value comes from, or what counts for none.
struct DevicePart {
  std::string name;         // the kernel's: "BAT0", "thermal_zone3"
  std::string kind;         // "battery", "AC charger"
  std::string value = {};   // as text for people; may be empty
  std::string item = {};    // the key of the value, such as "battery_level"; empty: of none
  std::string remark = {};  // its share in the value, or why it does not count; may be empty
};

// Something that happens to a device, so that there is something to see.
struct DeviceStep {
  std::chrono::milliseconds pause_before;
  std::function<void()> act;
};

// Threads: the main thread.
class Device {
 public:
  virtual ~Device() = default;

  // Makes the program a host for the library (binder threads, log) and brings the services up.
  // Once, before the library's first handle; the library's last handle goes before the device.
  virtual void Start(const DeviceSetup& setup) = 0;
  // What it goes through that one of its services reports: a loop that ends as it began. Empty for
  // a device that lives by itself. One with steps of the thermal service has the temperatures
  // SKIN:skin and BCL_CURRENT:AUDIO_current.
  virtual std::vector<DeviceStep> StepsOf(std::string_view /*service*/) { return {}; }
  // Starts the service that a step has stopped: without it the library's farewell would wait.
  virtual void EndSteps() {}
  // As of its last reading. Empty where the services tell nothing of what is behind them.
  virtual std::vector<DevicePart> Parts() { return {}; }
};

// What a service is told in advance: to turn down a call, so many times.
struct Refusal {
  std::string service;
  std::string call;
  std::string reason = "not ready yet";
  int times = 1;
};

// What a phone has that goes through what a recording tells.
struct Equipment {
  std::set<std::string> services;
  std::set<Sensor> sensors;
  std::vector<TemperatureReport> temperatures;  // with the values that they begin with
};

// No service runs on it before Play() starts one. The values of its battery are unknown until then.
class PlayedDevice : public Device {
 public:
  // What a device does, not what is done to it: a service starts or dies, something is reported or
  // noticed. Reports need no running service; one that starts later makes up for them.
  virtual void Play(const DeviceEvent& event) = 0;
  // Whether the service has such a call and can turn it down.
  virtual bool CanRefuse(const Refusal& refusal) = 0;
  // The service will do so.
  virtual void Refuse(const Refusal& refusal) = 0;
};

// Null in a build that has no such phone.
std::unique_ptr<PlayedDevice> MakePlayedDevice(const Equipment& equipment, DeviceObserver observer);

struct DeviceType {
  std::string_view name;
  std::string_view description;  // for the help
  std::unique_ptr<Device> (*make)(DeviceObserver observer);
  bool tells = true;  // it reports events to its observer
};

// What there is to choose from in this build. The first is the default.
std::span<const DeviceType> DeviceTypes();

}  // namespace norvik::qel::monitor
