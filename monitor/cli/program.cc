// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel: a client of the library, for people and programs to see what the library reports.
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <exception>
#include <locale>
#include <system_error>

#include "cli/command_table.h"
#include "cli/commands.h"
#include "output/output.h"
#include "output/printable.h"
#include "quorvel.h"

namespace norvik::qel::monitor {

void Complain(const std::string& text) {
  fprintf(stderr, "quorvel: %s\n", Printable(text).c_str());
}

namespace {

std::string Version() {
  return "quorvel " + std::to_string(QUORVEL_VERSION_MAJOR) + "." +
         std::to_string(QUORVEL_VERSION_MINOR) + "." + std::to_string(QUORVEL_VERSION_PATCH);
}

bool IsOpen(int fd) {
  return fcntl(fd, F_GETFD) >= 0;
}

// A descriptor that is opened later must not take the place of a standard one: the library's log
// would go into a recording.
void FillStandardDescriptors() {
  // In ascending order: open() returns the lowest free descriptor.
  for (const int fd : {STDIN_FILENO, STDERR_FILENO}) {
    if (!IsOpen(fd)) static_cast<void>(open("/dev/null", O_RDWR));
  }
}

int Run(int argc, char** argv) {
  if (!IsOpen(STDOUT_FILENO)) {
    Complain("standard output is closed");
    return EXIT_FAILURE;
  }
  FillStandardDescriptors();
  // A reader that has closed the output is found by the next write.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);  // exceeding the file size limit becomes a write error
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (!words.empty() && words.front() == "--complete") {
    PrintCompletions(std::span(words).subspan(1));
    return EXIT_SUCCESS;
  }
  if (words == std::vector<std::string>{"--man"}) {
    fputs(ManualLists().c_str(), stdout);
    return EXIT_SUCCESS;
  }
  const Options options = ParseOptions(argc, argv);
  const bool is_for_people = options.help || options.version;
  const auto output = options.json && !is_for_people ? MakeJsonOutput() : MakeTextOutput();
  int exit_code = EXIT_SUCCESS;
  if (options.help) {
    exit_code = Help(options, *output);
  } else if (options.version) {
    output->Explain(Version());
  } else {
    if (options.device != nullptr) output->SetDevice(options.device->name);
    exit_code = options.command->run(options, *output);
  }
  if (const int error = output->lines().error()) {
    Complain("cannot write: " + std::generic_category().message(error));
    return EXIT_FAILURE;
  }
  return exit_code;
}

}  // namespace

}  // namespace norvik::qel::monitor

int main(int argc, char** argv) {
  namespace monitor = norvik::qel::monitor;
  std::locale::global(std::locale::classic());  // numbers in JSON have a point
  try {
    return monitor::Run(argc, argv);
  } catch (const monitor::UsageError& error) {
    monitor::Complain(std::string(error.what()) + " (see quorvel --help)");
    return monitor::kExitUsage;
  } catch (const std::exception& error) {
    monitor::Complain(error.what());
    return EXIT_FAILURE;
  }
}
