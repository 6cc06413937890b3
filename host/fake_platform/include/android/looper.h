// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the looper of the library that vendor code
// links. There is one looper per process: ALooper_forThread() and ALooper_prepare() return the same
// object to every thread, and any thread may wait on it.
//
// Functions that vendor code cannot link (ALooper_acquire, _release, _addFd, _removeFd, _pollAll)
// are left out.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ALooper ALooper;

enum {
  // ALooper_pollOnce() may be used for events without a callback.
  ALOOPER_PREPARE_ALLOW_NON_CALLBACKS = 1 << 0,
};

enum {
  ALOOPER_POLL_WAKE = -1,
  ALOOPER_POLL_CALLBACK = -2,
  ALOOPER_POLL_TIMEOUT = -3,
  ALOOPER_POLL_ERROR = -4,
};

enum {
  ALOOPER_EVENT_INPUT = 1 << 0,
  ALOOPER_EVENT_OUTPUT = 1 << 1,
  ALOOPER_EVENT_ERROR = 1 << 2,
  ALOOPER_EVENT_HANGUP = 1 << 3,
  ALOOPER_EVENT_INVALID = 1 << 4,
};

// Returns 1 to stay registered, 0 to be called no more.
typedef int (*ALooper_callbackFunc)(int fd, int events, void* data);

// The process's looper; never null.
ALooper* ALooper_forThread(void);
// The same; `opts` is ignored.
ALooper* ALooper_prepare(int opts);

// Waits up to `timeoutMillis`; a negative value means no limit. Returns
//   ALOOPER_POLL_CALLBACK  event queues have events, with or without a callback
//   ALOOPER_POLL_WAKE      ALooper_wake() was called
//   ALOOPER_POLL_TIMEOUT   neither happened in time
// The out-parameters may be null; they are set to 0 and null.
//
// Wakes and events are not addressed to a thread. If several threads wait, one of them returns and
// takes the events of all queues. A wake that coincides with events is left for the next poll.
int ALooper_pollOnce(int timeoutMillis, int* outFd, int* outEvents, void** outData);

// Ends one ALooper_pollOnce(). If none waits, the next one returns at once. Several wakes fold into
// one.
void ALooper_wake(ALooper* looper);

#ifdef __cplusplus
}
#endif
