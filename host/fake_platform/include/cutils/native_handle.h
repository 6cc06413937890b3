// Stand-in for the platform header of the same path: descriptors and numbers that travel together.
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
  int data[0];  // the descriptors, then the numbers
} native_handle_t;

// Room for so many descriptors and numbers, not yet set; null when there are too many.
native_handle_t* native_handle_create(int numFds, int numInts);
// A copy with duplicates of the descriptors; null on failure.
native_handle_t* native_handle_clone(const native_handle_t* handle);
// Closes the descriptors, frees nothing. 0, or -EINVAL for something else than a handle.
int native_handle_close(const native_handle_t* handle);
// Frees the handle, closes nothing. Results as above.
int native_handle_delete(native_handle_t* handle);

#ifdef __cplusplus
}
#endif
