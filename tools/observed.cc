#include "tools/observed.h"

#include <algorithm>

namespace norvik::qel::tool {

void Observed::Note(const Event& event) {
  if (const auto* device_event = std::get_if<DeviceEvent>(&event.what)) {
    ++device_events_[device_event->kind];
    return;
  }
  const auto& change = std::get<ValueChange>(event.what);
  ++callbacks_;
  values_[change.property] = change.new_value;
  threads_.insert(change.thread);
}

int Observed::count(DeviceEvent::Kind kind) const {
  const auto found = device_events_.find(kind);
  return found != device_events_.end() ? found->second : 0;
}

int Observed::relinks() const {
  return std::max(0, count(DeviceEvent::Kind::kCallbackRegistered) - 1);
}

Value Observed::value(const Property& property) const {
  const auto found = values_.find(&property);
  return found != values_.end() ? found->second : Value();
}

std::string Counted(int count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace norvik::qel::tool
