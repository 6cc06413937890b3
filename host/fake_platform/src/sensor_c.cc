// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The functions of <android/sensor.h>.
#include <android/log.h>
#include <android/sensor.h>

#include <cerrno>

#include "next_outcome.h"
#include "sensor_manager.h"

using norvik::qel::fake::NextOutcome;
using norvik::qel::fake::Outcome;
using norvik::qel::fake::SensorFunction;

static_assert(sizeof(ASensorEvent) == 104);
static_assert(offsetof(ASensorEvent, timestamp) == 16);
static_assert(offsetof(ASensorEvent, data) == 24);
static_assert(offsetof(ASensorEvent, flags) == 88);

namespace {

// Every refusal of the service becomes -EINVAL.
int Result(const Outcome& outcome, const ndk::ScopedAStatus& status) {
  return status.isOk() ? outcome.status : -EINVAL;
}

}  // namespace

extern "C" {

ASensorManager* ASensorManager_getInstance() {
  return NextOutcome(SensorFunction::kGetInstance).works() ? ASensorManager::Get() : nullptr;
}

ASensorManager* ASensorManager_getInstanceForPackage(const char* /*packageName*/) {
  return ASensorManager_getInstance();
}

int ASensorManager_getSensorList(ASensorManager* manager, ASensorList* list) {
  return manager != nullptr ? manager->GetSensorList(list) : -EINVAL;
}

ASensor const* ASensorManager_getDefaultSensor(ASensorManager* manager, int type) {
  if (!NextOutcome(SensorFunction::kGetDefaultSensor).works()) return nullptr;
  return manager->GetDefaultSensor(type);
}

ASensorEventQueue* ASensorManager_createEventQueue(ASensorManager* manager, ALooper* looper,
                                                   int /*ident*/, ALooper_callbackFunc callback,
                                                   void* data) {
  if (manager == nullptr || looper == nullptr) return nullptr;
  if (!NextOutcome(SensorFunction::kCreateEventQueue).works()) return nullptr;
  return manager->CreateEventQueue(callback, data);
}

int ASensorManager_destroyEventQueue(ASensorManager* manager, ASensorEventQueue* queue) {
  if (manager == nullptr || queue == nullptr) return -EINVAL;
  if (ALooper::InCallback()) {
    __android_log_assert(nullptr, "sensors", "%s: called from a looper callback", __func__);
  }
  static_cast<void>(NextOutcome(SensorFunction::kDestroyEventQueue));
  manager->DestroyEventQueue(queue);
  return 0;
}

int ASensorEventQueue_registerSensor(ASensorEventQueue* queue, ASensor const* sensor,
                                     int32_t samplingPeriodUs, int64_t maxBatchReportLatencyUs) {
  if (queue == nullptr) return -EINVAL;
  const Outcome outcome = NextOutcome(SensorFunction::kRegisterSensor);
  if (outcome.status < 0) return outcome.status;
  return Result(outcome, queue->service->enableSensor(queue->id, sensor->description.handle,
                                                      samplingPeriodUs, maxBatchReportLatencyUs));
}

int ASensorEventQueue_enableSensor(ASensorEventQueue* queue, ASensor const* sensor) {
  return ASensorEventQueue_registerSensor(queue, sensor, sensor->description.min_delay_us, 0);
}

int ASensorEventQueue_disableSensor(ASensorEventQueue* queue, ASensor const* sensor) {
  if (queue == nullptr) return -EINVAL;
  const Outcome outcome = NextOutcome(SensorFunction::kDisableSensor);
  if (outcome.status < 0) return outcome.status;
  return Result(outcome, queue->service->disableSensor(queue->id, sensor->description.handle));
}

int ASensorEventQueue_setEventRate(ASensorEventQueue* queue, ASensor const* sensor, int32_t usec) {
  return ASensorEventQueue_registerSensor(queue, sensor, usec, 0);
}

int ASensorEventQueue_hasEvents(ASensorEventQueue* queue) {
  if (queue == nullptr) return -EINVAL;
  return queue->events->empty() ? 0 : 1;
}

ssize_t ASensorEventQueue_getEvents(ASensorEventQueue* queue, ASensorEvent* events, size_t count) {
  if (queue == nullptr) return -EINVAL;
  const Outcome outcome = NextOutcome(SensorFunction::kGetEvents);
  if (outcome.status < 0) return outcome.status;
  return static_cast<ssize_t>(queue->events->Take(events, count));
}

int ASensorEventQueue_requestAdditionalInfoEvents(ASensorEventQueue* queue, bool enable) {
  if (queue == nullptr) return -EINVAL;
  queue->events->set_additional_info(enable);
  return 0;
}

const char* ASensor_getName(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.name.c_str() : nullptr;
}

const char* ASensor_getVendor(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.vendor.c_str() : nullptr;
}

int ASensor_getType(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.type : ASENSOR_TYPE_INVALID;
}

float ASensor_getResolution(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.resolution : 0;
}

int ASensor_getMinDelay(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.min_delay_us : ASENSOR_DELAY_INVALID;
}

int ASensor_getFifoMaxEventCount(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.fifo_max_events : ASENSOR_FIFO_COUNT_INVALID;
}

int ASensor_getFifoReservedEventCount(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.fifo_reserved_events : ASENSOR_FIFO_COUNT_INVALID;
}

const char* ASensor_getStringType(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.string_type.c_str() : nullptr;
}

int ASensor_getHandle(ASensor const* sensor) {
  return sensor != nullptr ? sensor->description.handle : ASENSOR_INVALID;
}

}  // extern "C"
