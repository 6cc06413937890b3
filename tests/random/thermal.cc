// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thermal family, with an AIDL service, a HIDL service, or both.
#include <stdio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <sstream>

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
const Words kTypes = {"CPU", "SKIN", "BCL_CURRENT", "skin"};  // the last one is no type
constexpr std::array kTypeNumbers = {0, 3, 7, -1};
constexpr int kCpu = 0;
constexpr int kSkin = 1;
const Words kHeld = {"CPU", "SKIN", "BCL_CURRENT"};
constexpr int kIds = 3;  // of each type: ten times its index, and 0 to 2
// Ticks after which the attempts may have ended: five, and ten from the last of these on.
constexpr size_t kReconnectTicks = 13;
constexpr size_t kRestoreTicks = 9;

// The index of a type.
int TypeOf(const std::string& name) {
  return static_cast<int>(std::find(kTypes.begin(), kTypes.end(), name) - kTypes.begin());
}
int TypeOf(int id) {
  return id / 10;
}

class Thermals : public Family {
 public:
  Thermals() : Family(Fold::kOldest) {
    for (int i = 1; i <= 5; ++i) reported_.insert(100 + i);
    AddFault("register", {&phone_.on(ThermalOperation::kRegisterThermalChangedCallbackWithType),
                          &phone_.on(HidlThermalOperation::kRegisterThermalChangedCallback)});
    AddFault("unregister", {&phone_.on(ThermalOperation::kUnregisterThermalChangedCallback),
                            &phone_.on(HidlThermalOperation::kUnregisterThermalChangedCallback)});
    AddFault("query", {&phone_.on(ThermalOperation::kGetTemperaturesWithType),
                       &phone_.on(HidlThermalOperation::kGetCurrentTemperatures)});
    AddFault("link", {&phone_.on(fake::BinderFunction::kLinkToDeath)});
    phone_.Declare(ThermalPath::kHidl);
    Begin();
  }

  void Finish() override {
    End();
    DeliverDeaths();
    for (const ThermalPath path : kPaths) phone_.Kill(path);
    Settle();
    CheckClients();
  }

 private:
  void Begin() {
    clients_.clear();
    registered_.clear();
    waiting_.clear();
    limits_.clear();
    types_before_ = 0;
    gave_up_ = refused_ = false;
    Init(InitThermalInfo, &handle_, kTypes);
  }

  void End() {
    Deinit(DeinitThermalInfo, &handle_, kTypes,
           [this](int i) { phone_.SetSeverity("skin", static_cast<ThrottlingSeverity>(100 + i)); });
    ExpectTrue(faulty() || Callbacks() <= stray_, "a service keeps a callback");
    stray_ = Callbacks();
  }

  bool alive() const { return alive_[0] || alive_[1]; }
  // The library can reach a service and knows whether one has died.
  bool certain() const { return !faulty() && !deaths_held(); }
  size_t Callbacks() const {
    return phone_.callback_count(ThermalPath::kAidl) + phone_.callback_count(ThermalPath::kHidl);
  }
  // The severity on the phone.
  std::optional<int> Find(int type, const std::string& name) const {
    for (const auto& each : phone_.data().temperatures) {
      if (static_cast<int>(each.type) == kTypeNumbers[type] && each.name == name) {
        return static_cast<int>(each.throttlingStatus);
      }
    }
    return std::nullopt;
  }
  size_t CountOf(int type) const {
    return static_cast<size_t>(
        std::count_if(registered_.begin(), registered_.end(),
                      [=](const auto& entry) { return TypeOf(entry.first) == type; }));
  }
  size_t TypeCount() const {
    std::set<int> types;
    for (const auto& [id, name] : registered_) types.insert(TypeOf(id));
    return types.size();
  }

  Client& ClientOf(int id, const std::string& name) {
    Client*& client = clients_[{id, name}];
    if (client == nullptr) {
      client =
          &AddClient("client " + std::to_string(id) + " of " + name, kTypes[TypeOf(id)], reported_);
    }
    return *client;
  }

  void Act(const Step& step) override {
    const std::string& verb = step[0];
    if (verb == "register") return Register(10 * TypeOf(step[1]) + atoi(step[3].c_str()), step[2]);
    if (verb == "deregister") return Deregister(step);
    if (verb == "severity") return SetSeverity(step[1], atoi(step[2].c_str()));
    if (verb == "notify") return Notify(TypeOf(step[1]), step[2], atoi(step[3].c_str()));
    if (verb == "limits") return Limits(step[1] == "cached");
    if (verb == "bulk") return Bulk({step.begin() + 1, step.end()});
    if (verb == "renew") {
      End();
      return Begin();
    }
    const size_t path = step[1] == "aidl" ? 0 : 1;
    if (verb == "start" && alive_[path]) return;
    if (verb != "start") {
      stray_ = std::min(stray_, phone_.callback_count(kPaths[1 - path]));
      clean_ = pausing_before() == 0 && !deaths_held();
    }
    alive_[path] = verb != "kill";
    if (verb == "restart") return Restart([&] { phone_.Start(kPaths[path]); });
    alive_[path] ? phone_.Start(kPaths[path]) : phone_.Kill(kPaths[path]);
  }

