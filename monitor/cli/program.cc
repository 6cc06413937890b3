// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/program.h"

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <system_error>

#include "cli/commands.h"
#include "quorvel.h"

namespace norvik::qel::monitor {

void Complain(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  fprintf(stderr, "quorvel: %s\n", text.c_str());
}

std::string Version() {
  return "quorvel " + std::to_string(QUORVEL_VERSION_MAJOR) + "." +
         std::to_string(QUORVEL_VERSION_MINOR) + "." + std::to_string(QUORVEL_VERSION_PATCH);
}

namespace {

bool IsOpen(int fd) {
  return fcntl(fd, F_GETFD) >= 0;
}

// A descriptor that is opened later must not take the place of a standard one: the library's log
// would go into a recording.
void FillStandardDescriptors() {
  // In their order: an open takes the lowest place that is free.
  for (const int fd : {STDIN_FILENO, STDERR_FILENO}) {
    if (!IsOpen(fd)) static_cast<void>(open("/dev/null", O_RDWR));
  }
}

int Run(const Program& program, int argc, char** argv) {
  if (!IsOpen(STDOUT_FILENO)) {
    Complain("standard output is closed");
    return EXIT_FAILURE;
  }
  FillStandardDescriptors();
  // A reader that leaves is noticed at the next line; it is no reason to die.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);  // and a file that must not grow is an error to tell
  const Options options = program.parse(argc, argv);
  const std::unique_ptr<Output> output = program.make_output(options);
  const int exit_code = program.run(options, *output);
  if (const int error = output->lines().error()) {
    Complain("cannot write: " + std::generic_category().message(error));
    return EXIT_FAILURE;
  }
  return exit_code;
}

}  // namespace

int RunProgram(const Program& program, int argc, char** argv) {
  try {
    return Run(program, argc, argv);
  } catch (const UsageError& error) {
    Complain(std::string(error.what()) + " (see quorvel --help)");
    return kExitUsage;
  } catch (const std::exception& error) {
    Complain(error.what());
    return EXIT_FAILURE;
  }
}

}  // namespace norvik::qel::monitor
