// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <errno.h>
#include <unistd.h>

#include <cmath>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "cli/commands.h"
#include "cli/decimal.h"
#include "cli/options.h"
#include "output/json.h"
#include "output/output.h"
#include "output/printable.h"
#include "recording/recording_reader.h"
#include "recording/timeline.h"

namespace norvik::qel::monitor {

namespace {

using Quantity = Timeline::Quantity;
using Key = decltype(Timeline::curves)::key_type;

// "battery level, %", "SKIN:skin temperature, degrees C". ASCII units suit every spreadsheet.
std::string TitleOf(const Key& key) {
  if (key.first == Quantity::kService) return key.second;
  if (key.first == Quantity::kTemperature) return key.second + " temperature, degrees C";
  return key.second + (key.second.empty() ? "" : " ") + TextOf(key.first);
}

std::string Field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

// "2026-11-22 10:00:03.120", which spreadsheets recognise as a time.
std::string ClockAt(const Timeline& timeline, double at) {
  if (!timeline.began) return "";
  return LocalTime(*timeline.began + std::chrono::round<WallTime::duration>(Seconds(at)));
}

double Microseconds(double seconds) {
  return std::round(seconds * 1e6);
}

// CSV for spreadsheets (RFC 4180): a row for each time with an event or a new value, a column for
// each curve with its current value, and a last column with the events.
std::string ToCsv(const Timeline& timeline) {
  std::map<double, std::string> times = {{0, ""}, {timeline.end, ""}};  // with the events
  for (const auto& moment : timeline.moments) {
    auto& text = times[moment.at];
    text += (text.empty() ? "" : "; ") + moment.lane + " " + moment.text;
  }
  std::string csv = "time,seconds";
  for (const auto& [key, points] : timeline.curves) {
    for (const auto& point : points) times.try_emplace(point.at);
    csv += "," + Field(TitleOf(key));
  }
  csv += ",events\r\n";
  std::vector<size_t> passed(timeline.curves.size());  // points of each curve up to this row
  for (const auto& [at, text] : times) {
    csv += ClockAt(timeline, at) + "," + DecimalText(Microseconds(at) / 1e6);
    auto count = passed.begin();
    for (const auto& [key, points] : timeline.curves) {
      while (*count < points.size() && points[*count].at <= at) ++*count;
      const double value = *count > 0 ? points[*count - 1].value : NAN;
      csv += "," + (std::isfinite(value) ? DecimalText(value) : "");
      ++count;
    }
    csv += "," + Field(text) + "\r\n";
  }
  return csv;
}

// Trace events in JSON, for Perfetto: a counter for each curve, a thread for each lane.
class TraceEvents {
 public:
  TraceEvents(const Timeline& timeline, const std::string& title) {
    Name("process_name", title, 0);
    for (const auto& [key, points] : timeline.curves) {
      for (size_t i = 0; i < points.size(); ++i) {
        const auto& [at, value] = points[i];
        if (key.first == Quantity::kService) {
          const double end = i + 1 < points.size() ? points[i + 1].at : timeline.end;
          const char* const name = value == 0 ? "dead" : "runs";
          const int thread = Thread(key.second);
          Add(Event("B", name, at, thread));
          Add(Event("E", name, end, thread));
        } else if (std::isfinite(value)) {  // a counter has no gaps
          AddWith("value", value, Event("C", TitleOf(key), at, 0));
        }
      }
    }
    for (const auto& moment : timeline.moments) {
      Add(Event("i", moment.text, moment.at, Thread(moment.lane)).Add("s", "t"));
    }
  }
  const std::string& text() const { return text_; }

 private:
  // `thread` 0: the process.
  static JsonLine Event(const char* phase, const std::string& name, double at, int thread) {
    JsonLine event;
    event.Add("ph", phase).Add("name", JsonText(name)).Add("ts", Microseconds(at));
    return event.Add("pid", 1).Add("tid", thread);
  }
  void Add(const JsonLine& event) { text_ += (text_.empty() ? "" : ",\n") + event.text(); }
  void AddWith(const char* argument, const Json::Value& value, JsonLine event) {
    Json::Value arguments(Json::objectValue);
    arguments[argument] = value;
    Add(event.Add("args", arguments));
  }
  void Name(const char* what, const std::string& name, int thread) {
    AddWith("name", JsonText(name), Event("M", what, 0, thread));
  }
  // The thread that stands for the lane.
  int Thread(const std::string& lane) {
    const auto [found, is_new] = threads_.emplace(lane, static_cast<int>(threads_.size()) + 1);
    if (is_new) Name("thread_name", lane, found->second);
    return found->second;
  }

  std::map<std::string, int> threads_;
  std::string text_;
};

std::string ToTraceEvents(const Timeline& timeline, const std::string& title) {
  JsonLine more;
  if (timeline.began) more.Add("began", Iso8601(*timeline.began));
  return "{\"displayTimeUnit\": \"ms\", \"otherData\": " + more.text() + ", \"traceEvents\": [\n" +
         TraceEvents(timeline, title).text() + "\n]}\n";
}

}  // namespace

int Export(const Options& options, Output& output) {
  if (options.to.empty())
    throw UsageError("export: --to is missing, use --to csv or --to perfetto");
  const std::string& path = options.operands.front();
  CheckIsAnotherFile(options.output, path);
  const Recording recording = ReadRecording(path);
  const Timeline timeline = MakeTimeline(recording);
  const std::string text =
      options.to == "csv" ? ToCsv(timeline) : ToTraceEvents(timeline, TitleOf(recording));
  if (!options.output.empty()) {
    WriteFile(options.output, text);
    output.Explain("Exported into " + Printable(options.output) + ".");
  } else if (!WriteAll(STDOUT_FILENO, text).empty() && errno != EPIPE) {
    throw std::runtime_error("cannot write: " + std::generic_category().message(errno));
  }
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
