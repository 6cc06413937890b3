// Thermal random tests.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <deque>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include "dump_text.h"
#include "pauses.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/simulated/thermal.h"
#include "random_run.h"
#include "worker_model.h"

namespace norvik::qel::random_test {

namespace {

using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using Call = Calls::Call;
using services::HidlThermalOperation;
using services::ThermalOperation;
using simulated::ThermalPath;

constexpr int kPaths = 2;  // AIDL, HIDL
constexpr std::array kPathNames = {"AIDL", "HIDL"};
constexpr std::array kPathValues = {ThermalPath::kAidl, ThermalPath::kHidl};

struct TypeName {
  int number;
  const char* text;
  std::array<const char*, 3> names;  // the last one is nobody's
};
constexpr std::array kTypes = {
    TypeName{0, "CPU", {"cpu", "cpu", "Cpu"}}, TypeName{3, "SKIN", {"skin", "skin", ""}},
    TypeName{7, "BCL_CURRENT", {"battery_current", "AUDIO_current", "audio_current"}},
    TypeName{-1, "Skin", {"skin", "cpu", "no"}},  // no type at all
};
constexpr int kIds = 3;  // per type; the id of a client tells its type

struct Record {
  int type;
  std::string name;
  float value;
  int severity;
};

enum class Outcome { kWorks, kRefused, kTransport };

struct Phone {
  struct Service {
    bool alive = false;
    int generation = 0;
    std::map<int, int> callbacks;  // which callback is registered for which type
    // What the next calls come to.
    std::deque<Outcome> query, enlist, delist;
  };
  std::array<Service, kPaths> services;
  std::deque<Outcome> link;  // of the AIDL service
  std::vector<Record> records;

  std::vector<Record> OfType(int type) const {
    std::vector<Record> found;
    std::copy_if(records.begin(), records.end(), std::back_inserter(found),
                 [&](const Record& record) { return record.type == type; });
    return found;
  }
};

Outcome Next(std::deque<Outcome>& script) {
  if (script.empty()) return Outcome::kWorks;
  const Outcome outcome = script.front();
  script.pop_front();
  return outcome;
}

// The clients of one type, with a worker of their own.
struct TypeModel {
  int type;
  int callback;  // what is registered with the service
  std::map<int, std::string> clients = {};
  std::vector<Record> queue = {};

  // To be told, in any order.
  std::vector<Call> calls = {};
  bool held = false;
  // The call that is held has been one of these; the others follow it.
  std::vector<Call> rest = {};
  bool again = false;
};

// One handle, and what its clients may see of it.
class ThermalModel {
 public:
  explicit ThermalModel(Phone& phone) : phone_(phone) {}
  ThermalModel(const ThermalModel&) = delete;
  ThermalModel& operator=(const ThermalModel&) = delete;

  struct Pending {
    int type;
    std::string name;
  };
  std::vector<TypeModel> types;  // in the order of their coming
  std::map<int, Pending> pending;
  std::vector<Record> limits;
  int notices = 0;
  bool notices_held = false;
  std::set<int> hold;  // types whose next call is to be held

  RetryModel reconnect{5, [this] {
                         if (GetService()) return true;
                         if (!types.empty() && reconnect.IsLastAttempt()) restore.Start();
                         return false;
                       }};
  RetryModel restore{10, [this] {
                       if (!GetService()) return false;
                       for (const auto& [id, registration] : std::exchange(pending, {})) {
                         static_cast<void>(Add(id, registration.type, registration.name));
                       }
                       return true;
                     }};

  int Register(int id, int type, const std::string& name) {
    if (GetService()) return Add(id, type, name);
    if (pending.try_emplace(id, Pending{type, name}).second) restore.Start();
    return 0;
  }

  int Deregister(int id) {
    if (!GetService()) {
      pending.erase(id);
      return 0;
    }
    const auto found = std::find_if(types.begin(), types.end(), [&](const TypeModel& type) {
      return type.clients.contains(id);
    });
    if (found == types.end()) return -EINVAL;
    found->clients.erase(id);
    if (found->clients.empty()) {
      Delist(found->callback);
      types.erase(found);
    }
    return 0;
  }
  // Whether that client's leaving ends its type.
  TypeModel* TypeThatEndsWith(int id) {
    for (TypeModel& type : types) {
      if (type.clients.size() == 1 && type.clients.contains(id)) return &type;
    }
    return nullptr;
  }

