// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What those lines say that make a scenario of a recording.
#pragma once

#include <optional>
#include <string>

#include "recording/recording.h"
#include "recording/recording_fields.h"

namespace norvik::qel::monitor {

// A family or one of its properties.
std::string ReadSubject(RecordingFields& fields, const std::string& key);

// Nothing for a line that is of another kind. Throws LineError.
std::optional<RecordedWhat> ReadScenarioEvent(RecordingFields& fields);

}  // namespace norvik::qel::monitor
