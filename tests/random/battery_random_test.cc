// Battery random tests.
#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <set>
#include <thread>

#include "dump_text.h"
#include "pauses.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/simulated/health.h"
#include "random_run.h"
#include "worker_model.h"

namespace norvik::qel::random_test {

namespace {

using services::HealthOperation;
using Call = Calls::Call;

constexpr int kProperties = 4;
constexpr std::array kNames = {"Battery Level", "Battery Cycle Count", "Wireless Charger Is Online",
                               "Dock Charger Is Online"};

// A function is a client of each property that it is registered for.
constexpr int kClients = 3;
constexpr int kSpare = kClients;  // comes and goes in storms

template <int kProperty, int kClient>
void Client(int value, void* cookie) {
  static_cast<Calls*>(cookie)->Put(kProperty * 10 + kClient, value);
}

template <int kProperty>
constexpr std::array<BatteryInfoCallback, kClients + 1> kOf = {
    Client<kProperty, 0>, Client<kProperty, 1>, Client<kProperty, 2>, Client<kProperty, 3>};
constexpr std::array kCallbacks = {kOf<0>, kOf<1>, kOf<2>, kOf<3>};

constexpr std::array kRegister = {RegisterBatteryLevelCallback, RegisterBatteryCycleCountCallback,
                                  RegisterWirelessChargerIsOnlineCallback,
                                  RegisterDockChargerIsOnlineCallback};
constexpr std::array kDeregister = {
    DeregisterBatteryLevelCallback, DeregisterBatteryCycleCountCallback,
    DeregisterWirelessChargerIsOnlineCallback, DeregisterDockChargerIsOnlineCallback};
constexpr std::array kGet = {GetBatteryLevel, GetBatteryCycleCount, GetWirelessChargerIsOnline,
                             GetDockChargerIsOnline};

// What goes wrong with a call that reaches the service, or a look-up or link.
enum class Fault { kNone, kRefused, kDead };

// One handle, and what its clients may see of it.
class BatteryModel {
 public:
  struct NewHandle {};

  BatteryModel() = default;
  // The same phone, with another handle.
  BatteryModel(const BatteryModel& before, NewHandle)
      : alive(before.alive),
        generation(before.generation),
        info(before.info),
        strangers(before.strangers + before.kept) {}
  BatteryModel(const BatteryModel&) = delete;
  BatteryModel& operator=(const BatteryModel&) = delete;

  // The phone's side: whether the service runs, and as the how manieth.
  bool alive = false;
  int generation = 0;
  std::array<int, kProperties> info = {50, 10, 1, 1};  // as clients are told
  size_t kept = 0;                                     // how often it keeps this handle's callback
  size_t strangers = 0;                                // callbacks of handles that are gone

  // What the next calls of each kind come to.
  std::deque<Fault> find, link, on_register, on_unregister, on_get;

  // The handle's.
  std::array<std::vector<int>, kProperties> clients;
  std::array<int, kProperties> values = {-1, -1, -1, -1};
  bool linked = false;
  // Has been killed while linked, and the handle does not know yet.
  int notices = 0;
  bool notices_held = false;

  // Who is to be told what, in order.
  std::vector<Call> calls;
  // The next call stays until Release().
  bool hold = false;
  bool held = false;

  RetryModel reconnect{10, [this] {
                         Link();
                         return linked;
                       }};

  bool HasClients() const {
    return std::any_of(clients.begin(), clients.end(), [](const auto& c) { return !c.empty(); });
  }

  int Register(int property, int client) {
    auto& list = clients[property];
    if (std::find(list.begin(), list.end(), client) != list.end()) return -EINVAL;
    const bool first = !HasClients();
    list.push_back(client);
    if (first) {
      Link();
      if (!linked) reconnect.Start();
    } else if (values[property] != -1) {
      pending_[property] = true;
      StartDispatch();
    }
    return 0;
  }

  int Deregister(int property, int client) {
    if (std::erase(clients[property], client) == 0) return -EINVAL;
    if (!HasClients()) Unlink();
    return 0;
  }

  int Get(int property, bool cached) {
    if (!cached) {
      if (!IsReady()) return -EAGAIN;
      const Fault fault = Reach(on_get);
      if (fault == Fault::kDead && !linked) service_ = 0;
      if (fault != Fault::kNone) return -EAGAIN;
      Update();
    }
    return values[property];
  }

