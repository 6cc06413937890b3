// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/binder_interface_utils.h>
#include <android/log.h>

#include "binder.h"

namespace ndk {

SharedRefBase::~SharedRefBase() {
  if (!referenced_) {
    __android_log_assert(nullptr, "libbinder_ndk",
                         "SharedRefBase: destroyed without ever having had a reference: made with "
                         "something other than SharedRefBase::make()?");
  }
  if (self_.lock() != nullptr) {
    __android_log_assert(nullptr, "libbinder_ndk",
                         "SharedRefBase: destroyed while references to it are left");
  }
}

std::shared_ptr<SharedRefBase> SharedRefBase::ref() {
  std::shared_ptr<SharedRefBase> self;
  std::call_once(first_reference_, [&] {
    self.reset(this);
    self_ = self;
    referenced_ = true;
  });
  return self != nullptr ? self : self_.lock();
}

binder_status_t ICInterface::dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
  return STATUS_OK;
}

binder_status_t ICInterface::handleShellCommand(int /*in*/, int /*out*/, int /*err*/,
                                                const char** /*argv*/, uint32_t /*argc*/) {
  return STATUS_OK;
}

std::shared_ptr<ICInterface> ICInterface::asInterface(AIBinder* binder) {
  if (binder == nullptr || binder->AsLocal() == nullptr) return nullptr;
  return binder->AsLocal()->object();
}

}  // namespace ndk
