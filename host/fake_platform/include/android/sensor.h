// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the sensor functions of the library that vendor
// code links. Functions that vendor code cannot link (ASensorManager_getDefaultSensorEx, dynamic
// sensor lists, direct channels, ASensor_getReportingMode, ASensor_isWakeUpSensor) are left out.
//
// When the sensor service dies, the manager, its sensors and its queues are freed. Pointers to them
// then dangle.
#pragma once

#include <android/looper.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
  ASENSOR_TYPE_INVALID = -1,
  ASENSOR_TYPE_ACCELEROMETER = 1,
  ASENSOR_TYPE_LIGHT = 5,
  ASENSOR_TYPE_PROXIMITY = 8,
  ASENSOR_TYPE_ADDITIONAL_INFO = 33,
  ASENSOR_TYPE_HINGE_ANGLE = 36,
};

enum {
  ASENSOR_FIFO_COUNT_INVALID = -1,
  ASENSOR_DELAY_INVALID = INT32_MIN,
  ASENSOR_INVALID = -1,
};

typedef struct ASensorVector {
  float v[3];
  int8_t status;
  uint8_t reserved[3];
} ASensorVector;

#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wnested-anon-types"  // the platform's layout
#endif
typedef struct ASensorEvent {
  int32_t version;  // sizeof(ASensorEvent)
  int32_t sensor;   // the sensor's handle
  int32_t type;     // ASENSOR_TYPE_...
  int32_t reserved0;
  int64_t timestamp;  // nanoseconds
  union {
    union {
      float data[16];
      ASensorVector acceleration;
      float temperature;
      float distance;  // centimetres
      float light;     // lux
      float pressure;
      float relative_humidity;
    };
    union {
      uint64_t data[8];
      uint64_t step_counter;
    } u64;
  };
  uint32_t flags;
  int32_t reserved1[3];
} ASensorEvent;
#ifdef __clang__
#pragma clang diagnostic pop
#endif

typedef struct ASensorManager ASensorManager;
typedef struct ASensorEventQueue ASensorEventQueue;
typedef struct ASensor ASensor;
typedef ASensor const* ASensorRef;
typedef ASensorRef const* ASensorList;

// The process's manager. Waits without limit until the sensor service runs. Starts a binder thread
// if the process has none. Null if linking to the death of the service fails.
ASensorManager* ASensorManager_getInstance(void);
// The same; `packageName` is ignored.
ASensorManager* ASensorManager_getInstanceForPackage(const char* packageName);

// The number of sensors, or a negative error. The manager owns the list and the sensors.
int ASensorManager_getSensorList(ASensorManager* manager, ASensorList* list);
// Asks the service at each call. Null if the service has no sensor of that type.
ASensor const* ASensorManager_getDefaultSensor(ASensorManager* manager, int type);

// Null if `manager` or `looper` is null, or if the service refuses. `ident` is ignored.
ASensorEventQueue* ASensorManager_createEventQueue(ASensorManager* manager, ALooper* looper,
                                                   int ident, ALooper_callbackFunc callback,
                                                   void* data);
// 0, or -EINVAL if an argument is null. Aborts if called from a looper callback.
int ASensorManager_destroyEventQueue(ASensorManager* manager, ASensorEventQueue* queue);

// 0, or -EINVAL for a null queue and every other error. A null sensor crashes.
int ASensorEventQueue_registerSensor(ASensorEventQueue* queue, ASensor const* sensor,
                                     int32_t samplingPeriodUs, int64_t maxBatchReportLatencyUs);
int ASensorEventQueue_enableSensor(ASensorEventQueue* queue, ASensor const* sensor);
int ASensorEventQueue_disableSensor(ASensorEventQueue* queue, ASensor const* sensor);
int ASensorEventQueue_setEventRate(ASensorEventQueue* queue, ASensor const* sensor, int32_t usec);
// 1, 0, or -EINVAL for a null queue.
int ASensorEventQueue_hasEvents(ASensorEventQueue* queue);
// The number of events copied, 0 if there are none, or -EINVAL for a null queue. Never blocks.
ssize_t ASensorEventQueue_getEvents(ASensorEventQueue* queue, ASensorEvent* events, size_t count);
// Until enabled, events of type ASENSOR_TYPE_ADDITIONAL_INFO are dropped.
int ASensorEventQueue_requestAdditionalInfoEvents(ASensorEventQueue* queue, bool enable);

const char* ASensor_getName(ASensor const* sensor);
const char* ASensor_getVendor(ASensor const* sensor);
int ASensor_getType(ASensor const* sensor);
float ASensor_getResolution(ASensor const* sensor);
// Microseconds; ASENSOR_DELAY_INVALID for a null sensor.
int ASensor_getMinDelay(ASensor const* sensor);
int ASensor_getFifoMaxEventCount(ASensor const* sensor);
int ASensor_getFifoReservedEventCount(ASensor const* sensor);
const char* ASensor_getStringType(ASensor const* sensor);
int ASensor_getHandle(ASensor const* sensor);

#ifdef __cplusplus
}
#endif