  // The service reports; nobody hears while it keeps no callback.
  void Report() {
    if (alive && kept > 0 && Update()) StartDispatch();
  }

  void Start() {
    alive = true;
    ++generation;
  }
  void Kill() {
    if (!alive) return;
    alive = false;
    kept = 0;
    strangers = 0;
    if (linked && service_ == generation) ++notices;
    if (!notices_held) DeliverNotices();
  }
  void DeliverNotices() {
    for (; notices > 0; --notices) {
      if (service_ != 0 && IsServiceAlive()) continue;
      service_ = 0;
      linked = false;
      if (HasClients()) reconnect.Start();
    }
  }

  void Release() {
    hold = false;
    if (!std::exchange(held, false)) return;
    calls.insert(calls.end(), rest_.begin(), rest_.end());
    rest_.clear();
    if (std::exchange(again_, false)) Dispatch();
  }

  // What DeinitBatteryInfo() asks of the service.
  void End() { Unlink(); }

  std::string Dump() const {
    std::string text = "BatteryInfo:\n  linked to services = ";
    text += linked ? "T\n" : "F\n";
    for (int i = 0; i < kProperties; ++i) {
      text += std::string("  ") + kNames[i] + " = " + std::to_string(values[i]) +
              " (clients:" + std::to_string(clients[i].size()) + ")\n";
    }
    return text;
  }

 private:
  bool IsServiceAlive() const { return alive && service_ == generation; }

  static Fault Next(std::deque<Fault>& script) {
    if (script.empty()) return Fault::kNone;
    const Fault fault = script.front();
    script.pop_front();
    return fault;
  }
  // A call of the service.
  Fault Reach(std::deque<Fault>& script) { return IsServiceAlive() ? Next(script) : Fault::kDead; }

  bool IsReady() {
    if (service_ != 0) return true;
    if (Next(find) != Fault::kNone || !alive) return false;
    service_ = generation;
    return true;
  }

  void Link() {
    if (!IsReady() || linked) return;
    const Fault fault = Reach(on_register);
    if (fault == Fault::kDead) service_ = 0;
    if (fault != Fault::kNone) return;
    ++kept;
    Report();
    const Fault unwatched = Next(link);
    if (unwatched == Fault::kNone) {
      linked = true;
      return;
    }
    const Fault undone = Reach(on_unregister);
    if (undone == Fault::kNone) kept = 0;
    if (unwatched == Fault::kDead || undone == Fault::kDead) service_ = 0;
  }

  void Unlink() {
    if (!IsReady() || !linked) return;
    const bool is_alive = IsServiceAlive();
    const Fault fault = Reach(on_unregister);
    if (fault == Fault::kNone) kept = 0;
    linked = false;
    if (fault == Fault::kDead || !is_alive) service_ = 0;
  }

  bool Update() {
    bool changed = false;
    for (int i = 0; i < kProperties; ++i) {
      if (values[i] == info[i]) continue;
      values[i] = info[i];
      pending_[i] = changed = true;
    }
    return changed;
  }

  void StartDispatch() {
    if (held) {
      again_ = true;
    } else {
      Dispatch();
    }
  }

  // The latest values, of those that have changed or are owed, to those who are registered now.
  void Dispatch() {
    std::vector<Call> due;
    for (int i = 0; i < kProperties; ++i) {
      if (!std::exchange(pending_[i], false)) continue;
      for (const int client : clients[i]) due.emplace_back(i * 10 + client, values[i]);
    }
    if (hold && !due.empty()) {
      hold = false;
      held = true;
      rest_.assign(due.begin() + 1, due.end());
      due.resize(1);
    }
    calls.insert(calls.end(), due.begin(), due.end());
  }

  int service_ = 0;  // the generation that the handle knows; 0: none
  std::array<bool, kProperties> pending_ = {};
  std::vector<Call> rest_;  // of the dispatch that is held
  bool again_ = false;      // another one follows it
};

class Battery : public Family {
 public:
  explicit Battery(RandomRun& run) : run_(run) { Begin(); }

  ~Battery() override { ClearScripts(); }

