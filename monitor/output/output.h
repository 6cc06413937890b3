// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the monitor prints: lines for people, or JSON objects for programs.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "clients/event.h"
#include "clients/value.h"
#include "output/observed.h"
#include "output/write.h"

namespace norvik::qel::monitor {

// What a JSON object has beside its time and its event.
using Fields = std::vector<std::pair<std::string_view, std::variant<std::string, Value>>>;

// Threads: the main thread.
class Output {
 public:
  virtual ~Output() = default;

  virtual void Show(const Event& event) = 0;
  // The same of a notice where only values are printed: in text on standard error.
  virtual void Note(const Event& notice) = 0;
  // A value that was asked for.
  virtual void ShowReading(const Property& property, const Value& value) = 0;
  virtual void ShowDump(std::string_view family, const std::string& text) = 0;
  // For programs; people get the same as a table or a sentence.
  virtual void ShowRecord(const char* /*event*/, const Fields& /*fields*/) {}
  // Help for people; programs get none of it.
  virtual void Explain(const std::string& text) = 0;
  // The parts of a demonstration.
  virtual void Heading(const std::string& text) = 0;
  virtual void Say(const std::string& text) = 0;
  virtual void Summary(bool success, const std::string& text, const Observed& observed) = 0;

  // The first line of text and every JSON object name the device.
  void SetDevice(std::string_view name) { device_ = name; }
  // Nothing is printed from here on: standard output belongs to a recording.
  void Mute() { lines_.Mute(); }
  const LineWriter& lines() const { return lines_; }

 protected:
  std::string device_;  // empty: none is involved
  LineWriter lines_;
};

std::unique_ptr<Output> MakeTextOutput();
std::unique_ptr<Output> MakeJsonOutput();

}  // namespace norvik::qel::monitor
