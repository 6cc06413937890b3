// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thermal family, with an AIDL service, a HIDL service, or both.
#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

#include "dump_text.h"
#include "family.h"
#include "pauses.h"
#include "quorvel.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel::random_test {

namespace {

using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using services::HidlThermalOperation;
using services::ThermalOperation;
using simulated::ThermalPath;

constexpr std::array kPaths = {ThermalPath::kAidl, ThermalPath::kHidl};
const Words kTypes = {"CPU", "SKIN", "BCL_CURRENT", "skin"};  // "skin" is not a type
constexpr std::array kTypeNumbers = {0, 3, 7, -1};
const Words kIds = {"0", "1", "2"};  // for each type
// The least number of ticks before both series of attempts (five quick, ten slow), or only the slow
// series, can have ended. The first slow attempt follows the last quick one without a pause.
constexpr size_t kReconnectTicks = 13;
constexpr size_t kRestoreTicks = 9;

// The id that the library gets: 10 times the index of the type, plus the id in the step.
int IdOf(const std::string& type, const std::string& id) {
  return static_cast<int>(10 * IndexOf(kTypes, type)) + std::stoi(id);
}
int TypeOf(int id) {
  return id / 10;
}
int TypeOf(const std::string& name) {
  return static_cast<int>(IndexOf(kTypes, name));
}

class Thermals : public Family {
 public:
  Thermals() : Family(Fold::kOldest, kTypes) {
    phone_.Declare(ThermalPath::kHidl);
    for (int i = 1; i <= 5; ++i) reported_.insert(100 + i);
    const Words paths = {"aidl", "hidl"};
    const Words severities = {"0", "1", "2", "6", "99", "-1"};
    const Words known = {"cpu", "skin", "battery_current", "AUDIO_current", "AUDIO_voltage"};
    const Words limits = {"battery_current", "AUDIO_current"};
    Words names = known;
    names.emplace_back("nothing");
    Add("register", 2, {{"CPU"}, {"cpu", "cpu", "skin"}, kIds}, &Thermals::Register);
    Add("register", 4, {{"SKIN"}, {"skin", "skin", "skin", "nothing"}, kIds}, &Thermals::Register);
    Add("register", 4, {{"BCL_CURRENT"}, limits, kIds}, &Thermals::Register);
    Add("register", 1, {{"skin"}, {"skin"}, kIds}, &Thermals::Register);
    Add("deregister", 4, {kTypes, kIds}, &Thermals::Deregister);
    Add("deregister", 1, {{"all"}}, &Thermals::DeregisterAll);
    Add("severity", 6, {known, severities}, &Thermals::SetSeverity);
    Add("notify", 3, {{"SKIN"}, {"skin", "nothing"}, severities}, &Thermals::Notify);
    Add("notify", 2, {{"BCL_CURRENT"}, limits, severities}, &Thermals::Notify);
    Add("limits", 2, {{"cached", "fresh"}}, &Thermals::Limits);
    Add("bulk", 2, {names, names, names}, &Thermals::Bulk);
    Add("start", 4, {paths}, &Thermals::Service);
    Add("kill", 3, {paths}, &Thermals::Service);
    Add("restart", 2, {paths}, &Thermals::Service);
    Add("deaths", 1, {{"held", "delivered"}}, &Thermals::Deaths);
    Add("renew", 1, {}, &Thermals::Renew);
    AddFault("register", {"failed"},
             {&phone_.on(ThermalOperation::kRegisterThermalChangedCallbackWithType),
              &phone_.on(HidlThermalOperation::kRegisterThermalChangedCallback)});
    AddFault("unregister", {"failed"},
             {&phone_.on(ThermalOperation::kUnregisterThermalChangedCallback),
              &phone_.on(HidlThermalOperation::kUnregisterThermalChangedCallback)});
    AddFault("query", {"failed"},
             {&phone_.on(ThermalOperation::kGetTemperaturesWithType),
              &phone_.on(HidlThermalOperation::kGetCurrentTemperatures)});
    AddFault("link", {"dead"}, {&phone_.on(fake::BinderFunction::kLinkToDeath)});
  }

 private:
  void Begin() override {
    registered_.clear();
    waiting_.clear();
    limits_.clear();
    types_before_ = 0;
    gave_up_ = refused_ = false;
    Init(InitThermalInfo, &handle_, kTypes);
  }

