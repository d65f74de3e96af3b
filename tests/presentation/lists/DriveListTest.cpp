// The list of drives: made-up drives, and those of this machine.

#include <gtest/gtest.h>

#include <filesystem>

#include "presentation/lists/DriveList.h"

namespace Vantrel::Presentation {

TEST(DriveList, ShowsADriveThatDoesNotAnswer) {
  TVolumeInformation answers;
  answers.fMountPoint = u"/";
  answers.fFileSystem = u"ext4";
  answers.fLabel = u"/dev/sda1";
  answers.fTotalBytes = 1000;
  answers.fUsedBytes = 250;
  answers.fFreeBytes = 700;  // 50 are kept back
  TVolumeInformation hangs;
  hangs.fMountPoint = u"/mnt/gone";
  hangs.fFileSystem = u"nfs4";
  const TList list = DriveList(std::vector{answers, hangs});
  ASSERT_EQ(list.fRows.size(), 2u);
  using TValues = std::vector<TMetaDataValue>;
  EXPECT_EQ(list.fRows[0].fValues,
            (TValues{u"/", u"/dev/sda1", u"ext4", int64_t{1000}, int64_t{250}, int64_t{700}, 250.0 / 950.0}));
  EXPECT_EQ(list.fRows[1].fValues, (TValues{u"/mnt/gone", u"", u"nfs4", {}, {}, {}, {}}));
  EXPECT_EQ(list.fRows[1].fKey, u"/mnt/gone");
}

TEST(DriveList, HoldsTheDriveOfTheCurrentFolder) {
  const TList list = DriveList();
  const std::filesystem::path root = std::filesystem::current_path().root_path();
  bool found = false;
  for (size_t i = 0; i < list.fRows.size(); ++i) {
    const auto path = std::get<std::u16string>(list.fRows[i].fValues[0]);
    if (i > 0) {
      EXPECT_LT(std::get<std::u16string>(list.fRows[i - 1].fValues[0]), path);
    }
    if (path != root.u16string()) continue;
    found = true;
    const std::filesystem::space_info space = std::filesystem::space(root);
    EXPECT_EQ(std::get<int64_t>(list.fRows[i].fValues[3]), static_cast<int64_t>(space.capacity));
    // Others write meanwhile.
    const auto tolerance = static_cast<double>(space.capacity) / 50;
    EXPECT_NEAR(static_cast<double>(std::get<int64_t>(list.fRows[i].fValues[5])), static_cast<double>(space.available),
                tolerance);
    EXPECT_NEAR(static_cast<double>(std::get<int64_t>(list.fRows[i].fValues[4])),
                static_cast<double>(space.capacity - space.free), tolerance);
  }
  EXPECT_TRUE(found) << root;
}

}  // namespace Vantrel::Presentation
