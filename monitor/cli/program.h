// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The program around its commands.
#pragma once

#include <span>
#include <string>

namespace norvik::qel::monitor {

// Prints what may stand in the place of the last word, a candidate a line, each with a tab and its
// description; ":files" for the names of files. The shells' scripts in packaging/completions/ run
// `quorvel --complete WORD...` for it.
void PrintCompletions(std::span<const std::string> words);

// The commands, options, exit codes and so on in the markup of the manual page, for `quorvel
// --man`.
std::string ManualLists();

}  // namespace norvik::qel::monitor
