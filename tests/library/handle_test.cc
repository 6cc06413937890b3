// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What Init...() and Deinit...() of all families do when the object fails to initialize.
#include "common/handle.h"

#include <gtest/gtest.h>

namespace norvik::qel {
namespace {

struct FailingObject {
  static inline int alive = 0;
  static inline int deinitialized = 0;

  FailingObject() { ++alive; }
  ~FailingObject() { --alive; }
  bool Initialize() { return false; }
  void Deinitialize() { ++deinitialized; }
};

TEST(HandleTest, AFailedInitDeinitializesAndLeavesNull) {
  int other = 0;
  void* handle = &other;
  EXPECT_FALSE(audio::InitHandle<FailingObject>(&handle));
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(FailingObject::deinitialized, 1);
  EXPECT_EQ(FailingObject::alive, 0);
}

}  // namespace
}  // namespace norvik::qel
