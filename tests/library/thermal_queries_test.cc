// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Queries of the thermal family: names, battery charge limits, temperatures in bulk.
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>

#include "pipe.h"
#include "thermal/thermal_info.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

using Thermistors = std::vector<std::pair<std::string, float>>;

using ThermalNamesTest = ThermalFixture;
using ThermalHidlQueriesTest = ThermalFixture;

// The library need not know types that were added after HIDL.
TEST_F(ThermalNamesTest, TypesAreThoseThatTheHeaderHasConstantsFor) {
  std::ifstream file(QUORVEL_TEST_HEADER);
  const std::string header{std::istreambuf_iterator<char>(file), {}};
  for (const TemperatureType type : ndk::enum_range<TemperatureType>()) {
    if (type == TemperatureType::UNKNOWN) continue;
    const std::string name = toString(type);
    const int value = static_cast<int>(type);
    const std::string constant = "  QUORVEL_THERMAL_TYPE_" + name + " = " + std::to_string(value);
    const bool listed = header.find(constant) != header.npos;
    EXPECT_TRUE(listed || type > TemperatureType::NPU) << name;
    EXPECT_EQ(GetThermalTypeByName(handle_, name.c_str()), listed ? value : -1)
        << name << ": compare src/thermal/thermal_names.cc with include/quorvel.h";
  }
}

TEST_F(ThermalNamesTest, OtherNamesAreRefused) {
  const std::array severities = {"NONE",     "LIGHT",     "MODERATE", "SEVERE",
                                 "CRITICAL", "EMERGENCY", "SHUTDOWN"};
  for (size_t i = 0; i < severities.size(); ++i) {
    EXPECT_EQ(GetThrottlingSeverityByName(handle_, severities.at(i)), static_cast<int>(i));
  }
  EXPECT_EQ(GetThermalTypeByName(nullptr, "SKIN"), -EINVAL);
  EXPECT_EQ(GetThermalTypeByName(handle_, nullptr), -EINVAL);
  EXPECT_EQ(GetThrottlingSeverityByName(nullptr, "SHUTDOWN"), -EINVAL);
  EXPECT_EQ(GetThrottlingSeverityByName(handle_, nullptr), -EINVAL);
  EXPECT_THAT(Log(), IsEmpty());

  std::vector<std::string> warnings;
  for (const std::string name : {"skin", "SKIN ", ""}) {
    EXPECT_EQ(GetThermalTypeByName(handle_, name.c_str()), -1);
    warnings.push_back("GetThermalTypeByName: unknown temperature type name! " + name);
  }
  for (const std::string name : {"None", ""}) {
    EXPECT_EQ(GetThrottlingSeverityByName(handle_, name.c_str()), -EINVAL);
    warnings.push_back("GetThrottlingSeverityByName: unknown throttling severity name! " + name);
  }
  EXPECT_EQ(Warnings(), warnings);
}

// The values that a getter writes to an array of `room` elements.
using Getter = int (*)(void* handle, int* values, int* size, bool use_cached);
std::vector<int> Limits(Getter get, void* handle, bool use_cached, int room = 16) {
  std::vector<int> values(64, -1000);
  int size = room;
  EXPECT_EQ(get(handle, values.data(), &size, use_cached), 0);
  EXPECT_EQ(values.at(static_cast<size_t>(size)), -1000) << "writes no more than it says";
  values.resize(static_cast<size_t>(size));
  return values;
}

Thermistors Bulk(void* handle, std::vector<const char*> names, int room) {
  std::vector<thermistor> out(static_cast<size_t>(room));
  std::memset(out.data(), 0x7f, out.size() * sizeof(thermistor));
  int count = room;
  EXPECT_EQ(GetBulkTemperatureByNames(handle, names.data(), static_cast<int>(names.size()),
                                      out.data(), &count),
            0);
  Thermistors readings;
  for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
    const thermistor& reading = out.at(i);
    readings.emplace_back(reading.name, reading.value);
    const char* const end = std::end(reading.name);
    EXPECT_EQ(std::count(reading.name + std::strlen(reading.name), end, 0),
              end - reading.name - static_cast<std::ptrdiff_t>(std::strlen(reading.name)));
  }
  return readings;
}

