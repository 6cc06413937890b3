// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "sensor_manager.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>

#include <string>
#include <thread>
#include <utility>

#include "quorvel/fake/sensor_functions.h"
#include "quorvel/fake/thread_annotations.h"

using aidl::android::frameworks::sensorservice::ISensorManager;
using norvik::qel::fake::BnSensorEvents;
using norvik::qel::fake::ISensorService;
using norvik::qel::fake::SensorDescription;
using norvik::qel::fake::SensorEvents;

namespace norvik::qel::fake {

void SensorEvents::Append(const std::vector<ASensorEvent>& events) {
  std::lock_guard<std::mutex> lock(lock_);
  if (closed_) return;
  for (const ASensorEvent& event : events) {
    if (event.type == ASENSOR_TYPE_ADDITIONAL_INFO && !additional_info_) continue;
    events_.push_back(event);
  }
  if (!events_.empty()) ALooper::Get().Mark(shared_from_this());
}

void SensorEvents::Close() {
  std::lock_guard<std::mutex> lock(lock_);
  closed_ = true;
  callback_ = nullptr;
  ALooper::Get().Forget(shared_from_this());
}

size_t SensorEvents::Take(ASensorEvent* out, size_t count) {
  std::lock_guard<std::mutex> lock(lock_);
  size_t taken = 0;
  for (; taken < count && !events_.empty(); ++taken) {
    out[taken] = events_.front();
    events_.pop_front();
  }
  return taken;
}

bool SensorEvents::empty() const {
  std::lock_guard<std::mutex> lock(lock_);
  return events_.empty();
}

void SensorEvents::set_additional_info(bool wanted) {
  std::lock_guard<std::mutex> lock(lock_);
  additional_info_ = wanted;
}

void SensorEvents::Dispatch() {
  ALooper_callbackFunc callback = nullptr;
  {
    std::lock_guard<std::mutex> lock(lock_);
    callback = callback_;
  }
  if (callback == nullptr) return;
  // A queue has no descriptor.
  if (callback(/*fd=*/-1, ALOOPER_EVENT_INPUT, data_) != 0) return;
  std::lock_guard<std::mutex> lock(lock_);
  callback_ = nullptr;
}

}  // namespace norvik::qel::fake

namespace {

// The client's end of a queue. The service may still send to it when the queue is gone.
class EventSink : public BnSensorEvents {
 public:
  explicit EventSink(std::weak_ptr<SensorEvents> events) : events_(std::move(events)) {}

  ndk::ScopedAStatus onEvents(const std::vector<ASensorEvent>& events) override {
    if (const std::shared_ptr<SensorEvents> target = events_.lock()) target->Append(events);
    return ndk::ScopedAStatus::ok();
  }

 private:
  const std::weak_ptr<SensorEvents> events_;
};

// The one manager of the process. Leaked on purpose: a death notification may arrive at any time.
struct Singleton {
  // Guards no member: one thread at a time makes the manager, and waits for the service meanwhile.
  std::mutex making;  // taken before `lock`
  std::mutex lock;
  // Its address is the cookie of its link.
  std::unique_ptr<ASensorManager> manager QUORVEL_GUARDED_BY(lock);
};
Singleton& g_singleton = *new Singleton;

void ServiceDied(void* cookie) {
  std::unique_ptr<ASensorManager> gone;
  {
    std::lock_guard<std::mutex> lock(g_singleton.lock);
    if (cookie != g_singleton.manager.get()) return;
    gone = std::move(g_singleton.manager);
  }
  if (gone != nullptr) gone->DropQueues();
}

AIBinder_DeathRecipient* Recipient() {
  static AIBinder_DeathRecipient* recipient = [] {
    AIBinder_DeathRecipient* made = AIBinder_DeathRecipient_new(ServiceDied);
    AIBinder_DeathRecipient_setOnUnlinked(made, [](void* /*cookie*/) {});
    return made;
  }();
  return recipient;
}

}  // namespace

namespace norvik::qel::fake {

void BringSensorEvents(const std::vector<ASensorEvent>& events) {
  std::lock_guard<std::mutex> lock(g_singleton.lock);
  if (g_singleton.manager != nullptr) g_singleton.manager->BringToAll(events);
}

}  // namespace norvik::qel::fake

