// The files that the kernel shows of its devices.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fault.h"
#include "udev.h"

namespace norvik::qel::linux_machine {

inline constexpr int64_t kMaxInt32 = std::numeric_limits<int32_t>::max();
inline constexpr int64_t kMinInt32 = std::numeric_limits<int32_t>::min();

// The last part of a sysfs path.
std::string DeviceName(const std::string& syspath);
// The number at the end of a device's name, by which the kernel counts those of a kind; -1 when
// there is none.
int DeviceNumber(const std::string& name);

// Sets the sysfs paths of all devices of a subsystem, ordered by name; a kernel without the
// subsystem has none. 0, or an errno number when they cannot be listed.
[[nodiscard]] int ListDevices(const char* subsystem, std::vector<std::string>* syspaths);

// A device that has been listed may have vanished since: whatever has been read of it by then may
// miss a half. Adds a fault when it has.
[[nodiscard]] bool IsStillThere(const std::string& syspath, std::vector<Fault>* faults);

std::string ErrorText(int error);
bool IsPrintable(std::string_view text);
// A file's content for a message: it may be anything.
std::string Quoted(std::string_view text);
std::string InLowerCase(std::string text);

// A word of the kernel's and what it stands for.
template <typename T>
struct Word {
  std::string_view word;
  T value;
};

enum class Absence {
  kUsual,    // many drivers do without the file
  kANotice,  // a client asks for just this
};

struct Range {
  int64_t min;
  int64_t max;
};

// The files of one device. What is absent, unreadable or absurd has no value and adds a fault.
//
// libudev keeps what it has read of a device: an object of this class is good for one reading.
class DeviceFiles {
 public:
  // Nothing, and a fault, when there is no such device. The faults outlive the object.
  [[nodiscard]] static std::optional<DeviceFiles> Open(const std::string& syspath,
                                                       std::vector<Fault>* faults);

  const std::string& name() const { return name_; }

  // Whether a file has something to say, or cannot be read: it is read to find out.
  bool Has(const std::string& file);
  // Whether there is such a file. Nothing is read, for files that have the device do work.
  bool Lists(const std::string& file) const;
  // The names of all of its files, ordered; nothing is read.
  std::vector<std::string> List() const;

  std::optional<std::string_view> Text(const std::string& file, Absence absence = Absence::kUsual);
  // Text that may be shown to people as it is.
  std::optional<std::string> PrintableText(const std::string& file,
                                           Absence absence = Absence::kUsual);
  std::optional<int32_t> Number(const std::string& file, Range range,
                                Absence absence = Absence::kUsual);
  // A number with or without decimals, as the kernel writes it: no exponent, nothing infinite.
  std::optional<double> Decimal(const std::string& file, Absence absence = Absence::kUsual);

  template <typename T, size_t kSize>
  std::optional<T> OneOf(const std::string& file, const Word<T> (&words)[kSize],
                         Absence absence = Absence::kUsual) {
    const std::optional<std::string_view> text = Text(file, absence);
    if (!text) return std::nullopt;
    const auto found = std::find_if(std::begin(words), std::end(words),
                                    [&](const Word<T>& word) { return word.word == *text; });
    if (found == std::end(words)) {
      AddFault(file, Quoted(*text) + " is not a known word");
      return std::nullopt;
    }
    return found->value;
  }

  void AddFault(const std::string& file, std::string what);

 private:
  DeviceFiles(const std::string& syspath, Udev udev, UdevDevice device, std::vector<Fault>* faults);

  std::string syspath_;
  std::string name_;
  Udev udev_;  // the device's
  UdevDevice device_;
  std::vector<Fault>* faults_;
};

}  // namespace norvik::qel::linux_machine
