// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "plot/gnuplot.h"

#include <errno.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace norvik::qel::monitor {

std::string RunGnuplot(const std::string& script) {
  const auto fail = [] {
    throw std::runtime_error("cannot run gnuplot: " + std::generic_category().message(errno));
  };
  // In memory: a pipe would have to be filled while gnuplot writes. gnuplot inherits it.
  const std::unique_ptr<FILE, int (*)(FILE*)> input(fdopen(memfd_create("script", 0), "w"), fclose);
  if (!input) fail();
  const bool is_filled = fwrite(script.data(), 1, script.size(), input.get()) == script.size();
  if (!is_filled || fflush(input.get()) != 0) fail();
  // The plot looks the same everywhere: without a user's settings, and in a locale that every
  // system has and that knows the degree sign. The command has no text of others.
  const std::string command =
      "command -v gnuplot >/dev/null || exit 127;"
      "LC_ALL=C.UTF-8 exec gnuplot --default-settings /dev/fd/" +
      std::to_string(fileno(input.get()));
  FILE* const output = popen(command.c_str(), "r");  // NOLINT(bugprone-command-processor)
  if (output == nullptr) fail();
  std::string picture;
  std::array<char, 65536> part;
  while (const size_t size = fread(part.data(), 1, part.size(), output)) {
    picture.append(part.data(), size);
  }
  const int status = pclose(output);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
    throw std::runtime_error("gnuplot is not installed; on Debian it is in gnuplot-nox");
  }
  if (status != 0 || picture.empty()) throw std::runtime_error("gnuplot has failed");
  return picture;
}

}  // namespace norvik::qel::monitor
