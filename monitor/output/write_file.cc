// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/write_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace norvik::qel::monitor {

namespace {

bool Write(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(fd, content.data(), content.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) content.remove_prefix(static_cast<size_t>(written));
  }
  return fsync(fd) == 0 || errno == EINVAL;  // a disk may say only now that it is full
}

}  // namespace

void WriteFile(const std::string& path, std::string_view content) {
  struct stat existing = {};
  const bool in_place = stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode);
  const std::string draft = in_place ? path : path + ".part";
  const int fd = open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  bool done = fd >= 0 && Write(fd, content);
  if (done && !in_place) done = rename(draft.c_str(), path.c_str()) == 0;
  const int error = errno;
  if (fd >= 0) close(fd);
  if (done) return;
  if (fd >= 0 && !in_place) unlink(draft.c_str());
  throw std::runtime_error("cannot write " + path + ": " + std::generic_category().message(error));
}

}  // namespace norvik::qel::monitor
