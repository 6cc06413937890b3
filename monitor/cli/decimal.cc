// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/decimal.h"

#include <array>
#include <charconv>
#include <locale>
#include <sstream>
#include <string>

namespace norvik::qel::monitor {

std::optional<double> ParseDecimal(std::string_view text) {
  // Streams also take a leading sign or blanks, and some of them hexadecimal digits.
  constexpr std::string_view kBeginnings = "-.0123456789";
  constexpr std::string_view kCharacters = "+-.0123456789eE";
  if (text.empty() || kBeginnings.find(text.front()) == std::string_view::npos ||
      text.find_first_not_of(kCharacters) != std::string_view::npos) {
    return std::nullopt;
  }
  // Not std::from_chars(): libc++ has it for integers only.
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double number = 0;
  stream >> number;
  if (stream.fail() || stream.peek() != std::istringstream::traits_type::eof()) {
    return std::nullopt;
  }
  return number;
}

std::string DecimalText(double number) {
  std::array<char, 64> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

}  // namespace norvik::qel::monitor
