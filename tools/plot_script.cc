#include "tools/plot_script.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/value.h"

namespace norvik::qel::tool {

namespace {

// In pixels.
constexpr double kWidth = 1260;
constexpr double kLeft = 160;
constexpr double kRight = 360;
constexpr double kTop = 40;
constexpr double kBottom = 60;
constexpr double kGap = 16;
constexpr std::array<std::string_view, 8> kColours = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                                      "#e69f00", "#56b4e9", "#8c510a", "#444444"};

// The point is a point in every locale.
std::string InWords(double number) {
  if (!std::isfinite(number)) return "NaN";
  std::array<char, 64> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

// Nothing in single quotes means anything to gnuplot but the quote itself. No line may end there.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') quoted += '\'';
    quoted += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return quoted + "'";
}

// gnuplot refuses to draw a curve of gaps.
bool HasValue(const Timeline::Curve& curve) {
  return std::any_of(curve.begin(), curve.end(),
                     [](const Timeline::Point& point) { return std::isfinite(point.value); });
}

struct Panel {
  double height;      // in pixels
  std::string setup;  // axes
  std::vector<std::string> plots;
};

class Script {
 public:
  explicit Script(const Timeline& timeline) : timeline_(timeline) {}

  std::string Write(const std::string& title, PlotFormat format);

 private:
  void AddLevel();
  void AddChargers();
  void AddSensors();
  void AddSeverities();
  void AddMoments();

  // The name of the data, which precedes the panels.
  std::string Data(const std::vector<std::array<double, 4>>& rows);
  std::string Steps(const Timeline::Curve& curve, double offset = 0);
  std::string Spans(const Timeline::Spans& spans, double y);
  std::string Marks(const Timeline::Moments& moments, double y);

