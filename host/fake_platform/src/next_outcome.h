// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// How the platform's functions follow their scripts.
#pragma once

#include "quorvel/fake/platform_scripts.h"

namespace norvik::qel::fake {

// Counts the call, waits at its gate and returns its outcome, if there is a script.
[[nodiscard]] Outcome NextOutcome(BinderFunction function);
[[nodiscard]] Outcome NextOutcome(SensorFunction function);

}  // namespace norvik::qel::fake
