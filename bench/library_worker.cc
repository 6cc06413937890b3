// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "common/repeated_thread.h"
#include "workers.h"

namespace norvik::qel::bench {

namespace {

class ProbeThread : public audio::RepeatedThread {
 public:
  explicit ProbeThread(Probe& probe)
      : RepeatedThread("bench_probe", /*pause_ms=*/0, /*repeat_count=*/0), probe_(probe) {}

 private:
  bool ClientAction() override {
    probe_.Run();
    return true;
  }

  Probe& probe_;
};

class LibraryWorker : public Worker {
 public:
  explicit LibraryWorker(Probe& probe) : thread_(probe) { thread_.Initialize(); }
  ~LibraryWorker() override { thread_.Deinitialize(); }

  void Trigger() override { thread_.Start(); }

 private:
  ProbeThread thread_;
};

}  // namespace

std::unique_ptr<Worker> MakeLibraryWorker(Probe& probe) {
  return std::make_unique<LibraryWorker>(probe);
}

}  // namespace norvik::qel::bench
