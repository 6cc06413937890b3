// The families of values that the monitor knows.
#pragma once

#include <span>
#include <string_view>

namespace norvik::qel::tool {

struct Options;
class Output;

// The commands return the program's exit code.
struct Family {
  std::string_view name;
  std::string_view service;  // whose events belong to it
  int (*watch)(const Options& options, Output& output);
  int (*get)(const Options& options, Output& output);
};

std::span<const Family> Families();

}  // namespace norvik::qel::tool
