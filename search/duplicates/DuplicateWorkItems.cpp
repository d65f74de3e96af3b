#include "search/duplicates/DuplicateWorkItems.h"

#include <algorithm>
#include <utility>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/InterruptibleThread.h"

namespace Vantrel::Search {

namespace {

// The key of a file: its checksum, and what it shares with others beside it.
TMD5Hash KeyOf(TMD5Hash pHash, uint32_t pBucket) {
  uint64_t mixed = 0;
  std::memcpy(&mixed, pHash.fBytes.data(), sizeof mixed);
  mixed ^= (uint64_t{pBucket} + 1) * 0x9E3779B97F4A7C15;
  std::memcpy(pHash.fBytes.data(), &mixed, sizeof mixed);
  return pHash;
}

}  // namespace

bool TDuplicatesWorkItem::GoesOn() {
  for (uint64_t seen = fRun.CountChanges(); fRun.IsPaused() && !fRun.IsCanceled(); seen = fRun.CountChanges()) {
    SetStatus(ThreadPool::TTaskStatus::tsPaused);
    fRun.WaitForChange(seen);
    SetStatus(ThreadPool::TTaskStatus::tsRunning);
  }
  return !fRun.IsCanceled();
}

void TDuplicatesWorkItem::Execute() {
  {
    TInterruptibleThread thread;
    TCancellationWatch watch(fCancellationToken, [&thread] { thread.Interrupt(); });
    if (GoesOn()) DoWork();
  }
  fDone();
}

void TDuplicateQueryHashWorkItem::DoWork() {
  bool hasHash = false;
  try {
    hasHash = QueryHash();
  } catch (...) {
    // What an interrupted call says is no fault of the file.
    if (!fRun.IsCanceled()) fRun.Leave(*fParameters.fFile, ReasonOfCaughtException(*fParameters.fFile));
  }
  if (!GoesOn()) return;
  if (hasHash) HandOver();
  fRun.CountFile();
}

bool TDuplicateQueryHashWorkItem::QueryHash() {
  TDuplicateFile& file = *fParameters.fFile;
  if (fParameters.fPass == TChecksumPass::cpWhole && file.fHasHash) {
    fMD5Hash = file.fHash;
    return fIsWhole = true;
  }
  std::unique_ptr<TChecksumReader> reader = fRun.TakeReader();
  const std::optional<TFileSum> sum = reader->Sum(file, fParameters.fPass, [this] { return GoesOn(); });
  fRun.GiveReader(std::move(reader));
  if (!sum) return false;
  fMD5Hash = KeyOf(sum->fHash, file.fBucket);
  fIsWhole = sum->fIsWhole;
  if (sum->fKnownWhole) {
    file.fHash = KeyOf(*sum->fKnownWhole, file.fBucket);
    file.fHasHash = true;
  }
  return true;
}

void TDuplicateQueryHashWorkItem::HandOver() {
  TDuplicateFile& file = *fParameters.fFile;
  if (!fIsWhole) return fParameters.fSmallGenerator->Add(fParameters.fFile, fMD5Hash);
  file.fHash = fMD5Hash;
  file.fHasHash = true;
  fParameters.fGenerator->Add(fParameters.fFile, fMD5Hash);
}

// --- folders ---------------------------------------------------------------------------------------------------------

bool TChecksumKnownFolders::Find(const TFolderNode& pFolder, TMD5Hash& pHash) const {
  TSharedLock lock(fLock);
  const auto found = fHashes.find(&pFolder);
  if (found == fHashes.end()) return false;
  pHash = found->second;
  return true;
}

void TChecksumKnownFolders::Add(const TFolderNode& pFolder, const TMD5Hash& pHash) {
  TExclusiveLock lock(fLock);
  fHashes.emplace(&pFolder, pHash);
}

// Folders may lie deeper than a stack of calls.
bool TDuplicateFolderWorkItem::QueryHash() {
  std::vector<const TFolderNode*> open{&fFolder};
  TMD5Hash known;
  while (!open.empty()) {
    if (!GoesOn()) return false;
    const TFolderNode& folder = *open.back();
    const size_t count = open.size();
    for (const TFolderNode* child : folder.fFolders)
      if (!fChecksumKnownFolders.Find(*child, known)) open.push_back(child);
    if (open.size() > count) continue;
    open.pop_back();
    if (!fChecksumKnownFolders.Find(folder, known)) fChecksumKnownFolders.Add(folder, HashOf(folder));
  }
  return fChecksumKnownFolders.Find(fFolder, fMD5Hash);
}

void TDuplicateFolderWorkItem::HandOver() {
  fParameters.fGenerator->Add(fParameters.fFile, KeyOf(fMD5Hash, fParameters.fFile->fBucket));
}

TMD5Hash TDuplicateFolderWorkItem::HashOf(const TFolderNode& pFolder) {
  if (!fHashCalculator) fHashCalculator = CreateHashCalculator(fRun.ChecksumKind());
  const auto add = [this](const void* pBytes, size_t pLength) {
    fHashCalculator->Add({static_cast<const char*>(pBytes), pLength});
  };
  // The kind of an entry, the length of its name, the name, and what stands for its contents.
  const auto addEntry = [&](char pKind, const std::u16string& pName, const TMD5Hash& pHash) {
    const uint64_t length = pName.size();
    add(&pKind, 1);
    add(&length, sizeof length);
    add(pName.data(), pName.size() * sizeof(char16_t));
    add(pHash.fBytes.data(), pHash.fBytes.size());
  };
  // Both are in the order of their names.
  for (const TDuplicateFile* file : pFolder.fFiles) {
    const TDuplicateFile& primary = file->Primary();
    if (primary.fHasHash) {
      addEntry('f', file->fItem.fName, primary.fHash);
      continue;
    }
    // The contents of this file are those of no other. It equals only itself, under another name.
    TMD5Hash own;
    const auto address = reinterpret_cast<uintptr_t>(&primary);
    std::memcpy(own.fBytes.data(), &address, sizeof address);
    addEntry('o', file->fItem.fName, own);
  }
  for (const TFolderNode* folder : pFolder.fFolders) {
    TMD5Hash hash;
    fChecksumKnownFolders.Find(*folder, hash);
    addEntry('d', folder->fItem->fItem.fName, hash);
  }
  return fHashCalculator->Finish();
}

// --- bytes -----------------------------------------------------------------------------------------------------------

void TVerifyGroupWorkItem::DoWork() {
  std::unique_ptr<TChecksumReader> reader = fRun.TakeReader();
  std::vector<TRef<TDuplicateFile>> rest = fFiles, alone;
  TGroups groups;
  while (!rest.empty()) {
    std::vector<TRef<TDuplicateFile>> equal, different;
    try {
      const auto areEqual = reader->AreEqual(rest, [this] { return GoesOn(); });
      if (!areEqual) return;
      for (size_t i = 0; i < rest.size(); ++i) {
        if ((*areEqual)[i])
          equal.push_back(rest[i]);
        else if (!rest[i]->fHasLeft)
          different.push_back(rest[i]);
      }
    } catch (...) {
      if (fRun.IsCanceled()) return;
      fRun.Leave(*rest.front(), ReasonOfCaughtException(*rest.front()));
      different.assign(rest.begin() + 1, rest.end());
    }
    if (equal.size() == 1) alone.push_back(equal.front());
    if (equal.size() > 1) groups.push_back(std::move(equal));
    rest = std::move(different);
  }
  // The search may have been paused or cancelled during the last block.
  if (!GoesOn()) return;
  for (const TRef<TDuplicateFile>& file : alone)
    if (!file->fHasLeft) fRun.Leave(*file, u"has the checksum of other files, but other bytes");
  fGroups = std::move(groups);
  fRun.GiveReader(std::move(reader));
  fRun.CountFile();
}

}  // namespace Vantrel::Search
