// What the user asks for.
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/device.h"
#include "tools/families.h"

namespace norvik::qel::tool {

struct Options {
  enum class Command { kHelp, kVersion, kWatch, kGet, kDump, kDemo };
  Command command = Command::kHelp;
  const Family* family = nullptr;          // for watch and get
  std::vector<std::string> operands = {};  // of the family
  const DeviceType* device = nullptr;
  bool json = false;
  bool verbose = false;
  std::optional<std::chrono::milliseconds> duration;
};

// The user has asked for something that there is not; the text says what is wrong.
class UsageError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

Options ParseOptions(int argc, char** argv);

}  // namespace norvik::qel::tool