  // Results of a fresh or a cached question for the limits of one type.
  std::vector<int> Limits(int type, bool cached) {
    if (!cached && GetService()) {
      limits.clear();
      for (const int each : {6, 7}) {
        std::vector<Record> found;
        const Outcome outcome = Query(each, found);
        if (outcome == Outcome::kTransport && path_ == 1) {
          limits.clear();  // both or nothing
          break;
        }
        for (const Record& record : found) {
          if (record.name.find("AUDIO") != std::string::npos) limits.push_back(record);
        }
      }
    }
    std::vector<int> severities;
    for (const Record& record : limits) {
      if (record.type == type) severities.push_back(record.severity);
    }
    return severities;
  }

  std::vector<std::pair<std::string, float>> Bulk(const std::set<std::string>& names) {
    std::vector<std::pair<std::string, float>> found;
    if (!GetService()) return found;
    if (!Reaches() || Next(service().query) != Outcome::kWorks) return found;
    for (const std::string& name : names) {
      for (const Record& record : phone_.records) {
        if (record.name != name) continue;
        found.emplace_back(name, record.value);
        break;
      }
    }
    return found;
  }

  // A service tells its callbacks.
  void Notify(const Record& record) {
    for (Phone::Service& each : phone_.services) {
      if (!each.alive) continue;
      for (const auto& [callback, wanted] : each.callbacks) {
        if (wanted != record.type) continue;
        for (TypeModel& type : types) {
          if (type.callback != callback) continue;
          type.queue.push_back(record);
          StartDispatch(type);
        }
      }
    }
  }

  void Kill(int path) {
    Phone::Service& killed = phone_.services[path];
    if (!killed.alive) return;
    killed.alive = false;
    killed.callbacks.clear();
    if (path_ == path && generation_ == killed.generation && watched_) ++notices;
    if (!notices_held) DeliverNotices();
  }
  void DeliverNotices() {
    for (; notices > 0; --notices) {
      died_ = true;
      reconnect.Start();
    }
  }

  void Release(TypeModel& type) {
    hold.erase(type.type);
    if (!std::exchange(type.held, false)) return;
    type.calls = std::exchange(type.rest, {});
    if (std::exchange(type.again, false)) Dispatch(type);
  }

  void End() {
    for (const TypeModel& type : types) Delist(type.callback);
    types.clear();
  }

  std::string Dump() const {
    std::string text = "ThermalInfo:\n";
    for (const Record& record : limits) {
      text += "  bcl type = " + std::to_string(record.type) + "\n  bcl name = " + record.name +
              "\n  bcl status = " + std::to_string(record.severity) + "\n\n";
    }
    for (const TypeModel& type : types) {
      text += "    supported_temperature_type_: " + std::to_string(type.type) + "\n";
      for (const auto& [id, name] : type.clients) {
        text += "      id: " + std::to_string(id) + ", temperature_name:" + name + "\n";
      }
    }
    return text;
  }

 private:
  static constexpr int kNone = -1;

  Phone::Service& service() { return phone_.services[path_]; }
  // Whether the service that the handle knows is there.
  bool Reaches() { return service().alive && service().generation == generation_; }

  bool GetService() {
    if (path_ != kNone && !died_) return true;
    for (int path = 0; path < kPaths; ++path) {
      const Phone::Service& found = phone_.services[path];
      if (!found.alive) continue;
      path_ = path;
      generation_ = found.generation;
      wrapped_.clear();
      watched_ = path == 1 || Next(phone_.link) == Outcome::kWorks;
      died_ = false;
      for (const TypeModel& type : types) Enlist(type.callback, type.type);
      return true;
    }
    return false;
  }

  Outcome Query(int type, std::vector<Record>& records) {
    if (!Reaches()) return Outcome::kTransport;
    const Outcome outcome = Next(service().query);
    if (outcome == Outcome::kWorks) records = phone_.OfType(type);
    return outcome;
  }

