// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What happens to a battery handle that goes away while the platform still knows of it.
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <semaphore>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "battery_fixture.h"
#include "environment.h"
#include "process_state.h"
#include "quorvel/fake/service_manager.h"

namespace norvik::qel {
namespace {

using fake::Delivery;
using fake::HoldDeliveries;
using services::HealthOperation;

using BatteryLifetimeTest = BatteryFixture;

TEST_F(BatteryLifetimeTest, AHandleMayGoWhileItsDeathNotificationIsAboutToRun) {
  for (int round = 0; round < 50; ++round) {
    void* handle = nullptr;
    InitBatteryInfo(&handle);
    ASSERT_EQ(RegisterBatteryLevelCallback(handle, Client<0>, &seen_), 0);
    ASSERT_TRUE(seen_.Take());
    HoldDeliveries hold(Delivery::kDeathNotification);
    health_.Kill();
    ASSERT_TRUE(hold.WaitForHeld());
    DeinitBatteryInfo(&handle);
    health_.Start();
    // The allocator likes to give the address away again: the death notification must not harm the
    // new owner.
    void* successor = nullptr;
    InitBatteryInfo(&successor);
    ASSERT_EQ(RegisterBatteryLevelCallback(successor, Client<1>, &seen_), 0);
    ASSERT_TRUE(seen_.Take());
    log_.Clear();
    hold.Release();
    ASSERT_TRUE(fake::WaitUntilDelivered());
    ASSERT_TRUE(IsLinked(successor));
    ASSERT_EQ(log_.Count("ReconnectToHealthService"), 0);
    ASSERT_EQ(health_.callback_count(), 1u);
    DeinitBatteryInfo(&successor);
  }
}

// Somebody else's recipient, which is told of the same death first and destroys the handle.
struct Stranger {
  void** handle;
  std::atomic<bool> told{false};

  static void Died(void* cookie) {
    auto* self = static_cast<Stranger*>(cookie);
    DeinitBatteryInfo(self->handle);
    self->told = true;
  }
};

TEST_F(BatteryLifetimeTest, AHandleMayGoInsideSomebodyElsesDeathNotification) {
  const ndk::SpAIBinder service(AServiceManager_checkService(services::kHealthInstance));
  void* handle = nullptr;
  InitBatteryInfo(&handle);
  Stranger stranger = {.handle = &handle};
  const ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(Stranger::Died));
  ASSERT_EQ(AIBinder_linkToDeath(service.get(), recipient.get(), &stranger), STATUS_OK);
  ASSERT_EQ(RegisterBatteryLevelCallback(handle, Client<0>, &seen_), 0);
  ASSERT_TRUE(seen_.Take());
  const fake::ShortGetServiceWait short_wait;
  health_.Kill();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(stranger.told);
  EXPECT_EQ(handle, nullptr);
  health_.Start();
}

TEST_F(BatteryLifetimeTest, AReportThatComesTooLateTouchesNothing) {
  RegisterAndHearLevel();
  HoldDeliveries hold(Delivery::kOneway);
  health_.SetLevel(1);
  ASSERT_TRUE(hold.WaitForHeld());
  DeinitBatteryInfo(&handle_);
  hold.Release();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(seen_.empty());
}

TEST_F(BatteryLifetimeTest, NobodyIsCalledAfterDeinitHasReturned) {
  const fake::ShortGetServiceWait short_wait;
  std::atomic<bool> stop{false};
  std::counting_semaphore<> bursts{0};
  std::thread battery([&] {
    for (int level = 0; bursts.acquire(), !stop;) {
      for (int i = 0; i < 20; ++i) health_.SetLevel(++level % 100);
    }
  });
  const int rounds = kSanitized ? 100 : 500;
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    Seen<Call> seen;  // goes right after the handle: a later call would be a use after free
    void* handle = nullptr;
    InitBatteryInfo(&handle);
    bursts.release();
    EXPECT_EQ(RegisterBatteryLevelCallback(handle, Client<0>, &seen), 0);
    EXPECT_EQ(RegisterBatteryCycleCountCallback(handle, Client<1>, &seen), 0);
    if (round % 2 == 0) {
      EXPECT_TRUE(seen.Take());
    }
    if (round % 3 == 0) {
      health_.Kill();
      health_.Start();
    }
    DeinitBatteryInfo(&handle);
  }
  stop = true;
  bursts.release();
  battery.join();
}