  const Timeline& timeline_;
  std::string data_;
  int data_count_ = 0;
  std::vector<Panel> panels_;
};

std::string Colour(size_t index) {
  return " lc rgb '" + std::string(kColours[index % kColours.size()]) + "'";
}

std::string Script::Data(const std::vector<std::array<double, 4>>& rows) {
  std::string name = "$data" + std::to_string(data_count_++);
  data_ += name + " << END\n";
  for (const auto& row : rows) {
    for (const double number : row) data_ += InWords(number) + " ";
    data_ += "\n";
  }
  data_ += "END\n";
  return name;
}

// The last value holds to the end.
std::string Script::Steps(const Timeline::Curve& curve, double offset) {
  std::vector<std::array<double, 4>> rows;
  for (const auto& point : curve) rows.push_back({point.at, point.value + offset, 0, 0});
  rows.push_back({timeline_.end, curve.back().value + offset, 0, 0});
  return Data(rows) + " using 1:2 with steps lw 2";
}

std::string Script::Spans(const Timeline::Spans& spans, double y) {
  std::vector<std::array<double, 4>> rows;
  for (const auto& [from, to] : spans) rows.push_back({from, y, to - from, 0});
  return Data(rows) + " using 1:2:3:4 with vectors nohead lw 10";
}

std::string Script::Marks(const Timeline::Moments& moments, double y) {
  std::vector<std::array<double, 4>> rows;
  for (const double at : moments) rows.push_back({at, y, 0, 0});
  return Data(rows) + " using 1:2";
}

void Script::AddLevel() {
  if (!HasValue(timeline_.level)) return;
  panels_.push_back({.height = 150,
                     .setup = "set ylabel 'battery level [%]'\nset yrange [*:*]\n"
                              "set offsets 0, 0, 1, 1\nset ytics autofreq\n",
                     .plots = {Steps(timeline_.level) + Colour(0) + " title 'battery level'"}});
}

void Script::AddChargers() {
  if (!timeline_.has_battery) return;
  std::vector<std::string> plots;
  if (!timeline_.wireless.empty()) {
    plots.push_back(Spans(timeline_.wireless, 2) + Colour(2) + " title 'wireless charger online'");
  }
  if (!timeline_.dock.empty()) {
    plots.push_back(Spans(timeline_.dock, 1) + Colour(4) + " title 'dock charger online'");
  }
  if (plots.empty()) plots.emplace_back("NaN title 'no charger comes online'");
  panels_.push_back({.height = 60,
                     .setup = "set ylabel 'chargers'\nset yrange [0.4:2.6]\n"
                              "set ytics ('dock' 1, 'wireless' 2)\n",
                     .plots = std::move(plots)});
}

void Script::AddSensors() {
  std::vector<std::string> plots;
  std::string setup = "set offsets 0, 0, 1, 1\nset yrange [0:*]\nset ytics autofreq\n";
  if (HasValue(timeline_.hinge_angle)) {
    setup += "set ylabel 'hinge angle [degrees]'\n";
    plots.push_back(Steps(timeline_.hinge_angle) + Colour(1) + " title 'hinge angle'");
  }
  if (HasValue(timeline_.proximity)) {
    // With an axis of its own where the hinge has the other one.
    const std::string axis = plots.empty() ? "y" : "y2";
    setup += "set " + axis + "label 'proximity [cm]'\nset " + axis + "range [0:*]\nset " + axis +
             "tics autofreq nomirror\n";
    plots.push_back(Steps(timeline_.proximity) + Colour(5) + " dt 2 axes x1" +
                    (plots.empty() ? "y1" : "y2") + " title 'proximity'");
  }
  if (plots.empty()) return;
  panels_.push_back({.height = 150, .setup = std::move(setup), .plots = std::move(plots)});
}

void Script::AddSeverities() {
  const auto is_throttled = [](const auto& entry) {
    return std::any_of(entry.second.begin(), entry.second.end(),
                       [](const Timeline::Point& point) { return point.value > 0; });
  };
  // What is never throttled is not worth a line, unless nothing is.
  const auto& severities = timeline_.severities;
  const bool any = std::any_of(severities.begin(), severities.end(), is_throttled);
  std::vector<std::string> plots;
  double highest = 1;
  for (const auto& entry : severities) {
    if (any ? !is_throttled(entry) : !HasValue(entry.second)) continue;
    const size_t index = plots.size();
    for (const auto& point : entry.second) highest = std::max(highest, point.value);
    // Lines that would cover each other are a little apart.
    plots.push_back(Steps(entry.second, static_cast<double>(index) * 0.06) + Colour(index) +
                    " title " + Quoted(entry.first));
  }
  if (plots.empty()) return;
  std::string tics;
  for (int i = 0; i <= static_cast<int>(Severity::kShutdown); ++i) {
    tics += (i == 0 ? "" : ", ") +
            Quoted(std::string(*NameOf(static_cast<Severity>(i))) + " " + std::to_string(i)) + " " +
            std::to_string(i);
  }
  const double height = std::max(150.0, 22 * static_cast<double>(plots.size()));
  panels_.push_back({.height = height,
                     .setup = "set ylabel 'throttling'\nset yrange [-0.3:" +
                              InWords(highest + 0.6) + "]\nset ytics (" + tics + ")\n",
                     .plots = std::move(plots)});
}

void Script::AddMoments() {
  std::vector<std::string> plots;
  std::string tics;
  int y = 0;
  const auto add_lane = [&](const std::string& name) {
    tics += (tics.empty() ? "" : ", ") + Quoted(name) + " " + std::to_string(--y);
  };
  auto add_marks = [&, titled = std::vector<std::string>()](const Timeline::Moments& moments,
                                                            const std::string& style,
                                                            const std::string& title) mutable {
    const bool is_new = std::find(titled.begin(), titled.end(), title) == titled.end();
    if (is_new) titled.push_back(title);
    plots.push_back(Marks(moments, y) + " with points " + style +
                    (is_new ? " title " + Quoted(title) : " notitle"));
  };
  for (const std::string_view service : kServices) {
    const std::string name(service);
    const auto in = [&](const std::map<std::string, Timeline::Moments>& moments) {
      const auto found = moments.find(name);
      return found != moments.end() ? found->second : Timeline::Moments();
    };
    const auto started = in(timeline_.started);
    const auto died = in(timeline_.died);
    const auto refused = in(timeline_.refused);
    if (started.empty() && died.empty() && refused.empty()) continue;
    add_lane(name + " service");
    if (!started.empty()) add_marks(started, "pt 9 ps 1 lc rgb '#009e73'", "service comes up");
    if (!died.empty()) add_marks(died, "pt 2 ps 1.2 lw 3 lc rgb '#cc0000'", "service dies");
    if (!refused.empty())
      add_marks(refused, "pt 5 ps 1 lc rgb '#e69f00'", "service refuses a call");
  }
  for (const auto& [family, moments] : timeline_.called) {
    add_lane(family + " client");
    add_marks(moments, "pt 6 ps 0.8 lc rgb '#0072b2'", "client is called");
  }
  if (plots.empty()) return;
  panels_.push_back({.height = 26.0 * -y,
                     .setup = "set yrange [" + std::to_string(y) + ".6:-0.4]\nset ytics (" + tics +
                              ")\nset ylabel ''\n",
                     .plots = std::move(plots)});
}

std::string Script::Write(const std::string& title, PlotFormat format) {
  AddLevel();
  AddChargers();
  AddSensors();
  AddSeverities();
  AddMoments();
  if (panels_.empty()) return "";
  double height = kTop + kBottom - kGap;
  for (const Panel& panel : panels_) height += panel.height + kGap;
  std::string script = format == PlotFormat::kSvg ? "set terminal svg font 'sans-serif,12'"
                                                  : "set terminal pngcairo";
  script += " noenhanced background rgb 'white' size " + InWords(kWidth) + "," + InWords(height) +
            "\nset encoding utf8\n" + data_ + "set multiplot\nset lmargin at screen " +
            InWords(kLeft / kWidth) + "\nset rmargin at screen " + InWords(1 - kRight / kWidth) +
            "\nset key at screen " + InWords(1 - (kRight - 60) / kWidth) +
            ", graph 1 left top Left reverse samplen 2 spacing 1.1\n"
            "set grid xtics ytics lc rgb '#dddddd'\nset format x ''\n"
            "set xrange [0:" +
            InWords(timeline_.end > 0 ? timeline_.end : 1) + "]\n";
  // A death concerns all that is drawn.
  for (const auto& [service, moments] : timeline_.died) {
    for (const double at : moments) {
      script += "set arrow from first " + InWords(at) + ", graph 0 to first " + InWords(at) +
                ", graph 1 nohead dt 3 lc rgb '#cc0000'\n";
    }
  }
  script += "set label " + Quoted(title) + " at screen " + InWords(kLeft / kWidth) + ", screen " +
            InWords(1 - kTop / 2 / height) + " left font ',14'\n";
  double top = height - kTop;
  for (const Panel& panel : panels_) {
    const double bottom = top - panel.height;
    script += "set tmargin at screen " + InWords(top / height) + "\nset bmargin at screen " +
              InWords(bottom / height) + "\n" + panel.setup;
    if (&panel == &panels_.back()) script += "set format x '%g'\nset xlabel 'time [s]'\n";
    script += "plot ";
    for (const std::string& plot : panel.plots) {
      script += (&plot == panel.plots.data() ? "" : ", ") + plot;
    }
    script += "\nunset label\nset offsets\nset ylabel ''\nset y2label ''\nunset y2tics\n";
    top = bottom - kGap;
  }
  return script + "unset multiplot\n";
}

}  // namespace

std::string PlotScript(const Timeline& timeline, const std::string& title, PlotFormat format) {
  return Script(timeline).Write(title, format);
}

}  // namespace norvik::qel::tool
