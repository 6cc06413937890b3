// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Text that comes from outside: names of a device maker, lines of a file.
#pragma once

#include <stddef.h>

#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// How many bytes at the beginning of the text are one character in UTF-8. 0: none are.
size_t CharacterSize(std::string_view text);

// What would move the cursor of a terminal, and what is not UTF-8, as an escape: "\x1b", "\u009b".
std::string Printable(std::string_view text);

// Characters, of which each is taken to fill one column.
size_t ColumnsOf(std::string_view text);

}  // namespace norvik::qel::monitor
