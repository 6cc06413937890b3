// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <mutex>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

// A pointer back to the owner of an object that may outlive it: the platform keeps callbacks and
// death recipients for as long as it likes, and may call them at any time.
//
// A visit holds lock_, so Set() waits for a visit under way. After Set(nullptr) no visit touches
// the owner: the owner may go.
//
// Threads: any. Locks: lock_ comes before every lock that the owner takes during a visit. Never
// call Set() with such a lock held.
template <typename Owner>
class BackPointer {
 public:
  // Not owned; null for none.
  explicit BackPointer(Owner* owner = nullptr) : owner_(owner) {}
  BackPointer(const BackPointer&) = delete;
  BackPointer& operator=(const BackPointer&) = delete;

  void Set(Owner* owner) QEL_EXCLUDES(lock_) {
    std::lock_guard<std::mutex> lock(lock_);
    owner_ = owner;
  }

  // Calls `visitor` with the owner if there is one.
  template <typename Visitor>
  void Visit(Visitor visitor) QEL_EXCLUDES(lock_) {
    std::lock_guard<std::mutex> lock(lock_);
    if (owner_ != nullptr) visitor(*owner_);
  }

 private:
  std::mutex lock_;
  Owner* owner_ QEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::audio
