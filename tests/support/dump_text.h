// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Dumps as text.
#pragma once

#include <stdio.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace norvik::qel {

// The text that one of the Dump...() functions writes.
inline std::string TextOf(void (*dump)(void* handle, int fd), void* handle) {
  FILE* file = tmpfile();
  if (file == nullptr) abort();
  dump(handle, fileno(file));
  std::string text(static_cast<size_t>(lseek(fileno(file), 0, SEEK_END)), '\0');
  if (pread(fileno(file), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
    abort();
  }
  fclose(file);
  return text;
}

}  // namespace norvik::qel
