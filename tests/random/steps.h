// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Steps of a run: lines of words such as "register level 2", and where they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace norvik::qel::random_test {

using Words = std::vector<std::string>;
using Step = Words;  // the verb, then its arguments
using Steps = std::vector<Step>;

// A kind of step: its share among the random ones, and the words that each argument can be.
struct Verb {
  std::string name;
  int weight;
  std::vector<Words> arguments = {};
};
using Grammar = std::vector<Verb>;

// A byte decides on a verb, and one more on each of its arguments; a last step that lacks bytes
// gets zeros.
Steps StepsFromBytes(const Grammar& grammar, std::span<const uint8_t> bytes);
// The same steps on every machine.
Steps StepsFromSeed(const Grammar& grammar, uint64_t seed, size_t count);
// One step a line; "#" begins a comment. On a mistake `error` says which, and no step is returned.
Steps StepsFromText(const Grammar& grammar, const std::string& text, std::string& error);

std::string StepText(const Step& step);
std::string StepsText(const Steps& steps);

}  // namespace norvik::qel::random_test
