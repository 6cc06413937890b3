#include "quiet.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <string>
#include <string_view>

namespace norvik::qel {

namespace {

// By thread: how often it has left a processor, on its own and otherwise.
using Look = std::map<std::string, std::string>;

std::string ReadStatus(int folder, const char* thread) {
  char path[64];
  snprintf(path, sizeof path, "%s/status", thread);
  const int file = openat(folder, path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};  // it has just ended
  char text[4096];
  const ssize_t size = read(file, text, sizeof text);
  close(file);
  return size > 0 ? std::string(text, static_cast<size_t>(size)) : std::string();
}

// False when a thread is awake.
bool LookAtThreads(Look& look) {
  look.clear();
  DIR* const tasks = opendir("/proc/self/task");
  const std::string self = std::to_string(gettid());
  bool asleep = true;
  while (const dirent* entry = readdir(tasks)) {
    if (entry->d_name[0] == '.' || entry->d_name == self) continue;
    const std::string status = ReadStatus(dirfd(tasks), entry->d_name);
    const size_t switches = status.find("voluntary_ctxt_switches:");
    if (status.find("State:\tS") == std::string::npos || switches == std::string::npos) {
      asleep = false;
      break;
    }
    look[entry->d_name] = status.substr(switches);
  }
  closedir(tasks);
  return asleep;
}

}  // namespace

bool WaitUntilQuiet() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  Look first;
  Look second;
  while (!LookAtThreads(first) || !LookAtThreads(second) || first != second) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    sched_yield();
  }
  return true;
}

}  // namespace norvik::qel
