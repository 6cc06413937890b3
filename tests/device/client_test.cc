// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What holds for the clients of every family.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "device_test.h"

namespace norvik::qel::device_test {

namespace {

constexpr int64_t kMemoryTolerance = 1024;  // kilobytes

// What this process holds. Binder threads do not count: the platform adds them on demand.
struct Holdings {
  int threads = 0;
  int descriptors = 0;
  int64_t kilobytes = 0;

  static Holdings Now() {
    Holdings now;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
      std::string name;
      std::ifstream(task.path() / "comm") >> name;
      const bool is_binder = name.find("binder:") == 0 || name.find("Binder:") == 0 ||
                             name.find("hwbinder:") == 0 || name.find("HwBinder:") == 0;
      now.threads += !name.empty() && !is_binder ? 1 : 0;
    }
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    now.descriptors = static_cast<int>(std::distance(begin(descriptors), end(descriptors)));
    std::ifstream memory("/proc/self/smaps_rollup");
    for (std::string field; memory >> field;) {
      if (field == "Rss:") memory >> now.kilobytes;
    }
    return now;
  }
  // A joined thread can be listed for a moment.
  static void ExpectFlat(const Holdings& before) {
    Holdings now;
    const bool is_flat = Eventually([&] {
      now = Now();
      return now.threads == before.threads && now.descriptors == before.descriptors &&
             now.kilobytes <= before.kilobytes + kMemoryTolerance;
    });
    EXPECT_TRUE(is_flat) << "threads " << before.threads << " -> " << now.threads
                         << ", descriptors " << before.descriptors << " -> " << now.descriptors
                         << ", memory " << before.kilobytes << " -> " << now.kilobytes << " kB";
  }
};

std::string NameOf(const testing::TestParamInfo<Subject>& info) {
  return info.param.name;
}

class HandleTest : public testing::TestWithParam<Subject> {};
INSTANTIATE_TEST_SUITE_P(Device, HandleTest, testing::ValuesIn(Subjects()), NameOf);

TEST_P(HandleTest, IsMadeAndDestroyedAThousandTimes) {
  { const Handle first(GetParam()); }  // what is made once and stays
  const Holdings before = Holdings::Now();
  for (int i = 0; i < 1000; ++i) {
    const Handle handle(GetParam());
    ASSERT_NE(handle.get(), nullptr);
  }
  Holdings::ExpectFlat(before);
}

class ClientTest : public SubjectTest, public testing::WithParamInterface<Subject> {
 protected:
  ClientTest() : SubjectTest(GetParam()) {}
};
INSTANTIATE_TEST_SUITE_P(Device, ClientTest, testing::ValuesIn(Subjects()), NameOf);

TEST_P(ClientTest, RegistersOnceAndLeavesOnce) {
  EXPECT_EQ(handle_.Enroll(0, &client_), -EINVAL);
  EXPECT_EQ(handle_.Enroll(1, nullptr), -EINVAL);
  EXPECT_EQ(GetParam().enroll(nullptr, 1, &other_), -EINVAL);
  EXPECT_EQ(handle_.Leave(1), -EINVAL);
  EXPECT_EQ(handle_.Enroll(1, &other_), 0);
  EXPECT_TRUE(other_.WaitForCalls(1));
  EXPECT_EQ(handle_.Leave(0), 0);
  EXPECT_EQ(handle_.Leave(0), -EINVAL);
  EXPECT_EQ(handle_.Leave(1), 0);
}

TEST_P(ClientTest, LeavesInsideItsCallback) {
  std::atomic<int> left = 1;
  other_.on_call = [&] { left = handle_.Leave(1); };
  ASSERT_EQ(handle_.Enroll(1, &other_), 0);
  ASSERT_TRUE(other_.WaitForCalls(1));
  EXPECT_EQ(left, 0);
  EXPECT_EQ(handle_.Leave(1), -EINVAL);
  handle_.Deinit();  // a call under way uses `left`
}

TEST_P(ClientTest, OutlivesAnotherHandle) {
  Client second_client;
  Handle second(GetParam());
  ASSERT_EQ(second.Enroll(0, &second_client), 0);
  ASSERT_TRUE(second_client.WaitForCalls(1));
  second.Deinit();
  ASSERT_EQ(handle_.Enroll(1, &other_), 0);
  EXPECT_TRUE(other_.WaitForCalls(1));
}

TEST_P(ClientTest, LeavesNothingBehind) {
  const Holdings before = Holdings::Now();
  for (int i = 0; i < 100; ++i) {
    Client client;
    Handle handle(GetParam());
    ASSERT_EQ(handle.Enroll(0, &client), 0);
    handle.Deinit();
  }
  Holdings::ExpectFlat(before);
}

TEST_P(ClientTest, IsInTheDump) {
  const std::string with_client = DumpText(GetParam().dump, handle_.get());
  EXPECT_TRUE(with_client.starts_with(std::string(1, std::toupper(GetParam().family[0])) +
                                      (GetParam().family + 1)))
      << with_client;
  ASSERT_EQ(handle_.Leave(0), 0);
  EXPECT_NE(DumpText(GetParam().dump, handle_.get()), with_client);
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  close(ends[0]);
  GetParam().dump(handle_.get(), ends[1]);  // SIGPIPE would end the test
  close(ends[1]);
}

TEST_P(ClientTest, ListensWithoutGrowth) {
  const auto end = Clock::now() + options.listening;
  const int never = client_.calls() + 1'000'000'000;
  static_cast<void>(client_.WaitForCalls(never, options.listening / 10));  // buffers fill up
  const Holdings before = Holdings::Now();
  static_cast<void>(client_.WaitForCalls(never, end - Clock::now()));
  Holdings::ExpectFlat(before);
}

TEST_P(ClientTest, SurvivesARestartOfTheService) {
  const std::string family = GetParam().family;
  if (family == "sensor") GTEST_SKIP() << "the library does not survive the sensor service";
  const auto restart = options.restart_commands.find(family);
  if (restart == options.restart_commands.end()) GTEST_SKIP() << "no --restart-command given";
  const auto change = options.change_commands.find(family);
  ASSERT_EQ(std::system(restart->second.c_str()), 0) << restart->second;
  ASSERT_TRUE(Eventually([&] { return GetParam().absence(handle_.get()).empty(); }, kReturnLimit))
      << GetParam().absence(handle_.get());
  if (family == "battery") {
    const auto is_linked = [&] {
      return DumpText(GetParam().dump, handle_.get()).find("services = T") != std::string::npos;
    };
    EXPECT_TRUE(Eventually(is_linked, kReturnLimit)) << DumpText(GetParam().dump, handle_.get());
  }
  if (change != options.change_commands.end()) {
    // The old service may take a command that comes before its end.
    const auto deadline = Clock::now() + kReturnLimit;
    const int calls = client_.calls();
    do {
      ASSERT_EQ(std::system(change->second.c_str()), 0) << change->second;
    } while (!client_.WaitForCalls(calls + 1, std::chrono::seconds(1)) && Clock::now() < deadline);
    EXPECT_GT(client_.calls(), calls) << "the change does not reach the client";
  }
  ASSERT_EQ(handle_.Enroll(1, &other_), 0);
  EXPECT_TRUE(other_.WaitForCalls(1));
  EXPECT_TRUE(Eventually([&] { return client_.value() == other_.value(); }));
}

}  // namespace

}  // namespace norvik::qel::device_test
