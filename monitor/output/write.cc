// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/write.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace norvik::qel::monitor {

std::string_view WriteAll(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(fd, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<size_t>(written));
    } else if (errno == EAGAIN) {
      // A terminal or pipe that another program has made non-blocking.
      pollfd out = {.fd = fd, .events = POLLOUT, .revents = 0};
      poll(&out, 1, -1);
    } else if (errno != EINTR) {
      break;
    }
  }
  return text;
}

void WriteFile(const std::string& path, std::string_view content) {
  struct stat existing = {};
  const bool in_place = stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode);
  // O_EXCL: the draft may not replace a file either, such as the recording that is exported.
  const std::string draft = in_place ? path : path + ".part" + std::to_string(getpid());
  const int how = O_WRONLY | O_CREAT | O_CLOEXEC | (in_place ? O_TRUNC : O_EXCL);
  const int fd = open(draft.c_str(), how, 0666);
  bool done = fd >= 0 && WriteAll(fd, content).empty();
  // A full disk may be reported only here. EINVAL: a pipe or terminal cannot be synchronized.
  done = done && (fsync(fd) == 0 || errno == EINVAL);
  if (done && !in_place) done = rename(draft.c_str(), path.c_str()) == 0;
  const int error = errno;
  if (fd >= 0) close(fd);
  if (done) return;
  if (fd >= 0 && !in_place) unlink(draft.c_str());
  throw std::runtime_error("cannot write " + path + ": " + std::generic_category().message(error));
}

void LineWriter::Write(std::string line) {
  line += '\n';
  if (!is_muted_ && open() && !WriteAll(STDOUT_FILENO, line).empty()) error_ = errno;
}

int LineWriter::error() const {
  return error_ == EPIPE ? 0 : error_;
}

}  // namespace norvik::qel::monitor
