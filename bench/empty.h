// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Does nothing, in a shared library of its own: what a call alone costs. The value it is given.
int EmptyGetter(void* handle, bool use_cached);

#ifdef __cplusplus
}
#endif
