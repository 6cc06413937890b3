// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "common/repeated_thread.h"

#include <semaphore>

#include "environment.h"
#include "fixture.h"

namespace {
std::atomic<int> g_allocations{0};
}  // namespace

// Counts all allocations in the process. The standard operators free the memory. The sanitizers
// have operators of their own.
#if !QUORVEL_SANITIZED
[[gnu::noinline]] void* operator new(size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  void* memory = std::malloc(size);
  if (memory == nullptr) std::abort();
  return memory;
}
#endif

namespace norvik::qel {
namespace {

using audio::RepeatedThread;
using fake::LogLine;
using std::chrono::steady_clock;

// A thread whose action is a function.
class FunctionThread : public RepeatedThread {
 public:
  FunctionThread(uint32_t pause_ms, uint32_t repeat_count, std::function<bool()> action)
      : RepeatedThread("worker", pause_ms, repeat_count), action_(std::move(action)) {}

 private:
  bool ClientAction() override { return action_(); }
  const std::function<bool()> action_;
};

// A thread whose action signals that it has begun and waits until the test supplies its result.
struct GatedThread : FunctionThread {
  explicit GatedThread(uint32_t pause_ms = 0, uint32_t repeat_count = 0)
      : FunctionThread(pause_ms, repeat_count, [this] {
          entered.release();
          return results.Take().value_or(true);
        }) {}

  // Initializes the thread and begins its first run.
  [[nodiscard]] bool Begin() {
    Initialize();
    Start();
    return WaitEntered();
  }
  [[nodiscard]] bool WaitEntered() { return entered.try_acquire_for(kHangGuard); }
  // Can miss a run, never invent one.
  [[nodiscard]] bool StaysIdle(std::chrono::milliseconds limit = std::chrono::milliseconds(20)) {
    return !entered.try_acquire_for(limit);
  }

  std::counting_semaphore<> entered{0};
  Seen<bool> results;
};

class RepeatedThreadTest : public testing::Test {
 protected:
  std::vector<std::string> Log() const {
    std::vector<std::string> texts;
    for (const LogLine& line : log_.Lines("audio_hw_repeated_thread")) {
      EXPECT_EQ(line.priority, ANDROID_LOG_DEBUG) << line.text;
      texts.push_back(line.text);
    }
    return texts;
  }

