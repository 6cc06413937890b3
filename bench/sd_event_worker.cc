// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <errno.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <system_error>
#include <thread>

#include "workers.h"

namespace norvik::qel::bench {

namespace {

int Checked(int result, const char* what) {
  if (result < 0) throw std::system_error(-result, std::system_category(), what);
  return result;
}

class SdEventWorker final : public Worker {
 public:
  explicit SdEventWorker(Probe& probe)
      : probe_(probe), fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (fd_ < 0) throw std::system_error(errno, std::system_category(), "eventfd");
    Checked(sd_event_new(&loop_), "sd_event_new");
    Checked(sd_event_add_io(loop_, nullptr, fd_, EPOLLIN, OnReadable, this), "sd_event_add_io");
    thread_ = std::thread([this] { sd_event_loop(loop_); });
  }
  ~SdEventWorker() override {
    ends_ = true;
    Trigger();
    thread_.join();
    sd_event_unref(loop_);
    close(fd_);
  }

  void Trigger() override {
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(fd_, &one, sizeof one);
  }

 private:
  static int OnReadable(sd_event_source* /*source*/, int fd, uint32_t /*events*/, void* self) {
    auto& worker = *static_cast<SdEventWorker*>(self);
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(fd, &count, sizeof count);
    if (worker.ends_) return sd_event_exit(worker.loop_, 0);
    worker.probe_.Run();
    return 0;
  }

  Probe& probe_;
  const int fd_;
  sd_event* loop_ = nullptr;
  std::atomic<bool> ends_ = false;
  std::thread thread_;
};

}  // namespace

std::unique_ptr<Worker> MakeSdEventWorker(Probe& probe) {
  return std::make_unique<SdEventWorker>(probe);
}

}  // namespace norvik::qel::bench