  int Call(int id, const std::string& name) {
    const ThermalCallbackParam param = {.id = id,
                                        .type_name = kTypes[TypeOf(id)].c_str(),
                                        .temperature_name = name.c_str(),
                                        .callback = Client::Hear};
    return RegisterThermalCallback(handle_, &param, &ClientOf(id, name));
  }

  void Register(int id, const std::string& name) {
    const int result = Call(id, name);
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
    clean_ = false;  // attempts of both kinds are made by one worker
  }

  // The others that listen to it hear it again.
  void Join(int id, const std::string& name) {
    registered_[id] = name;
    ClientOf(id, name).Join();
    const std::optional<int> severity = Find(TypeOf(id), name);
    ExpectTrue(severity.has_value() || !certain(), "a name that is not there is registered");
    if (severity) Event(TypeOf(id), name, *severity, true);
  }

  void Deregister(const Step& step) {
    for (int id = 0; id < 10 * static_cast<int>(kTypes.size()); ++id) {
      const bool named = step[1] == kTypes[TypeOf(id)] && step[2] == std::to_string(id % 10);
      if (id % 10 < kIds && (step[1] == "all" || named)) Deregister(id);
    }
  }

  void Deregister(int id) {
    // The last one of a type waits until no callback of the type is under way.
    Worker& called_by = worker(kTypes[TypeOf(id)]);
    if (CountOf(TypeOf(id)) == 1 && called_by.state().busy) {
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

  // A record has arrived that `certainly` reaches all that listen to it.
  void Event(int type, const std::string& name, int severity, bool certainly) {
    reported_.insert(severity);
    for (const auto& [id, listened] : registered_) {
      if (TypeOf(id) != type) continue;
      if (!certainly) ClientOf(id, listened).Loosen();
      if (listened == name && certainly) ClientOf(id, listened).Expect(severity);
    }
  }

  // Whether the services have exactly the types that have clients.
  bool AreAllRegistered() const { return Callbacks() == types_before_ && stray_ == 0; }

  void ReportEvent(int type, const std::string& name, int severity) {
    reported_.insert(severity);
    if (alive() && Callbacks() > 0) Event(type, name, severity, AreAllRegistered());
  }

  void SetSeverity(const std::string& name, int severity) {
    for (const int type : {kCpu, kSkin, 2}) {
      const std::optional<int> before = Find(type, name);
      if (before && before != severity) ReportEvent(type, name, severity);
    }
    reported_.insert(severity);
    phone_.SetSeverity(name, static_cast<ThrottlingSeverity>(severity));
    phone_.SetTemperature(name, static_cast<float>(severity) / 2);
  }

  // Whatever the temperatures are.
  void Notify(int type, const std::string& name, int severity) {
    ReportEvent(type, name, severity);
    phone_.Notify({.type = static_cast<TemperatureType>(kTypeNumbers[type]),
                   .name = name,
                   .value = 0,
                   .throttlingStatus = static_cast<ThrottlingSeverity>(severity)});
  }

  void Limits(bool cached) {
    // The first one asks the service, whose answer has both.
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
      limits_ = limits;  // as they were, none, or those of one type
    } else if (!cached && alive()) {
      limits_.clear();
      for (const auto& each : phone_.data().temperatures) {
        if (!each.name.starts_with("AUDIO")) continue;
        limits_[static_cast<int>(each.type)] = static_cast<int>(each.throttlingStatus);
      }
    }
    ExpectTrue(limits == limits_, "other limits than expected");
  }

  void Bulk(const Words& words) {
    std::vector<const char*> names;
    for (const std::string& name : words) names.push_back(name.c_str());
    std::array<thermistor, 3> out = {};
    int size = 3;
    const int result = GetBulkTemperatureByNames(handle_, names.data(),
                                                 static_cast<int>(names.size()), out.data(), &size);
    if (alive()) gave_up_ = false;
    if (!certain()) return ExpectTrue(result == 0 || result == -EINVAL, "the result");
    std::map<std::string, float> expected;
    for (const auto& each : phone_.data().temperatures) {
      const bool wanted = std::find(words.begin(), words.end(), each.name) != words.end();
      if (alive() && wanted) expected[each.name] = each.value;
    }
    std::map<std::string, float> found;
    for (int i = 0; i < std::min(size, 3); ++i) found[out[i].name] = out[i].value;
    ExpectTrue(result == 0 && found == expected, "other readings than those of the phone");
  }

  // The clients in the dump, by id.
  std::map<int, std::string> Dump() const {
    const std::string text = TextOf(DumpThermalInfo, handle_);
    std::map<int, std::string> clients;
    std::map<int, int> limits;
    int type = 0;
    int limit_type = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      int number = 0;
      char name[64] = "";
      if (sscanf(line.c_str(), "      id: %d, temperature_name:%63s", &number, name) >= 1) {
        ExpectTrue(kTypeNumbers[TypeOf(number)] == type && clients.emplace(number, name).second,
                   "a client is in the wrong place\n" + text);
      } else if (sscanf(line.c_str(), "    supported_temperature_type_: %d", &number) == 1) {
        type = number;
      } else if (sscanf(line.c_str(), "  bcl type = %d", &number) == 1) {
        limit_type = number;
      } else if (sscanf(line.c_str(), "  bcl status = %d", &number) == 1) {
        limits[limit_type] = number;
      } else if (!line.empty() && line != "ThermalInfo:" && line != "    clients: " &&
                 !line.starts_with("  audio thermal callback: ") &&
                 !line.starts_with("  bcl name = AUDIO_")) {
        Fail("the dump is\n" + text);
      }
    }
    ExpectTrue(limits == limits_, "the dump has other limits\n" + text);
    return clients;
  }

