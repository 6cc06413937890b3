// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "steps.h"

#include <algorithm>
#include <random>

namespace norvik::qel::random_test {

const Verb* VerbOf(const Grammar& grammar, const Step& step) {
  const auto fits = [&](const Verb& verb) {
    return verb.name == step[0] &&
           std::equal(step.begin() + 1, step.end(), verb.arguments.begin(), verb.arguments.end(),
                      [](const std::string& word, const Words& words) {
                        return IndexOf(words, word) < words.size();
                      });
  };
  const auto found = std::find_if(grammar.begin(), grammar.end(), fits);
  return found == grammar.end() ? nullptr : &*found;
}

Steps StepsFromBytes(const Grammar& grammar, std::span<const uint8_t> bytes) {
  size_t total = 0;
  for (const Verb& verb : grammar) total += verb.weight;
  Steps steps;
  size_t next = 0;
  const auto pick = [&](size_t count) { return next < bytes.size() ? bytes[next++] % count : 0; };
  while (next < bytes.size()) {
    size_t chosen = pick(total);
    auto verb = grammar.begin();
    for (; chosen >= verb->weight; ++verb) chosen -= verb->weight;
    Step& step = steps.emplace_back(Step{verb->name});
    for (const Words& words : verb->arguments) step.push_back(words[pick(words.size())]);
  }
  return steps;
}

Steps StepsFromSeed(const Grammar& grammar, uint64_t seed, size_t count) {
  std::mt19937_64 random(seed);
  std::vector<uint8_t> bytes(count * 8);  // more than the arguments of any verb
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random() >> 56); });
  Steps steps = StepsFromBytes(grammar, bytes);
  steps.resize(count);
  return steps;
}

std::string StepText(const Step& step) {
  std::string text;
  for (const std::string& word : step) text.append(text.empty() ? "" : " ").append(word);
  return text;
}

size_t IndexOf(const Words& words, const std::string& word) {
  return static_cast<size_t>(std::find(words.begin(), words.end(), word) - words.begin());
}

}  // namespace norvik::qel::random_test