class ThermalQueriesTest : public ThermalPathTest {
 protected:
  void AddTemperature(TemperatureType type, const std::string& name,
                      ThrottlingSeverity severity = ThrottlingSeverity::LIGHT) {
    thermal_.Change([&](services::ThermalData& data) {
      data.temperatures.push_back({.type = type, .name = name, .throttlingStatus = severity});
    });
  }
  std::vector<int> Currents(bool use_cached = false, int room = 16) {
    return Limits(GetBatteryChargeLimitCurrent, handle_, use_cached, room);
  }
  std::vector<int> Voltages(bool use_cached = false) {
    return Limits(GetBatteryChargeLimitVoltage, handle_, use_cached);
  }
};
QUORVEL_TEST_BOTH_PATHS(ThermalQueriesTest);

TEST_P(ThermalQueriesTest, LimitsAreThoseWithAudioInTheirName) {
  AddTemperature(TemperatureType::BCL_VOLTAGE, "xAUDIO", ThrottlingSeverity::SHUTDOWN);
  AddTemperature(TemperatureType::BCL_VOLTAGE, "Audio");
  AddTemperature(TemperatureType::BCL_PERCENTAGE, "AUDIO_level");
  thermal_.SetSeverity("battery_current", ThrottlingSeverity::CRITICAL);
  thermal_.SetSeverity("AUDIO_current", ThrottlingSeverity::MODERATE);

  EXPECT_THAT(Currents(/*use_cached=*/true), IsEmpty());
  EXPECT_EQ(on(ThermalCall::kQuery).calls(), 0) << "the cache needs no query";
  EXPECT_THAT(Currents(), ElementsAre(2));
  EXPECT_EQ(on(ThermalCall::kQuery).calls(), 2);
  EXPECT_THAT(Voltages(/*use_cached=*/true), ElementsAre(0, 6));
  thermal_.SetSeverity("AUDIO_voltage", ThrottlingSeverity::SEVERE);
  EXPECT_THAT(Voltages(/*use_cached=*/true), ElementsAre(0, 6));
  EXPECT_THAT(Voltages(), ElementsAre(3, 6));
  EXPECT_EQ(Dump(),
            "ThermalInfo:\n"
            "  bcl type = 6\n  bcl name = AUDIO_voltage\n  bcl status = 3\n\n"
            "  bcl type = 6\n  bcl name = xAUDIO\n  bcl status = 6\n\n"
            "  bcl type = 7\n  bcl name = AUDIO_current\n  bcl status = 2\n\n");
}

