// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a folding phone's sensors go through.
#pragma once

#include "clients/device.h"
#include "scenario/device_script.h"

namespace norvik::qel::monitor {

class SensorScript : public DeviceScript {
 public:
  explicit SensorScript(SensorDriver& driver);
};

}  // namespace norvik::qel::monitor
