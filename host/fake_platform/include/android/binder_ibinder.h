// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: binder objects and death recipients.
//
// An AIBinder is either an object of this process or a reference to an object of another process. A
// process has one AIBinder per remote object, as long as a reference to it is held. Equal pointers
// therefore mean the same object.
#pragma once

#include <android/binder_status.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct AIBinder;
typedef struct AIBinder AIBinder;
struct AIBinder_Class;
typedef struct AIBinder_Class AIBinder_Class;
struct AIBinder_Weak;
typedef struct AIBinder_Weak AIBinder_Weak;
struct AIBinder_DeathRecipient;
typedef struct AIBinder_DeathRecipient AIBinder_DeathRecipient;
struct AParcel;
typedef struct AParcel AParcel;

typedef uint32_t transaction_code_t;
typedef uint32_t binder_flags_t;
enum { FLAG_ONEWAY = 0x01 };
enum { FIRST_CALL_TRANSACTION = 0x00000001, LAST_CALL_TRANSACTION = 0x00ffffff };

void AIBinder_incStrong(AIBinder* binder);
// Releasing the last reference frees the object. Null is logged as an error and otherwise ignored.
void AIBinder_decStrong(AIBinder* binder);
int32_t AIBinder_debugGetRefCount(AIBinder* binder);  // -1 for null

bool AIBinder_isRemote(const AIBinder* binder);
// The last known state. Sends nothing.
bool AIBinder_isAlive(const AIBinder* binder);
binder_status_t AIBinder_ping(AIBinder* binder);
binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);

typedef void (*AIBinder_DeathRecipient_onBinderDied)(void* cookie);
typedef void (*AIBinder_DeathRecipient_onBinderUnlinked)(void* cookie);

// Null if `onBinderDied` is null.
__attribute__((warn_unused_result)) AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
    AIBinder_DeathRecipient_onBinderDied onBinderDied);
// Call it before linking. `onUnlinked` runs exactly once per link call: after the death
// notification; or after an unlink, a delete or the release of the proxy; or during a link call
// that fails.
void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked);
// Ends all links without a notification. Does not wait for a notification that is already running.
void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient);

// STATUS_INVALID_OPERATION for a local binder, STATUS_DEAD_OBJECT for a proxy known to be dead,
// STATUS_UNEXPECTED_NULL for a null argument. Releasing the last reference to the proxy ends its
// links.
binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie);
// STATUS_DEAD_OBJECT while the death notification is being delivered, without waiting for it;
// STATUS_NAME_NOT_FOUND if there is no such link, or no longer.
binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie);

// For interface code only: makes a local binder that owns `args`, with one strong reference.
__attribute__((warn_unused_result)) AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args);
// True if `binder` is of that class. May ask a remote object for its descriptor.
bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz);

__attribute__((warn_unused_result)) AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder);
void AIBinder_Weak_delete(AIBinder_Weak* weakBinder);
// One strong reference, or null if the object is gone.
__attribute__((warn_unused_result)) AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder);

bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs);

#ifdef __cplusplus
}
#endif
