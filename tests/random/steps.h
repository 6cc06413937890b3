// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Steps of a run: lines of words such as "register level 2", and where they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace norvik::qel::random_test {

using Words = std::vector<std::string>;
using Step = Words;  // the verb, then its arguments
using Steps = std::vector<Step>;

// A kind of step: its share among the random ones, the words that each argument can be, and what is
// done.
struct Verb {
  std::string name;
  size_t weight;
  std::vector<Words> arguments;
  std::function<void(const Step&)> act;
};
using Grammar = std::vector<Verb>;

// Null when it is no step.
const Verb* VerbOf(const Grammar& grammar, const Step& step);

// A byte decides on a verb, and one more on each of its arguments; a last step that lacks bytes
// gets zeros.
Steps StepsFromBytes(const Grammar& grammar, std::span<const uint8_t> bytes);
// Of random bytes, the same on every machine.
Steps StepsFromSeed(const Grammar& grammar, uint64_t seed, size_t count);
std::string StepText(const Step& step);

// The size of the list when the word is not in it.
size_t IndexOf(const Words& words, const std::string& word);

}  // namespace norvik::qel::random_test
