#include "guard.h"

#include <malloc.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "environment.h"
#include "pauses.h"
#include "quiet.h"
#include "quorvel/fake/deliveries.h"

namespace norvik::qel::stress {

namespace {

constexpr unsigned kHangSeconds = 300;

std::atomic<const char*> under_way{"nothing"};
std::atomic<const char*> awaited{nullptr};
std::atomic<long> awaited_seen{0};

void Print(const char* text) {
  static_cast<void>(!write(STDERR_FILENO, text, strlen(text)));
}

// In a signal's handler: nothing but what may be called there.
void OnHang(int /*signal*/) {
  Print("quorvel_stress_test: hangs: ");
  Print(under_way);
  if (const char* const what = awaited; what != nullptr) {
    Print(", waiting for ");
    Print(what);
  }
  Print("\n");
  abort();
}

bool IsOfLibrary(const std::string& thread) {
  for (const char* prefix : {"battery_", "sensor_", "thermal_"}) {
    if (thread.starts_with(prefix)) return true;
  }
  return false;
}

}  // namespace

void Fail(const std::string& what) {
  fprintf(stderr, "quorvel_stress_test: %s: %s\n", under_way.load(), what.c_str());
  fflush(nullptr);
  _exit(1);
}

void ExpectEqual(long seen, long expected, const char* what) {
  if (seen == expected) return;
  Fail(std::string(what) + ": " + std::to_string(seen) + ", expected " + std::to_string(expected));
}

void UnderWay(const char* what) {
  static const bool guarded = signal(SIGALRM, OnHang) != SIG_ERR;
  static_cast<void>(guarded);
  under_way = what;
  alarm(kHangSeconds);
}

void Await(const char* what, const std::function<long()>& seen, long expected) {
  awaited = what;
  while ((awaited_seen = seen()) != expected) {
    EndPauses();
    sched_yield();
  }
  awaited = nullptr;
}

void Deliver() {
  if (!fake::WaitUntilDelivered(std::chrono::hours(1))) Fail("something does not arrive");
}

void Settle() {
  Deliver();
  if (!WaitUntilQuiet()) Fail("a thread does not come to rest");
  Deliver();
}

Figures Measure() {
  Figures figures;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    if (name.empty()) continue;  // it has just ended
    ++(IsOfLibrary(name) ? figures.library_threads : figures.other_threads);
  }
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  figures.descriptors = std::distance(begin(descriptors), end(descriptors));
  if (kSanitized) return figures;  // what a sanitizer keeps says nothing
  malloc_trim(0);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  figures.resident_kb = pages * (sysconf(_SC_PAGESIZE) / 1024);
  return figures;
}

}  // namespace norvik::qel::stress
