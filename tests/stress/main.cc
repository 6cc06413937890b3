// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel_stress_test: far more of everything than a device ever sees, all that can happen at once,
// and what is left afterwards.
#include <malloc.h>
#include <sched.h>
#include <stdio.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "environment.h"
#include "hang_guard.h"
#include "pauses.h"
#include "process_state.h"
#include "quiet.h"
#include "quorvel/fake/deliveries.h"
#include "silent_process.h"
#include "subject.h"

namespace norvik::qel::stress {

namespace {

using fake::Delivery;
using fake::HoldDeliveries;
using Random = std::mt19937_64;

enum class Kind {
  kReports,  // of a service that lives; in some rounds it starts after its clients have come
  kDeaths,   // of the service, which comes back
};

// How many there are altogether, and at least in a round.
constexpr double kReports = 100'000;
constexpr double kDeaths = 10'000;
constexpr int kReportsOfRound = 1000;
constexpr int kHandlesOfRound = 10;  // where there are no deaths
constexpr int kDeathsOfRound = 50;
// Far longer than a round takes.
constexpr std::chrono::minutes kPatience(kSanitized ? 5 : 1);

// The fake platform keeps threads that it once needed: two pools of at most 16 for the program.
// There are the main thread and, under the sanitizers, one more.
constexpr long kOtherThreads = 16 + 16 + 1 + 1;
// What the allocator may need more after a storm than after a small one.
constexpr long kSlackKb = 4L * 1024;

// What has been done.
struct Done {
  std::atomic<int> reports = 0;
  std::atomic<int> deaths = 0;
  std::atomic<int> clients = 0;
  std::atomic<int> handles = 0;
};

// Values that follow each other; every round continues where the last one ended.
int NextValue() {
  static std::atomic<int> value{0};
  return value++ % 1'000'000;
}

void Deliver() {
  if (!fake::WaitUntilDelivered(std::chrono::hours(1))) Fail("something does not arrive");
}

// Waits until all has arrived and every other thread of the process sleeps; workers may pause.
void Settle() {
  Deliver();
  if (!WaitUntilQuiet()) Fail("a thread does not stop");
  Deliver();
}

// Waits until `seen` gives `expected`, and lets the pauses of the library's workers end meanwhile:
// for what the library has to bring about by itself. No worker may be ended meanwhile.
void Await(const char* what, const std::function<long()>& seen, long expected) {
  SetAwaited(what);
  while (seen() != expected) {
    EndPauses();
    sched_yield();
  }
  SetAwaited(nullptr);
}

// Every client of the handle hears of a report, two times: one that knows two values only has heard
// of one then, too.
void ExpectAllHear(Subject& subject, Handle& handle) {
  for (int i = 0; i < 2; ++i) {
    Settle();
    const int value = NextValue();
    subject.Report(value);
    for (int client = 0; client < subject.clients; ++client) {
      Await(
          "what a client has to hear", [&] { return handle.client(client).last.load(); },
          subject.Heard(client, value));
    }
  }
}

// Handles that come, are used and go. In every other one a client calls the library when it is
// called, also while its handle ends.
void MakeHandles(Subject& subject, bool strict, const std::atomic<bool>& over, Done& done) {
  // The latest ones' cookies stay readable: a call that comes too late is noticed.
  std::deque<Handle> gone;
  for (int round = 0; !over; ++round, ++done.handles) {
    Handle& handle = gone.emplace_back(subject);
    const bool calls = round % 2 == 0;
    if (calls) {
      handle.client(0).then = [&subject, &handle, used = handle.get(), round] {
        subject.Ask(used, round);
        // Refused or not: Deinit...() may have begun.
        static_cast<void>(subject.Register(used, 1, handle.client(1)));
        static_cast<void>(subject.Deregister(used, 0));
      };
    }
    for (int i = 0; i < subject.clients; ++i) handle.Register(i, strict && !calls);
    subject.Ask(handle.get(), round);
    for (int i = 0; round % 3 == 0 && i < subject.clients; ++i) {
      handle.Deregister(i, strict && !calls);
    }
    handle.Deinit();
    if (gone.size() > 64) gone.pop_front();
  }
}

// Deaths that are over before their notifications are handled, and such that come in bursts. After
// most of them the library gets the time to find the new service.
void KillAndStart(Subject& subject, int count, Random& random, long held, Done& done) {
  for (const int end = done.deaths + count; done.deaths < end;) {
    if (random() % 8 != 0) {
      const HoldDeliveries notifications(Delivery::kDeathNotification);
      subject.Kill();
      subject.Start();
      if (random() % 2 == 0) subject.Report(NextValue());
      ++done.deaths;
    } else {
      for (uint64_t burst = 1 + random() % 5; burst > 0; --burst, ++done.deaths) {
        subject.Kill();
        subject.Start();
      }
    }
    if (random() % 4 == 0) continue;
    SetAwaited("callbacks after a death");
    while (subject.held() < held && PausingWorkers() == 0) sched_yield();
    SetAwaited(nullptr);
  }
}

// In a round two threads report, two register and deregister clients of one handle, one makes
// handles and ends them, one asks questions. After it, every client that has stayed hears what is
// reported, and the service holds the callbacks of the handles that there are.
void Round(Subject& subject, Kind kind, int count, Random& random, Done& done) {
  subject.Kill();
  // Not with deaths: a registration that waits is dropped when the service dies once more.
  const bool late = kind == Kind::kReports && random() % 4 == 0;
  if (!late) subject.Start();
  const bool strict = kind == Kind::kReports && !late;
  std::array<Handle, 2> steady{Handle(subject), Handle(subject)};
  for (Handle& handle : steady) {
    for (int i = 0; i < subject.clients; ++i) handle.Register(i, true);
  }
  const long held = static_cast<long>(steady.size()) * subject.held_by_handle;
  Handle shared(subject);
  std::atomic<bool> over{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      while (!over) {
        subject.Report(NextValue());
        // No device sends faster than all can be handled for long; a queue would only grow.
        if (done.reports++ % 64 == 0) Deliver();
      }
    });
    threads.emplace_back([&, i, seed = random()] {
      Random own(seed);
      for (; !over; ++done.clients) {
        const auto client = i + 2 * static_cast<int>(own() % (subject.clients / 2));
        shared.Register(client, strict);
        shared.Deregister(client, strict);
      }
    });
  }
  threads.emplace_back([&] { MakeHandles(subject, strict, over, done); });
  threads.emplace_back([&] {
    for (int round = 0; !over; ++round) subject.Ask(steady[0].get(), round);
  });
  if (late) subject.Start();
  if (kind == Kind::kDeaths) {
    KillAndStart(subject, count, random, held, done);
  } else {
    const int reports = done.reports + count;
    const int handles = done.handles + kHandlesOfRound;
    for (int round = 0; done.reports < reports || done.handles < handles; ++round) {
      subject.Ask(steady[1].get(), round);
    }
  }
  over = true;
  for (std::thread& thread : threads) thread.join();
  shared.Deinit();
  for (int i = 0; i < 2; ++i) {
    Await(
        "the callbacks that the service has to hold", [&] { return subject.held(); }, held);
    for (Handle& handle : steady) ExpectAllHear(subject, handle);
  }
  for (Handle& handle : steady) handle.Deinit();
  Settle();
  ExpectEqual(subject.held(), 0L, "the number of callbacks held by the service");
}

