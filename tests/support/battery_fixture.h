// A simulated phone with its health service up, a battery handle, and clients that remember.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <optional>
#include <ostream>
#include <string>

#include "devices/simulated/health.h"
#include "quorvel.h"
#include "standin/deliveries.h"
#include "standin/log_capture.h"
#include "standin/service_manager.h"
#include "tests/support/waiting.h"

namespace norvik::qel {

// What a client was told: which client, which value.
struct Call {
  int client;
  int value;
  bool operator==(const Call&) const = default;
  friend std::ostream& operator<<(std::ostream& os, const Call& call) {
    return os << "client " << call.client << ": " << call.value;
  }
};

// A client is a function, so each number is a client of its own. The cookie is a Seen<Call>.
template <int kClient>
void Client(int value, void* cookie) {
  static_cast<Seen<Call>*>(cookie)->Put({.client = kClient, .value = value});
}

inline std::string DumpOf(void* handle) {
  FILE* file = tmpfile();
  DumpBatteryInfo(handle, fileno(file));
  std::string text(static_cast<size_t>(lseek(fileno(file), 0, SEEK_END)), '\0');
  EXPECT_EQ(pread(fileno(file), text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  fclose(file);
  return text;
}

inline bool IsLinked(void* handle) {
  return DumpOf(handle).find("linked to services = T") != std::string::npos;
}

class BatteryFixture : public testing::Test {
 protected:
  BatteryFixture() {
    health_.Start();
    InitBatteryInfo(&handle_);
  }
  ~BatteryFixture() override {
    DeinitBatteryInfo(&handle_);
    health_.Kill();
    EXPECT_TRUE(standin::WaitUntilDelivered());
  }

  int Calls(devices::HealthOperation operation) { return health_.on(operation).calls(); }
  // The texts the battery has logged so far.
  std::vector<std::string> BatteryLog() const {
    std::vector<std::string> texts;
    for (const auto& line : log_.Lines("audio_hw_battery")) texts.push_back(line.text);
    return texts;
  }
  // Registers client 0 for the level and takes its first call.
  void RegisterAndHearLevel() {
    ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
    ASSERT_EQ(seen_.Take(), (Call{0, health_.info().batteryLevel}));
  }

  standin::LogCapture log_;
  Seen<Call> seen_;
  simulated::Health health_;
  void* handle_ = nullptr;
};

}  // namespace norvik::qel
