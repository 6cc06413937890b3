// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Runs gnuplot, which draws the plots.
#pragma once

#include <string>

namespace norvik::qel::monitor {

// The picture that the script draws. Throws std::runtime_error when gnuplot is missing or fails.
std::string RunGnuplot(const std::string& script);

}  // namespace norvik::qel::monitor
