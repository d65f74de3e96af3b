// A thread that hangs in a system call, interrupted by another.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/threads/InterruptibleThread.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {
namespace {

// Opening a pipe that has no writer hangs for ever.
TEST(InterruptibleThread, AHangingCallFailsOnceItIsInterrupted) {
  const Testing::TTemporaryFolder folder;
  const std::string pipe = (folder.Path() / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::atomic<TInterruptibleThread*> hanging{nullptr};
  std::atomic<bool> ended{false};
  bool wasInterrupted = true;
  std::thread thread([&] {
    EXPECT_FALSE(TInterruptibleThread::IsCurrentInterrupted());
    {
      TInterruptibleThread self;
      wasInterrupted = TInterruptibleThread::IsCurrentInterrupted();
      hanging = &self;
      EXPECT_EQ(open(pipe.c_str(), O_RDONLY | O_CLOEXEC), -1);
      EXPECT_EQ(errno, EINTR);
      EXPECT_TRUE(TInterruptibleThread::IsCurrentInterrupted());
      ended = true;
      while (hanging) std::this_thread::yield();  // until the other thread has let go of it
    }
    EXPECT_FALSE(TInterruptibleThread::IsCurrentInterrupted());
  });
  while (!hanging) std::this_thread::yield();
  // The call may not have begun yet when it is interrupted, so it is interrupted again and again.
  for (int i = 0; !ended && i < 60'000; ++i) {
    hanging.load()->Interrupt();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  while (!ended) {  // a failure, not a hang: a writer lets the call end
    close(open(pipe.c_str(), O_WRONLY | O_NONBLOCK));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  hanging = nullptr;
  thread.join();
  EXPECT_FALSE(wasInterrupted);
}

}  // namespace
}  // namespace Vantrel