  // An AIDL service is registered with through a list of this handle's.
  void Enlist(int callback, int type) {
    if (path_ == 0 && wrapped_.contains(callback)) return;
    if (!Reaches() || Next(service().enlist) != Outcome::kWorks) return;
    if (!service().callbacks.try_emplace(callback, type).second) return;
    wrapped_.insert(callback);
  }
  void Delist(int callback) {
    if (path_ == 0 && !wrapped_.contains(callback)) return;
    if (!Reaches() || Next(service().delist) != Outcome::kWorks) return;
    service().callbacks.erase(callback);
    wrapped_.erase(callback);
  }

  int Add(int id, int type, const std::string& name) {
    const auto found = std::find_if(types.begin(), types.end(),
                                    [&](const TypeModel& each) { return each.type == type; });
    if (found != types.end()) return AddClient(*found, id, name);
    TypeModel fresh{.type = type, .callback = next_callback_++};
    Enlist(fresh.callback, type);
    types.push_back(std::move(fresh));
    const int result = AddClient(types.back(), id, name);
    if (result != 0) {
      Delist(types.back().callback);
      types.pop_back();
    }
    return result;
  }

  int AddClient(TypeModel& type, int id, const std::string& name) {
    if (type.clients.contains(id)) return -EINVAL;
    std::vector<Record> records;
    static_cast<void>(Query(type.type, records));
    const auto present = std::find_if(records.begin(), records.end(),
                                      [&](const Record& record) { return record.name == name; });
    if (present == records.end()) return -EINVAL;
    type.clients[id] = name;
    type.queue.push_back(*present);
    StartDispatch(type);
    return 0;
  }

  void StartDispatch(TypeModel& type) {
    if (type.held) {
      type.again = true;
    } else {
      Dispatch(type);
    }
  }

  // To each client the oldest of what has come for its temperature.
  void Dispatch(TypeModel& type) {
    std::vector<Call> due;
    for (const auto& [id, name] : type.clients) {
      for (const Record& record : type.queue) {
        if (record.name != name) continue;
        due.emplace_back(id, record.severity);
        break;
      }
    }
    type.queue.clear();
    if (!due.empty() && hold.erase(type.type) != 0) {
      type.held = true;
      type.rest = std::move(due);
      return;
    }
    type.calls.insert(type.calls.end(), due.begin(), due.end());
  }

  Phone& phone_;
  int path_ = kNone;
  int generation_ = 0;
  bool watched_ = false;
  bool died_ = false;
  std::set<int> wrapped_;
  inline static int next_callback_ = 1;
};

// A cookie is a client.
struct Client {
  Calls* calls;
  int id;
};

void OnSeverity(int severity, void* cookie) {
  const auto* client = static_cast<const Client*>(cookie);
  client->calls->Put(client->id, severity);
}

// A handle with its model and its clients.
struct Subject {
  Subject(const RandomRun& run, Phone& phone) : model(phone) {
    for (const TypeName& type : kTypes) {
      calls[type.number] = std::make_unique<Calls>(run);
      for (int i = 0; i < kIds; ++i) {
        const int id = type.number * 10 + i;
        clients[id] = {.calls = calls[type.number].get(), .id = id};
      }
    }
  }

  void* handle = nullptr;
  std::map<int, std::unique_ptr<Calls>> calls;  // by type
  std::map<int, Client> clients;                // by id
  ThermalModel model;
};

class ThermalFamily : public Family {
 public:
  explicit ThermalFamily(RandomRun& run) : run_(run) {
    device_.Declare(ThermalPath::kHidl);
    for (const auto& temperature : device_.data().temperatures) {
      phone_.records.push_back({.type = static_cast<int>(temperature.type),
                                .name = temperature.name,
                                .value = temperature.value,
                                .severity = 0});
    }
    Begin();
  }

  ~ThermalFamily() override { ClearScripts(); }

  void Step(Choices& choices) override {
    switch (choices.Pick(24)) {
      case 0:
      case 1:
      case 2:
      case 3:
        Register(choices);
        break;
      case 4:
      case 5:
        Deregister(choices);
        break;
      case 6:
      case 7:
        SetSeverity(choices);
        break;
      case 8:
      case 9:
        Notify(choices);
        break;
      case 10:
        Limits(choices);
        break;
      case 11:
        Bulk(choices);
        break;
      case 12:
      case 13:
        Start(choices);
        break;
      case 14:
        Kill(choices);
        break;
      case 15:
        Restart(choices);
        break;
      case 16:
        HoldNotices();
        break;
      case 17:
      case 18:
        Hold(choices);
        break;
      case 19:
      case 20:
        Tick(choices);
        break;
      case 21:
        AddFaults(choices);
        return;  // faults wait for the step after this one
      case 22:
        Burst(choices);
        break;
      default:
        Refusals();
        break;
    }
    if (choices.OneIn(64)) {
      End(/*busy=*/false);
      Begin();
    }
    ClearScripts();
  }

