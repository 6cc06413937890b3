// A part of somebody's audio service: how loud the speaker may be, by what the library tells.
#pragma once

#include <condition_variable>
#include <mutex>

// Full volume, three quarters while a level of at most 15 percent is all the battery has, half
// while the skin is throttled severely or worse. Before anything is known the volume is full.
//
// Threads: any.
class SpeakerGuard {
 public:
  SpeakerGuard();
  ~SpeakerGuard();
  SpeakerGuard(const SpeakerGuard&) = delete;
  SpeakerGuard& operator=(const SpeakerGuard&) = delete;

  // False: the thermal service knows no temperature of that name.
  bool GuardSkin(const char* name);

  // Waits until the library has told how much the guarded skin is throttled.
  void WaitUntilSkinIsKnown();

  int volume_percent() const;
  // Waits until it is so.
  void WaitForVolume(int percent);
  // Asks the service itself; -EAGAIN while it cannot be asked.
  int FreshLevel();

 private:
  static void OnLevel(int percent, void* cookie);
  static void OnSeverity(int severity, void* cookie);
  int Volume() const;  // with the lock held

  mutable std::mutex lock_;
  std::condition_variable changed_;
  int level_ = -1;
  int severity_ = -1;
  void* battery_ = nullptr;
  void* thermal_ = nullptr;
};
