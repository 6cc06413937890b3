// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The battery family.
#include <algorithm>
#include <array>
#include <cerrno>

#include "dump_text.h"
#include "family.h"
#include "pauses.h"
#include "quorvel.h"
#include "quorvel/simulated/health.h"

namespace norvik::qel::random_test {

namespace {

using services::HealthOperation;

constexpr size_t kProperties = 4;
const Words kNames = {"level", "cycles", "wireless", "dock"};
const Words kClients = {"0", "1", "2"};
constexpr size_t kAttempts = 10;
constexpr int kUnknown = -1;
const Words kWorkers = {"clients"};

// Each client has its own function, which can be registered for each property.
template <int kClient>
void OnValue(int value, void* cookie) {
  Client::Hear(value, cookie);
}
constexpr std::array kCallbacks = {OnValue<0>, OnValue<1>, OnValue<2>};

constexpr std::array kRegister = {RegisterBatteryLevelCallback, RegisterBatteryCycleCountCallback,
                                  RegisterWirelessChargerIsOnlineCallback,
                                  RegisterDockChargerIsOnlineCallback};
constexpr std::array kDeregister = {
    DeregisterBatteryLevelCallback, DeregisterBatteryCycleCountCallback,
    DeregisterWirelessChargerIsOnlineCallback, DeregisterDockChargerIsOnlineCallback};
constexpr std::array kGet = {GetBatteryLevel, GetBatteryCycleCount, GetWirelessChargerIsOnline,
                             GetDockChargerIsOnline};

size_t PropertyOf(const Step& step) {
  return IndexOf(kNames, step[1]);
}

class Battery : public Family {
 public:
  Battery() : Family(Fold::kLatest, kWorkers) {
    for (size_t p = 0; p < kProperties; ++p) reported_[p].insert(OnPhone(p));
    for (int i = 1; i <= 5; ++i) reported_[0].insert(1000 + i);
    Add("register", 10, {kNames, kClients}, &Battery::Register);
    Add("deregister", 5, {kNames, kClients}, &Battery::Deregister);
    Add("deregister", 2, {{"all"}}, &Battery::DeregisterAll);
    Add("get", 5, {kNames, {"cached", "fresh"}}, &Battery::Get);
    Add("set", 14, {kNames, {"0", "1", "50", "99", "100", "-1", "-7", "2147483647"}},
        &Battery::Set);
    Add("start", 5, {}, &Battery::Service);
    Add("kill", 3, {}, &Battery::Service);
    Add("restart", 3, {}, &Battery::Service);
    Add("deaths", 2, {{"held", "delivered"}}, &Battery::Deaths);
    Add("renew", 2, {}, &Battery::Renew);
    const Words outcomes = {"refused", "dead"};
    AddFault("find", outcomes, {&health_.on(fake::BinderFunction::kGetService)});
    AddFault("link", outcomes, {&health_.on(fake::BinderFunction::kLinkToDeath)});
    AddFault("register", outcomes, {&health_.on(HealthOperation::kRegisterCallback)});
    AddFault("unregister", outcomes, {&health_.on(HealthOperation::kUnregisterCallback)});
    AddFault("ask", outcomes, {&health_.on(HealthOperation::kGetHealthInfo)});
  }

 private:
  // The contents of a dump.
  struct State {
    bool linked = false;
    std::array<int, kProperties> values = {kUnknown, kUnknown, kUnknown, kUnknown};
  };

  void Begin() override {
    before_ = {};
    gave_up_ = may_link_without_clients_ = false;
    owed_ = {};
    registered_ = {};
    Init(InitBatteryInfo, &handle_, kWorkers);
  }

  void End() override {
    Deinit(DeinitBatteryInfo, &handle_, kWorkers, [this](int i) { health_.SetLevel(1000 + i); });
    // The old handle's callbacks may stay if a fault kept the service from dropping them.
    ExpectTrue(faulty() || health_.callback_count() <= stray_, "the service keeps a callback");
    stray_ = health_.callback_count();
  }

  int OnPhone(size_t property) const {
    const auto info = health_.info();
    if (property == 0) return info.batteryLevel;
    if (property == 1) return info.batteryCycleCount;
    return (property == 2 ? info.chargerWirelessOnline : info.chargerDockOnline) ? 0 : 1;
  }