  void End() override {
    Deinit(DeinitThermalInfo, &handle_, kTypes,
           [this](int i) { phone_.SetSeverity("skin", static_cast<ThrottlingSeverity>(100 + i)); });
    ExpectTrue(faulty() || Callbacks() <= stray_, "a service keeps a callback");
    stray_ = Callbacks();
  }

  bool alive() const { return alive_[0] || alive_[1]; }
  // No call fails by script, and the library has received all death notifications.
  bool certain() const { return !faulty() && !deaths_held(); }
  size_t Callbacks() const {
    return phone_.callback_count(ThermalPath::kAidl) + phone_.callback_count(ThermalPath::kHidl);
  }
  // The severity of a temperature on the phone; nullopt if it does not exist.
  std::optional<int> Find(int type, const std::string& name) const {
    for (const auto& each : phone_.data().temperatures) {
      if (static_cast<int>(each.type) == kTypeNumbers[type] && each.name == name) {
        return static_cast<int>(each.throttlingStatus);
      }
    }
    return std::nullopt;
  }
  // The number of clients of each type.
  std::map<int, int> Types() const {
    std::map<int, int> types;
    for (const auto& [id, name] : registered_) ++types[TypeOf(id)];
    return types;
  }

  Client& ClientOf(int id, const std::string& name) {
    return Family::ClientOf(kTypes[TypeOf(id)], "client " + std::to_string(id) + " of " + name,
                            reported_);
  }

  void Service(const Step& step) {
    const size_t path = step[1] == "aidl" ? 0 : 1;
    const bool lived = std::exchange(alive_[path], step[0] != "kill");
    if (step[0] == "start") {
      if (!lived) phone_.Start(kPaths[path]);
      return;
    }
    stray_ = std::min(stray_, phone_.callback_count(kPaths[1 - path]));
    clean_ = pausing_before() == 0 && !deaths_held();
    if (step[0] == "kill") return phone_.Kill(kPaths[path]);
    Restart([&] { phone_.Start(kPaths[path]); });
  }

  void Register(const Step& step) {
    const int id = IdOf(step[1], step[3]);
    const std::string& name = step[2];
    const ThermalCallbackParam param = {.id = id,
                                        .type_name = step[1].c_str(),
                                        .temperature_name = name.c_str(),
                                        .callback = Client::Hear};
    const int result = RegisterThermalCallback(handle_, &param, &ClientOf(id, name));
    ExpectTrue(result == 0 || result == -EINVAL, "the result is " + std::to_string(result));
    if (alive()) {
      const bool fits = !registered_.contains(id) && Find(TypeOf(id), name);
      if (certain()) ExpectEqual(result, fits ? 0 : -EINVAL, "the result");
      ExpectTrue(fits || result == -EINVAL || deaths_held(), "what is not there is registered");
      gave_up_ = false;
    } else if (certain()) {
      ExpectEqual(result, 0, "the result while there is no service");
    }
    if (result != 0) return;
    if (!registered_.contains(id) && Dump().contains(id)) return Join(id, name);
    ExpectTrue(!alive() || deaths_held(), "a client is not in the dump");
    if (waiting_.empty()) waiting_cleanly_ = pausing_before() == 0;
    waiting_[id].insert(name);
    clean_ = false;  // the slow worker also makes attempts for waiting registrations
  }

  // A client has joined. The other clients of the temperature are called again, too.
  void Join(int id, const std::string& name) {
    registered_[id] = name;
    ClientOf(id, name).Join();
    const std::optional<int> severity = Find(TypeOf(id), name);
    ExpectTrue(severity.has_value() || !certain(), "a name that is not there is registered");
    if (severity) Event(TypeOf(id), name, *severity, true);
  }

  void DeregisterAll(const Step& step) {
    for (const std::string& type : kTypes) {
      for (const std::string& id : kIds) Deregister({step[0], type, id});
    }
  }

