// The pauses that the library's workers make after a failed run last until the driver ends them.
//
// Otherwise a test would depend on how fast the machine is, and wait for seconds. The program
// brings its own pthread_cond_clockwait() and clock_gettime(), which the library finds before the C
// library's: a wait of the library's for a time becomes one without, and the thread of one that has
// been ended finds its clock moved on. Nobody else's waits change.
#pragma once

#include <cstddef>

namespace norvik::qel {

// How many workers are in a pause that EndPauses() has not ended.
size_t PausingWorkers();
// Lets the time of all these pauses run out. Nobody may be ending a worker meanwhile.
void EndPauses();

}  // namespace norvik::qel