  // The links to death that were made and not removed by unlinkToDeath().
  int Links() {
    return health_.on(fake::BinderFunction::kLinkToDeath).calls() -
           health_.on(fake::BinderFunction::kUnlinkToDeath).calls();
  }

  size_t ClientCount() const {
    size_t count = 0;
    for (const auto& clients : registered_) count += clients.size();
    return count;
  }
  Client& ClientOf(size_t p, size_t c) {
    return Family::ClientOf(kWorkers[0], "client " + kClients[c] + " of " + kNames[p],
                            reported_[p]);
  }

  void Service(const Step& step) {
    const bool lived = std::exchange(alive_, step[0] != "kill");
    if (step[0] == "start") {
      if (!lived) health_.Start();
      return;
    }
    stray_ = misses_ = 0;
    if (before_.linked) ++joins_;
    if (step[0] == "kill") return health_.Kill();
    Restart([this] { health_.Start(); });
  }

  void Register(const Step& step) {
    const size_t p = PropertyOf(step);
    const size_t c = IndexOf(kClients, step[2]);
    const bool is_new = !registered_[p].contains(c);
    first_ = ClientCount() == 0;
    if (is_new) ClientOf(p, c).Join();
    ExpectEqual(kRegister[p](handle_, kCallbacks[c], &ClientOf(p, c)), is_new ? 0 : -EINVAL,
                "the result");
    if (!is_new) return;
    registered_[p].insert(c);
    registered_now_ = p;
    if (!first_) return;
    ++joins_;
    gave_up_ = false;
  }

  void Deregister(const Step& step) {
    const size_t p = PropertyOf(step);
    const size_t c = IndexOf(kClients, step[2]);
    const bool is_known = registered_[p].erase(c) != 0;
    if (is_known) ClientOf(p, c).Leave();
    ExpectEqual(kDeregister[p](handle_, kCallbacks[c]), is_known ? 0 : -EINVAL, "the result");
  }

  void DeregisterAll(const Step& step) {
    for (const std::string& property : kNames) {
      for (const std::string& client : kClients) Deregister({step[0], property, client});
    }
  }

  void Get(const Step& step) {
    const size_t p = PropertyOf(step);
    if (step[2] == "cached") {
      return ExpectEqual(kGet[p](handle_, true), before_.values[p], "the value");
    }
    // Not done while a call is held: it is not promised which clients a found change calls.
    if (worker(kWorkers[0]).state().holding) return;
    int value = kGet[p](handle_, false);
    // Without a link, only a query reveals the death. The second query looks up the new service.
    if (value == -EAGAIN && alive_ && !faulty()) value = kGet[p](handle_, false);
    if (faulty() || deaths_held()) {
      ExpectTrue(value == -EAGAIN || value == OnPhone(p), "the value was never reported");
    } else {
      ExpectEqual(value, alive_ ? OnPhone(p) : -EAGAIN, "the value");
    }
    asked_ = true;
  }

  void Set(const Step& step) {
    const size_t p = PropertyOf(step);
    const int value = p < 2 ? std::stoi(step[2]) : std::stoi(step[2]) > 0 ? 1 : 0;
    reported_[p].insert(value);
    if (p == 0) health_.SetLevel(value);
    if (p == 1) health_.SetCycleCount(value);
    if (p == 2) health_.SetWirelessOnline(value == 0);
    if (p == 3) health_.SetDockOnline(value == 0);
  }

  State Dump() const {
    std::string text = TextOf(DumpBatteryInfo, handle_);
    State state;
    state.linked = Take(text, "BatteryInfo:\n  linked to services = ([TF])\n")[0] == "T";
    const Words titles = {"Battery Level", "Battery Cycle Count", "Wireless Charger Is Online",
                          "Dock Charger Is Online"};
    for (size_t p = 0; p < kProperties; ++p) {
      const Words found = Take(text, "  " + titles[p] + " = (-?\\d+) \\(clients:(\\d+)\\)\n");
      state.values[p] = std::stoi(found[0]);
      ExpectEqual(std::stoul(found[1]), registered_[p].size(),
                  "the dump's number of clients of " + kNames[p]);
      ExpectEqual(kGet[p](handle_, true), state.values[p], "cached " + kNames[p]);
    }
    ExpectTrue(text.empty(), "the rest of the dump is\n" + text);
    return state;
  }

