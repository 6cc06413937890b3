// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Whole machines, each by the files that its kernel shows, and what they come to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <locale>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "device_files.h"
#include "iio_channels.h"
#include "linux_machine.h"
#include "power_supplies.h"
#include "thermal_devices.h"
#include "thermal_history.h"
#include "thermal_types.h"

namespace norvik::qel {
namespace {

using linux_machine::IioChannel;
using linux_machine::PowerSupply;
using linux_machine::TemperatureSource;

// A line per device, "SUBSYSTEM NAME: FILE=CONTENT; FILE=CONTENT"; and what they come to, a line
// each: the battery, the chargers that are online, the supplies that do not count, the
// temperatures, the sensors, the faults.
struct Description {
  const char* test;
  const char* files;
  const char* result;
  friend std::ostream& operator<<(std::ostream& os, const Description& d) { return os << d.test; }
};

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t end; (end = text.find(separator, start)) != std::string::npos;) {
    parts.push_back(text.substr(start, end - start));
    start = end + separator.size();
  }
  parts.push_back(text.substr(start));
  return parts;
}

class LinuxMachinesTest : public testing::TestWithParam<Description> {
 protected:
  void SetUp() override {
    ASSERT_FALSE(std::filesystem::exists("/sys/kernel")) << "run this under umockdev-wrapper";
    result_.imbue(std::locale::classic());
    for (const std::string& line : Split(GetParam().files, "\n")) {
      if (line.empty()) continue;
      const size_t blank = line.find(' ');
      const size_t colon = line.find(": ");
      ASSERT_LT(blank, colon) << line;
      Files files;
      for (const std::string& file : Split(line.substr(colon + 2), "; ")) {
        const size_t equals = file.find('=');
        ASSERT_NE(equals, std::string::npos) << file;
        files[file.substr(0, equals)] = file.substr(equals + 1) + "\n";
      }
      machine_.AddTo(line.substr(0, blank), line.substr(blank + 1, colon - blank - 1), files);
    }
  }

  static std::vector<std::string> List(const std::vector<const char*>& subsystems) {
    std::vector<std::string> listed;
    EXPECT_EQ(linux_machine::ListDevices(subsystems, &listed), 0);
    return listed;
  }

  void TellPower() {
    const linux_machine::PowerReading reading =
        linux_machine::ReadPowerSupplies(List({"power_supply"}));
    if (reading.battery) {
      result_ << "battery " << reading.battery->level_percent.value_or(-1) << " %, "
              << reading.battery->cycle_count.value_or(-1) << " cycles, "
              << (reading.battery->status ? toString(*reading.battery->status) : "?") << '\n';
    }
    if (reading.chargers.ac_online) result_ << "online AC\n";
    if (reading.chargers.usb_online) result_ << "online USB\n";
    if (reading.chargers.wireless_online) result_ << "online wireless\n";
    if (reading.chargers.dock_online) result_ << "online dock\n";
    for (const PowerSupply& supply : reading.supplies) {
      if (supply.ignored_because.empty()) continue;
      result_ << supply.name << ": " << supply.ignored_because << '\n';
    }
    TellFaults(reading.faults);
  }

  void TellTemperatures() {
    const auto reading = linux_machine::ReadThermalDevices(List({"thermal", "hwmon"}));
    linux_machine::ThermalHistory history{linux_machine::ThermalTypes()};
    const services::ThermalData data = history.Continue(reading);
    for (size_t i = 0; i < data.temperatures.size(); ++i) {
      const auto& temperature = data.temperatures[i];
      result_ << toString(temperature.type) << ' ' << temperature.name << ' ' << temperature.value;
      if (temperature.throttlingStatus != decltype(temperature.throttlingStatus)::NONE) {
        result_ << ' ' << toString(temperature.throttlingStatus);
      }
      for (const float threshold : data.thresholds[i].hotThrottlingThresholds) {
        if (!std::isnan(threshold)) result_ << " >" << threshold;
      }
      result_ << '\n';
    }
    TellFaults(reading.faults);
  }

  void TellSensors() {
    linux_machine::FoundChannels found = linux_machine::FindChannels(List({"iio"}));
    const auto tell = [&](const char* what, const std::optional<IioChannel>& channel) {
      if (!channel) return;
      result_ << what << ' ' << channel->name << ' '
              << Measure(*channel, &found.faults).value_or(-1) << '\n';
    };
    tell("proximity", found.proximity);
    tell("hinge", found.hinge);
    TellFaults(found.faults);
  }

