// Control of the service manager: what the device's manifest declares, how look-ups fare.
#pragma once

#include <chrono>
#include <string>

#include "quorvel/fake/script.h"

namespace norvik::qel::fake {

// The manifest. An instance stays declared when its process dies.
void Declare(const std::string& instance);
void Undeclare(const std::string& instance);

// Scripts of the look-ups: an outcome other than STATUS_OK means "not declared" or null, one after
// the full time of the look-up for getService.
Script& IsDeclaredScript();
Script& CheckServiceScript();
Script& GetServiceScript();

// How AServiceManager_getService() waits for an absent service: every `pause`, `attempts` times
// after the first. The platform's are one second and five.
void SetGetServiceWait(std::chrono::milliseconds pause, int attempts);

// Shortens the wait for as long as it lives, for a test that meets an absent service.
class ShortGetServiceWait {
 public:
  ShortGetServiceWait() { SetGetServiceWait(std::chrono::milliseconds(1), 1); }
  ~ShortGetServiceWait() { SetGetServiceWait(std::chrono::seconds(1), 5); }
  ShortGetServiceWait(const ShortGetServiceWait&) = delete;
  ShortGetServiceWait& operator=(const ShortGetServiceWait&) = delete;
};

}  // namespace norvik::qel::fake
