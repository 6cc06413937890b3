// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "common/dump_writer.h"

#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>

namespace norvik::qel::audio {

namespace {

// Keeps a write of this thread from raising SIGPIPE, without touching the process's disposition of
// the signal, which belongs to the program. The kernel sends the signal to the thread that writes.
class PipeSignalBlock {
 public:
  PipeSignalBlock() {
    sigemptyset(&pipe_signal_);
    sigaddset(&pipe_signal_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_signal_, &old_mask_);
    sigset_t pending;
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
  }
  // One that was pending before is the program's and stays.
  ~PipeSignalBlock() {
    if (raised_ && !was_pending_) {
      const timespec no_wait = {};
      while (sigtimedwait(&pipe_signal_, nullptr, &no_wait) < 0 && errno == EINTR) continue;
    }
    pthread_sigmask(SIG_SETMASK, &old_mask_, nullptr);
  }
  PipeSignalBlock(const PipeSignalBlock&) = delete;
  PipeSignalBlock& operator=(const PipeSignalBlock&) = delete;

  // The write has failed with EPIPE.
  void SetRaised() { raised_ = true; }

 private:
  sigset_t pipe_signal_;
  sigset_t old_mask_;
  bool was_pending_ = false;
  bool raised_ = false;
};

// Up to glibc 2.36, dprintf() allocates its buffer, then asks for the file's position, and leaks
// the buffer when the descriptor is not open. Asking the same question first finds all of those,
// also an O_PATH descriptor, which fcntl() takes for an open one.
bool IsOpen(int fd) {
  return lseek(fd, 0, SEEK_CUR) >= 0 || errno != EBADF;
}

}  // namespace

void DumpWriter::Print(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list arguments_again;
  va_copy(arguments_again, arguments);
  const int length = vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  // Fails only for a piece that no int can measure; such a piece is left out.
  if (length > 0) {
    const size_t begin = text_.size();
    text_.resize(begin + static_cast<size_t>(length));
    // The terminating null lands on the string's own.
    vsnprintf(&text_[begin], static_cast<size_t>(length) + 1, format, arguments_again);
  }
  va_end(arguments_again);
}

void DumpWriter::WriteTo(int fd) const {
  if (!IsOpen(fd)) return;
  PipeSignalBlock block;
  if (dprintf(fd, "%s", text_.c_str()) < 0 && errno == EPIPE) block.SetRaised();
}

}  // namespace norvik::qel::audio