  void TellFaults(const std::vector<linux_machine::Fault>& faults) {
    for (const auto& fault : faults) result_ << "! " << NoticeOf(fault) << '\n';
  }

  Machine machine_{"power_supply"};
  std::ostringstream result_;
};

TEST_P(LinuxMachinesTest, IsReadAsItsFilesSay) {
  TellPower();
  TellTemperatures();
  TellSensors();
  EXPECT_EQ("\n" + result_.str(), GetParam().result);
}

const Description kMachines[] = {
    {"LenovoLaptopWithTwoBatteries", R"(
power_supply AC: type=Mains; online=0
power_supply BAT0: type=Battery; present=1; status=Not charging; capacity=0; energy_now=0; energy_full=16650000; energy_full_design=24050000; cycle_count=288; voltage_min_design=11400000
power_supply BAT1: type=Battery; present=1; status=Discharging; capacity=87; energy_now=45770000; energy_full=52610000; energy_full_design=71300000; cycle_count=144
power_supply ucsi-source-psy-USBC000:001: type=USB; usb_type=[C] PD PD_PPS; online=0; scope=Unknown
thermal thermal_zone0: type=acpitz; temp=47000; trip_point_0_type=critical; trip_point_0_temp=128000
thermal thermal_zone1: type=iwlwifi_1; temp=39000
thermal thermal_zone2: type=x86_pkg_temp; temp=47000; trip_point_0_type=passive; trip_point_0_temp=0
hwmon hwmon1: name=acpitz; temp1_input=47000
hwmon hwmon2: name=BAT0; in0_input=12100
hwmon hwmon4: name=iwlwifi_1; temp1_input=39000
hwmon hwmon5: name=thinkpad; temp1_label=CPU; temp1_input=47000; temp2_label=GPU; fan1_input=0
hwmon hwmon6: name=coretemp; temp1_label=Package id 0; temp1_input=48000; temp1_max=100000; temp1_crit=100000; temp1_crit_alarm=0
)",
     R"(
battery 66 %, 288 cycles, DISCHARGING
UNKNOWN acpitz 47 >128
WIFI iwlwifi_1 39
CPU x86_pkg_temp 47
CPU thinkpad:CPU 47
CPU coretemp:Package id 0 48 >100 >100
)"},
    {"DellLaptopWithChargeFiles", R"(
power_supply AC: type=Mains; online=1
power_supply BAT0: type=Battery; present=1; status=Charging; capacity=64; charge_now=4120000; charge_full=6437000; charge_full_design=6842000; voltage_min_design=7600000; cycle_count=0; capacity_level=Normal
power_supply ucsi-source-psy-USBC000:001: type=USB; usb_type=C [PD] PD_PPS; online=1; current_max=3000000; voltage_max=20000000
hwmon hwmon3: name=dell_smm; temp1_label=CPU; temp1_input=61000; temp2_label=Ambient; temp2_input=38000; temp3_label=SODIMM; temp3_input=41000; temp4_label=GPU; temp4_input=-1000
)",
     R"(
battery 64 %, -1 cycles, CHARGING
online AC
online USB
! BAT0/cycle_count: 0 means not available
CPU dell_smm:CPU 61
AMBIENT dell_smm:Ambient 38
UNKNOWN dell_smm:SODIMM 41
GPU dell_smm:GPU -1
)"},
    {"HpLaptopWithAMouse", R"(
power_supply ACAD: type=Mains; online=0
power_supply BAT1: type=Battery; status=Discharging; capacity=42; energy_now=18100000; energy_full=43000000; cycle_count=97
power_supply hidpp_battery_0: type=Battery; scope=Device; online=1; status=Discharging; capacity=5; model_name=Wireless Mouse
thermal thermal_zone0: type=SEN1; temp=51050; trip_point_0_type=passive; trip_point_0_temp=50050
thermal thermal_zone1: type=TSKN; temp=36050
thermal thermal_zone2: type=INT3400 Thermal; temp=20000; mode=disabled
)",
     R"(