  void Deregister(const Step& step) {
    const int id = IdOf(step[1], step[2]);
    // Deregistering the last client of a type waits for callbacks of the type that are running.
    Worker& called_by = worker(step[1]);
    if (Types()[TypeOf(id)] == 1 && called_by.state().busy) {
      called_by.Release();
      Settle();
      CheckClients();
    }
    const int result = DeregisterThermalCallback(handle_, id);
    const bool known = registered_.contains(id);
    ExpectTrue(result == 0 || result == -EINVAL, "the result is " + std::to_string(result));
    if (certain()) ExpectEqual(result, known || !alive() ? 0 : -EINVAL, "the result");
    if (alive()) gave_up_ = false;
    const bool stays = Dump().contains(id);
    if (certain()) ExpectEqual(stays, known && !alive(), "whether the client is still in the dump");
    if (!alive()) waiting_.erase(id);
    if (!known || stays) return;
    ClientOf(id, registered_.at(id)).Leave();
    registered_.erase(id);
  }

  // A temperature report has arrived. If `certainly`, all clients of the temperature receive it.
  void Event(int type, const std::string& name, int severity, bool certainly) {
    reported_.insert(severity);
    for (const auto& [id, listened] : registered_) {
      if (TypeOf(id) != type) continue;
      if (!certainly) ClientOf(id, listened).Loosen();
      if (listened == name && certainly) ClientOf(id, listened).Expect(severity);
    }
  }

  void ReportEvent(int type, const std::string& name, int severity) {
    const size_t callbacks = Callbacks();
    // Certain if exactly the types that have clients are registered with the services.
    if (callbacks > 0) Event(type, name, severity, callbacks == types_before_ && stray_ == 0);
  }

  void SetSeverity(const Step& step) {
    const std::string& name = step[1];
    const int severity = std::stoi(step[2]);
    for (int type = 0; type < 3; ++type) {
      const std::optional<int> before = Find(type, name);
      if (before && before != severity) ReportEvent(type, name, severity);
    }
    reported_.insert(severity);
    phone_.SetSeverity(name, static_cast<ThrottlingSeverity>(severity));
    phone_.SetTemperature(name, static_cast<float>(severity) / 2);
  }

  // Sends a notification without a change of the temperature.
  void Notify(const Step& step) {
    const int type = TypeOf(step[1]);
    const int severity = std::stoi(step[3]);
    ReportEvent(type, step[2], severity);
    phone_.Notify({.type = static_cast<TemperatureType>(kTypeNumbers[type]),
                   .name = step[2],
                   .value = 0,
                   .throttlingStatus = static_cast<ThrottlingSeverity>(severity)});
  }

  void Limits(const Step& step) {
    const bool cached = step[1] == "cached";
    // The first getter queries the service. The answer contains both limits.
    std::map<int, int> limits;
    for (const int type : {6, 7}) {
      const auto get = type == 6 ? GetBatteryChargeLimitVoltage : GetBatteryChargeLimitCurrent;
      int value = 0;
      int size = 1;
      ExpectEqual(get(handle_, &value, &size, cached || type == 7), 0, "the result");
      if (size > 0) limits[type] = value;
    }
    if (!cached && alive()) gave_up_ = false;
    if (!cached && !certain()) {
      limits_ = limits;  // the old ones, none, or those of one type
    } else if (!cached && alive()) {
      limits_.clear();
      for (const auto& each : phone_.data().temperatures) {
        if (!each.name.starts_with("AUDIO")) continue;
        limits_[static_cast<int>(each.type)] = static_cast<int>(each.throttlingStatus);
      }
    }
    ExpectTrue(limits == limits_, "other limits than expected");
  }

  void Bulk(const Step& step) {
    std::array names = {step[1].c_str(), step[2].c_str(), step[3].c_str()};
    std::array<thermistor, 3> out = {};
    int size = 3;
    const int result = GetBulkTemperatureByNames(handle_, names.data(), 3, out.data(), &size);
    if (alive()) gave_up_ = false;
    if (!certain()) return ExpectTrue(result == 0 || result == -EINVAL, "the result");
    std::map<std::string, float> expected;
    for (const auto& each : phone_.data().temperatures) {
      if (alive() && IndexOf(step, each.name) < step.size()) expected[each.name] = each.value;
    }
    std::map<std::string, float> found;
    for (int i = 0; i < std::min(size, 3); ++i) found[out[i].name] = out[i].value;
    ExpectTrue(result == 0 && found == expected, "other readings than those of the phone");
  }

