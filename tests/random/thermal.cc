// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thermal family, with an AIDL service, a HIDL service, or both.
#include <stdio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <tuple>

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
// "skin" is no type.
const std::map<std::string, int> kTypes = {
    {"CPU", 0}, {"SKIN", 3}, {"BCL_CURRENT", 7}, {"skin", -1}};
constexpr int kIds = 3;  // of each type
constexpr int kSpare = 9;
// Ticks after which the attempts may have ended: five, and ten from the last of these on.
constexpr size_t kReconnectTicks = 13;
constexpr size_t kRestoreTicks = 9;

int IdOf(int type, int number) {
  return 10 * (type + 1) + number;
}
int TypeOf(int id) {
  return id / 10 - 1;
}

void OnSeverity(int severity, void* cookie) {
  static_cast<Client*>(cookie)->Hear(severity);
}

struct Registration {
  std::string name;
  Client* client;
  bool operator==(const Registration&) const = default;
};

class Thermals : public Family {
 public:
  Thermals() {
    phone_.Declare(ThermalPath::kHidl);
    Begin();
  }

  void Finish() override {
    End(/*busy=*/true);
    DeliverDeaths();
    for (const ThermalPath path : kPaths) phone_.Kill(path);
    Settle();
  }

 private:
  void Begin() {
    for (const auto& [name, type] : kTypes) {
      workers_[type] = workers_of_all_.emplace_back(std::make_unique<Worker>(Fold::kOldest)).get();
      runs_[type].clear();
    }
    registered_.clear();
    waiting_.clear();
    limits_.clear();
    types_before_ = 0;
    gave_up_ = refused_ = false;
    InitThermalInfo(&handle_);
    ExpectTrue(handle_ != nullptr, "no handle");
  }

  void End(bool busy) {
    for (auto& [type, worker] : workers_) worker->Release();
    Settle();
    for (const auto& client : clients_) client->Check(ever_);
    const auto deinit = [this] {
      if (handle_ == nullptr) return;
      DeinitThermalInfo(&handle_);
      ExpectTrue(handle_ == nullptr, "the handle is not null");
      for (const auto& client : clients_) client->Close();
    };
    const auto change = [this](int i) {
      phone_.SetSeverity("skin", static_cast<ThrottlingSeverity>(100 + i));
    };
    for (int i = 1; i <= 5; ++i) ever_.insert(100 + i);
    if (busy) {
      Burst(5, change, deinit);
    } else {
      deinit();
    }
    Settle();
    ExpectNoThreads({"thermal_callback", "thermal_reconnect", "thermal_restore"});
    ExpectEqual(PausingWorkers(), size_t{0}, "the number of workers that pause");
    ExpectTrue(faulty() || Callbacks() <= stray_, "a service keeps a callback");
    stray_ = Callbacks();
  }

  bool alive() const { return alive_[0] || alive_[1]; }
  // The library can reach a service and knows whether one has died.
  bool certain() const { return !faulty() && !deaths_held(); }
  size_t Callbacks() const {
    return phone_.callback_count(ThermalPath::kAidl) + phone_.callback_count(ThermalPath::kHidl);
  }

  const simulated::Thermal::Temperature* Find(int type, const std::string& name) {
    temperatures_ = phone_.data().temperatures;
    const auto found =
        std::find_if(temperatures_.begin(), temperatures_.end(), [&](const auto& temperature) {
          return static_cast<int>(temperature.type) == type && temperature.name == name;
        });
    return found != temperatures_.end() ? &*found : nullptr;
  }

