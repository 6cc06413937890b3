// Asks the library's getters what a scenario wants to know.
#pragma once

#include <string>

#include "tools/all_clients.h"
#include "tools/recording.h"

namespace norvik::qel::tool {

struct Answer {
  std::string text;   // for people; empty when there was none
  std::string fault;  // empty when it is what the question expects
};

Answer Ask(const Question& question, AllClients& clients);

}  // namespace norvik::qel::tool
