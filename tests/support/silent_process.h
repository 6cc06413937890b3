// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The host program of random and stress tests.
#pragma once

#include <android/binder_process.h>
#include <android/log.h>

#include <chrono>

#include "quorvel/fake/service_manager.h"

namespace norvik::qel {

// Prepares the program for the library, once: starts binder threads, drops the log, and makes
// look-ups not wait for a service that is declared but does not run.
inline void SetUpSilentProcess() {
  static const bool done = [] {
    __android_log_set_logger([](const __android_log_message*) {});
    ABinderProcess_startThreadPool();
    fake::SetGetServiceWait(std::chrono::milliseconds(0), 1);
    return true;
  }();
  static_cast<void>(done);
}

}  // namespace norvik::qel
