// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The terminal at standard output, and layout of text for its width.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

#include "clients/value.h"

namespace norvik::qel::monitor {

inline constexpr std::string_view kDim = "\033[2m";
inline constexpr std::string_view kBold = "\033[1m";
inline constexpr std::string_view kRed = "\033[31m";
inline constexpr std::string_view kGreen = "\033[32m";
inline constexpr std::string_view kYellow = "\033[33m";

// Of a value with this severity.
constexpr std::string_view ColourOf(Severity severity) {
  return severity >= kAlarming ? kYellow : kBold;
}

inline constexpr size_t kNarrow = 60;  // columns; a narrower terminal has no room for tables

struct Terminal {
  bool is_terminal = false;
  bool has_colour = false;  // false with NO_COLOR, or if TERM is "dumb"
  size_t columns = 80;      // COLUMNS overrides the terminal's own width
  // Where results are wrapped. In a pipe without COLUMNS each result stays one line.
  size_t limit = SIZE_MAX;

  // The text in the colour; unchanged without colour support or if `colour` is empty.
  std::string Coloured(std::string_view text, std::string_view colour) const;
};

Terminal StandardOutput();

// Breaks the text, which may be coloured, at blanks into lines of at most `columns`, each with a
// newline. Lines after the first begin with `indent` blanks; the first one begins at column `used`.
std::string Wrapped(std::string_view text, size_t columns, size_t indent = 0, size_t used = 0);

// A name and its description as lines of a table: "  name      description". Where the table is too
// narrow for two columns, the description follows below the name.
std::string TableEntry(std::string_view name, std::string_view description, size_t columns);

// One string per row of printable cells, which may be coloured. In a row that does not fit, cells
// continue on lines below, within the same string.
std::vector<std::string> TableRows(const std::vector<std::vector<std::string>>& rows,
                                   size_t columns);
// The rows joined into one text, without a newline at the end.
std::string Table(const std::vector<std::vector<std::string>>& rows, size_t columns);

}  // namespace norvik::qel::monitor
