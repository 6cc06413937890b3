// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <errno.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "cli/commands.h"
#include "cli/options.h"
#include "output/output.h"
#include "output/printable.h"
#include "plot/plot_script.h"
#include "recording/recording_reader.h"

namespace norvik::qel::monitor {

namespace {

// Runs the script and returns the picture that it draws.
std::string RunGnuplot(const std::string& script) {
  const auto fail = [] {
    throw std::runtime_error("cannot run gnuplot: " + std::generic_category().message(errno));
  };
  // A memory file, which gnuplot inherits: a pipe would have to be filled while gnuplot writes.
  const std::unique_ptr<FILE, int (*)(FILE*)> input(fdopen(memfd_create("script", 0), "w"), fclose);
  if (!input) fail();
  const bool is_filled = fwrite(script.data(), 1, script.size(), input.get()) == script.size();
  if (!is_filled || fflush(input.get()) != 0) fail();
  // The plot looks the same everywhere: without the user's settings, and in a locale that every
  // system has and that includes the degree sign. No external text enters the command.
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

}  // namespace

int Plot(const Options& options, Output& output) {
  const std::string& path = options.operands.front();
  if (options.output.empty()) throw UsageError("plot: --output FILE is missing");
  const bool is_svg = options.output.ends_with(".svg");
  if (!is_svg && !options.output.ends_with(".png")) {
    throw UsageError("--output: '" + options.output + "' ends neither with .svg nor with .png");
  }
  CheckIsAnotherFile(options.output, path);
  const Recording recording = ReadRecording(path);
  const std::string script =
      PlotScript(MakeTimeline(recording), TitleOf(recording),
                 is_svg ? "svg font 'sans-serif,13'" : "pngcairo font 'sans,13' fontscale .75");
  if (script.empty()) throw std::runtime_error(path + " holds nothing that could be drawn");
  WriteFile(options.output, RunGnuplot(script));
  output.Explain("Drawn into " + Printable(options.output) + ".");
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
