// Where a run's decisions come from: given bytes, or as many as wanted from a seed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace norvik::qel::random_test {

class Choices {
 public:
  explicit Choices(std::span<const uint8_t> bytes) : bytes_(bytes.begin(), bytes.end()) {}
  // The same bytes on every machine.
  Choices(uint64_t seed, size_t count) : bytes_(count) {
    for (uint8_t& byte : bytes_) {
      // splitmix64
      seed += 0x9E3779B97F4A7C15;
      uint64_t z = seed;
      z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
      z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
      byte = static_cast<uint8_t>(z ^ (z >> 31));
    }
  }

  bool empty() const { return next_ >= bytes_.size(); }
  // 0 to `count` - 1, with `count` up to 256; 0 when nothing is left.
  int Pick(size_t count) { return empty() ? 0 : static_cast<int>(bytes_[next_++] % count); }
  // Once in `times`.
  bool OneIn(int times) { return Pick(static_cast<size_t>(times)) == times - 1; }

 private:
  std::vector<uint8_t> bytes_;
  size_t next_ = 0;
};

}  // namespace norvik::qel::random_test
