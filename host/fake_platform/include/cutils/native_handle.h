// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: descriptors and numbers that travel together.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

#define NATIVE_HANDLE_MAX_FDS 1024
#define NATIVE_HANDLE_MAX_INTS 1024

typedef struct native_handle {
  int version;  // the size of this struct
  int numFds;
  int numInts;
  __extension__ int data[0];  // the descriptors, then the numbers
} native_handle_t;

// Allocates room for the descriptors and numbers, uninitialized. Null if there are too many.
native_handle_t* native_handle_create(int numFds, int numInts);
// A copy with duplicates of the descriptors; null on failure.
native_handle_t* native_handle_clone(const native_handle_t* handle);
// Closes the descriptors, frees nothing. 0, or -EINVAL if the version field is wrong.
int native_handle_close(const native_handle_t* handle);
// Frees the handle, closes nothing. The results are the same.
int native_handle_delete(native_handle_t* handle);

#ifdef __cplusplus
}
#endif
