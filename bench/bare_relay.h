#pragma once

#include <memory>

#include "bench/workers.h"

namespace norvik::qel::bench {

// A bare pair whose action asks `next`: what several threads in a row cost at least.
std::unique_ptr<Worker> MakeBareRelay(std::unique_ptr<Worker> next);

// When the action of a relay has run last.
int64_t LastRelayNs();

}  // namespace norvik::qel::bench
