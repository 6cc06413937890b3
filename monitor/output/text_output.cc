// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <stdio.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "output/output.h"
#include "output/printable.h"
#include "output/terminal.h"

namespace norvik::qel::monitor {

namespace {

constexpr std::chrono::seconds kTogether(2);
constexpr size_t kSeconds = 8;  // the size of "12:00:03"

std::string InWords(const DeviceEvent& event) {
  const std::string service = "the " + event.service + " service";
  const bool is_sensor = event.service == kSensorService;
  switch (event.kind) {
    case DeviceEvent::Kind::kServiceStarted:
      return service + " is up";
    case DeviceEvent::Kind::kServiceDied:
      return service + " died";
    case DeviceEvent::Kind::kCallbackRegistered:
      if (is_sensor) return "the library listens to the " + event.detail + " sensor";
      return "linked: the library's callback is registered with " + service;
    case DeviceEvent::Kind::kCallbackUnregistered:
      if (is_sensor) return "the library no longer listens to the " + event.detail + " sensor";
      return "unlinked: the library has withdrawn its callback from " + service;
    case DeviceEvent::Kind::kCallRefused:
      // A status without a message ends with the colon that would precede it.
      return service +
             " refused a call: " + event.detail.substr(0, event.detail.find_last_not_of(": ") + 1);
    case DeviceEvent::Kind::kNotice:
    case DeviceEvent::Kind::kReported:
      return event.detail;
  }
  return event.detail;
}

class TextOutput : public Output {
 public:
  ~TextOutput() override { EndRepetition(); }
  TextOutput() = default;
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  void Show(const Event& event) override {
    if (const auto* device_event = std::get_if<DeviceEvent>(&event.what)) {
      ShowDeviceEvent(event.time, Printable(InWords(*device_event)));
      return;
    }
    const auto& change = std::get<ValueChange>(event.what);
    const std::string name = Printable(change.property->key);
    ExpectName(name);
    ShowChange(event.time, name, monitor::InWords(*change.property, change.old_value),
               Shown(*change.property, change.new_value));
  }

  void Note(const Event& notice) override {
    const std::string text = Printable(std::get<DeviceEvent>(notice.what).detail);
    fprintf(stderr, "quorvel: %s\n", text.c_str());
  }

  void ShowReading(const Property& property, const Value& value) override {
    Write(Fitted(Padded(Printable(property.key)) + Shown(property, value), /*indent=*/4));
  }

  void ShowDump(std::string_view /*family*/, const std::string& text) override {
    // The dump ends its own last line.
    Write(text.ends_with('\n') ? text.substr(0, text.size() - 1) : text);
  }

  void Explain(const std::string& text) override {
    EndRepetition();
    Write(Fitted(text));
  }

  void Heading(const std::string& text) override {
    EndRepetition();
    Write("\n" + Fitted(terminal_.Coloured(Printable(text), kBold), /*indent=*/4));
  }

  void Say(const std::string& text) override {
    EndRepetition();
    Write(Fitted("   " + Printable(text), /*indent=*/3));
  }

  void Summary(bool /*success*/, const std::string& text, const Observed& /*observed*/) override {
    EndRepetition();
    Write("\n" + Fitted(Printable(text)));
  }

 private:
  bool Fits(const std::string& line) const { return ColumnsOf(line) <= terminal_.limit; }

  // Wraps the text at the terminal's width. Text that has several lines stays as it is.
  std::string Fitted(const std::string& text, size_t indent = 0) const {
    if (Fits(text) || text.find('\n') != std::string::npos) return text;
    std::string lines = Wrapped(text, terminal_.limit, indent);
    lines.pop_back();  // Write() ends the line
    return lines;
  }

  std::string Padded(const std::string& name) const {
    return name + std::string(std::max(name_width_, ColumnsOf(name)) - ColumnsOf(name) + 2, ' ');
  }

  std::string Shown(const Property& property, const Value& value) const {
    return terminal_.Coloured(monitor::InWords(property, value), ColourOf(WorstOf(value)));
  }

  // Aligned, or without that if the line would not fit, or else as two lines.
  void ShowChange(WallTime time, const std::string& name, const std::string& before,
                  const std::string& after) {
    const std::string clock = ClockAt(time);
    const std::string line = clock + Padded(name) + before + "  ->  " + after;
    if (Fits(line)) return Write(line);
    std::string first = name;
    std::string second = before + " -> " + after;
    const std::string short_line = clock + first + "  " + second;
    if (Fits(short_line)) return Write(short_line);
    if (!Fits(clock + first)) std::swap(first, second);
    Write(Fitted(clock + first, /*indent=*/4));
    Write(Fitted("    " + second, /*indent=*/4));
  }

  // Of consecutive equal events within two seconds, only the first is shown; the rest is counted.
  void ShowDeviceEvent(WallTime time, const std::string& text) {
    if (text == repeated_ && time - repeated_since_ < kTogether) {
      ++repetitions_;
      return;
    }
    EndRepetition();
    Write(Fitted(ClockAt(time) + terminal_.Coloured("** device: " + text, kYellow), /*indent=*/4));
    repeated_ = text;
    repeated_since_ = time;
  }

  void EndRepetition() {
    const int count = std::exchange(repetitions_, 0);
    if (count == 0) return;
    const std::string text = "** " + Counted(count, "more time") + ": " + repeated_;
    lines_.Write(Fitted("    " + terminal_.Coloured(text, kYellow), /*indent=*/4));
  }

  // The start of a line. A line with the date precedes the first one of a new day.
  std::string ClockAt(WallTime time) {
    if (time - repeated_since_ >= kTogether) EndRepetition();
    const std::string date = DateOf(time);
    if (!date_.empty() && date != date_) Write("--- " + date);
    date_ = date;
    const size_t size = terminal_.limit < kNarrow ? kSeconds : std::string::npos;
    return terminal_.Coloured(TimeOfDay(time).substr(0, size), kDim) + "  ";
  }

  void Write(const std::string& text) {
    if (!std::exchange(names_device_, true) && !device_.empty()) {
      lines_.Write("Device: " + device_);
    }
    lines_.Write(text);
  }

  const Terminal terminal_ = StandardOutput();
  bool names_device_ = false;
  std::string date_;      // the date of the last line with a time
  std::string repeated_;  // the text of the last device event
  WallTime repeated_since_;
  int repetitions_ = 0;
};

}  // namespace

void Output::ExpectName(std::string_view name) {
  constexpr size_t kWidest = 36;  // wider names stand out, instead of widening all lines
  const size_t width = ColumnsOf(Printable(name));
  if (width <= kWidest) name_width_ = std::max(name_width_, width);
}

std::unique_ptr<Output> MakeTextOutput() {
  return std::make_unique<TextOutput>();
}

}  // namespace norvik::qel::monitor
