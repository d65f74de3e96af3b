// Runs as volumes and drivers tell them, sound and damaged.

#include <gtest/gtest.h>

#include "scan/ntfs/DataRuns.h"
#include "tests/support/MadeNtfs.h"

namespace Vantrel::Ntfs {
namespace {

TBytes BytesOf(const Testing::TImage& pBytes) {
  return std::as_bytes(std::span(pBytes));
}

TEST(DataRuns, AreReadFromMappingPairs) {
  // 0x18 clusters from 0x5634; 0x20 clusters 0x80 before that; a hole of 3; 1 cluster, 2 behind the second run.
  const Testing::TImage pairs = {0x21, 0x18, 0x34, 0x56, 0x21, 0x20, 0x80, 0xFF, 0x01, 0x03, 0x11, 0x01, 0x02, 0x00};
  TDataRuns runs;
  ASSERT_TRUE(ParseMappingPairs(BytesOf(pairs), runs));
  EXPECT_EQ(runs.Runs(), (std::vector<TDataRun>{{0x5634, 0x18}, {0x55B4, 0x20}, {TDataRun::kHole, 3}, {0x55B6, 1}}));
  EXPECT_EQ(runs.GetTotalLength(), 0x18 + 0x20 + 3 + 1);
}

TEST(DataRuns, DamagedMappingPairsEndWhereTheDamageBegins) {
  const struct {
    const char* fWhat;
    Testing::TImage fPairs;
    size_t fRuns;
  } cases[] = {
      {"no end marker", {0x11, 0x01, 0x05}, 1},
      {"nothing at all", {}, 0},
      {"a run beyond the bytes", {0x11, 0x01, 0x05, 0x44, 0x01, 0x02}, 1},
      {"a length of nine bytes", {0x19, 1, 0, 0, 0, 0, 0, 0, 0, 0, 5, 0}, 0},
      {"no length", {0x10, 0x05, 0x00}, 0},
      {"a length of zero", {0x11, 0x00, 0x05, 0x00}, 0},
      {"a negative length", {0x11, 0xFF, 0x05, 0x00}, 0},
      {"a place before the volume", {0x11, 0x01, 0x05, 0x11, 0x01, 0xF0, 0x00}, 1},
      {"a length beyond any volume", {0x18, 0, 0, 0, 0, 0, 0, 0, 0x7F, 0x05, 0x00}, 0},
      {"a place beyond any volume", {0x81, 0x01, 0, 0, 0, 0, 0, 0, 0, 0x7F, 0x00}, 0},
  };
  for (const auto& each : cases) {
    TDataRuns runs;
    EXPECT_FALSE(ParseMappingPairs(BytesOf(each.fPairs), runs)) << each.fWhat;
    EXPECT_EQ(runs.Runs().size(), each.fRuns) << each.fWhat;
  }
}

}  // namespace
}  // namespace Vantrel::Ntfs
