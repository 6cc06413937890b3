// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/export.h"

#include <cmath>
#include <vector>

#include "cli/decimal.h"
#include "output/json.h"

namespace norvik::qel::monitor {

namespace {

using Quantity = Timeline::Quantity;
using Key = decltype(Timeline::curves)::key_type;

// "battery level, %", "SKIN:skin temperature, degrees C". Spreadsheets guess the encoding.
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

// "2026-11-22 10:00:03.120", which spreadsheets take for a time.
std::string ClockAt(const Timeline& timeline, double at) {
  if (!timeline.began) return "";
  return LocalTime(*timeline.began + std::chrono::round<WallTime::duration>(Seconds(at)));
}

double Microseconds(double seconds) {
  return std::round(seconds * 1e6);
}

class TraceEvents {
 public:
  // `thread` 0: the process.
  JsonLine Event(const char* phase, const std::string& name, double at, int thread) {
    JsonLine event;
    event.Add("ph", phase).Add("name", JsonText(name)).Add("ts", Microseconds(at));
    event.Add("pid", 1).Add("tid", thread);
    return event;
  }
  void Add(const JsonLine& event) { text_ += (text_.empty() ? "" : ",\n") + event.text(); }
  void Name(const char* what, const std::string& name, int thread) {
    Json::Value arguments(Json::objectValue);
    arguments["name"] = JsonText(name);
    Add(Event("M", what, 0, thread).Add("args", arguments));
  }
  // Of the lane.
  int Thread(const std::string& lane) {
    const auto [found, is_new] = threads_.emplace(lane, static_cast<int>(threads_.size()) + 1);
    if (is_new) Name("thread_name", lane, found->second);
    return found->second;
  }
  const std::string& text() const { return text_; }

 private:
  std::map<std::string, int> threads_;
  std::string text_;
};

}  // namespace

std::string ToCsv(const Timeline& timeline) {
  std::map<double, std::string> times = {{0, ""}, {timeline.end, ""}};  // and what happened
  for (const auto& moment : timeline.moments) {
    auto& text = times[moment.at];
    text += (text.empty() ? "" : "; ") + moment.lane + " " + moment.text;
  }
  struct Column {
    const std::vector<Timeline::Point>& points;
    size_t next = 0;
  };
  std::vector<Column> columns;
  std::string csv = "time,seconds";
  for (const auto& [key, points] : timeline.curves) {
    for (const auto& point : points) times.try_emplace(point.at);
    columns.push_back({points});
    csv += "," + Field(TitleOf(key));
  }
  csv += ",events";
  for (const auto& [at, text] : times) {
    csv += "\r\n" + ClockAt(timeline, at) + "," + DecimalText(Microseconds(at) / 1e6);
    for (Column& column : columns) {
      while (column.next < column.points.size() && column.points[column.next].at <= at) {
        ++column.next;
      }
      const double value = column.next > 0 ? column.points[column.next - 1].value : NAN;
      csv += "," + (std::isfinite(value) ? DecimalText(value) : "");
    }
    csv += "," + Field(text);
  }
  return csv;
}

std::string ToTraceEvents(const Timeline& timeline, const std::string& title) {
  TraceEvents events;
  events.Name("process_name", title, 0);
  for (const auto& [key, points] : timeline.curves) {
    if (key.first == Quantity::kService) {
      const int thread = events.Thread(key.second);
      for (size_t i = 0; i < points.size(); ++i) {
        const double to = i + 1 < points.size() ? points[i + 1].at : timeline.end;
        const char* const name = points[i].value == 0 ? "dead" : "runs";
        events.Add(events.Event("B", name, points[i].at, thread));
        events.Add(events.Event("E", name, to, thread));
      }
      continue;
    }
    for (const auto& [at, value] : points) {
      if (!std::isfinite(value)) continue;  // a counter has no gaps
      Json::Value arguments(Json::objectValue);
      arguments["value"] = value;
      events.Add(events.Event("C", TitleOf(key), at, 0).Add("args", arguments));
    }
  }
  for (const auto& moment : timeline.moments) {
    const int thread = events.Thread(moment.lane);
    events.Add(events.Event("i", moment.text, moment.at, thread).Add("s", "t"));
  }
  JsonLine more;
  if (timeline.began) more.Add("began", Iso8601(*timeline.began));
  return "{\"displayTimeUnit\": \"ms\", \"otherData\": " + more.text() + ", \"traceEvents\": [\n" +
         events.text() + "\n]}";
}

}  // namespace norvik::qel::monitor