  void Finish() override {
    End(/*busy=*/true);
    for (const ThermalPath path : kPathValues) device_.Kill(path);
    Note("the end");
    run_.Settle();
  }

 private:
  void Note(std::string line) { run_.Note(std::move(line)); }
  ThermalModel& model() { return subject_->model; }

  void Begin() {
    Note("InitThermalInfo");
    // Those of handles that are gone stay, to hear what they should not.
    all_.push_back(std::make_unique<Subject>(run_, phone_));
    subject_ = all_.back().get();
    InitThermalInfo(&subject_->handle);
    Compare();
  }

  void End(bool busy) {
    ReleaseAll();
    Note(busy ? "DeinitThermalInfo, while temperatures change" : "DeinitThermalInfo");
    std::thread changes;
    if (busy) {
      changes = std::thread([this] {
        for (int i = 0; i < 5; ++i) {
          device_.SetSeverity("skin", static_cast<ThrottlingSeverity>(100 + i));
        }
      });
    }
    model().End();
    DeinitThermalInfo(&subject_->handle);
    for (auto& [type, calls] : subject_->calls) calls->Close();
    if (busy) changes.join();
    notices_.reset();
    run_.Settle();
    if (subject_->handle != nullptr) run_.Fail("the handle is not null after DeinitThermalInfo");
  }

  // The dump without addresses, and with the clients of a type in the order of their ids.
  std::string Dump() {
    std::istringstream lines(TextOf(DumpThermalInfo, subject_->handle));
    std::string text;
    std::map<int, std::string> clients;
    const auto flush = [&] {
      for (const auto& [id, line] : clients) text += line + "\n";
      clients.clear();
    };
    for (std::string line; std::getline(lines, line);) {
      int id = 0;
      if (sscanf(line.c_str(), "      id: %d", &id) == 1) {
        clients[id] = line;
        continue;
      }
      flush();
      if (line.starts_with("  audio thermal callback: 0x") || line == "    clients: ") continue;
      text += line + "\n";
    }
    flush();
    return text;
  }

  // Registrations that have waited are made in an order of the library's own.
  void AdoptOrder(const std::string& dump) {
    std::stable_sort(model().types.begin(), model().types.end(),
                     [&](const TypeModel& a, const TypeModel& b) {
                       const auto position = [&](const TypeModel& type) {
                         return dump.find("type_: " + std::to_string(type.type) + "\n");
                       };
                       return position(a) < position(b);
                     });
  }

  // With `repeats`, a client may hear once or twice what the model has it hear twice.
  void Compare(bool repeats = false) {
    run_.Settle();
    const std::string dump = Dump();
    AdoptOrder(dump);
    run_.Expect(dump, model().Dump(), "dump");
    for (const auto& [number, calls] : subject_->calls) {
      std::vector<Call> seen = calls->Take();
      std::vector<Call> expected;
      for (TypeModel& type : model().types) {
        if (type.type != number) continue;
        expected = std::exchange(type.calls, {});
        // One of those that are due has been called, and is being held.
        if (type.held && seen.size() == expected.size() + 1 &&
            std::erase(type.rest, seen.back()) == 1) {
          seen.pop_back();
        }
      }
      std::sort(seen.begin(), seen.end());
      std::sort(expected.begin(), expected.end());
      if (repeats) {
        seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
        expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
      }
      run_.Expect(seen, expected, "calls for type " + std::to_string(number));
    }
    for (int path = 0; path < kPaths; ++path) {
      run_.Expect(static_cast<int>(device_.callback_count(kPathValues[path])),
                  static_cast<int>(phone_.services[path].callbacks.size()),
                  std::string("callbacks that the service keeps, ") + kPathNames[path]);
    }
    run_.Expect(static_cast<int>(PausingWorkers()),
                (model().reconnect.pausing() ? 1 : 0) + (model().restore.pausing() ? 1 : 0),
                "workers that pause");
  }

