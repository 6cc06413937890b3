// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The steps of a run, such as "register level 2", and how they are made from bytes or a seed.
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

// A kind of step: its weight among the random steps, the choices for each argument, and its action.
struct Verb {
  std::string name;
  size_t weight;
  std::vector<Words> arguments;
  std::function<void(const Step&)> act;
};
using Grammar = std::vector<Verb>;

// The verb of a step; null if the step is not valid.
const Verb* VerbOf(const Grammar& grammar, const Step& step);

// Makes steps from bytes: one byte selects the verb, and one more each of its arguments. Missing
// bytes of the last step count as zeros.
Steps StepsFromBytes(const Grammar& grammar, std::span<const uint8_t> bytes);
// Makes `count` random steps, the same ones on every machine.
Steps StepsFromSeed(const Grammar& grammar, uint64_t seed, size_t count);
std::string StepText(const Step& step);

// The index of the word, or words.size() if it is not in the list.
size_t IndexOf(const Words& words, const std::string& word);

}  // namespace norvik::qel::random_test
