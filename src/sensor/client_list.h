#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "quorvel.h"

namespace norvik::qel::audio {

// One registered client of a sensor.
struct SensorClient {
  bool need_to_update;          // owed a call with the current reading
  int id;                       // unique within the sensor's list
  SensorCallbackFunc callback;  // never null
  void* cookie;                 // handed back on every call; not owned
};

// The clients of one sensor, in the order of their registration.
//
// Threads: one at a time, under the owner's lock, but for UnlockedStates(), which any thread may
// call at any time. For its sake a list never changes its shape: a client that comes or goes makes
// a new one, and the old one is kept for as long as somebody may be reading it.
class ClientList {
 public:
  ClientList() = default;
  ClientList(const ClientList&) = delete;
  ClientList& operator=(const ClientList&) = delete;

  bool empty() const { return current_ == nullptr || current_->empty(); }
  bool Contains(int id) const;

  void Append(const SensorClient& client);
  // False when there is no such client.
  bool Remove(int id);
  void Clear();

  // Every client is owed a call. False when there is none.
  bool MarkAll();
  struct Call {
    SensorCallbackFunc callback;
    void* cookie;
  };
  // The calls that are owed, in the clients' order; from now on none is.
  std::vector<Call> TakeOwedCalls();

  struct State {
    int id;
    bool need_to_update;
  };
  // Of all clients at some moment. Takes no lock and waits for nobody.
  std::vector<State> UnlockedStates() const;

 private:
  struct Entry {
    explicit Entry(const SensorClient& client)
        : need_to_update(client.need_to_update),
          id(client.id),
          callback(client.callback),
          cookie(client.cookie) {}
    Entry(const Entry& other)
        : need_to_update(other.need_to_update.load(std::memory_order_relaxed)),
          id(other.id),
          callback(other.callback),
          cookie(other.cookie) {}

    std::atomic<bool> need_to_update;
    const int id;
    const SensorCallbackFunc callback;
    void* const cookie;
  };
  using Entries = std::vector<Entry>;

  // Without the client of that id, if there is one.
  std::unique_ptr<Entries> CopyEntries(const int* without_id = nullptr) const;
  void Publish(std::unique_ptr<Entries> entries);

  std::unique_ptr<Entries> current_;
  std::vector<std::unique_ptr<Entries>> retired_;  // perhaps still being read
  std::atomic<const Entries*> published_{nullptr};
  mutable std::atomic<int> readers_{0};
};

}  // namespace norvik::qel::audio
