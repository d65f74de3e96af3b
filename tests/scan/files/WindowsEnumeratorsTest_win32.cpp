// Both Windows enumerators on one real folder, entry by entry.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "platform/text/Text.h"
#include "scan/files/NTApiEnumerator_win32.h"
#include "scan/files/Win32FindEnumerator_win32.h"
#include "scan/storage/EnumeratorFactory.h"

// Both enumerators on one real folder: what was put there is what both list, value by value.
namespace Vantrel::Enumerators {
namespace {

using Win32::Wide;

constexpr TAttributes kComparedAttributes =
    kAttributeReadOnly | kAttributeHidden | kAttributeSystem | kAttributeDirectory | kAttributeReparsePoint;

struct TExpected {
  bool fIsFolder = false;
  int64_t fSize = 0;
  TAttributes fAttributes = 0;
  int64_t fChangeTicks = 0;  // 0: not set by the test
};

// A folder in the temporary folder, filled through extended paths and taken away again with all that lies beneath.
class TFilledFolder {
 public:
  TFilledFolder() {
    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    fPath = std::u16string(Win32::Narrow(std::wstring_view(temp))) + u"vantrel-" +
            FromUtf8(std::to_string(GetCurrentProcessId()) + "-" + std::to_string(GetTickCount64()));
    CreateDirectoryW(Wide(Extended(u"")), nullptr);
  }
  ~TFilledFolder() {
    for (auto entry = fEntries.rbegin(); entry != fEntries.rend(); ++entry) {
      SetFileAttributesW(Wide(Extended(entry->first)), FILE_ATTRIBUTE_NORMAL);
      if (entry->second.fIsFolder)
        RemoveDirectoryW(Wide(Extended(entry->first)));
      else
        DeleteFileW(Wide(Extended(entry->first)));
    }
    RemoveDirectoryW(Wide(Extended(u"")));
  }

