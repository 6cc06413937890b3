// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/witness.h"

#include <algorithm>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;

// The detail of a seen refusal is the call, a colon and the reason.
bool IsLike(const DeviceEvent& event, const DeviceEvent& expected) {
  if (event.kind != expected.kind || event.service != expected.service) return false;
  if (expected.kind == Kind::kCallRefused) return event.detail.starts_with(expected.detail + ":");
  return expected.detail.empty() || event.detail == expected.detail;
}

}  // namespace

void Witness::Note(const Event& event) {
  if (const auto* change = std::get_if<ValueChange>(&event.what)) {
    const std::string key(change->property->key);
    calls_[key].push_back({.act = acts_, .value = change->new_value});
    last_[key] = change->new_value;
    return;
  }
  const auto& device_event = std::get<DeviceEvent>(event.what);
  switch (device_event.kind) {
    case Kind::kServiceDied:
      // Earlier events of a dead service no longer fulfil an expectation.
      seen_.remove_if([&](const DeviceEvent& old) { return old.service == device_event.service; });
      break;
    case Kind::kCallbackRegistered:
    case Kind::kCallbackUnregistered:
    case Kind::kCallRefused:
      seen_.push_back(device_event);
      break;
    default:
      break;  // cannot be expected
  }
}

void Witness::Act(const RecordedWhat& what) {
  ++acts_;
  const auto* const joined = std::get_if<ClientJoined>(&what);
  if (joined == nullptr) return;
  // A client that joins again has not been called yet.
  const auto is_theirs = [&](const auto& entry) { return Covers(joined->subject, entry.first); };
  std::erase_if(calls_, is_theirs);
  std::erase_if(last_, is_theirs);
}

bool Witness::Take(const ClientCalled& called) {
  std::deque<Call>& calls = calls_[called.property];
  const auto found = std::find_if(calls.begin(), calls.end(),
                                  [&](const Call& call) { return call.value == called.value; });
  if (found == calls.end()) return false;
  calls.erase(calls.begin(), found + 1);
  return true;
}

bool Witness::Take(const DeviceEvent& event) {
  const auto found = std::find_if(seen_.begin(), seen_.end(),
                                  [&](const DeviceEvent& seen) { return IsLike(seen, event); });
  if (found == seen_.end()) return false;
  seen_.erase(found);
  return true;
}

std::optional<ClientCalled> Witness::UnexpectedCall(std::string_view subject) const {
  for (const auto& [property, calls] : calls_) {
    if (!Covers(subject, property) || calls.empty() || calls.back().act < acts_) continue;
    return ClientCalled{.property = property, .value = calls.back().value};
  }
  return std::nullopt;
}

Value Witness::last(const std::string& property) const {
  const auto found = last_.find(property);
  return found != last_.end() ? found->second : Value();
}

}  // namespace norvik::qel::monitor
