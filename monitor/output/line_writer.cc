// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/line_writer.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include <string_view>

namespace norvik::qel::monitor {

void LineWriter::Write(std::string line) {
  if (is_muted_) return;
  line += '\n';
  std::string_view rest = line;
  while (open() && !rest.empty()) {
    const ssize_t written = write(STDOUT_FILENO, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<size_t>(written));
    } else if (errno == EAGAIN) {
      // A terminal or pipe that another program has made non-blocking.
      pollfd out = {.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
      poll(&out, 1, -1);
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
}

int LineWriter::error() const {
  return error_ == EPIPE ? 0 : error_;
}

}  // namespace norvik::qel::monitor
