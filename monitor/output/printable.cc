// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/printable.h"

#include <stdio.h>

#include <algorithm>

namespace norvik::qel::monitor {

namespace {

unsigned char ByteAt(std::string_view text, size_t at) {
  return static_cast<unsigned char>(text[at]);
}

std::string Escape(const char* format, unsigned number) {
  char text[16];
  snprintf(text, sizeof text, format, number);
  return text;
}

}  // namespace

size_t CharacterSize(std::string_view text) {
  if (text.empty()) return 0;
  const unsigned char first = ByteAt(text, 0);
  if (first < 0x80) return 1;
  if (first < 0xc2 || first > 0xf4) return 0;
  const size_t size = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  if (text.size() < size) return 0;
  for (size_t i = 1; i < size; ++i) {
    if ((ByteAt(text, i) & 0xc0) != 0x80) return 0;
  }
  // Overlong encodings, surrogates, and code points above U+10FFFF.
  const unsigned char second = ByteAt(text, 1);
  const bool is_wrong = (first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
                        (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f);
  return is_wrong ? 0 : size;
}

std::string Printable(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    const size_t size = CharacterSize(text);
    const unsigned char first = ByteAt(text, 0);
    const size_t taken = std::max<size_t>(size, 1);
    if (size == 0 || first < ' ' || first == 0x7f) {
      printable += Escape("\\x%02x", first);
    } else if (first == 0xc2 && ByteAt(text, 1) < 0xa0) {
      printable += Escape("\\u%04x", ByteAt(text, 1));
    } else {
      printable += text.substr(0, taken);
    }
    text.remove_prefix(taken);
  }
  return printable;
}

size_t ColumnsOf(std::string_view text) {
  size_t columns = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\033') {
      i = std::min(text.find('m', i), text.size());
    } else if ((ByteAt(text, i) & 0xc0) != 0x80) {
      ++columns;
    }
  }
  return columns;
}

}  // namespace norvik::qel::monitor
