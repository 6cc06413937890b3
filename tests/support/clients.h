// Clients that remember what they are told, and dumps as text.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <ostream>
#include <string>

#include "tests/support/waiting.h"

namespace norvik::qel {

// What a client was told: which client, which value.
struct Call {
  int client;
  int value;
  bool operator==(const Call&) const = default;
  friend std::ostream& operator<<(std::ostream& os, const Call& call) {
    return os << "client " << call.client << ": " << call.value;
  }
};

// A client is a function, so each number is a client of its own. The cookie is a Seen<Call>.
template <int kClient>
void Client(int value, void* cookie) {
  static_cast<Seen<Call>*>(cookie)->Put({.client = kClient, .value = value});
}

// What one of the Dump...() functions writes.
inline std::string TextOf(void (*dump)(void* handle, int fd), void* handle) {
  FILE* file = tmpfile();
  dump(handle, fileno(file));
  std::string text(static_cast<size_t>(lseek(fileno(file), 0, SEEK_END)), '\0');
  EXPECT_EQ(pread(fileno(file), text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  fclose(file);
  return text;
}

}  // namespace norvik::qel
