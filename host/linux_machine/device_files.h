// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Reading of devices' files in sysfs.
#pragma once

#include <libudev.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::qel::linux_machine {

template <auto kUnref>
struct Unref {
  template <typename T>
  void operator()(T* object) const {
    kUnref(object);
  }
};

// Owning types for libudev's objects. libudev counts references without a lock: no object may be
// shared between threads, not even the context.
using Udev = std::unique_ptr<udev, Unref<udev_unref>>;
using UdevDevice = std::unique_ptr<udev_device, Unref<udev_device_unref>>;
using UdevEnumerate = std::unique_ptr<udev_enumerate, Unref<udev_enumerate_unref>>;
using UdevMonitor = std::unique_ptr<udev_monitor, Unref<udev_monitor_unref>>;

// A file or device that is unreadable or invalid, as a message for the user.
struct Fault {
  std::string device;  // "BAT0", or the whole class: "thermal zones"
  std::string file;    // "capacity"; empty: the whole device
  std::string what;    // "\"250\" is not within 0 to 100"
};

// "BAT0/capacity: ..."
std::string NoticeOf(const Fault& fault);

inline constexpr int64_t kMaxInt32 = std::numeric_limits<int32_t>::max();
inline constexpr int64_t kMinInt32 = std::numeric_limits<int32_t>::min();

// The last part of a sysfs path.
std::string DeviceName(const std::string& syspath);
// The number at the end of a device's name, or -1. The kernel numbers the devices of a kind.
int DeviceNumber(const std::string& name);

// Stores the sysfs paths of all devices of the subsystems, ordered by name. A subsystem that the
// kernel does not have has no devices. Returns 0 or an errno number.
[[nodiscard]] int ListDevices(const std::vector<const char*>& subsystems,
                              std::vector<std::string>* syspaths);

std::string ErrorText(int error);
bool IsPrintable(std::string_view text);
// A file's content for a message: in quotes, shortened, without unprintable characters.
std::string Quoted(std::string_view text);
std::string InLowerCase(std::string text);

// A word of the kernel and its value.
template <typename T>
struct Word {
  std::string_view word;
  T value;
};

enum class Absence {
  kUsual,    // many drivers do not have the file
  kANotice,  // clients need the file: its absence is a fault
};

struct Range {
  int64_t min;
  int64_t max;
};

// The files of one device. A file that is absent, unreadable or invalid has no value. An unreadable
// or invalid one adds a fault; an absent one does with Absence::kANotice.
//
// libudev caches the files of a device: make a new object for each reading.
class DeviceFiles {
 public:
  // `device` and `faults` must outlive the object.
  DeviceFiles(const std::string& syspath, udev_device* device, std::vector<Fault>* faults)
      : syspath_(syspath), name_(DeviceName(syspath)), device_(device), faults_(faults) {}

  const std::string& name() const { return name_; }

  // Whether the file has content or is unreadable. Reads the file.
  bool Has(const std::string& file);
  // Whether the file exists. Does not read it: reading some files makes the device measure.
  bool Lists(const std::string& file) const;
  // The names of all files, ordered. Reads none of them.
  std::vector<std::string> List() const;

  std::optional<std::string_view> Text(const std::string& file, Absence absence = Absence::kUsual);
  // Text without unprintable characters.
  std::optional<std::string> PrintableText(const std::string& file,
                                           Absence absence = Absence::kUsual);
  // Text that is used as a name. An unprintable character becomes '?' and adds a fault.
  std::optional<std::string> Name(const std::string& file, Absence absence = Absence::kUsual);
  std::optional<int64_t> Integer(const std::string& file, Absence absence = Absence::kUsual);
  std::optional<int32_t> Number(const std::string& file, Range range,
                                Absence absence = Absence::kUsual);
  // A number as the kernel writes it: with or without decimals, no exponent, not infinite.
  std::optional<double> Decimal(const std::string& file, Absence absence = Absence::kUsual);

  template <typename T, size_t kSize>
  std::optional<T> OneOf(const std::string& file, const Word<T> (&words)[kSize],
                         Absence absence = Absence::kUsual) {
    const std::optional<std::string_view> text = Text(file, absence);
    if (!text) return std::nullopt;
    const auto found = std::find_if(std::begin(words), std::end(words),
                                    [&](const Word<T>& word) { return word.word == *text; });
    if (found == std::end(words)) {
      AddFault(file, "unknown value " + Quoted(*text));
      return std::nullopt;
    }
    return found->value;
  }

  void AddFault(const std::string& file, std::string what);
  // Appends to the last fault of the file.
  void AmendFault(const std::string& file, const std::string& what);

 private:
  const std::string syspath_;
  const std::string name_;
  udev_device* const device_;
  std::vector<Fault>* const faults_;
};

// Reads a device, unless it cannot be opened. If it has vanished meanwhile, returns false: the
// values read may be incomplete. That is then its only fault.
[[nodiscard]] bool ReadDevice(const std::string& syspath, std::vector<Fault>* faults,
                              const std::function<void(DeviceFiles& files)>& read);

}  // namespace norvik::qel::linux_machine
