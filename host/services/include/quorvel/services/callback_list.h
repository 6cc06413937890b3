// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The callbacks registered with a service, each for one type or for all types.
#pragma once

#include <android/binder_auto_utils.h>
#include <hidl/HidlTransportSupport.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::services {

// Whether both refer to the same object.
template <typename I>
bool SameCallback(const std::shared_ptr<I>& left, const std::shared_ptr<I>& right) {
  return left->asBinder() == right->asBinder();
}
template <typename I>
bool SameCallback(const android::sp<I>& left, const android::sp<I>& right) {
  return android::hardware::interfacesEqual(left, right);
}

// Pointer is a shared_ptr to an AIDL interface or an sp to a HIDL one.
//
// Threads: any.
template <typename Pointer, typename Type>
class CallbackList {
 public:
  // Without a type the callback receives all types. Returns why it was not added, or null.
  [[nodiscard]] const char* Add(const Pointer& callback, std::optional<Type> type) {
    if (callback == nullptr) return kNull;
    std::lock_guard<std::mutex> lock(lock_);
    if (FindLocked(callback) != entries_.end()) return "the callback is registered already";
    entries_.push_back({callback, type});
    return nullptr;
  }

  // Returns why it was not removed, or null.
  [[nodiscard]] const char* Remove(const Pointer& callback) {
    if (callback == nullptr) return kNull;
    Pointer removed;  // released without the lock
    std::lock_guard<std::mutex> lock(lock_);
    const auto found = FindLocked(callback);
    if (found == entries_.end()) return "the callback is not registered";
    removed = std::move(found->callback);
    entries_.erase(found);
    return nullptr;
  }

  // Sends to all callbacks for the type, in the order in which they were added.
  template <typename Send>
  void ForEach(Type type, Send send) const {
    std::lock_guard<std::mutex> lock(lock_);
    for (const Entry& entry : entries_) {
      if (!entry.type || *entry.type == type) send(*entry.callback);
    }
  }

  size_t size() const {
    std::lock_guard<std::mutex> lock(lock_);
    return entries_.size();
  }

 private:
  static constexpr char kNull[] = "the callback is null";

  struct Entry {
    Pointer callback;
    std::optional<Type> type;
  };

  auto FindLocked(const Pointer& callback) QUORVEL_REQUIRES(lock_) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const Entry& entry) { return SameCallback(entry.callback, callback); });
  }

  mutable std::mutex lock_;
  std::vector<Entry> entries_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::services
