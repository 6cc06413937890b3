// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "iio_channels.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <string_view>
#include <utility>

namespace norvik::qel::linux_machine {

namespace {

constexpr std::string_view kProximity = "in_proximity";
constexpr std::string_view kAngle = "in_angl";
constexpr std::string_view kHinge = "hinge";
// The name of the lid-angle sensor of Chromebooks, which has neither label nor scale.
constexpr std::string_view kLidAngle = "cros-ec-lid-angle";
// "proximity-wifi", "proximity-palmrest-left" and the like: they detect a body near an antenna or a
// palm rest, not an object in front of the device.
constexpr std::string_view kSpecialProximity = "proximity-";

// The channels of one type, without their number or with it: "in_angl", "in_angl0".
std::vector<std::string> ChannelsOf(const DeviceFiles& files, std::string_view type) {
  std::vector<std::string> channels;
  for (const std::string& file : files.List()) {
    if (!file.starts_with(type)) continue;
    const size_t end = file.find_first_not_of("0123456789", type.size());
    const std::string what = file.substr(std::min(end, file.size()));
    if (what == "_raw" || what == "_input") channels.push_back(file.substr(0, end));
  }
  std::stable_sort(channels.begin(), channels.end(),
                   [](const auto& a, const auto& b) { return DeviceNumber(a) < DeviceNumber(b); });
  return channels;
}

// The file of the channel, or else the file of all channels of its type.
std::string FileOf(const DeviceFiles& files, const std::string& channel, const char* what) {
  std::string own = channel + what;
  if (files.Lists(own)) return own;
  return channel.substr(0, channel.find_last_not_of("0123456789") + 1) + what;
}

bool HasUnit(const DeviceFiles& files, const std::string& channel) {
  return files.Lists(channel + "_input") || files.Lists(FileOf(files, channel, "_scale"));
}

std::optional<IioChannel::Kind> KindOfProximity(DeviceFiles& files, const std::string& channel) {
  // With such a level the value is not a distance: it rises with nearness.
  if (files.Lists(FileOf(files, channel, "_nearlevel"))) return IioChannel::Kind::kNearness;
  if (files.Lists(channel + "_input")) return IioChannel::Kind::kDistance;
  if (const std::string scale = FileOf(files, channel, "_scale"); files.Lists(scale)) {
    // No sensor has a resolution of a metre: this one reports whether a person is present.
    return files.Decimal(scale) == 1 ? IioChannel::Kind::kPresence : IioChannel::Kind::kDistance;
  }
  files.AddFault(channel + "_raw", "unknown unit: no nearlevel file and no scale file");
  return std::nullopt;
}

std::optional<IioChannel::Kind> KindOfAngle(DeviceFiles& files, const std::string& channel) {
  if (files.PrintableText("name") == kLidAngle) return IioChannel::Kind::kDegrees;
  const std::string own_label = channel + "_label";
  const auto label = files.PrintableText(files.Lists(own_label) ? own_label : "label");
  if (label != kHinge) return std::nullopt;
  if (HasUnit(files, channel)) return IioChannel::Kind::kAngle;
  files.AddFault(channel + "_raw", "unknown unit: no scale file");
  return std::nullopt;
}

template <typename KindOf>
void Find(const std::string& syspath, DeviceFiles& files, std::string_view type, KindOf kind_of,
          std::optional<IioChannel>* found) {
  for (const std::string& channel : ChannelsOf(files, type)) {
    if (found->has_value()) return;
    const std::optional<IioChannel::Kind> kind = kind_of(files, channel);
    if (!kind) continue;
    *found = {.kind = *kind,
              .syspath = syspath,
              .channel = channel,
              .name = files.PrintableText("name").value_or(files.name())};
  }
}

// True also for an unreadable label: it may be one of these.
bool IsForSomethingSpecial(DeviceFiles& files) {
  if (!files.Lists("label")) return false;
  const auto label = files.PrintableText("label");
  return !label || label->starts_with(kSpecialProximity);
}

void FindIn(const std::string& syspath, DeviceFiles& files, FoundChannels* found) {
  if (!IsForSomethingSpecial(files)) {
    Find(syspath, files, kProximity, KindOfProximity, &found->proximity);
  }
  Find(syspath, files, kAngle, KindOfAngle, &found->hinge);
}

// The value in the unit that the kernel's documentation defines for the type.
std::optional<double> Scaled(DeviceFiles& files, const std::string& channel) {
  if (files.Lists(channel + "_input")) {
    return files.Decimal(channel + "_input", Absence::kANotice);
  }
  const std::string offset_file = FileOf(files, channel, "_offset");
  const std::string scale_file = FileOf(files, channel, "_scale");
  const auto raw = files.Decimal(channel + "_raw", Absence::kANotice);
  const auto scale = files.Decimal(scale_file, Absence::kANotice);
  const bool has_offset = files.Lists(offset_file);
  const auto offset = has_offset ? files.Decimal(offset_file, Absence::kANotice) : 0.0;
  if (!raw || !scale || !offset) return std::nullopt;
  if (*scale == 0) {
    files.AddFault(scale_file, "invalid scale 0");
    return std::nullopt;
  }
  return (*raw + *offset) * *scale;
}

// Independent of the locale.
std::string InWords(double number, int precision) {
  std::array<char, std::numeric_limits<double>::max_exponent10 + 8> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number,
                                     std::chars_format::fixed, precision)
                           .ptr};
}

