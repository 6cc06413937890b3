// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The same random tests for libFuzzer, whose bytes become steps. The family is the target's.
#include <cstddef>
#include <cstdint>

#include "family.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace norvik::qel::random_test;
  static const Grammar grammar = GrammarOf(QUORVEL_FUZZ_FAMILY);
  RunSteps(QUORVEL_FUZZ_FAMILY, StepsFromBytes(grammar, {data, size}), std::chrono::seconds(100));
  return 0;
}
