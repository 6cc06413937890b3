#include <string>

#include "tools/commands.h"
#include "tools/options.h"
#include "tools/output.h"
#include "tools/performance.h"
#include "tools/recording_reader.h"

namespace norvik::qel::tool {

int Play(const Options& options, Output& output) {
  const std::string& path = options.operands.front();
  const Recording recording = ReadRecording(path);
  const std::string pace = options.step ? ", an event at each Enter." : ".";
  return Perform(recording, {.title = "Play", .introduction = "Playing " + path + pace}, options,
                 output);
}

}  // namespace norvik::qel::tool
