#include "devices/linux/health.h"

#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "devices/linux/power_supplies.h"
#include "devices/linux/power_supply_monitor.h"
#include "standin/service_manager.h"

namespace norvik::qel::linux_device {

using aidl::android::hardware::health::BatteryCapacityLevel;
using aidl::android::hardware::health::BatteryHealth;
using aidl::android::hardware::health::BatteryStatus;
using aidl::android::hardware::health::HealthInfo;
using devices::DeviceEvent;
using devices::HealthOperation;

namespace {

// Clients of the library know it as "no data".
constexpr int32_t kUnknown = -1;

HealthInfo ToHealthInfo(const PowerReading& reading) {
  const Chargers& chargers = reading.chargers;
  const Battery battery = reading.battery.value_or(Battery{});
  HealthInfo info;
  info.chargerAcOnline = chargers.ac_online;
  info.chargerUsbOnline = chargers.usb_online;
  info.chargerWirelessOnline = chargers.wireless_online;
  info.chargerDockOnline = chargers.dock_online;
  info.maxChargingCurrentMicroamps = chargers.max_current_microamps.value_or(0);
  info.maxChargingVoltageMicrovolts = chargers.max_voltage_microvolts.value_or(0);
  info.batteryPresent = reading.battery.has_value();
  info.batteryLevel = battery.level_percent.value_or(kUnknown);
  info.batteryCycleCount = battery.cycle_count.value_or(kUnknown);
  info.batteryStatus = battery.status.value_or(BatteryStatus::UNKNOWN);
  info.batteryHealth = battery.health.value_or(BatteryHealth::UNKNOWN);
  info.batteryCapacityLevel = battery.capacity_level.value_or(BatteryCapacityLevel::UNSUPPORTED);
  info.batteryTechnology = battery.technology.value_or("");
  info.batteryVoltageMillivolts = battery.voltage_millivolts.value_or(0);
  info.batteryTemperatureTenthsCelsius = battery.temperature_tenths_celsius.value_or(0);
  info.batteryCurrentMicroamps = battery.current_microamps.value_or(0);
  info.batteryCurrentAverageMicroamps = battery.current_average_microamps.value_or(0);
  info.batteryFullChargeUah = battery.full_charge_uah.value_or(0);
  info.batteryFullChargeDesignCapacityUah = battery.full_charge_design_uah.value_or(0);
  info.batteryChargeCounterUah = battery.charge_counter_uah.value_or(0);
  info.batteryChargeTimeToFullNowSeconds = battery.seconds_to_full.value_or(
      HealthInfo::BATTERY_CHARGE_TIME_TO_FULL_NOW_SECONDS_UNSUPPORTED);
  return info;
}

std::string NoticeOf(const Fault& fault) {
  std::string notice = fault.supply;
  if (!fault.file.empty()) notice += "/" + fault.file;
  return notice + ": " + fault.what;
}

// Whether the kernel gives what an operation asks for. Operations that this machine never has an
// answer to are not read for at all.
bool HasAnswer(HealthOperation operation, const std::optional<Battery>& battery) {
  switch (operation) {
    case HealthOperation::kGetCapacity:
      return battery && battery->level_percent;
    case HealthOperation::kGetChargeCounterUah:
      return battery && battery->charge_counter_uah;
    case HealthOperation::kGetCurrentNowMicroamps:
      return battery && battery->current_microamps;
    case HealthOperation::kGetCurrentAverageMicroamps:
      return battery && battery->current_average_microamps;
    default:
      return true;
  }
}

bool IsSupported(HealthOperation operation) {
  switch (operation) {
    case HealthOperation::kGetStorageInfo:
    case HealthOperation::kGetDiskStats:
    case HealthOperation::kSetChargingPolicy:
    case HealthOperation::kGetChargingPolicy:
      return false;
    default:
      return true;
  }
}

}  // namespace

// What is known of the machine. Its process's threads may still be inside a call when the owner has
// gone on, so everything that a call touches is here, and a call tells the observer nothing: it
// leaves notices and wakes the owner's thread, which is joined in time.
//
// Threads: any. Locks: lock_ before the lock of HealthService; held over reading and reporting, so
// that an old reading never follows a new one.
class Health::Service : public devices::HealthService {
 public:
  explicit Service(devices::DeviceObserver observer)
      : HealthService(ToHealthInfo({}), std::move(observer)),
        wake_fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wake_fd_ < 0) throw std::system_error(errno, std::system_category(), "eventfd");
  }
  ~Service() override { close(wake_fd_); }

  // Reads everything and reports it if it has changed.
  void Refresh();
  void Note(const SupplyEvent& event);
  // From now on nobody will announce a supply.
  void NoteEndOfEvents(int error);
  std::vector<std::string> TakeNotices();

  // Readable while notices wait or the service is to end.
  int wake_fd() const { return wake_fd_; }
  void End() {
    ending_ = true;
    Wake();
  }
  bool ending() const { return ending_; }

 private:
  ndk::ScopedAStatus Permit(HealthOperation operation) override;

  void Wake() const;
  std::vector<std::string> OnlyAnnouncedLocked(const std::vector<std::string>& listed);
  void NoticeFaultsLocked(const std::vector<Fault>& faults);
  void ForgetFaultsOfOthersLocked(const std::vector<std::string>& syspaths);
  void NoticeLackOfBatteryLocked(bool has_battery);
  void AddNoticeLocked(std::string notice);

  const int wake_fd_;
  std::atomic<bool> ending_ = false;
  std::mutex lock_;
  std::optional<Battery> battery_;
  bool had_battery_ = true;  // so that a machine that never had one is said so, too
  // Supplies are listed before their files have been made, and some linger when they are announced
  // as gone. So only the announced ones are read, but for those that were there before.
  std::set<std::string> announced_;
  bool all_are_announced_ = true;
  bool has_events_ = true;
  std::set<std::pair<std::string, std::string>> faults_told_;  // supply and file
  std::vector<std::string> notices_;
};

