// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/read_dump.h"

#include <errno.h>
#include <sys/mman.h>
#include <unistd.h>

#include <system_error>

namespace norvik::qel::monitor {

std::string ReadDump(void (*dump)(void* handle, int fd), void* handle) {
  // A file in memory takes a dump of any length; a pipe that is not read would fill up.
  const int fd = memfd_create("dump", MFD_CLOEXEC);
  if (fd < 0) throw std::system_error(errno, std::generic_category(), "memfd_create");
  dump(handle, fd);
  lseek(fd, 0, SEEK_SET);
  std::string text;
  char part[1024];
  for (ssize_t size; (size = read(fd, part, sizeof part)) > 0;) {
    text.append(part, static_cast<size_t>(size));
  }
  close(fd);
  return text;
}

}  // namespace norvik::qel::monitor
