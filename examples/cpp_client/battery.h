// The library's battery handle in a type that owns it.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

// Levels as the library tells them, to be taken by a thread of the client's own: the library's
// thread only leaves them here.
//
// Threads: any. The object is destroyed when no thread waits any more.
class Battery {
 public:
  Battery();
  ~Battery();
  Battery(const Battery&) = delete;
  Battery& operator=(const Battery&) = delete;

  // Waits for the next level.
  int NextLevel();

 private:
  static void OnLevel(int percent, void* cookie);

  std::mutex lock_;
  std::condition_variable came_;
  std::deque<int> levels_;
  void* handle_ = nullptr;  // last: nothing above may go while it may call back
};
