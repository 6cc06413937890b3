// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Part of an audio service: the allowed speaker volume, from battery and skin temperature.
#pragma once

#include <condition_variable>
#include <mutex>

// The volume is 50 percent while the skin throttles at SEVERE or worse, otherwise 75 percent while
// the battery level is at most 15 percent, otherwise 100 percent. Unknown values do not limit it.
//
// Threads: any.
class SpeakerGuard {
 public:
  SpeakerGuard();
  ~SpeakerGuard();
  SpeakerGuard(const SpeakerGuard&) = delete;
  SpeakerGuard& operator=(const SpeakerGuard&) = delete;

  // False: the thermal service reports no skin temperature of that name.
  bool GuardSkin(const char* name);

  // Waits for the first severity of the guarded skin.
  void WaitUntilSkinIsKnown();

  int volume_percent() const;
  // Waits until the volume is `percent`.
  void WaitForVolume(int percent);
  // Queries the service; -EAGAIN while it cannot be asked.
  int FreshLevel();

 private:
  static void OnLevel(int percent, void* cookie);
  static void OnSeverity(int severity, void* cookie);
  int Volume() const;  // requires lock_

  mutable std::mutex lock_;
  std::condition_variable changed_;
  int level_ = -1;
  int severity_ = -1;
  void* battery_ = nullptr;
  void* thermal_ = nullptr;
};
