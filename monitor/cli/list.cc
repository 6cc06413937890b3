// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/session.h"
#include "clients/inventory.h"
#include "output/printable.h"
#include "output/terminal.h"

namespace norvik::qel::monitor {

namespace {

using Rows = std::vector<std::vector<std::string>>;

void ListNames(const Options& options, Output& output) {
  output.SetDevice("");  // no first line with the device: programs read the names
  const std::unique_ptr<Device> device = options.device->make([](const DeviceEvent&) {});
  device->Start({.verbose = options.verbose});
  for (const std::string& key : KeysOf()) {
    output.ShowRecord("name", {{"property", key}});
    output.Explain(Printable(key));
  }
}

Fields ToFields(const DevicePart& part) {
  return {{"name", part.name},
          {"kind", part.kind},
          {"value", part.value},
          {"property", part.item},
          {"remark", part.remark}};
}

std::string Joined(const std::string& first, const std::string& second) {
  return first.empty() || second.empty() ? first + second : first + "; " + second;
}

// Three cells each. On a narrow screen the second and the third one stand below the first.
std::string Listed(const Rows& rows, size_t columns) {
  if (columns >= kNarrow) return Table(rows, columns);
  std::string text;
  for (const auto& row : rows) {
    text += TableEntry(row[0], Joined(row[1], row[2]), columns);
  }
  text.pop_back();
  return text;
}

}  // namespace

int List(const Options& options, Output& output) {
  if (options.names) {
    ListNames(options, output);
    return EXIT_SUCCESS;
  }
  Session session(options, output, {.show_events = false});
  InventoryReader reader(session);
  if (reader.WaitForSensors() == Session::Wake::kStop) return kExitInterrupted;
  const Inventory inventory = reader.Read();
  const Terminal terminal = StandardOutput();
  Rows items = {{"NAME", "VALUE", "SOURCE"}};
  for (const Item& item : inventory.items) {
    items.push_back({Printable(item.key), terminal.Coloured(ValueOf(item), ColourOf(WorstOf(item))),
                     Printable(Joined(item.source, item.remark))});
    output.ShowRecord("item", ToFields(item));
  }
  Rows supplies;
  for (const DevicePart& part : inventory.supplies) {
    supplies.push_back({Printable(part.name), part.kind, Joined(part.value, part.remark)});
    output.ShowRecord("supply", ToFields(part));
  }
  output.Explain(Listed(items, terminal.limit));
  if (!supplies.empty()) output.Explain("\nPower supplies:\n" + Listed(supplies, terminal.limit));
  return session.stopped() ? kExitInterrupted : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
