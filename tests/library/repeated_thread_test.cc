// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "common/repeated_thread.h"

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <semaphore>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "environment.h"
#include "quorvel/fake/log_capture.h"
#include "waiting.h"

namespace {
std::atomic<int> g_allocations{0};
}  // namespace

// Counts what is allocated anywhere in the process. The sanitizers bring operators of their own.
#if !defined(QUORVEL_SANITIZED)
[[gnu::noinline]] void* operator new(size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  void* memory = std::malloc(size);
  if (memory == nullptr) std::abort();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, size_t /*size*/) noexcept {
  std::free(memory);
}
#endif

namespace norvik::qel {
namespace {

using audio::RepeatedThread;
using fake::LogCapture;
using fake::LogLine;
using std::chrono::steady_clock;
using testing::ElementsAre;

constexpr char kTag[] = "audio_hw_repeated_thread";

LogLine Debug(std::string text) {
  return {.priority = ANDROID_LOG_DEBUG, .tag = kTag, .text = std::move(text)};
}

// An action that tells the test when it is inside and stays there until let go, with the result
// that the test says.
class GatedThread : public RepeatedThread {
 public:
  explicit GatedThread(uint32_t pause_ms = 0, uint32_t repeat_count = 0)
      : RepeatedThread("gated", pause_ms, repeat_count) {}
  std::counting_semaphore<> entered{0};
  Seen<bool> results;

  bool WaitEntered() { return entered.try_acquire_for(kHangGuard); }
  bool RunsNoMore() { return !entered.try_acquire_for(std::chrono::milliseconds(20)); }

 private:
  bool ClientAction() override {
    entered.release();
    return results.Take().value_or(true);
  }
};

// An action that is a function.
class FunctionThread : public RepeatedThread {
 public:
  FunctionThread(uint32_t pause_ms, uint32_t repeat_count, std::function<bool()> action)
      : RepeatedThread("battery_reconnect", pause_ms, repeat_count), action_(std::move(action)) {}

