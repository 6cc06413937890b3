// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The values of HIDL calls and their outcomes: ownership, and misuse that ends the process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quorvel/fake/log_capture.h"

namespace norvik::qel {
namespace {

using android::RefBase;
using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Status;
using testing::ElementsAre;

class Counted : public virtual RefBase {
 public:
  explicit Counted(std::atomic<int>& deleted) : deleted_(deleted) {}
  ~Counted() override { ++deleted_; }

 private:
  std::atomic<int>& deleted_;
};

TEST(RefBaseTest, AnObjectGoesWithItsLastStrongReferenceAndNeverWhileItIsPromoted) {
  for (int round = 0; round < 500; ++round) {
    std::atomic<int> deleted{0};
    auto object = sp<Counted>::make(deleted);
    const android::wp<RefBase> weak = object;
    {
      sp<RefBase> other = object;
      const sp<RefBase> moved = std::move(other);
      EXPECT_EQ(object->getStrongCount(), 2) << "moving counts nothing";
      other = object.get();
      EXPECT_EQ(object->getStrongCount(), 3);
      EXPECT_EQ(weak.promote(), object);
    }
    std::thread promoter([&] {
      const sp<RefBase> promoted = weak.promote();
      EXPECT_TRUE(promoted == nullptr || deleted == 0);
    });
    object.clear();
    promoter.join();
    EXPECT_EQ(deleted, 1);
    EXPECT_EQ(weak.promote(), nullptr);
  }
}

TEST(RefBaseTest, MisuseIsReported) {
  std::atomic<int> deleted{0};
  {
    const fake::LogCapture log;
    { Counted never_held(deleted); }
    EXPECT_EQ(log.Lines("RefBase").size(), 1u);
  }
  EXPECT_DEATH(
      {
        Counted held(deleted);
        held.incStrong(nullptr);
      },
      "1 strong references left");
}

TEST(HidlValuesTest, CopiesOwnWhatTheOriginalOnlyPointsAt) {
  std::string text = "skin";
  hidl_string outside_text;
  outside_text.setToExternal(text.c_str(), text.size());
  const hidl_string text_copy = outside_text;
  text[0] = 'S';
  EXPECT_STREQ(outside_text.c_str(), "Skin");
  EXPECT_STREQ(text_copy.c_str(), "skin");

  std::vector<int> numbers = {1, 2, 3};
  hidl_vec<int> outside;
  outside.setToExternal(numbers.data(), numbers.size());
  hidl_vec<int> copy = outside;
  numbers[0] = 7;
  EXPECT_THAT(outside, ElementsAre(7, 2, 3));
  copy.resize(4);
  EXPECT_THAT(copy, ElementsAre(1, 2, 3, 0));
  copy.resize(2);
  const int* const storage = copy.data();
  const hidl_vec<int> target = std::move(copy);
  EXPECT_EQ(target.data(), storage);
  EXPECT_EQ(target, (hidl_vec<int>{1, 2}));
  // NOLINTNEXTLINE(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what is tested
  EXPECT_EQ(copy.data(), storage) << "still points there, without owning it";
}

Return<bool> Failed() {
  return Status::fromStatusT(android::FAILED_TRANSACTION);
}

TEST(ReturnTest, AnUncheckedFailureEndsTheProcess) {
  const auto overwritten = [] {
    Return<bool> result = Failed();
    result = Return<bool>(true);
  };
  const auto only_described = [] {
    const Return<bool> result = Failed();
    static_cast<void>(result.description());
    static_cast<void>(result.isOkUnchecked());
    static_cast<void>(result.isDeadObject());
  };
  const auto moved = [] {
    Return<bool> from = Failed();
    const Return<bool> to = std::move(from);
  };
  EXPECT_DEATH(Failed(), "goes away unchecked.*FAILED_TRANSACTION");
  EXPECT_DEATH(overwritten(), "unchecked");
  EXPECT_DEATH(only_described(), "unchecked");
  EXPECT_DEATH(moved(), "unchecked");
  Return<bool> from = Failed();
  EXPECT_FALSE(Return<bool>(std::move(from)).isOk());  // only the target must be checked

  const Return<bool> checked = Failed();
  EXPECT_FALSE(checked.isOk());
  EXPECT_TRUE(checked.withDefault(true));
  EXPECT_DEATH(static_cast<void>(static_cast<bool>(checked)), "used as if it were ok");
}

}  // namespace
}  // namespace norvik::qel
