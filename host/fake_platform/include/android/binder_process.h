// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: this process's pool of binder threads.
//
// The hosting program starts the pool; a library does not. Without the pool, one-way calls and
// death notifications are never handled.
#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void ABinderProcess_startThreadPool(void);
// How many threads the pool may add on demand. Call it before the pool is started.
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
bool ABinderProcess_isThreadPoolStarted(void);
// Adds the calling thread to the pool. Does not return.
void ABinderProcess_joinThreadPool(void);

#ifdef __cplusplus
}
#endif
