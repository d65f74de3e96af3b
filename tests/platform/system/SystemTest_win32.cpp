// What the system tells, on each platform.

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "platform/system/Errors.h"
#include "platform/system/OwnerNames.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

namespace Vantrel {

TEST(PathsOnWindows, AbsoluteExtendedAndUsualForms) {
  EXPECT_EQ(AbsolutePath(u"C:/a/.\\b\\..\\c\\"), u"C:\\a\\c");
  EXPECT_EQ(AbsolutePath(u"C:\\.."), u"C:\\");
  EXPECT_EQ(AbsolutePath(u""), u"");
  EXPECT_EQ(Win32::ExtendedPath(u"C:\\a\\..\\b"), u"\\\\?\\C:\\b");
  EXPECT_EQ(Win32::ExtendedPath(u"\\\\server\\share\\a"), u"\\\\?\\UNC\\server\\share\\a");
  EXPECT_EQ(Win32::WithoutExtendedPrefix(u"\\\\?\\UNC\\server\\share\\a"), u"\\\\server\\share\\a");
  EXPECT_EQ(Win32::WithoutExtendedPrefix(u"\\\\?\\Volume{1}\\"), u"\\\\?\\Volume{1}\\");
}

TEST(PathsOnWindows, LongPathsResolveAndKnowTheirVolumeAndOwner) {
  const std::u16string start = AbsolutePath(std::filesystem::temp_directory_path().u16string()) + u"\\vantrel-long";
  std::u16string deep = start;
  CreateDirectoryW(Win32::Wide(Win32::ExtendedPath(deep)), nullptr);
  for (int level = 0; level < 8; ++level) {
    deep += u'\\' + std::u16string(60, static_cast<char16_t>(u'a' + level));
    ASSERT_TRUE(CreateDirectoryW(Win32::Wide(Win32::ExtendedPath(deep)), nullptr)) << GetLastError();
  }
  // Wine names no opened file beyond 260 characters; the answer is then empty, never a wrong one.
  EXPECT_EQ(ResolvedPath(start + u"\\."), ResolvedPath(start));
  EXPECT_FALSE(ResolvedPath(start).empty());
  const std::u16string resolved = ResolvedPath(deep);
  if (!resolved.empty()) {
    EXPECT_EQ(ToUtf8(resolved), ToUtf8(ResolvedPath(start) + deep.substr(start.size())));
  }
  EXPECT_EQ(ResolvedPath(deep + u"\\none"), u"");
  TVolumeInformation volume;
  ASSERT_TRUE(GetVolumeInformationOfPath(deep, volume));
  EXPECT_TRUE(SamePath(volume.fMountPoint, start.substr(0, 3), u'\\'));
  EXPECT_GE(volume.fTotalBytes, volume.fFreeBytes);
  EXPECT_GT(volume.fClusterSize, 0);
  EXPECT_FALSE(GetVolumeInformationOfPath(deep + u"\\none", volume));
  EXPECT_FALSE(OwnerNameOfPath(deep).empty());
  EXPECT_EQ(OwnerNameOfPath(deep + u"\\none"), u"");
  for (; deep.size() >= start.size(); deep.resize(deep.rfind(u'\\')))
    EXPECT_TRUE(RemoveDirectoryW(Win32::Wide(Win32::ExtendedPath(deep))));
}

TEST(ErrorsOnWindows, KindsAndText) {
  EXPECT_EQ(ClassifyOSError(ERROR_ACCESS_DENIED), TErrorKind::ekAccessDenied);
  EXPECT_EQ(ClassifyOSError(ERROR_BAD_NETPATH), TErrorKind::ekNotFound);
  EXPECT_EQ(OSErrorText(0x3FFFFFFF), "Unknown error 1073741823");
  EXPECT_NE(OSErrorText(ERROR_ACCESS_DENIED).back(), '.');
}

}  // namespace Vantrel