// Rounds to a tenth. The kernel truncates scales, so a 90 may arrive as 89.998, and clients, which
// receive truncated whole numbers, would see 89.
std::optional<float> Believable(DeviceFiles& files, const std::string& channel, double value,
                                double max, const char* unit) {
  const double rounded = std::round(value * 10) / 10;
  if (rounded >= 0 && rounded <= max) return static_cast<float>(rounded);
  files.AddFault(channel,
                 InWords(rounded, 1) + " " + unit + " is not within 0 to " + InWords(max, 0));
  return std::nullopt;
}

std::optional<float> MeasureNearness(DeviceFiles& files, const std::string& channel) {
  const auto raw = files.Decimal(channel + "_raw", Absence::kANotice);
  const auto level = files.Decimal(FileOf(files, channel, "_nearlevel"), Absence::kANotice);
  if (!raw || !level) return std::nullopt;
  return *raw >= *level ? kNearCentimetres : kFarCentimetres;
}

std::optional<float> MeasurePresence(DeviceFiles& files, const std::string& channel) {
  const auto raw = files.Decimal(channel + "_raw", Absence::kANotice);
  if (!raw) return std::nullopt;
  return *raw != 0 ? kNearCentimetres : kFarCentimetres;
}

std::optional<float> MeasureIn(DeviceFiles& files, const IioChannel& channel) {
  constexpr double kMostCentimetres = 10'000;  // a hundred metres
  constexpr double kMostDegrees = 360;
  const std::string& name = channel.channel;
  std::optional<double> value;
  switch (channel.kind) {
    case IioChannel::Kind::kNearness:
      return MeasureNearness(files, name);
    case IioChannel::Kind::kPresence:
      return MeasurePresence(files, name);
    case IioChannel::Kind::kDistance:
      value = Scaled(files, name);
      return value ? Believable(files, name, *value * 100, kMostCentimetres, "cm") : std::nullopt;
    case IioChannel::Kind::kAngle:
      value = Scaled(files, name);
      if (value) *value *= 180 / std::numbers::pi;
      break;
    case IioChannel::Kind::kDegrees:
      value = files.Decimal(name + "_raw", Absence::kANotice);
      break;
  }
  return value ? Believable(files, name, *value, kMostDegrees, "degrees") : std::nullopt;
}

}  // namespace

FoundChannels FindChannels(std::vector<std::string> syspaths) {
  std::stable_sort(syspaths.begin(), syspaths.end(),
                   [](const auto& a, const auto& b) { return DeviceNumber(a) < DeviceNumber(b); });
  FoundChannels found;
  std::vector<Fault> faults;
  for (const std::string& syspath : syspaths) {
    const FoundChannels before = found;
    const auto find = [&](DeviceFiles& files) { FindIn(syspath, files, &found); };
    if (!ReadDevice(syspath, &faults, find)) found = before;
  }
  found.faults = std::move(faults);
  return found;
}

std::optional<float> Measure(const IioChannel& channel, std::vector<Fault>* faults) {
  std::optional<float> value;
  const auto measure = [&](DeviceFiles& files) { value = MeasureIn(files, channel); };
  return ReadDevice(channel.syspath, faults, measure) ? value : std::nullopt;
}

}  // namespace norvik::qel::linux_machine