  void Step(Choices& choices) override {
    switch (choices.Pick(20)) {
      case 0:
      case 1:
      case 2:
        Register(choices);
        break;
      case 3:
      case 4:
        Deregister(choices);
        break;
      case 5:
        Get(choices);
        break;
      case 6:
      case 7:
      case 8:
        Change(choices);
        break;
      case 9:
        Start();
        break;
      case 10:
        Kill();
        break;
      case 11:
        Restart();
        break;
      case 12:
        HoldNotices(choices);
        break;
      case 13:
      case 14:
        Hold();
        break;
      case 15:
      case 16:
        Tick(choices);
        break;
      case 17:
        Script(choices);
        return;  // faults wait for the step after this one
      case 18:
        Burst(choices);
        break;
      default:
        Refusals(choices);
        break;
    }
    if (choices.OneIn(64)) Begin();  // a new handle on the same phone
    ClearScripts();
  }

  void Finish() override {
    End(/*busy=*/true);
    health_.Kill();
    Note("the end");
    run_.Settle();
  }

 private:
  void Note(std::string line) { run_.Note(std::move(line)); }

  void Begin() {
    if (handle_ != nullptr) End(/*busy=*/false);
    Note("InitBatteryInfo");
    model_ = std::make_unique<BatteryModel>(*model_, BatteryModel::NewHandle{});
    calls_.push_back(std::make_unique<Calls>(run_));
    InitBatteryInfo(&handle_);
    Compare();
  }

  void End(bool busy) {
    Release();
    Note(busy ? "DeinitBatteryInfo, while the battery changes" : "DeinitBatteryInfo");
    std::thread changes;
    if (busy) {
      changes = std::thread([this] {
        for (int i = 0; i < 5; ++i) health_.SetLevel(1000 + i);
      });
    }
    model_->End();
    DeinitBatteryInfo(&handle_);
    calls_.back()->Close();
    if (busy) changes.join();
    ReleaseNotices();
    if (handle_ != nullptr) run_.Fail("the handle is not null after DeinitBatteryInfo");
    run_.Settle();
  }

  // Everything that has been caused has happened: it has to be what the model says.
  void Compare() {
    run_.Settle();
    run_.Expect(calls_.back()->Take(), std::exchange(model_->calls, {}), "calls");
    run_.Expect(TextOf(DumpBatteryInfo, handle_), model_->Dump(), "dump");
    run_.Expect(static_cast<int>(health_.callback_count()),
                static_cast<int>(model_->kept + model_->strangers),
                "callbacks that the service keeps");
    run_.Expect(static_cast<int>(PausingWorkers()), model_->reconnect.pausing() ? 1 : 0,
                "workers that pause");
  }

  void Register(Choices& choices) {
    const int property = choices.Pick(kProperties);
    const int client = choices.Pick(kClients);
    Note("register client " + std::to_string(property * 10 + client));
    const int expected = model_->Register(property, client);
    run_.Expect(kRegister[property](handle_, kCallbacks[property][client], calls_.back().get()),
                expected, "result");
    Compare();
  }

  void Deregister(Choices& choices) {
    if (choices.OneIn(6)) {
      for (int property = 0; property < kProperties; ++property) {
        for (int client = 0; client < kClients; ++client) Deregister(property, client);
      }
      return;
    }
    const int property = choices.Pick(kProperties);
    Deregister(property, choices.Pick(kClients));
  }

  void Deregister(int property, int client) {
    Note("deregister client " + std::to_string(property * 10 + client));
    const int expected = model_->Deregister(property, client);
    run_.Expect(kDeregister[property](handle_, kCallbacks[property][client]), expected, "result");
    Compare();
  }

  void Get(Choices& choices) {
    const int property = choices.Pick(kProperties);
    const bool cached = choices.OneIn(3);
    Note("get " + std::string(kNames[property]) + (cached ? ", cached" : ", fresh"));
    const int expected = model_->Get(property, cached);
    run_.Expect(kGet[property](handle_, cached), expected, "result");
    Compare();
  }