  void Act(const Step& step) override {
    const std::string& verb = step[0];
    if (verb == "register") return Register(step);
    if (verb == "deregister") return Deregister(step);
    if (verb == "severity") return SetSeverity(step[1], atoi(step[2].c_str()));
    if (verb == "notify") return Notify(step[1], step[2], atoi(step[3].c_str()));
    if (verb == "limits")
      return Limits(step[1] == "current", step[2] == "cached", atoi(step[3].c_str()));
    if (verb == "bulk") return Bulk(step);
    if (verb == "hold") return workers_.at(kTypes.at(step[1]))->Hold();
    if (verb == "release") return Release(kTypes.at(step[1]));
    if (verb == "fault") return AddFault(step[1]);
    if (verb == "burst") return DoBurst(step[1], step[2], atoi(step[3].c_str()));
    if (verb == "renew") {
      End(/*busy=*/false);
      return Begin();
    }
    const size_t path = step[1] == "aidl" ? 0 : 1;
    if (verb == "start" && alive_[path]) return;
    if (verb != "start") {
      stray_ = std::min(stray_, phone_.callback_count(kPaths[1 - path]));
      ticks_ = 0;
      clean_ = pausing_before() == 0 && !deaths_held();
    }
    alive_[path] = verb != "kill";
    if (verb == "restart") return Restart([&] { phone_.Start(kPaths[path]); });
    alive_[path] ? phone_.Start(kPaths[path]) : phone_.Kill(kPaths[path]);
  }

  void Register(const Step& step) {
    const int type = kTypes.at(step[1]);
    const std::string& name = step[2];
    const int id = IdOf(type, atoi(step[3].c_str()));
    clients_.push_back(std::make_unique<Client>("client " + std::to_string(id) + " of " + name,
                                                *workers_.at(type)));
    Client* const client = clients_.back().get();
    const ThermalCallbackParam param = {.id = id,
                                        .type_name = step[1].c_str(),
                                        .temperature_name = name.c_str(),
                                        .callback = OnSeverity};
    const int result = RegisterThermalCallback(handle_, &param, client);
    ExpectTrue(result == 0 || result == -EINVAL, "the result is " + std::to_string(result));
    const auto* const found = Find(type, name);
    if (alive()) {
      const bool fits = !registered_.contains(id) && found != nullptr;
      if (certain()) ExpectEqual(result, fits ? 0 : -EINVAL, "the result");
      ExpectTrue(fits || result == -EINVAL || deaths_held(), "what is not there is registered");
      gave_up_ = false;
    } else if (certain()) {
      ExpectEqual(result, 0, "the result while there is no service");
    }
    if (result != 0) return;
    if (registered_.contains(id) || !IsInDump(id)) {
      ExpectTrue(!alive() || deaths_held(), "a client is not in the dump");
      if (waiting_.empty()) {
        waiting_ticks_ = 0;
        waiting_cleanly_ = pausing_before() == 0;
      }
      waiting_[id].push_back({name, client});
      clean_ = false;  // attempts of both kinds are made by one worker
      return;
    }
    client->Join();
    registered_[id] = {name, client};
    // The others that listen to it hear it again.
    if (found != nullptr) Event(type, name, static_cast<int>(found->throttlingStatus), true);
  }

  void Deregister(const Step& step) {
    for (const auto& [name, type] : kTypes) {
      for (int i = 0; i < kIds; ++i) {
        const bool all = step[1] == "all";
        if (all || (step[1] == name && step[2] == std::to_string(i))) Deregister(IdOf(type, i));
      }
    }
  }

  void Deregister(int id) {
    // The last one of a type waits until no callback of the type is under way.
    const int type = TypeOf(id);
    if (CountOf(type) == 1 && workers_.at(type)->busy()) {
      Release(type);
      Settle();
      for (const auto& client : clients_) client->Check(ever_);
    }
    const int result = DeregisterThermalCallback(handle_, id);
    const bool known = registered_.contains(id);
    ExpectTrue(result == 0 || result == -EINVAL, "the result is " + std::to_string(result));
    if (certain()) ExpectEqual(result, known || !alive() ? 0 : -EINVAL, "the result");
    if (alive()) gave_up_ = false;
    const bool stays = IsInDump(id);
    if (certain()) ExpectEqual(stays, known && !alive(), "whether the client is still in the dump");
    if (!alive()) waiting_.erase(id);
    if (known && !stays) {
      registered_.at(id).client->Leave();
      registered_.erase(id);
      if (CountOf(type) == 0) runs_[type].clear();
    }
  }

