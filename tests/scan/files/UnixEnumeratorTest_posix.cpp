// Linux' enumerator on real folders. Sizes, names, links, long paths and folders without permission are held against a
// recount and against find and du in hostile_test.py.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <map>

#include "platform/text/Text.h"
#include "scan/files/UnixEnumerator_posix.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel::Enumerators {
namespace {

namespace fs = std::filesystem;

// A folder of the file system for one test.
class UnixEnumerator : public testing::Test {
 protected:
  std::string Path(const std::string& pName) const { return fFolder + "/" + pName; }
  void Write(const std::string& pName, size_t pBytes) {
    const int handle = open(Path(pName).c_str(), O_CREAT | O_WRONLY | O_EXCL, 0644);
    ASSERT_GE(handle, 0) << pName;
    const std::string bytes(pBytes, 'x');
    ASSERT_EQ(static_cast<ssize_t>(pBytes), write(handle, bytes.data(), pBytes));
    fsync(handle);  // some file systems allot blocks late
    close(handle);
  }
  TRef<IHierarchicalEnumerator> Open(THierarchicalEnumeratorOptions pOptions = 0) const {
    return TUnixEnumerator::CreateForPath(FromNativeBytes(fFolder), pOptions);
  }

  const Testing::TTemporaryFolder fTemporary;
  const std::string fFolder = fTemporary.Path().string();
};

std::map<std::string, TEntryValues> List(IHierarchicalEnumerator& pEnumerator) {
  std::map<std::string, TEntryValues> entries;
  while (pEnumerator.Next()) {
    const std::string name = ToNativeBytes(pEnumerator.GetObjectName());
    EXPECT_TRUE(entries.emplace(name, pEnumerator.GetEntryValues()).second) << name;
  }
  return entries;
}

// Bytes, files and folders beneath, and the first error.
struct TWalk {
  int64_t fSize = 0;
  int64_t fFiles = 0;
  int64_t fFolders = 0;
  uint32_t fError = 0;
};

// Breadth first, so that as many folders as possible wait at once.
TWalk Walk(TRef<IHierarchicalEnumerator> pTop) {
  TWalk walk;
  std::vector<TRef<IHierarchicalEnumerator>> waiting{std::move(pTop)};
  for (size_t i = 0; i < waiting.size(); ++i) {
    TRef<IHierarchicalEnumerator> folder = std::move(waiting[i]);
    while (folder->Next()) {
      (folder->IsFolder() ? walk.fFolders : walk.fFiles) += 1;
      walk.fSize += folder->GetSize();
      if (folder->CanDescend()) waiting.push_back(folder->GetChildHierarchicalEnumerator());
    }
    if (walk.fError == 0) walk.fError = folder->GetErrorCode();
  }
  return walk;
}

TEST_F(UnixEnumerator, Attributes) {
  Write("sparse", 0);
  Write("file", 5000);
  ASSERT_EQ(0, truncate(Path("sparse").c_str(), 1 << 30));
  ASSERT_EQ(0, chmod(Path("sparse").c_str(), 0444));
  ASSERT_EQ(0, mkfifo(Path(".pipe").c_str(), 0644));
  ASSERT_EQ(0, mkdir(Path("folder").c_str(), 0755));
  ASSERT_EQ(0, symlink("folder", Path("link").c_str()));
  std::map<std::string, TAttributes> attributes;
  for (const auto& [name, entry] : List(*Open())) attributes[name] = entry.fAttributes;
  const std::map<std::string, TAttributes> expected = {{"sparse", kAttributeSparse | kAttributeReadOnly},
                                                       {"file", kAttributeNormal},
                                                       {".pipe", kAttributeDevice | kAttributeHidden},
                                                       {"folder", kAttributeDirectory},
                                                       {"link", kAttributeReparsePoint}};
  EXPECT_EQ(attributes, expected);
}

// A branch is opened by the names on the way, as a refresh does, without a listing of the folders above.
TEST_F(UnixEnumerator, WhatIsNotEnteredIsNotOpenedByNameEither) {
  ASSERT_EQ(0, mkdir(Path("scan").c_str(), 0755));
  ASSERT_EQ(0, symlink("..", Path("scan/up").c_str()));
  ASSERT_EQ(0, symlink("/dev", Path("scan/dev").c_str()));
  Write("scan/file", 1);
  struct TCase {
    const char* fWhat;
    std::string fRoot;
    std::vector<const char16_t*> fNames;
    TAttributes fAttributes;
    THierarchicalEnumeratorOptions fOptions;
    bool fLists;
  };
  const TCase cases[] = {
      {"an ordinary folder", fFolder, {u"scan"}, kAttributeDirectory, 0, true},
      {"a pseudo file system", "/", {u"proc"}, kAttributeDirectory, 0, false},
      {"inside a pseudo file system", "/", {u"proc", u"sys"}, kAttributeDirectory, 0, false},
      {"another file system", "/", {u"dev"}, kAttributeDirectory, 0, true},
      {"another file system, not wanted", "/", {u"dev"}, kAttributeDirectory, heoStayOnFileSystem, false},
      {"a followed link", Path("scan"), {u"dev"}, kAttributeDirectory | kAttributeReparsePoint, 4, true},
      {"a link back", Path("scan"), {u"up"}, kAttributeDirectory | kAttributeReparsePoint, 4, false},
  };
  for (const TCase& c : cases) {
    TRef<IHierarchicalEnumerator> folder = TUnixEnumerator::CreateForPath(FromNativeBytes(c.fRoot), c.fOptions);
    for (const char16_t* name : c.fNames) folder = folder->CreateChildEnumerator(name, c.fAttributes);
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(c.fLists, folder->Next()) << c.fWhat;
      EXPECT_EQ(0u, folder->GetErrorCode()) << c.fWhat;
      folder->Reset();
    }
  }
}

