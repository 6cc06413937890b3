// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/stop_signals.h"

#include <errno.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <system_error>

namespace norvik::qel::monitor {

StopSignals::StopSignals() {
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  fd_ = signalfd(-1, &stops, SFD_CLOEXEC | SFD_NONBLOCK);
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
  pthread_sigmask(SIG_BLOCK, &stops, &before_);
}

StopSignals::~StopSignals() {
  Accept();  // one that comes on the way out has been obeyed already
  close(fd_);
}

void StopSignals::Accept() {
  signalfd_siginfo taken;
  while (read(fd_, &taken, sizeof taken) > 0) {
    // Several signals are one wish.
  }
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace norvik::qel::monitor
