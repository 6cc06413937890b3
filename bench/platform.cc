// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Interposes the platform's function for the library's object files in this program.
#include "platform.h"

#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_manager.h>
#include <android/looper.h>
#include <dlfcn.h>

#include <atomic>

#include "quorvel/services/thermal_service.h"
#include "turns.h"

namespace norvik::qel::bench {

namespace {

constinit std::atomic<int64_t> begun = 0;
constinit std::atomic<int64_t> returned_ns = 0;

}  // namespace

int64_t LastPollReturnNs() {
  return returned_ns.load(std::memory_order_relaxed);
}

int64_t PollsBegun() {
  return begun.load(std::memory_order_acquire);
}

void DrainLooper() {
  while (ALooper_pollOnce(0, nullptr, nullptr, nullptr) != ALOOPER_POLL_TIMEOUT) continue;
}

std::vector<ASensorEvent> Reading(int32_t type, float value) {
  ASensorEvent event = {};
  event.type = type;
  event.data[0] = value;
  return {event};
}

android::sp<aidl::android::hardware::thermal::ThermalHidlWrapper> LookUpThermal() {
  using aidl::android::hardware::thermal::IThermal;
  using aidl::android::hardware::thermal::ThermalHidlWrapper;
  return android::sp<ThermalHidlWrapper>::make(IThermal::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance))));
}

}  // namespace norvik::qel::bench

extern "C" int ALooper_pollOnce(int timeoutMillis, int* outFd, int* outEvents, void** outData) {
  using norvik::qel::bench::begun;
  using norvik::qel::bench::returned_ns;
  static const auto platforms =
      reinterpret_cast<decltype(&ALooper_pollOnce)>(dlsym(RTLD_NEXT, "ALooper_pollOnce"));
  begun.fetch_add(1, std::memory_order_release);
  const int result = platforms(timeoutMillis, outFd, outEvents, outData);
  returned_ns.store(norvik::qel::bench::NowNs(), std::memory_order_relaxed);
  return result;
}
