// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Reads recordings, written by a program or by hand.
#pragma once

#include <istream>
#include <string>

#include "recording/recording.h"

namespace norvik::qel::monitor {

// The whole file, or standard input for kStandardStream. Throws std::runtime_error when it cannot
// be read or is no recording: with the file, the line and what is wrong there.
Recording ReadRecording(const std::string& path);
// The same of a text that has a name.
Recording ReadRecording(std::istream& text, const std::string& name);

}  // namespace norvik::qel::monitor
