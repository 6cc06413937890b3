// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <glib.h>

#include <thread>

#include "workers.h"

namespace norvik::qel::bench {

namespace {

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
    // From the loop itself: a loop that has not begun to run ignores a request to quit.
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

}  // namespace

std::unique_ptr<Worker> MakeGlibWorker(Probe& probe) {
  return std::make_unique<GlibWorker>(probe);
}

}  // namespace norvik::qel::bench
