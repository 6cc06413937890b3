// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <stdio.h>

#include <string>
#include <string_view>
#include <utility>

#include "output/output.h"
#include "output/printable.h"
#include "output/terminal.h"

namespace norvik::qel::monitor {

namespace {

constexpr size_t kNameWidth = 26;
constexpr std::string_view kDeviceMark = "** device: ";

std::string Padded(const std::string& text) {
  const size_t columns = ColumnsOf(text);
  return text + std::string(columns + 2 < kNameWidth ? kNameWidth - columns : 2, ' ');
}

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
      ShowDeviceEvent(event.time, std::string(kDeviceMark) + Printable(InWords(*device_event)));
      return;
    }
    const auto& change = std::get<ValueChange>(event.what);
    WriteAt(event.time,
            Padded(Printable(change.property->key)) +
                monitor::InWords(*change.property, change.old_value) + "  ->  ",
            monitor::InWords(*change.property, change.new_value), kBold);
  }

  void Note(const Event& notice) override {
    const std::string text = Printable(std::get<DeviceEvent>(notice.what).detail);
    fprintf(stderr, "quorvel: %s\n", text.c_str());
  }

  void ShowReading(const Property& property, const Value& value) override {
    Write(Padded(Printable(property.key)) + monitor::InWords(property, value));
  }

  void ShowDump(std::string_view /*family*/, const std::string& text) override {
    // The dump ends its own last line.
    Write(text.ends_with('\n') ? text.substr(0, text.size() - 1) : text);
  }

  void Explain(const std::string& text) override { Write(Fitted(text)); }
  void Heading(const std::string& text) override {
    EndRepetition();
    Write("\n" + terminal_.Coloured(Printable(text), kBold));
  }

  void Say(const std::string& text) override {
    Write(Fitted("   " + Printable(text), /*indent=*/3));
  }

  void Summary(bool /*success*/, const std::string& text, const Observed& /*observed*/) override {
    EndRepetition();
    Write("\n" + Fitted(Printable(text)));
  }

 private:
  // Wraps the text at the terminal's width. Text that has several lines stays as it is.
  std::string Fitted(const std::string& text, size_t indent = 0) const {
    if (!terminal_.is_limited || text.find('\n') != std::string::npos) return text;
    std::string lines = Wrapped(text, terminal_.columns, indent);
    lines.pop_back();  // Write() ends the line
    return lines;
  }

  // Of consecutive equal events within two seconds, only the first is shown; the rest is counted.
  void ShowDeviceEvent(WallTime time, const std::string& text) {
    constexpr std::chrono::seconds kTogether(2);
    if (text == repeated_ && time - repeated_since_ < kTogether) {
      ++repetitions_;
      return;
    }
    EndRepetition();
    WriteAt(time, "", text, kYellow);
    repeated_ = text;
    repeated_since_ = time;
  }

  void EndRepetition() {
    const int count = std::exchange(repetitions_, 0);
    if (count == 0) return;
    const std::string what = repeated_.substr(kDeviceMark.size());
    lines_.Write(Fitted("    ** " + Counted(count, "more time") + ": " + what, /*indent=*/4));
  }

  // Writes the time, the plain text and the coloured text. Continuation lines are indented.
  void WriteAt(WallTime time, const std::string& plain, const std::string& coloured,
               std::string_view colour) {
    const std::string date = DateOf(time);
    if (!date_.empty() && date != date_) Write("--- " + date);
    date_ = date;
    const std::string clock = TimeOfDay(time) + "  ";
    if (terminal_.is_limited && ColumnsOf(clock + plain + coloured) > terminal_.columns) {
      Write(Fitted(clock + plain + coloured, /*indent=*/4));
    } else {
      Write(terminal_.Coloured(clock, kDim) + plain + terminal_.Coloured(coloured, colour));
    }
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

std::unique_ptr<Output> MakeTextOutput() {
  return std::make_unique<TextOutput>();
}

}  // namespace norvik::qel::monitor