  void Register(Choices& choices) {
    const TypeName& type = kTypes[choices.Pick(kTypes.size())];
    const int id = type.number * 10 + choices.Pick(kIds);
    const std::string name = type.names[choices.Pick(type.names.size())];
    Note("register " + std::to_string(id) + " for " + type.text + " " + name);
    const int expected = model().Register(id, type.number, name);
    const ThermalCallbackParam param = {
        .id = id, .type_name = type.text, .temperature_name = name.c_str(), .callback = OnSeverity};
    run_.Expect(RegisterThermalCallback(subject_->handle, &param, &subject_->clients.at(id)),
                expected, "result");
    Compare();
  }

  void Deregister(Choices& choices) {
    if (choices.OneIn(6)) {
      for (const TypeName& type : kTypes) {
        for (int i = 0; i < kIds; ++i) Deregister(type.number * 10 + i);
      }
      return;
    }
    const TypeName& type = kTypes[choices.Pick(kTypes.size())];
    Deregister(type.number * 10 + choices.Pick(kIds));
  }

  void Deregister(int id) {
    // The last client of a type waits for its calls.
    const TypeModel* const ends = model().TypeThatEndsWith(id);
    if (ends != nullptr && (ends->held || model().hold.contains(ends->type))) {
      ReleaseAll();
      Compare();
    }
    Note("deregister " + std::to_string(id));
    const int expected = model().Deregister(id);
    run_.Expect(DeregisterThermalCallback(subject_->handle, id), expected, "result");
    Compare();
  }

  void SetSeverity(Choices& choices) {
    constexpr std::array kNames = {"cpu", "skin", "battery_current", "AUDIO_current",
                                   "AUDIO_voltage"};
    const std::string name = kNames[choices.Pick(kNames.size())];
    constexpr std::array kSeverities = {0, 1, 2, 6, 99, -1};
    const int severity = kSeverities[choices.Pick(kSeverities.size())];
    Note("the severity of " + name + " becomes " + std::to_string(severity));
    for (Record& record : phone_.records) {
      if (record.name != name || record.severity == severity) continue;
      record.severity = severity;
      model().Notify(record);
    }
    device_.SetSeverity(name, static_cast<ThrottlingSeverity>(severity));
    if (choices.OneIn(4)) {
      const float value = static_cast<float>(choices.Pick(200)) / 2;
      Note("its value becomes " + std::to_string(value));
      for (Record& record : phone_.records) {
        if (record.name == name) record.value = value;
      }
      device_.SetTemperature(name, value);
    }
    Compare();
  }

  // Whatever the temperatures are.
  void Notify(Choices& choices) {
    const TypeName& type = kTypes[choices.Pick(kTypes.size() - 1)];
    const std::string name = type.names[choices.Pick(type.names.size())];
    const int severity = choices.Pick(7);
    Note(std::string("a notice of ") + type.text + " " + name + ": " + std::to_string(severity));
    model().Notify({.type = type.number, .name = name, .value = 0, .severity = severity});
    device_.Notify({.type = static_cast<TemperatureType>(type.number),
                    .name = name,
                    .value = 0,
                    .throttlingStatus = static_cast<ThrottlingSeverity>(severity)});
    Compare();
  }

  void Limits(Choices& choices) {
    const bool current = choices.OneIn(2);
    const bool cached = choices.OneIn(2);
    const int room = choices.Pick(4) - 1;
    Note(std::string("the limits of ") + (current ? "current" : "voltage") +
         (cached ? ", cached" : ", fresh") + ", room for " + std::to_string(room));
    const std::vector<int> expected = model().Limits(current ? 7 : 6, cached);
    std::vector<int> values(16, -77);
    int size = room;
    const int result =
        current ? GetBatteryChargeLimitCurrent(subject_->handle, values.data(), &size, cached)
                : GetBatteryChargeLimitVoltage(subject_->handle, values.data(), &size, cached);
    const bool fits = room < 0 || static_cast<size_t>(room) >= expected.size();
    run_.Expect(result, fits ? 0 : -EINVAL, "result");
    run_.Expect(size, fits ? static_cast<int>(expected.size()) : room, "size");
    std::vector<int> all(16, -77);
    if (fits) std::copy(expected.begin(), expected.end(), all.begin());
    run_.Expect(values, all, "values");
    Compare();
  }

