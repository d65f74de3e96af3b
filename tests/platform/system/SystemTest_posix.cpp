// What the system tells, on each platform.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <vector>

#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "platform/system/Errors.h"
#include "platform/system/FileTime.h"
#include "platform/system/OwnerNames.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {

namespace {

using Vantrel::Testing::TTemporaryFolder;

std::string Resolved(const std::string& pPath) {
  return ToNativeBytes(ResolvedPath(FromNativeBytes(pPath)));
}

}  // namespace

TEST(PathsOnLinux, AbsolutePathWorksOnTheText) {
  const std::string current = std::filesystem::current_path().string();
  auto absolute = [](std::u16string_view pPath) { return ToNativeBytes(AbsolutePath(pPath)); };
  EXPECT_EQ(absolute(u"/a/./b//../c/"), "/a/c");
  EXPECT_EQ(absolute(u"/../.."), "/");
  EXPECT_EQ(absolute(u"."), current);
  EXPECT_EQ(absolute(u"x/\xDCFF"), current + "/x/\xFF");
  EXPECT_EQ(absolute(u""), "");
}

TEST(PathsOnLinux, ResolvesLinksAlsoBeyondTheLongestPath) {
  TTemporaryFolder folder;
  const std::string start = folder.Path().string();
  std::string deep = start;
  const int home = open(".", O_PATH | O_CLOEXEC);
  ASSERT_EQ(chdir(start.c_str()), 0);
  for (int level = 0; level < 100; ++level) {
    const std::string name(60, static_cast<char>('a' + level % 26));
    ASSERT_EQ(mkdir(name.c_str(), 0755), 0);
    ASSERT_EQ(chdir(name.c_str()), 0);
    deep += '/' + name;
  }
  ASSERT_EQ(symlink("../.", "up"), 0);
  ASSERT_EQ(symlink(start.c_str(), "home"), 0);
  ASSERT_EQ(symlink("loop", "loop"), 0);
  close(open("file", O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
  ASSERT_GT(deep.size(), 4096u + 1000);
  EXPECT_EQ(Resolved(deep + "//./"), deep);
  EXPECT_EQ(Resolved(deep + "/up/.."), deep.substr(0, deep.size() - 2 * 61));
  EXPECT_EQ(Resolved(deep + "/home"), start);
  EXPECT_EQ(Resolved(deep + "/file"), deep + "/file");
  for (const char* missing : {"/file/", "/loop", "/missing", "/home/missing", "/file/.."})
    EXPECT_EQ(Resolved(deep + missing), "") << missing;

  TVolumeInformation atStart;
  TVolumeInformation deepDown;
  EXPECT_TRUE(GetVolumeInformationOfPath(FromNativeBytes(start), atStart));
  EXPECT_TRUE(GetVolumeInformationOfPath(FromNativeBytes(deep), deepDown));
  EXPECT_EQ(deepDown.fMountPoint, atStart.fMountPoint);
  EXPECT_EQ(deepDown.fTotalBytes, atStart.fTotalBytes);
  ASSERT_EQ(fchdir(home), 0);
  close(home);
}

TEST(PathsOnLinux, ShortPathsResolve) {
  TTemporaryFolder folder;
  const std::string start = folder.Path().string();
  ASSERT_EQ(symlink(".", (start + "/l\xFF").c_str()), 0);
  EXPECT_EQ(Resolved(start + "/l\xFF/l\xFF"), start);
  EXPECT_EQ(Resolved(start + "/none"), "");
  EXPECT_EQ(ResolvedPath(u""), u"");
  EXPECT_EQ(ResolvedPath(u"/"), u"/");
}

TEST(VolumesOnLinux, ProcIsAVolumeOfItsOwn) {
  TVolumeInformation volume;
  ASSERT_TRUE(GetVolumeInformationOfPath(u"/proc/self", volume));
  EXPECT_EQ(volume.fMountPoint, u"/proc");
  EXPECT_EQ(volume.fFileSystem, u"proc");
  EXPECT_FALSE(GetVolumeInformationOfPath(u"/proc/none", volume));
}

// 1'000'000'000 is 2001-09-09 01:46:40 UTC, in daylight-saving time; 951'782'400 is 2000-02-29 00:00:00 UTC.
TEST(FileTimeOnLinux, LocalTime) {
  setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
  tzset();
  EXPECT_EQ(FormatIsoLocal(TKivFileTime::FromUnix(1'000'000'000, 999'999'999)), "2001-09-08 21:46:40");
  EXPECT_EQ(FormatIsoLocal(TKivFileTime::FromUnix(951'782'400, 0)), "2000-02-28 19:00:00");
  EXPECT_EQ(FormatIsoLocal(TKivFileTime::FromUnix(-1, 999'999'900)), "1969-12-31 18:59:59");
  EXPECT_EQ(FormatShortDate(TKivFileTime::FromUnix(951'782'400, 0)), "02/28/00");  // the C locale
  EXPECT_EQ(FormatLongTime(TKivFileTime::FromUnix(951'782'400, 0)), "19:00:00");
  EXPECT_EQ(FormatIsoLocal({}) + FormatShortDate({}) + FormatLongTime({}), "");
  EXPECT_FALSE(TKivFileTime::FromUnix(-11'644'473'601, 0).IsSet());
  unsetenv("TZ");
  tzset();
  const int64_t unixNow = (TKivFileTime::Now().fTicks - TKivFileTime::kUnixEpoch) / TKivFileTime::kTicksPerSecond;
  EXPECT_NEAR(static_cast<double>(unixNow), static_cast<double>(time(nullptr)), 2);
}

TEST(ErrorsOnLinux, KindsAndText) {
  EXPECT_EQ(ClassifyOSError(EPERM), TErrorKind::ekAccessDenied);
  EXPECT_EQ(ClassifyOSError(ENOTDIR), TErrorKind::ekNotFound);
  EXPECT_EQ(ClassifyOSError(EIO), TErrorKind::ekOther);
  EXPECT_STREQ(EOSError(EACCES, "open", u"/a\n").what(), "open: \"/a\\n\": Permission denied (Error Code 13)");
}

TEST(SystemOnLinux, OwnersAndProcessorTime) {
  EXPECT_EQ(OwnerNameOfUser(0), u"root");
  ASSERT_EQ(getpwuid(3'999'999'999u), nullptr);
  EXPECT_EQ(OwnerNameOfUser(3'999'999'999u), u"3999999999");
  TCpuUsageMeter meter;
  EXPECT_FALSE(meter.Percent(1).has_value());
  // A thread that spins keeps at least its own share of the processors busy.
  int most = 0;
  for (const int64_t end = TickCount64() + 5'000; most == 0 && TickCount64() < end;)
    most = meter.Percent(1).value_or(0);
  EXPECT_GT(most, 0);
  EXPECT_LE(most, 100);
}

TEST(SystemOnLinux, OtherProgramsDoNotCountWhileThisOneWaits) {
  std::vector<pid_t> busy;
  for (int i = 0; i < ProcessorCount(); ++i) {
    busy.push_back(fork());
    if (busy.back() == 0)
      while (true) TickCount64();
  }
  TCpuUsageMeter meter;
  std::optional<int> percent;
  while (!percent) {
    usleep(20'000);
    percent = meter.Percent(1);
  }
  EXPECT_LT(*percent, 10);
  for (const pid_t program : busy) {
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
  }
}

}  // namespace Vantrel
