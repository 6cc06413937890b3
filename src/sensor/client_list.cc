// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "sensor/client_list.h"

#include <algorithm>

namespace norvik::qel::audio {

bool ClientList::empty() const {
  std::lock_guard<std::mutex> lock(lock_);
  return clients_.empty();
}

bool ClientList::Contains(int id) const {
  std::lock_guard<std::mutex> lock(lock_);
  return std::any_of(clients_.begin(), clients_.end(),
                     [=](const SensorClient& client) { return client.id == id; });
}

std::vector<SensorClient> ClientList::Copy() const {
  std::lock_guard<std::mutex> lock(lock_);
  return clients_;
}

void ClientList::Append(const SensorClient& client) {
  std::lock_guard<std::mutex> lock(lock_);
  clients_.push_back(client);
}

bool ClientList::Remove(int id) {
  std::lock_guard<std::mutex> lock(lock_);
  return std::erase_if(clients_, [=](const SensorClient& client) { return client.id == id; }) != 0;
}

void ClientList::Clear() {
  std::lock_guard<std::mutex> lock(lock_);
  clients_.clear();
}

bool ClientList::MarkAll() {
  std::lock_guard<std::mutex> lock(lock_);
  for (SensorClient& client : clients_) client.need_to_update = true;
  return !clients_.empty();
}

}  // namespace norvik::qel::audio
