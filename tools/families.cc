#include "tools/families.h"

#include "tools/commands.h"

namespace norvik::qel::tool {

std::span<const Family> Families() {
  static constexpr Family kFamilies[] = {
      {.name = "battery", .watch = WatchBattery, .get = GetBattery},
  };
  return kFamilies;
}

}  // namespace norvik::qel::tool
