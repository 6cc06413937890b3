// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <uv.h>

#include <atomic>
#include <system_error>
#include <thread>

#include "workers.h"

namespace norvik::qel::bench {

namespace {

class LibuvWorker final : public Worker {
 public:
  explicit LibuvWorker(Probe& probe) : probe_(probe) {
    int result = uv_loop_init(&loop_);
    if (result == 0) result = uv_async_init(&loop_, &async_, OnAsync);
    if (result != 0) throw std::system_error(-result, std::system_category(), "libuv");
    async_.data = this;
    thread_ = std::thread([this] { uv_run(&loop_, UV_RUN_DEFAULT); });
  }
  ~LibuvWorker() override {
    ends_ = true;
    Trigger();
    thread_.join();
    uv_loop_close(&loop_);
  }

  void Trigger() override { uv_async_send(&async_); }

 private:
  static void OnAsync(uv_async_t* async) {
    auto& worker = *static_cast<LibuvWorker*>(async->data);
    if (worker.ends_) {
      uv_close(reinterpret_cast<uv_handle_t*>(async), nullptr);
    } else {
      worker.probe_.Run();
    }
  }

  Probe& probe_;
  uv_loop_t loop_ = {};
  uv_async_t async_ = {};
  std::atomic<bool> ends_ = false;
  std::thread thread_;
};

}  // namespace

std::unique_ptr<Worker> MakeLibuvWorker(Probe& probe) {
  return std::make_unique<LibuvWorker>(probe);
}

}  // namespace norvik::qel::bench
