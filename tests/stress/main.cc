// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel_stress_test: far more reports, deaths, clients and handles than on a device, all at once,
// then a check that nothing leaks.
#include <getopt.h>
#include <malloc.h>
#include <sched.h>
#include <stdio.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
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

using Random = std::mt19937_64;

enum class Kind {
  kReports,  // the service stays alive; in some rounds it starts after its clients have registered
  kDeaths,   // the service dies and restarts
};

// The totals, and the least numbers of a round.
constexpr double kReports = 100'000;
constexpr double kDeaths = 10'000;
constexpr int kReportsOfRound = 1000;
constexpr int kHandlesOfRound = 10;  // in rounds without deaths
constexpr int kDeathsOfRound = 50;
// Limit for one round; far longer than a round takes.
constexpr std::chrono::minutes kPatience(kSanitized ? 5 : 1);

// The fake platform keeps its threads: two pools of at most 16. The other two are the main thread
// and a sanitizer's thread.
constexpr long kOtherThreads = 16 + 16 + 1 + 1;
// Allowed growth of resident memory between the small first run and the full one.
constexpr long kSlackKb = 4L * 1024;

// The numbers of operations so far.
struct Done {
  std::atomic<int> reports = 0;
  std::atomic<int> deaths = 0;
  std::atomic<int> clients = 0;
  std::atomic<int> handles = 0;
};

// Returns the next value to report, in one sequence for all rounds.
int NextValue() {
  static std::atomic<int> value{0};
  return value++ % 1'000'000;
}

void Deliver() {
  if (!fake::WaitUntilDelivered(std::chrono::hours(1))) Fail("something does not arrive");
}

// Waits until all calls are delivered and every other thread of the process sleeps or pauses.
void Settle() {
  Deliver();
  if (!WaitUntilQuiet()) Fail("a thread does not stop");
  Deliver();
}

// Waits until `seen` returns `expected`, and ends the pauses of the library's workers meanwhile. No
// worker may be ended by Deinit...() meanwhile.
void Await(const char* what, const std::function<long()>& seen, long expected) {
  SetAwaited(what);
  while (seen() != expected) {
    EndPauses();
    sched_yield();
  }
  SetAwaited(nullptr);
}

// Every client of the handle must receive two reports. Two, because a client with only two values
// may already have the first one.
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

// Creates, uses and destroys handles. In every second one a client calls the library from its
// callback, also while its handle is being destroyed.
void MakeHandles(Subject& subject, bool strict, const std::atomic<bool>& over, Done& done) {
  // The cookies of the last handles are kept, so that a late call is noticed.
  std::deque<Handle> gone;
  for (int round = 0; !over; ++round, ++done.handles) {
    Handle& handle = gone.emplace_back(subject);
    const bool calls = round % 2 == 0;
    if (calls) {
      handle.client(0).then = [&subject, &handle, used = handle.get(), round] {
        subject.Ask(used, round);
        // May be refused, because Deinit...() may have begun.
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

// Restarts the service before its death notification is delivered, or several times in a burst.
// After most restarts the library gets time to find the new service.
void KillAndStart(Subject& subject, int count, Random& random, long held, Done& done) {
  for (const int end = done.deaths + count; done.deaths < end;) {
    if (random() % 8 != 0) {
      const fake::HoldDeliveries notifications(fake::Delivery::kDeathNotification);
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

// In a round two threads report, two register and deregister clients of one handle, one creates and
// destroys handles, and one queries. Afterwards every remaining client must receive reports, and
// the service must hold exactly the callbacks of the remaining handles.
void Round(Subject& subject, Kind kind, int count, Random& random, Done& done) {
  subject.Kill();
  // Not with deaths: a waiting registration is dropped if the service dies again.
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
        // Without this the queue of reports would grow without limit.
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
  subject.Kill();  // ends the service's threads
  // The kernel may still list a thread for a moment after it was joined or its process has died.
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

// Runs rounds until there were `count` reports or deaths.
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
  // A small run first, so that allocations that are kept forever have been made.
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
  constexpr option kOptions[] = {
      {"family", 1, nullptr, 'f'}, {"seed", 1, nullptr, 's'}, {"scale", 1, nullptr, 'x'}, {}};
  std::string only;
  std::map<int, double> values = {{'s', 1}, {'x', 1}};
  for (int letter; (letter = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    const std::string value = optarg == nullptr ? "" : optarg;
    if (letter == 'f' && kFamilies.contains(value)) {
      only = value;
    } else if (value.find_first_not_of("0123456789.") != std::string::npos ||
               (values[letter] = strtod(value.c_str(), nullptr)) == 0) {
      fprintf(stderr,
              "use [--family battery|sensor|thermal|thermal-hidl] [--seed N] [--scale N]\n");
      return 1;
    }
  }
  // One arena: otherwise the allocator's memory would depend on how many threads run at once.
  mallopt(M_ARENA_MAX, 1);
  norvik::qel::SetUpSilentProcess();
  const auto seed = static_cast<uint64_t>(values['s']);
  const double scale = values['x'];
  for (const auto& [name, family] : kFamilies) {
    if (!only.empty() && only != name) continue;
    RunStorm(name, family, Kind::kReports, kReports * scale, seed);
    if (family.survives_deaths) RunStorm(name, family, Kind::kDeaths, kDeaths * scale, seed);
  }
  printf("all stress tests over, nothing left behind\n");
  return 0;
}
