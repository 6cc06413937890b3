#pragma once

#include <android/hardware/thermal/2.0/types.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "quorvel.h"

namespace norvik::qel::audio {

// One client of one temperature.
struct ThermalClientInfo {
  ThermalCallbackFunc callback;  // never null
  std::string temperature_name;  // compared exactly
  void* cookie;                  // handed back on every call; not owned
};

using ThermalClients = std::unordered_map<int, ThermalClientInfo>;  // by id

// Clients as a dispatch goes through them: each name is looked for once, however many listen to it.
//
// Threads: any; never changed once it is made.
class ThermalListeners {
 public:
  explicit ThermalListeners(const ThermalClients& clients);

  // Calls every client that has a record among these, in the order of the map, with the oldest one.
  void Call(const std::vector<::android::hardware::thermal::V2_0::Temperature>& oldest_first) const;

 private:
  struct Listener {
    ThermalCallbackFunc callback;
    void* cookie;
    size_t name;  // which of names_
  };

  std::vector<std::string> names_;  // every one once
  std::vector<Listener> listeners_;
};

}  // namespace norvik::qel::audio
