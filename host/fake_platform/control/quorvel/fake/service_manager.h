// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Control of the service managers of AIDL and of HIDL.
#pragma once

#include <chrono>
#include <string>

namespace norvik::qel::fake {

// The manifest. An instance stays declared when its process dies.
void Declare(const std::string& instance);
void Undeclare(const std::string& instance);
// An instance is "android.hardware.thermal@2.0::IThermal/default". Undeclared, it cannot be found.
void DeclareHidl(const std::string& instance);
void UndeclareHidl(const std::string& instance);

// Sets how AServiceManager_getService() waits for an absent service: after the first attempt it
// makes up to `attempts` more, each after `pause`. The platform's values are one second and five.
void SetGetServiceWait(std::chrono::milliseconds pause, int attempts);

// Shortens the wait for its own lifetime. For tests with an absent service.
class ShortGetServiceWait {
 public:
  ShortGetServiceWait() { SetGetServiceWait(std::chrono::milliseconds(1), 1); }
  ~ShortGetServiceWait() { SetGetServiceWait(std::chrono::seconds(1), 5); }
  ShortGetServiceWait(const ShortGetServiceWait&) = delete;
  ShortGetServiceWait& operator=(const ShortGetServiceWait&) = delete;
};

// Removes the HIDL service manager for its own lifetime. Many devices have none. There, look-ups
// return null and registration fails.
class NoHidlServiceManager {
 public:
  NoHidlServiceManager();
  ~NoHidlServiceManager();
  NoHidlServiceManager(const NoHidlServiceManager&) = delete;
  NoHidlServiceManager& operator=(const NoHidlServiceManager&) = delete;
};

}  // namespace norvik::qel::fake