  void Bulk(Choices& choices) {
    constexpr std::array kNames = {"cpu", "skin", "nobody", "AUDIO_current", "", "speaker"};
    const int count = 1 + choices.Pick(5);
    std::vector<const char*> names;
    std::set<std::string> wanted;
    std::string text = "the temperatures of";
    for (int i = 0; i < count; ++i) {
      names.push_back(kNames[choices.Pick(kNames.size())]);
      wanted.insert(names.back());
      text += std::string(" '") + names.back() + "'";
    }
    const int room = 1 + choices.Pick(4);
    Note(text + ", room for " + std::to_string(room));
    const auto expected = model().Bulk(wanted);
    std::array<thermistor, 4> out;
    memset(out.data(), 0x55, sizeof out);
    int size = room;
    const int result =
        GetBulkTemperatureByNames(subject_->handle, names.data(), count, out.data(), &size);
    const bool fits = expected.size() <= static_cast<size_t>(room);
    run_.Expect(result, fits ? 0 : -EINVAL, "result");
    run_.Expect(size, fits ? static_cast<int>(expected.size()) : room, "size");
    for (size_t i = 0; fits && i < expected.size(); ++i) {
      run_.Expect(std::string(out[i].name), expected[i].first, "name");
      if (out[i].value != expected[i].second) run_.Fail("another temperature");
    }
    Compare();
  }

  void Start(Choices& choices) { Start(kPathValues[choices.Pick(kPaths)]); }

  void Start(ThermalPath value) {
    const int path = value == ThermalPath::kAidl ? 0 : 1;
    Phone::Service& service = phone_.services[path];
    if (service.alive) return;
    Note(std::string("the service comes up: ") + kPathNames[path]);
    service.alive = true;
    ++service.generation;
    device_.Start(kPathValues[path]);
    Compare();
  }

  void Kill(Choices& choices) {
    const int path = choices.Pick(kPaths);
    Note(std::string("the service dies: ") + kPathNames[path]);
    model().Kill(path);
    device_.Kill(kPathValues[path]);
    Compare();
  }

  // Back before anybody has heard that it was away.
  void Restart(Choices& choices) {
    const int path = choices.Pick(kPaths);
    Note(std::string("the service dies and is back: ") + kPathNames[path]);
    const bool held = model().notices_held;
    if (!held) SetNoticesHeld(true);
    model().Kill(path);
    phone_.services[path].alive = true;
    ++phone_.services[path].generation;
    device_.Start(kPathValues[path]);
    if (!held) {
      run_.Settle();
      SetNoticesHeld(false);
    }
    Compare();
  }

  void HoldNotices() {
    Note(model().notices_held ? "death notices arrive" : "death notices are late from now on");
    SetNoticesHeld(!model().notices_held);
    Compare();
  }

  void SetNoticesHeld(bool held) {
    model().notices_held = held;
    if (held) {
      notices_ = std::make_unique<fake::HoldDeliveries>(fake::Delivery::kDeathNotification);
    } else {
      model().DeliverNotices();
      notices_.reset();
    }
  }

  void Hold(Choices& choices) {
    if (model().types.empty()) return;
    TypeModel& type = model().types[choices.Pick(model().types.size())];
    if (type.held) {
      Note("the long call for type " + std::to_string(type.type) + " returns");
      model().Release(type);
      subject_->calls.at(type.type)->Release();
    } else {
      Note("the next call for type " + std::to_string(type.type) + " takes long");
      model().hold.insert(type.type);
      subject_->calls.at(type.type)->Hold();
    }
    Compare();
  }

  void ReleaseAll() {
    Note("all long calls return");
    for (TypeModel& type : model().types) model().Release(type);
    for (auto& [type, calls] : subject_->calls) calls->Release();
  }

  void Tick(Choices& choices) {
    // Now and then as often as it takes to see a worker give up.
    const int times = choices.OneIn(4) ? 12 : 1;
    for (int i = 0; i < times; ++i) TickOnce();
  }

