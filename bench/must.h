// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <stdexcept>

namespace norvik::qel::bench {

// Checks a step without which the benchmark would measure something else.
inline void Must(bool done) {
  if (!done) throw std::runtime_error("the benchmark could not be prepared");
}

}  // namespace norvik::qel::bench
