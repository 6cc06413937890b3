// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "plot/gnuplot.h"

#include <errno.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <system_error>

namespace norvik::qel::monitor {

namespace {

[[noreturn]] void Fail(const std::string& what, int error) {
  throw std::runtime_error(what + ": " + std::generic_category().message(error));
}

class Descriptor {
 public:
  Descriptor(int fd, const std::string& purpose) : fd_(fd) {
    if (fd_ < 0) Fail(purpose, errno);
  }
  ~Descriptor() { close(fd_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return fd_; }

 private:
  const int fd_;
};

// Beside the file, so that it can take its place; gone unless it has.
class Draft {
 public:
  explicit Draft(const std::string& path)
      : path_(path),
        draft_(path + ".part"),
        fd_(open(draft_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666),
            "cannot write " + path) {}
  ~Draft() { unlink(draft_.c_str()); }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  int fd() const { return fd_.get(); }
  bool EndsWith(std::string_view ending) const {
    std::string tail(64, '\0');
    const auto size = static_cast<off_t>(tail.size());
    const off_t length = lseek(fd(), 0, SEEK_END);
    const ssize_t read = pread(fd(), tail.data(), tail.size(), std::max<off_t>(length - size, 0));
    tail.resize(static_cast<size_t>(std::max<ssize_t>(read, 0)));
    tail.erase(tail.find_last_not_of('\n') + 1);
    return tail.ends_with(ending);
  }
  void Publish() const {
    // Some disks tell only now that they are full.
    if (fsync(fd()) != 0 && errno != EINVAL) Fail("cannot write " + path_, errno);
    if (rename(draft_.c_str(), path_.c_str()) != 0) Fail("cannot write " + path_, errno);
  }

 private:
  const std::string path_;
  const std::string draft_;
  const Descriptor fd_;
};

// In memory: a pipe would have to be filled while gnuplot reads.
void Fill(const Descriptor& file, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t written = write(file.get(), text.data() + done, text.size() - done);
    if (written < 0) Fail("cannot tell gnuplot what to draw", errno);
    done += static_cast<size_t>(written);
  }
  lseek(file.get(), 0, SEEK_SET);
}

pid_t Start(int input, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  // Without the user's settings: the plot is to look the same everywhere.
  char name[] = "gnuplot";
  char bare[] = "--default-settings";
  char* const arguments[] = {name, bare, nullptr};
  pid_t pid = 0;
  const int error = posix_spawnp(&pid, name, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error == ENOENT) {
    throw std::runtime_error("gnuplot is not installed; on Debian it is in gnuplot-nox");
  }
  if (error != 0) Fail("cannot run gnuplot", error);
  return pid;
}

}  // namespace

void RunGnuplot(const std::string& script, const std::string& path, std::string_view ending) {
  const Draft draft(path);
  const Descriptor input(memfd_create("script", MFD_CLOEXEC), "cannot tell gnuplot what to draw");
  Fill(input, script);
  const pid_t pid = Start(input.get(), draft.fd());
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    // It runs.
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS) {
    throw std::runtime_error("gnuplot has failed");
  }
  if (!draft.EndsWith(ending)) {
    throw std::runtime_error("cannot write " + path + ": gnuplot has written a part of it only");
  }
  draft.Publish();
}

}  // namespace norvik::qel::monitor
