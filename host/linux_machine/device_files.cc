// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "device_files.h"

#include <errno.h>
#include <unistd.h>

#include <charconv>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace norvik::qel::linux_machine {

namespace {

// ENODATA: the file exists, but the driver has no value for it.
bool IsAbsence(int error) {
  return error == ENOENT || error == ENODATA;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

std::string NoticeOf(const Fault& fault) {
  std::string notice = fault.device;
  if (!fault.file.empty()) notice += "/" + fault.file;
  return notice + ": " + fault.what;
}

std::string DeviceName(const std::string& syspath) {
  return syspath.substr(syspath.rfind('/') + 1);
}

int DeviceNumber(const std::string& name) {
  const auto digits = std::find_if_not(name.rbegin(), name.rend(), IsDigit) - name.rbegin();
  const char* const end = name.data() + name.size();
  int number = -1;
  std::from_chars(end - digits, end, number);
  return number;
}

int ListDevices(const std::vector<const char*>& subsystems, std::vector<std::string>* syspaths) {
  const Udev udev(udev_new());
  if (udev == nullptr) return errno;
  const UdevEnumerate enumerate(udev_enumerate_new(udev.get()));
  if (enumerate == nullptr) return errno;
  int result = 0;
  for (const char* const subsystem : subsystems) {
    if (result < 0) break;
    result = udev_enumerate_add_match_subsystem(enumerate.get(), subsystem);
  }
  if (result >= 0) result = udev_enumerate_scan_devices(enumerate.get());
  if (result < 0) return -result;
  syspaths->clear();
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate.get())) {
    syspaths->emplace_back(udev_list_entry_get_name(entry));
  }
  std::sort(syspaths->begin(), syspaths->end(), [](const auto& a, const auto& b) {
    return std::pair(DeviceName(a), a) < std::pair(DeviceName(b), b);
  });
  return 0;
}

std::string ErrorText(int error) {
  return std::system_category().message(error);
}

bool IsPrintable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

std::string Quoted(std::string_view text) {
  constexpr size_t kLongest = 40;
  std::string quoted = "\"";
  for (const char c : text.substr(0, kLongest)) quoted += IsPrintable({&c, 1}) ? c : '?';
  quoted += text.size() > kLongest ? "...\"" : "\"";
  return quoted;
}

std::string InLowerCase(std::string text) {
  // Independent of the locale: names are ASCII.
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool DeviceFiles::Has(const std::string& file) {
  return udev_device_get_sysattr_value(device_, file.c_str()) != nullptr || !IsAbsence(errno);
}

bool DeviceFiles::Lists(const std::string& file) const {
  return access((syspath_ + "/" + file).c_str(), F_OK) == 0;
}

std::vector<std::string> DeviceFiles::List() const {
  std::vector<std::string> files;
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_device_get_sysattr_list_entry(device_)) {
    files.emplace_back(udev_list_entry_get_name(entry));
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::optional<std::string_view> DeviceFiles::Text(const std::string& file, Absence absence) {
  const char* text = udev_device_get_sysattr_value(device_, file.c_str());
  if (text == nullptr) {
    const int error = errno;
    if (!IsAbsence(error)) {
      AddFault(file, "cannot be read: " + ErrorText(error));
    } else if (absence == Absence::kANotice) {
      AddFault(file, error == ENODATA ? "has no data" : "missing");
    }
    return std::nullopt;
  }
  if (*text == '\0') {
    AddFault(file, "empty");
    return std::nullopt;
  }
  return text;
}

std::optional<std::string> DeviceFiles::PrintableText(const std::string& file, Absence absence) {
  const std::optional<std::string_view> text = Text(file, absence);
  if (!text) return std::nullopt;
  if (IsPrintable(*text)) return std::string(*text);
  AddFault(file, Quoted(*text) + " has unprintable characters");
  return std::nullopt;
}

std::optional<std::string> DeviceFiles::Name(const std::string& file, Absence absence) {
  const std::optional<std::string_view> text = Text(file, absence);
  if (!text) return std::nullopt;
  std::string name(*text);
  for (char& c : name) c = IsPrintable({&c, 1}) ? c : '?';
  if (name != *text) AddFault(file, Quoted(*text) + " has unprintable characters");
  return name;
}

std::optional<int64_t> DeviceFiles::Integer(const std::string& file, Absence absence) {
  const std::optional<std::string_view> text = Text(file, absence);
  if (!text) return std::nullopt;
  int64_t value = 0;
  const char* const end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, value);
  if (error == std::errc() && stop == end) return value;
  const bool is_number = error == std::errc::result_out_of_range && stop == end;
  AddFault(file, Quoted(*text) + (is_number ? " is too large" : " is not a number"));
  return std::nullopt;
}

std::optional<int32_t> DeviceFiles::Number(const std::string& file, Range range, Absence absence) {
  const std::optional<int64_t> value = Integer(file, absence);
  if (!value) return std::nullopt;
  if (*value < range.min || *value > range.max) {
    AddFault(file, Quoted(std::to_string(*value)) + " is not within " + std::to_string(range.min) +
                       " to " + std::to_string(range.max));
    return std::nullopt;
  }
  return static_cast<int32_t>(*value);
}

std::optional<double> DeviceFiles::Decimal(const std::string& file, Absence absence) {
  const std::optional<std::string_view> text = Text(file, absence);
  if (!text) return std::nullopt;
  // Not std::from_chars(): libc++ has it for integers only. The stream would also accept blanks and
  // an exponent, hence is_number.
  std::istringstream stream{std::string(*text)};
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  const bool is_number = text->find_first_not_of("-.0123456789") == std::string_view::npos;
  if (stream.fail() || stream.peek() != std::istringstream::traits_type::eof() || !is_number) {
    AddFault(file, Quoted(*text) + " is not a number");
    return std::nullopt;
  }
  return value;
}

void DeviceFiles::AddFault(const std::string& file, std::string what) {
  faults_->push_back({.device = name_, .file = file, .what = std::move(what)});
}

void DeviceFiles::AmendFault(const std::string& file, const std::string& what) {
  const auto last = std::find_if(faults_->rbegin(), faults_->rend(), [&](const Fault& fault) {
    return fault.device == name_ && fault.file == file;
  });
  if (last != faults_->rend()) last->what += what;
}

bool ReadDevice(const std::string& syspath, std::vector<Fault>* faults,
                const std::function<void(DeviceFiles& files)>& read) {
  std::vector<Fault> met;
  const auto add = [&](const std::string& what) {
    met.push_back({.device = DeviceName(syspath), .file = "", .what = what});
  };
  const Udev udev(udev_new());
  const UdevDevice device(udev_device_new_from_syspath(udev.get(), syspath.c_str()));
  if (device == nullptr) {
    add("cannot be opened: " + ErrorText(errno));
  } else {
    DeviceFiles files(syspath, device.get(), &met);
    read(files);
  }
  const bool is_there = access(syspath.c_str(), F_OK) == 0;
  if (!is_there) {
    met.clear();
    add("vanished while it was read");
  }
  faults->insert(faults->end(), met.begin(), met.end());
  return is_there;
}

}  // namespace norvik::qel::linux_machine
