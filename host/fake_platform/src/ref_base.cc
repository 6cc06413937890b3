// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/log.h>
#include <utils/RefBase.h>

#include <atomic>

namespace android {

namespace {

constexpr char kTag[] = "RefBase";
// The initial strong count of an object. The first strong reference subtracts it.
constexpr int32_t kNeverHeld = 1 << 28;

}  // namespace

class RefBase::weakref_type {
 public:
  explicit weakref_type(RefBase* base) : base(base) {}

  RefBase* const base;
  std::atomic<int32_t> strong{kNeverHeld};
  std::atomic<int32_t> weak{1};  // the object itself counts as one
};

RefBase::RefBase() : counts_(new weakref_type(this)) {}

RefBase::~RefBase() {
  const int32_t strong = counts_->strong.load(std::memory_order_relaxed);
  if (strong == kNeverHeld) {
    __android_log_print(ANDROID_LOG_WARN, kTag,
                        "%p is destroyed without ever having had a strong reference",
                        static_cast<void*>(this));
  } else if (strong != 0) {
    __android_log_assert(nullptr, kTag, "%p is destroyed with %d strong references left",
                         static_cast<void*>(this), strong);
  }
  DropWeak(counts_);
}

void RefBase::incStrong(const void* /*id*/) const {
  if (counts_->strong.fetch_add(1, std::memory_order_relaxed) != kNeverHeld) return;
  counts_->strong.fetch_sub(kNeverHeld, std::memory_order_relaxed);
  counts_->base->onFirstRef();
}

void RefBase::decStrong(const void* id) const {
  if (counts_->strong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  counts_->base->onLastStrongRef(id);
  delete this;
}

int32_t RefBase::getStrongCount() const {
  return counts_->strong.load(std::memory_order_relaxed);
}

RefBase::weakref_type* RefBase::createWeak() const {
  CopyWeak(counts_);
  return counts_;
}

void RefBase::CopyWeak(weakref_type* weak) {
  if (weak != nullptr) weak->weak.fetch_add(1, std::memory_order_relaxed);
}

void RefBase::DropWeak(weakref_type* weak) {
  if (weak != nullptr && weak->weak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete weak;
}

bool RefBase::AttemptIncStrong(weakref_type* weak) {
  int32_t strong = weak->strong.load(std::memory_order_relaxed);
  do {
    if (strong <= 0) return false;
  } while (!weak->strong.compare_exchange_weak(strong, strong + 1, std::memory_order_relaxed));
  if (strong == kNeverHeld) {
    weak->strong.fetch_sub(kNeverHeld, std::memory_order_relaxed);
    weak->base->onFirstRef();
  }
  return true;
}

void RefBase::onFirstRef() {}

void RefBase::onLastStrongRef(const void* /*id*/) {}

}  // namespace android
