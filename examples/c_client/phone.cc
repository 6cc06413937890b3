// A host's phone: linked to a program, it runs before main() starts. On a device it is left out.
#include <quorvel/simulated/health.h>

namespace {

struct Phone {
  Phone() {
    health.SetLevel(80);
    health.Start();
  }
  norvik::qel::simulated::Health health;
} phone;

}  // namespace
