// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Clients that keep the values of their calls.
#pragma once

#include <ostream>

#include "dump_text.h"
#include "quorvel/fake/gate.h"
#include "waiting.h"

namespace norvik::qel {

// A call of a client.
struct Call {
  int client;
  int value;
  bool operator==(const Call&) const = default;
  friend std::ostream& operator<<(std::ostream& os, const Call& call) {
    return os << "client " << call.client << ": " << call.value;
  }
};

// The cookie is a Seen<int>.
inline void PutValue(int value, void* cookie) {
  static_cast<Seen<int>*>(cookie)->Put(value);
}

// A client that keeps its number and the value. Each kClient is a function of its own, which the
// battery functions need to tell clients apart. The cookie is a Seen<Call>.
template <int kClient>
void Client(int value, void* cookie) {
  static_cast<Seen<Call>*>(cookie)->Put({.client = kClient, .value = value});
}

// A client that does something when it is called. The cookie is the object.
struct ActingClient {
  std::function<void(int value)> action;
  static void OnValue(int value, void* cookie) {
    static_cast<ActingClient*>(cookie)->action(value);
  }
};

// A client whose calls last until the gate opens. The cookie is the object.
struct SlowClient {
  fake::Gate gate = {};
  Seen<int> seen = {};
  static void OnValue(int value, void* cookie) {
    auto& self = *static_cast<SlowClient*>(cookie);
    self.seen.Put(value);
    self.gate.Pass();
  }
};

}  // namespace norvik::qel