// Clients that come and go on two threads, questions and dumps on two more, while the values change
// and the service dies now and then.
TEST_F(BatteryLifetimeTest, OneHandleServesManyThreads) {
  const fake::ShortGetServiceWait short_wait;
  constexpr int kRounds = kSanitized ? 100 : 500;
  std::atomic<int> heard{0};
  const auto count = [](int, void* cookie) { ++*static_cast<std::atomic<int>*>(cookie); };
  const auto in_turn = [](auto action) {
    return std::thread([action] {
      for (int round = 0; round < kRounds; ++round) action(round);
    });
  };
  std::vector<std::thread> threads;
  threads.push_back(in_turn([&](int) {
    EXPECT_EQ(RegisterBatteryLevelCallback(handle_, count, &heard), 0);
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, count), 0);
  }));
  threads.push_back(in_turn([&](int) {
    EXPECT_EQ(RegisterDockChargerIsOnlineCallback(handle_, count, &heard), 0);
    EXPECT_EQ(DeregisterDockChargerIsOnlineCallback(handle_, count), 0);
  }));
  threads.push_back(in_turn([&](int round) {
    const int level = GetBatteryLevel(handle_, /*use_cached=*/round % 2 == 0);
    EXPECT_TRUE(level == -EAGAIN || (level >= -1 && level <= 100)) << level;
  }));
  threads.push_back(
      in_turn([&](int) { EXPECT_TRUE(DumpOf(handle_).starts_with("BatteryInfo:\n")); }));
  threads.push_back(in_turn([&](int round) {
    health_.SetLevel(round % 100);
    if (round % 10 == 0) {
      health_.Kill();
      health_.Start();
    }
  }));
  for (std::thread& thread : threads) thread.join();
  // A link may have been made for a client that has left meanwhile; the next one stands all the
  // same, and its client hears of a change.
  ASSERT_TRUE(fake::WaitUntilDelivered());
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  ASSERT_TRUE(Eventually([this] { return IsLinked(handle_); }));
  health_.SetLevel(101);
  std::optional<Call> call;
  do {
    call = seen_.Take();
  } while (call && call->value != 101);
  EXPECT_TRUE(call);
  EXPECT_EQ(health_.callback_count(), 1u);
}

TEST_F(BatteryLifetimeTest, ManyDeathsEndWithEveryRegistrationRestored) {
  const fake::ShortGetServiceWait short_wait;
  RegisterAndHearLevel();
  const int rounds = kSanitized ? 100 : 500;
  for (int round = 0; round < rounds; ++round) {
    health_.Kill();
    health_.Start();
  }
  health_.SetLevel(7);
  EXPECT_TRUE(Eventually([this] {
    return IsLinked(handle_) && health_.callback_count() == 1 && fake::WaitUntilDelivered() &&
           IsLinked(handle_);
  }));
  EXPECT_EQ(GetBatteryLevel(handle_, true), 7);
}

using BatteryLifetimeSlowTest = BatteryFixture;

TEST_F(BatteryLifetimeSlowTest, InitAndDeinitLeaveNothingBehind) {
  const auto cycle = [] {
    void* handle = nullptr;
    InitBatteryInfo(&handle);
    ASSERT_NE(handle, nullptr);
    DeinitBatteryInfo(&handle);
    ASSERT_EQ(handle, nullptr);
    DeinitBatteryInfo(&handle);
  };
  for (int i = 0; i < 1000; ++i) cycle();  // the allocator and the thread stacks settle
  log_.Clear();
  const int threads = LibraryThreadCount();
  const int descriptors = Descriptors();
  const int64_t resident = ResidentBytes();
  const int count = kSanitized || kEmulated ? 2'000 : 100'000;
  for (int i = 0; i < count; ++i) {
    cycle();
    log_.Clear();  // the capture's own memory
  }
  EXPECT_TRUE(Eventually([=] { return LibraryThreadCount() == threads; }));
  EXPECT_EQ(Descriptors(), descriptors);
  if (!kSanitized && !kEmulated) {  // both keep memory of their own for threads that have ended
    ASSERT_GT(resident, 0);
    // 20 bytes a round would show.
    EXPECT_LT(ResidentBytes(), resident + 2'000'000);
  }
  for (int operation = 0; operation < static_cast<int>(HealthOperation::kCount); ++operation) {
    EXPECT_EQ(Calls(static_cast<HealthOperation>(operation)), 0);
  }
}

// Runs in a process of its own. The first worker finds room for its stack or not; in neither case
// may anything but the exception come of it.
[[noreturn]] void InitWithoutRoom() {
  const rlimit no_room = {.rlim_cur = 1, .rlim_max = RLIM_INFINITY};
  setrlimit(RLIMIT_AS, &no_room);
  int untouched = 0;
  void* handle = &untouched;
  try {
    InitBatteryInfo(&handle);
  } catch (const std::system_error& error) {
    std::_Exit(
        handle == &untouched && error.code() == std::errc::resource_unavailable_try_again ? 0 : 1);
  }
  std::_Exit(2);
}

TEST(BatteryLifetimeDeathTest, AFailureToMakeAThreadReachesTheCaller) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers need the address space that this test takes away";
  if (kEmulated) GTEST_SKIP() << "the emulator does not limit the address space";
  EXPECT_EXIT(InitWithoutRoom(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace norvik::qel
