// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Loaded before a program, it has the program enter its user's locale, as if its author had asked
// for that.
#include <locale>

namespace {

const std::locale before = std::locale::global(std::locale(""));

}  // namespace
