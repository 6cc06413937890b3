// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Text from outside the program, such as a device maker's names and the lines of a file.
#pragma once

#include <stddef.h>

#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// The size in bytes of the UTF-8 character at the beginning of the text; 0 if there is none.
size_t CharacterSize(std::string_view text);

// The text with control characters and bytes that are not UTF-8 escaped: "\x1b", "\u009b".
std::string Printable(std::string_view text);

// The width of the text in columns. Every character counts as one column, sequences that set
// colours count as none.
size_t ColumnsOf(std::string_view text);

}  // namespace norvik::qel::monitor
