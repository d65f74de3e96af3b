#pragma once

// Files in memory for searches for duplicates: what each gives, how often it was opened, and faults.

#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/duplicates/DuplicateSearch.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Search {

using namespace Testing;
using TGroups = std::vector<std::vector<std::string>>;

constexpr int64_t kForever = 300'000;  // only there to end a hang

struct TMemoryFile {
  std::string fBytes;
  uint64_t fId = 0;
  int64_t fListedSize = -1;                  // as a listing had it; -1: as it is
  int fFailAtOpening = 0;                    // this opening, counted from 1, fails
  int fChangeAtOpening = 0;                  // at this opening the file is written while it is read
  std::map<int, std::string> fOtherBytes{};  // what an opening gives in place of the bytes
  TGate* fGate = nullptr;                    // the reading passes through it
  int fGateAtOpening = 1;                    // of this opening
  int fOpenings = 0;
  int64_t fBytesRead = 0;
  int64_t fChanges = 0;
  TKivFileTime fStatusChange{1};
  uint64_t fPlace = 0;  // on the disk; 0: not known
};

class TMemoryFiles : public TInterfaced<IStorage> {
 public:
  std::map<std::u16string, TMemoryFile> fFiles;
  std::vector<std::string> fOpened;  // in this order

  TMemoryFile& Add(const std::u16string& pName, std::string pBytes) {
    TMemoryFile& file = fFiles[u"/m/" + pName];
    file.fBytes = std::move(pBytes);
    file.fId = fFiles.size();
    return file;
  }
  // The files, and the folders between them and the searched path /m.
  std::vector<TFoundItem> Found() {
    std::vector<TFoundItem> found;
    std::map<std::u16string, TRef<const TFoundFolder>> folders;
    const auto add = [&](const std::u16string& pPath) -> TFoundItem& {
      const size_t name = pPath.rfind(u'/') + 1;
      TRef<const TFoundFolder>& folder = folders[pPath.substr(0, name - 1)];
      if (!folder) folder = MakeRef<const TFoundFolder>(pPath.substr(0, name - 1), u'/', TRef<IStorage>(this));
      TFoundItem& item = found.emplace_back();
      item.fFolder = folder;
      item.fName = pPath.substr(name);
      return item;
    };
    for (const auto& [path, file] : fFiles)
      add(path).fValues.fSize = file.fListedSize < 0 ? static_cast<int64_t>(file.fBytes.size()) : file.fListedSize;
    for (const auto& [path, folder] : std::map(folders)) {
      if (path == u"/m") continue;
      TFoundItem& item = add(path);
      item.fValues.fAttributes = kAttributeDirectory;
      item.fIsFolder = item.fIsEntered = true;
    }
    return found;
  }
  std::optional<TStoredFileFacts> QueryFacts(const std::u16string& pPath) const override {
    TCriticalSectionLock lock(fLock);
    return FactsOf(fFiles.at(pPath));
  }
  std::optional<uint64_t> PlaceOnDisk(const std::u16string& pPath) const override {
    const uint64_t place = fFiles.at(pPath).fPlace;
    return place == 0 ? std::nullopt : std::optional(place);
  }
  int CountOpenings() const {
    TCriticalSectionLock lock(fLock);
    return std::accumulate(fFiles.begin(), fFiles.end(), 0,
                           [](int pSum, const auto& pFile) { return pSum + pFile.second.fOpenings; });
  }

  std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext&) const override {
    TMemoryFile& file = const_cast<TMemoryFiles*>(this)->fFiles.at(pPath);
    TCriticalSectionLock lock(fLock);
    const_cast<TMemoryFiles*>(this)->fOpened.push_back(ToUtf8(pPath.substr(3)));
    if (++file.fOpenings == file.fFailAtOpening)
      throw EOSError(TMemoryStorage::NotFoundCode(), "TMemoryFiles.OpenFile", pPath);
    return std::make_unique<TOpenFile>(file, fLock);
  }
  std::u16string_view GetProtocol() const override { return u"memory:"; }
  char16_t GetPathDelimiter() const override { return u'/'; }
  std::u16string AbsolutePath(std::u16string_view pTyped) const override { return std::u16string(pTyped); }
  bool Exists(const std::u16string& pPath) const override { return fFiles.contains(pPath); }
  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string&, const TScanContext&) const override {
    return nullptr;
  }
  TStorageInformation GetInformation(const std::u16string&) const override { return {}; }
  std::string ErrorText(uint32_t) const override { return "not there"; }

 private:
  static TStoredFileFacts FactsOf(const TMemoryFile& pFile) {
    return {1, pFile.fId, 0, static_cast<int64_t>(pFile.fBytes.size()), {1 + pFile.fChanges}, pFile.fStatusChange};
  }

  class TOpenFile final : public IStoredFile {
   public:
    TOpenFile(TMemoryFile& pFile, TCriticalSection& pLock)
        : fFile(pFile), fLock(pLock), fOpening(pFile.fOpenings), fBytes(pFile.fBytes) {
      if (const auto other = pFile.fOtherBytes.find(fOpening); other != pFile.fOtherBytes.end()) fBytes = other->second;
    }
    size_t Read(char* pBuffer, size_t pLength) override {
      if (fFile.fGate && fOpening == fFile.fGateAtOpening) fFile.fGate->Pass();
      TCriticalSectionLock lock(fLock);
      if (fOpening == fFile.fChangeAtOpening) ++fFile.fChanges;
      const size_t length = std::min(pLength, fBytes.size() - std::min(fBytes.size(), fPosition));
      std::memcpy(pBuffer, fBytes.data() + fPosition, length);
      fPosition += length;
      fFile.fBytesRead += static_cast<int64_t>(length);
      return length;
    }
    TStoredFileFacts GetFacts() override {
      TCriticalSectionLock lock(fLock);
      return FactsOf(fFile);
    }
    bool TrySeek(uint64_t pPosition) override {
      fPosition = pPosition;
      return true;
    }

   private:
    TMemoryFile& fFile;
    TCriticalSection& fLock;
    const int fOpening;
    std::string fBytes;
    size_t fPosition = 0;
  };

  mutable TCriticalSection fLock;
};

inline TDuplicateResult Search(TMemoryFiles& pFiles, TDuplicateSearchSettings pSettings = {}) {
  TDuplicateSearch search(std::move(pSettings), pFiles.Found());
  EXPECT_TRUE(search.WaitForEnd(kForever));
  EXPECT_EQ(search.GetStatus(), ThreadPool::TTaskStatus::tsCompleted);
  return search.TakeResult();
}

// The names of each group, in the order of the names of the first ones. A hard link has a "=" in front.
inline TGroups NamesOf(const TDuplicateResult& pResult) {
  TGroups groups;
  for (const TDuplicateGroup& group : pResult.fGroups) {
    groups.emplace_back();
    for (const TDuplicateName& name : group.fNames)
      groups.back().push_back((name.fIsLink ? "=" : "") + ToUtf8(name.fFile->GetObjectName()));
  }
  std::sort(groups.begin(), groups.end());
  return groups;
}

inline std::vector<std::string> NotesOf(const TDuplicateResult& pResult) {
  std::vector<std::string> notes;
  for (const TDuplicateNote& note : pResult.fNotes)
    notes.push_back(ToUtf8(note.fPath.substr(3)) + ": " + ToUtf8(note.fText));
  return notes;
}

}  // namespace Vantrel::Search
