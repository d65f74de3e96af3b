// Which folder a scan waits for.

#include <gtest/gtest.h>

#include <thread>

#include "platform/text/Text.h"
#include "scan/engine/Workplaces.h"
#include "tests/support/MemoryRoot.h"

namespace Vantrel::ScanEngine {
namespace {

using namespace Vantrel::Testing;

// Two workers stand in folders of their own, while the folder that ended last is a third one.
TEST(Workplaces, TheFolderThatAWorkerIsInsideIsNamedAndNotTheLastOneThatEnded) {
  TMemoryRoot scanned;
  scanned.fOptions->MaximumThreads = 2;
  TGate gate;
  TMemoryEntry& held = scanned.Top().AddFolder(u"held");
  held.AddFile(u"f", 1);
  held.fGate = &gate;
  scanned.Top().AddFolder(u"quick").AddFile(u"f", 1);
  scanned.Begin();
  gate.WaitUntilReached();
  while (scanned.Root().GetProgress().fFolders < 2) std::this_thread::yield();
  // The other worker ends what it is in; then this one is left.
  TScanProgress progress = scanned.Root().GetProgress();
  while (progress.fLongestListed != u"/memory/held") progress = scanned.Root().GetProgress();
  EXPECT_GE(progress.fLongestListedElapsed, 0);
  gate.Open();
  ASSERT_TRUE(scanned.Root().WaitForScan(kForever));
  held.fGate = nullptr;
  EXPECT_EQ(u"", scanned.Root().GetProgress().fLongestListed);
}

TEST(Workplaces, TimesCountFromTheFirstLook) {
  TMemoryRoot scanned;
  for (const auto* name : {u"a", u"b"}) scanned.Top().AddFolder(name);
  scanned.Scan();
  const std::vector<TRef<IFolderData>> folders = scanned.Root().GetTopFolder()->FindSubFolders();
  ASSERT_EQ(folders.size(), 2u);
  IFolderData& a = *folders[0];
  IFolderData& b = *folders[1];
  TWorkplaces places;
  auto told = [&](int64_t pNow) {
    const TListedFolder longest = places.GetLongest(pNow);
    return (longest.fFolder ? ToUtf8(longest.fFolder->GetObjectName()) : "-") + " " + std::to_string(longest.fElapsed);
  };
  EXPECT_EQ(told(100), "- 0");
  TWorkplace* first = places.Take();
  TWorkplace* second = places.Take();
  ASSERT_NE(first, second);
  EXPECT_EQ(told(200), "- 0");
  first->Enter(a);
  EXPECT_EQ(told(1000), "a 0");
  second->Enter(b);
  EXPECT_EQ(told(1500), "a 500");
  first->Leave();
  EXPECT_EQ(told(4000), "b 2500");
  first->Enter(a);  // again: its time begins anew
  second->Leave();
  EXPECT_EQ(told(5000), "a 0");
  EXPECT_EQ(told(5700), "a 700");
  first->Leave();
  places.Give(first);
  EXPECT_EQ(places.Take(), first);
  EXPECT_EQ(told(6000), "- 0");
}

// The thread sanitizer finds what races here.
TEST(Workplaces, AFolderIsReadWhileItsJobLeaves) {
  TMemoryRoot scanned;
  scanned.Top().AddFolder(u"a");
  scanned.Scan();
  const TRef<IFolderData> folder = scanned.Root().GetTopFolder()->FindSubFolders().at(0);
  TWorkplaces places;
  std::atomic<bool> end{false};
  int64_t found = 0;
  std::thread reader([&] {
    for (int64_t now = 0; !end || found == 0; ++now) found += places.GetLongest(now).fFolder == folder;
  });
  TWorkplace* place = places.Take();
  for (int i = 0; i < 20'000; ++i) const TInsideFolder inside(place, *folder);
  end = true;
  {
    const TInsideFolder inside(place, *folder);
    while (places.GetLongest(0).fFolder != folder) std::this_thread::yield();
    std::this_thread::yield();
    reader.join();
  }
  places.Give(place);
  EXPECT_GT(found, 0);
}

}  // namespace
}  // namespace Vantrel::ScanEngine