  void Refusals(Choices& choices) {
    const int property = choices.Pick(kProperties);
    Note("null arguments");
    run_.Expect(kRegister[property](nullptr, kCallbacks[property][0], nullptr), -EINVAL,
                "no handle");
    run_.Expect(kRegister[property](handle_, nullptr, nullptr), -EINVAL, "no callback");
    run_.Expect(kDeregister[property](nullptr, kCallbacks[property][0]), -EINVAL, "no handle");
    run_.Expect(kDeregister[property](handle_, nullptr), -EINVAL, "no callback");
    run_.Expect(kGet[property](nullptr, true), -EINVAL, "no handle");
    void* none = nullptr;
    DeinitBatteryInfo(&none);
    DeinitBatteryInfo(nullptr);
    InitBatteryInfo(nullptr);
    DumpBatteryInfo(nullptr, 1);
    Compare();
  }

  void Change(Choices& choices) {
    const int property = choices.Pick(kProperties);
    // What a service may say, sane or not. -1 is also how a value that is not known shows.
    constexpr std::array kLevels = {0, 1, 50, 99, 100, -1, -7, INT32_MAX, INT32_MIN};
    const int value = property < 2 ? kLevels[choices.Pick(kLevels.size())] : choices.Pick(2);
    Note(std::string(kNames[property]) + " becomes " + std::to_string(value));
    model_->info[property] = value;
    model_->Report();
    if (property == 0) health_.SetLevel(value);
    if (property == 1) health_.SetCycleCount(value);
    if (property == 2) health_.SetWirelessOnline(value == 0);
    if (property == 3) health_.SetDockOnline(value == 0);
    Compare();
  }

  void Start() {
    if (model_->alive) return;
    Note("the service comes up");
    model_->Start();
    health_.Start();
    Compare();
  }

  void Kill() {
    Note("the service dies");
    model_->Kill();
    health_.Kill();
    Compare();
  }

  // Back before anybody has heard that it was away.
  void Restart() {
    Note("the service dies and is back");
    const bool held = model_->notices_held;
    if (!held) {
      model_->notices_held = true;
      notices_ = std::make_unique<fake::HoldDeliveries>(fake::Delivery::kDeathNotification);
    }
    model_->Kill();
    model_->Start();
    health_.Start();
    if (!held) {
      run_.Settle();
      ReleaseNotices();
    }
    Compare();
  }

  void HoldNotices(Choices& choices) {
    if (model_->notices_held || choices.OneIn(2)) {
      Note("death notices arrive");
      ReleaseNotices();
    } else {
      Note("death notices are late from now on");
      model_->notices_held = true;
      notices_ = std::make_unique<fake::HoldDeliveries>(fake::Delivery::kDeathNotification);
    }
    Compare();
  }

  void ReleaseNotices() {
    model_->notices_held = false;
    if (handle_ != nullptr) model_->DeliverNotices();
    model_->notices = 0;
    notices_.reset();
  }

  void Hold() {
    if (model_->held) {
      Release();
    } else {
      Note("the next call takes long");
      model_->hold = true;
      calls_.back()->Hold();
    }
    Compare();
  }

  void Release() {
    Note("the long call returns");
    model_->Release();
    calls_.back()->Release();
  }

  void Tick(Choices& choices) {
    // Now and then as often as it takes to see a worker give up.
    const int times = choices.OneIn(4) ? 12 : 1;
    for (int i = 0; i < times; ++i) {
      Note("the pause is over");
      model_->reconnect.Tick();
      EndPauses();
      Compare();
    }
  }

  // What the calls of the next step come to.
  void Script(Choices& choices) {
    const int count = 1 + choices.Pick(3);
    for (int i = 0; i < count; ++i) {
      const bool dead = choices.OneIn(3);
      const Fault fault = dead ? Fault::kDead : Fault::kRefused;
      const fake::Outcome outcome = dead ? fake::Outcome{.status = STATUS_DEAD_OBJECT}
                                         : fake::Outcome{.status = STATUS_UNKNOWN_ERROR};
      const std::string how = dead ? " finds the service dead" : " fails";
      switch (choices.Pick(5)) {
        case 0:
          Note("a look-up fails");
          model_->find.push_back(fault);
          fake::GetServiceScript().Then(outcome);
          break;
        case 1:
          Note("a link to death" + how);
          model_->link.push_back(fault);
          fake::LinkToDeathScript().Then(outcome);
          break;
        case 2:
          Note("registerCallback" + how);
          model_->on_register.push_back(fault);
          health_.on(HealthOperation::kRegisterCallback).Then(outcome);
          break;
        case 3:
          Note("unregisterCallback" + how);
          model_->on_unregister.push_back(fault);
          health_.on(HealthOperation::kUnregisterCallback).Then(outcome);
          break;
        default:
          Note("getHealthInfo" + how);
          model_->on_get.push_back(fault);
          health_.on(HealthOperation::kGetHealthInfo).Then(outcome);
          break;
      }
    }
  }