  // False when the system beneath does not take such a name.
  bool AddFolder(const std::u16string& pName) {
    if (!CreateDirectoryW(Wide(Extended(pName)), nullptr)) return false;
    fEntries[pName] = {true, 0, kAttributeDirectory, 0};
    return true;
  }
  bool AddFile(const std::u16string& pName, int64_t pSize, TAttributes pAttributes = 0, int64_t pChangeTicks = 0) {
    HANDLE file = CreateFileW(Wide(Extended(pName)), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    std::vector<char> data(static_cast<size_t>(pSize), 'x');
    DWORD written = 0;
    WriteFile(file, data.data(), static_cast<DWORD>(pSize), &written, nullptr);
    if (pChangeTicks != 0) {
      FILETIME time{static_cast<DWORD>(pChangeTicks), static_cast<DWORD>(pChangeTicks >> 32)};
      SetFileTime(file, nullptr, nullptr, &time);
    }
    CloseHandle(file);
    if (pAttributes != 0) SetFileAttributesW(Wide(Extended(pName)), pAttributes);
    fEntries[pName] = {false, pSize, pAttributes, pChangeTicks};
    return true;
  }
  bool AddHardLink(const std::u16string& pName, const std::u16string& pTo) {
    if (!CreateHardLinkW(Wide(Extended(pName)), Wide(Extended(pTo)), nullptr)) return false;
    fEntries[pName] = fEntries[pTo];
    return true;
  }

  const std::u16string& Path() const { return fPath; }
  const std::map<std::u16string, TExpected>& Entries() const { return fEntries; }

 private:
  std::u16string Extended(const std::u16string& pName) const {
    return u"\\\\?\\" + fPath + (pName.empty() ? u"" : u"\\") + pName;
  }

  std::u16string fPath;
  std::map<std::u16string, TExpected> fEntries;  // by path beneath fPath
};

using TListing = std::map<std::u16string, TEntryValues>;

TListing ListTree(TRef<IHierarchicalEnumerator> pTop) {
  TListing listing;
  size_t prefix = pTop->GetPath().size() + 1;
  std::vector<TRef<IHierarchicalEnumerator>> waiting{std::move(pTop)};
  while (!waiting.empty()) {
    TRef<IHierarchicalEnumerator> folder = std::move(waiting.back());
    waiting.pop_back();
    std::vector<std::pair<std::u16string, TAttributes>> children;
    while (folder->Next()) {
      bool isNew = listing.emplace(folder->GetFullPath().substr(prefix), folder->GetEntryValues()).second;
      EXPECT_TRUE(isNew) << ToDisplay(folder->GetFullPath()) << " is listed twice";
      if (folder->CanDescend()) children.emplace_back(folder->GetObjectName(), folder->GetAttributes());
    }
    EXPECT_EQ(folder->GetErrorCode(), 0U) << ToDisplay(folder->GetPath());
    for (const auto& [name, attributes] : children) waiting.push_back(folder->CreateChildEnumerator(name, attributes));
  }
  return listing;
}

void CompareWithExpected(const TListing& pListing, const TFilledFolder& pFolder) {
  EXPECT_EQ(pListing.size(), pFolder.Entries().size());
  for (const auto& [name, expected] : pFolder.Entries()) {
    auto found = pListing.find(name);
    ASSERT_NE(found, pListing.end()) << ToDisplay(name) << " is missing";
    EXPECT_EQ(found->second.fSize, expected.fSize) << ToDisplay(name);
    EXPECT_EQ(found->second.fAttributes & kComparedAttributes, expected.fAttributes) << ToDisplay(name);
    if (expected.fChangeTicks != 0) {
      EXPECT_EQ(found->second.fLastChangeDate.fTicks, expected.fChangeTicks) << ToDisplay(name);
    }
  }
}

// Folders' access dates are left out: reading a folder may change them.
void CompareListings(const TListing& pA, const TListing& pB) {
  ASSERT_EQ(pA.size(), pB.size());
  for (auto a = pA.begin(), b = pB.begin(); a != pA.end(); ++a, ++b) {
    ASSERT_EQ(a->first, b->first);
    const TEntryValues& x = a->second;
    const TEntryValues& y = b->second;
    EXPECT_EQ(std::tie(x.fSize, x.fAllocated, x.fAttributes), std::tie(y.fSize, y.fAllocated, y.fAttributes))
        << ToDisplay(a->first);
    EXPECT_EQ(x.fLastChangeDate, y.fLastChangeDate) << ToDisplay(a->first);
    EXPECT_EQ(x.fCreationDate, y.fCreationDate) << ToDisplay(a->first);
    if ((x.fAttributes & kAttributeDirectory) == 0) {
      EXPECT_EQ(x.fLastAccessDate, y.fLastAccessDate) << ToDisplay(a->first);
    }
  }
}

void FillWithHardCases(TFilledFolder& pFolder) {
  for (int i = 0; i < 1200; ++i) pFolder.AddFile(FromUtf8("file" + std::to_string(i)), i * 37 % 9000);
  ASSERT_TRUE(pFolder.AddFolder(u"empty folder"));
  ASSERT_TRUE(pFolder.AddFolder(u"names"));
  for (const char16_t* name : {u"Ünïcode", u"\u4E2D\u6587", u"\U0001F600 smile", u"e\u0301", u"a;b", u"a..three"})
    ASSERT_TRUE(pFolder.AddFile(std::u16string(u"names\\") + name, 5));
  // Not every system beneath takes these.
  pFolder.AddFile(u"names\\lone \xD800 surrogate", 6);
  pFolder.AddFile(u"names\\trailing dot.", 7);
  pFolder.AddFile(u"names\\trailing blank ", 8);
  ASSERT_TRUE(pFolder.AddFile(u"names\\" + std::u16string(200, u'n'), 9));
  ASSERT_TRUE(pFolder.AddFile(u"read-only", 4096, kAttributeReadOnly));
  pFolder.AddFile(u"hidden", 4097, kAttributeHidden | kAttributeSystem);
  ASSERT_TRUE(pFolder.AddFile(u"dated", 1, 0, 131'592'816'000'000'000));  // 2018-01-01 12:00 UTC
  ASSERT_TRUE(pFolder.AddFile(u"old", 1, 0, 119'600'064'000'000'000));    // 1980-01-01 00:00 UTC
  ASSERT_TRUE(pFolder.AddFolder(u"sub"));
  ASSERT_TRUE(pFolder.AddFile(u"sub\\linked", 8192));
  ASSERT_TRUE(pFolder.AddHardLink(u"link", u"sub\\linked"));
  std::u16string chain = u"chain";
  ASSERT_TRUE(pFolder.AddFolder(chain));
  for (int level = 0; level < 40; ++level) {
    chain += u"\\" + std::u16string(60, static_cast<char16_t>(u'a' + level % 26));
    ASSERT_TRUE(pFolder.AddFolder(chain)) << level;
  }
  ASSERT_TRUE(pFolder.AddFile(chain + u"\\bottom", 77));
}

TEST(WindowsEnumerators, BothListWhatIsThere) {
  TFilledFolder folder;
  FillWithHardCases(folder);
  TListing native = ListTree(TNTApiEnumerator::CreateForFolderPath(folder.Path(), 0));
  TListing find = ListTree(TFileSystemEnumerator::CreateForFolderPath(folder.Path(), 0));
  CompareWithExpected(native, folder);
  CompareWithExpected(find, folder);
  CompareListings(native, find);
  TListing byUrl = ListTree(THierarchicalEnumeratorFactory::CreateForPath(u"FILE:" + folder.Path(), 0));
  CompareListings(native, byUrl);
}

TEST(WindowsEnumerators, HardLinksShareTheirAllocation) {
  TFilledFolder folder;
  ASSERT_TRUE(folder.AddFile(u"one", 8192));
  ASSERT_TRUE(folder.AddHardLink(u"two", u"one"));
  ASSERT_TRUE(folder.AddFile(u"alone", 8192));
  for (bool isNative : {true, false}) {
    TRef<IHierarchicalEnumerator> enumerator;
    if (isNative)
      enumerator = TNTApiEnumerator::CreateForFolderPath(folder.Path(), heoShareHardLinks);
    else
      enumerator = TFileSystemEnumerator::CreateForFolderPath(folder.Path(), heoShareHardLinks);
    TListing listing = ListTree(enumerator);
    EXPECT_EQ(listing[u"one"].fAllocated, 4096);
    EXPECT_EQ(listing[u"two"].fAllocated, 4096);
    EXPECT_EQ(listing[u"alone"].fAllocated, 8192);
  }
}

TEST(WindowsEnumerators, OneObjectStandsForItself) {
  TFilledFolder folder;
  ASSERT_TRUE(folder.AddFile(u"file", 300));
  ASSERT_TRUE(folder.AddFile(u"file2", 1));
  ASSERT_TRUE(folder.AddFolder(u"sub"));
  std::u16string file = folder.Path() + u"\\file";
  const std::vector<TRef<IHierarchicalEnumerator>> ofFile = {
      TNTApiEnumerator::CreateForObject(file, 0), TNTApiEnumerator::CreateForPath(file, 0),
      TFileSystemEnumerator::CreateForObject(file, 0), THierarchicalEnumeratorFactory::CreateForObject(file, 0)};
  for (const auto& enumerator : ofFile) {
    ASSERT_TRUE(enumerator->Next());
    EXPECT_EQ(enumerator->GetObjectName(), u"file");
    EXPECT_EQ(enumerator->GetFullPath(), file);
    EXPECT_EQ(enumerator->GetSize(), 300);
    EXPECT_FALSE(enumerator->IsFolder());
    EXPECT_FALSE(enumerator->Next());
    EXPECT_EQ(enumerator->GetErrorCode(), 0U);
  }
  auto sub = TNTApiEnumerator::CreateForObject(folder.Path() + u"\\sub", 0);
  ASSERT_TRUE(sub->Next());
  EXPECT_TRUE(sub->IsFolder());
  EXPECT_FALSE(sub->Next());
  auto drive = TNTApiEnumerator::CreateForObject(u"C:\\", 0);
  ASSERT_TRUE(drive->Next());
  EXPECT_TRUE(drive->IsFolder());
  EXPECT_EQ(drive->GetFullPath(), u"C:\\");
  EXPECT_FALSE(drive->Next());
}

TEST(WindowsEnumerators, WhatIsNotThereIsAnError) {
  TFilledFolder folder;
  std::u16string missing = folder.Path() + u"\\missing";
  for (const auto& enumerator :
       {TNTApiEnumerator::CreateForPath(missing, 0), TFileSystemEnumerator::CreateForPath(missing, 0),
        TRef<IHierarchicalEnumerator>(TNTApiEnumerator::CreateForFolderPath(missing, 0)),
        TRef<IHierarchicalEnumerator>(TFileSystemEnumerator::CreateForFolderPath(missing, 0)),
        TNTApiEnumerator::CreateForObject(missing, 0), TFileSystemEnumerator::CreateForObject(missing, 0)}) {
    EXPECT_FALSE(enumerator->Next());
    EXPECT_NE(enumerator->GetErrorCode(), 0U);
    EXPECT_EQ(enumerator->GetError(), TEnumeratorError::eeOther);
  }
}

TEST(WindowsEnumerators, FoldersAreToldApart) {
  TFilledFolder folder;
  ASSERT_TRUE(folder.AddFolder(u"sub"));
  IWin32FileApi& api = TSystemFileApi::Instance();
  std::vector<TFolderIdentity> identities;
  for (const std::u16string& path :
       {folder.Path(), folder.Path() + u"\\sub", folder.Path() + u"\\SUB", folder.Path() + u"\\sub\\.."}) {
    uint32_t error = 0;
    HANDLE handle = api.OpenDirectory(path, FILE_FLAG_BACKUP_SEMANTICS, error);
    ASSERT_EQ(error, 0U) << ToDisplay(path);
    EXPECT_EQ(api.QueryIdentity(handle, identities.emplace_back()), 0U);
    api.CloseDirectory(handle);
  }
  EXPECT_FALSE(identities[0] == identities[1]);
  EXPECT_TRUE(identities[1] == identities[2]);
  EXPECT_TRUE(identities[0] == identities[3]);
}

TEST(WindowsEnumerators, FolderItselfIsDescribedBeforeItsEntries) {
  TFilledFolder folder;
  ASSERT_TRUE(folder.AddFile(u"file", 300));
  auto enumerator = TNTApiEnumerator::CreateForFolderPath(folder.Path(), 0);
  EXPECT_TRUE(enumerator->IsFolder());
  EXPECT_EQ(enumerator->GetFullPath(), folder.Path());
  EXPECT_EQ(enumerator->GetSize(), 0);
  EXPECT_TRUE(enumerator->GetLastChangeDate().IsSet());
}

}  // namespace
}  // namespace Vantrel::Enumerators
