// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Parses the events of a recording.
#pragma once

#include "recording/recording.h"
#include "recording/recording_fields.h"

namespace norvik::qel::monitor {

// Parses the event of one line, without its time. `battery` holds the values of the lines before,
// because a line has only changed values; it is updated. Throws LineError.
RecordedWhat ReadWhat(RecordingFields& fields, BatteryReport& battery);

}  // namespace norvik::qel::monitor
