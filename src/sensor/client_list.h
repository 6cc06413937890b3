// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <mutex>
#include <utility>
#include <vector>

#include "common/thread_annotations.h"
#include "quorvel.h"

namespace norvik::qel::audio {

// One registered client of a sensor.
struct SensorClient {
  bool need_to_update;          // to be called with the current reading
  int id;                       // unique within the sensor's list
  SensorCallbackFunc callback;  // never null
  void* cookie;                 // handed back on every call; not owned
};

// The clients of one sensor, in the order of their registration. It has a lock of its own, so that
// a dump needs no other: the owner's is held during calls to the platform.
//
// Threads: any. Locks: lock_ is innermost, held while the list is read or changed, and free while
// clients are called.
class ClientList {
 public:
  ClientList() = default;
  ClientList(const ClientList&) = delete;
  ClientList& operator=(const ClientList&) = delete;

  [[nodiscard]] bool empty() const QEL_EXCLUDES(lock_);
  [[nodiscard]] bool Contains(int id) const QEL_EXCLUDES(lock_);
  [[nodiscard]] std::vector<SensorClient> Copy() const QEL_EXCLUDES(lock_);

  void Append(const SensorClient& client) QEL_EXCLUDES(lock_);
  // False when there is no such client.
  [[nodiscard]] bool Remove(int id) QEL_EXCLUDES(lock_);
  void Clear() QEL_EXCLUDES(lock_);

  // Marks every client for a call. False when there are none.
  [[nodiscard]] bool MarkAll() QEL_EXCLUDES(lock_);
  // Clears the marks, and calls `visitor` with each client that was marked, in order. The visitor
  // calls no client.
  template <typename Visitor>
  void TakeMarked(Visitor visitor) QEL_EXCLUDES(lock_) {
    std::lock_guard<std::mutex> lock(lock_);
    for (SensorClient& client : clients_) {
      if (std::exchange(client.need_to_update, false)) visitor(client);
    }
  }

 private:
  mutable std::mutex lock_;
  std::vector<SensorClient> clients_ QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
