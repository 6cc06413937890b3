// What this process holds, as the kernel tells it.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>

namespace norvik::qel {

// How many threads have one of these names, of which the kernel keeps 15 characters. One that has
// been joined can be there for a moment still: ask with Eventually().
inline int ThreadsNamed(std::initializer_list<std::string_view> names) {
  int count = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string kept;
    std::getline(std::ifstream(task.path() / "comm"), kept);  // empty when it has just ended
    if (std::any_of(names.begin(), names.end(),
                    [&](std::string_view name) { return name.substr(0, 15) == kept; })) {
      ++count;
    }
  }
  return count;
}

inline int Descriptors() {
  const std::filesystem::directory_iterator entries("/proc/self/fd");
  return static_cast<int>(std::distance(begin(entries), end(entries)));
}

}  // namespace norvik::qel
