// Faults, rights and volumes that a stand-in for the system plays.

#include <gtest/gtest.h>
#include <winternl.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/system/Errors.h"
#include "scan/files/BackupPrivilege_win32.h"
#include "scan/files/NTApiEnumerator_win32.h"
#include "scan/files/Win32FindEnumerator_win32.h"

// Faults, rights and volumes that a test cannot have for real, played by a stand-in for the system's calls.
namespace Vantrel::Enumerators {
namespace {

std::string Narrow(std::u16string_view pText) {
  return std::string(pText.begin(), pText.end());
}

struct TEntry {
  std::u16string fName;
  uint32_t fAttributes = 0;
  int64_t fSize = 0;
  int64_t fAllocation = 0;
  uint32_t fTag = 0;
};

// Lists the same batches in every folder. What is not played here fails loudly by its own means: no real path is used.
class TStandInApi : public TSystemFileApi {
 public:
  std::vector<std::vector<TEntry>> fBatches;  // one for each query; find-first and find-next take them as one list
  uint32_t fEndStatus = 0x80000006;           // what the query answers after the last batch, and what that is as a code
  uint32_t fEndCode = ERROR_NO_MORE_FILES;
  uint32_t fNextOffsetOfFirst = 0;             // overwrites the first record's offset when set
  std::map<std::string, uint32_t> fOpenCodes;  // by path; others open
  std::vector<std::string> fOpened;
  std::vector<uint32_t> fOpenFlags;
  std::vector<bool> fRestarts;
  int fOpenHandles = 0;

  uint32_t fRefusal = 0;  // what opening answers until the privilege is held
  bool fPrivilegeGranted = false;
  bool fPrivilegeHeld = false;
  int fPrivilegeAttempts = 0;
  int64_t fTicks = 0;

  uint32_t fEntryCode = 0;
  uint32_t fReparseCode = 0;
  TReparsePoint fReparsePoint;
  int fReparseReads = 0;
  std::function<std::u16string(const std::u16string&)> fResolve;  // unset: nothing can be resolved
  std::map<std::u16string, int64_t> fClusterSizes;                // by path; others have 4096
  TLinkInformation fLinks;
  int fLinkQueries = 0;

  HANDLE OpenDirectory(const std::u16string& pPath, uint32_t pFlags, uint32_t& pErrorCode) override {
    fOpenFlags.push_back(pFlags);
    fLastFolder = Win32::WithoutExtendedPrefix(pPath);
    pErrorCode = Refuse(pPath);
    if (pErrorCode != 0) return INVALID_HANDLE_VALUE;
    ++fOpenHandles;
    fNextBatch = 0;
    return this;
  }
  void CloseDirectory(HANDLE) noexcept override { --fOpenHandles; }

  // Of the folder that was opened last: two paths are one folder if they resolve to the same.
  uint32_t QueryIdentity(HANDLE, TFolderIdentity& pIdentity) override {
    std::u16string real = ResolvePath(fLastFolder);
    pIdentity = {1, std::hash<std::u16string>()(real.empty() ? fLastFolder : real)};
    return 0;
  }

  uint32_t QueryDirectory(HANDLE, std::span<std::byte> pBuffer, const std::u16string*, bool pRestart,
                          uint32_t& pBytes) override {
    fRestarts.push_back(pRestart);
    if (pRestart) fNextBatch = 0;
    pBytes = 0;
    if (fNextBatch >= fBatches.size()) return fEndStatus;
    for (const TEntry& entry : fBatches[fNextBatch]) Append(entry, pBuffer, pBytes);
    if (fNextOffsetOfFirst != 0) std::memcpy(pBuffer.data(), &fNextOffsetOfFirst, 4);
    ++fNextBatch;
    return 0;
  }

  HANDLE FindFirst(const std::u16string& pPattern, TKivWin32FindData& pData, uint32_t& pErrorCode) override {
    pErrorCode = Refuse(pPattern);
    if (pErrorCode != 0) return INVALID_HANDLE_VALUE;
    fFindList.clear();
    for (const auto& batch : fBatches) fFindList.insert(fFindList.end(), batch.begin(), batch.end());
    fFindIndex = 0;
    pErrorCode = FindNext(this, pData);
    if (pErrorCode != 0) return INVALID_HANDLE_VALUE;
    ++fOpenHandles;
    return this;
  }
  uint32_t FindNext(HANDLE, TKivWin32FindData& pData) override {
    if (fFindIndex >= fFindList.size()) return fEndCode;
    const TEntry& entry = fFindList[fFindIndex++];
    pData = {};
    std::memcpy(pData.cFileName, entry.fName.data(), entry.fName.size() * 2);
    pData.dwFileAttributes = entry.fAttributes;
    pData.nFileSizeLow = static_cast<DWORD>(entry.fSize);
    pData.nFileSizeHigh = static_cast<DWORD>(entry.fSize >> 32);
    pData.dwReserved0 = entry.fTag;
    return 0;
  }
  void CloseFind(HANDLE) noexcept override { --fOpenHandles; }

