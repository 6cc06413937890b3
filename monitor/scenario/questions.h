// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Answers a scenario's questions with the library's getters.
#pragma once

#include <string>

#include "clients/client.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

struct Answer {
  std::string text = {};   // for people; empty if the service cannot be queried
  std::string fault = {};  // empty if the answer is the expected one
};

Answer Ask(const Question& question, Client& client);

}  // namespace norvik::qel::monitor
