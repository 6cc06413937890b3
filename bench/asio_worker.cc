// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <thread>

#include "workers.h"

namespace norvik::qel::bench {

namespace {

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

std::unique_ptr<Worker> MakeAsioWorker(Probe& probe) {
  return std::make_unique<AsioWorker>(probe);
}

}  // namespace norvik::qel::bench
