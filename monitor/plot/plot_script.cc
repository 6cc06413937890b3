// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "plot/plot_script.h"

#include <time.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/decimal.h"
#include "clients/subjects.h"
#include "clients/value.h"
#include "output/printable.h"

namespace norvik::qel::monitor {

namespace {

using Quantity = Timeline::Quantity;

// In pixels, for the fonts of both terminals.
constexpr double kLineHeight = 19;  // of a lane or an entry of a legend
constexpr double kTitleHeight = 34;
constexpr double kPlotWidth = 660;
constexpr double kFontSize = 13;
constexpr double kHeadlineSize = 18;

constexpr std::array kColours = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                 "#e69f00", "#56b4e9", "#8c510a", "#444444"};
constexpr std::array kDashes = {"1", "(12,6)", "(3,4)"};
constexpr std::array kSeverityColours = {"#dcdcdc", "#fed976", "#feb24c", "#fc6d2c",
                                         "#e31a1c", "#a10026", "#4b0018", "#6a3d9a"};
constexpr char kBar[] = "1:3:1:2:($3-.36):($3+.36) with boxxyerror";
constexpr char kLine[] =
    "set arrow from screen R + 16/X, screen Z to screen R + 46/X, screen Z nohead ";
constexpr char kDeath[] =
    "1:(L):1:2:(L):(H) with boxxyerror fs transparent solid .2 border rgb '#cc0000'";

// NaN leaves a gap.
std::string Number(double number) {
  return std::isfinite(number) ? DecimalText(number) : "NaN";
}

// A string literal of gnuplot. Within single quotes only the quote itself is special. A newline is
// not allowed.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') quoted += '\'';
    quoted += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return quoted + "'";
}

// At least the width in pixels, in wide fonts as well: gnuplot does not tell how wide a text is.
double WidthOf(std::string_view text) {
  constexpr std::string_view kNarrow = " !'(),-./:;I[\\]`fijlrt{|}";
  constexpr std::string_view kWide = "%@MWmw";
  constexpr std::string_view kCapitalSized = "#&+<=>ABCDEFGHJKLNOPQRSTUVXYZ^~";
  double width = 0;  // as a part of the font size
  for (const char c : text) {
    if ((static_cast<unsigned char>(c) & 0xc0) == 0x80) continue;  // inside a character
    width += static_cast<unsigned char>(c) >= 0x80   ? 1.3
             : kNarrow.find(c) != kNarrow.npos       ? .42
             : kWide.find(c) != kWide.npos           ? 1
             : kCapitalSized.find(c) != kNarrow.npos ? .84
                                                     : .64;
  }
  return width * kFontSize;
}

// The title in the legend and the colour of a value's bars. Without a title it is not drawn.
struct Look {
  std::string title;
  std::string colour;
};

Look LookOf(Quantity quantity, int value) {
  if (quantity == Quantity::kCharger) return value == 0 ? Look{} : Look{"online", kColours[2]};
  if (quantity == Quantity::kService) {
    return value == 0 ? Look{"service is dead", "#f0b3b3"} : Look{"service runs", "#a6dba0"};
  }
  const auto name = NameOf(Severity{value});
  const size_t known = name ? static_cast<size_t>(value) : kSeverityColours.size() - 1;
  return {name ? std::string(*name) : "severity " + std::to_string(value), kSeverityColours[known]};
}

// Rows of gnuplot data: a time, then a value, or the end time and a lane. gnuplot prints times as
// UTC, so they are shifted by the local time's offset.
using Rows = std::vector<std::array<double, 3>>;

class Script {
 public:
  explicit Script(const Timeline& timeline)
      : timeline_(timeline), length_(timeline.end > 0 ? timeline.end : 1) {
    if (!timeline.began) return;
    const time_t began = std::chrono::system_clock::to_time_t(*timeline.began);
    localtime_r(&began, &clock_);
    begin_ =
        Seconds(timeline.began->time_since_epoch()).count() + static_cast<double>(clock_.tm_gmtoff);
  }

