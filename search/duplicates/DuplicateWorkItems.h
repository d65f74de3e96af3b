#pragma once

// The pieces of work of a search for duplicates: checksums of files, comparisons of bytes, checksums of folders.

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "platform/threads/CriticalSection.h"
#include "scan/engine/ThreadPool.h"
#include "search/duplicates/ChecksumReader.h"
#include "search/duplicates/FolderContents.h"

namespace Vantrel::Search {

// What a piece of work is about.
struct TDuplicatesWorkItemParameters {
  TRef<TDuplicateFile> fFile;
  TChecksumPass fPass = TChecksumPass::cpFirst;
  // Takes the file with its key. The second one is for checksums of some of its bytes.
  TRef<IDuplicatesGroupGenerator> fGenerator;
  TRef<IDuplicatesGroupGenerator> fSmallGenerator{};
};

// Waits while the search is paused, ends when it is cancelled, and tells when it is done.
class TDuplicatesWorkItem : public ThreadPool::TBasicWorkItem {
 protected:
  // Both must outlive the item. pDone is called at the end, whatever it was.
  TDuplicatesWorkItem(TDuplicatesRun& pRun, const std::function<void()>& pDone)
      : TBasicWorkItem(TRef<ICancellationIndicator>(pRun.Token().get())), fRun(pRun), fDone(pDone) {}

  virtual void DoWork() = 0;
  void Execute() final;
  // While the search is paused, it waits. False when the search is cancelled.
  bool GoesOn();

  TDuplicatesRun& fRun;

 private:
  const std::function<void()>& fDone;
};

// Computes a file's checksum and hands both to the group generator.
class TDuplicateQueryHashWorkItem : public TDuplicatesWorkItem {
 public:
  TDuplicateQueryHashWorkItem(TDuplicatesRun& pRun, const std::function<void()>& pDone,
                              TDuplicatesWorkItemParameters pParameters)
      : TDuplicatesWorkItem(pRun, pDone), fParameters(std::move(pParameters)) {}

 protected:
  void DoWork() override;
  // Computes fMD5Hash. False when there is nothing to hand over.
  virtual bool QueryHash();
  virtual void HandOver();

  const TDuplicatesWorkItemParameters fParameters;
  TMD5Hash fMD5Hash;

 private:
  bool fIsWhole = false;
};

// The checksums of folders that are known already. Any thread.
class TChecksumKnownFolders {
 public:
  bool Find(const TFolderNode& pFolder, TMD5Hash& pHash) const;
  void Add(const TFolderNode& pFolder, const TMD5Hash& pHash);

 private:
  mutable TSlimReaderWriterLock fLock;
  std::unordered_map<const TFolderNode*, TMD5Hash> fHashes GUARDED_BY(fLock);
};

// Computes a folder's checksum from the names and contents beneath it.
class TDuplicateFolderWorkItem final : public TDuplicateQueryHashWorkItem {
 public:
  TDuplicateFolderWorkItem(TDuplicatesRun& pRun, const std::function<void()>& pDone,
                           TDuplicatesWorkItemParameters pParameters, const TFolderNode& pFolder,
                           TChecksumKnownFolders& pKnown)
      : TDuplicateQueryHashWorkItem(pRun, pDone, std::move(pParameters)),
        fFolder(pFolder),
        fChecksumKnownFolders(pKnown) {}

 protected:
  bool QueryHash() override;
  void HandOver() override;

 private:
  // From the entries of one folder, whose sub-folders are known.
  TMD5Hash HashOf(const TFolderNode& pFolder);

  const TFolderNode& fFolder;
  TChecksumKnownFolders& fChecksumKnownFolders;
  std::unique_ptr<HashUtils::IHashCalculator> fHashCalculator;
};

// Compares the bytes of files with one checksum. What has other bytes than the others leaves the search, unless several
// files share them: these stay together.
class TVerifyGroupWorkItem final : public TDuplicatesWorkItem {
 public:
  // Several groups only if files with one checksum differ.
  using TGroups = std::vector<std::vector<TRef<TDuplicateFile>>>;
  // Puts the groups of equal files into pGroups, unless the search is cancelled before.
  TVerifyGroupWorkItem(TDuplicatesRun& pRun, const std::function<void()>& pDone,
                       std::vector<TRef<TDuplicateFile>> pFiles, TGroups& pGroups)
      : TDuplicatesWorkItem(pRun, pDone), fFiles(std::move(pFiles)), fGroups(pGroups) {}

 protected:
  void DoWork() override;

 private:
  const std::vector<TRef<TDuplicateFile>> fFiles;
  TGroups& fGroups;
};

}  // namespace Vantrel::Search
