// Plays a recording from its beginning to its end.
#pragma once

#include <string>

#include "tools/options.h"
#include "tools/output.h"
#include "tools/recording.h"

namespace norvik::qel::tool {

struct Announcement {
  std::string title;              // what the summary of a scenario calls it
  std::string introduction = {};  // said before the first event, if anything
};

// Returns the program's exit code. Throws std::runtime_error before anything is played when the
// recording cannot be.
int Perform(const Recording& recording, const Announcement& announcement, const Options& options,
            Output& output);

}  // namespace norvik::qel::tool