  uint32_t QueryEntry(const std::u16string&, TKivWin32FindData& pData) override {
    pData = {};
    pData.dwFileAttributes = kAttributeDirectory;
    return fEntryCode;
  }
  uint32_t ReadReparsePoint(const std::u16string&, TReparsePoint& pPoint) override {
    ++fReparseReads;
    if (fRefusal != 0 && !fPrivilegeHeld) return fRefusal;
    pPoint = fReparsePoint;
    return fReparseCode;
  }
  uint32_t QueryLinks(const std::u16string&, TLinkInformation& pInformation) override {
    ++fLinkQueries;
    pInformation = fLinks;
    return 0;
  }
  std::u16string ResolvePath(const std::u16string& pPath) override {
    return fResolve ? fResolve(pPath) : std::u16string();
  }
  int64_t ClusterSize(const std::u16string& pPath) override {
    auto found = fClusterSizes.find(pPath);
    return found == fClusterSizes.end() ? 4096 : found->second;
  }
  bool EnableBackupPrivilege() override {
    ++fPrivilegeAttempts;
    fPrivilegeHeld = fPrivilegeGranted;
    return fPrivilegeGranted;
  }
  int64_t TickCount() override { return fTicks; }

 private:
  uint32_t Refuse(const std::u16string& pPath) {
    fOpened.push_back(Narrow(pPath));
    if (auto found = fOpenCodes.find(fOpened.back()); found != fOpenCodes.end()) return found->second;
    return fPrivilegeHeld ? 0 : fRefusal;
  }

  static void Append(const TEntry& pEntry, std::span<std::byte> pBuffer, uint32_t& pBytes) {
    constexpr size_t header = offsetof(FILE_FULL_DIRECTORY_INFORMATION, FileName);
    FILE_FULL_DIRECTORY_INFORMATION info{};
    info.FileAttributes = pEntry.fAttributes;
    info.EndOfFile.QuadPart = pEntry.fSize;
    info.AllocationSize.QuadPart = pEntry.fAllocation;
    info.EaSize = pEntry.fTag;
    info.FileNameLength = static_cast<ULONG>(pEntry.fName.size() * 2);
    uint32_t begin = (pBytes + 7) / 8 * 8;
    if (begin != 0) {
      uint32_t offset = begin - fLastRecord;
      std::memcpy(pBuffer.data() + fLastRecord, &offset, 4);
    }
    std::memcpy(pBuffer.data() + begin, &info, header);
    std::memcpy(pBuffer.data() + begin + header, pEntry.fName.data(), info.FileNameLength);
    fLastRecord = begin;
    pBytes = begin + static_cast<uint32_t>(header) + info.FileNameLength;
  }

  static inline uint32_t fLastRecord = 0;
  std::u16string fLastFolder;
  size_t fNextBatch = 0;
  std::vector<TEntry> fFindList;
  size_t fFindIndex = 0;
};

using TMake = std::function<TRef<TWin32Enumerator>(THierarchicalEnumeratorOptions)>;

class EnumeratorSeam : public testing::Test {
 protected:
  void SetUp() override { TBackupPrivilege::ForgetAttempts(); }
  void TearDown() override { EXPECT_EQ(fApi.fOpenHandles, 0) << "every handle is closed again"; }

  TRef<TWin32Enumerator> Native(THierarchicalEnumeratorOptions pOptions = 0,
                                const std::u16string& pPath = u"C:\\scan") {
    return TNTApiEnumerator::CreateForFolderPath(pPath, pOptions, fApi);
  }
  TRef<TWin32Enumerator> Find(THierarchicalEnumeratorOptions pOptions = 0, const std::u16string& pPath = u"C:\\scan") {
    return TFileSystemEnumerator::CreateForFolderPath(pPath, pOptions, fApi);
  }
  std::vector<TMake> Both() {
    return {[this](auto pOptions) { return Native(pOptions); }, [this](auto pOptions) { return Find(pOptions); }};
  }
  static std::vector<std::string> NamesOf(IHierarchicalEnumerator& pEnumerator) {
    std::vector<std::string> names;
    while (pEnumerator.Next()) names.push_back(Narrow(pEnumerator.GetObjectName()));
    return names;
  }

