// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <android/hardware/thermal/2.0/types.h>

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/client_calls.h"
#include "quorvel.h"

namespace norvik::qel::audio {

// One client of one temperature.
struct ThermalClientInfo {
  ThermalCallbackFunc callback;  // never null
  std::string temperature_name;  // compared exactly
  void* cookie;                  // handed back on every call; not owned
};

using ThermalClients = std::unordered_map<int, ThermalClientInfo>;  // by id

// The clients as a dispatch needs them: each name is searched once, however many clients have it.
//
// Threads: one at a time.
class ThermalListeners {
 public:
  explicit ThermalListeners(const ThermalClients& clients);

  // Adds a call for every client that has a record among these, in the order of the map, with the
  // oldest one.
  void AddCalls(const std::vector<::android::hardware::thermal::V2_0::Temperature>& oldest_first,
                ClientCalls& calls);

 private:
  struct Listener {
    ThermalCallbackFunc callback;
    void* cookie;
    size_t name;  // which of names_
  };

  std::vector<std::string> names_;              // without duplicates
  std::vector<std::optional<int>> severities_;  // by name; kept for its memory
  std::vector<Listener> listeners_;
};

}  // namespace norvik::qel::audio
