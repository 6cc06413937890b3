// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The random tests as a libFuzzer target: the input bytes become steps. Each family has a target.
#include <cstddef>
#include <cstdint>

#include "family.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace norvik::qel::random_test;
  const std::unique_ptr<Family> family = MakeFamily(QUORVEL_FUZZ_FAMILY);
  family->Run(StepsFromBytes(family->grammar(), {data, size}), std::chrono::seconds(100));
  return 0;
}
