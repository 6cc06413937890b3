// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The callbacks registered with a service, each for one type or for all types.
#pragma once

#include <android/binder_auto_utils.h>
#include <hidl/HidlTransportSupport.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

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
// Threads: not synchronized; the owner's lock guards it.
template <typename Pointer, typename Type>
class CallbackList {
 public:
  // Without a type the callback receives all types. False if it is already in the list.
  [[nodiscard]] bool Add(const Pointer& callback, std::optional<Type> type) {
    if (Find(callback) != entries_.end()) return false;
    entries_.push_back({callback, type});
    return true;
  }

  // Returns the removed reference, so that the caller can release it after its lock. Null if
  // `callback` is not in the list.
  [[nodiscard]] Pointer Remove(const Pointer& callback) {
    const auto found = Find(callback);
    if (found == entries_.end()) return nullptr;
    Pointer removed = std::move(found->callback);
    entries_.erase(found);
    return removed;
  }

  template <typename Send>
  void ForEach(Type type, Send send) const {
    for (const Entry& entry : entries_) {
      if (!entry.type || *entry.type == type) send(*entry.callback);
    }
  }

  size_t size() const { return entries_.size(); }

 private:
  struct Entry {
    Pointer callback;
    std::optional<Type> type;
  };

  auto Find(const Pointer& callback) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [&](const Entry& entry) { return SameCallback(entry.callback, callback); });
  }

  std::vector<Entry> entries_;
};

}  // namespace norvik::qel::services