  void ClearScripts() {
    model_->find.clear();
    model_->link.clear();
    model_->on_register.clear();
    model_->on_unregister.clear();
    model_->on_get.clear();
    fake::GetServiceScript().Clear();
    fake::LinkToDeathScript().Clear();
    for (const HealthOperation operation :
         {HealthOperation::kRegisterCallback, HealthOperation::kUnregisterCallback,
          HealthOperation::kGetHealthInfo}) {
      health_.on(operation).Clear();
    }
  }

  // Changes, a client that comes and goes, and questions, all at once. What is heard of the level
  // goes forward only, and ends with the latest.
  void Burst(Choices& choices) {
    if (model_->held || model_->hold || model_->notices_held || !model_->linked || !model_->alive ||
        !model_->HasClients()) {
      return;
    }
    ClearScripts();  // whose calls would take what is scripted is a matter of luck here
    const int count = 1 + choices.Pick(20);
    // A fresh question can be answered with a change whose report is still on its way: then older
    // reports follow.
    const bool fresh = choices.OneIn(2);
    Note("a burst of " + std::to_string(count) + " changes" + (fresh ? ", with questions" : ""));
    std::vector<int> told = {model_->info[0]};
    for (int i = 0; i < count; ++i) told.push_back(++burst_value_);
    std::thread changes([&] {
      for (int i = 1; i <= count; ++i) health_.SetLevel(told[i]);
    });
    const BatteryInfoCallback spare = kCallbacks[0][kSpare];
    Calls* const cookie = calls_.back().get();
    for (int i = 0; i < count; ++i) {
      run_.Expect(RegisterBatteryLevelCallback(handle_, spare, cookie), 0, "register");
      const int level = GetBatteryLevel(handle_, !fresh);
      if (std::find(told.begin(), told.end(), level) == told.end() && level != model_->values[0]) {
        run_.Fail("a level that never was: " + std::to_string(level));
      }
      TextOf(DumpBatteryInfo, handle_);
      run_.Expect(DeregisterBatteryLevelCallback(handle_, spare), 0, "deregister");
    }
    changes.join();
    run_.Settle();
    // A change that a question has found is told together with the next one.
    told.push_back(++burst_value_);
    health_.SetLevel(told.back());
    run_.Settle();
    std::array<size_t, kClients + 1> reached = {};
    for (const auto& [client, value] : cookie->Take()) {
      // The other properties are as they were, but may be owed from a fresh query.
      if (client >= 10) {
        run_.Expect(value, model_->info[client / 10], "value of client " + std::to_string(client));
        continue;
      }
      const auto found = std::find(told.begin(), told.end(), value);
      if (found == told.end()) {
        run_.Fail("client " + std::to_string(client) + " hears " + std::to_string(value) +
                  ", which never was");
      }
      const auto index = static_cast<size_t>(found - told.begin());
      if (index < reached[client] && !fresh) {
        run_.Fail("client " + std::to_string(client) + " hears an old value");
      }
      reached[client] = index;
    }
    for (const int client : model_->clients[0]) {
      run_.Expect(static_cast<int>(reached[client]), count + 1,
                  "how far client " + std::to_string(client) + " came");
    }
    model_->info[0] = told.back();
    model_->Report();
    model_->calls.clear();  // they have been heard in the burst
    Compare();
  }

  RandomRun& run_;
  simulated::Health health_;
  std::unique_ptr<BatteryModel> model_ = std::make_unique<BatteryModel>();
  void* handle_ = nullptr;
  // Those of handles that are gone stay, to hear what they should not.
  std::vector<std::unique_ptr<Calls>> calls_;
  std::unique_ptr<fake::HoldDeliveries> notices_;
  int burst_value_ = 10'000;
};

}  // namespace

std::unique_ptr<Family> MakeBattery(RandomRun& run) {
  return std::make_unique<Battery>(run);
}

}  // namespace norvik::qel::random_test
