// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What standard output is written to, and how text fits there.
#pragma once

#include <stddef.h>

#include <string>
#include <string_view>
#include <vector>

namespace norvik::qel::monitor {

struct Terminal {
  bool is_terminal = false;
  bool has_colour = false;  // never with NO_COLOR, or when TERM is "dumb"
  bool is_limited = false;  // to the columns: a terminal, or COLUMNS is set
  size_t columns = 80;      // COLUMNS overrides those of a terminal
};

Terminal StandardOutput();

// Breaks the text at blanks into lines of at most `columns`, each with a newline. Lines after the
// first begin with `indent` blanks; the first one begins at column `used`.
std::string Wrapped(std::string_view text, size_t columns, size_t indent = 0, size_t used = 0);

// A name and its description as lines of a table: "  name      description". Where the table is too
// narrow for two columns, the description follows below the name.
std::string TableEntry(std::string_view name, std::string_view description, size_t columns);

// One line per row where the columns fit. In a row that is too wide the last cell continues on
// lines of its own, or each cell does. Without a newline at the end.
std::string Table(const std::vector<std::vector<std::string>>& rows, size_t columns);

}  // namespace norvik::qel::monitor
