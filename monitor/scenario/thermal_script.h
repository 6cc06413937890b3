// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a phone's temperatures go through.
#pragma once

#include "clients/device.h"
#include "scenario/device_script.h"

namespace norvik::qel::monitor {

class ThermalScript : public DeviceScript {
 public:
  explicit ThermalScript(ThermalDriver& driver);
};

}  // namespace norvik::qel::monitor
