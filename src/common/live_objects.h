#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

// The objects of one kind that may still be called through a raw pointer that the platform keeps,
// such as the cookie of a death notice. Nothing in the platform waits for a notice that is running
// or about to run, so unlinking before an object is destroyed does not protect it: this does.
//
// A visit holds the object's own entry, not the table, so a visit that waits for its object's lock
// keeps no other object waiting. Remove() waits for a visit that is under way and shuts out later
// ones. It may be called on the platform's own notification thread, in the middle of a notice
// meant for somebody else: it waits for visits only, and those never wait for a notice.
//
// A new object may have the address of an old one. A visit meant for the old one then reaches the
// new one: whatever a visit does must be right for an object that it was not meant for.
//
// Threads: any. Locks: an entry's lock comes before every lock that its object takes; the table's
// is held for look-ups only. Instances are never destroyed (see Shared()): the platform's threads
// run until the process is gone.
template <typename Object>
class LiveObjects {
 public:
  // The one table of this kind of objects.
  static LiveObjects& Shared() {
    static LiveObjects& table = *new LiveObjects;
    return table;
  }

  void Add(Object* object) QEL_EXCLUDES(lock_) {
    auto entry = std::make_shared<Entry>();
    {
      std::lock_guard<std::mutex> lock(entry->lock);
      entry->object = object;
    }
    std::lock_guard<std::mutex> lock(lock_);
    entries_[object] = std::move(entry);
  }

  // Nothing for an object that was never added. Never with a lock held that a visit takes.
  void Remove(Object* object) QEL_EXCLUDES(lock_) {
    const std::shared_ptr<Entry> entry = Find(object, /*erase=*/true);
    if (entry == nullptr) return;
    std::lock_guard<std::mutex> lock(entry->lock);
    entry->object = nullptr;
  }

  // Calls `visitor` with the object at `address` if there is one.
  template <typename Visitor>
  void Visit(void* address, Visitor visitor) QEL_EXCLUDES(lock_) {
    const std::shared_ptr<Entry> entry = Find(address, /*erase=*/false);
    if (entry == nullptr) return;
    std::lock_guard<std::mutex> lock(entry->lock);
    if (entry->object != nullptr) visitor(*entry->object);
  }

 private:
  struct Entry {
    std::mutex lock;
    Object* object QEL_GUARDED_BY(lock) = nullptr;  // null once removed
  };

  std::shared_ptr<Entry> Find(void* address, bool erase) QEL_EXCLUDES(lock_) {
    std::lock_guard<std::mutex> lock(lock_);
    const auto found = entries_.find(address);
    if (found == entries_.end()) return nullptr;
    std::shared_ptr<Entry> entry = found->second;
    if (erase) entries_.erase(found);
    return entry;
  }

  std::mutex lock_;
  std::map<void*, std::shared_ptr<Entry>> entries_ QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
