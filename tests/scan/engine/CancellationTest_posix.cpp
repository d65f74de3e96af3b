// Cancelling reaches a system call that hangs.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/system/Errors.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel::ScanEngine {
namespace {

using namespace Vantrel::Testing;

// A listing that hangs as one of a share does whose server is gone: opening a pipe without a writer never ends.
class THangingEnumerator : public TMemoryEnumerator {
 public:
  THangingEnumerator(std::shared_ptr<TMemoryStorage> pStorage, std::string pPipe, std::atomic<bool>& pHangs)
      : TMemoryEnumerator(pStorage, &pStorage->Top(), u"/memory", 0), fPipe(std::move(pPipe)), fHangs(pHangs) {}
  bool Next() override {
    fHangs = true;
    if (open(fPipe.c_str(), O_RDONLY | O_CLOEXEC) < 0) throw EOSError(static_cast<uint32_t>(errno), "Next", u"/memory");
    return false;
  }

 private:
  const std::string fPipe;
  std::atomic<bool>& fHangs;
};

TEST(Cancellation, ReachesACallThatHangs) {
  const TTemporaryFolder folder;
  const std::string pipe = (folder.Path() / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::atomic<bool> hangs{false};
  struct TServices : TMemoryServices {
    std::function<TRef<IHierarchicalEnumerator>()> fOpen;
    TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string&, uint32_t) override { return fOpen(); }
  };
  const auto services = MakeRef<TServices>();
  const auto storage = TMemoryStorage::Create();
  services->fOpen = [&] { return MakeRef<THangingEnumerator>(storage, pipe, hangs); };
  const auto root = MakeRef<TCustomUnixRoot>(u"/memory", u"", services, std::make_shared<TGlobalOptions>(), nullptr);
  root->Scan();
  while (!hangs) std::this_thread::yield();
  // As the program does: a call that has not begun yet is interrupted the next time.
  for (int i = 0; i < 3'000 && !root->WaitForScan(10); ++i) root->CancelScan();
  const bool ended = root->WaitForScan(0);
  while (!root->WaitForScan(1)) close(open(pipe.c_str(), O_WRONLY | O_NONBLOCK));  // a failure, not a hang
  EXPECT_TRUE(ended);
  EXPECT_EQ(rsCancelled, root->GetState() & (rsCancelled | rsFinished | rsHasErrors));
  root->Dispose();
}

}  // namespace
}  // namespace Vantrel::ScanEngine
