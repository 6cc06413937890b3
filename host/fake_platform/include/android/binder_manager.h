// Stand-in for the platform header of the same path: the service manager.
//
// An instance name is the interface descriptor, "/" and the instance. A service of another
// process is handed out as a proxy, one of the same process as the local object.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#ifdef __cplusplus
extern "C" {
#endif

// EX_NONE, or EX_ILLEGAL_ARGUMENT for nulls. Takes no ownership of `binder`.
__attribute__((warn_unused_result)) binder_exception_t AServiceManager_addService(
    AIBinder* binder, const char* instance);

// The look-ups answer one strong reference owned by the caller, or null.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_checkService(const char* instance);
// Asks at once, then every second, for up to five seconds. Logs that it waits, and how that ends.
__attribute__((warn_unused_result))
__attribute__((deprecated("this polls for 5s, use waitForService or checkService"))) AIBinder*
AServiceManager_getService(const char* instance);
// Waits without limit.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_waitForService(const char* instance);

// Whether the device's manifest names the instance; declared does not mean running.
bool AServiceManager_isDeclared(const char* instance);
void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char* instance, void* context));

#ifdef __cplusplus
}
#endif
