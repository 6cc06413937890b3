// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The phone that the program runs on, with whatever services it has.
#include "clients/device.h"

#include <android/binder_process.h>

#include "cli/command_table.h"

namespace norvik::qel::monitor {

namespace {

class Phone : public Device {
 public:
  // Sets no log level: the log is the platform's, and its reader filters it.
  void Start(const DeviceSetup& /*setup*/) override { ABinderProcess_startThreadPool(); }
};

}  // namespace

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "phone",
       .description = "the phone that this runs on",
       // NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is the seam's
       .make = [](DeviceObserver) -> std::unique_ptr<Device> { return std::make_unique<Phone>(); },
       .tells = false},
  };
  return kTypes;
}

std::span<const Command> SimulationCommands() {
  return {};
}

}  // namespace norvik::qel::monitor
