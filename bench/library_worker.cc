// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "common/repeated_thread.h"
#include "workers.h"

namespace norvik::qel::bench {

namespace {

class LibraryWorker : public Worker, private audio::RepeatedThread {
 public:
  explicit LibraryWorker(Probe& probe)
      : RepeatedThread("bench_probe", /*pause_ms=*/0, /*repeat_count=*/0), probe_(probe) {
    Initialize();
  }
  ~LibraryWorker() override { Deinitialize(); }

  void Trigger() override { Start(); }

 private:
  bool ClientAction() override {
    probe_.Run();
    return true;
  }

  Probe& probe_;
};

}  // namespace

std::unique_ptr<Worker> MakeLibraryWorker(Probe& probe) {
  return std::make_unique<LibraryWorker>(probe);
}

}  // namespace norvik::qel::bench
