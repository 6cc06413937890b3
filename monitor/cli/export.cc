// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <stdexcept>
#include <system_error>

#include "cli/commands.h"
#include "cli/options.h"
#include "output/output.h"
#include "output/write_file.h"
#include "recording/export.h"
#include "recording/recording_reader.h"

namespace norvik::qel::monitor {

int Export(const Options& options, Output& output) {
  if (options.to.empty())
    throw UsageError("export: --to is missing, use --to csv or --to perfetto");
  const Recording recording = ReadRecording(options.operands.front());
  const Timeline timeline = MakeTimeline(recording);
  const std::string text =
      options.to == "csv" ? ToCsv(timeline) : ToTraceEvents(timeline, TitleOf(recording));
  if (!options.output.empty()) {
    WriteFile(options.output, text + (options.to == "csv" ? "\r\n" : "\n"));
    output.Explain("Exported into " + options.output + ".");
    return EXIT_SUCCESS;
  }
  LineWriter lines;
  lines.Write(options.to == "csv" ? text + "\r" : text);
  if (const int error = lines.error()) {
    throw std::runtime_error("cannot write: " + std::generic_category().message(error));
  }
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