  size_t CountOf(int type) const {
    return static_cast<size_t>(
        std::count_if(registered_.begin(), registered_.end(),
                      [=](const auto& entry) { return TypeOf(entry.first) == type; }));
  }
  size_t TypeCount() const {
    std::set<int> types;
    for (const auto& [id, registration] : registered_) types.insert(TypeOf(id));
    return types.size();
  }

  void Release(int type) {
    workers_.at(type)->Release();
    runs_[type].clear();
  }

  // A record has arrived that `certainly` reaches all that listen to it. While the worker is kept
  // the oldest of each name is what its clients hear then.
  void Event(int type, const std::string& name, int severity, bool certainly) {
    ever_.insert(severity);
    if (workers_.at(type)->folding()) severity = runs_[type].emplace(name, severity).first->second;
    for (auto& [id, registration] : registered_) {
      if (TypeOf(id) != type) continue;
      if (!certainly) registration.client->Loosen();
      if (registration.name == name && certainly) registration.client->Expect(severity);
    }
  }

  // Whether a type whose clients have to hear what the services say is registered.
  bool AreAllRegistered() const { return Callbacks() == types_before_ && stray_ == 0; }

  void ReportEvent(int type, const std::string& name, int severity) {
    ever_.insert(severity);
    if (!alive() || Callbacks() == 0 || !workers_.contains(type)) return;
    Event(type, name, severity, AreAllRegistered());
  }

  void SetSeverity(const std::string& name, int severity) {
    temperatures_ = phone_.data().temperatures;
    for (const auto& each : temperatures_) {
      if (each.name != name || static_cast<int>(each.throttlingStatus) == severity) continue;
      ReportEvent(static_cast<int>(each.type), name, severity);
    }
    phone_.SetSeverity(name, static_cast<ThrottlingSeverity>(severity));
    phone_.SetTemperature(name, static_cast<float>(severity) / 2);
  }

  // Whatever the temperatures are.
  void Notify(const std::string& type, const std::string& name, int severity) {
    ReportEvent(kTypes.at(type), name, severity);
    phone_.Notify(Record(kTypes.at(type), name, severity));
  }

  static simulated::Thermal::Temperature Record(int type, const std::string& name, int severity) {
    return {.type = static_cast<TemperatureType>(type),
            .name = name,
            .value = 0,
            .throttlingStatus = static_cast<ThrottlingSeverity>(severity)};
  }

  void Limits(bool current, bool cached, int room) {
    const auto get = [&](int* values, int* size, bool from_cache) {
      return current ? GetBatteryChargeLimitCurrent(handle_, values, size, from_cache)
                     : GetBatteryChargeLimitVoltage(handle_, values, size, from_cache);
    };
    std::array<int, 16> values;
    values.fill(-77);
    int size = room;
    const int result = get(values.data(), &size, cached);
    if (!cached) {
      if (alive()) gave_up_ = false;
      if (certain() && alive()) {
        limits_.clear();
        for (const auto& [type, name] : {std::pair(6, "AUDIO_voltage"), {7, "AUDIO_current"}}) {
          limits_[type] = static_cast<int>(Find(type, name)->throttlingStatus);
        }
      } else if (!certain()) {
        ReadLimits();  // as they were, none, or those of one type
      }
    }
    const auto found = limits_.find(current ? 7 : 6);
    const int count = found != limits_.end() ? 1 : 0;
    const bool fits = room < 0 || room >= count;
    ExpectEqual(result, fits ? 0 : -EINVAL, "the result");
    ExpectEqual(size, fits ? count : room, "the size");
    ExpectEqual(values[0], fits && count == 1 ? found->second : -77, "the first limit");
    ExpectEqual(values[1], -77, "what lies behind the limits");
  }

