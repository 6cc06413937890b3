// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Dumps to descriptors that cannot be written to, in all three families.
#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <climits>

#include "environment.h"
#include "fixture.h"
#include "pipe.h"

namespace norvik::qel {
namespace {

bool IsPending(int signal) {
  sigset_t pending;
  EXPECT_EQ(sigpending(&pending), 0);
  return sigismember(&pending, signal) == 1;
}

// Dumps while SIGPIPE has its default action, which would end the process.
class DumpsTest : public HandleFixture, public testing::WithParamInterface<Family> {
 protected:
  DumpsTest() : HandleFixture(GetParam()) {
    sigemptyset(&pipe_signal_);
    sigaddset(&pipe_signal_, SIGPIPE);
    gone_.CloseReader();
    Init();
  }
  ~DumpsTest() override {
    Deinit();
    signal(SIGPIPE, old_handler_);
  }

  void DumpTo(int fd) { family_.dump(handle_, fd); }

  sigset_t pipe_signal_;
  const sighandler_t old_handler_ = signal(SIGPIPE, SIG_DFL);
  Pipe gone_;  // the reader has closed its end
};
INSTANTIATE_TEST_SUITE_P(, DumpsTest, testing::Values(kBattery, kSensors, kThermal),
                         [](const auto& test) { return test.param.name; });

TEST_P(DumpsTest, AReaderThatHasGoneDoesNotEndTheProcess) {
  DumpTo(gone_.writer());
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  close(ends[0]);
  DumpTo(ends[1]);
  close(ends[1]);
  sigset_t mask;
  ASSERT_EQ(pthread_sigmask(SIG_SETMASK, nullptr, &mask), 0);
  EXPECT_EQ(sigismember(&mask, SIGPIPE), 0) << "the caller's mask is restored";
}

TEST_P(DumpsTest, ABlockedSignalStaysAsTheCallerLeftIt) {
  ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &pipe_signal_, nullptr), 0);
  DumpTo(gone_.writer());
  EXPECT_FALSE(IsPending(SIGPIPE));
  raise(SIGPIPE);
  DumpTo(gone_.writer());
  EXPECT_TRUE(IsPending(SIGPIPE)) << "the caller's own";
  const timespec no_wait = {};
  EXPECT_EQ(sigtimedwait(&pipe_signal_, nullptr, &no_wait), SIGPIPE);
  EXPECT_FALSE(IsPending(SIGPIPE));
  EXPECT_EQ(pthread_sigmask(SIG_UNBLOCK, &pipe_signal_, nullptr), 0);
}

TEST_P(DumpsTest, ADescriptorThatCannotBeWrittenToCostsNoMemory) {
  const int path_only = open("/", O_PATH | O_CLOEXEC);
  const int read_only = open("/dev/null", O_RDONLY | O_CLOEXEC);
  for (const int fd : {-1, INT_MAX, path_only, read_only, gone_.writer()}) {
    const size_t before = mallinfo2().uordblks;
    for (int i = 0; i < 1000; ++i) DumpTo(fd);
    const size_t after = mallinfo2().uordblks;
    if (!kSanitized) {  // mallinfo2() does not count a sanitizer's allocations
      EXPECT_LT(after, before + size_t{100'000}) << "descriptor " << fd;
    }
  }
  close(path_only);
  close(read_only);
}

}  // namespace
}  // namespace norvik::qel
