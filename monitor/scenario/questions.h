// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Asks the library's getters what a scenario wants to know.
#pragma once

#include <string>

#include "clients/all_clients.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

struct Answer {
  std::string text = {};   // for people; empty when there was none
  std::string fault = {};  // empty when it is what the question expects
};

Answer Ask(const Question& question, AllClients& clients);

}  // namespace norvik::qel::monitor
