// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace norvik::qel::bench {

// Whether to only check that everything runs: few rounds, meaningless figures.
bool IsQuick();

// The rounds that a figure needs, or a few.
inline int Rounds(int count) {
  return IsQuick() ? (count + 99) / 100 : count;
}

}  // namespace norvik::qel::bench