battery 42 %, 97 cycles, DISCHARGING
hidpp_battery_0: feeds a peripheral
UNKNOWN SEN1 51.05 MODERATE >50.05
SKIN TSKN 36.05
UNKNOWN INT3400 Thermal 20
)"},
    {"AmdLaptopChargedByUsbPd", R"(
power_supply ACAD: type=Mains; online=1
power_supply BAT1: type=Battery; present=1; status=Full; capacity=103; charge_now=3572000; charge_full=3468000; cycle_count=61; voltage_min_design=15400000
power_supply ucsi-source-psy-USBC000:002: type=USB; usb_type=C [PD] PD_PPS; online=1
thermal thermal_zone0: type=acpitz; temp=44800
hwmon hwmon0: name=k10temp; temp1_label=Tctl; temp1_input=55125
hwmon hwmon1: name=nvme; temp1_label=Composite; temp1_input=37850; temp1_max=82850; temp1_min=-273150; temp1_crit=84850; temp2_label=Sensor 1; temp2_input=37850; temp2_max=65261850
hwmon hwmon2: name=amdgpu; temp1_label=edge; temp1_input=47000
hwmon hwmon3: name=mt7921_phy0; temp1_input=43000
)",
     R"(
battery 100 %, 61 cycles, FULL
online AC
online USB
! BAT1/capacity: 103 is not within 0 to 100, taken as 100
UNKNOWN acpitz 44.8
CPU k10temp:Tctl 55.125
UNKNOWN nvme:Composite 37.85 >82.85 >84.85
UNKNOWN nvme:Sensor 1 37.85
GPU amdgpu:edge 47
WIFI mt7921_phy0:temp1 43
)"},
    {"AppleLaptop", R"(
power_supply macsmc-ac: type=Mains; online=1
power_supply macsmc-battery: type=Battery; present=1; status=Charging; capacity=80; energy_now=42000000; energy_full=52600000; charge_now=3400000; charge_full=4300000; cycle_count=33; temp=295; technology=Li-ion; scope=System
hwmon hwmon0: name=nvme; temp1_label=Composite; temp1_input=27850
)",
     R"(
battery 80 %, 33 cycles, CHARGING
online AC
UNKNOWN nvme:Composite 27.85
)"},
    {"ConvertibleWithHingeAndPresence", R"(
power_supply AC0: type=Mains; online=0
power_supply BAT0: type=Battery; status=Discharging; capacity=55; energy_now=36000000; energy_full=66000000; cycle_count=12
iio iio:device0: name=accel_3d; in_accel_x_raw=12; in_accel_scale=0.009806
iio iio:device1: name=prox; in_proximity_raw=1; in_proximity_scale=1.000000; in_proximity_offset=0
iio iio:device2: name=hinge; in_angl0_raw=112; in_angl0_label=hinge; in_angl1_raw=20; in_angl1_label=screen; in_angl2_raw=92; in_angl2_label=keyboard; in_angl_scale=0.017453293; in_angl_offset=0
)",
     R"(
battery 55 %, 12 cycles, DISCHARGING
proximity prox 0
hinge hinge 112
)"},
    {"Chromebook", R"(
power_supply CROS_USBPD_CHARGER0: type=USB; usb_type=Unknown SDP DCP CDP C [PD]; online=1; current_max=3000000; voltage_max_design=20000000
power_supply CROS_USBPD_CHARGER1: type=USB; online=0
power_supply CROS_DEDICATED_CHARGER0: type=Mains; online=0
power_supply sbs-12-000b: type=Battery; present=1; status=Charging; capacity=91; charge_now=4500000; charge_full=4950000; energy_now=34200000; energy_full=37620000; cycle_count=40; technology=Li-ion
hwmon hwmon0: name=cros_ec; temp1_label=Battery; temp1_input=27850; temp2_label=Charger; temp2_input=36850; temp3_label=SoC; temp3_input=40850; temp3_fault=0; temp4_label=PMIC; temp4_fault=1; temp4_input=0
iio iio:device0: name=cros-ec-accel; location=lid; in_accel_x_raw=16; label=accel-display
iio iio:device1: name=cros-ec-lid-angle; in_angl_raw=137
iio iio:device2: name=sx9360; in_proximity0_raw=800; in_proximity1_raw=7; label=proximity-wifi
)",
     R"(
