// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace norvik::qel::bench {

// Whether it is only to be seen that everything runs: few rounds, figures that mean nothing.
bool IsQuick();

// As many rounds as a figure needs, or a few.
inline int Rounds(int count) {
  return IsQuick() ? (count + 99) / 100 : count;
}

}  // namespace norvik::qel::bench
