// Tables of mounts, and which of them do not count.

#include <gtest/gtest.h>

#include <set>

#include "scan/files/DuplicateMounts.h"

namespace Vantrel::Enumerators {
namespace {

struct TShown {
  uint64_t fId;
  const char* fDevice;
  const char* fRoot;
  const char* fMountPoint;
};

struct TCase {
  const char* fWhat;
  const char* fScanRoot;
  std::vector<TShown> fMounts;
  std::set<uint64_t> fDuplicates;
};

TEST(DuplicateMounts, WhatIsNotEntered) {
  const TShown rootFs{1, "8:1", "/", "/"};
  const TCase cases[] = {
      {"different file systems", "/", {rootFs, {2, "8:2", "/", "/home"}, {3, "0:5", "/", "/tmp"}}, {}},
      {"a folder bound inside the scan", "/", {rootFs, {2, "8:1", "/data", "/mnt/view"}}, {2}},
      {"the bound folder lies outside the scan", "/mnt", {rootFs, {2, "8:1", "/data", "/mnt/view"}}, {}},
      {"the view lies outside the scan", "/data", {rootFs, {2, "8:1", "/data", "/mnt/view"}}, {}},
      {"the view is the scan itself", "/mnt/view", {rootFs, {2, "8:1", "/data", "/mnt/view"}}, {}},
      {"a name that only begins like the folder", "/data", {rootFs, {2, "8:1", "/data2", "/data/view"}}, {}},
      {"the whole bound beneath itself", "/", {rootFs, {2, "8:1", "/", "/mnt/all"}}, {2}},
      // What the ancestor shows beyond the scan is new; the scan's own folder is told by its identity.
      {"an ancestor bound inside the scan", "/data", {rootFs, {2, "8:1", "/", "/data/all"}}, {}},
      {"a device mounted twice: the shorter path counts",
       "/",
       {rootFs, {2, "8:2", "/", "/media/disk"}, {3, "8:2", "/", "/disk"}},
       {2}},
      {"of equal length the first in byte order", "/", {rootFs, {2, "8:2", "/", "/b"}, {3, "8:2", "/", "/a"}}, {2}},
      {"the one that shows more counts, whatever its path",
       "/",
       {rootFs, {2, "8:2", "/part", "/p"}, {3, "8:2", "/", "/a/long/way"}},
       {2}},
      {"two sub-volumes show different folders", "/", {rootFs, {2, "0:9", "/@a", "/a"}, {3, "0:9", "/@b", "/b"}}, {}},
      {"the other road is hidden under a mount",
       "/",
       {rootFs, {2, "8:1", "/data/deep", "/mnt/view"}, {3, "0:7", "/", "/data"}},
       {}},
      {"the other road's own mount is hidden by a later one on the same point",
       "/",
       {rootFs, {2, "8:2", "/", "/a"}, {3, "8:2", "/", "/long"}, {4, "0:7", "/", "/a"}},
       {}},
      {"the other road's own mount is covered from above",
       "/",
       {rootFs, {2, "8:2", "/", "/a/b"}, {3, "0:7", "/", "/a"}, {4, "8:2", "/", "/long/way"}},
       {}},
      {"the other road leads through a mount that is not entered",
       "/",
       {rootFs, {2, "8:1", "/data", "/data/cover"}, {3, "8:1", "/data/cover/x", "/view"}},
       {2}},
      {"the other road comes upon the scan's root again",
       "/data",
       {rootFs, {2, "8:1", "/", "/data/all"}, {3, "8:1", "/data/cover/x", "/data/cover"}},
       {}},
      {"one of three is enough",
       "/",
       {rootFs, {2, "8:2", "/", "/a"}, {3, "8:2", "/", "/bb"}, {4, "8:2", "/x", "/ccc"}},
       {3, 4}},
  };
  for (const TCase& test : cases) {
    std::vector<TMount> mounts;
    for (const TShown& shown : test.fMounts) {
      const TMount* parent = FindMount(mounts, shown.fMountPoint);  // as each is mounted on what is there by then
      mounts.push_back({shown.fId, parent == nullptr ? 0 : parent->fId, shown.fDevice, shown.fRoot, shown.fMountPoint,
                        "ext4", "/dev/disk"});
    }
    const auto duplicates = DuplicateMounts(mounts, test.fScanRoot);
    EXPECT_EQ(test.fDuplicates, std::set<uint64_t>(duplicates.begin(), duplicates.end())) << test.fWhat;
  }
}

}  // namespace
}  // namespace Vantrel::Enumerators
