#include <gtest/gtest.h>

#include "platform/MountTable.h"

namespace Kiv {

TEST(MountTable, TheLongestAndLastMountPointHoldsThePath) {
  const std::string table =
      "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
      "30 22 0:5 / /mnt/my\\040disk rw - fuse.x my\\134source rw\n"
      "31 22 8:2 / /mnt rw,noatime shared:7 master:2 - xfs /dev/sdb1 rw\n"
      "32 22 0:9 / /mnt rw - tmpfs tmpfs rw\n"
      "damaged\n";
  const std::vector<TMount> mounts = ParseMountTable(table);
  ASSERT_EQ(mounts.size(), 4u);
  EXPECT_EQ(mounts[2].fId, 31u);
  EXPECT_EQ(mounts[2].fDevice, "8:2");
  const struct {
    const char* fPath;
    const char* fMountPoint;
    const char* fSource;
  } cases[] = {{"/", "/", "/dev/sda1"},
               {"/mnt2/x", "/", "/dev/sda1"},
               {"/mnt", "/mnt", "tmpfs"},
               {"/mnt/my", "/mnt", "tmpfs"},
               {"/mnt/my disk/a", "/mnt/my disk", "my\\source"}};
  for (const auto& each : cases) {
    const TMount* mount = FindMount(mounts, each.fPath);
    ASSERT_NE(mount, nullptr);
    EXPECT_EQ(mount->fMountPoint, each.fMountPoint) << each.fPath;
    EXPECT_EQ(mount->fSource, each.fSource) << each.fPath;
  }
  EXPECT_EQ(FindMount({}, "/"), nullptr);
}

}  // namespace Kiv
