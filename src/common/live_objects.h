// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "common/back_pointer.h"
#include "common/thread_annotations.h"

namespace norvik::qel::audio {

// The objects of one kind that the platform knows by a raw pointer, such as the cookie of a death
// notification. Unlinking before an object is destroyed does not protect it: the platform waits for
// no notification that is running or about to run. This table does:
//
// 1. A notification finds its object here, by the address in its cookie, and visits it.
// 2. A visit holds the object's own entry, not the table. So a visit that waits for its object's
//    lock delays no other object.
// 3. Remove() waits for a visit under way and shuts out later ones. A visit never waits for a
//    notification, so Remove() may be called on the platform's notification thread, in the middle
//    of a notification for another object.
// 4. A new object may have the address of an old one. A visit meant for the old object then reaches
//    the new one: a visitor must be right for an object that it was not meant for.
//
// Threads: any. Locks: an entry's lock comes before every lock that its object takes; the table's
// is held for look-ups only.
template <typename Object>
class LiveObjects {
 public:
  // The table of this kind of objects. Leaked on purpose: the platform's threads run until the
  // process is gone.
  static LiveObjects& Shared() {
    static LiveObjects& table = *new LiveObjects;
    return table;
  }

  void Add(Object* object) QEL_EXCLUDES(lock_) {
    auto entry = std::make_shared<Entry>(object);
    std::lock_guard<std::mutex> lock(lock_);
    entries_[object] = std::move(entry);
  }

  // No effect for an object that was never added. Never call it with a lock held that a visit
  // takes.
  void Remove(Object* object) QEL_EXCLUDES(lock_) {
    if (const std::shared_ptr<Entry> entry = Find(object, /*erase=*/true)) entry->Set(nullptr);
  }

  // Calls `visitor` with the object at `address` if there is one.
  template <typename Visitor>
  void Visit(void* address, Visitor visitor) QEL_EXCLUDES(lock_) {
    if (const std::shared_ptr<Entry> entry = Find(address, /*erase=*/false)) entry->Visit(visitor);
  }

 private:
  using Entry = BackPointer<Object>;

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
