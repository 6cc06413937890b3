// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A timeline for other programs. The last line has no newline.
#pragma once

#include <string>

#include "recording/timeline.h"

namespace norvik::qel::monitor {

// For spreadsheets (RFC 4180): a row for each time at which something happened, a column for each
// curve with the value that holds, and what happened.
std::string ToCsv(const Timeline& timeline);

// Trace events in JSON, for Perfetto: a counter for each curve, a thread for each lane.
std::string ToTraceEvents(const Timeline& timeline, const std::string& title);

}  // namespace norvik::qel::monitor