  void ReadLimits() {
    limits_.clear();
    for (const int type : {6, 7}) {
      std::array<int, 2> values = {};
      int size = 2;
      const auto get = type == 7 ? GetBatteryChargeLimitCurrent : GetBatteryChargeLimitVoltage;
      ExpectEqual(get(handle_, values.data(), &size, true), 0, "the result for cached limits");
      if (size > 0) limits_[type] = values[0];
    }
  }

  void Bulk(const Step& step) {
    std::set<std::string> wanted;
    std::vector<const char*> names;
    for (size_t i = 2; i < step.size(); ++i) {
      wanted.insert(step[i]);
      names.push_back(step[i].c_str());
    }
    const int room = atoi(step[1].c_str());
    std::array<thermistor, 4> out = {};
    int size = room;
    const int result = GetBulkTemperatureByNames(handle_, names.data(),
                                                 static_cast<int>(names.size()), out.data(), &size);
    if (alive()) gave_up_ = false;
    if (!certain()) return ExpectTrue(result == 0 || result == -EINVAL, "the result");
    std::vector<std::pair<std::string, float>> expected;
    for (const std::string& name : wanted) {
      temperatures_ = phone_.data().temperatures;
      for (const auto& each : temperatures_) {
        if (alive() && each.name == name) expected.emplace_back(name, each.value);
      }
    }
    const int count = static_cast<int>(expected.size());
    ExpectEqual(result, count <= room ? 0 : -EINVAL, "the result");
    ExpectEqual(size, count <= room ? count : room, "the size");
    for (int i = 0; count <= room && i < count; ++i) {
      ExpectTrue(out[i].name == expected[i].first && out[i].value == expected[i].second,
                 "the reading of " + expected[i].first);
    }
  }

  void AddFault(const std::string& operation) {
    const fake::Outcome outcome = fake::Outcome::Exception(EX_ILLEGAL_STATE, "not now");
    if (operation == "register") {
      phone_.on(ThermalOperation::kRegisterThermalChangedCallbackWithType).Then(outcome);
      phone_.on(HidlThermalOperation::kRegisterThermalChangedCallback).Then(outcome);
    } else if (operation == "unregister") {
      phone_.on(ThermalOperation::kUnregisterThermalChangedCallback).Then(outcome);
      phone_.on(HidlThermalOperation::kUnregisterThermalChangedCallback).Then(outcome);
    } else if (operation == "link") {
      phone_.on(fake::BinderFunction::kLinkToDeath).Then({.status = STATUS_DEAD_OBJECT});
    } else {
      phone_.on(ThermalOperation::kGetTemperaturesWithType).Then(outcome);
      phone_.on(HidlThermalOperation::kGetCurrentTemperatures).Then(outcome);
    }
  }

  void ClearFaults() override {
    phone_.on(fake::BinderFunction::kLinkToDeath).Clear();
    phone_.on(ThermalOperation::kRegisterThermalChangedCallbackWithType).Clear();
    phone_.on(HidlThermalOperation::kRegisterThermalChangedCallback).Clear();
    phone_.on(ThermalOperation::kUnregisterThermalChangedCallback).Clear();
    phone_.on(HidlThermalOperation::kUnregisterThermalChangedCallback).Clear();
    phone_.on(ThermalOperation::kGetTemperaturesWithType).Clear();
    phone_.on(HidlThermalOperation::kGetCurrentTemperatures).Clear();
  }

