#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "tools/all_clients.h"
#include "tools/commands.h"
#include "tools/play_plan.h"
#include "tools/recorder.h"
#include "tools/recording_reader.h"
#include "tools/session.h"

namespace norvik::qel::tool {

namespace {

using Clock = Session::Clock;
using Wake = Session::Wake;

// How long nothing is heard once all has been heard.
constexpr std::chrono::milliseconds kQuiet(1000);
// One wait is no longer, so that no speed brings a clock to its end.
constexpr Seconds kLongestWait(3600);

class Player {
 public:
  Player(const Options& options, Session& session, PlayedDevice& phone, PlayPlan plan,
         Recorder* recorder)
      : options_(options),
        session_(session),
        phone_(phone),
        plan_(std::move(plan)),
        recorder_(recorder),
        clients_(session.events()) {
    for (const TemperatureReport& report : plan_.equipment.temperatures) clients_.Learn(report);
  }
  // As BatteryLife does.
  ~Player() {
    if (health_died_) Tell(DeviceEvent::Kind::kServiceStarted, kHealthService);
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  // False when the library refuses a client.
  bool Play();

 private:
  bool WaitUntil(Seconds at);
  bool WaitForEnter();
  bool Take(const PlayPlan::Step& step);
  void Tell(DeviceEvent::Kind kind, std::string_view service) {
    phone_.Play({.kind = kind, .service = std::string(service)});
  }

  const Options& options_;
  Session& session_;
  PlayedDevice& phone_;
  const PlayPlan plan_;
  Recorder* const recorder_;
  AllClients clients_;
  const Clock::time_point begin_ = Clock::now();
  bool health_died_ = false;
};

bool Player::Play() {
  bool accepted = true;
  for (const PlayPlan::Step& step : plan_.steps) {
    const bool by_hand = options_.step && step.event.line > 0;
    if (by_hand) session_.output().Explain("Enter plays " + step.event.text);
    // What has happened so far is noted before the next thing happens.
    const Seconds due = options_.step ? Seconds(0) : step.event.at;
    if (by_hand ? !WaitForEnter() : !WaitUntil(due)) return accepted;
    accepted &= Take(step);
  }
  if (!options_.step && !WaitUntil(plan_.length)) return accepted;
  while (session_.WaitUntil(Clock::now() + kQuiet) == Wake::kEvent) {
    // There may be more to come.
  }
  return accepted;
}

// False when somebody wants the end.
bool Player::WaitUntil(Seconds at) {
  while (true) {
    const Seconds left = at / options_.speed - Seconds(Clock::now() - begin_);
    const Seconds wait = std::clamp(left, Seconds(0), kLongestWait);
    const Wake wake =
        session_.WaitUntil(Clock::now() + std::chrono::duration_cast<Clock::duration>(wait));
    if (wake == Wake::kStop) return false;
    if (wake == Wake::kTime && left <= kLongestWait) return true;
  }
}

// False also at the end of the input.
bool Player::WaitForEnter() {
  while (true) {
    const Wake wake = session_.WaitUntil(Clock::time_point::max(), STDIN_FILENO);
    if (wake == Wake::kStop) return false;
    if (wake != Wake::kInput) continue;
    char key = 0;
    const ssize_t count = read(STDIN_FILENO, &key, 1);
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) return false;
    if (count > 0 && key == '\n') return true;
  }
}

bool Player::Take(const PlayPlan::Step& step) {
  if (const auto* joined = std::get_if<ClientJoined>(&step.event.what)) {
    if (recorder_ != nullptr) recorder_->NoteJoin(joined->family);
    return clients_.Join(joined->family);
  }
  const auto& event = std::get<DeviceEvent>(step.event.what);
  if (step.refusals > 0) phone_.RefuseRegistrations(step.refusals);
  phone_.Play(event);
  if (event.service == kHealthService) {
    if (event.kind == DeviceEvent::Kind::kServiceStarted) health_died_ = false;
    if (event.kind == DeviceEvent::Kind::kServiceDied) health_died_ = true;
  }
  return true;
}

}  // namespace

int Play(const Options& options, Output& output) {
  const std::string& path = options.operands.front();
  PlayPlan plan = MakePlayPlan(ReadRecording(path));
  std::optional<Recorder> recorder;
  if (!options.record.empty()) recorder.emplace(options.record, options.existing, "simulated");
  PlayedDevice* phone = nullptr;
  const auto make_device = [&](DeviceObserver observer) -> std::unique_ptr<Device> {
    auto made = MakePlayedDevice(plan.equipment, std::move(observer));
    if (made == nullptr) throw std::runtime_error("this program has no phone to play on");
    phone = made.get();
    return made;
  };
  output.Explain("Playing " + path + (options.step ? ", an event at each Enter." : "."));
  output.Explain("Lines with ** come from the device, all others through a client's callback.");
  Session session(
      options, output,
      {.listener = [&](const Event& event) { return !recorder || recorder->Note(event); },
       .make_device = make_device});
  Player player(options, session, *phone, std::move(plan), recorder ? &*recorder : nullptr);
  const bool accepted = player.Play();
  if (!accepted) Complain(kRefusal);
  if (recorder && !recorder->failure().empty()) Complain(recorder->failure());
  const bool recorded = !recorder || recorder->failure().empty();
  return accepted && recorded ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace norvik::qel::tool