 private:
  bool ClientAction() override { return action_(); }
  const std::function<bool()> action_;
};

TEST(RepeatedThreadTest, StartsDuringARunFoldIntoOneFurtherRun) {
  LogCapture log;
  GatedThread thread;
  thread.Initialize();
  thread.Start();
  ASSERT_TRUE(thread.WaitEntered());
  for (int i = 0; i < 3; ++i) thread.Start();
  thread.results.Put(true);
  ASSERT_TRUE(thread.WaitEntered());
  thread.results.Put(true);
  EXPECT_TRUE(thread.RunsNoMore());
  thread.Deinitialize();
  EXPECT_THAT(log.Lines(), ElementsAre(Debug("Start[gated]: trigger run again."),
                                       Debug("Start[gated]: run again is already ready."),
                                       Debug("Start[gated]: run again is already ready."),
                                       Debug("ThreadLoop[gated]: action run again!")));
}

TEST(RepeatedThreadTest, AFailingActionIsRunTheGivenNumberOfTimesWithPauses) {
  for (const auto& [repeat_count, runs] : {std::pair{0, 1}, {1, 1}, {4, 4}}) {
    Seen<steady_clock::time_point> times;
    constexpr std::chrono::milliseconds kPause(5);
    FunctionThread thread(kPause.count(), repeat_count, [&] {
      times.Put(steady_clock::now());
      return false;
    });
    thread.Initialize();
    thread.Start();
    auto last = times.Take();
    ASSERT_TRUE(last);
    for (int run = 1; run < runs; ++run) {
      const auto next = times.Take();
      ASSERT_TRUE(next);
      EXPECT_GE(*next - *last, kPause);
      last = next;
    }
    EXPECT_FALSE(times.Take(kPause * 5)) << "more than " << runs << " runs";
    thread.Deinitialize();
  }
}

TEST(RepeatedThreadTest, AStartDuringTheRetriesIsAbsorbedByThem) {
  LogCapture log;
  GatedThread thread(/*pause_ms=*/1, /*repeat_count=*/3);
  thread.Initialize();
  thread.Start();
  ASSERT_TRUE(thread.WaitEntered());
  thread.Start();
  for (int run = 1; run <= 2; ++run) {
    thread.results.Put(false);
    ASSERT_TRUE(thread.WaitEntered()) << "run " << run + 1;
  }
  thread.results.Put(false);
  EXPECT_TRUE(thread.RunsNoMore());
  const std::vector<LogLine> lines = log.Lines();
  thread.Deinitialize();
  EXPECT_THAT(lines, ElementsAre(Debug("Start[gated]: trigger run again."),
                                 Debug("ThreadLoop[gated]: action run again at repeated 1 !")));
}

TEST(RepeatedThreadTest, AStartDuringTheLastRetryGivesOneRunWithoutRetries) {
  LogCapture log;
  GatedThread thread(/*pause_ms=*/1, /*repeat_count=*/2);
  thread.Initialize();
  thread.Start();
  ASSERT_TRUE(thread.WaitEntered());
  thread.results.Put(false);
  ASSERT_TRUE(thread.WaitEntered());
  thread.Start();  // inside the last run
  thread.results.Put(false);
  ASSERT_TRUE(thread.WaitEntered());
  thread.Start();  // inside the extra run: yet another one
  thread.results.Put(false);
  ASSERT_TRUE(thread.WaitEntered());
  thread.results.Put(false);
  EXPECT_TRUE(thread.RunsNoMore());
  const std::vector<LogLine> lines = log.Lines();
  thread.Deinitialize();
  EXPECT_THAT(lines, ElementsAre(Debug("Start[gated]: trigger run again."),
                                 Debug("ThreadLoop[gated]: action run again at last count(2:2)!"),
                                 Debug("Start[gated]: trigger run again."),
                                 Debug("ThreadLoop[gated]: action run again at last count(3:2)!")));
}

TEST(RepeatedThreadTest, GivingUpIsSilentAndLeavesTheNextRequestAllItsRetries) {
  // A request that meets the last pause is another story (above): tried until one met an idle
  // worker.
  for (int attempt = 0; attempt < 1000; ++attempt) {
    LogCapture log;
    GatedThread thread(/*pause_ms=*/1, /*repeat_count=*/2);
    thread.Initialize();
    thread.Start();
    for (int run = 0; run < 2; ++run) {
      ASSERT_TRUE(thread.WaitEntered());
      thread.results.Put(false);
    }
    EXPECT_FALSE(thread.entered.try_acquire_for(std::chrono::milliseconds(2 + attempt)));
    EXPECT_TRUE(log.Lines().empty());
    thread.Start();
    const bool met_idle = log.Lines().empty();
    ASSERT_TRUE(thread.WaitEntered());
    thread.results.Put(false);
    if (met_idle) {
      ASSERT_TRUE(thread.WaitEntered()) << "the count starts anew";
      thread.results.Put(true);
    }
    thread.Deinitialize();
    if (met_idle) return;
  }
  FAIL() << "no request ever met an idle worker";
}

TEST(RepeatedThreadTest, SuccessGivesTheNextRequestAllItsRetries) {
  GatedThread thread(/*pause_ms=*/1, /*repeat_count=*/2);
  thread.Initialize();
  for (int trigger = 0; trigger < 2; ++trigger) {
    thread.Start();
    ASSERT_TRUE(thread.WaitEntered());
    thread.results.Put(false);
    ASSERT_TRUE(thread.WaitEntered()) << "one retry after trigger " << trigger;
    thread.results.Put(true);
  }
  EXPECT_TRUE(thread.RunsNoMore());
  thread.Deinitialize();
}

TEST(RepeatedThreadTest, AnActionMayStartItsOwnThread) {
  std::atomic<int> runs{0};
  Seen<int> last;
  FunctionThread* self = nullptr;
  FunctionThread thread(0, 0, [&] {
    if (++runs < 100) {
      self->Start();
    } else {
      last.Put(runs);
    }
    return true;
  });
  self = &thread;
  thread.Initialize();
  thread.Start();
  EXPECT_EQ(last.Take(), 100);
  thread.Deinitialize();
  EXPECT_EQ(runs, 100);
}

TEST(RepeatedThreadTest, DeinitializeCutsAPauseShort) {
  // Nothing outside tells that the pause has begun: a Deinitialize() that comes just before it ends
  // the thread silently. So it is tried until one has met the pause.
  int met = 0;
  for (int attempt = 0; attempt < 1000 && met == 0; ++attempt) {
    LogCapture log;
    GatedThread thread(/*pause_ms=*/3'600'000, /*repeat_count=*/10);
    thread.results.Put(false);
    thread.Initialize();
    thread.Start();
    ASSERT_TRUE(thread.WaitEntered());
    EXPECT_FALSE(thread.entered.try_acquire_for(std::chrono::milliseconds(attempt)));
    thread.Deinitialize();
    met = log.Count("ThreadLoop[gated]: thread existed after sleep!");
    EXPECT_EQ(log.Lines().size(), met);
  }
  EXPECT_EQ(met, 1);
}

TEST(RepeatedThreadTest, DeinitializeWaitsForARunAndEndsSilently) {
  LogCapture log;
  GatedThread thread(/*pause_ms=*/3'600'000, /*repeat_count=*/10);
  thread.Initialize();
  thread.Start();
  ASSERT_TRUE(thread.WaitEntered());
  std::atomic<bool> returned{false};
  std::thread stopper([&] {
    thread.Deinitialize();
    returned = true;
  });
  std::this_thread::yield();
  EXPECT_FALSE(returned);  // can miss a bug, never invent one
  thread.results.Put(true);
  stopper.join();
  thread.Start();  // ignored, silently
  EXPECT_TRUE(thread.RunsNoMore());
  EXPECT_TRUE(log.Lines().empty());
}

// For a worker that must not wait for itself or another one.
TEST(RepeatedThreadTest, AnActionMayAskItsOwnThreadToEnd) {
  LogCapture log;
  Seen<bool> on_worker;
  std::counting_semaphore<> go_on{0};
  FunctionThread thread(/*pause_ms=*/3'600'000, /*repeat_count=*/10, [&] {
    thread.RequestExit();
    thread.Start();  // ignored
    on_worker.Put(RepeatedThread::IsWorker());
    return !go_on.try_acquire_for(kHangGuard);
  });
  thread.Initialize();
  thread.Start();
  EXPECT_EQ(on_worker.Take(), true);
  EXPECT_FALSE(RepeatedThread::IsWorker());
  EXPECT_FALSE(thread.HasEnded()) << "while the action runs";
  go_on.release();
  EXPECT_TRUE(Eventually([&] { return thread.HasEnded(); }));
  thread.Deinitialize();
  EXPECT_TRUE(on_worker.empty());
  EXPECT_TRUE(log.Lines().empty());
}

TEST(RepeatedThreadTest, DeinitializeBeforeTheThreadGotGoing) {
  LogCapture log;
  GatedThread thread;
  thread.Start();
  thread.Deinitialize();
  EXPECT_THAT(log.Lines(),
              ElementsAre(LogLine{
                  .priority = ANDROID_LOG_WARN,
                  .tag = kTag,
                  .text = "Deinitialize[gated]: Thread wasn't started, force to end the thread."}));
  thread.ThreadLoop();  // what the thread does when it gets going at last
  EXPECT_TRUE(thread.RunsNoMore());
}

TEST(RepeatedThreadTest, TheThreadCarriesItsNameAsFarAsLinuxKeepsIt) {
  Seen<std::string> names;
  FunctionThread thread(0, 0, [&] {
    char name[32] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    names.Put(name);
    return true;
  });
  thread.Initialize();
  thread.Start();
  EXPECT_EQ(names.Take(), "battery_reconne");
  thread.Deinitialize();
}

TEST(RepeatedThreadTest, NoRequestIsLostAmongMany) {
  std::atomic<int> requested{0};
  std::atomic<int> served{0};
  FunctionThread thread(0, 0, [&] {
    served = requested.load();
    return true;
  });
  thread.Initialize();
  for (int round = 0; round < 200; ++round) {
    std::vector<std::thread> clients;
    for (int client = 0; client < 4; ++client) {
      clients.emplace_back([&] {
        for (int i = 0; i < 25; ++i) {
          ++requested;
          thread.Start();
        }
      });
    }
    for (std::thread& client : clients) client.join();
    ASSERT_TRUE(Eventually([&] { return served == requested; })) << "round " << round;
  }
  thread.Deinitialize();
}

TEST(RepeatedThreadTest, NothingIsAllocatedAfterInitialize) {
  if (kSanitized) GTEST_SKIP() << "allocations are not counted under the sanitizers";
  const int32_t priority = __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
  std::atomic<int> runs{0};
  FunctionThread thread(/*pause_ms=*/0, /*repeat_count=*/2, [&] { return ++runs % 3 == 0; });
  thread.Initialize();
  thread.Start();
  ASSERT_TRUE(Eventually([&] { return runs >= 2; }));
  const int allocations = g_allocations;
  for (int i = 0; i < 1000; ++i) thread.Start();
  const int runs_before = runs;
  thread.Start();
  const auto deadline = steady_clock::now() + kHangGuard;
  while (runs == runs_before && steady_clock::now() < deadline) std::this_thread::yield();
  thread.Deinitialize();
  EXPECT_EQ(g_allocations, allocations);
  EXPECT_GT(runs, runs_before);
  __android_log_set_minimum_priority(priority);
}

// Runs in a process of its own, which has no room for another stack.
[[noreturn]] void InitializeWithoutRoom() {
  const rlimit no_room = {.rlim_cur = 1, .rlim_max = RLIM_INFINITY};
  setrlimit(RLIMIT_AS, &no_room);
  GatedThread thread;
  try {
    thread.Initialize();
  } catch (const std::system_error& error) {
    std::_Exit(error.code() == std::errc::resource_unavailable_try_again ? 0 : 1);
  }
  std::_Exit(2);
}

TEST(RepeatedThreadDeathTest, AFailureToMakeAThreadReachesTheCaller) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers need the address space that this test takes away";
  if (kEmulated) GTEST_SKIP() << "the emulator does not limit the address space";
  EXPECT_EXIT(InitializeWithoutRoom(), testing::ExitedWithCode(0), "");
}

TEST(RepeatedThreadAttemptTest, AWorkerKnowsItsLastAttempt) {
  Seen<bool> last;
  FunctionThread thread(/*pause_ms=*/1, /*repeat_count=*/3, [&] {
    EXPECT_TRUE(RepeatedThread::IsWorker());
    last.Put(RepeatedThread::IsLastAttempt());
    return false;
  });
  thread.Initialize();
  thread.Start();
  for (const bool expected : {false, false, true}) EXPECT_EQ(last.Take(), expected);
  thread.Deinitialize();
  EXPECT_FALSE(RepeatedThread::IsWorker());
  EXPECT_FALSE(RepeatedThread::IsLastAttempt());
}

TEST(RepeatedThreadExitTest, ASecondRequestToExitIsANoop) {
  const LogCapture log;
  GatedThread thread;
  thread.Initialize();
  thread.Start();
  ASSERT_TRUE(thread.WaitEntered());
  thread.RequestExit();
  thread.RequestExit();
  thread.results.Put(true);
  thread.Deinitialize();
  EXPECT_THAT(log.Lines(), ElementsAre());
}

TEST(RepeatedThreadDeathTest, DestroyingAThreadThatRunsEndsTheProcess) {
  EXPECT_DEATH(
      {
        auto thread = std::make_unique<GatedThread>();
        thread->Initialize();
        thread.reset();
      },
      "");
}

}  // namespace
}  // namespace norvik::qel