battery 91 %, 40 cycles, CHARGING
online USB
BATTERY cros_ec:Battery 27.85
UNKNOWN cros_ec:Charger 36.85
UNKNOWN cros_ec:SoC 40.85
! hwmon0/temp4_fault: 1 means that the sensor is faulty
hinge cros-ec-lid-angle 137
)"},
    {"PhoneWithAllwinnerChip", R"(
power_supply axp20x-battery: type=Battery; present=1; online=1; status=Discharging; capacity=48; health=Good; voltage_now=3771000; current_now=-228000; charge_full_design=2800000
power_supply axp20x-usb: type=USB; usb_type=[SDP] DCP CDP; present=0; online=0
thermal thermal_zone0: type=cpu0-thermal; temp=44123; trip_point_0_type=passive; trip_point_0_temp=85000; trip_point_0_hyst=2000; trip_point_1_type=critical; trip_point_1_temp=100000
thermal thermal_zone1: type=gpu-thermal; temp=43002
thermal cooling_device0: type=cpufreq-cpu0; cur_state=0; max_state=6
hwmon hwmon0: name=cpu0_thermal; temp1_input=44123
hwmon hwmon1: name=gpu_thermal; temp1_input=43002
iio iio:device1: name=stk3310; in_proximity_raw=410; in_proximity_nearlevel=400; in_proximity_scale=12.8; in_illuminance_raw=9
)",
     R"(
battery 48 %, -1 cycles, DISCHARGING
! axp20x-battery/cycle_count: missing
CPU cpu0-thermal 44.123 >85 >100
GPU gpu-thermal 43.002
proximity stk3310 0
)"},
    {"PhoneWithNxpChip", R"(
power_supply bq25890-charger-0: type=USB; online=1; status=Charging; current_max=1500000
power_supply max170xx_battery: type=Battery; present=1; status=Charging; capacity=77; charge_now=3400000; charge_full=4400000; charge_full_design=4500000; cycle_count=18; temp=310; scope=System
power_supply tps6598x-source-psy-0-003f: type=USB; usb_type=C [PD]; online=1
thermal thermal_zone0: type=cpu-thermal; temp=52000
thermal thermal_zone1: type=max170xx_battery; temp=31000
hwmon hwmon0: name=max170xx_battery; temp1_input=31000
iio iio:device0: name=vcnl4040; in_proximity_raw=3; in_proximity_nearlevel=25
)",
     R"(
battery 77 %, 18 cycles, CHARGING
online USB
CPU cpu-thermal 52
BATTERY max170xx_battery 31
proximity vcnl4040 5
)"},
    {"PhoneWithQualcommChip", R"(
power_supply bq27411-0: type=Battery; present=1; status=Discharging; capacity=66; capacity_level=Normal; charge_now=2000000; charge_full=3050000; charge_full_design=3300000; cycle_count=0; temp=289
power_supply pmi8998-charger: type=USB; online=0; status=Discharging
thermal thermal_zone0: type=bq27411-0; temp=28900
thermal thermal_zone1: type=cpu0-thermal; temp=35100
thermal thermal_zone2: type=gpu-top-thermal; temp=33800
thermal thermal_zone3: type=modem-thermal; temp=33000
thermal thermal_zone4: type=pm8998-thermal; temp=37000; trip_point_0_type=passive; trip_point_0_temp=105000; trip_point_1_type=critical; trip_point_1_temp=125000
)",
     R"(
battery 66 %, -1 cycles, DISCHARGING
! bq27411-0/cycle_count: 0 means not available
BATTERY bq27411-0 28.9
CPU cpu0-thermal 35.1
GPU gpu-top-thermal 33.8
MODEM modem-thermal 33
UNKNOWN pm8998-thermal 37 >105 >125
)"},
    {"LaptopWithQualcommChipOnAPad", R"(
power_supply qcom-battmgr-ac: type=Mains; online=0
power_supply qcom-battmgr-bat: type=Battery; present=1; status=Charging; capacity=59; energy_now=29000000; energy_full=49000000; cycle_count=7
power_supply qcom-battmgr-usb: type=USB; usb_type=[Unknown] PD; online=0
power_supply qcom-battmgr-wls: type=Wireless; online=1
hwmon hwmon0: name=qcom_battmgr_bat; temp1_input=30400
)",
     R"(