  fake::LogCapture log_;
};

TEST_F(RepeatedThreadTest, StartsDuringARunAddOneRunAtMost) {
  constexpr char kReady[] = "Start[worker]: trigger run again.";
  struct Run {
    int starts;  // the number of Start() calls during the run
    bool result;
  };
  const struct {
    uint32_t repeat_count;
    std::vector<Run> runs;
    std::vector<std::string> log;
  } kRows[] = {
      {0,
       {{3, true}, {0, true}},
       {kReady, "Start[worker]: run again is already ready.",
        "Start[worker]: run again is already ready.", "ThreadLoop[worker]: action run again!"}},
      // After a success the requested run has all its retries.
      {2,
       {{0, false}, {1, true}, {0, false}, {0, true}},
       {kReady, "ThreadLoop[worker]: action run again!"}},
      // A request during the retries adds no run.
      {3,
       {{1, false}, {0, false}, {0, false}},
       {kReady, "ThreadLoop[worker]: action run again at repeated 1 !"}},
      // A request during the last retry adds a run without retries. So does a request during that.
      {2,
       {{0, false}, {1, false}, {1, false}, {0, false}},
       {kReady, "ThreadLoop[worker]: action run again at last count(2:2)!", kReady,
        "ThreadLoop[worker]: action run again at last count(3:2)!"}},
  };
  for (const auto& row : kRows) {
    log_.Clear();
    GatedThread thread(/*pause_ms=*/1, row.repeat_count);
    thread.Initialize();
    thread.Start();
    for (const Run& run : row.runs) {
      ASSERT_TRUE(thread.WaitEntered());
      for (int i = 0; i < run.starts; ++i) thread.Start();
      thread.results.Put(run.result);
    }
    EXPECT_TRUE(thread.StaysIdle());
    EXPECT_EQ(Log(), row.log);
    thread.Deinitialize();
  }
}

TEST_F(RepeatedThreadTest, AFailingActionIsRunTheGivenNumberOfTimesWithPauses) {
  for (const auto& [repeat_count, runs] : {std::pair{0, 1}, {1, 1}, {4, 4}}) {
    Seen<steady_clock::time_point> times;
    constexpr std::chrono::milliseconds kPause(5);
    int runs_left = runs;
    FunctionThread thread(kPause.count(), repeat_count, [&] {
      EXPECT_EQ(RepeatedThread::IsLastAttempt(), --runs_left == 0);
      times.Put(steady_clock::now());
      return false;
    });
    thread.Initialize();
    thread.Start();
    const auto began = times.TakeMany(static_cast<size_t>(runs));
    ASSERT_EQ(began.size(), static_cast<size_t>(runs));
    for (size_t run = 1; run < began.size(); ++run) EXPECT_GE(began[run] - began[run - 1], kPause);
    EXPECT_FALSE(times.Take(kPause * 5)) << "more than " << runs << " runs";
    thread.Deinitialize();
    EXPECT_FALSE(RepeatedThread::IsLastAttempt());
  }
}

TEST_F(RepeatedThreadTest, DeinitializeCutsAPauseShort) {
  // A test cannot see that the pause has begun, and a Deinitialize() just before it ends the thread
  // without a message. So this repeats until a Deinitialize() falls into the pause.
  for (int attempt = 0; attempt < 1000 && Log().empty(); ++attempt) {
    GatedThread thread(/*pause_ms=*/3'600'000, /*repeat_count=*/10);
    thread.results.Put(false);
    ASSERT_TRUE(thread.Begin());
    EXPECT_TRUE(thread.StaysIdle(std::chrono::milliseconds(attempt)));
    EndsInTime([&] { thread.Deinitialize(); });
  }
  EXPECT_THAT(Log(), ElementsAre("ThreadLoop[worker]: thread existed after sleep!"));
}

TEST_F(RepeatedThreadTest, DeinitializeWaitsForARunAndEndsSilently) {
  GatedThread thread(/*pause_ms=*/3'600'000, /*repeat_count=*/10);
  ASSERT_TRUE(thread.Begin());
  Seen<bool> returned;
  Background stopper("Deinitialize()", [&] {
    thread.Deinitialize();
    returned.Put(true);
  });
  EXPECT_FALSE(returned.Take(std::chrono::milliseconds(20)));  // can miss a bug, never invent one
  thread.results.Put(true);
  stopper.Join();
  thread.Start();  // ignored, silently
  EXPECT_TRUE(thread.StaysIdle());
  EXPECT_THAT(Log(), IsEmpty());
}

// A worker uses this because it must not join itself or another worker.
TEST_F(RepeatedThreadTest, AnActionMayAskItsOwnThreadToEnd) {
  Seen<bool> on_worker;
  std::counting_semaphore<> may_end{0};
  FunctionThread thread(/*pause_ms=*/3'600'000, /*repeat_count=*/10, [&] {
    for (int i = 0; i < 2; ++i) thread.RequestExit();
    thread.Start();  // ignored
    on_worker.Put(RepeatedThread::IsWorker());
    return !may_end.try_acquire_for(kHangGuard);
  });
  thread.Initialize();
  thread.Start();
  EXPECT_EQ(on_worker.Take(), true);
  EXPECT_FALSE(RepeatedThread::IsWorker());
  EXPECT_FALSE(thread.HasEnded()) << "while the action runs";
  may_end.release();
  EXPECT_TRUE(Eventually([&] { return thread.HasEnded(); }));
  thread.Deinitialize();
  EXPECT_TRUE(on_worker.empty());
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(RepeatedThreadTest, DeinitializeBeforeTheThreadHasBegunEndsIt) {
  GatedThread thread;
  thread.Start();
  thread.Deinitialize();
  EXPECT_THAT(
      log_.Lines(),
      ElementsAre(LogLine{
          .priority = ANDROID_LOG_WARN,
          .tag = "audio_hw_repeated_thread",
          .text = "Deinitialize[worker]: Thread wasn't started, force to end the thread."}));
  EndsInTime([&] { thread.ThreadLoop(); });  // the thread's function, if it starts late
  EXPECT_FALSE(thread.entered.try_acquire());
}

TEST_F(RepeatedThreadTest, NoRequestIsLostAmongMany) {
  std::atomic<int> requested{0};
  std::atomic<int> served{0};
  FunctionThread thread(0, 0, [&] {
    served = requested.load();
    return true;
  });
  thread.Initialize();
  for (int round = 0; round < 200; ++round) {
    {
      std::deque<Background> clients;
      for (int client = 0; client < 4; ++client) {
        clients.emplace_back("requests", [&] {
          for (int i = 0; i < 25; ++i) {
            ++requested;
            thread.Start();
          }
        });
      }
    }
    ASSERT_TRUE(Eventually([&] { return served == requested; })) << "round " << round;
  }
  thread.Deinitialize();
}

TEST_F(RepeatedThreadTest, NothingIsAllocatedAfterInitialize) {
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
  // Does not use Eventually(), which may allocate its function object.
  const auto deadline = steady_clock::now() + kHangGuard;
  while (runs == runs_before && steady_clock::now() < deadline) std::this_thread::yield();
  thread.Deinitialize();
  EXPECT_EQ(g_allocations, allocations);
  EXPECT_GT(runs, runs_before);
  __android_log_set_minimum_priority(priority);
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
