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

// The members of a JSON object after "time" and "event".
using Fields = std::vector<std::pair<std::string_view, std::variant<std::string, Value>>>;

// Threads: the main thread.
class Output {
 public:
  virtual ~Output() = default;

  virtual void Show(const Event& event) = 0;
  // Shows a notice in commands that print only values: text output uses standard error.
  virtual void Note(const Event& notice) = 0;
  // A value returned by a getter.
  virtual void ShowReading(const Property& property, const Value& value) = 0;
  virtual void ShowDump(std::string_view family, const std::string& text) = 0;
  // JSON only. Text output prints the same facts as a table or a sentence.
  virtual void ShowRecord(const char* /*event*/, const Fields& /*fields*/) {}
  // Text only: tables, sentences and hints.
  virtual void Explain(const std::string& text) = 0;
  // The parts of a scenario that is played.
  virtual void Heading(const std::string& text) = 0;
  virtual void Say(const std::string& text) = 0;
  virtual void Summary(bool success, const std::string& text, const Observed& observed) = 0;

  // Names the device in the first line of text and in every JSON object.
  void SetDevice(std::string_view name) { device_ = name; }
  // Text only: makes the column of names wide enough for a name that may come.
  void ExpectName(std::string_view name);
  // Stops all printing: the recording goes to standard output.
  void Mute() { lines_.Mute(); }
  const LineWriter& lines() const { return lines_; }

 protected:
  std::string device_;      // empty if the command uses no device
  size_t name_width_ = 24;  // columns; longer names that are not expected stand out
  LineWriter lines_;
};

std::unique_ptr<Output> MakeTextOutput();
std::unique_ptr<Output> MakeJsonOutput();

}  // namespace norvik::qel::monitor
