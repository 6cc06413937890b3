// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the service manager.
//
// An instance name is the interface descriptor, "/" and the instance. A look-up returns a proxy for
// a service of another process, and the local object for a service of the same process.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#ifdef __cplusplus
extern "C" {
#endif

// EX_NONE, or EX_ILLEGAL_ARGUMENT if an argument is null. Takes no ownership of `binder`.
__attribute__((warn_unused_result)) binder_exception_t AServiceManager_addService(
    AIBinder* binder, const char* instance);

// Each look-up returns one strong reference, which the caller owns, or null.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_checkService(const char* instance);
// Looks at once, then every second, for up to five seconds. Logs the wait and its outcome.
__attribute__((warn_unused_result))
__attribute__((deprecated("this polls for 5s, use waitForService or checkService"))) AIBinder*
AServiceManager_getService(const char* instance);
// Waits without limit.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_waitForService(const char* instance);

// Whether the device's manifest declares the instance. A declared service need not be running.
bool AServiceManager_isDeclared(const char* instance);
void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char* instance, void* context));

#ifdef __cplusplus
}
#endif