ASensorManager* ASensorManager::Get() {
  std::lock_guard<std::mutex> one_at_a_time(g_singleton.making);
  {
    std::lock_guard<std::mutex> lock(g_singleton.lock);
    if (g_singleton.manager != nullptr) return g_singleton.manager.get();
  }
  const std::string name = std::string(ISensorManager::descriptor) + "/default";
  const ndk::SpAIBinder binder(AServiceManager_waitForService(name.c_str()));
  std::shared_ptr<ISensorManager> service = ISensorManager::fromBinder(binder);
  if (service == nullptr) return nullptr;
  auto made = std::make_unique<ASensorManager>(
      std::static_pointer_cast<ISensorService>(std::move(service)));
  ASensorManager* const manager = made.get();
  if (!ABinderProcess_isThreadPoolStarted()) std::thread(ABinderProcess_joinThreadPool).detach();
  {
    std::lock_guard<std::mutex> lock(g_singleton.lock);
    g_singleton.manager = std::move(made);
  }
  // Last: the death notification may arrive at once and must find the manager.
  if (AIBinder_linkToDeath(binder.get(), Recipient(), manager) != STATUS_OK) {
    __android_log_print(ANDROID_LOG_ERROR, "sensors",
                        "linking to the death of the sensor service failed");
    ServiceDied(manager);
    return nullptr;
  }
  std::lock_guard<std::mutex> lock(g_singleton.lock);
  return g_singleton.manager.get();
}

int ASensorManager::GetSensorList(ASensorList* list) {
  std::vector<SensorDescription> descriptions;
  if (!service_->getSensorList(&descriptions).isOk()) return -EINVAL;
  auto refs = std::make_unique<std::vector<ASensorRef>>();
  std::lock_guard<std::mutex> lock(lock_);
  for (const SensorDescription& description : descriptions) {
    refs->push_back(KeepLocked(description));
  }
  const int count = static_cast<int>(refs->size());
  if (list != nullptr) *list = refs->data();
  lists_.push_back(std::move(refs));
  return count;
}

const ASensor* ASensorManager::GetDefaultSensor(int type) {
  std::optional<SensorDescription> description;
  if (!service_->getDefaultSensor(type, &description).isOk()) {
    __android_log_print(ANDROID_LOG_ERROR, "sensors",
                        "no answer from the sensor service for type %d", type);
    return nullptr;
  }
  if (!description) return nullptr;
  std::lock_guard<std::mutex> lock(lock_);
  return KeepLocked(*description);
}

const ASensor* ASensorManager::KeepLocked(const SensorDescription& description) {
  std::unique_ptr<ASensor>& sensor = sensors_[description.handle];
  if (sensor == nullptr) sensor.reset(new ASensor{description});
  return sensor.get();
}

ASensorEventQueue* ASensorManager::CreateEventQueue(ALooper_callbackFunc callback, void* data) {
  auto events = std::make_shared<SensorEvents>(callback, data);
  int64_t id = 0;
  if (!service_->createEventQueue(ndk::SharedRefBase::make<EventSink>(events), &id).isOk()) {
    return nullptr;
  }
  std::unique_ptr<ASensorEventQueue> queue(
      new ASensorEventQueue{.service = service_, .id = id, .events = std::move(events)});
  ASensorEventQueue* const made = queue.get();
  std::lock_guard<std::mutex> lock(lock_);
  queues_[made] = std::move(queue);
  return made;
}

void ASensorManager::DestroyEventQueue(ASensorEventQueue* queue) {
  std::unique_ptr<ASensorEventQueue> gone;
  {
    std::lock_guard<std::mutex> lock(lock_);
    const auto found = queues_.find(queue);
    if (found == queues_.end()) {
      __android_log_assert(nullptr, "sensors",
                           "ASensorManager_destroyEventQueue: unknown event queue");
    }
    gone = std::move(found->second);
    queues_.erase(found);
  }
  // Fails if the service has died; the queue is then gone already.
  static_cast<void>(service_->destroyEventQueue(gone->id));
  gone->events->Close();
}

void ASensorManager::BringToAll(const std::vector<ASensorEvent>& events) {
  std::lock_guard<std::mutex> lock(lock_);
  for (const auto& [address, queue] : queues_) queue->events->Append(events);
}

void ASensorManager::DropQueues() {
  std::map<ASensorEventQueue*, std::unique_ptr<ASensorEventQueue>> gone;
  {
    std::lock_guard<std::mutex> lock(lock_);
    gone.swap(queues_);
  }
  for (const auto& [address, queue] : gone) queue->events->Close();
}