  void Check(const Step& /*step*/) override {
    // The service may have failed at it, or be one that has died: then they are dropped.
    if (ticked() && !certain()) waiting_cleanly_ = false;
    CheckRegistrations();
    CheckCallbacks();
    types_before_ = TypeCount();
  }

  void CheckRegistrations() {
    const std::map<int, std::string> shown = Dump();
    std::string text;
    for (const auto& [id, name] : shown) {
      text += " " + std::to_string(id) + ":" + name;
      if (registered_.contains(id) || !waiting_[id].contains(name)) continue;
      waiting_.erase(id);
      Join(id, name);
      // Together with others of its name, before or after these.
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
    const size_t types = TypeCount();
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
  std::map<std::pair<int, std::string>, Client*> clients_;  // by id and name
  std::map<int, std::string> registered_;
  std::map<int, std::set<std::string>> waiting_;  // several names: the first, or a later one
  std::map<int, int> limits_;                     // as of the last question, by type
  size_t types_before_ = 0;
  bool clean_ = false;
  bool waiting_cleanly_ = false;
  bool gave_up_ = false;
  bool refused_ = false;  // a service has refused a type that has clients
};

}  // namespace

Grammar ThermalGrammar() {
  const Words types = {"CPU", "SKIN", "SKIN", "BCL_CURRENT", "skin"};
  const Words ids = {"0", "1", "2"};
  const Words paths = {"aidl", "hidl"};
  const Words severities = {"0", "1", "2", "6", "99", "-1"};
  const Words known = {"cpu", "skin", "battery_current", "AUDIO_current", "AUDIO_voltage"};
  Words names = known;
  names.emplace_back("nothing");
  return {
      {"register", 2, {{"CPU"}, {"cpu", "cpu", "skin"}, ids}},
      {"register", 4, {{"SKIN"}, {"skin", "skin", "skin", "nothing"}, ids}},
      {"register", 4, {{"BCL_CURRENT"}, {"battery_current", "AUDIO_current"}, ids}},
      {"register", 1, {{"skin"}, {"skin"}, ids}},
      {"deregister", 4, {types, ids}},
      {"deregister", 1, {{"all"}}},
      {"severity", 6, {known, severities}},
      {"notify", 3, {{"SKIN"}, {"skin", "nothing"}, severities}},
      {"notify", 2, {{"BCL_CURRENT"}, {"battery_current", "AUDIO_current"}, severities}},
      {"limits", 2, {{"cached", "fresh"}}},
      {"bulk", 2, {names, names, names}},
      {"start", 4, {paths}},
      {"kill", 3, {paths}},
      {"restart", 2, {paths}},
      {"hold", 3, {kHeld}},
      {"release", 3, {kHeld}},
      {"fault", 2, {{"register", "unregister", "query"}, {"failed"}}},
      {"fault", 1, {{"link"}, {"dead"}}},
      {"renew", 1},
  };
}

std::unique_ptr<Family> MakeThermal() {
  return std::make_unique<Thermals>();
}

}  // namespace norvik::qel::random_test
