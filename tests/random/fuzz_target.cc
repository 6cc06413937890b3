// The same random tests for libFuzzer, which decides instead of a seed. The family is the target's.
#include <cstddef>
#include <cstdint>

#include "random_run.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace norvik::qel::random_test;
  RunRandomTest(QUORVEL_FUZZ_FAMILY, Choices({data, size}),
                "--family " QUORVEL_FUZZ_FAMILY " CRASH-FILE");
  return 0;
}