battery 59 %, 7 cycles, CHARGING
online wireless
BATTERY qcom_battmgr_bat:temp1 30.4
)"},
    {"DesktopWithoutBattery", R"(
power_supply hid-34:88:5d:aa:00:11-battery: type=Battery; scope=Device; present=1; capacity=80; status=Discharging
power_supply ups: type=UPS; capacity=13; online=1
thermal thermal_zone0: type=acpitz; temp=16800
hwmon hwmon1: name=k10temp; temp1_label=Tctl; temp1_input=44750; temp3_label=Tccd1; temp3_input=39250
hwmon hwmon2: name=nouveau; temp1_input=41000; temp1_max=95000; temp1_max_hyst=3000; temp1_crit=105000; temp1_crit_hyst=5000; temp1_emergency=135000
hwmon hwmon3: name=drivetemp; temp1_input=33000; temp1_max=60000; temp1_lowest=20000
hwmon hwmon4: name=nct6798; temp1_label=SYSTIN; temp1_input=36000; temp1_max=80000; temp1_max_hyst=75000
)",
     R"(
hid-34:88:5d:aa:00:11-battery: feeds a peripheral
ups: neither a battery nor a charger
UNKNOWN acpitz 16.8
CPU k10temp:Tctl 44.75
CPU k10temp:Tccd1 39.25
GPU nouveau:temp1 41 >95 >105 >135
UNKNOWN drivetemp:temp1 33 >60
UNKNOWN nct6798:SYSTIN 36 >80
)"},
    {"TabletWithAKeyboardDock", R"(
power_supply asus-ec-battery: type=Battery; status=Discharging; capacity=12
power_supply bq27541-0: type=Battery; present=1; status=Charging; capacity=81; charge_now=3100000; charge_full=3830000; cycle_count=204
power_supply dock-charger: type=Mains; online=1; current_max=2000000
power_supply tablet-usb: type=USB; online=0
)",
     R"(
battery 81 %, 204 cycles, CHARGING
online dock
asus-ec-battery: accessory
! asus-ec-battery: ignored as an accessory: it has no energy, charge or cycle count, but another battery has
)"},
    {"TabletWithTwoKindsOfBatteries", R"(
power_supply ADP1: type=Mains; online=1
power_supply BAT1: type=Battery; status=Full; capacity=100; energy_now=20000000; energy_full=20000000; cycle_count=50
power_supply BAT2: type=Battery; status=Charging; capacity=50; charge_now=3000000; charge_full=6000000; voltage_min_design=10000000; cycle_count=55
)",
     R"(
battery 63 %, 55 cycles, CHARGING
online AC
)"},
    {"HandheldGame", R"(
power_supply ACAD: type=Mains; online=0
power_supply BAT1: type=Battery; status=Discharging; charge_now=2600000; charge_full=5200000; voltage_min_design=7700000; cycle_count=140
power_supply ucsi-source-psy-0-0052: type=USB; online=0; usb_type=C [PD]
hwmon hwmon5: name=steamdeck_hwmon; temp1_label=Battery Temp; temp1_input=31200; fan1_input=0
)",
     R"(
battery 50 %, 140 cycles, DISCHARGING
! BAT1/capacity: missing; computed from charge_now and charge_full
BATTERY steamdeck_hwmon:Battery Temp 31.2
)"},
    {"BoardComputer", R"(
thermal thermal_zone0: type=cpu-thermal; temp=49173; trip_point_0_type=critical; trip_point_0_temp=110000; trip_point_0_hyst=0
thermal cooling_device0: type=pwm-fan; cur_state=1; max_state=4
hwmon hwmon0: name=cpu_thermal; temp1_input=49173; temp1_crit=110000
hwmon hwmon1: name=rp1_adc; in1_input=1400; temp1_input=46800
)",
     R"(
CPU cpu-thermal 49.173 >110
UNKNOWN rp1_adc:temp1 46.8
)"},
    {"VirtualMachine", "", "\n"},
};

INSTANTIATE_TEST_SUITE_P(, LinuxMachinesTest, testing::ValuesIn(kMachines),
                         [](const auto& info) { return std::string(info.param.test); });

}  // namespace
}  // namespace norvik::qel
