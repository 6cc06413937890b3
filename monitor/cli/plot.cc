// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <stdexcept>
#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "output/output.h"
#include "output/write_file.h"
#include "plot/gnuplot.h"
#include "plot/plot_script.h"
#include "recording/recording_reader.h"

namespace norvik::qel::monitor {

int Plot(const Options& options, Output& output) {
  const std::string& path = options.operands.front();
  if (options.output.empty()) throw UsageError("plot: --output FILE is missing");
  if (!options.output.ends_with(".svg") && !options.output.ends_with(".png")) {
    throw UsageError("--output: '" + options.output + "' ends neither with .svg nor with .png");
  }
  const Recording recording = ReadRecording(path);
  const PlotFormat format = options.output.ends_with(".svg") ? PlotFormat::kSvg : PlotFormat::kPng;
  const std::string script = PlotScript(MakeTimeline(recording), TitleOf(recording), format);
  if (script.empty()) throw std::runtime_error(path + " holds nothing that could be drawn");
  WriteFile(options.output, RunGnuplot(script));
  output.Explain("Drawn into " + options.output + ".");
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
