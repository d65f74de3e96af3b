// Reading the table of mounts; which of them are drives.

#include <gtest/gtest.h>

#include "platform/files/MountTable.h"

namespace Vantrel {

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

TEST(MountTable, DrivesAreWhatAPersonTakesForThem) {
  const struct {
    const char* fWhat;
    std::vector<TMount> fMounts;
    std::vector<uint64_t> fDrives;  // ids
  } cases[] = {
      {"disks once, by path; nothing in memory, and no image of a program",
       {{1, 0, "8:1", "/", "/", "ext4", "/dev/sda1"},
        {2, 1, "0:5", "/", "/proc", "proc", "proc"},
        {3, 1, "0:6", "/", "/tmp", "tmpfs", "tmpfs"},
        {4, 1, "8:2", "/", "/media/me/disk", "ntfs3", "/dev/sdb1"},
        {5, 1, "8:2", "/", "/disk", "ntfs3", "/dev/sdb1"},
        {6, 1, "8:1", "/srv/data", "/data", "ext4", "/dev/sda1"},
        {7, 1, "7:0", "/", "/snap/x/1", "squashfs", "/dev/loop0"},
        {8, 1, "8:3", "/", "/boot", "vfat", "/dev/sda2"}},
       {1, 8, 5}},
      {"other machines, but not what user space only shows",
       {{1, 0, "8:1", "/", "/", "ext4", "/dev/sda1"},
        {2, 1, "0:40", "/", "/mnt/b", "nfs4", "server:/b"},
        {3, 1, "0:41", "/", "/mnt/a", "cifs", "//server/a"},
        {4, 1, "0:42", "/", "/mnt/c", "fuse.sshfs", "me@host:"},
        {5, 1, "0:43", "/", "/run/user/1/doc", "fuse.portal", "portal"},
        {6, 1, "0:44", "/", "/sys/fs/fuse/connections", "fusectl", "fusectl"},
        {7, 1, "0:45", "/", "/net", "autofs", "/etc/auto.net"},
        {8, 1, "8:9", "/", "/win", "fuseblk", "/dev/sdc1"}},
       {1, 3, 2, 4, 8}},
      {"the volumes of one device are one drive, the datasets of a pool are several",
       {{1, 0, "0:30", "/@", "/", "btrfs", "/dev/sda2"},
        {2, 1, "0:30", "/@home", "/home", "btrfs", "/dev/sda2"},
        {3, 1, "0:31", "/", "/tank", "zfs", "tank"},
        {4, 3, "0:32", "/", "/tank/x", "zfs", "tank/x"}},
       {1, 3, 4}},
      {"in a container: the root, whatever it is, and no single bound file",
       {{1, 0, "0:50", "/", "/", "overlay", "overlay"},
        {2, 1, "254:1", "/docker/hosts", "/etc/hosts", "ext4", "/dev/vda1"}},
       {1}},
      {"what is covered by another mount cannot be seen",
       {{1, 0, "8:1", "/", "/", "ext4", "/dev/sda1"},
        {2, 1, "8:2", "/", "/mnt/deep", "ext4", "/dev/sdb1"},
        {3, 1, "8:3", "/", "/mnt", "ext4", "/dev/sdc1"}},
       {1, 3}},
      {"no table", {}, {}},
  };
  for (const auto& each : cases) {
    std::vector<uint64_t> drives;
    for (const TMount& drive : DriveMounts(each.fMounts)) drives.push_back(drive.fId);
    EXPECT_EQ(drives, each.fDrives) << each.fWhat;
  }
}

}  // namespace Vantrel
