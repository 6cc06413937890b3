// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What Init...(), Deinit...() and Dump...() of all families do with a handle.
#include "common/handle.h"

#include <gtest/gtest.h>

namespace norvik::qel {
namespace {

// An object that can be told to fail.
struct Object {
  static inline bool fails = false;
  static inline int alive = 0;
  static inline int deinitialized = 0;
  static inline int dumped_to = 0;

  Object() { ++alive; }
  ~Object() { --alive; }
  bool Initialize() { return !fails; }
  void Deinitialize() { ++deinitialized; }
  void Dump(int fd) { dumped_to = fd; }
};

class HandleTest : public testing::Test {
 protected:
  ~HandleTest() override { EXPECT_EQ(Object::alive, 0); }

  void* handle_ = nullptr;
  const int deinitialized_before_ = Object::deinitialized;
  int deinitialized() const { return Object::deinitialized - deinitialized_before_; }
};

TEST_F(HandleTest, AnObjectLivesFromInitToDeinit) {
  EXPECT_TRUE(audio::InitHandle<Object>(&handle_));
  ASSERT_NE(handle_, nullptr);
  EXPECT_EQ(Object::alive, 1);
  audio::DumpHandle<Object>(handle_, 42);
  EXPECT_EQ(Object::dumped_to, 42);
  audio::DeinitHandle<Object>(&handle_);
  EXPECT_EQ(handle_, nullptr);
  EXPECT_EQ(deinitialized(), 1);
}

TEST_F(HandleTest, AFailedInitDeinitializesAndLeavesNull) {
  Object::fails = true;
  handle_ = this;
  EXPECT_FALSE(audio::InitHandle<Object>(&handle_));
  Object::fails = false;
  EXPECT_EQ(handle_, nullptr);
  EXPECT_EQ(deinitialized(), 1);
}

TEST_F(HandleTest, NullDoesNothing) {
  EXPECT_TRUE(audio::InitHandle<Object>(nullptr));
  audio::DeinitHandle<Object>(nullptr);
  audio::DeinitHandle<Object>(&handle_);
  Object::dumped_to = 0;
  audio::DumpHandle<Object>(nullptr, 42);
  EXPECT_EQ(Object::dumped_to, 0);
  EXPECT_EQ(deinitialized(), 0);
}

}  // namespace
}  // namespace norvik::qel
