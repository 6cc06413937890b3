// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "empty.h"

int EmptyGetter(void* /*handle*/, bool use_cached) {
  return use_cached ? 1 : 0;
}
