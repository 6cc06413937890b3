// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/terminal.h"

#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>

namespace norvik::qel::monitor {

namespace {

std::string_view Variable(const char* name) {
  const char* const value = getenv(name);  // NOLINT(concurrency-mt-unsafe): set by no thread
  return value != nullptr ? value : "";
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
  std::from_chars(columns.data(), columns.data() + columns.size(), terminal.columns);
  terminal.columns = std::max(terminal.columns, kNarrowest);
  return terminal;
}

std::string Wrapped(std::string_view text, size_t columns, size_t indent, size_t used) {
  std::string lines;
  size_t column = used;
  bool is_first = true;  // of its line
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    if (!is_first && column + 1 + word.size() > columns) {
      lines.append("\n").append(indent, ' ');
      column = indent;
      is_first = true;
    }
    lines.append(is_first ? "" : " ").append(word);
    column += word.size() + (is_first ? 0 : 1);
    is_first = false;
  }
  return lines + "\n";
}

std::string TableEntry(std::string_view name, std::string_view description, size_t columns) {
  const size_t second = columns < 60 ? 6 : 24;
  std::string entry = "  " + std::string(name);
  if (entry.size() + 2 > second) entry = "  " + Wrapped(name, columns, /*indent=*/4, /*used=*/2);
  const size_t used = entry.back() == '\n' ? 0 : entry.size();
  entry.append(second - used, ' ');
  return entry + Wrapped(description, columns, second, second);
}

}  // namespace norvik::qel::monitor
