#include "tools/host.h"

#include <android/binder_process.h>
#include <android/log.h>

#include <utility>

namespace norvik::qel::tool {

namespace {

DeviceEvent::Kind Translate(devices::DeviceEvent::Kind kind) {
  switch (kind) {
    case devices::DeviceEvent::Kind::kStarted:
      return DeviceEvent::Kind::kServiceStarted;
    case devices::DeviceEvent::Kind::kDied:
      return DeviceEvent::Kind::kServiceDied;
    case devices::DeviceEvent::Kind::kRegistered:
      return DeviceEvent::Kind::kCallbackRegistered;
    case devices::DeviceEvent::Kind::kUnregistered:
      return DeviceEvent::Kind::kCallbackUnregistered;
    case devices::DeviceEvent::Kind::kRefused:
      return DeviceEvent::Kind::kCallRefused;
    case devices::DeviceEvent::Kind::kNotice:
      return DeviceEvent::Kind::kNotice;
  }
  return DeviceEvent::Kind::kNotice;
}

}  // namespace

void BecomeHostProcess(const DeviceSetup& setup) {
  __android_log_set_minimum_priority(setup.verbose ? ANDROID_LOG_DEBUG : ANDROID_LOG_WARN);
  ABinderProcess_startThreadPool();
}

devices::DeviceObserver Translate(DeviceObserver observer) {
  return [observer = std::move(observer)](const devices::DeviceEvent& event) {
    observer({.kind = Translate(event.kind), .service = event.service, .detail = event.detail});
  };
}

}  // namespace norvik::qel::tool