  std::string Make(const std::string& title, const std::string& terminal) {
    for (int i = 0; i <= static_cast<int>(Quantity::kService); ++i) {
      const Quantity quantity{i};
      const bool is_bars = quantity == Quantity::kCharger || quantity == Quantity::kSeverity ||
                           quantity == Quantity::kService;
      is_bars ? AddBars(quantity) : AddCurves(quantity);
    }
    if (panels_.empty()) return "";
    panels_.insert(last_panel_, "set format x F timedate\n");
    height_ += 62;
    std::array<char, 64> clock;
    strftime(clock.data(), clock.size(),
             timeline_.began ? ", %Y-%m-%d (UTC%z)" : ", time since the beginning", &clock_);
    const std::string headline = Printable(title) + clock.data();
    right_ = std::max(right_, WidthOf(headline) * kHeadlineSize / kFontSize - kPlotWidth + 10);
    const double width = left_ + kPlotWidth + right_;
    return "set terminal " + terminal + " noenhanced background rgb 'white' size " + Number(width) +
           "," + Number(height_) + "\nset encoding utf8\n" + data_ + "X = 0. + " + Number(width) +
           "\nY = 0. + " + Number(height_) + "\nR = 1 - " + Number(right_) +
           "/X\nset multiplot\nset lmargin at screen " + Number(left_) +
           "/X\nset rmargin at screen R\nunset key\n"
           "set grid xtics ytics lt 1 lw .5 lc rgb '#dddddd'\nset border lc rgb '#888888'\n"
           "set style fill solid border\nset tics scale .5 nomirror textcolor rgb 'black'\n" +
           TimeTics() + "set format x ''\nset xrange [" + Number(begin_) + ":" +
           Number(begin_ + length_) + "]\nset label 1 " + Quoted(headline) + " at screen " +
           Number(left_) + "/X, screen 1 - 24/Y font '," + Number(kHeadlineSize) + "'\n" + panels_ +
           "unset multiplot\n";
  }

 private:
  void AddCurves(Quantity quantity) {
    double low = NAN;
    double high = NAN;
    size_t count = 0;
    for (const auto& [key, curve] : timeline_.curves) {
      if (key.first != quantity) continue;
      for (const auto& point : curve) {
        low = std::fmin(low, point.value);
        high = std::fmax(high, point.value);
      }
      // A cycle count that does not change gets no panel.
      if (quantity == Quantity::kCycles && low == high) continue;
      if (count == 0) PlotDeaths(FamilyOfQuantity(quantity));
      Rows rows;
      for (const auto& [at, value] : curve) rows.push_back({begin_ + at, value, 0});
      rows.push_back({begin_ + length_, curve.back().value, 0});
      const std::string look = std::string("lw 2.2 dt ") + kDashes[count / 8 % kDashes.size()];
      const std::string colour = kColours[count % kColours.size()];
      Plot(rows, "1:2 with steps " + look, colour);
      Name(key.second, kLine + look, colour);
      ++count;
    }
    if (count == 0) return;
    // Relative to the value, too: gnuplot refuses a range that is empty at its precision.
    const double margin = std::max({1.0, (high - low) / 12, std::abs(high) * 1e-6});
    const double step = (high - low + 2 * margin) / 6;
    const double decade = std::pow(10, std::floor(std::log10(step)));
    const double round = step <= decade ? 1 : step <= 2 * decade ? 2 : step <= 5 * decade ? 5 : 10;
    Add(quantity, 96, low - margin, high + margin, Number(std::max(1.0, round * decade)));
  }

  // Draws one lane per name, the first one on top.
  void AddBars(Quantity quantity) {
    std::vector<std::string> lanes;
    std::map<int, Rows> bars;
    for (const auto& [key, curve] : timeline_.curves) {
      if (key.first != quantity) continue;
      lanes.push_back(key.second);
      for (size_t i = 0; i < curve.size(); ++i) {
        const double to = i + 1 < curve.size() ? curve[i + 1].at : length_;
        if (!std::isfinite(curve[i].value)) continue;
        bars[static_cast<int>(curve[i].value)].push_back(
            {begin_ + curve[i].at, begin_ + to, static_cast<double>(lanes.size())});
      }
    }
    if (quantity != Quantity::kService) PlotDeaths(FamilyOfQuantity(quantity));
    for (const auto& [value, rows] : bars) {
      const Look look = LookOf(quantity, value);
      if (look.title.empty()) continue;
      Plot(rows, kBar, look.colour);
      Name(look.title, std::string(kLine) + "lw 11", look.colour);
    }
    if (quantity == Quantity::kService) PlotMoments(lanes);
    std::string tics;
    for (size_t i = 0; i < lanes.size(); ++i) {
      tics += (i == 0 ? "(" : ", ") + Quoted(lanes[i]) + " " + std::to_string(i + 1);
      left_ = std::max(left_, 20 + WidthOf(lanes[i]));
    }
    const auto count = static_cast<double>(lanes.size());
    if (!legend_.empty()) Add(quantity, kLineHeight * count, count + .6, .4, tics + ")");
    plots_.clear();
  }

  void PlotMoments(std::vector<std::string>& lanes) {
    struct Point {
      Timeline::Moment::Kind kind;
      const char* type;
      const char* colour;
      const char* title;
    };
    using Kind = Timeline::Moment::Kind;
    constexpr std::array kPoints = {Point{Kind::kDied, "2 lw 2", "#cc0000", "service dies"},
                                    Point{Kind::kRefused, "5", "#e69f00", "service refuses a call"},
                                    Point{Kind::kRegistered, "9", "#00563e", "library registers"},
                                    Point{Kind::kCalled, "7 ps .6", "#0072b2", "client is called"}};
    for (const auto& [kind, type, colour, title] : kPoints) {
      Rows rows;
      for (const auto& moment : timeline_.moments) {
        if (moment.kind != kind) continue;
        auto lane = std::find(lanes.begin(), lanes.end(), moment.lane);
        if (lane == lanes.end()) lane = lanes.insert(lane, moment.lane);
        rows.push_back({begin_ + moment.at, 0, static_cast<double>(lane - lanes.begin() + 1)});
      }
      if (rows.empty()) continue;
      Plot(rows, std::string("1:3 with points pt ") + type, colour);
      Name(title, std::string("set label '' at screen R + 31/X, screen Z point pt ") + type,
           colour);
    }
  }

