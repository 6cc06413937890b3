// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Queries, of the service and of what is known.
#include <cerrno>
#include <cmath>

#include "device_test.h"

namespace norvik::qel::device_test {

namespace {

class BatteryQueryTest : public SubjectTest {
 protected:
  BatteryQueryTest() : SubjectTest(Subjects().front()) {}
};

TEST_F(BatteryQueryTest, CachedAndFreshAgree) {
  const auto agreed = [&](int (*get)(void* handle, bool use_cached)) {
    int fresh = 0;
    int cached = 0;
    // A report may come in between.
    EXPECT_TRUE(Eventually([&] {
      fresh = get(handle_.get(), /*use_cached=*/false);
      cached = get(handle_.get(), /*use_cached=*/true);
      return fresh == cached;
    })) << fresh
        << " is fresh, " << cached << " is cached";
    return fresh;
  };
  const int level = agreed(GetBatteryLevel);
  EXPECT_TRUE(level >= 0 && level <= 100) << level;
  EXPECT_GE(agreed(GetBatteryCycleCount), 0);
  for (const auto charger : {GetWirelessChargerIsOnline, GetDockChargerIsOnline}) {
    const int online = agreed(charger);
    EXPECT_TRUE(online == QUORVEL_CHARGER_ONLINE || online == QUORVEL_CHARGER_OFFLINE) << online;
  }
}

class ThermalQueryTest : public SubjectTest {
 protected:
  ThermalQueryTest() : SubjectTest(Subjects().back()) {}
};

TEST_F(ThermalQueryTest, TemperaturesAreFoundByName) {
  std::vector<const char*> names = {"no such temperature"};
  std::set<std::string> known;
  for (const auto& [type, name] : options.temperatures) {
    EXPECT_GE(GetThermalTypeByName(handle_.get(), type.c_str()), 0) << type;
    names.push_back(name.c_str());
    known.insert(name);
  }
  std::vector<thermistor> readings(names.size());
  int count = static_cast<int>(readings.size());
  ASSERT_EQ(GetBulkTemperatureByNames(handle_.get(), names.data(), static_cast<int>(names.size()),
                                      readings.data(), &count),
            0);
  ASSERT_EQ(count, static_cast<int>(known.size()));
  auto name = known.begin();
  for (int i = 0; i < count; ++i, ++name) {
    EXPECT_EQ(std::string(readings[i].name), name->substr(0, QUORVEL_THERMISTOR_NAME_SIZE - 1));
    EXPECT_FALSE(std::isinf(readings[i].value)) << *name;
    RecordProperty(*name, std::to_string(readings[i].value));
  }
}

TEST_F(ThermalQueryTest, CachedAndFreshLimitsAgree) {
  for (const auto get : {GetBatteryChargeLimitCurrent, GetBatteryChargeLimitVoltage}) {
    const auto limits = [&](bool use_cached) {
      std::vector<int> severities(64);
      int size = static_cast<int>(severities.size());
      EXPECT_EQ(get(handle_.get(), severities.data(), &size, use_cached), 0);
      severities.resize(size);
      return severities;
    };
    const std::vector<int> fresh = limits(/*use_cached=*/false);
    EXPECT_EQ(limits(/*use_cached=*/true), fresh);
    for (const int severity : fresh) {
      EXPECT_TRUE(severity >= QUORVEL_THROTTLING_NONE && severity <= QUORVEL_THROTTLING_SHUTDOWN);
    }
  }
}

}  // namespace

}  // namespace norvik::qel::device_test
