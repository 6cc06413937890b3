// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Workers made of other projects' event loops.
#include <errno.h>
#include <glib.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>
#include <unistd.h>
#include <uv.h>

#include <atomic>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
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

class GlibWorker : public Worker {
 public:
  explicit GlibWorker(Probe& probe)
      : context_(g_main_context_new()), loop_(g_main_loop_new(context_, FALSE)) {
    source_ = g_source_new(&functions_, sizeof(GSource));
    g_source_set_callback(source_, OnReady, &probe, nullptr);
    g_source_attach(source_, context_);
    thread_ = std::thread([this] {
      g_main_context_push_thread_default(context_);
      g_main_loop_run(loop_);
      g_main_context_pop_thread_default(context_);
    });
  }
  ~GlibWorker() override {
    // Quits from inside the loop, because a loop that does not run yet ignores g_main_loop_quit().
    g_main_context_invoke(context_, Quit, loop_);
    thread_.join();
    g_source_destroy(source_);
    g_source_unref(source_);
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
  }

  void Trigger() override { g_source_set_ready_time(source_, 0); }

 private:
  static gboolean Quit(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
  }
  static gboolean Dispatch(GSource* source, GSourceFunc callback, gpointer data) {
    g_source_set_ready_time(source, -1);
    return callback(data);
  }
  static gboolean OnReady(gpointer probe) {
    static_cast<Probe*>(probe)->Run();
    return G_SOURCE_CONTINUE;
  }

  inline static GSourceFuncs functions_ = {.prepare = nullptr,
                                           .check = nullptr,
                                           .dispatch = Dispatch,
                                           .finalize = nullptr,
                                           .closure_callback = nullptr,
                                           .closure_marshal = nullptr};
  GMainContext* const context_;
  GMainLoop* const loop_;
  GSource* source_ = nullptr;
  std::thread thread_;
};

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

class AsioWorker : public Worker {
 public:
  explicit AsioWorker(Probe& probe) : probe_(probe), thread_([this] { context_.run(); }) {}
  ~AsioWorker() override {
    guard_.reset();
    thread_.join();
  }

  void Trigger() override {
    boost::asio::post(context_, [this] { probe_.Run(); });
  }

 private:
  Probe& probe_;
  boost::asio::io_context context_;
  boost::asio::executor_work_guard<boost::asio::io_context::executor_type> guard_ =
      boost::asio::make_work_guard(context_);
  std::thread thread_;  // last: it uses all the others
};

}  // namespace

std::unique_ptr<Worker> MakeSdEventWorker(Probe& probe) {
  return std::make_unique<SdEventWorker>(probe);
}

std::unique_ptr<Worker> MakeGlibWorker(Probe& probe) {
  return std::make_unique<GlibWorker>(probe);
}

std::unique_ptr<Worker> MakeLibuvWorker(Probe& probe) {
  return std::make_unique<LibuvWorker>(probe);
}

std::unique_ptr<Worker> MakeAsioWorker(Probe& probe) {
  return std::make_unique<AsioWorker>(probe);
}

}  // namespace norvik::qel::bench
