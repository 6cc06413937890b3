// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// In a shared library of its own: the cost of a call alone. See getters.cc.
extern "C" int EmptyGetter(void* handle, bool use_cached);

int EmptyGetter(void* /*handle*/, bool use_cached) {
  return use_cached ? 1 : 0;
}