TEST_P(ThermalQueriesTest, TheDumpPrintsNamesUnchanged) {
  thermal_.Change([](services::ThermalData& data) { data.temperatures.clear(); });
  const std::string odd("%s%n AUDIO\n\t\xff\0cut", 17);
  const std::string large = "AUDIO" + std::string(100'000, 'x');
  for (const std::string& name : {odd, large}) AddTemperature(TemperatureType::BCL_CURRENT, name);
  EXPECT_THAT(Currents(), ElementsAre(1, 1));
  const std::string text = Dump();
  const auto entry = [](const std::string& name) {
    return "  bcl type = 7\n  bcl name = " + name + "\n  bcl status = 1\n\n";
  };
  EXPECT_TRUE(text == "ThermalInfo:\n" + entry("%s%n AUDIO\n\t\xff") + entry(large)) << text.size();

  // A dump that waits for its reader does not block other calls.
  Pipe pipe;
  const size_t capacity = pipe.Shrink();
  {
    Background dumper("a dump", [&] { DumpThermalInfo(handle_, pipe.writer()); });
    EXPECT_TRUE(Eventually([&] { return pipe.unread() == capacity; }));
    EndsInTime([&] { EXPECT_THAT(Currents(), ElementsAre(1, 1)); });
    EXPECT_TRUE(pipe.Read(text.size()) == text);
  }
  // The first write error ends a dump: the pipe contains the beginning of the text only.
  ASSERT_EQ(fcntl(pipe.writer(), F_SETFL, O_NONBLOCK), 0);
  DumpThermalInfo(handle_, pipe.writer());
  EXPECT_EQ(pipe.unread(), capacity);
  EXPECT_TRUE(pipe.Read(capacity) == text.substr(0, capacity));
}

TEST_P(ThermalQueriesTest, LimitsNeedRoom) {
  AddTemperature(TemperatureType::BCL_CURRENT, "2AUDIO");
  int value = 77;
  int size = 1;
  EXPECT_EQ(GetBatteryChargeLimitCurrent(handle_, &value, &size, false), -EINVAL);
  EXPECT_EQ(size, 1);
  EXPECT_EQ(value, 77);
  size = 0;
  EXPECT_EQ(GetBatteryChargeLimitVoltage(handle_, &value, &size, true), -EINVAL);
  EXPECT_THAT(Warnings(), Contains("GetBatteryChargeLimitCurrent: size isn't enough! (1)"));
  EXPECT_THAT(Warnings(), Contains("GetBatteryChargeLimitVoltage: size isn't enough! (0)"));
  EXPECT_THAT(Currents(true, 2), ElementsAre(0, 1));
  EXPECT_THAT(Currents(true, -1), ElementsAre(0, 1));

  for (int i = 0; i < 20; ++i) AddTemperature(TemperatureType::BCL_CURRENT, "AUDIO");
  EXPECT_EQ(Currents(false, 64).size(), 22u);
  EXPECT_EQ(GetBatteryChargeLimitCapacity(handle_), 16);

  EXPECT_EQ(GetBatteryChargeLimitCapacity(nullptr), -EINVAL);
  for (const Getter get : {GetBatteryChargeLimitCurrent, GetBatteryChargeLimitVoltage}) {
    EXPECT_EQ(get(nullptr, &value, &size, true), -EINVAL);
    EXPECT_EQ(get(handle_, nullptr, &size, true), -EINVAL);
    EXPECT_EQ(get(handle_, &value, nullptr, true), -EINVAL);
  }
}

TEST_P(ThermalQueriesTest, ARefusedQueryContributesNoLimitsAndADeadServiceKeepsThem) {
  thermal_.SetSeverity("AUDIO_current", ThrottlingSeverity::LIGHT);
  ASSERT_THAT(Voltages(), ElementsAre(0));
  on(ThermalCall::kQuery).Then(Outcome::Exception(EX_ILLEGAL_STATE, "no voltage today"));
  EXPECT_THAT(Voltages(), IsEmpty());
  EXPECT_THAT(Currents(/*use_cached=*/true), ElementsAre(1));
  EXPECT_EQ(log_.Count("GetCurrentBCLFromThermalService: Transaction failed."), 0);
  thermal_.Kill(GetParam());
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_THAT(Currents(), ElementsAre(1));
  EXPECT_EQ(log_.Count("GetCurrentBCLFromThermalService: unable to get a thermal client."), 1);
}

TEST_P(ThermalQueriesTest, BulkReadingsAreSortedAndEachOnce) {
  thermal_.SetTemperature("skin", 36.5F);
  AddTemperature(TemperatureType::CPU, "cpu");  // of 0 degrees
  EXPECT_EQ(Bulk(handle_, {"skin", "cpu", "skin"}, 2), (Thermistors{{"cpu", 40}, {"skin", 36.5F}}));
  EXPECT_EQ(Bulk(handle_, {"skin", "ski", "SKIN", "none"}, 4), (Thermistors{{"skin", 36.5F}}));
  EXPECT_EQ(Bulk(handle_, {"none"}, 1), Thermistors{});
  // A reported name ends at its first NUL.
  AddTemperature(TemperatureType::GPU, std::string("gpu\0core", 8));
  EXPECT_EQ(Bulk(handle_, {"gpu"}, 1), (Thermistors{{"gpu", 0}}));
  const int calls = is_aidl() ? thermal_.on(ThermalOperation::kGetTemperatures).calls()
                              : on(ThermalCall::kQuery).calls();
  EXPECT_EQ(calls, 4) << "one call answers all";
  EXPECT_THAT(Log(ANDROID_LOG_ERROR), IsEmpty());

  // Long names are truncated.
  const std::string fits(63, 'a');
  const std::string too_long(64, 'b');
  AddTemperature(TemperatureType::SKIN, fits);
  AddTemperature(TemperatureType::SKIN, too_long);
  EXPECT_EQ(Bulk(handle_, {too_long.c_str(), fits.c_str()}, 2),
            (Thermistors{{fits, 0}, {std::string(63, 'b'), 0}}));
  EXPECT_THAT(log_.Lines("audio_hw_thermal_api"),
              ElementsAre(testing::Field(&fake::LogLine::text,
                                         "GetBulkTemperatureByNames: string size exceed the "
                                         "maximum. " +
                                             too_long + " 64")));
}

TEST_P(ThermalQueriesTest, BulkQueriesWithInvalidArgumentsAreRefused) {
  const char* names[] = {"skin", "cpu"};
  thermistor out = {.name = "untouched", .value = 7};
  int room = 1;
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, names, 2, &out, &room), -EINVAL);
  EXPECT_EQ(room, 1);
  EXPECT_STREQ(out.name, "untouched");
  EXPECT_EQ(log_.Count("GetBulkTemperatureByNames: reply size isn't enough 1 2"), 1);
  room = -1;
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, names, 1, &out, &room), -EINVAL);
  EXPECT_EQ(log_.Count("GetBulkTemperatureByNames: reply size isn't enough -1 1"), 1);

  log_.Clear();
  room = 2;
  const char* with_null[] = {"skin", nullptr};
  EXPECT_EQ(GetBulkTemperatureByNames(nullptr, names, 2, &out, &room), -EINVAL);
  EXPECT_EQ(GetBulkTemperatureByNames(nullptr, names, -2, &out, &room), -EINVAL);
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, nullptr, 2, &out, &room), -EINVAL);
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, names, 2, nullptr, &room), -EINVAL);
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, names, 2, &out, nullptr), -EINVAL);
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, names, 0, &out, &room), -EINVAL);
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, with_null, 2, &out, &room), -EINVAL);
  room = 0;
  EXPECT_EQ(GetBulkTemperatureByNames(handle_, names, 2, &out, &room), -EINVAL);
  EXPECT_THAT(Log(), IsEmpty());
}