  TStandInApi fApi;
};

using TNames = std::vector<std::string>;

TEST_F(EnumeratorSeam, QueryWithoutBytesIsAnOverflow_StandInForQuery) {
  fApi.fBatches = {{}};
  auto enumerator = Native();
  EXPECT_FALSE(enumerator->Next());
  EXPECT_EQ(enumerator->GetErrorCode(), 234U) << "more data";
  EXPECT_EQ(enumerator->GetError(), TEnumeratorError::eeOther);
}

TEST_F(EnumeratorSeam, ErrorInTheMiddleIsNotTheEnd_StandInForQueryAndFind) {
  for (size_t length = 1; length <= 5; ++length) {
    fApi.fBatches.assign(1, {{u".", 16}, {u"..", 16}});
    TNames expected;
    for (size_t i = 0; i < length; ++i) {
      fApi.fBatches.push_back({{std::u16string(1, static_cast<char16_t>(u'a' + i)), 32, 1, 1}});
      expected.emplace_back(1, static_cast<char>('a' + i));
    }
    for (bool isBroken : {false, true}) {
      fApi.fEndStatus = isBroken ? 0xC0000185 : 0x80000006;  // device error
      fApi.fEndCode = isBroken ? 1117 : ERROR_NO_MORE_FILES;
      for (const TMake& make : Both()) {
        auto enumerator = make(0);
        EXPECT_EQ(NamesOf(*enumerator), expected);
        EXPECT_EQ(enumerator->GetErrorCode(), isBroken ? 1117U : 0U);
        EXPECT_FALSE(enumerator->Next()) << "stays at its end";
      }
    }
  }
}

TEST_F(EnumeratorSeam, EmptyDriveIsNoError_StandInForQueryAndFind) {
  fApi.fEndStatus = 0xC000000F;
  fApi.fEndCode = ERROR_FILE_NOT_FOUND;
  for (const TMake& make : Both()) {
    auto enumerator = make(0);
    EXPECT_FALSE(enumerator->Next());
    EXPECT_EQ(enumerator->GetErrorCode(), 0U);
  }
}

TEST_F(EnumeratorSeam, InvalidListingRaisesPathNotFound_StandInForQuery) {
  fApi.fEndStatus = 0xC000000D;
  auto enumerator = Native();
  try {
    enumerator->Next();
    FAIL() << "no exception";
  } catch (const EOSError& e) {
    EXPECT_EQ(e.Code(), 3U);
    EXPECT_EQ(e.Object(), u"C:\\scan");
  }
  EXPECT_EQ(fApi.fOpenHandles, 0);
  EXPECT_EQ(enumerator->GetErrorCode(), 3U);
  EXPECT_FALSE(enumerator->Next());
}

TEST_F(EnumeratorSeam, RecordBeyondTheBufferIsAnError_StandInForQuery) {
  fApi.fBatches = {{{u"a", 32}, {u"b", 32}}};
  for (uint32_t offset : {4U, 3U, 65'528U, 65'536U, 0xFFFFFFF8U}) {
    fApi.fNextOffsetOfFirst = offset;
    auto enumerator = Native();
    TNames names = NamesOf(*enumerator);
    EXPECT_FALSE(names.empty());
    EXPECT_EQ(enumerator->GetErrorCode(), static_cast<uint32_t>(ERROR_INVALID_DATA)) << offset;
  }
}

TEST_F(EnumeratorSeam, HandlesAreOpenOnlyWhileListing_StandInForOpen) {
  fApi.fBatches = {{{u"a", 32}}, {{u"b", 32}}};
  for (const TMake& make : Both()) {
    auto enumerator = make(0);
    auto child = enumerator->CreateChildEnumerator(u"sub", kAttributeDirectory);
    EXPECT_EQ(fApi.fOpenHandles, 0);
    EXPECT_TRUE(enumerator->Next());
    EXPECT_EQ(fApi.fOpenHandles, 1);
    EXPECT_TRUE(enumerator->Next());
    EXPECT_FALSE(enumerator->Next());
    EXPECT_EQ(fApi.fOpenHandles, 0);
    enumerator->Reset();
    EXPECT_EQ(NamesOf(*enumerator), (TNames{"a", "b"}));
    enumerator->Reset();
    EXPECT_TRUE(enumerator->Next());
    enumerator->Reset();
    EXPECT_EQ(NamesOf(*enumerator), (TNames{"a", "b"})) << "again from the middle";
    enumerator->Reset();
    EXPECT_TRUE(enumerator->Next());  // is released in the middle
  }
}

TEST_F(EnumeratorSeam, PathsGoToTheSystemInLongForm_StandInForOpen) {
  const std::map<std::u16string, std::string> forms = {
      {u"C:\\a", "\\\\?\\C:\\a"},
      {u"C:\\", "\\\\?\\C:\\"},
      {u"C:", "\\\\?\\C:\\"},
      {u"C:/a/b.", "\\\\?\\C:\\a\\b."},
      {u"\\\\server\\share\\a", "\\\\?\\UNC\\server\\share\\a"},
      {u"\\\\?\\C:\\a", "\\\\?\\C:\\a"},
      {u"\\\\?\\Volume{1}", "\\\\?\\Volume{1}\\"},
      {u"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy3\\a",
       "\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy3\\a"},
      {u"\\\\server\\share\\@GMT-2026.01.02-03.04.05", "\\\\server\\share\\@GMT-2026.01.02-03.04.05"}};
  for (const auto& [path, form] : forms) EXPECT_EQ(Narrow(ApiPath(path)), form);
  // The root of a shadow copy, which without its last delimiter is the device.
  const std::u16string shadowRoot = u"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy3\\";
  for (const std::u16string& path : {shadowRoot, shadowRoot.substr(0, shadowRoot.size() - 1)})
    EXPECT_EQ(Narrow(ApiPath(RootedPathOf(path))), Narrow(shadowRoot));

  fApi.fBatches = {{{u"a", 32}}};
  fApi.fOpenCodes = {{"\\\\server\\share\\@GMT-1", 2}, {"\\\\?\\C:\\gone", 2}};
  auto shadow = Native(0, u"\\\\server\\share\\@GMT-1");
  EXPECT_EQ(NamesOf(*shadow), TNames{"a"});
  EXPECT_EQ(fApi.fOpened, (TNames{"\\\\server\\share\\@GMT-1", "\\\\?\\UNC\\server\\share\\@GMT-1"}));
  auto gone = Native(0, u"C:\\gone");
  EXPECT_FALSE(gone->Next());
  EXPECT_EQ(gone->GetErrorCode(), 2U);
}

TEST_F(EnumeratorSeam, RefusedFolderIsOpenedWithThePrivilege_StandInForRights) {
  fApi.fBatches = {{{u"a", 32}}};
  fApi.fRefusal = 5;
  for (const TMake& make : Both()) {
    TBackupPrivilege::ForgetAttempts();
    fApi.fPrivilegeHeld = false;
    fApi.fPrivilegeGranted = true;
    auto without = make(heoNoBackupPrivilege);
    EXPECT_FALSE(without->Next());
    EXPECT_EQ(without->GetError(), TEnumeratorError::eeAccessDenied);
    auto with = make(0);
    EXPECT_EQ(NamesOf(*with), TNames{"a"});
    EXPECT_EQ(with->GetErrorCode(), 0U);
  }
  EXPECT_EQ(fApi.fPrivilegeAttempts, 2);
}

TEST_F(EnumeratorSeam, PrivilegeIsTriedTwiceASecondAtMost_StandInForClockAndRights) {
  fApi.fRefusal = 5;
  const std::vector<std::pair<int64_t, int>> attemptsAt = {{1000, 1}, {1000, 1}, {1499, 1}, {1500, 2},
                                                           {1999, 2}, {2000, 3}, {9000, 4}};
  for (auto [ticks, attempts] : attemptsAt) {
    fApi.fTicks = ticks;
    auto enumerator = Native();
    EXPECT_FALSE(enumerator->Next());
    EXPECT_EQ(enumerator->GetErrorCode(), 5U);
    EXPECT_EQ(fApi.fPrivilegeAttempts, attempts) << "at " << ticks;
  }
}

TEST_F(EnumeratorSeam, FolderRefusedWhileAnotherThreadGetsThePrivilege_StandInForRights) {
  fApi.fTicks = 1000;
  fApi.fPrivilegeGranted = true;
  int opened = 0;
  uint32_t code = TBackupPrivilege::Open(fApi, true, [&]() -> uint32_t {
    if (++opened == 1) {
      EXPECT_TRUE(TBackupPrivilege::TryEnable(fApi));  // the other thread, in the meantime
      return 5;
    }
    return 0;
  });
  EXPECT_EQ(code, 0U);
  EXPECT_EQ(fApi.fPrivilegeAttempts, 1);
}

TEST_F(EnumeratorSeam, NetworkErrorIsTriedAgainWhenTheFolderAnswers_StandInForNetwork) {
  fApi.fBatches = {{{u"a", 32}}};
  for (uint32_t code : {1722U, 1707U}) {
    fApi.fOpened.clear();
    fApi.fOpenCodes = {{"\\\\?\\C:\\scan", code}};
    fApi.fEntryCode = 0;
    auto answering = Native();
    EXPECT_FALSE(answering->Next());
    EXPECT_EQ(fApi.fOpened.size(), 2U);
    EXPECT_EQ(answering->GetErrorCode(), code) << "it was not read, so it must not count as read";
    EXPECT_EQ(answering->GetError(), TEnumeratorError::eeOther);
    fApi.fEntryCode = code;
    auto silent = Native();
    EXPECT_FALSE(silent->Next());
    EXPECT_EQ(fApi.fOpened.size(), 3U);
  }
}

TEST_F(EnumeratorSeam, HardLinksAndStreamsShareTheAllocation_StandInForVolume) {
  fApi.fBatches = {{{u"linked", 32, 8000, 8192},
                    {u"resident", 32, 300, 304},
                    {u"empty", 32, 0, 0},
                    {u"offline", 0x1020, 8000, 8192},
                    {u"recalled", 0x400020, 8000, 8192},
                    {u"folder", 16, 0, 8192}}};
  fApi.fLinks = {2, 0};
  const int64_t apart[] = {8192, 0, 0, 8192, 8192, 0};
  const int64_t shared[] = {4096, 0, 0, 8192, 8192, 0};
  for (bool isSharing : {false, true}) {
    auto enumerator = Native(isSharing ? uint32_t{heoShareHardLinks} : 0);
    for (int64_t expected : isSharing ? shared : apart) {
      ASSERT_TRUE(enumerator->Next());
      EXPECT_EQ(enumerator->GetAllocated(), expected) << Narrow(enumerator->GetObjectName());
      EXPECT_EQ(enumerator->GetAllocated(), expected);
    }
    EXPECT_EQ(fApi.fLinkQueries, isSharing ? 1 : 0) << "files are opened only where it may matter, and once";
  }
  fApi.fLinks = {3, 1000};
  auto withStreams = Native(heoShareHardLinks);
  ASSERT_TRUE(withStreams->Next());
  EXPECT_EQ(withStreams->GetAllocated(), 3064) << "9192 / 3";
}

TEST_F(EnumeratorSeam, AttributesAreAdjusted_StandInForVolume) {
  fApi.fBatches = {{{u"a", 0x8020}, {u"b", 0x400020}, {u"c", 0x800000 | 16}}};
  for (const TMake& make : Both()) {
    auto enumerator = make(0);
    std::vector<TAttributes> attributes;
    while (enumerator->Next()) attributes.push_back(enumerator->GetAttributes());
    EXPECT_EQ(attributes, (std::vector<TAttributes>{0x20, 0x401020, 0x800010}));
  }
}

TEST_F(EnumeratorSeam, ReparsePointsAreJudgedByTagTargetAndError_StandInForReparsePoints) {
  constexpr uint32_t symbolicLink = IO_REPARSE_TAG_SYMLINK;
  constexpr uint32_t mountPoint = IO_REPARSE_TAG_MOUNT_POINT;
  constexpr uint32_t both = heoFollowSymbolicLinks | heoFollowMountPoints;
  struct TCase {
    const char* fWhat;
    uint32_t fTag;
    uint32_t fCode;
    uint32_t fEntryCode;  // what asking for the link itself answers
    const char16_t* fTarget;
    uint32_t fOptions;
    bool fIsLink;
    bool fDescends;
  };
  const TCase cases[] = {
      {"a cloud placeholder is no link", 0x9000701A, 1117, 0, u"", 0, false, true},
      {"a compressed folder is no link", 0x80000017, 1117, 0, u"", 0, false, true},
      {"elsewhere, following off", symbolicLink, 0, 0, u"D:\\x", 0, true, false},
      {"elsewhere, following on", symbolicLink, 0, 0, u"D:\\x", heoFollowSymbolicLinks, true, true},
      {"each kind has its own setting", mountPoint, 0, 0, u"D:\\x", heoFollowSymbolicLinks, true, false},
      {"a junction, following on", mountPoint, 0, 0, u"D:\\x", heoFollowMountPoints, true, true},
      {"into the tree", mountPoint, 0, 0, u"C:\\scan\\b", both, true, false},
      {"relative, out of the tree", symbolicLink, 0, 0, u"..\\other", both, true, true},
      {"without a target", symbolicLink, 0, 0, u"", both, true, false},
      {"refused", symbolicLink, 5, 0, u"", both, true, false},
      {"another error, settings on", symbolicLink, 1117, 0, u"", heoFollowSymbolicLinks, true, true},
      {"another error, settings off", symbolicLink, 1117, 0, u"", heoFollowMountPoints, true, false},
      {"a server that answers after all", mountPoint, 1722, 0, u"", 0, false, true},
      {"a server that does not", mountPoint, 1707, 1707, u"", 0, true, false},
      {"unknown tag, the system tells a link", 0, 0, 0, u"D:\\x", both, true, true},
  };
  for (const TCase& c : cases) {
    fApi.fBatches = {{{u"link", 0x410, 0, 0, c.fTag}}};
    fApi.fReparsePoint = {c.fTag == 0 ? symbolicLink : c.fTag, c.fTarget};
    fApi.fReparseCode = c.fCode;
    fApi.fEntryCode = c.fEntryCode;
    for (const TMake& make : Both()) {
      auto enumerator = make(c.fOptions);
      ASSERT_TRUE(enumerator->Next());
      EXPECT_EQ(enumerator->GetAttributes(), c.fIsLink ? 0x410U : 0x10U) << c.fWhat;
      EXPECT_EQ(enumerator->CanDescend(), c.fDescends) << c.fWhat;
    }
  }
}

TEST_F(EnumeratorSeam, RefusedLinkIsReadWithThePrivilege_StandInForRights) {
  fApi.fBatches = {{{u"link", 0x410, 0, 0, IO_REPARSE_TAG_SYMLINK}}};
  fApi.fReparsePoint = {IO_REPARSE_TAG_SYMLINK, u"D:\\x"};
  fApi.fOpenCodes = {{"\\\\?\\C:\\scan", 0}};
  fApi.fRefusal = 5;
  fApi.fPrivilegeGranted = true;
  auto enumerator = Native(heoFollowSymbolicLinks);
  ASSERT_TRUE(enumerator->Next());
  EXPECT_TRUE(enumerator->CanDescend());
  EXPECT_EQ(fApi.fReparseReads, 2);
}

TEST_F(EnumeratorSeam, ChildrenKnowWhatLiesAbove_StandInForReparsePoints) {
  constexpr uint32_t follow = FILE_FLAG_BACKUP_SEMANTICS;
  constexpr uint32_t doNotFollow = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;
  fApi.fReparsePoint = {IO_REPARSE_TAG_SYMLINK, u"D:\\x"};
  fApi.fBatches = {{{u"plain", 16}}, {{u"link", 0x410, 0, 0, IO_REPARSE_TAG_SYMLINK}}};
  auto top = Native(heoFollowSymbolicLinks);
  NamesOf(*top);
  auto plain = top->CreateChildEnumerator(u"plain", 16);
  auto link = top->CreateChildEnumerator(u"link", 0x410);
  NamesOf(*plain);
  NamesOf(*link);
  EXPECT_EQ(fApi.fOpenFlags, (std::vector<uint32_t>{follow, doNotFollow, follow}));
  auto& plainBase = dynamic_cast<TBaseFileSystemEnumerator&>(*plain);
  auto& linkBase = dynamic_cast<TBaseFileSystemEnumerator&>(*link);
  EXPECT_EQ(plainBase.GetParentWasSymLink(), false);
  EXPECT_EQ(linkBase.GetParentWasSymLink(), true);
  EXPECT_EQ(linkBase.GetAllSiblingsAreLinks(), false);
  EXPECT_EQ(linkBase.GetAnyParentIsReparseTagCloud(), false);

  // Beneath a placeholder no file is opened for its links.
  fApi.fBatches = {{{u"cloud", 0x410, 0, 0, 0x9000601A}}, {{u"file", 32, 8192, 8192}}};
  auto cloudTop = Native(heoShareHardLinks);
  NamesOf(*cloudTop);
  auto cloud = cloudTop->CreateChildEnumerator(u"cloud", 16);
  EXPECT_EQ(dynamic_cast<TBaseFileSystemEnumerator&>(*cloud).GetAnyParentIsReparseTagCloud(), true);
  while (cloud->Next()) cloud->GetAllocated();
  EXPECT_EQ(fApi.fLinkQueries, 0);

  fApi.fBatches = {{{u"link", 0x410, 0, 0, IO_REPARSE_TAG_SYMLINK}}};
  auto linksOnly = Native(heoFollowSymbolicLinks);
  NamesOf(*linksOnly);
  auto onlyLink = linksOnly->CreateChildEnumerator(u"link", 0x410);
  EXPECT_EQ(dynamic_cast<TBaseFileSystemEnumerator&>(*onlyLink).GetAllSiblingsAreLinks(), true);
}

TEST_F(EnumeratorSeam, TenThousandLevels_StandInForFolders) {
  fApi.fBatches = {{{u"d", 16}}};
  for (const TMake& make : Both()) {
    TRef<IHierarchicalEnumerator> enumerator = make(0);
    for (int level = 0; level < 10'000; ++level) {
      ASSERT_TRUE(enumerator->Next());
      std::u16string name(enumerator->GetObjectName());
      ASSERT_FALSE(enumerator->Next());
      enumerator = enumerator->CreateChildEnumerator(name, kAttributeDirectory);
    }
    EXPECT_EQ(enumerator->GetPath().size(), std::u16string(u"C:\\scan").size() + 20'000);
  }
}

TEST_F(EnumeratorSeam, RealPathsDecideAboutLinks_StandInForReparsePoints) {
  struct TCase {
    const char* fWhat;
    const char16_t* fRealRoot;
    const char16_t* fRealFolder;  // of "C:\scan\sub", which holds the link
    const char16_t* fRealTarget;
    const char16_t* fTarget;  // as the link has it
    bool fDescends;
  };
  const TCase cases[] = {
      {"the root is given through a link", u"E:\\real", u"E:\\real\\sub", u"E:\\real\\b", u"E:\\real\\b", false},
      {"a target through a link into the tree", u"C:\\scan", u"C:\\scan\\sub", u"C:\\scan\\b", u"D:\\alias\\b", false},
      {"relative, below a followed link", u"C:\\scan", u"D:\\x\\y", u"D:\\z", u"..\\z", true},
      {"into what the folder really is", u"C:\\scan", u"E:\\real", u"E:\\real\\x", u"E:\\real\\x", false},
      {"beside what the folder really is", u"C:\\scan", u"E:\\real", u"E:\\other", u"E:\\other", true},
      {"a volume that is mounted here only", u"C:\\scan", u"C:\\scan\\sub", u"C:\\scan\\sub\\l", u"\\\\?\\Volume{1}\\",
       true},
      {"a target that cannot be resolved", u"C:\\scan", u"D:\\x\\y", u"", u"..\\z", true},
  };
  fApi.fBatches = {{{u"l", 0x410, 0, 0, IO_REPARSE_TAG_MOUNT_POINT}}};
  for (const TCase& c : cases) {
    fApi.fReparsePoint = {static_cast<uint32_t>(IO_REPARSE_TAG_MOUNT_POINT), c.fTarget};
    fApi.fResolve = [&](const std::u16string& pPath) -> std::u16string {
      return pPath == u"C:\\scan" ? c.fRealRoot : pPath == u"C:\\scan\\sub" ? c.fRealFolder : c.fRealTarget;
    };
    for (const TMake& make : Both()) {
      auto folder = make(heoFollowMountPoints)->CreateChildEnumerator(u"sub", kAttributeDirectory);
      ASSERT_TRUE(folder->Next());
      EXPECT_EQ(folder->CanDescend(), c.fDescends) << c.fWhat;
    }
  }
}

// Twenty folders, each of which holds two links to the next, and the last to the first: a million roads.
TEST_F(EnumeratorSeam, ManyRoadsToOneFolderAreNoMoreWork_StandInForReparsePoints) {
  fApi.fBatches = {{{u"a", 0x410, 0, 0, IO_REPARSE_TAG_SYMLINK}, {u"b", 0x410, 0, 0, IO_REPARSE_TAG_SYMLINK}}};
  fApi.fReparsePoint = {IO_REPARSE_TAG_SYMLINK, u"D:\\next"};
  fApi.fResolve = [](const std::u16string& pPath) {
    auto depth = std::count(pPath.begin(), pPath.end(), u'\\') - 1;
    return depth == 0 ? pPath : std::u16string(u"D:\\f") + static_cast<char16_t>(u'a' + depth % 20);
  };
  for (const TMake& make : Both()) {
    std::vector<TRef<IHierarchicalEnumerator>> waiting{make(heoFollowSymbolicLinks)};
    int entries = 0;
    size_t folders = 0;
    for (; folders < waiting.size() && folders < 1000; ++folders) {
      TRef<IHierarchicalEnumerator> folder = std::move(waiting[folders]);
      std::vector<std::u16string> names;
      for (; folder->Next(); ++entries)
        if (folder->CanDescend()) names.emplace_back(folder->GetObjectName());
      EXPECT_EQ(folder->GetErrorCode(), 0U);
      for (const std::u16string& name : names) waiting.push_back(folder->CreateChildEnumerator(name, 0x410));
    }
    EXPECT_EQ(entries, 42) << "two in each folder and in the root";
    EXPECT_EQ(folders, 43U);
  }
}

TEST_F(EnumeratorSeam, LinkThatIsNotFollowedIsNotOpenedByNameEither_StandInForReparsePoints) {
  fApi.fBatches = {{{u"file", 32}}};
  fApi.fReparsePoint = {IO_REPARSE_TAG_SYMLINK, u"D:\\x"};
  for (const TMake& make : Both()) {
    EXPECT_EQ(NamesOf(*make(0)->CreateChildEnumerator(u"l", 0x410)), TNames{});
    EXPECT_EQ(NamesOf(*make(heoFollowSymbolicLinks)->CreateChildEnumerator(u"l", 0x410)), TNames{"file"});
    EXPECT_EQ(NamesOf(*make(0)->CreateChildEnumerator(u"folder", 0x10)), TNames{"file"});
  }
}

TEST_F(EnumeratorSeam, VolumeInAFolderHasItsOwnClusters_StandInForVolume) {
  fApi.fReparsePoint = {IO_REPARSE_TAG_MOUNT_POINT, u"\\\\?\\Volume{1}\\"};
  fApi.fClusterSizes = {{u"C:\\scan", 4096}, {u"C:\\scan\\v", 512}};
  fApi.fBatches = {{{u"file", 32, 600}, {u"v", 0x410, 0, 0, IO_REPARSE_TAG_MOUNT_POINT}, {u"sub", 0x10}}};
  auto top = Find(heoFollowMountPoints);
  ASSERT_TRUE(top->Next());
  EXPECT_EQ(top->GetAllocated(), 4096);
  NamesOf(*top);
  auto volume = top->CreateChildEnumerator(u"v", 0x410);
  auto below = volume->CreateChildEnumerator(u"sub", 0x10);
  auto beside = top->CreateChildEnumerator(u"sub", 0x10);
  for (const auto& [folder, expected] : {std::pair(volume, 1024), {below, 1024}, {beside, 4096}}) {
    ASSERT_TRUE(folder->Next());
    EXPECT_EQ(folder->GetAllocated(), expected) << Narrow(folder->GetPath());
  }
}

// The bytes of a reparse point: header, offsets and lengths, then the target behind its printed form.
std::vector<std::byte> ReparseData(uint32_t pTag, const std::u16string& pTarget) {
  bool isSymbolicLink = pTag == IO_REPARSE_TAG_SYMLINK;
  const std::u16string printed = u"shown";
  std::vector<uint16_t> words = {static_cast<uint16_t>(pTag),
                                 static_cast<uint16_t>(pTag >> 16),
                                 0,
                                 0,
                                 10,
                                 static_cast<uint16_t>(pTarget.size() * 2),
                                 0,
                                 10};
  if (isSymbolicLink) words.insert(words.end(), {0, 0});
  words.insert(words.end(), printed.begin(), printed.end());
  words.insert(words.end(), pTarget.begin(), pTarget.end());
  words[2] = static_cast<uint16_t>(words.size() * 2 - 8);
  std::vector<std::byte> data(words.size() * 2);
  std::memcpy(data.data(), words.data(), data.size());
  return data;
}

TEST(ReparseData, TargetsAreReadAndDamageIsNoticed) {
  const std::pair<std::u16string, std::string> targets[] = {
      {u"\\??\\C:\\a b", "C:\\a b"},
      {u"\\??\\UNC\\server\\share\\x", "\\\\server\\share\\x"},
      {u"\\??\\Volume{1}\\x", "\\\\?\\Volume{1}\\x"},
      {u"..\\x", "..\\x"},
  };
  for (uint32_t tag :
       {static_cast<uint32_t>(IO_REPARSE_TAG_SYMLINK), static_cast<uint32_t>(IO_REPARSE_TAG_MOUNT_POINT)})
    for (const auto& [stored, expected] : targets) {
      std::vector<std::byte> data = ReparseData(tag, stored);
      TReparsePoint point;
      ASSERT_TRUE(ParseReparseData(data, point));
      EXPECT_EQ(point.fTag, tag);
      EXPECT_EQ(Narrow(point.fTarget), expected);
      for (size_t length = 0; length < data.size(); ++length)
        EXPECT_FALSE(ParseReparseData(std::span(data.data(), length), point)) << length;
      std::vector<std::byte> wrong = data;
      wrong[8] = std::byte{0xFF};  // the target would begin behind the end
      EXPECT_FALSE(ParseReparseData(wrong, point));
    }
}

}  // namespace
}  // namespace Vantrel::Enumerators
