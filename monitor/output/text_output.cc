// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <string>
#include <string_view>

#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

constexpr size_t kNameWidth = 26;

std::string Padded(std::string_view text) {
  std::string padded(text);
  padded.append(padded.size() + 2 < kNameWidth ? kNameWidth - padded.size() : 2, ' ');
  return padded;
}

// Texts of a file that somebody else has written: what would move the cursor stays out.
std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, ' ');
  return text;
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
      return service + " refused a call: " + event.detail;
    case DeviceEvent::Kind::kNotice:
    case DeviceEvent::Kind::kReported:
      return event.detail;
  }
  return event.detail;
}

class TextOutput : public Output {
 public:
  void Show(const Event& event) override {
    if (const auto* device_event = std::get_if<DeviceEvent>(&event.what)) {
      lines_.Write(TimeOfDay(event.time) + "  ** device: " + Printable(InWords(*device_event)));
      return;
    }
    const auto& change = std::get<ValueChange>(event.what);
    lines_.Write(TimeOfDay(event.time) + "  " + Padded(change.property->name) +
                 monitor::InWords(*change.property, change.old_value) + "  ->  " +
                 monitor::InWords(*change.property, change.new_value));
  }

  void ShowReading(const Property& property, const Value& value) override {
    lines_.Write(Padded(property.name) + monitor::InWords(property, value));
  }

  void ShowDump(std::string_view /*family*/, const std::string& text) override {
    // The dump ends its own last line.
    lines_.Write(text.ends_with('\n') ? text.substr(0, text.size() - 1) : text);
  }

  void Explain(const std::string& text) override { lines_.Write(text); }
  void Heading(const std::string& text) override { lines_.Write("\n" + Printable(text)); }
  void Say(const std::string& text) override { lines_.Write("   " + Printable(text)); }

  void Summary(bool /*success*/, const std::string& text, const Observed& /*observed*/) override {
    lines_.Write("\n" + text);
  }
};

}  // namespace

std::unique_ptr<Output> MakeTextOutput() {
  return std::make_unique<TextOutput>();
}

}  // namespace norvik::qel::monitor
