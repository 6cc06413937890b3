// Stand-in for the platform header of the same path: this process's pool of binder threads.
//
// The hosting program starts the pool, a library does not. Without it no one-way call and no
// death notice is ever handled.
#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void ABinderProcess_startThreadPool(void);
// How many threads the pool may add by itself; to be set before it is started.
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
bool ABinderProcess_isThreadPoolStarted(void);
// Makes the calling thread one of the pool; does not return.
void ABinderProcess_joinThreadPool(void);

#ifdef __cplusplus
}
#endif
