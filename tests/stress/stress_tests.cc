// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "stress_tests.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "guard.h"
#include "pauses.h"
#include "quorvel/fake/deliveries.h"

namespace norvik::qel::stress {

namespace {

using fake::Delivery;
using fake::HoldDeliveries;

std::string Number(long count, const char* what) {
  return std::to_string(count) + " " + what;
}

// Values that follow each other; every stress test goes on where the last one ended.
int NextValue() {
  static std::atomic<int> value{0};
  return value++ % 1'000'000;
}

}  // namespace

void Client::Hear(int value, void* cookie) {
  auto* const self = static_cast<Client*>(cookie);
  if (self->closed) Fail("a client is called after its handle has gone");
  self->last = value;
  ++self->calls;
  if (self->then) self->then();
}

void Handle::RegisterAll() {
  for (int i = 0; i < subject_.clients(); ++i) ExpectEqual(Register(i), 0, "a registration");
}

void Handle::DeregisterAll() {
  for (int i = 0; i < subject_.clients(); ++i) ExpectEqual(Deregister(i), 0, "a deregistration");
}

void Handle::Deinit() {
  if (handle_ == nullptr) return;
  subject_.Deinit(&handle_);
  Expect(handle_ == nullptr, "a handle is still there");
  for (Client& client : clients_) client.closed = true;
}

void AwaitHeld(const Subject& subject, size_t handles) {
  Await(
      "the callbacks that the service has to hold",
      [&] { return static_cast<long>(subject.held()); },
      static_cast<long>(handles * subject.held_by_handle()));
}

void ExpectAllHear(Subject& subject, Handle& handle) {
  // Two, so that what knows two values only hears of one, too.
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

std::string ReportStress(Subject& subject, int count, uint64_t seed) {
  subject.Start();
  Handle steady(subject);
  steady.RegisterAll();
  Handle busy(subject);
  std::atomic<int> left{count};
  std::atomic<int> reporting{3};
  std::vector<std::thread> threads;
  threads.reserve(6);
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      for (int number; (number = left--) > 0;) {
        subject.Report(NextValue());
        // Nobody sends faster than all can be handled for long; a queue would only grow.
        if (number % 64 == 0) Deliver();
        if (number % 1024 == 0) UnderWay("reports");
      }
      --reporting;
    });
  }
  std::atomic<long> came{0};
  std::atomic<long> handles{0};
  // Two threads register and deregister on the same handle.
  for (int first = 0; first < 2; ++first) {
    threads.emplace_back([&, first] {
      std::mt19937_64 random(seed + static_cast<uint64_t>(first));
      while (reporting > 0) {
        const int client =
            first + 2 * static_cast<int>(random() % static_cast<uint64_t>(subject.clients() / 2));
        ExpectEqual(busy.Register(client), 0, "a registration");
        ExpectEqual(busy.Deregister(client), 0, "a deregistration");
        ++came;
      }
    });
  }
  threads.emplace_back([&] {
    // The latest ones' cookies stay readable: a call that comes too late is noticed.
    std::deque<std::unique_ptr<Handle>> gone;
    for (int round = 0; reporting > 0; ++round, ++handles) {
      auto handle = std::make_unique<Handle>(subject);
      handle->RegisterAll();
      subject.Ask(handle->get(), round);
      if (round % 2 == 0) handle->DeregisterAll();
      handle->Deinit();
      gone.push_back(std::move(handle));
      if (gone.size() > 64) gone.pop_front();
    }
  });
  for (int round = 0; reporting > 0; ++round) subject.Ask(steady.get(), round);
  for (std::thread& thread : threads) thread.join();
  AwaitHeld(subject, 1);
  ExpectAllHear(subject, steady);
  steady.Deinit();
  busy.Deinit();
  Settle();
  ExpectEqual(static_cast<long>(subject.held()), 0, "callbacks held by the service");
  return Number(count, "reports, ") + Number(came, "clients and ") +
         Number(handles, "handles came and went");
}

