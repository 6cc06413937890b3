// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal/thermal_listeners.h"

#include <algorithm>
#include <string_view>

#include "thermal/temperature_name.h"

namespace norvik::qel::audio {

using ::android::hardware::thermal::V2_0::Temperature;

ThermalListeners::ThermalListeners(const ThermalClients& clients) {
  listeners_.reserve(clients.size());
  std::unordered_map<std::string_view, size_t> indices;
  for (const auto& [id, client] : clients) {
    const auto [index, is_new] = indices.try_emplace(client.temperature_name, names_.size());
    if (is_new) names_.push_back(client.temperature_name);
    listeners_.push_back(
        {.callback = client.callback, .cookie = client.cookie, .name = index->second});
  }
}

void ThermalListeners::AddCalls(const std::vector<Temperature>& oldest_first, ClientCalls& calls) {
  severities_.clear();
  for (const std::string& name : names_) {
    // The oldest on purpose, and at most one call: the later records of a run are dropped.
    const auto oldest = std::find_if(
        oldest_first.begin(), oldest_first.end(),
        [&name](const Temperature& temperature) { return NameOf(temperature) == name; });
    severities_.push_back(oldest != oldest_first.end()
                              ? std::optional(static_cast<int>(oldest->throttlingStatus))
                              : std::nullopt);
  }
  for (const Listener& listener : listeners_) {
    if (const auto severity = severities_[listener.name]) {
      calls.Add({.callback = listener.callback,
                 .cookie = listener.cookie,
                 .value = *severity,
                 .property = 0});
    }
  }
}

}  // namespace norvik::qel::audio
