// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Returns its argument. In a shared library of its own: the cost of a call alone.
int EmptyGetter(void* handle, bool use_cached);

#ifdef __cplusplus
}
#endif