  // Marks the times when the family's services were dead.
  void PlotDeaths(std::string_view family) {
    Rows rows;
    for (const auto& [key, life] : timeline_.curves) {
      if (key.first != Quantity::kService ||
          FamilyOfService(key.second.substr(0, key.second.rfind(' '))) != family)
        continue;
      for (size_t i = 0; i < life.size(); ++i) {
        const double to = i + 1 < life.size() ? life[i + 1].at : length_;
        if (life[i].value == 0) rows.push_back({begin_ + life[i].at, begin_ + to, 0});
      }
    }
    if (!rows.empty()) Plot(rows, kDeath, "#cc0000");
  }

  void Plot(const Rows& rows, const std::string& style, const std::string& colour) {
    const std::string name = "$data" + std::to_string(data_count_++);
    data_ += name + " << END\n";
    for (const auto& [x, y, z] : rows) {
      data_ += Number(x) + " " + Number(y) + " " + Number(z) + "\n";
    }
    data_ += "END\n";
    plots_ +=
        (plots_.empty() ? "plot " : ", ") + name + " using " + style + " lc rgb '" + colour + "'";
  }

  // Adds an entry to the legend; `sample` draws at the height Z. gnuplot's own legend would start
  // columns, or omit entries, where a terminal's lines are higher than expected.
  void Name(const std::string& title, const std::string& sample, const std::string& colour) {
    if (title.empty()) return;
    const double y = height_ + kTitleHeight + kLineHeight * (titles_++ + .5);
    legend_ += "Z = 1 - " + Number(y) + "/Y\n" + sample + " lc rgb '" + colour + "'\nset label " +
               Quoted(title) + " at screen R + 52/X, screen Z\n";
    right_ = std::max(right_, 62 + WidthOf(title));
  }

  // Ends a panel that has all plots since the last one. Its vertical range is `low` to `high`.
  void Add(Quantity quantity, double height, double low, double high, const std::string& tics) {
    last_panel_ = panels_.size();
    height_ += kTitleHeight;
    panels_ += "set tmargin at screen 1 - " + Number(height_) + "/Y\n";
    height_ += std::max(height, kLineHeight * std::exchange(titles_, 0));
    panels_ += "set bmargin at screen 1 - " + Number(height_) + "/Y\nL = " + Number(low) +
               "\nH = " + Number(high) + "\nset yrange [L:H]\nset ytics " + tics +
               "\nset label 2 " + Quoted(TextOf(quantity)) + " at graph 0, graph 1 offset 0,.6\n" +
               std::exchange(legend_, "") + std::exchange(plots_, "") +
               "\nunset label\nunset arrow\n";
  }

  // At most nine tics, at round times.
  std::string TimeTics() const {
    constexpr auto kSteps = std::to_array<double>(
        {.01, .02, .05, .1,   .2,   .5,   1,     2,     5,     10,    15,     30,     60,     120,
         300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400, 172800, 604800, 2592000});
    const double step = *std::find_if(kSteps.begin(), kSteps.end() - 1,
                                      [&](double each) { return length_ / each <= 8; });
    const bool is_of_days = std::floor(begin_ / 86400) != std::floor((begin_ + length_) / 86400);
    const char* const format = is_of_days && step >= 60
                                   ? timeline_.began ? "%H:%M\\n%d %b" : "%H:%M\\nday %j"
                               : step >= 60 ? "%H:%M"
                               : step >= 1  ? "%H:%M:%S"
                                            : "%H:%M:%.2S";
    return "set xtics time " + Number(step) + "\nF = \"" + format + "\"\n";
  }

  const Timeline& timeline_;
  const double length_;
  double begin_ = 0;
  tm clock_ = {};  // at the beginning
  std::string data_;
  int data_count_ = 0;
  // Of the current panel.
  std::string plots_;
  std::string legend_;
  int titles_ = 0;  // in the legend
  std::string panels_;
  size_t last_panel_ = 0;
  // In pixels.
  double left_ = 100;   // the names of the lanes
  double right_ = 120;  // the legends
  double height_ = 36;
};

}  // namespace

std::string PlotScript(const Timeline& timeline, const std::string& title,
                       const std::string& terminal) {
  return Script(timeline).Make(title, terminal);
}

}  // namespace norvik::qel::monitor