// In HIDL the transport itself can fail.
TEST_F(ThermalHidlQueriesTest, AFailedTransactionLeavesNoLimitsAndNoReadings) {
  EXPECT_EQ(Bulk(handle_, {"skin"}, 1), Thermistors{}) << "no service";
  EXPECT_THAT(Log(), ElementsAre(kNotDeclared));
  Bring(ThermalPath::kHidl);
  const Outcome failure = {.status = STATUS_FAILED_TRANSACTION};
  auto& script = thermal_.on(HidlThermalOperation::kGetCurrentTemperatures);
  for (const int answered : {0, 1}) {
    const Getter get = answered == 0 ? GetBatteryChargeLimitCurrent : GetBatteryChargeLimitVoltage;
    ASSERT_THAT(Limits(get, handle_, false), ElementsAre(0));
    const int calls = script.calls();
    script.Then({}, answered);
    script.Then(failure);
    EXPECT_THAT(Limits(get, handle_, false), IsEmpty());
    EXPECT_EQ(script.calls(), calls + answered + 1) << "no query follows the one that failed";
    EXPECT_EQ(log_.Count("GetCurrentBCLFromThermalService: Transaction failed."), answered + 1);
  }

  // Only a failed transaction is logged; an answer that says FAILURE is not.
  for (const Outcome& outcome : {failure, Outcome::Exception(EX_ILLEGAL_STATE, "not today")}) {
    script.Then(outcome);
    EXPECT_EQ(Bulk(handle_, {"skin"}, 1), Thermistors{});
    EXPECT_EQ(log_.Count("GetBulkTemperatureByNames: Transaction failed."), 1);
  }
}

// C++ callers may pass an empty list of names.
TEST(ThermalInfoTest, NoNamesHaveNoAnswer) {
  audio::ThermalInfo thermal_info;
  EXPECT_EQ(thermal_info.GetBulkTemperatureByNames({}), std::nullopt);
}

using ThermalQueriesDeathTest = ThermalFixture;

TEST_F(ThermalQueriesDeathTest, ANegativeCountEndsTheProcess) {
  const char* name = "skin";
  thermistor out = {};
  int room = 1;
  EXPECT_EXIT(static_cast<void>(GetBulkTemperatureByNames(handle_, &name, -1, &out, &room)),
              testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace norvik::qel
