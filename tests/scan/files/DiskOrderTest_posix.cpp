// Which disks rotate, by what the system writes of its devices; the order of files on a disk.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/text/Text.h"
#include "scan/files/DiskOrder.h"
#include "scan/files/DiskOrder_posix.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel::Storages {

TEST(DiskOrder, ADiskRotatesIfTheSystemSaysSo) {
  const Testing::TTemporaryFolder folder;
  // As the system does it: a partition's folder lies in that of its disk, and a link leads to what kind of disk it is.
  const auto add = [&](const std::string& pDevice, const char* pAnswer, const char* pBus) {
    std::filesystem::create_directories(folder.Path() / pDevice / "queue");
    std::filesystem::create_directories(folder.Path() / pDevice / "device");
    folder.Put(pDevice + "/queue/rotational", pAnswer);
    std::filesystem::create_directory_symlink(std::string("/sys/bus/") + pBus,
                                              folder.Path() / pDevice / "device/subsystem");
  };
  const auto addPart = [&](const std::string& pVolume, const std::string& pPart) {
    std::filesystem::create_directories(folder.Path() / pVolume / "slaves");
    std::filesystem::create_directory_symlink(folder.Path() / pPart, folder.Path() / pVolume / "slaves" / pPart);
  };
  add("sda", "1\n", "scsi");
  add("nvme", "0\n", "nvme");
  add("vda", "1\n", "virtio");
  std::filesystem::create_directory(folder.Path() / "sda/sda1");
  folder.Put("sda/sda1/partition", "1\n");
  std::filesystem::create_directory_symlink("sda/sda1", folder.Path() / "8:1");
  addPart("mixed", "nvme");
  addPart("mixed", "8:1");
  addPart("virtual", "vda");
  for (const char* device : {"sda", "sda/sda1", "8:1", "mixed"})
    EXPECT_TRUE(DeviceRotates(folder.Path() / device)) << device;
  for (const char* device : {"nvme", "vda", "virtual", "none"})
    EXPECT_FALSE(DeviceRotates(folder.Path() / device)) << device;
}

TEST(DiskOrder, AFileHasAPlace) {
  const Testing::TTemporaryFolder folder;
  folder.Put("empty", "");
  struct stat info {};
  ASSERT_EQ(stat((folder.Path() / "empty").c_str(), &info), 0);
  EXPECT_EQ(PlaceOfFile(folder.File("empty")), info.st_ino) << "without an extent, its number";
  EXPECT_EQ(PlaceOfFile(folder.File("missing")), std::nullopt);
  EXPECT_EQ(PlaceOfFile(folder.File("")), std::nullopt) << "a folder";
}

}  // namespace Vantrel::Storages
