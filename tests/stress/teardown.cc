// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A handle that goes at every point of what can be under way.
#include <array>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <utility>

#include "guard.h"
#include "pauses.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/gate.h"
#include "stress_tests.h"

namespace norvik::qel::stress {

namespace {

using fake::Delivery;
using fake::Gate;
using fake::HoldDeliveries;
using fake::Outcome;

void AwaitArrival(Gate& gate, const char* what) {
  if (!gate.WaitForArrivals(1, std::chrono::hours(1))) Fail(what);
}

// Ends the handle while something is kept at the gate that the end has to wait for.
void DeinitWhileHeld(Handle& handle, Gate& gate) {
  std::thread ending([&] { handle.Deinit(); });
  Settle();  // it has come as far as it can
  Expect(handle.get() != nullptr, "a handle is gone before what it has to wait for");
  gate.Open();
  ending.join();
}

// The service dies; the death notification is about to be handled.
void DeathNotificationHeld(Subject& subject) {
  subject.Start();
  Handle handle(subject);
  handle.RegisterAll();
  Settle();
  HoldDeliveries notifications(Delivery::kDeathNotification);
  subject.Kill();
  if (!notifications.WaitForHeld(1, std::chrono::hours(1))) Fail("no death notification");
  handle.Deinit();
  subject.Start();
  // It may well have the same address.
  Handle successor(subject);
  successor.RegisterAll();
  notifications.Release();
  AwaitHeld(subject, 1);
  ExpectAllHear(subject, successor);
  AwaitHeld(subject, 1);
}

void ReportHeld(Subject& subject) {
  subject.Start();
  Handle handle(subject);
  handle.RegisterAll();
  Settle();
  const HoldDeliveries reports(Delivery::kOneway);
  subject.Report(std::rand() % 1000);
  subject.Report(std::rand() % 1000 + 1000);
  handle.Deinit();
}

void InPauseAfterDeath(Subject& subject) {
  subject.Start();
  Handle handle(subject);
  handle.RegisterAll();
  Settle();
  subject.Kill();
  Settle();
  ExpectEqual(static_cast<long>(PausingWorkers()), 1, "workers that pause");
  handle.Deinit();
  ExpectEqual(static_cast<long>(PausingWorkers()), 0, "workers that still pause");
  subject.Start();
}

void InPauseBeforeService(Subject& subject) {
  subject.Kill();
  Handle handle(subject);
  handle.RegisterAll();
  Settle();
  ExpectEqual(static_cast<long>(PausingWorkers()), 1, "workers that pause");
  handle.Deinit();
  ExpectEqual(static_cast<long>(PausingWorkers()), 0, "workers that still pause");
}

void InAttemptAfterDeath(Subject& subject) {
  subject.Start();
  Handle handle(subject);
  handle.RegisterAll();
  Settle();
  const auto gate = std::make_shared<Gate>();
  {
    const HoldDeliveries notifications(Delivery::kDeathNotification);
    subject.Kill();
    subject.enlist().Then(Outcome::After(gate));
    subject.Start();
  }
  AwaitArrival(*gate, "no attempt");
  DeinitWhileHeld(handle, *gate);
}

void InAttemptBeforeService(Subject& subject) {
  subject.Kill();
  Handle handle(subject);
  handle.RegisterAll();
  Settle();
  const auto gate = std::make_shared<Gate>();
  subject.enlist().Then(Outcome::After(gate));
  subject.Start();
  EndPauses();
  AwaitArrival(*gate, "no attempt");
  DeinitWhileHeld(handle, *gate);
}

// With `calls` the client registers and deregisters others once it is let go.
void InDispatch(Subject& subject, bool calls) {
  subject.Start();
  Handle handle(subject);
  Gate gate;
  handle.client(0).then = [&, done = false]() mutable {
    if (std::exchange(done, true)) return;
    void* const used = handle.get();
    gate.Pass();
    if (!calls) return;
    for (const int other : {1, 1, 2}) {
      // Refused or not: Deinit...() has begun.
      static_cast<void>(subject.Register(used, other, handle.client(other)));
      subject.Ask(used, other);
      static_cast<void>(subject.Deregister(used, other));
    }
    static_cast<void>(subject.Deregister(used, 0));
  };
  ExpectEqual(handle.Register(0), 0, "a registration");
  AwaitArrival(gate, "no call");
  DeinitWhileHeld(handle, gate);
}

// Another thread registers with another handle, and the service lets it wait.
void InRegistrationOfAnother(Subject& subject) {
  subject.Start();
  Handle handle(subject);
  handle.RegisterAll();
  Settle();
  Handle other(subject);
  const auto gate = std::make_shared<Gate>();
  subject.enlist().Then(Outcome::After(gate));
  std::thread registering([&] { other.RegisterAll(); });
  AwaitArrival(*gate, "no registration");
  handle.Deinit();
  gate->Open();
  registering.join();
  AwaitHeld(subject, 1);
  ExpectAllHear(subject, other);
}

// Everything at once, in no order; deaths where the family survives them.
void AmidEverything(Subject& subject, uint64_t seed) {
  subject.Start();
  Handle handle(subject);
  handle.RegisterAll();
  std::thread reporting([&] {
    for (int i = 0; i < 20; ++i) subject.Report(i);
  });
  std::thread dying([&] {
    for (uint64_t i = seed % 4; subject.pauses() > 0 && i > 0; --i) {
      subject.Kill();
      subject.Start();
    }
  });
  handle.Deinit();
  reporting.join();
  dying.join();
}

struct Point {
  void (*end)(Subject&, uint64_t random);
  bool of_death = false;  // only where the family survives its service's death
};

constexpr std::array kPoints = {
    Point{[](Subject& subject, uint64_t) { DeathNotificationHeld(subject); }, true},
    Point{[](Subject& subject, uint64_t) { InPauseAfterDeath(subject); }, true},
    Point{[](Subject& subject, uint64_t) { InAttemptAfterDeath(subject); }, true},
    Point{[](Subject& subject, uint64_t) { InPauseBeforeService(subject); }},
    Point{[](Subject& subject, uint64_t) { InAttemptBeforeService(subject); }},
    Point{[](Subject& subject, uint64_t) { ReportHeld(subject); }},
    Point{[](Subject& subject, uint64_t) { InDispatch(subject, false); }},
    Point{[](Subject& subject, uint64_t) { InDispatch(subject, true); }},
    Point{[](Subject& subject, uint64_t) { InRegistrationOfAnother(subject); }},
    Point{AmidEverything},
};

}  // namespace

std::string TeardownStress(Subject& subject, int count, uint64_t seed) {
  std::mt19937_64 random(seed);
  long done = 0;
  long points = 0;
  for (const Point& point : kPoints) {
    if (point.of_death && subject.pauses() == 0) continue;
    ++points;
    for (int round = 0; round < count; ++round, ++done) {
      UnderWay("ends of handles");
      point.end(subject, random());
      Settle();
      ExpectEqual(static_cast<long>(subject.held()), 0, "callbacks held by the service");
    }
  }
  return std::to_string(done) + " handles ended, at " + std::to_string(points) + " points";
}

}  // namespace norvik::qel::stress