void Health::Service::Refresh() {
  std::lock_guard<std::mutex> lock(lock_);
  std::vector<std::string> listed;
  if (const int error = ListPowerSupplies(&listed); error != 0) {
    // Not the same as having no supplies: what was known stands.
    NoticeFaultsLocked({{.supply = "power supplies",
                         .file = "",
                         .what = "cannot be listed: " + std::system_category().message(error)}});
    return;
  }
  const std::vector<std::string> syspaths = OnlyAnnouncedLocked(listed);
  const PowerReading reading = ReadPowerSupplies(syspaths);
  ForgetFaultsOfOthersLocked(syspaths);
  NoticeFaultsLocked(reading.faults);
  NoticeLackOfBatteryLocked(reading.battery.has_value());
  battery_ = reading.battery;
  const HealthInfo now = ToHealthInfo(reading);
  if (now != info()) Report(now);
}

void Health::Service::Note(const SupplyEvent& event) {
  std::lock_guard<std::mutex> lock(lock_);
  switch (event.kind) {
    case SupplyEvent::Kind::kThere:
      announced_.insert(event.syspath);
      break;
    case SupplyEvent::Kind::kRemoved:
      announced_.erase(event.syspath);
      break;
    case SupplyEvent::Kind::kLost:
      all_are_announced_ = true;
      break;
  }
}

void Health::Service::NoteEndOfEvents(int error) {
  std::lock_guard<std::mutex> lock(lock_);
  has_events_ = false;
  all_are_announced_ = true;
  AddNoticeLocked("changes will not be heard of: " + std::system_category().message(error));
}

std::vector<std::string> Health::Service::TakeNotices() {
  std::lock_guard<std::mutex> lock(lock_);
  uint64_t wakes = 0;
  // Fails when nobody has woken us.
  [[maybe_unused]] const ssize_t result = read(wake_fd_, &wakes, sizeof(wakes));
  return std::exchange(notices_, {});
}

ndk::ScopedAStatus Health::Service::Permit(HealthOperation operation) {
  if (operation == HealthOperation::kUnregisterCallback) return ndk::ScopedAStatus::ok();
  if (IsSupported(operation)) {
    // Many drivers announce a change of the level late or never: who asks is told what is.
    Refresh();
    std::lock_guard<std::mutex> lock(lock_);
    if (HasAnswer(operation, battery_)) return ndk::ScopedAStatus::ok();
  }
  return ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
}

void Health::Service::Wake() const {
  const uint64_t one = 1;
  // Fails when there have been so many that the counter is full, which wakes as well.
  [[maybe_unused]] const ssize_t result = write(wake_fd_, &one, sizeof(one));
}

