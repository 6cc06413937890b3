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
  const Recording recording = ReadRecording(path);
  const std::string name = path.substr(path.rfind('/') + 1);
  const std::string title =
      recording.device.empty() ? name : name + ": the device '" + recording.device + "'";
  const PlotFormat format = options.output.ends_with(".svg") ? PlotFormat::kSvg : PlotFormat::kPng;
  const std::string script = PlotScript(MakeTimeline(recording), title, format);
  if (script.empty()) throw std::runtime_error(path + " holds nothing that could be drawn");
  WriteFile(options.output, RunGnuplot(script));
  output.Explain("Drawn into " + options.output + ".");
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