  // The clients in the dump, by id.
  std::map<int, std::string> Dump() const {
    std::string text = TextOf(DumpThermalInfo, handle_);
    std::map<int, std::string> clients;
    std::map<int, int> limits;
    Take(text, "ThermalInfo:\n");
    for (const Words& limit : TakeAll(text,
                                      "  bcl type = (\\d+)\n  bcl name = AUDIO_.*\n"
                                      "  bcl status = (-?\\d+)\n\n")) {
      limits[std::stoi(limit[0])] = std::stoi(limit[1]);
    }
    ExpectTrue(limits == limits_, "the dump has other limits");
    while (!text.empty()) {
      const Words type = Take(text,
                              "  audio thermal callback: .*\n"
                              "    supported_temperature_type_: (-?\\d+)\n    clients: \n");
      for (const Words& client : TakeAll(text, "      id: (\\d+), temperature_name:(.*)\n")) {
        const int id = std::stoi(client[0]);
        ExpectTrue(
            kTypeNumbers[TypeOf(id)] == std::stoi(type[0]) && clients.emplace(id, client[1]).second,
            "client " + client[0] + " is in the wrong place in the dump");
      }
    }
    return clients;
  }

  void Check(const Step& /*step*/) override {
    // Waiting registrations are dropped if the service fails or has died.
    if (ticked() && !certain()) waiting_cleanly_ = false;
    CheckRegistrations();
    CheckCallbacks();
    types_before_ = Types().size();
  }

  void CheckRegistrations() {
    const std::map<int, std::string> shown = Dump();
    std::string text;
    for (const auto& [id, name] : shown) {
      text += " " + std::to_string(id) + ":" + name;
      if (registered_.contains(id) || !waiting_[id].contains(name)) continue;
      waiting_.erase(id);
      Join(id, name);
      // Other waiting clients of the type may join before or after it.
      for (const auto& [other, listened] : registered_) {
        if (TypeOf(other) == TypeOf(id)) ClientOf(other, listened).Loosen();
      }
    }
    ExpectTrue(shown == registered_, "the dump has other clients:" + text);
    std::erase_if(waiting_, [](const auto& entry) { return entry.second.empty(); });
    if (!ticked() || !alive() || !certain() || !waiting_cleanly_ || ticks() > kRestoreTicks) {
      return;
    }
    for (const auto& [id, names] : std::exchange(waiting_, {})) {
      ExpectTrue(registered_.contains(id) || names.size() > 1 || !Find(TypeOf(id), *names.begin()),
                 "client " + std::to_string(id) + " still waits");
    }
  }

  void CheckCallbacks() {
    const size_t pausing = PausingWorkers();
    const size_t callbacks = Callbacks();
    const size_t types = Types().size();
    if (ticked() && pausing == 0) waiting_cleanly_ = false;
    ExpectTrue(pausing <= 2, "more workers pause than there are");
    if (faulty()) {
      refused_ |= callbacks < types;
      stray_ = std::max(stray_, callbacks - std::min(callbacks, types));
    }
    ExpectTrue(callbacks <= types + stray_,
               "the services keep " + std::to_string(callbacks) + " callbacks");
    if (callbacks >= types && stray_ == 0) refused_ = false;
    if (!alive() && types > 0 && pausing == 0 && ticked()) {
      ExpectTrue(!clean_ || ticks() >= kReconnectTicks, "given up too early");
      gave_up_ = true;
    }
    if (callbacks >= types && types > 0) gave_up_ = false;
    if (!alive() || deaths_held() || refused_ || gave_up_) return;
    ExpectTrue(callbacks >= types || pausing > 0,
               "a service and no attempts, but types that are not registered");
    if (ticked() && !faulty()) ExpectTrue(callbacks >= types, "the pause is over: not registered");
  }

  simulated::Thermal phone_;
  std::array<bool, 2> alive_ = {};
  std::set<int> reported_;  // all severities that were ever reported
  size_t stray_ = 0;  // callbacks that services may keep because they have failed to drop them

  void* handle_ = nullptr;
  std::map<int, std::string> registered_;
  std::map<int, std::set<std::string>> waiting_;  // by id: the names that it may register
  std::map<int, int> limits_;                     // by type, from the last query
  size_t types_before_ = 0;
  bool clean_ = false;
  bool waiting_cleanly_ = false;
  bool gave_up_ = false;
  bool refused_ = false;  // a service has refused a type that has clients
};

}  // namespace

std::unique_ptr<Family> MakeThermal() {
  return std::make_unique<Thermals>();
}

}  // namespace norvik::qel::random_test
