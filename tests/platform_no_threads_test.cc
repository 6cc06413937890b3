// A host program that has not started its binder threads hears of nothing.
#include <android/binder_process.h>
#include <gtest/gtest.h>

#include "tests/support/battery_fixture.h"

namespace norvik::qel {
namespace {

TEST(NoBinderThreadsTest, NothingArrivesBeforeTheThreadPoolIsStarted) {
  simulated::Health health;
  health.Start();
  Seen<Call> seen;
  void* handle = nullptr;
  InitBatteryInfo(&handle);
  EXPECT_FALSE(ABinderProcess_isThreadPoolStarted());
  ASSERT_EQ(RegisterBatteryLevelCallback(handle, Client<0>, &seen), 0);
  EXPECT_TRUE(IsLinked(handle)) << "calls out work";
  EXPECT_EQ(GetBatteryLevel(handle, true), -1);
  health.Kill();
  health.SetLevel(9);
  health.Start();
  EXPECT_FALSE(standin::WaitUntilDelivered(std::chrono::milliseconds(20)));
  EXPECT_TRUE(IsLinked(handle)) << "the death is not heard of";

  // A second object with something to hear: it need not wait for the first.
  void* other = nullptr;
  InitBatteryInfo(&other);
  ASSERT_EQ(RegisterBatteryLevelCallback(other, Client<1>, &seen), 0);
  {
    standin::HoldDeliveries hold(standin::Delivery::kOneway);
    ABinderProcess_startThreadPool();
    EXPECT_TRUE(hold.WaitForHeld(2));
  }
  EXPECT_TRUE(standin::WaitUntilDelivered());
  EXPECT_TRUE(Eventually([&] { return GetBatteryLevel(handle, true) == 9; }));
  DeinitBatteryInfo(&other);
  DeinitBatteryInfo(&handle);
}

}  // namespace
}  // namespace norvik::qel
