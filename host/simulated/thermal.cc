// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/simulated/thermal.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::simulated {

using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::TemperatureType;
using android::hardware::Status;
using services::HidlThermalOperation;
using services::ServiceEvent;
using services::ThermalOperation;

namespace {

void AddSensor(Thermal::ThermalData& data, TemperatureType type, const char* name, float value,
               float severe) {
  constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
  data.temperatures.push_back({.type = type, .name = name, .value = value});
  data.thresholds.push_back({.type = type,
                             .name = name,
                             .hotThrottlingThresholds = {kNone, severe - 10, severe - 5, severe,
                                                         severe + 5, severe + 10, severe + 20},
                             .coldThrottlingThresholds = std::vector<float>(7, kNone)});
}

template <typename Record>
Record& Named(std::vector<Record>& records, const char* kind, const std::string& name) {
  const auto found = std::find_if(records.begin(), records.end(),
                                  [&](const Record& record) { return record.name == name; });
  if (found != records.end()) return *found;
  std::string message = "no " + std::string(kind) + " \"" + name + "\"; known are";
  for (const Record& record : records) message += " \"" + record.name + "\"";
  throw std::invalid_argument(message);
}

}  // namespace

// Shared with the services, whose threads may still be inside a call when Thermal is destroyed.
struct Thermal::Phone {
  fake::Scripts<ThermalOperation> aidl_scripts;
  fake::Scripts<HidlThermalOperation> hidl_scripts;
  // Also held while the state is reported, to keep reports in order.
  std::mutex lock;
  ThermalData data QUORVEL_GUARDED_BY(lock);
  std::unique_ptr<fake::ServiceProcess> aidl_process QUORVEL_GUARDED_BY(lock);
  std::shared_ptr<AidlService> aidl QUORVEL_GUARDED_BY(lock);
  std::unique_ptr<fake::ServiceProcess> hidl_process QUORVEL_GUARDED_BY(lock);
  android::sp<HidlService> hidl QUORVEL_GUARDED_BY(lock);
};

// Every call follows the phone's script first, then does its normal work.
class Thermal::AidlService : public services::ThermalService {
 public:
  // The caller holds the phone's lock. If the HIDL service runs, it has already reported the
  // current data to the observer: starting from that data prevents a second report.
  AidlService(const std::shared_ptr<Phone>& phone, services::ServiceObserver observer)
      : ThermalService(phone->hidl != nullptr ? phone->data : ThermalData(), std::move(observer)),
        phone_(phone) {
    Report(phone_->data);
  }

  // Called before the process is killed. From now on this service takes no outcomes from the
  // scripts: they are for its successor.
  void End() { ended_ = true; }

 private:
  ndk::ScopedAStatus Permit(ThermalOperation operation) override {
    const auto outcome = phone_->aidl_scripts.on(operation).Next(&ended_);
    return outcome.works() ? ndk::ScopedAStatus::ok() : outcome.ToStatus();
  }

  const std::shared_ptr<Phone> phone_;
  std::atomic<bool> ended_{false};
};

class Thermal::HidlService : public services::HidlThermalService {
 public:
  HidlService(const std::shared_ptr<Phone>& phone, const services::ServiceObserver& observer)
      : HidlThermalService({}, WhileAlone(*phone, observer)), phone_(phone) {
    Report(phone_->data);
  }

  void End() { ended_ = true; }

 private:
  // While both services run, only the AIDL service reports to the observer. Reading phone.aidl is
  // safe: reports are made with the phone's lock held.
  static services::ServiceObserver WhileAlone(const Phone& phone,
                                              const services::ServiceObserver& observer) {
    if (observer == nullptr) return nullptr;
    return [&phone, observer](const ServiceEvent& event) {
      if (event.kind == ServiceEvent::Kind::kReported) {
        fake::AssertHeld(phone.lock);
        if (phone.aidl != nullptr) return;
      }
      observer(event);
    };
  }

  Verdict Permit(HidlThermalOperation operation) override {
    const auto outcome = phone_->hidl_scripts.on(operation).Next(&ended_);
    if (outcome.status != STATUS_OK) return {.transport = Status::fromStatusT(outcome.status)};
    return outcome.works() ? Verdict{} : Verdict::Failure(outcome.message);
  }

  const std::shared_ptr<Phone> phone_;
  std::atomic<bool> ended_{false};
};

Thermal::Thermal(services::ServiceObserver observer)
    : observer_(std::move(observer)), phone_(std::make_shared<Phone>()) {
  ThermalData& data = phone_->data;
  AddSensor(data, TemperatureType::CPU, "cpu", 40, 95);
  AddSensor(data, TemperatureType::SKIN, "skin", 30, 45);
  AddSensor(data, TemperatureType::BATTERY, "battery", 30, 50);
  AddSensor(data, TemperatureType::USB_PORT, "usb_port", 30, 60);
  AddSensor(data, TemperatureType::BCL_VOLTAGE, "battery_voltage", 3900, 3000);
  AddSensor(data, TemperatureType::BCL_CURRENT, "battery_current", 500, 6000);
  AddSensor(data, TemperatureType::BCL_PERCENTAGE, "battery_level", 50, 5);
  AddSensor(data, TemperatureType::SPEAKER, "speaker", 30, 60);
  AddSensor(data, TemperatureType::BCL_VOLTAGE, "AUDIO_voltage", 3900, 3000);
  AddSensor(data, TemperatureType::BCL_CURRENT, "AUDIO_current", 500, 6000);
  data.cooling_devices = {{.type = CoolingType::CPU, .name = "cpu"},
                          {.type = CoolingType::BATTERY, .name = "battery"},
                          {.type = CoolingType::SPEAKER, .name = "speaker"}};
  Declare(ThermalPath::kAidl);
}

