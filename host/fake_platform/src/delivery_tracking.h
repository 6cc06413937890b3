// Keeps account of what is under way to the host process, and can stop it at a gate.
#pragma once

#include <memory>

#include "quorvel/fake/deliveries.h"

namespace norvik::qel::fake {

// To be paired, the first when a delivery is sent, the second when it has been handled or dropped.
void NoteSent();
void NoteHandled();
// Called just before a delivery runs; returns when it may.
void PassDeliveryGate(Delivery kind);

}  // namespace norvik::qel::fake
