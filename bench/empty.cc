// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The baseline of getters.cc: the cost of a call into a shared library.
extern "C" int EmptyGetter(void* handle, bool use_cached);

int EmptyGetter(void* /*handle*/, bool use_cached) {
  return use_cached ? 1 : 0;
}
