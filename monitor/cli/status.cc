// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/device_script.h"
#include "cli/session.h"
#include "clients/inventory.h"
#include "output/printable.h"
#include "output/terminal.h"

namespace norvik::qel::monitor {

namespace {

constexpr std::chrono::seconds kPeriod(1);
constexpr size_t kHeadingLines = 2;

// Lines of the terminal below the line that names the device; no limit without a terminal.
size_t Height() {
  winsize size = {};
  const bool is_known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
  return is_known ? size.ws_row - 1u : SIZE_MAX;
}

bool IsUtf8() {
  for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* const value = getenv(name);  // NOLINT(concurrency-mt-unsafe): set by no thread
    if (value == nullptr || *value == '\0') continue;
    const std::string_view locale = value;
    return locale.find("UTF-8") != std::string_view::npos ||
           locale.find("utf8") != std::string_view::npos;
  }
  return false;
}

std::optional<double> NumberOf(const Value& value) {
  if (const int* number = std::get_if<int>(&value)) return *number;
  if (const float* number = std::get_if<float>(&value)) return *number;
  if (const bool* online = std::get_if<bool>(&value)) return *online ? 1 : 0;
  return std::nullopt;
}

// The recent values of one item.
class History {
 public:
  // Adds the item's value. True if it differs from the previous one.
  bool Add(const Item& item) {
    constexpr size_t kMost = 16;
    const bool has_changed = !text_.empty() && text_ != ValueOf(item);
    text_ = ValueOf(item);
    numbers_.push_back(NumberOf(item.value));
    if (numbers_.size() > kMost) numbers_.pop_front();
    return has_changed;
  }
  // One bar per value, scaled from the lowest to the highest. Empty if all are equal or one is
  // unknown.
  std::string Bars() const {
    static constexpr std::string_view kBlocks[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    static constexpr std::string_view kAscii[] = {"_", ".", "-", "=", "+", "*", "%", "#"};
    constexpr double kSteps = 7;
    const auto [lowest, highest] = std::minmax_element(numbers_.begin(), numbers_.end());
    if (numbers_.empty() || !*lowest || **lowest == **highest) return {};
    const auto* const bars = IsUtf8() ? kBlocks : kAscii;
    std::string text;
    for (const auto& number : numbers_) {
      text += bars[static_cast<size_t>(kSteps * (*number - **lowest) / (**highest - **lowest))];
    }
    return text;
  }

 private:
  std::string text_;
  std::deque<std::optional<double>> numbers_;
};

// The state of the services in one line: "health up, sensor up, thermal down".
std::string StateOfServices(const std::vector<ServiceState>& services) {
  std::string text;
  for (const ServiceState* const service :
       {&StateOf(kHealthService, services), &StateOf(kSensorService, services),
        &ThermalServiceOf(services)}) {
    text += (text.empty() ? "" : ", ") + std::string(service->service) +
            (service->is_found ? " up" : " down");
  }
  return text;
}

// Puts the throttled items first, the most severe and hottest at the top, and the other
// temperatures last: the screen may not show all.
void SortByUrgency(std::vector<Item>* items) {
  const auto urgency = [](const Item& item) {
    // Other units cannot be compared with degrees.
    const auto heat = item.unit == kCelsius ? NumberOf(item.value) : std::nullopt;
    return std::tuple(WorstOf(item), !item.severity.has_value(), heat);
  };
  std::stable_sort(items->begin(), items->end(),
                   [&](const Item& a, const Item& b) { return urgency(a) > urgency(b); });
}

class StatusScreen {
 public:
  StatusScreen(const Options& options, Output& output)
      : follows_(options.follow), output_(output) {}