std::string RestartStress(Subject& subject, int count, uint64_t seed) {
  std::mt19937_64 random(seed);
  subject.Start();
  std::array<Handle, 2> handles{Handle(subject), Handle(subject)};
  for (Handle& handle : handles) handle.RegisterAll();
  long before_notification = 0;
  long asked = 0;
  for (int done = 0; done < count;) {
    UnderWay("restarts");
    // Others ask meanwhile, and may find the new service before the library's worker does.
    std::atomic<bool> stop{false};
    std::thread asking([&] {
      for (int round = 0; !stop; ++round, ++asked) subject.Ask(handles[0].get(), round);
    });
    const int end = std::min(count, done + 100);
    while (done < end) {
      if (random() % 8 != 0) {
        const HoldDeliveries notifications(Delivery::kDeathNotification);
        subject.Kill();
        subject.Start();
        if (random() % 2 == 0) subject.Report(NextValue());
        ++before_notification;
        ++done;
      } else {
        for (uint64_t burst = 1 + random() % 5; burst > 0 && done < end; --burst, ++done) {
          subject.Kill();
          subject.Start();
        }
      }
      if (random() % 4 != 0) AwaitHeld(subject, handles.size());
    }
    stop = true;
    asking.join();
    AwaitHeld(subject, handles.size());
    for (Handle& handle : handles) ExpectAllHear(subject, handle);
    AwaitHeld(subject, handles.size());
  }
  for (Handle& handle : handles) handle.Deinit();
  Settle();
  ExpectEqual(static_cast<long>(subject.held()), 0, "callbacks held by the service");
  return Number(count, "deaths (") +
         Number(before_notification, "over before the death notification was handled), ") +
         Number(asked, "questions meanwhile; all clients alive again");
}

std::string OutageStress(Subject& subject, int count, uint64_t seed) {
  std::mt19937_64 random(seed);
  subject.Start();
  std::array<Handle, 2> handles{Handle(subject), Handle(subject)};
  for (Handle& handle : handles) handle.RegisterAll();
  const auto workers = static_cast<long>(handles.size());
  int survived = 0;
  int given_up = 0;
  while (survived < count || given_up < count) {
    UnderWay("outages");
    Settle();
    subject.Kill();
    Settle();
    const bool longer = survived == count || (given_up < count && random() % 2 == 0);
    const auto all_pauses = static_cast<uint64_t>(subject.pauses());
    // The first attempt has failed. Each pause that ends brings another one; after the last one
    // there is a pause, too.
    const uint64_t pauses = longer ? all_pauses : random() % (all_pauses - 1);
    for (uint64_t i = 0; i < pauses; ++i) {
      // More in the pause in which one worker hands over to another.
      ExpectEqual(static_cast<long>(PausingWorkers()) >= workers, true, "all handles pause");
      EndPauses();
      Settle();
    }
    if (!longer) {
      subject.Start();
      AwaitHeld(subject, handles.size());
      ++survived;
    } else {
      ExpectEqual(static_cast<long>(PausingWorkers()), 0, "workers that still pause");
      subject.Start();
      Settle();
      ExpectEqual(static_cast<long>(subject.held()), 0, "callbacks after giving up");
      ++given_up;
      if (subject.revives_by_question() && random() % 2 == 0) {
        for (Handle& handle : handles) subject.Ask(handle.get(), 0);
      } else {
        for (Handle& handle : handles) {
          handle.DeregisterAll();
          handle.RegisterAll();
        }
      }
      AwaitHeld(subject, handles.size());
    }
    for (Handle& handle : handles) ExpectAllHear(subject, handle);
  }
  for (Handle& handle : handles) handle.Deinit();
  Settle();
  ExpectEqual(static_cast<long>(subject.held()), 0, "callbacks held by the service");
  return Number(survived, "outages survived, ") +
         Number(given_up, "longer than the retries: given up as documented, and brought back");
}

std::string LateStress(Subject& subject, int count, uint64_t seed) {
  std::mt19937_64 random(seed);
  long pauses = 0;
  for (int round = 0; round < count; ++round) {
    UnderWay("services that are late");
    subject.Kill();
    Handle handle(subject);
    handle.RegisterAll();
    if (random() % 4 == 0) handle.DeregisterAll();
    const bool waits = random() % 4 != 0;
    // Fewer than any family's attempts.
    for (uint64_t i = random() % 4; waits && i > 0; --i, ++pauses) {
      Settle();
      EndPauses();
    }
    for (int i = 0; i < subject.clients(); ++i) {
      // Those that have left come anew; a client that waits is known, or is taken for itself.
      static_cast<void>(handle.Deregister(i));
      ExpectEqual(handle.Register(i), 0, "a registration");
    }
    subject.Start();
    AwaitHeld(subject, 1);
    ExpectAllHear(subject, handle);
    handle.Deinit();
    Settle();
    ExpectEqual(static_cast<long>(subject.held()), 0, "callbacks held by the service");
  }
  return Number(count, "services came after their clients, ") +
         Number(pauses, "pauses before; all clients alive");
}

}  // namespace norvik::qel::stress
