// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Keeps callbacks and service events until a scenario's expectations consume them.
#pragma once

#include <deque>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "recording/recording.h"

namespace norvik::qel::monitor {

// An expectation consumes a client's callback once, together with the earlier callbacks of the same
// property: the library may repeat a value, or fold several changes into one callback.
//
// Threads: the main thread.
class Witness {
 public:
  // Records an event.
  void Note(const Event& event);
  // Begins the recording's next act. All earlier events must have been noted.
  void Act(const RecordedWhat& what);

  // Consumes a matching callback or event; false if there is none.
  [[nodiscard]] bool Take(const ClientCalled& called);
  [[nodiscard]] bool Take(const DeviceEvent& event);
  // A callback since the last act that no expectation has consumed; nullopt if there is none.
  std::optional<ClientCalled> UnexpectedCall(std::string_view subject) const;
  // The value of the property's last callback; unknown before the first one.
  Value last(const std::string& property) const;

 private:
  struct Call {
    int act;  // number of the act before it
    Value value;
  };

  int acts_ = 0;
  std::map<std::string, std::deque<Call>> calls_;  // by property
  std::map<std::string, Value> last_;
  std::list<DeviceEvent> seen_;  // registrations and refusals
};

}  // namespace norvik::qel::monitor
