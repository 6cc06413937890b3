// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the lines of a recording say.
#pragma once

#include "recording/recording.h"
#include "recording/recording_fields.h"

namespace norvik::qel::monitor {

// All but the time. `battery`: as of the lines before; a line says what has changed. Throws
// LineError.
RecordedWhat ReadWhat(RecordingFields& fields, BatteryReport& battery);

}  // namespace norvik::qel::monitor
