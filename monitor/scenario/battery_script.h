// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a phone's battery goes through.
#pragma once

#include "clients/device.h"
#include "scenario/device_script.h"

namespace norvik::qel::monitor {

class BatteryScript : public DeviceScript {
 public:
  explicit BatteryScript(BatteryDriver& driver);
  // Leaves the service running: without it the library's farewell would wait for it.
  ~BatteryScript() override;

 private:
  BatteryDriver& driver_;
};

}  // namespace norvik::qel::monitor
