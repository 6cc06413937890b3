// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <string>
#include <utility>

#include "host/host.h"
#include "quorvel/linux_machine/health.h"
#include "quorvel/linux_machine/sensors.h"
#include "quorvel/linux_machine/thermal.h"

namespace norvik::qel::monitor {

namespace {

// A machine keeps its names, so the user names the file once and not at every command.
std::string TypesFile() {
  const char* const file = std::getenv("QUORVEL_THERMAL_TYPES");
  return file != nullptr ? file : "";
}

class LinuxDevice : public Device {
 public:
  explicit LinuxDevice(DeviceObserver observer)
      : health_(ToServiceObserver(observer)),
        thermal_(ToServiceObserver(observer), {.types_file = TypesFile()}),
        sensors_(ToServiceObserver(std::move(observer))) {}
  ~LinuxDevice() override {
    sensors_.Stop();
    thermal_.Stop();
    health_.Stop();
  }

  void Start(const DeviceSetup& setup) override {
    BecomeHostProcess(setup);
    health_.Start();
    thermal_.Start();
    sensors_.Start();
  }

 private:
  linux_machine::Health health_;
  linux_machine::Thermal thermal_;
  linux_machine::Sensors sensors_;
};

}  // namespace

std::unique_ptr<Device> MakeLinuxDevice(DeviceObserver observer) {
  return std::make_unique<LinuxDevice>(std::move(observer));
}

}  // namespace norvik::qel::monitor
