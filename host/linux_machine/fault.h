// Something that could not be read or believed, for people.
#pragma once

#include <string>

namespace norvik::qel::linux_machine {

struct Fault {
  std::string device;  // "BAT0"; empty when all of the class are concerned
  std::string file;    // "capacity"; empty when the whole device is concerned
  std::string what;    // "\"250\" is not within 0 to 100"
};

// "BAT0/capacity: ..."
std::string NoticeOf(const Fault& fault);

}  // namespace norvik::qel::linux_machine
