#include "sensor/client_list.h"

#include <algorithm>
#include <utility>

namespace norvik::qel::audio {

bool ClientList::Contains(int id) const {
  return !empty() && std::any_of(current_->begin(), current_->end(),
                                 [=](const Entry& entry) { return entry.id == id; });
}

void ClientList::Append(const SensorClient& client) {
  std::unique_ptr<Entries> entries = CopyEntries();
  entries->emplace_back(client);
  Publish(std::move(entries));
}

bool ClientList::Remove(int id) {
  if (!Contains(id)) return false;
  Publish(CopyEntries(&id));
  return true;
}

void ClientList::Clear() {
  Publish(std::make_unique<Entries>());
}

bool ClientList::MarkAll() {
  if (empty()) return false;
  for (Entry& entry : *current_) entry.need_to_update.store(true, std::memory_order_relaxed);
  return true;
}

std::vector<ClientList::Call> ClientList::TakeOwedCalls() {
  std::vector<Call> calls;
  if (empty()) return calls;
  calls.reserve(current_->size());
  for (Entry& entry : *current_) {
    if (!entry.need_to_update.load(std::memory_order_relaxed)) continue;
    entry.need_to_update.store(false, std::memory_order_relaxed);
    calls.push_back({.callback = entry.callback, .cookie = entry.cookie});
  }
  return calls;
}

std::unique_ptr<ClientList::Entries> ClientList::CopyEntries(const int* without_id) const {
  auto entries = std::make_unique<Entries>();
  if (current_ == nullptr) return entries;
  entries->reserve(current_->size() + 1);
  for (const Entry& entry : *current_) {
    if (without_id == nullptr || entry.id != *without_id) entries->push_back(entry);
  }
  return entries;
}

// In the one order of all sequentially consistent operations, a reader counts itself and then looks
// for the list; a writer publishes a list and then looks at the count. So a writer that finds no
// reader knows that whoever comes later finds the new list, and that whoever has read an old one
// has finished: its farewell is what the count was read from.
void ClientList::Publish(std::unique_ptr<Entries> entries) {
  published_.store(entries.get(), std::memory_order_seq_cst);
  retired_.push_back(std::exchange(current_, std::move(entries)));
  if (readers_.load(std::memory_order_seq_cst) == 0) retired_.clear();
}

std::vector<ClientList::State> ClientList::UnlockedStates() const {
  std::vector<State> states;
  readers_.fetch_add(1, std::memory_order_seq_cst);
  if (const Entries* entries = published_.load(std::memory_order_seq_cst)) {
    states.reserve(entries->size());
    for (const Entry& entry : *entries) {
      states.push_back(
          {.id = entry.id, .need_to_update = entry.need_to_update.load(std::memory_order_relaxed)});
    }
  }
  readers_.fetch_sub(1, std::memory_order_release);
  return states;
}

}  // namespace norvik::qel::audio
