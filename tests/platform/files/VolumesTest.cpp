// Drives that answer late, never, or are not there.

#include <gtest/gtest.h>

#include <memory>

#include "platform/files/Volumes.h"
#include "tests/platform/threads/Gate.h"

namespace Vantrel {
namespace {

constexpr int64_t kForever = 60'000;

std::vector<TVolumeInformation> Volumes(int pCount) {
  std::vector<TVolumeInformation> volumes(static_cast<size_t>(pCount));
  for (int i = 0; i < pCount; ++i) volumes[static_cast<size_t>(i)].fFreeBytes = i;
  return volumes;
}

}  // namespace

// Each question waits for all the others: asked one after the other they would never end.
TEST(AskVolumes, AsksAllAtOnceAndKeepsTheirOrder) {
  const auto gate = std::make_shared<TGate>(20);
  const auto known = AskVolumes(
      Volumes(20),
      [gate](TVolumeInformation& pVolume) {
        gate->ArriveAndWait();
        pVolume.fTotalBytes = 100 + pVolume.fFreeBytes;
        return pVolume.fFreeBytes % 3 != 0;
      },
      kForever);
  ASSERT_EQ(known.size(), 13u);  // 20 without 0, 3, … 18
  for (size_t i = 0; i < known.size(); ++i) {
    EXPECT_EQ(known[i].fFreeBytes, static_cast<int64_t>(i / 2 * 3 + i % 2 + 1));
    EXPECT_EQ(known[i].fTotalBytes, 100 + known[i].fFreeBytes);
  }
  EXPECT_TRUE(AskVolumes({}, nullptr, kForever).empty());
}

TEST(AskVolumes, DoesNotWaitForWhoNeverAnswers) {
  const auto gate = std::make_shared<TGate>(2);
  const auto known = AskVolumes(
      Volumes(1),
      [gate](TVolumeInformation& pVolume) {
        gate->ArriveAndWait();
        pVolume.fTotalBytes = 1;
        return false;
      },
      1);
  ASSERT_EQ(known.size(), 1u);
  EXPECT_EQ(known[0].fTotalBytes, 0);
  gate->ArriveAndWait();  // the late answer finds its place still there
}

}  // namespace Vantrel