// Counts a system call by making it fail; to be called in a process of its own.
int gTrapped = 0;

void CountCalls(int pCall) {
  struct sigaction action {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = [](int, siginfo_t*, void* pContext) {
    ++gTrapped;
    static_cast<ucontext_t*>(pContext)->uc_mcontext.gregs[REG_RAX] = -ENOSYS;
  };
  sigaction(SIGSYS, &action, nullptr);
  sock_filter filter[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint32_t>(pCall), 0, 1),
                          BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP), BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program{4, filter};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

TEST_F(UnixEnumerator, AnotherFileSystemIsAskedOnceAndNotInEachFolder) {
  std::string pattern = "/dev/shm/vantrel-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) GTEST_SKIP() << "no second file system to write to";
  for (int i = 0; i < 50; ++i) fs::create_directory(pattern + "/" + std::to_string(i));
  ASSERT_EQ(0, symlink(pattern.c_str(), Path("memory").c_str()));
  TRef<IHierarchicalEnumerator> top = Open(heoFollowSymbolicLinks);
  const pid_t child = fork();
  if (child == 0) {
    // The first answer can be kept, so it must not be the one that fails.
    ASSERT_TRUE(top->Next() && top->CanDescend());
    CountCalls(SYS_fstatfs);
    const TWalk walk = Walk(top->GetChildHierarchicalEnumerator());
    _exit(walk.fFolders == 50 ? gTrapped : 100);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  fs::remove_all(pattern);
  EXPECT_EQ(0, WEXITSTATUS(status)) << "questions what kind of file system a folder is on; 100: not all was listed";
}

int OpenHandles() {
  return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

TEST_F(UnixEnumerator, PathsBeyondTheSystemsLimitLeaveNoHandleOpen) {
  // No single path reaches the end, so it is made by relative steps, in a process of its own.
  const std::string name(60, 'n');
  const int levels = 400;
  const pid_t child = fork();
  if (child == 0) {
    bool made = chdir(fFolder.c_str()) == 0;
    for (int i = 0; i < levels; ++i) made = made && mkdir(name.c_str(), 0755) == 0 && chdir(name.c_str()) == 0;
    _exit(made && close(open("end", O_CREAT | O_WRONLY, 0644)) == 0 ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  ASSERT_EQ(0, status);
  const int handles = OpenHandles();
  std::string end = fFolder;
  for (int i = 0; i < levels; ++i) end += "/" + name;
  for (const auto& [tail, error] :
       {std::pair("", 0), {"/none", ENOENT}, {"/end/below", ENOTDIR}, {"/none/none", ENOENT}})
    EXPECT_EQ(static_cast<uint32_t>(error),
              TUnixEnumerator::CreateForPath(FromNativeBytes(end + tail), 0)->GetErrorCode());
  EXPECT_NE(0u, TUnixEnumerator::CreateForPath(FromNativeBytes(end.replace(6000, 60, 60, 'm')), 0)->GetErrorCode());
  EXPECT_NE(0u, TUnixEnumerator::CreateForPath(u"/proc", 0)->GetErrorCode());
  EXPECT_EQ(1, Walk(Open()).fFiles);
  EXPECT_EQ(handles, OpenHandles());
}

TEST_F(UnixEnumerator, ListingThatBreaksOffIsNotAtItsEnd) {
  // More names than one reading of the folder brings.
  for (int i = 0; i < 5'000; ++i) fs::create_symlink("x", Path("a-name-of-some-length-" + std::to_string(i)));
  TRef<IHierarchicalEnumerator> top = Open();
  ASSERT_TRUE(top->Next());
  fs::remove_all(fFolder);
  while (top->Next()) {
  }
  EXPECT_EQ(static_cast<uint32_t>(ENOENT), top->GetErrorCode());
}

TEST_F(UnixEnumerator, FolderThatBecomesALinkIsNotFollowed) {
  ASSERT_EQ(0, mkdir(Path("folder").c_str(), 0755));
  TRef<IHierarchicalEnumerator> top = Open();
  ASSERT_TRUE(top->Next());
  TRef<IHierarchicalEnumerator> child = top->GetChildHierarchicalEnumerator();
  ASSERT_EQ(0, rmdir(Path("folder").c_str()));
  ASSERT_EQ(0, symlink("/usr", Path("folder").c_str()));
  EXPECT_FALSE(child->Next()) << "lists what a link leads to, without being asked to";
  EXPECT_NE(0u, child->GetErrorCode());
}

TEST_F(UnixEnumerator, EntriesThatGoWhileTheyAreListed) {
  for (int i = 0; i < 20; ++i) Write("f" + std::to_string(i), 1);
  ASSERT_EQ(0, mkdir(Path("folder").c_str(), 0755));
  TRef<IHierarchicalEnumerator> top = Open();
  ASSERT_TRUE(top->Next());
  const std::string first = ToNativeBytes(top->GetObjectName());
  TRef<IHierarchicalEnumerator> gone = top->CreateChildEnumerator(u"folder", kAttributeDirectory);
  for (const auto& entry : fs::directory_iterator(fFolder)) fs::remove(entry.path());
  // The names are in the buffer already, and nothing stands behind them any more.
  EXPECT_FALSE(top->Next());
  EXPECT_EQ(0u, top->GetErrorCode());
  EXPECT_FALSE(gone->Next());
  EXPECT_EQ(static_cast<uint32_t>(ENOENT), gone->GetErrorCode());
  EXPECT_EQ(TEnumeratorError::eeOther, gone->GetError());
}

TEST_F(UnixEnumerator, ResetAndCloneStartAtTheFirstEntryWithoutDisturbingEachOther) {
  for (int i = 0; i < 5; ++i) Write("f" + std::to_string(i), 1);
  TRef<IHierarchicalEnumerator> top = Open();
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(top->Next());
  TRef<IHierarchicalEnumerator> clone = top->Clone();
  EXPECT_EQ(top->GetObjectName(), clone->GetObjectName());
  EXPECT_EQ(5u, List(*clone).size());
  EXPECT_TRUE(top->Next());
  top->Reset();
  EXPECT_EQ(5u, List(*top).size());
  EXPECT_FALSE(top->Next());
  top->Reset();
  EXPECT_EQ(5u, List(*top).size());
  EXPECT_EQ(5u, List(*top->Clone()).size());
}

class UnixEnumeratorDeathTest : public UnixEnumerator {
 protected:
  [[noreturn]] void WalkWithFewHandles() {
    for (int i = 0; i < 100; ++i) {
      const std::string folder = "d" + std::to_string(i);
      fs::create_directories(Path(folder + "/e/f"));
      Write(folder + "/e/f/file", 3);
    }
    const rlimit handles{64, 64};
    setrlimit(RLIMIT_NOFILE, &handles);
    const TWalk walk = Walk(Open());
    fs::remove_all(fFolder);
    fprintf(stderr, "%d bytes, %d folders, error %u", static_cast<int>(walk.fSize), static_cast<int>(walk.fFolders),
            walk.fError);
    exit(0);
  }
};

// In a process of its own, since the limit is read once.
TEST_F(UnixEnumeratorDeathTest, MoreFoldersWaitThanHandlesAreAllowed) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(WalkWithFewHandles(), testing::ExitedWithCode(0), "300 bytes, 300 folders, error 0");
}

TEST_F(UnixEnumerator, AccessDatesStay) {
  ASSERT_EQ(0, mkdir(Path("folder").c_str(), 0755));
  Write("folder/file", 10);
  // Older than the change date: reading would move even a date that the system updates sparingly.
  const timespec old[2] = {{1'000'000'000, 0}, {1'500'000'000, 0}};
  for (const char* name : {"folder/file", "folder"}) ASSERT_EQ(0, utimensat(AT_FDCWD, Path(name).c_str(), old, 0));
  Walk(Open());
  for (const char* name : {"folder/file", "folder"}) {
    struct stat status;
    ASSERT_EQ(0, stat(Path(name).c_str(), &status));
    EXPECT_EQ(1'000'000'000, status.st_atim.tv_sec) << name;
  }
}

}  // namespace
}  // namespace Vantrel::Enumerators
