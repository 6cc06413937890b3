// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A library to preload: makes the program use the locale of the environment.
#include <locale>

namespace {

const std::locale before = std::locale::global(std::locale(""));

}  // namespace