  void Show(Inventory inventory) {
    if (inventory.items.size() + kHeadingLines >= Height()) SortByUrgency(&inventory.items);
    const Terminal terminal = StandardOutput();
    Rows rows;
    std::vector<std::string> colours;
    bool has_changed = lines_ == 0;
    for (const Item& item : inventory.items) {
      History& history = histories_[item.key];
      const bool is_new = history.Add(item);
      has_changed |= is_new;
      if (is_new || !follows_ || !has_been_shown_) output_.ShowRecord("item", ToFields(item));
      colours.emplace_back(is_new ? kBold : "").append(WorstOf(item) >= kAlarming ? kYellow : "");
      rows.push_back({(is_new ? "* " : "  ") + Printable(item.key), ShortValueOf(item)});
      if (follows_ && terminal.limit >= kNarrow) rows.back().push_back(history.Bars());
    }
    const std::string services = StateOfServices(inventory.services);
    has_changed |= services != services_;
    services_ = services;
    has_been_shown_ = true;
    const bool in_place = follows_ && terminal.is_terminal;
    if (!in_place && !has_changed) return;
    std::string text;
    // Moves the cursor to the first line of the last screen, and clears it.
    if (in_place && lines_ > 0) text = "\033[" + std::to_string(lines_) + "A\033[J";
    if (!in_place) text = lines_ > 0 ? "\n" : "";
    const std::string screen = ScreenOf(rows, colours, terminal);
    lines_ = LinesOf(screen);
    output_.Explain(text + screen);
  }

 private:
  using Rows = std::vector<std::vector<std::string>>;

  static size_t LinesOf(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  }

  static std::string ShortValueOf(const Item& item) {
    Item shown = item;
    if (item.unit == kCelsius) shown.unit = " C";
    if (item.severity == Severity::kNone) shown.severity = std::nullopt;
    return item.value == Value() && !item.remark.empty() ? item.remark : ValueOf(shown);
  }

  // Has no more lines than the terminal. `colours`: one for each row.
  std::string ScreenOf(const Rows& rows, const std::vector<std::string>& colours,
                       const Terminal& terminal) const {
    const std::string clock = TimeOfDay(std::chrono::system_clock::now()).substr(0, 8);
    std::string services = Wrapped("services: " + services_, terminal.limit, 2);
    services.pop_back();
    const bool all_up = services_.find(" down") == std::string::npos;
    std::string screen = terminal.Coloured(clock, kDim) + "\n" +
                         terminal.Coloured(services, all_up ? kBold : kYellow);
    const std::vector<std::string> table = TableRows(rows, terminal.limit);
    size_t lines = LinesOf(screen);
    for (const std::string& row : table) lines += LinesOf(row);
    const size_t height = lines < Height() ? Height() : Height() - 1;  // room for the last line
    size_t shown = 0;
    for (; shown < table.size() && LinesOf(screen) + LinesOf(table[shown]) < height; ++shown) {
      screen += "\n" + terminal.Coloured(table[shown], colours[shown]);
    }
    if (shown == table.size()) return screen;
    return screen + "\n  and " + std::to_string(table.size() - shown) + " more: quorvel list";
  }

  const bool follows_;
  Output& output_;
  std::map<std::string, History> histories_;
  std::string services_;
  size_t lines_ = 0;
  bool has_been_shown_ = false;
};

}  // namespace

int Status(const Options& options, Output& output) {
  if (options.duration && !options.follow) throw UsageError("status: --for needs --follow");
  // A notice would break a screen that is redrawn.
  Session session(options, output, {.show_events = false, .show_notices = !options.follow});
  InventoryReader reader(session);
  StatusScreen screen(options, output);
  DeviceScript script(session.device());
  const auto end = EndOf(options);
  auto wake = reader.WaitForSensors();
  auto next = Session::Clock::now();
  while (wake != Session::Wake::kStop) {
    screen.Show(reader.Read());
    if (!options.follow || next >= end) break;
    next = std::min(next + kPeriod, end);
    script.Run(session, next);
    wake = session.WaitUntil(Session::Clock::now());
  }
  return session.stopped() && !options.follow ? kExitInterrupted : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
