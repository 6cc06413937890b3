// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Clients that remember what they are told.
#pragma once

#include <ostream>

#include "dump_text.h"
#include "waiting.h"

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

// A client that is known by where its calls go. The cookie is a Seen<int>.
inline void PutValue(int value, void* cookie) {
  static_cast<Seen<int>*>(cookie)->Put(value);
}

// A client is a function, so each number is a client of its own. The cookie is a Seen<Call>.
template <int kClient>
void Client(int value, void* cookie) {
  static_cast<Seen<Call>*>(cookie)->Put({.client = kClient, .value = value});
}

}  // namespace norvik::qel
