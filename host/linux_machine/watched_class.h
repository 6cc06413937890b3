// A subsystem of the kernel's, as one of this machine's services sees it.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "device_monitor.h"
#include "fault.h"
#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

// Ends a wait of the thread that watches. Threads: any.
class Wake {
 public:
  Wake();
  ~Wake();
  Wake(const Wake&) = delete;
  Wake& operator=(const Wake&) = delete;

  int fd() const { return fd_; }
  void Ring() const;
  void Silence() const;

 private:
  const int fd_;
};

// An observer that hears what `observer` hears, and wakes the thread that watches whenever somebody
// has come to listen or has left.
services::ServiceObserver WakingObserver(std::shared_ptr<const Wake> wake,
                                         services::ServiceObserver observer);

// What a service knows of the devices of one subsystem. A service's process may still be inside a
// call when its owner has gone on, so everything that a call touches is here or in the service that
// derives from this, and a call tells the observer nothing: it leaves notices and wakes the owner's
// thread (see Watcher), which is joined in time.
//
// Threads: any. Locks: reading_lock_ is held over reading and reporting, so that an old reading
// never follows a new one.
class WatchedClass {
 public:
  // `devices`: what people call them.
  WatchedClass(const char* subsystem, std::string devices,
               std::shared_ptr<const Wake> wake = std::make_shared<Wake>());
  virtual ~WatchedClass() = default;
  WatchedClass(const WatchedClass&) = delete;
  WatchedClass& operator=(const WatchedClass&) = delete;

  const char* subsystem() const { return subsystem_; }

  // Reads what is there and reports it.
  void Refresh() QUORVEL_EXCLUDES(reading_lock_);
  void Note(const std::vector<DeviceChange>& changes) QUORVEL_EXCLUDES(reading_lock_);
  // From now on nobody will announce a device.
  void NoteEndOfEvents(int error) QUORVEL_EXCLUDES(reading_lock_);
  [[nodiscard]] std::vector<std::string> TakeNotices() QUORVEL_EXCLUDES(reading_lock_);

  // Readable while notices wait, listeners have come or gone, or the service is to end.
  int wake_fd() const { return wake_->fd(); }
  void End();
  bool ending() const { return ending_; }

  // How often to read what nobody announces. Nothing: not at all, as nobody listens.
  virtual std::optional<std::chrono::milliseconds> period() const { return std::nullopt; }
  virtual void ReadForListeners() QUORVEL_EXCLUDES(reading_lock_) { Refresh(); }

 protected:
  // Reads these devices, which are all that count, and reports them.
  virtual void ReadLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_) = 0;
  // A fault is told once, until its device goes.
  void NoticeFaultsLocked(const std::vector<Fault>& faults) QUORVEL_REQUIRES(reading_lock_);
  void AddNoticeLocked(std::string notice) QUORVEL_REQUIRES(reading_lock_);

  mutable std::mutex reading_lock_;

 private:
  std::vector<std::string> OnlyAnnouncedLocked(const std::vector<std::string>& listed)
      QUORVEL_REQUIRES(reading_lock_);
  void ForgetFaultsOfOthersLocked(const std::vector<std::string>& syspaths)
      QUORVEL_REQUIRES(reading_lock_);

  const char* const subsystem_;
  const std::string devices_;
  const std::shared_ptr<const Wake> wake_;
  std::atomic<bool> ending_ = false;
  // Devices are listed before their files have been made, and some linger when they are announced
  // as gone. So only the announced ones are read, but for those that were there before.
  std::set<std::string> announced_ QUORVEL_GUARDED_BY(reading_lock_);
  bool all_are_announced_ QUORVEL_GUARDED_BY(reading_lock_) = true;
  bool has_events_ QUORVEL_GUARDED_BY(reading_lock_) = true;
  // Device and file.
  std::set<std::pair<std::string, std::string>> faults_told_ QUORVEL_GUARDED_BY(reading_lock_);
  std::vector<std::string> notices_ QUORVEL_GUARDED_BY(reading_lock_);
};

}  // namespace norvik::qel::linux_machine
