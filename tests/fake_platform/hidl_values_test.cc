// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The values of HIDL calls and their outcomes: ownership, and misuse that ends the process.
#include <android/hardware/thermal/2.0/types.h>
#include <cutils/native_handle.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <unistd.h>

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
using android::wp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Status;
using testing::ElementsAre;

// Counts what happens to it.
struct Counts {
  std::atomic<int> first{0};
  std::atomic<int> last{0};
  std::atomic<int> deleted{0};
};
class Counted : public virtual RefBase {
 public:
  explicit Counted(Counts& counts) : counts_(counts) {}
  ~Counted() override { ++counts_.deleted; }

 protected:
  void onFirstRef() override { ++counts_.first; }
  void onLastStrongRef(const void* /*id*/) override { ++counts_.last; }

 private:
  Counts& counts_;
};

TEST(RefBaseTest, AnObjectGoesWithItsLastStrongReference) {
  Counts counts;
  wp<RefBase> base;
  {
    const auto object = sp<Counted>::make(counts);
    sp<RefBase> other = object;
    EXPECT_EQ(object->getStrongCount(), 2);
    EXPECT_EQ(other, object);
    const sp<RefBase> moved = std::move(other);
    EXPECT_EQ(object->getStrongCount(), 2) << "moving counts nothing";
    other = object.get();
    EXPECT_EQ(object->getStrongCount(), 3);
    base = object;
    EXPECT_EQ(base.promote(), object);
    EXPECT_EQ(counts.deleted, 0);
  }
  EXPECT_EQ(counts.first, 1);
  EXPECT_EQ(counts.last, 1);
  EXPECT_EQ(counts.deleted, 1) << "whatever weak references there are";
  EXPECT_EQ(base.promote(), nullptr);
  EXPECT_EQ(wp<RefBase>().promote(), nullptr);
}

TEST(RefBaseTest, APromotionAndTheLastReleaseNeverMeet) {
  for (int round = 0; round < 500; ++round) {
    Counts counts;
    auto object = sp<Counted>::make(counts);
    const wp<Counted> weak = object;
    std::thread promoter([&] {
      const sp<Counted> promoted = weak.promote();
      EXPECT_TRUE(promoted == nullptr || counts.deleted == 0);
    });
    object.clear();
    promoter.join();
    EXPECT_EQ(counts.deleted, 1);
    EXPECT_EQ(counts.first, 1);
  }
}

TEST(RefBaseTest, MisuseIsReported) {
  Counts counts;
  {
    const fake::LogCapture log;
    { Counted never_held(counts); }
    EXPECT_EQ(log.Lines("RefBase").size(), 1u);
  }
  EXPECT_DEATH(
      {
        Counted held(counts);
        held.incStrong(nullptr);
      },
      "1 strong references left");
}

TEST(HidlStringTest, CopiesOwnTheirText) {
  std::string text = "skin";
  hidl_string outside;
  outside.setToExternal(text.c_str(), text.size());
  const hidl_string copy = outside;
  text[0] = 'S';
  EXPECT_STREQ(outside.c_str(), "Skin");
  EXPECT_STREQ(copy.c_str(), "skin");
  hidl_string moved = copy;
  const hidl_string target = std::move(moved);
  EXPECT_EQ(target, "skin");
  EXPECT_EQ(std::string(target), "skin");
  EXPECT_EQ(target, std::string("skin"));
  EXPECT_LT(target, "skip");

  const hidl_string none = static_cast<const char*>(nullptr);
  EXPECT_TRUE(none.empty());
  EXPECT_STREQ(none.c_str(), "") << "never null";
  const hidl_string with_nul = std::string("a\0b", 3);
  EXPECT_EQ(with_nul.size(), 3u);
  EXPECT_EQ(with_nul, hidl_string("a")) << "compared up to the first NUL";
}

TEST(HidlVecTest, OwnsCopiesAndPointsAtTheRest) {
  EXPECT_EQ(hidl_vec<int>(5).size(), 5u);
  EXPECT_THAT(hidl_vec<int>{5}, ElementsAre(5));
  std::vector<int> numbers = {1, 2, 3};
  hidl_vec<int> outside;
  outside.setToExternal(numbers.data(), numbers.size());
  hidl_vec<int> copy = outside;
  numbers[0] = 7;
  EXPECT_THAT(outside, ElementsAre(7, 2, 3));
  EXPECT_THAT(copy, ElementsAre(1, 2, 3));
  copy.resize(4);
  EXPECT_THAT(copy, ElementsAre(1, 2, 3, 0));
  copy.resize(2);
  EXPECT_TRUE(copy.contains(2));
  EXPECT_FALSE(copy.contains(3));

  const int* const storage = copy.data();
  const hidl_vec<int> target = std::move(copy);
  EXPECT_EQ(target.data(), storage);
  // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): how it looks is the subject
  EXPECT_EQ(copy.size(), 2u);
  EXPECT_EQ(copy.data(), storage) << "still points there, without owning it";
  // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
  EXPECT_THAT(std::vector<int>(target), ElementsAre(1, 2));
  EXPECT_EQ(target, (hidl_vec<int>{1, 2}));
}

