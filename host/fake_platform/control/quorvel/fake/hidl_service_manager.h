// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Control of the HIDL service manager: its presence, the device's manifest.
#pragma once

#include <string>

namespace norvik::qel::fake {

// The manifest. An entry is "android.hardware.thermal@2.0::IThermal/default". A service without an
// entry cannot be found. An instance stays declared when its process dies.
void DeclareHidl(const std::string& instance);
void UndeclareHidl(const std::string& instance);

// Many devices have no HIDL service manager. There, look-ups return null and registration fails.
void SetHidlServiceManagerPresent(bool present);

// Removes the HIDL service manager for its own lifetime.
class NoHidlServiceManager {
 public:
  NoHidlServiceManager() { SetHidlServiceManagerPresent(false); }
  ~NoHidlServiceManager() { SetHidlServiceManagerPresent(true); }
  NoHidlServiceManager(const NoHidlServiceManager&) = delete;
  NoHidlServiceManager& operator=(const NoHidlServiceManager&) = delete;
};

}  // namespace norvik::qel::fake
