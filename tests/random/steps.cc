// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "steps.h"

#include <algorithm>
#include <functional>
#include <random>
#include <sstream>

namespace norvik::qel::random_test {

namespace {

// `pick` returns a number below its argument.
Step MakeStep(const Grammar& grammar, const std::function<size_t(size_t)>& pick) {
  size_t total = 0;
  for (const Verb& verb : grammar) total += static_cast<size_t>(verb.weight);
  size_t chosen = pick(total);
  auto verb = grammar.begin();
  for (; chosen >= static_cast<size_t>(verb->weight); ++verb) {
    chosen -= static_cast<size_t>(verb->weight);
  }
  Step step = {verb->name};
  for (const Words& words : verb->arguments) step.push_back(words[pick(words.size())]);
  return step;
}

bool IsStep(const Grammar& grammar, const Step& step) {
  return std::any_of(grammar.begin(), grammar.end(), [&](const Verb& verb) {
    return verb.name == step[0] &&
           std::equal(step.begin() + 1, step.end(), verb.arguments.begin(), verb.arguments.end(),
                      [](const std::string& word, const Words& words) {
                        return std::find(words.begin(), words.end(), word) != words.end();
                      });
  });
}

}  // namespace

Steps StepsFromBytes(const Grammar& grammar, std::span<const uint8_t> bytes) {
  Steps steps;
  size_t next = 0;
  while (next < bytes.size()) {
    steps.push_back(MakeStep(
        grammar, [&](size_t count) { return next < bytes.size() ? bytes[next++] % count : 0; }));
  }
  return steps;
}

Steps StepsFromSeed(const Grammar& grammar, uint64_t seed, size_t count) {
  std::mt19937_64 random(seed);
  Steps steps;
  while (steps.size() < count) {
    steps.push_back(MakeStep(grammar, [&](size_t limit) { return random() % limit; }));
  }
  return steps;
}

Steps StepsFromText(const Grammar& grammar, const std::string& text, std::string& error) {
  Steps steps;
  std::istringstream lines(text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    std::istringstream words(line.substr(0, line.find('#')));
    Step step;
    for (std::string word; words >> word;) step.push_back(word);
    if (step.empty()) continue;
    if (!IsStep(grammar, step)) {
      error = "line " + std::to_string(number) + ": not a step: " + line;
      return {};
    }
    steps.push_back(std::move(step));
  }
  return steps;
}

std::string StepText(const Step& step) {
  std::string text;
  for (const std::string& word : step) text.append(text.empty() ? "" : " ").append(word);
  return text;
}

std::string StepsText(const Steps& steps) {
  std::string text;
  for (const Step& step : steps) text += StepText(step) + "\n";
  return text;
}

}  // namespace norvik::qel::random_test
