// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "plot/plot_script.h"

#include <vector>

#include "plot/plot_data.h"
#include "plot/plot_panels.h"

namespace norvik::qel::monitor {

namespace {

// In pixels.
constexpr double kWidth = 1260;
constexpr double kLeft = 160;
constexpr double kRight = 360;
constexpr double kTop = 40;
constexpr double kBottom = 60;
constexpr double kGap = 16;

}  // namespace

std::string PlotScript(const Timeline& timeline, const std::string& title, PlotFormat format) {
  PlotData data(timeline.end);
  const std::vector<Panel> panels = PlotPanels(timeline, data);
  if (panels.empty()) return "";
  double height = kTop + kBottom - kGap;
  for (const Panel& panel : panels) height += panel.height + kGap;
  std::string script = format == PlotFormat::kSvg ? "set terminal svg font 'sans-serif,12'"
                                                  : "set terminal pngcairo";
  script += " noenhanced background rgb 'white' size " + PlotNumber(kWidth) + "," +
            PlotNumber(height) + "\nset encoding utf8\n" + data.text() +
            "set multiplot\nset lmargin at screen " + PlotNumber(kLeft / kWidth) +
            "\nset rmargin at screen " + PlotNumber(1 - kRight / kWidth) + "\nset key at screen " +
            PlotNumber(1 - (kRight - 60) / kWidth) +
            ", graph 1 left top Left reverse samplen 2 spacing 1.1\n"
            "set grid xtics ytics lc rgb '#dddddd'\nset format x ''\n"
            "set xrange [0:" +
            PlotNumber(timeline.end > 0 ? timeline.end : 1) + "]\n";
  // A death concerns all that is drawn.
  for (const auto& [service, moments] : timeline.died) {
    for (const double at : moments) {
      script += "set arrow from first " + PlotNumber(at) + ", graph 0 to first " + PlotNumber(at) +
                ", graph 1 nohead dt 3 lc rgb '#cc0000'\n";
    }
  }
  script += "set label " + PlotText(title) + " at screen " + PlotNumber(kLeft / kWidth) +
            ", screen " + PlotNumber(1 - kTop / 2 / height) + " left font ',14'\n";
  double top = height - kTop;
  for (const Panel& panel : panels) {
    const double bottom = top - panel.height;
    script += "set tmargin at screen " + PlotNumber(top / height) + "\nset bmargin at screen " +
              PlotNumber(bottom / height) + "\n" + panel.setup;
    if (&panel == &panels.back()) script += "set format x '%g'\nset xlabel 'time [s]'\n";
    script += "plot ";
    for (const std::string& plot : panel.plots) {
      script += (&plot == panel.plots.data() ? "" : ", ") + plot;
    }
    script += "\nunset label\nset ylabel ''\nset y2label ''\nunset y2tics\n";
    top = bottom - kGap;
  }
  return script + "unset multiplot\n";
}

}  // namespace norvik::qel::monitor