  // Notices of a temperature beside questions, dumps, and a client of another one that comes and
  // goes. The first notice is heard by all; of later ones some, in their order.
  void DoBurst(const std::string& type_name, const std::string& name, int count) {
    const int type = kTypes.at(type_name);
    for (const auto& [number, worker] : workers_) {
      if (worker->busy()) return;
    }
    if (!certain() || !alive() || !AreAllRegistered() || CountOf(type) == 0) return;
    const int first = burst_value_ + 1;
    burst_value_ += count;
    for (int value = first; value <= burst_value_; ++value) ever_.insert(value);
    const bool other_is_skin = type != 3;
    Client spare("the spare client", *workers_.at(other_is_skin ? 3 : 0));
    const ThermalCallbackParam param = {.id = kSpare,
                                        .type_name = other_is_skin ? "SKIN" : "CPU",
                                        .temperature_name = other_is_skin ? "skin" : "cpu",
                                        .callback = OnSeverity};
    Burst(
        count, [&](int i) { phone_.Notify(Record(type, name, first + i - 1)); },
        [&] {
          ExpectEqual(RegisterThermalCallback(handle_, &param, &spare), 0,
                      "the spare client's registration");
          const char* wanted = "cpu";
          thermistor out;
          int size = 1;
          ExpectEqual(GetBulkTemperatureByNames(handle_, &wanted, 1, &out, &size), 0, "the result");
          ExpectEqual(size, 1, "the number of readings");
          std::ignore = TextOf(DumpThermalInfo, handle_);
          ExpectEqual(DeregisterThermalCallback(handle_, kSpare), 0, "the spare client's leaving");
        });
    for (const auto& [id, registration] : registered_) {
      if (TypeOf(id) == type && registration.name == name) {
        CheckBurst(*registration.client, Fold::kOldest, /*before=*/first - 1, first, burst_value_);
      } else if (TypeOf(id) != (other_is_skin ? 3 : 0)) {
        ExpectTrue(registration.client->Take().empty(), "a client hears of another temperature");
      } else {
        registration.client->Take();  // what greets the spare client
      }
    }
  }

