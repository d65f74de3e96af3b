#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>

#include "platform/files/OutputFile.h"
#include "platform/system/Errors.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {

namespace {

namespace fs = std::filesystem;
using Vantrel::Testing::TTemporaryFolder;

void WriteAll(const std::u16string& pPath, std::string_view pContents) {
  TOutputFile file(pPath);
  file.Write(pContents);
  file.Commit();
}

uint32_t CodeOf(const std::function<void()>& pWork) {
  try {
    pWork();
  } catch (const EOSError& error) {
    return error.Code();
  }
  return 0;
}

mode_t ModeOf(const fs::path& pPath) {
  struct stat info {};
  return stat(pPath.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

}  // namespace

TEST(OutputFileOnLinux, LinksStayLinks) {
  TTemporaryFolder folder;
  fs::create_directory(folder.Path() / "deep");
  folder.Put("deep/target", "earlier");
  fs::create_symlink("deep/second", folder.Path() / "first");
  fs::create_symlink("target", folder.Path() / "deep/second");
  fs::create_symlink("deep/nothing", folder.Path() / "dangling");
  fs::create_symlink("circle", folder.Path() / "circle");

  WriteAll(folder.File("first"), "new");
  EXPECT_TRUE(fs::is_symlink(folder.Path() / "first"));
  EXPECT_TRUE(fs::is_symlink(folder.Path() / "deep/second"));
  EXPECT_EQ(folder.Get("deep/target"), "new");
  WriteAll(folder.File("dangling"), "there now");
  EXPECT_TRUE(fs::is_symlink(folder.Path() / "dangling"));
  EXPECT_EQ(folder.Get("deep/nothing"), "there now");
  EXPECT_EQ(CodeOf([&] { WriteAll(folder.File("circle"), ""); }), uint32_t{ELOOP});
  EXPECT_EQ(folder.Count(), 4u);
}

TEST(OutputFileOnLinux, PermissionsAreThoseOfTheEarlierFile) {
  TTemporaryFolder folder;
  const mode_t umaskBefore = umask(027);
  WriteAll(folder.File("new"), "x");
  umask(umaskBefore);
  EXPECT_EQ(ModeOf(folder.Path() / "new"), 0640u);
  for (const mode_t mode : {0600u, 0666u, 0754u}) {
    ASSERT_EQ(chmod((folder.Path() / "new").c_str(), mode), 0);
    WriteAll(folder.File("new"), "y");
    EXPECT_EQ(ModeOf(folder.Path() / "new"), mode);
  }
}

TEST(OutputFileOnLinux, RefusesWhatMayNotBeWritten) {
  TTemporaryFolder folder;
  folder.Put("protected", "earlier");
  folder.Put("writable", "earlier");
  ASSERT_EQ(chmod((folder.Path() / "protected").c_str(), 0444), 0);
  ASSERT_EQ(chmod((folder.Path() / "writable").c_str(), 0666), 0);
  ASSERT_EQ(chmod(folder.Path().c_str(), 0777), 0);
  // Root may do everything, so that it has to become somebody else for a moment.
  const char* name = std::getenv("VANTREL_ORDINARY_USER");
  const uid_t self = geteuid();
  if (self == 0 && name == nullptr) GTEST_SKIP() << "root, and VANTREL_ORDINARY_USER is not set";
  const uid_t user = self == 0 ? static_cast<uid_t>(std::atoi(name)) : self;
  const auto asUser = [&](const std::function<void()>& pWork) {
    EXPECT_EQ(seteuid(user), 0);
    const uint32_t code = CodeOf(pWork);
    EXPECT_EQ(seteuid(self), 0);
    return code;
  };
  const uint32_t file = asUser([&] { WriteAll(folder.File("protected"), "new"); });
  const uint32_t fine = asUser([&] { WriteAll(folder.File("writable"), "new"); });
  ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
  const uint32_t inFolder = asUser([&] { WriteAll(folder.File("new"), "new"); });
  ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
  EXPECT_EQ(file, uint32_t{EACCES});
  EXPECT_EQ(fine, 0u);
  EXPECT_EQ(inFolder, uint32_t{EACCES});
  EXPECT_EQ(folder.Get("protected"), "earlier");
  EXPECT_EQ(folder.Get("writable"), "new");
  EXPECT_EQ(folder.Count(), 2u);
}

// A limit to the size of files stands in for a disk that gets full.
TEST(OutputFileOnLinux, AFullDiskLeavesTheEarlierFile) {
  TTemporaryFolder folder;
  folder.Put("x", "earlier");
  const auto handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  for (const rlim_t limit : {rlim_t{0}, rlim_t{1}, rlim_t{100'000}, rlim_t{299'999}}) {
    const rlimit tight{limit, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    TOutputFile file(folder.File("x"));
    uint32_t code = 0;
    for (int i = 0; i < 3 && code == 0; ++i) code = CodeOf([&] { file.Write(std::string(100'000, 'x')); });
    const uint32_t atCommit = CodeOf([&] { file.Commit(); });
    const uint32_t again = CodeOf([&] { file.Commit(); });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(atCommit, uint32_t{EFBIG});
    EXPECT_EQ(again, uint32_t{EFBIG});
  }
  std::signal(SIGXFSZ, handlerBefore);
  EXPECT_EQ(folder.Get("x"), "earlier");
  EXPECT_EQ(folder.Count(), 1u);
}

TEST(OutputFileOnLinux, DevicesAndPipesAreWrittenDirectly) {
  WriteAll(u"/dev/null", std::string(1'000'000, 'x'));
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  TOutputFile full(u"/dev/full");
  EXPECT_EQ(CodeOf([&] { full.Write(std::string(1'000'000, 'x')); }), uint32_t{ENOSPC});
  EXPECT_EQ(CodeOf([&] { full.Commit(); }), uint32_t{ENOSPC});
  EXPECT_EQ(CodeOf([] { WriteAll(u"/dev/full", "short"); }), uint32_t{ENOSPC});

  TTemporaryFolder folder;
  ASSERT_EQ(mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = folder.Get("pipe"); });
  WriteAll(folder.File("pipe"), std::string(300'000, 'p'));
  reader.join();
  EXPECT_EQ(received, std::string(300'000, 'p'));
  EXPECT_EQ(folder.Count(), 1u);
}

TEST(OutputFileOnLinux, TheProcessOwnStreamsKeepTheirPosition) {
  TTemporaryFolder folder;
  for (const char16_t* path : {u"/dev/stdout", u"/dev/fd/1", u"/proc/self/fd/1"}) {
    folder.Put("out", "");
    const pid_t child = fork();
    if (child == 0) {
      const int out = open((folder.Path() / "out").c_str(), O_WRONLY);
      dup2(out, STDOUT_FILENO);
      bool good = write(STDOUT_FILENO, "before ", 7) == 7;
      WriteAll(path, "between ");
      good = good && write(STDOUT_FILENO, "after", 5) == 5;
      _exit(good ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(folder.Get("out"), "before between after");
  }
  EXPECT_EQ(folder.Count(), 1u);
}

// Behind what is there already, and with nothing of that name left in the folder.
TEST(OutputFileOnLinux, ADashIsTheStandardOutput) {
  const TTemporaryFolder folder;
  folder.Put("out", "earlier,");
  const fs::path before = fs::current_path();
  fs::current_path(folder.Path());
  const int output = dup(STDOUT_FILENO);
  const int file = open("out", O_WRONLY | O_APPEND | O_CLOEXEC);
  dup2(file, STDOUT_FILENO);
  WriteAll(u"-", "first,");
  WriteAll(u"-", "second");
  { TOutputFile(u"-").Write("lost"); }
  close(STDOUT_FILENO);
  const uint32_t code = CodeOf([] { WriteAll(u"-", "nowhere"); });
  dup2(output, STDOUT_FILENO);
  close(file);
  close(output);
  fs::current_path(before);
  EXPECT_EQ(folder.Get("out"), "earlier,first,second");
  EXPECT_EQ(folder.Count(), 1u);
  EXPECT_EQ(code, static_cast<uint32_t>(EBADF));
}

}  // namespace Vantrel