Thermal::~Thermal() {
  for (const ThermalPath path : {ThermalPath::kAidl, ThermalPath::kHidl}) {
    Kill(path);
    Undeclare(path);
  }
}

void Thermal::Declare(ThermalPath path) {
  if (path == ThermalPath::kAidl) {
    fake::Declare(services::kThermalInstance);
  } else {
    fake::DeclareHidl(services::kHidlThermalInstance);
  }
}

void Thermal::Undeclare(ThermalPath path) {
  if (path == ThermalPath::kAidl) {
    fake::Undeclare(services::kThermalInstance);
  } else {
    fake::UndeclareHidl(services::kHidlThermalInstance);
  }
}

void Thermal::Start(ThermalPath path) {
  Kill(path);
  if (path == ThermalPath::kAidl) {
    StartAidl();
  } else {
    StartHidl();
  }
  Tell(ServiceEvent::Kind::kStarted, path);
}

void Thermal::StartAidl() {
  std::lock_guard<std::mutex> lock(phone_->lock);
  phone_->aidl_process = std::make_unique<fake::ServiceProcess>("thermal");
  phone_->aidl = ndk::SharedRefBase::make<AidlService>(phone_, observer_);
  phone_->aidl_process->AddService(phone_->aidl, services::kThermalInstance);
}

void Thermal::StartHidl() {
  std::lock_guard<std::mutex> lock(phone_->lock);
  phone_->hidl_process = std::make_unique<fake::ServiceProcess>("thermal");
  phone_->hidl = android::sp<HidlService>::make(phone_, observer_);
  phone_->hidl_process->AddHidlService(phone_->hidl);
}

void Thermal::Kill(ThermalPath path) {
  const bool ran = path == ThermalPath::kAidl ? KillAidl() : KillHidl();
  if (ran) Tell(ServiceEvent::Kind::kDied, path);
}

bool Thermal::KillAidl() {
  std::unique_ptr<fake::ServiceProcess> process;
  std::shared_ptr<AidlService> service;
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    process.swap(phone_->aidl_process);
    service.swap(phone_->aidl);
  }
  if (process == nullptr) return false;
  service->End();
  process->Kill();
  phone_->aidl_scripts.OpenGates();
  return true;
}

bool Thermal::KillHidl() {
  std::unique_ptr<fake::ServiceProcess> process;
  android::sp<HidlService> service;
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    process.swap(phone_->hidl_process);
    service = std::move(phone_->hidl);
  }
  if (process == nullptr) return false;
  service->End();
  process->Kill();
  phone_->hidl_scripts.OpenGates();
  return true;
}

void Thermal::Change(const std::function<void(ThermalData&)>& change) {
  std::lock_guard<std::mutex> lock(phone_->lock);
  change(phone_->data);
  if (phone_->aidl != nullptr) phone_->aidl->Report(phone_->data);
  if (phone_->hidl != nullptr) phone_->hidl->Report(phone_->data);
}

void Thermal::SetTemperature(const std::string& name, float value) {
  Change([&](ThermalData& data) { Named(data.temperatures, "temperature", name).value = value; });
}

void Thermal::SetSeverity(const std::string& name, ThrottlingSeverity severity) {
  Change([&](ThermalData& data) {
    Named(data.temperatures, "temperature", name).throttlingStatus = severity;
  });
}

void Thermal::SetCooling(const std::string& name, int64_t value) {
  Change([&](ThermalData& data) {
    Named(data.cooling_devices, "cooling device", name).value = value;
  });
}

void Thermal::Notify(const Temperature& temperature) {
  std::lock_guard<std::mutex> lock(phone_->lock);
  if (phone_->aidl != nullptr) phone_->aidl->Notify(temperature);
  if (phone_->hidl != nullptr) phone_->hidl->Notify(temperature);
}

Thermal::ThermalData Thermal::data() const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  return phone_->data;
}

size_t Thermal::callback_count(ThermalPath path) const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  if (path == ThermalPath::kAidl)
    return phone_->aidl != nullptr ? phone_->aidl->callback_count() : 0;
  return phone_->hidl != nullptr ? phone_->hidl->callback_count() : 0;
}

size_t Thermal::cooling_callback_count() const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  return phone_->aidl != nullptr ? phone_->aidl->cooling_callback_count() : 0;
}

fake::Script& Thermal::on(ThermalOperation operation) {
  return phone_->aidl_scripts.on(operation);
}

fake::Script& Thermal::on(HidlThermalOperation operation) {
  return phone_->hidl_scripts.on(operation);
}

void Thermal::Tell(ServiceEvent::Kind kind, ThermalPath path) const {
  if (observer_ == nullptr) return;
  observer_({.kind = kind, .service = path == ThermalPath::kAidl ? "thermal" : "thermal (HIDL)"});
}

}  // namespace norvik::qel::simulated
