// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Runs gnuplot, which draws the plots.
#pragma once

#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// What the script draws goes to the file, which appears once it is complete. Throws
// std::runtime_error when gnuplot is not there or fails, or the file cannot be written. gnuplot
// does not tell of a disk that is full: `ending` is how a complete drawing ends, without line ends.
void RunGnuplot(const std::string& script, const std::string& path, std::string_view ending);

}  // namespace norvik::qel::monitor
