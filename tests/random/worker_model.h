// What is known of a worker that tries again: how often, and what a request meanwhile means. Its
// pauses last until Tick().
#pragma once

#include <functional>
#include <utility>

namespace norvik::qel::random_test {

class RetryModel {
 public:
  // `attempt` gives whether it has succeeded.
  RetryModel(int repeat_count, std::function<bool()> attempt)
      : repeat_count_(repeat_count), attempt_(std::move(attempt)) {}

  bool running() const { return running_; }
  bool pausing() const { return failures_ > 0; }
  bool IsNextAttemptTheLast() const { return failures_ + 1 >= repeat_count_; }
  // For the attempt under way.
  bool IsLastAttempt() const { return running_ && IsNextAttemptTheLast(); }

  void Start() {
    if (running_ || pausing()) {
      again_ = true;
      return;
    }
    Run();
  }

  // The pause is over.
  void Tick() {
    if (!pausing()) return;
    const bool again = std::exchange(again_, false);
    if (failures_ >= repeat_count_ && !again) {
      failures_ = 0;  // given up
      return;
    }
    Run();
  }

 private:
  void Run() {
    do {
      running_ = true;
      const bool done = attempt_();
      running_ = false;
      if (!done) {
        ++failures_;
        return;
      }
      failures_ = 0;
    } while (std::exchange(again_, false));
  }

  const int repeat_count_;
  const std::function<bool()> attempt_;
  int failures_ = 0;
  bool running_ = false;
  bool again_ = false;
};

}  // namespace norvik::qel::random_test
