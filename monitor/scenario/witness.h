// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What has come of itself, until an expectation speaks of it.
#pragma once

#include <deque>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "recording/recording.h"

namespace norvik::qel::monitor {

// Each call of a client counts once, and the calls of one property in their order: one that is
// expected leaves those behind that came before it, since calls may repeat a value or fold.
//
// Threads: the main thread.
class Witness {
 public:
  // What happens.
  void Note(const Event& event);
  // All that has happened so far is noted, and this is what the recording does next.
  void Act(const RecordedWhat& what);

  // Whether there was such a thing, which is used up then.
  [[nodiscard]] bool Take(const ClientCalled& called);
  [[nodiscard]] bool Take(const DeviceEvent& event);
  // A call since the last act that no expectation has spoken of; nothing when there is none.
  std::optional<ClientCalled> UnexpectedCall(std::string_view subject) const;
  // What the client of the property was called with last.
  Value last(const std::string& property) const;

 private:
  struct Call {
    int act;  // after which it came
    Value value;
  };

  int acts_ = 0;
  std::map<std::string, std::deque<Call>> calls_;  // by property
  std::map<std::string, Value> last_;
  std::list<DeviceEvent> seen_;  // registrations and refusals
};

}  // namespace norvik::qel::monitor
