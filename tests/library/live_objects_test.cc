// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "common/live_objects.h"

#include "fixture.h"

namespace norvik::qel {
namespace {

struct Visited {};

TEST(LiveObjectsTest, OnlyRemovingAVisitedObjectWaitsForTheVisit) {
  audio::LiveObjects<Visited> live;
  Visited visited;
  Visited other;
  live.Add(&visited);
  live.Add(&other);
  Gate gate;
  std::atomic<bool> left{false};
  Background visitor("a visit", [&] {
    live.Visit(&visited, [&](Visited&) {
      gate.Pass();
      left = true;
    });
  });
  ASSERT_TRUE(gate.WaitForArrivals());
  Seen<bool> removed;
  Background remover("a removal", [&] {
    live.Remove(&visited);
    removed.Put(left);
  });
  EndsInTime([&] {
    live.Visit(&other, [](Visited&) {});
    live.Remove(&other);
  });
  EXPECT_FALSE(removed.Take(std::chrono::milliseconds(20)));  // can miss a bug, never invent one
  gate.Open();
  EXPECT_EQ(removed.Take(), true);
}

}  // namespace
}  // namespace norvik::qel