TEST(HidlHandleTest, ACopyHasDescriptorsOfItsOwn) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  native_handle_t* native = native_handle_create(1, 1);
  native->data[0] = ends[1];
  native->data[1] = 42;
  hidl_handle copy;
  {
    hidl_handle owner;
    owner.setTo(native, /*shouldOwn=*/true);
    const hidl_handle onlooker = owner.getNativeHandle();
    EXPECT_EQ(onlooker->data[0], ends[1]);
    copy = onlooker;
  }
  EXPECT_NE(copy->data[0], ends[1]);
  EXPECT_EQ(copy->data[1], 42);
  EXPECT_EQ(write(ends[1], "x", 1), -1) << "closed by its owner, not before";
  EXPECT_EQ(write(copy->data[0], "x", 1), 1);
  close(ends[0]);
  EXPECT_EQ(hidl_handle().getNativeHandle(), nullptr);
  EXPECT_EQ(native_handle_create(NATIVE_HANDLE_MAX_FDS + 1, 0), nullptr);
}

TEST(ReturnTest, DescribesItsStatus) {
  EXPECT_EQ(Return<void>().description(), "No error");
  const Return<void> dead = Status::fromStatusT(android::DEAD_OBJECT);
  EXPECT_TRUE(dead.isDeadObject());
  EXPECT_EQ(dead.description(), "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
  const Return<bool> refused = Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT, "bad");
  EXPECT_FALSE(refused.isOk());
  EXPECT_FALSE(refused.isDeadObject());
  EXPECT_EQ(refused.description(), "Status(EX_ILLEGAL_ARGUMENT): 'bad'");
  Status (*const without_message)(int32_t) = Status::fromExceptionCode;
  EXPECT_EQ(without_message(Status::EX_SECURITY).description(), "Status(EX_SECURITY): ''");
  EXPECT_TRUE(refused.withDefault(true));
  const Return<bool> fine = false;
  EXPECT_FALSE(fine.withDefault(true));
}

Return<bool> Failed(int32_t status = android::FAILED_TRANSACTION) {
  return Status::fromStatusT(status);
}

TEST(ReturnTest, AnUncheckedFailureEndsTheProcess) {
  EXPECT_DEATH({ Failed(); }, "goes away unchecked.*FAILED_TRANSACTION");
  EXPECT_DEATH(
      {
        Return<bool> result = Failed();
        result = Return<bool>(true);
      },
      "unchecked");
  // These do not check it.
  EXPECT_DEATH(
      {
        const Return<bool> result = Failed();
        static_cast<void>(result.description());
        static_cast<void>(result.isOkUnchecked());
        static_cast<void>(result.isDeadObject());
      },
      "unchecked");
  // The duty moves along.
  EXPECT_DEATH(
      {
        Return<bool> from = Failed();
        const Return<bool> to = std::move(from);
      },
      "unchecked");
  Return<bool> from = Failed();
  EXPECT_FALSE(Return<bool>(std::move(from)).isOk());  // and leaves `from` without it
}

TEST(ReturnTest, TheValueOfAFailureEndsTheProcess) {
  const Return<bool> result = Failed();
  EXPECT_FALSE(result.isOk());
  EXPECT_DEATH(static_cast<void>(static_cast<bool>(result)), "used as if it were ok");
}

TEST(HidlTextTest, RecordsAndEnumsHaveNames) {
  namespace V2_0 = android::hardware::thermal::V2_0;
  EXPECT_EQ(toString(V2_0::TemperatureType::UNKNOWN), "UNKNOWN");
  EXPECT_EQ(toString(static_cast<V2_0::TemperatureType>(17)), "0x11");
  const V2_0::CoolingDevice device = {.type = V2_0::CoolingType::FAN, .name = "fan", .value = 3};
  EXPECT_EQ(toString(device), "{.type = FAN, .name = \"fan\", .value = 3}");
  EXPECT_EQ(V2_0::CoolingType::GPU & V2_0::CoolingType::BATTERY, 1u);
}

}  // namespace
}  // namespace norvik::qel
