// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The sensor family of the library, as a table.
#pragma once

#include <array>

#include "clients/value.h"
#include "quorvel.h"

namespace norvik::qel::monitor {

struct SensorProperty : Property {
  int (*register_callback)(void* handle, int id, SensorCallbackFunc callback, void* cookie);
  int (*deregister_callback)(void* handle, int id);
};

extern const SensorProperty kProximity;
extern const SensorProperty kHingeAngle;

inline constexpr std::array kSensorProperties = {&kProximity, &kHingeAngle};

}  // namespace norvik::qel::monitor