  void TickOnce() {
    // Two workers at once would share the faults by luck, and so would registrations that wait.
    if (model().restore.pausing()) ClearScripts();
    // Of several that wait, the first may be called before or after the others have registered.
    const bool several = model().pending.size() > 1;
    if (several) ReleaseAll();
    // The reconnect worker's last attempt starts the other one: before or after its next run.
    if (model().restore.pausing() && model().reconnect.IsNextAttemptTheLast() &&
        !model().types.empty()) {
      Start(ThermalPath::kAidl);
    }
    Note("the pauses are over");
    // In this order, because a pause of the second that the first begins is not over yet.
    model().restore.Tick();
    model().reconnect.Tick();
    EndPauses();
    Compare(several);
  }

  void AddFaults(Choices& choices) {
    const fake::Outcome outcome = fake::Outcome::Exception(EX_ILLEGAL_STATE, "not now");
    const int count = 1 + choices.Pick(3);
    for (int i = 0; i < count; ++i) {
      const int path = choices.Pick(kPaths);
      Phone::Service& service = phone_.services[path];
      const bool aidl = path == 0;
      switch (choices.Pick(4)) {
        case 0:
          // The AIDL service has a question for one type and a question for all.
          if (aidl) break;
          Note("a question is refused");
          service.query.push_back(Outcome::kRefused);
          device_.on(HidlThermalOperation::kGetCurrentTemperatures).Then(outcome);
          break;
        case 1:
          Note(std::string("registering a callback is refused: ") + kPathNames[path]);
          service.enlist.push_back(Outcome::kRefused);
          if (aidl) {
            device_.on(ThermalOperation::kRegisterThermalChangedCallbackWithType).Then(outcome);
          } else {
            device_.on(HidlThermalOperation::kRegisterThermalChangedCallback).Then(outcome);
          }
          break;
        case 2:
          Note(std::string("unregistering a callback is refused: ") + kPathNames[path]);
          service.delist.push_back(Outcome::kRefused);
          if (aidl) {
            device_.on(ThermalOperation::kUnregisterThermalChangedCallback).Then(outcome);
          } else {
            device_.on(HidlThermalOperation::kUnregisterThermalChangedCallback).Then(outcome);
          }
          break;
        default:
          Note("a link to death fails");
          phone_.link.push_back(Outcome::kRefused);
          fake::LinkToDeathScript().Then({.status = STATUS_UNKNOWN_ERROR});
          break;
      }
    }
  }

  void ClearScripts() {
    for (Phone::Service& service : phone_.services) {
      service.query.clear();
      service.enlist.clear();
      service.delist.clear();
    }
    phone_.link.clear();
    fake::LinkToDeathScript().Clear();
    device_.on(HidlThermalOperation::kGetCurrentTemperatures).Clear();
    device_.on(HidlThermalOperation::kRegisterThermalChangedCallback).Clear();
    device_.on(HidlThermalOperation::kUnregisterThermalChangedCallback).Clear();
    device_.on(ThermalOperation::kRegisterThermalChangedCallbackWithType).Clear();
    device_.on(ThermalOperation::kUnregisterThermalChangedCallback).Clear();
  }

  void Refusals() {
    Note("null arguments");
    void* const handle = subject_->handle;
    ThermalCallbackParam param = {
        .id = 1, .type_name = "CPU", .temperature_name = "cpu", .callback = OnSeverity};
    run_.Expect(RegisterThermalCallback(nullptr, &param, this), -EINVAL, "no handle");
    run_.Expect(RegisterThermalCallback(handle, nullptr, this), -EINVAL, "no param");
    run_.Expect(RegisterThermalCallback(handle, &param, nullptr), -EINVAL, "no cookie");
    param.callback = nullptr;
    run_.Expect(RegisterThermalCallback(handle, &param, this), -EINVAL, "no callback");
    run_.Expect(DeregisterThermalCallback(nullptr, 1), -EINVAL, "no handle");
    run_.Expect(GetBatteryChargeLimitCapacity(handle), 16, "capacity");
    run_.Expect(GetThermalTypeByName(handle, "NPU"), 9, "type");
    run_.Expect(GetThermalTypeByName(handle, "npu"), -1, "type");
    run_.Expect(GetThrottlingSeverityByName(handle, "SHUTDOWN"), 6, "severity");
    run_.Expect(GetThrottlingSeverityByName(handle, ""), -EINVAL, "severity");
    void* none = nullptr;
    DeinitThermalInfo(&none);
    DeinitThermalInfo(nullptr);
    InitThermalInfo(nullptr);
    DumpThermalInfo(nullptr, 1);
    Compare();
  }

