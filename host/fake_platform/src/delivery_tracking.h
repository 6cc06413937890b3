// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Counts the deliveries in flight to the host process, and can stop them at a gate.
#pragma once

#include <memory>

#include "quorvel/fake/deliveries.h"

namespace norvik::qel::fake {

// A pair: NoteSent() when a delivery is sent, NoteHandled() when it has been handled or dropped.
void NoteSent();
void NoteHandled();
// Called just before a delivery runs. Returns when the delivery may run.
void PassDeliveryGate(Delivery kind);

}  // namespace norvik::qel::fake
