// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "common/live_objects.h"

#include <gtest/gtest.h>

#include <atomic>

#include "quorvel/fake/gate.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

struct Visited {};

TEST(LiveObjectsTest, OnlyAnObjectThatIsAddedIsVisited) {
  audio::LiveObjects<Visited> live;
  Visited object;
  int visits = 0;
  const auto visit = [&](Visited& visited) {
    EXPECT_EQ(&visited, &object);
    ++visits;
  };
  live.Visit(&object, visit);
  EXPECT_EQ(visits, 0);
  live.Add(&object);
  live.Visit(&object, visit);
  EXPECT_EQ(visits, 1);
  live.Remove(&object);
  live.Remove(&object);
  live.Visit(&object, visit);
  EXPECT_EQ(visits, 1);
}

TEST(LiveObjectsTest, OnlyRemovingAVisitedObjectWaitsForTheVisit) {
  audio::LiveObjects<Visited> live;
  Visited visited;
  Visited other;
  live.Add(&visited);
  live.Add(&other);
  fake::Gate gate;
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
