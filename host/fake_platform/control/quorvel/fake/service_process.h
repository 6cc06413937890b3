// Another process of the pretended device: what lives in it is remote for everybody else.
#pragma once

#include <android/binder_interface_utils.h>
#include <android/hidl/base/1.0/IBase.h>

#include <memory>
#include <string>

namespace norvik::qel::fake {

class Process;

// A process that offers services. Calls on them run on its own threads; it holds references to
// the callbacks it is given until it dies.
//
// Threads: any.
class ServiceProcess {
 public:
  explicit ServiceProcess(const std::string& name);
  // Kills it if nobody has.
  ~ServiceProcess();
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;

  // Registers `service` under an instance name, as a service's main() does. False when the process
  // is dead.
  bool AddService(const std::shared_ptr<ndk::ICInterface>& service, const std::string& instance);
  // The same for a HIDL service, under a name such as "default" for each of its interfaces.
  bool AddHidlService(const ::android::sp<::android::hidl::base::V1_0::IBase>& service,
                      const std::string& name = "default");

  // Its end, as sudden as a crash: its names leave the service manager, calls under way fail, its
  // references are dropped, and everybody who linked to one of its objects gets a notice. Returns
  // when all that is on its way; notices arrive on the receivers' binder threads.
  void Kill();
  bool alive() const;

 private:
  const std::shared_ptr<Process> process_;
};

}  // namespace norvik::qel::fake
