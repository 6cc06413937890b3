// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/table.h"

#include <algorithm>
#include <string_view>

#include "output/printable.h"
#include "output/terminal.h"

namespace norvik::qel::monitor {

namespace {

constexpr size_t kGap = 2;

// A cell that is this wide is not worth a column of blanks in all other rows.
constexpr size_t kWidest = 36;

void DropBlanks(std::string* text) {
  text->erase(text->find_last_not_of(' ') + 1);
}

// The cell at the present line, or wrapped below it.
void AddCell(std::string_view cell, size_t used, size_t columns, std::string* line) {
  if (used + ColumnsOf(cell) <= columns) {
    *line += cell;
    return;
  }
  if (!line->empty()) {
    DropBlanks(line);
    line->append("\n").append(2 * kGap, ' ');
    used = 2 * kGap;
  }
  *line += Wrapped(cell, columns, 2 * kGap, used);
  line->pop_back();  // the newline
}

size_t EndOf(const std::string& text) {
  const std::string_view whole = text;
  return ColumnsOf(whole.substr(whole.rfind('\n') + 1));
}

}  // namespace

std::string Table(const std::vector<std::vector<std::string>>& rows, size_t columns) {
  std::vector<size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) {
      if (ColumnsOf(row[i]) <= kWidest) widths[i] = std::max(widths[i], ColumnsOf(row[i]));
    }
  }
  std::string table;
  for (const auto& row : rows) {
    std::string line;
    size_t start = 0;
    for (size_t i = 0; i < row.size(); ++i) {
      if (i > 0) {
        // A cell that does not fit where its column begins may begin earlier.
        const size_t width = std::min(ColumnsOf(row[i]), columns);
        const size_t column = std::max(std::min(start, columns - width), EndOf(line) + kGap);
        line.append(column - EndOf(line), ' ');
      }
      AddCell(Printable(row[i]), EndOf(line), columns, &line);
      start += widths[i] + kGap;
    }
    DropBlanks(&line);
    table += (table.empty() ? "" : "\n") + line;
  }
  return table;
}

}  // namespace norvik::qel::monitor
