// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/terminal.h"

#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>

#include "output/printable.h"

namespace norvik::qel::monitor {

namespace {

std::string_view Variable(const char* name) {
  const char* const value = getenv(name);  // NOLINT(concurrency-mt-unsafe): set by no thread
  return value != nullptr ? value : "";
}

constexpr size_t kGap = 2;

// Wider cells do not widen their column, which would fill the other rows with blanks.
constexpr size_t kWidest = 36;

void DropBlanks(std::string* text) {
  text->erase(text->find_last_not_of(' ') + 1);
}

// Appends the cell to the current line, or wraps it onto lines below.
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

Terminal StandardOutput() {
  constexpr size_t kNarrowest = 20;
  Terminal terminal;
  terminal.is_terminal = isatty(STDOUT_FILENO) == 1;
  terminal.has_colour =
      terminal.is_terminal && Variable("NO_COLOR").empty() && Variable("TERM") != "dumb";
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    terminal.columns = size.ws_col;
  }
  const std::string_view columns = Variable("COLUMNS");
  size_t asked = 0;  // stays 0 if COLUMNS is no number
  std::from_chars(columns.data(), columns.data() + columns.size(), asked);
  terminal.columns = std::max(asked > 0 ? asked : terminal.columns, kNarrowest);
  if (terminal.is_terminal || asked > 0) terminal.limit = terminal.columns;
  return terminal;
}

std::string Terminal::Coloured(std::string_view text, std::string_view colour) const {
  const bool is_plain = !has_colour || colour.empty();
  return is_plain ? std::string(text) : std::string(colour).append(text) + "\033[0m";
}

std::string Wrapped(std::string_view text, size_t columns, size_t indent, size_t used) {
  std::string lines;
  size_t column = used;
  bool is_first = true;  // the next word is the first one of its line
  while (!text.empty()) {
    std::string_view word = text.substr(0, text.find(' '));
    // A word longer than a line is split.
    while (ColumnsOf(word) > std::max<size_t>(columns - indent, 1)) word.remove_suffix(1);
    if (!is_first && column + 1 + ColumnsOf(word) > columns) {
      DropBlanks(&lines);
      lines.append("\n").append(indent, ' ');
      column = indent;
      is_first = true;
      text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
      continue;
    }
    text.remove_prefix(word.size());
    if (text.starts_with(' ')) text.remove_prefix(1);
    lines.append(is_first ? "" : " ").append(word);
    column += ColumnsOf(word) + (is_first ? 0 : 1);
    is_first = false;
  }
  return lines + "\n";
}

std::string TableEntry(std::string_view name, std::string_view description, size_t columns) {
  const size_t second = columns < kNarrow ? 6 : 24;
  std::string entry = "  " + std::string(name);
  if (entry.size() + 2 > second) entry = "  " + Wrapped(name, columns, /*indent=*/4, /*used=*/2);
  const size_t used = entry.back() == '\n' ? 0 : entry.size();
  entry.append(second - used, ' ');
  return entry + Wrapped(description, columns, second, second);
}

std::vector<std::string> TableRows(const std::vector<std::vector<std::string>>& rows,
                                   size_t columns) {
  std::vector<size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) {
      if (ColumnsOf(row[i]) <= kWidest) widths[i] = std::max(widths[i], ColumnsOf(row[i]));
    }
  }
  std::vector<std::string> lines;
  for (const auto& row : rows) {
    std::string& line = lines.emplace_back();
    size_t start = 0;
    for (size_t i = 0; i < row.size(); ++i) {
      if (i > 0) {
        // A cell that does not fit at its column starts further left.
        const size_t width = std::min(ColumnsOf(row[i]), columns);
        const size_t column = std::max(std::min(start, columns - width), EndOf(line) + kGap);
        line.append(column - EndOf(line), ' ');
      }
      AddCell(row[i], EndOf(line), columns, &line);
      start += widths[i] + kGap;
    }
    DropBlanks(&line);
  }
  return lines;
}

std::string Table(const std::vector<std::vector<std::string>>& rows, size_t columns) {
  std::string table;
  for (const std::string& row : TableRows(rows, columns)) {
    table += (table.empty() ? "" : "\n") + row;
  }
  return table;
}

}  // namespace norvik::qel::monitor
