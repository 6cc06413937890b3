// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

namespace norvik::qel::bench {

// The benchmarks of a file, registered after the command line, which determines the rounds.
class Registration {
 public:
  using Function = void (*)();
  explicit Registration(Function function) { Functions().push_back(function); }

  static void RegisterAll() {
    for (const Function function : Functions()) function();
  }

 private:
  static std::vector<Function>& Functions() {
    static std::vector<Function> functions;
    return functions;
  }
};

}  // namespace norvik::qel::bench
