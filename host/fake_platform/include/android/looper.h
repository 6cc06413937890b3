// Stand-in for the platform header of the same path: the looper, as the library that vendor code
// links has it. There is one looper per process: ALooper_forThread() and ALooper_prepare() give
// every thread the same object, and any thread may wait on it.
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

// 1 to be called again, 0 not to be.
typedef int (*ALooper_callbackFunc)(int fd, int events, void* data);

// The process's looper; never null.
ALooper* ALooper_forThread(void);
// The same; `opts` is not looked at.
ALooper* ALooper_prepare(int opts);

// Waits up to `timeoutMillis`, negative for no limit. ALOOPER_POLL_CALLBACK when event queues have
// news, with or without a callback; ALOOPER_POLL_WAKE when somebody has called ALooper_wake();
// ALOOPER_POLL_TIMEOUT. The out-parameters, which may be null, are set to 0 and null.
//
// Wakes and news are nobody's in particular: of several waiting threads one goes on, and it takes
// the news of all queues. A wake that comes with news is left for the next poll.
int ALooper_pollOnce(int timeoutMillis, int* outFd, int* outEvents, void** outData);

// Ends one ALooper_pollOnce(), the next one when none waits. Several wakes fold into one.
void ALooper_wake(ALooper* looper);

#ifdef __cplusplus
}
#endif
