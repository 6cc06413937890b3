// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "storm.h"

#include <sched.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <random>
#include <thread>
#include <vector>

#include "environment.h"
#include "hang_guard.h"
#include "pauses.h"
#include "quiet.h"
#include "quorvel/fake/deliveries.h"

namespace norvik::qel::stress {

namespace {

using fake::Delivery;
using fake::HoldDeliveries;
using Random = std::mt19937_64;

// Far longer than a round takes.
constexpr std::chrono::minutes kPatience(kSanitized ? 5 : 1);
constexpr int kReportsOfRound = 1000;
constexpr int kHandlesOfRound = 10;  // at least, where there are no deaths
constexpr int kDeathsOfRound = 50;

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

void ExpectDone(int result, bool strict, const char* what) {
  if (strict || result != -EINVAL) ExpectEqual(result, 0, what);
}

void Deliver() {
  if (!fake::WaitUntilDelivered(std::chrono::hours(1))) Fail("something does not arrive");
}

// Every client of the handle hears of a report, two times: one that knows two values only has heard
// of one then, too.
void ExpectAllHear(Subject& subject, Handle& handle) {
  for (int i = 0; i < 2; ++i) {
    Settle();
    const int value = NextValue();
    subject.Report(value);
    for (int client = 0; client < subject.clients(); ++client) {
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
    for (int i = 0; i < subject.clients(); ++i) handle.Register(i, strict && !calls);
    subject.Ask(handle.get(), round);
    for (int i = 0; round % 3 == 0 && i < subject.clients(); ++i) {
      handle.Deregister(i, strict && !calls);
    }
    handle.Deinit();
    if (gone.size() > 64) gone.pop_front();
  }
}

// Deaths that are over before their notifications are handled, and such that come in bursts. After
// most of them the library gets the time to find the new service.
void KillAndStart(Subject& subject, int count, Random& random, size_t held, Done& done) {
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

void Round(Subject& subject, Kind kind, int count, Random& random, Done& done) {
  subject.Kill();
  // Not with deaths: a registration that waits is dropped when the service dies once more.
  const bool late = kind == Kind::kReports && random() % 4 == 0;
  if (!late) subject.Start();
  const bool strict = kind == Kind::kReports && !late;
  std::array<Handle, 2> steady{Handle(subject), Handle(subject)};
  for (Handle& handle : steady) {
    for (int i = 0; i < subject.clients(); ++i) handle.Register(i, true);
  }
  const size_t held = steady.size() * subject.held_by_handle();
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
        const auto client = i + 2 * static_cast<int>(own() % (subject.clients() / 2));
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
        "the callbacks that the service has to hold",
        [&] { return static_cast<long>(subject.held()); }, static_cast<long>(held));
    for (Handle& handle : steady) ExpectAllHear(subject, handle);
  }
  for (Handle& handle : steady) handle.Deinit();
  Settle();
  ExpectEqual(static_cast<long>(subject.held()), 0, "callbacks held by the service");
}

}  // namespace

void Fail(const std::string& what) {
  fprintf(stderr, "quorvel_stress_test: %s: %s\n", UnderWayNow(), what.c_str());
  fflush(nullptr);
  _exit(1);
}

void ExpectEqual(long seen, long expected, const char* what) {
  if (seen == expected) return;
  Fail(std::string(what) + ": " + std::to_string(seen) + ", expected " + std::to_string(expected));
}

void Client::Hear(int value, void* cookie) {
  auto* const self = static_cast<Client*>(cookie);
  if (self->closed) Fail("a client is called after the end of its handle");
  self->last = value;
  if (self->then) self->then();
}

void Handle::Register(int number, bool strict) {
  ExpectDone(subject_.Register(handle_, number, client(number)), strict, "a registration");
}

void Handle::Deregister(int number, bool strict) {
  ExpectDone(subject_.Deregister(handle_, number), strict, "a deregistration");
}

void Handle::Deinit() {
  if (handle_ == nullptr) return;
  subject_.Deinit(&handle_);
  if (handle_ != nullptr) Fail("a handle is still there");
  for (Client& client : clients_) client.closed = true;
}

void Await(const char* what, const std::function<long()>& seen, long expected) {
  SetAwaited(what);
  while (seen() != expected) {
    EndPauses();
    sched_yield();
  }
  SetAwaited(nullptr);
}

void Settle() {
  Deliver();
  if (!WaitUntilQuiet()) Fail("a thread does not stop");
  Deliver();
}

std::string Storm(Subject& subject, Kind kind, int count, uint64_t seed) {
  Random random(seed);
  Done done;
  const bool deaths = kind == Kind::kDeaths;
  const int of_round = deaths ? kDeathsOfRound : kReportsOfRound;
  for (int i = 0; i < count; i += of_round) {
    RestartHangGuard(deaths ? "deaths" : "reports", kPatience);
    Round(subject, kind, of_round, random, done);
  }
  return std::to_string(done.reports) + " reports, " + std::to_string(done.deaths) + " deaths; " +
         std::to_string(done.clients) + " clients and " + std::to_string(done.handles) +
         " handles came and went";
}

}  // namespace norvik::qel::stress
