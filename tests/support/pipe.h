// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A pipe whose reader is controlled by the test.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "waiting.h"

namespace norvik::qel {

class Pipe {
 public:
  Pipe() { EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0); }
  ~Pipe() {
    CloseReader();
    close(ends_[1]);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int writer() const { return ends_[1]; }
  void CloseReader() {
    if (ends_[0] >= 0) close(ends_[0]);
    ends_[0] = -1;
  }

  // Makes the pipe as small as the system allows. Returns its capacity in bytes.
  size_t Shrink() { return static_cast<size_t>(fcntl(ends_[1], F_SETPIPE_SZ, 1)); }
  size_t unread() const {
    int count = 0;
    EXPECT_EQ(ioctl(ends_[0], FIONREAD, &count), 0);
    return static_cast<size_t>(count);
  }
  // Waits for `size` bytes. Returns fewer if no more arrive in time.
  std::string Read(size_t size) {
    constexpr auto kLimit = std::chrono::milliseconds(kHangGuard);
    std::string text(size, '\0');
    size_t have = 0;
    pollfd readable = {.fd = ends_[0], .events = POLLIN, .revents = 0};
    while (have < size && poll(&readable, 1, static_cast<int>(kLimit.count())) == 1) {
      const ssize_t count = read(ends_[0], &text[have], size - have);
      if (count <= 0) break;
      have += static_cast<size_t>(count);
    }
    text.resize(have);
    return text;
  }

 private:
  int ends_[2] = {-1, -1};
};

}  // namespace norvik::qel