  int Ask() {
    const char* name = "cpu";
    thermistor out;
    int size = 1;
    return GetBulkTemperatureByNames(subject_->handle, &name, 1, &out, &size);
  }

  // Notices of one temperature, questions, dumps and a client of another type that comes and goes,
  // all at once. Who listens hears the first notice and perhaps later ones, in their order.
  void Burst(Choices& choices) {
    // Of those, the other type's client must not be there, nor its service unwilling.
    const auto other = std::find_if(kTypes.begin(), kTypes.end(), [&](const TypeName& type) {
      return type.number >= 0 &&
             std::none_of(model().types.begin(), model().types.end(),
                          [&](const TypeModel& each) { return each.type == type.number; });
    });
    if (model().types.empty() || other == kTypes.end() || !model().hold.empty() ||
        model().notices_held || !model().pending.empty() ||
        (!phone_.services[0].alive && !phone_.services[1].alive)) {
      return;
    }
    for (const TypeModel& type : model().types) {
      if (type.held) return;
    }
    TypeModel& type = model().types[choices.Pick(model().types.size())];
    const std::string name = type.clients.begin()->second;
    ClearScripts();
    // A question in the middle would make the connection, and register the types, at some moment.
    static_cast<void>(model().Bulk({}));
    static_cast<void>(Ask());
    const int count = 1 + choices.Pick(30);
    const int first = burst_value_ + 1;
    burst_value_ += count;
    Note("a burst of " + std::to_string(count) + " notices of " + name);
    const auto record = [&](int severity) {
      return simulated::Thermal::Temperature{
          .type = static_cast<TemperatureType>(type.type),
          .name = name,
          .value = 0,
          .throttlingStatus = static_cast<ThrottlingSeverity>(severity)};
    };
    std::thread notices([&] {
      for (int i = 0; i < count; ++i) device_.Notify(record(first + i));
    });
    Client& spare = subject_->clients.at(other->number * 10);
    const ThermalCallbackParam param = {.id = spare.id,
                                        .type_name = other->text,
                                        .temperature_name = other->names[0],
                                        .callback = OnSeverity};
    for (int i = 0; i < count; ++i) {
      const int result = RegisterThermalCallback(subject_->handle, &param, &spare);
      run_.Expect(DeregisterThermalCallback(subject_->handle, spare.id), result, "leaving");
      run_.Expect(Ask(), 0, "result");
      TextOf(DumpThermalInfo, subject_->handle);
    }
    notices.join();
    run_.Settle();
    // What the model tells of the first notice is what everybody hears first.
    const int callback = type.callback;
    const bool listens = std::any_of(phone_.services.begin(), phone_.services.end(),
                                     [&](const Phone::Service& service) {
                                       return service.alive && service.callbacks.contains(callback);
                                     });
    std::map<int, std::vector<int>> heard;
    for (const auto& [id, severity] : subject_->calls.at(type.type)->Take()) {
      heard[id].push_back(severity);
    }
    for (const auto& [id, wanted] : type.clients) {
      const std::vector<int>& values = heard[id];
      const std::string who = "client " + std::to_string(id);
      if (!listens || wanted != name) {
        run_.Expect(values, {}, who);
        continue;
      }
      if (values.empty()) run_.Fail(who + " hears nothing");
      run_.Expect(values.front(), first, "the first that " + who + " hears");
      for (size_t i = 1; i < values.size(); ++i) {
        if (values[i] <= values[i - 1]) run_.Fail(who + " hears an old notice");
      }
      if (values.back() > burst_value_) run_.Fail(who + " hears what never was");
      heard.erase(id);
    }
    subject_->calls.at(other->number)->Take();  // the present severity, now and then
    Compare();
  }

  RandomRun& run_;
  simulated::Thermal device_;
  Phone phone_;
  std::vector<std::unique_ptr<Subject>> all_;
  Subject* subject_ = nullptr;
  std::unique_ptr<fake::HoldDeliveries> notices_;
  int burst_value_ = 10'000;
};

}  // namespace

std::unique_ptr<Family> MakeThermal(RandomRun& run) {
  return std::make_unique<ThermalFamily>(run);
}

}  // namespace norvik::qel::random_test
