#include "library_threads.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>

namespace norvik::qel::bench {

namespace {

// The kernel keeps 15 characters of a name.
bool IsOfTheLibrary(const std::filesystem::path& task) {
  static const std::set<std::string> names = {
      "battery_reconne", "battery_callbac", "sensor_poll",     "sensor_callback",
      "sensor_reconnec", "thermal_reconne", "thermal_restore", "thermal_callbac"};
  std::string name;
  std::getline(std::ifstream(task / "comm"), name);  // empty when it has just ended
  return names.contains(name);
}

// Both kinds: those of a thread that waits, and those of one whose time was up.
int64_t ContextSwitchesOf(const std::filesystem::path& task) {
  int64_t sum = 0;
  std::ifstream status(task / "status");
  std::string field;
  while (status >> field) {
    if (!field.ends_with("voluntary_ctxt_switches:")) continue;
    int64_t count = 0;
    status >> count;
    sum += count;
  }
  return sum;
}

}  // namespace

ContextSwitches LibraryContextSwitches() {
  ContextSwitches switches;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    if (!IsOfTheLibrary(task)) continue;
    switches[std::stoi(task.path().filename())] = ContextSwitchesOf(task);
  }
  return switches;
}

int LibraryThreadCount() {
  return static_cast<int>(LibraryContextSwitches().size());
}

bool LibraryThreadsSettle(int count) {
  constexpr std::chrono::milliseconds kBetweenLooks(5);
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  ContextSwitches earlier = LibraryContextSwitches();
  while (std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(kBetweenLooks);
    ContextSwitches now = LibraryContextSwitches();
    if (static_cast<int>(now.size()) == count && now == earlier) return true;
    earlier = std::move(now);
  }
  return false;
}

}  // namespace norvik::qel::bench