std::vector<std::string> Health::Service::OnlyAnnouncedLocked(
    const std::vector<std::string>& listed) {
  if (all_are_announced_) announced_ = {listed.begin(), listed.end()};
  all_are_announced_ = !has_events_;
  std::vector<std::string> there;
  std::copy_if(listed.begin(), listed.end(), std::back_inserter(there),
               [this](const std::string& syspath) { return announced_.contains(syspath); });
  return there;
}

void Health::Service::NoticeFaultsLocked(const std::vector<Fault>& faults) {
  for (const Fault& fault : faults) {
    if (faults_told_.emplace(fault.supply, fault.file).second) AddNoticeLocked(NoticeOf(fault));
  }
}

void Health::Service::ForgetFaultsOfOthersLocked(const std::vector<std::string>& syspaths) {
  std::set<std::string> there;
  for (const std::string& syspath : syspaths) there.insert(SupplyName(syspath));
  std::erase_if(faults_told_, [&](const auto& fault) { return !there.contains(fault.first); });
}

void Health::Service::NoticeLackOfBatteryLocked(bool has_battery) {
  if (had_battery_ && !has_battery) AddNoticeLocked("this machine has no battery");
  had_battery_ = has_battery;
}

void Health::Service::AddNoticeLocked(std::string notice) {
  notices_.push_back(std::move(notice));
  Wake();
}

Health::Health(devices::DeviceObserver observer) : observer_(std::move(observer)) {}

Health::~Health() {
  Stop();
}

void Health::Start() {
  Stop();
  // Listens before it reads: what changes in between is read again.
  monitor_ = std::make_unique<PowerSupplyMonitor>();
  service_ = ndk::SharedRefBase::make<Service>(observer_);
  if (!monitor_->works()) service_->NoteEndOfEvents(monitor_->error());
  service_->Refresh();
  TellNotices();
  standin::Declare(devices::kHealthInstance);
  process_ = std::make_unique<standin::ServiceProcess>("health");
  process_->AddService(service_, devices::kHealthInstance);
  Tell(DeviceEvent::Kind::kStarted);
  thread_ = std::thread([this] { Watch(); });
}

void Health::Stop() {
  if (service_ == nullptr) return;
  service_->End();
  if (thread_.joinable()) thread_.join();
  // First, so that nobody waits for a service that the device declares and that will not come.
  standin::Undeclare(devices::kHealthInstance);
  if (process_ != nullptr) process_->Kill();
  process_ = nullptr;
  monitor_ = nullptr;
  service_ = nullptr;
  Tell(DeviceEvent::Kind::kDied);
}

Health::HealthInfo Health::info() const {
  return service_ != nullptr ? service_->info() : ToHealthInfo({});
}

size_t Health::callback_count() const {
  return service_ != nullptr ? service_->callback_count() : 0;
}

void Health::Watch() {
  pthread_setname_np(pthread_self(), "power_supply");
  while (!service_->ending()) {
    pollfd fds[] = {{.fd = service_->wake_fd(), .events = POLLIN, .revents = 0},
                    {.fd = monitor_->fd(), .events = POLLIN, .revents = 0}};  // ignored while -1
    if (poll(fds, std::size(fds), /*timeout=*/-1) < 0) continue;              // a signal
    if (fds[1].revents != 0) HearEvents();
    if ((fds[1].revents & (POLLHUP | POLLNVAL)) != 0) {
      monitor_->GiveUp(EPIPE);
      service_->NoteEndOfEvents(monitor_->error());
    }
    TellNotices();
  }
}

void Health::HearEvents() {
  while (const std::optional<SupplyEvent> event = monitor_->Next()) service_->Note(*event);
  // One reading for all of them, and one for a message that was nobody's.
  service_->Refresh();
}

void Health::Tell(DeviceEvent::Kind kind, std::string detail) const {
  if (observer_ != nullptr) {
    observer_({.kind = kind, .service = "health", .detail = std::move(detail)});
  }
}

void Health::TellNotices() {
  for (std::string& notice : service_->TakeNotices()) {
    Tell(DeviceEvent::Kind::kNotice, std::move(notice));
  }
}

}  // namespace norvik::qel::linux_device
