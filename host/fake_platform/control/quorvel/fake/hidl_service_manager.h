// Control of the HIDL service manager: whether there is one, what the device's manifest declares,
// how look-ups fare.
#pragma once

#include <string>

#include "quorvel/fake/script.h"

namespace norvik::qel::fake {

// The manifest: "android.hardware.thermal@2.0::IThermal/default". Without an entry nobody finds the
// service. An instance stays declared when its process dies.
void DeclareHidl(const std::string& instance);
void UndeclareHidl(const std::string& instance);

// Scripts of tryGetService() and getService() of every interface: an outcome other than STATUS_OK
// means null. A gate keeps the caller, as a HIDL service manager that is late does.
Script& TryGetHidlServiceScript();
Script& GetHidlServiceScript();

// Many devices have no HIDL service manager: look-ups give null, and nothing can be registered.
void SetHidlServiceManagerPresent(bool present);

// Takes it off the device for as long as it lives.
class NoHidlServiceManager {
 public:
  NoHidlServiceManager() { SetHidlServiceManagerPresent(false); }
  ~NoHidlServiceManager() { SetHidlServiceManagerPresent(true); }
  NoHidlServiceManager(const NoHidlServiceManager&) = delete;
  NoHidlServiceManager& operator=(const NoHidlServiceManager&) = delete;
};

}  // namespace norvik::qel::fake
