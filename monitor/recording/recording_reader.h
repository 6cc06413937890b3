// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Reads recordings and scenarios.
#pragma once

#include <istream>
#include <string>

#include "recording/recording.h"

namespace norvik::qel::monitor {

// Reads a whole file, or standard input for kStandardStream. Throws std::runtime_error if it cannot
// be read or is not a recording; the message has the file name, the line number and the reason.
Recording ReadRecording(const std::string& path);
// Reads a recording from a stream. `name` is used in messages.
Recording ReadRecording(std::istream& text, const std::string& name);

// Throws std::runtime_error if `output`, a file to write, is the file of the recording.
void CheckIsAnotherFile(const std::string& output, const std::string& recording);

}  // namespace norvik::qel::monitor