  void Check(const Step& step) override {
    const State now = Dump();
    CheckLink(now, step);
    // Finds the clients that must be called. A change found by a query is delivered with the next
    // reported change.
    const bool asked = std::exchange(asked_, false);
    const size_t registered_now = std::exchange(registered_now_, kProperties);
    bool told = false;
    for (size_t p = 0; p < kProperties; ++p) {
      const bool changed = now.values[p] != before_.values[p];
      const bool greets = registered_now == p && !first_ && before_.values[p] != kUnknown;
      owed_[p] |= changed || greets;
      told |= (changed && !asked) || greets;
      ExpectTrue(!changed || reported_[p].contains(now.values[p]),
                 kNames[p] + " was never reported");
    }
    for (size_t p = 0; told && p < kProperties; ++p) {
      if (!std::exchange(owed_[p], false)) continue;
      for (const size_t c : registered_[p]) ClientOf(p, c).Expect(now.values[p]);
    }
    before_ = now;
  }

  void CheckLink(const State& now, const Step& step) {
    const size_t pausing = PausingWorkers();
    const size_t callbacks = health_.callback_count();
    const bool certain = alive_ && !deaths_held();
    if (faulty()) stray_ = std::max(stray_, callbacks - (callbacks > 0 && now.linked ? 1 : 0));
    if (certain && now.linked) {
      for (size_t p = 0; p < kProperties; ++p) {
        ExpectEqual(now.values[p], OnPhone(p), "while linked, cached " + kNames[p]);
      }
      ExpectTrue(callbacks >= 1, "linked, but the service keeps no callback");
    }
    ExpectTrue(callbacks <= stray_ + (now.linked || deaths_held() ? 1 : 0),
               "the service keeps " + std::to_string(callbacks) + " callbacks");
    ExpectTrue(alive_ || deaths_held() || !now.linked, "linked to a dead service");

    // A link to death is removed, or ends with the service.
    const int links = Links() - (now.linked ? 1 : 0);
    const bool may_change = !certain || faulty() || step[0] == "restart" || step[0] == "deaths";
    if (!may_change) ExpectEqual(links, ended_links_, "the number of links left behind");
    ended_links_ = links;

    // The worker makes ten attempts, plus one for each death and first client during the series.
    if (ticked()) {
      // The first attempt may only reveal that the service known so far has died.
      misses_ = certain && !faulty() && !now.linked ? misses_ + 1 : 0;
      ExpectTrue(misses_ < 2, "the pause is over, and there is no link");
    }
    if (pausing == 1 && pausing_before() == 0) joins_ = 0;
    if (step[0] == "deaths") ++joins_;
    if (pausing == 1) ExpectTrue(ticks() < kAttempts + joins_, "no end of attempts");
    if (pausing == 0 && ticked() && !now.linked) {
      ExpectTrue(ticks() >= kAttempts, "given up too early");
      gave_up_ = true;
    }
    if (now.linked) gave_up_ = false;
    if (ClientCount() > 0) {
      may_link_without_clients_ = false;
      ExpectTrue(!certain || now.linked || gave_up_ || pausing == 1,
                 "clients and a service, but no link and no attempts");
    } else {
      may_link_without_clients_ |= pausing == 1;
      ExpectTrue(!now.linked || may_link_without_clients_, "linked without clients");
    }
  }

  simulated::Health health_;
  bool alive_ = false;
  std::array<std::set<int>, kProperties> reported_;  // all values that the phone has ever had
  size_t stray_ = 0;  // callbacks that the service may keep because it has failed to drop them

  int ended_links_ = Links();

  void* handle_ = nullptr;
  std::array<std::set<size_t>, kProperties> registered_;
  State before_;
  // The property has changed, but its clients were not called: the next dispatch calls them.
  std::array<bool, kProperties> owed_ = {};
  bool asked_ = false;                   // this step has asked the service
  size_t registered_now_ = kProperties;  // the property that this step registered a client for
  bool first_ = false;                   // that client is the handle's only one
  size_t misses_ = 0;
  size_t joins_ = 0;
  bool gave_up_ = false;
  bool may_link_without_clients_ = false;
};

}  // namespace

std::unique_ptr<Family> MakeBattery() {
  return std::make_unique<Battery>();
}

}  // namespace norvik::qel::random_test
