// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/simulated/thermal.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/thread_annotations.h"
#include "scripted_service.h"

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
  Running<std::shared_ptr<AidlService>> aidl QUORVEL_GUARDED_BY(lock);
  Running<android::sp<HidlService>> hidl QUORVEL_GUARDED_BY(lock);
};

class Thermal::AidlService : public services::ThermalService,
                             public ScriptedService<ThermalOperation> {
 public:
  // The caller holds the phone's lock. If the HIDL service runs, it has already reported the
  // current data to the observer: starting from that data prevents a second report.
  AidlService(const std::shared_ptr<Phone>& phone, services::ServiceObserver observer)
      : ThermalService(phone->hidl.service != nullptr ? phone->data : ThermalData(),
                       std::move(observer)),
        ScriptedService(phone->aidl_scripts),
        phone_(phone) {
    Report(phone_->data);
  }

 private:
  ndk::ScopedAStatus Permit(ThermalOperation operation) override {
    return Next(operation).ToStatus();
  }

  const std::shared_ptr<Phone> phone_;
};

class Thermal::HidlService : public services::HidlThermalService,
                             public ScriptedService<HidlThermalOperation> {
 public:
  HidlService(const std::shared_ptr<Phone>& phone, const services::ServiceObserver& observer)
      : HidlThermalService({}, WhileAlone(*phone, observer)),
        ScriptedService(phone->hidl_scripts),
        phone_(phone) {
    Report(phone_->data);
  }

 private:
  // While both services run, only the AIDL service reports to the observer. Reading phone.aidl is
  // safe: reports are made with the phone's lock held.
  static services::ServiceObserver WhileAlone(const Phone& phone,
                                              const services::ServiceObserver& observer) {
    if (observer == nullptr) return nullptr;
    return [&phone, observer](const ServiceEvent& event) {
      if (event.kind == ServiceEvent::Kind::kReported) {
        fake::AssertHeld(phone.lock);
        if (phone.aidl.service != nullptr) return;
      }
      observer(event);
    };
  }

  Verdict Permit(HidlThermalOperation operation) override {
    const fake::Outcome outcome = Next(operation);
    if (outcome.status != STATUS_OK) return {.transport = Status::fromStatusT(outcome.status)};
    return outcome.works() ? Verdict{} : Verdict::Failure(outcome.message);
  }

  const std::shared_ptr<Phone> phone_;
};

Thermal::Thermal(services::ServiceObserver observer)
    : aidl_events_("thermal", observer),
      hidl_events_("thermal (HIDL)", std::move(observer)),
      phone_(std::make_shared<Phone>()) {
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
  return path == ThermalPath::kAidl ? fake::Declare(services::kThermalInstance)
                                    : fake::DeclareHidl(services::kHidlThermalInstance);
}

void Thermal::Undeclare(ThermalPath path) {
  return path == ThermalPath::kAidl ? fake::Undeclare(services::kThermalInstance)
                                    : fake::UndeclareHidl(services::kHidlThermalInstance);
}

void Thermal::Start(ThermalPath path) {
  Kill(path);
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    auto process = std::make_unique<fake::ServiceProcess>("thermal");
    if (path == ThermalPath::kAidl) {
      auto service = ndk::SharedRefBase::make<AidlService>(phone_, aidl_events_.observer());
      process->AddService(service, services::kThermalInstance);
      phone_->aidl = {std::move(process), std::move(service)};
    } else {
      auto service = android::sp<HidlService>::make(phone_, aidl_events_.observer());
      process->AddHidlService(service);
      phone_->hidl = {std::move(process), std::move(service)};
    }
  }
  events(path).Send(ServiceEvent::Kind::kStarted);
}

void Thermal::Kill(ThermalPath path) {
  Running<std::shared_ptr<AidlService>> aidl;
  Running<android::sp<HidlService>> hidl;
  {
    std::lock_guard<std::mutex> lock(phone_->lock);
    if (path == ThermalPath::kAidl) {
      std::swap(aidl, phone_->aidl);
    } else {
      std::swap(hidl, phone_->hidl);
    }
  }
  if (simulated::Kill(aidl, phone_->aidl_scripts) || simulated::Kill(hidl, phone_->hidl_scripts)) {
    events(path).Send(ServiceEvent::Kind::kDied);
  }
}

void Thermal::Change(const std::function<void(ThermalData&)>& change) {
  std::lock_guard<std::mutex> lock(phone_->lock);
  change(phone_->data);
  if (phone_->aidl.service != nullptr) phone_->aidl.service->Report(phone_->data);
  if (phone_->hidl.service != nullptr) phone_->hidl.service->Report(phone_->data);
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
  if (phone_->aidl.service != nullptr) phone_->aidl.service->Notify(temperature);
  if (phone_->hidl.service != nullptr) phone_->hidl.service->Notify(temperature);
}

Thermal::ThermalData Thermal::data() const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  return phone_->data;
}

size_t Thermal::callback_count(ThermalPath path) const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  const auto count = [](const auto& service) {
    return service != nullptr ? service->callback_count() : 0;
  };
  return path == ThermalPath::kAidl ? count(phone_->aidl.service) : count(phone_->hidl.service);
}

size_t Thermal::cooling_callback_count() const {
  std::lock_guard<std::mutex> lock(phone_->lock);
  const auto& service = phone_->aidl.service;
  return service != nullptr ? service->cooling_callback_count() : 0;
}

fake::Script& Thermal::on(ThermalOperation operation) {
  return phone_->aidl_scripts.on(operation);
}

fake::Script& Thermal::on(HidlThermalOperation operation) {
  return phone_->hidl_scripts.on(operation);
}

}  // namespace norvik::qel::simulated