struct Left {
  long descriptors = 0;
  long resident_kb = 0;  // 0 under the sanitizers, whose own memory grows with time
};

Left MeasureAtRest(Subject& subject) {
  subject.Kill();  // whose threads are not the program's
  // A thread that has been joined, or whose process has died, can be listed for a moment still.
  Await(
      "threads that have to end",
      [] {
        const long library = LibraryThreadCount();
        const long others = static_cast<long>(ThreadIds().size()) - library;
        return library + std::max(others - kOtherThreads, 0L);
      },
      0);
  Settle();
  Left left = {.descriptors = Descriptors()};
  if (kSanitized) return left;
  malloc_trim(0);
  left.resident_kb = ResidentBytes() / 1024;
  if (left.resident_kb == 0) Fail("the kernel does not tell the resident memory");
  return left;
}

// Rounds, for `count` reports or deaths or more.
void Storm(Subject& subject, Kind kind, int count, uint64_t seed, Done& done) {
  Random random(seed);
  const bool deaths = kind == Kind::kDeaths;
  const int of_round = deaths ? kDeathsOfRound : kReportsOfRound;
  for (int i = 0; i < count; i += of_round) {
    RestartHangGuard(deaths ? "deaths" : "reports", kPatience);
    Round(subject, kind, of_round, random, done);
  }
}

