// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The threads, descriptors and memory of this process, as reported by the kernel.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::qel {

// The ids of all threads, including the caller's. The kernel may list a joined thread for a moment:
// use Eventually().
inline std::vector<pid_t> ThreadIds() {
  std::vector<pid_t> ids;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    ids.push_back(std::stoi(task.path().filename()));
  }
  return ids;
}

// The content of /proc/self/task/ID/FILE; empty if the thread has just ended.
inline std::string ReadThreadFile(pid_t id, const char* file) {
  std::ifstream in("/proc/self/task/" + std::to_string(id) + "/" + file);
  std::string text;
  std::getline(in, text, '\0');  // an iterator would throw when the thread ends meanwhile
  return text;
}

// The thread's name, of which the kernel keeps 15 characters.
inline std::string ThreadName(pid_t id) {
  std::string name = ReadThreadFile(id, "comm");
  if (name.ends_with('\n')) name.pop_back();
  return name;
}

// The calling thread's name.
inline std::string ThreadName() {
  return ThreadName(gettid());
}

// The threads that have one of these names.
inline std::vector<pid_t> ThreadIdsNamed(std::initializer_list<std::string_view> names) {
  std::vector<pid_t> ids = ThreadIds();
  std::erase_if(ids, [&](pid_t id) {
    const std::string kept = ThreadName(id);
    return std::none_of(names.begin(), names.end(),
                        [&](std::string_view name) { return name.substr(0, 15) == kept; });
  });
  return ids;
}

// The workers of all handles. Compares full names, because a test program and its threads may also
// be called thermal_....
inline std::vector<pid_t> LibraryThreadIds() {
  return ThreadIdsNamed({"battery_callback", "battery_reconnect", "sensor_callback", "sensor_poll",
                         "sensor_reconnect", "thermal_callback", "thermal_reconnect",
                         "thermal_restore"});
}

inline int LibraryThreadCount() {
  return static_cast<int>(LibraryThreadIds().size());
}

// The resident memory; 0 if the kernel does not report it. Does not use statm, which may lag behind
// by some dozen pages per processor.
inline int64_t ResidentBytes() {
  std::ifstream rollup("/proc/self/smaps_rollup");
  std::string field;
  while (rollup >> field) {
    int64_t kilobytes = 0;
    if (field == "Rss:" && rollup >> kilobytes) return kilobytes * 1024;
  }
  return 0;
}

inline int Descriptors() {
  const std::filesystem::directory_iterator entries("/proc/self/fd");
  return static_cast<int>(std::distance(begin(entries), end(entries)));
}

}  // namespace norvik::qel