  // The clients in the dump, by id.
  std::map<int, std::string> Dump() const {
    const std::string text = TextOf(DumpThermalInfo, handle_);
    std::map<int, std::string> clients;
    std::map<int, int> limits;
    int type = -2;
    int limit_type = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      int number = 0;
      char name[64] = "";
      if (sscanf(line.c_str(), "      id: %d, temperature_name:%63s", &number, name) >= 1) {
        ExpectTrue(TypeOf(number) == type && clients.emplace(number, name).second,
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

  bool IsInDump(int id) const {
    return TextOf(DumpThermalInfo, handle_).find("      id: " + std::to_string(id) + ",") !=
           std::string::npos;
  }

  void Check(const Step& step) override {
    const bool ticked = step[0] == "tick" && pausing_before() > 0;
    if (ticked) ++ticks_;
    if (ticked) ++waiting_ticks_;
    // The service may have failed at it, or be one that has died: then they are dropped.
    if (ticked && !certain()) waiting_cleanly_ = false;
    CheckClients(ticked);
    CheckCallbacks(ticked);
    for (const auto& client : clients_) client->Check(ever_);
    types_before_ = TypeCount();
  }

  void CheckClients(bool ticked) {
    std::map<int, std::string> shown = Dump();
    std::map<int, std::string> expected;
    for (const auto& [id, registration] : registered_) expected[id] = registration.name;
    const bool must_restore =
        ticked && alive() && certain() && waiting_cleanly_ && waiting_ticks_ <= kRestoreTicks;
    for (const auto& [id, registrations] : std::exchange(waiting_, {})) {
      const auto found = shown.find(id);
      const auto chosen =
          std::find_if(registrations.begin(), registrations.end(), [&](const Registration& each) {
            return found != shown.end() && each.name == found->second;
          });
      if (!expected.contains(id) && chosen != registrations.end()) {
        // Together with others of its name, before or after these.
        const auto* const record = Find(TypeOf(id), chosen->name);
        ExpectTrue(record != nullptr, "a name that is not there is registered");
        chosen->client->Join();
        registered_[id] = *chosen;
        expected[id] = chosen->name;
        const int severity = static_cast<int>(record->throttlingStatus);
        ever_.insert(severity);
        for (auto& [other, registration] : registered_) {
          if (TypeOf(other) == TypeOf(id)) registration.client->Loosen();
        }
        chosen->client->Expect(severity);
      } else if (must_restore) {
        ExpectTrue(expected.contains(id) || registrations.size() > 1 ||
                       Find(TypeOf(id), registrations[0].name) == nullptr,
                   "client " + std::to_string(id) + " still waits");
      } else {
        waiting_[id] = registrations;
      }
    }
    std::string text;
    for (const auto& [id, name] : shown) text += " " + std::to_string(id) + ":" + name;
    ExpectTrue(shown == expected, "the dump has other clients:" + text);
  }

  void CheckCallbacks(bool ticked) {
    const size_t pausing = PausingWorkers();
    const size_t callbacks = Callbacks();
    const size_t types = TypeCount();
    ExpectTrue(pausing <= 2, "more workers pause than there are");
    if (faulty()) {
      refused_ |= callbacks < types;
      stray_ = std::max(stray_, callbacks - std::min(callbacks, types));
    }
    ExpectTrue(callbacks <= types + stray_,
               "the services keep " + std::to_string(callbacks) + " callbacks");
    if (refused_ && callbacks >= types && stray_ == 0) refused_ = false;
    if (!alive() && types > 0 && pausing == 0 && pausing_before() > 0 && ticked) {
      ExpectTrue(!clean_ || ticks_ >= kReconnectTicks, "given up too early");
      gave_up_ = true;
    }
    if (callbacks >= types && types > 0) gave_up_ = false;
    if (!alive() || deaths_held() || refused_ || gave_up_) return;
    ExpectTrue(callbacks >= types || pausing > 0,
               "a service and no attempts, but types that are not registered");
    if (ticked && !faulty()) ExpectTrue(callbacks >= types, "the pause is over: not registered");
  }

  simulated::Thermal phone_;
  std::vector<simulated::Thermal::Temperature> temperatures_;  // what Find() has looked at
  std::array<bool, 2> alive_ = {};
  std::set<int> ever_;  // all severities that were ever reported
  size_t stray_ = 0;    // callbacks that services may keep because they have failed to drop them
  int burst_value_ = 10'000;

  void* handle_ = nullptr;
  std::vector<std::unique_ptr<Worker>> workers_of_all_;  // those of handles that are gone, too
  std::map<int, Worker*> workers_;                       // by type
  std::vector<std::unique_ptr<Client>> clients_;         // those that are gone stay
  std::map<int, Registration> registered_;
  std::map<int, std::vector<Registration>> waiting_;  // more than one: the first, or a later one
  std::map<int, int> limits_;                         // as of the last question, by type
  // While a worker is kept: the oldest severity of each name.
  std::map<int, std::map<std::string, int>> runs_;
  size_t types_before_ = 0;
  size_t ticks_ = 0;  // since the last death
  bool clean_ = false;
  size_t waiting_ticks_ = 0;  // since the first one began to wait
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
      {"limits", 2, {{"current", "voltage"}, {"cached", "fresh"}, {"-1", "0", "1", "2"}}},
      {"bulk", 2, {{"1", "2", "4"}, names, names, names}},
      {"start", 4, {paths}},
      {"kill", 3, {paths}},
      {"restart", 2, {paths}},
      {"hold", 3, {{"CPU", "SKIN", "BCL_CURRENT"}}},
      {"release", 3, {{"CPU", "SKIN", "BCL_CURRENT"}}},
      {"fault", 2, {{"register", "unregister", "query", "link"}}},
      {"burst", 1, {{"SKIN"}, {"skin"}, {"2", "20"}}},
      {"burst", 1, {{"BCL_CURRENT"}, {"battery_current", "AUDIO_current"}, {"2", "20"}}},
      {"renew", 1},
  };
}

std::unique_ptr<Family> MakeThermal() {
  return std::make_unique<Thermals>();
}

}  // namespace norvik::qel::random_test