void RunStorm(const std::string& name, const Family& family, Kind kind, double counted,
              uint64_t seed) {
  RestartHangGuard("start", std::chrono::minutes(5));
  const std::unique_ptr<Subject> subject = family.make();
  const int count = std::max(1, static_cast<int>(counted));
  // A small one first: what is kept for ever has been made then.
  Done small;
  Storm(*subject, kind, std::min(count / 10, 500) + 1, seed + 1'000'000, small);
  const Left before = MeasureAtRest(*subject);
  const auto begin = std::chrono::steady_clock::now();
  Done done;
  Storm(*subject, kind, count, seed, done);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  const Left after = MeasureAtRest(*subject);
  printf(
      "%s: %d reports, %d deaths; %d clients and %d handles came and went (%.1f s)\n"
      "    descriptors %ld -> %ld, resident %.1f -> %.1f MB\n",
      name.c_str(), done.reports.load(), done.deaths.load(), done.clients.load(),
      done.handles.load(), took.count(), before.descriptors, after.descriptors,
      static_cast<double>(before.resident_kb) / 1024,
      static_cast<double>(after.resident_kb) / 1024);
  fflush(stdout);
  ExpectEqual(after.descriptors, before.descriptors, "the number of descriptors afterwards");
  ExpectTrue(after.resident_kb <= before.resident_kb + kSlackKb, "memory grows");
}

}  // namespace

}  // namespace norvik::qel::stress

// NOLINTNEXTLINE(bugprone-exception-escape): an exception may end the program
int main(int argc, char** argv) {
  using namespace norvik::qel::stress;  // NOLINT(google-build-using-namespace): its own program
  std::string only;
  double scale = 1;
  double seconds = 0;
  uint64_t seed = 1;
  CLI::App app(
      "100,000 reports and 10,000 deaths of the service in each family, while clients and handles "
      "come and go, and what they leave behind.");
  app.footer("Ends with 1 when something is not as documented, or more is left than there was.");
  app.add_option("--family", only, "this family alone: battery, sensor, thermal or thermal-hidl")
      ->check(CLI::IsMember(&kFamilies));
  app.add_option("--scale", scale, "this many times as many (1)")->check(CLI::PositiveNumber);
  app.add_option("--seconds", seconds,
                 "again with the next seeds until that much time has passed; once at least")
      ->check(CLI::PositiveNumber);
  app.add_option("--seed", seed, "of the first time (1)");
  CLI11_PARSE(app, argc, argv);
  // Memory is comparable only when the allocator does not make more room the more threads meet.
  mallopt(M_ARENA_MAX, 1);
  norvik::qel::SetUpSilentProcess();
  const auto begin = std::chrono::steady_clock::now();
  do {
    printf("seed %llu\n", static_cast<unsigned long long>(seed));
    for (const auto& [name, family] : kFamilies) {
      if (!only.empty() && only != name) continue;
      RunStorm(name, family, Kind::kReports, kReports * scale, seed);
      if (family.survives_deaths) RunStorm(name, family, Kind::kDeaths, kDeaths * scale, seed);
    }
    ++seed;
  } while (std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() <
           seconds);
  printf("all stress tests over, nothing left behind\n");
  return 0;
}
