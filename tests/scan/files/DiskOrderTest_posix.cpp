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
  const auto put = [&](const std::string& pDevice, const char* pAnswer) {
    std::filesystem::create_directories(folder.Path() / pDevice / "queue");
    folder.Put(pDevice + "/queue/rotational", pAnswer);
  };
  put("sda", "1\n");
  put("nvme", "0\n");
  put("dm", "1\n");
  std::filesystem::create_directory(folder.Path() / "sda" / "sda1");
  // The system's folder of devices holds links, a partition's into the folder of its disk.
  for (const auto& [link, target] : {std::pair("8:0", "sda"), {"8:1", "sda/sda1"}, {"259:0", "nvme"}, {"253:0", "dm"}})
    std::filesystem::create_directory_symlink(target, folder.Path() / link);
  const std::string devices = folder.Path();
  EXPECT_TRUE(DeviceRotates(devices, 8, 0));
  EXPECT_TRUE(DeviceRotates(devices, 8, 1));
  EXPECT_TRUE(DeviceRotates(devices, 253, 0));
  EXPECT_FALSE(DeviceRotates(devices, 259, 0));
  EXPECT_FALSE(DeviceRotates(devices, 0, 42)) << "no device, as for a share";
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
