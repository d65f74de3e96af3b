#pragma once

// The enumerator that lists a Windows folder by find-first and find-next.

#include <memory>
#include <string>

#include "scan/files/Win32Enumerator_win32.h"

namespace Vantrel::Enumerators {

// Lists a folder by find-first and find-next. Its records lack the allocated size, so that is the size rounded up to
// whole clusters. The system is asked only for compressed, sparse and offline files, one by one.
class TCustomFileSystemEnumerator : public TWin32Enumerator {
 public:
  ~TCustomFileSystemEnumerator() override;

 protected:
  using TWin32Enumerator::TWin32Enumerator;

  bool FetchRecord(TRecord& pRecord) override;
  void CloseListing() noexcept override;
  void RestartListing() override { CloseListing(); }
  int64_t RecordAllocation() const override;
  int64_t ResidentLimit() const override { return 0; }  // a rounded size does not tell where the data lies

 private:
  bool FindFirst();
  bool FindNext();

  HANDLE fFindHandle = INVALID_HANDLE_VALUE;
  std::unique_ptr<TKivWin32FindData> fFindData;  // only while a listing is open, because it is large
  bool fSingleObjectOnly = false;                // the open listing is for one object, which has been fetched
};

class TFileSystemEnumerator final : public TCustomFileSystemEnumerator {
 public:
  using TCustomFileSystemEnumerator::TCustomFileSystemEnumerator;

  static TRef<IHierarchicalEnumerator> CreateForPath(const std::u16string& pPath,
                                                     THierarchicalEnumeratorOptions pOptions);
  static TRef<IHierarchicalEnumerator> CreateForObject(const std::u16string& pPath,
                                                       THierarchicalEnumeratorOptions pOptions);
  static TRef<TFileSystemEnumerator> CreateForFolderPath(std::u16string pPath, THierarchicalEnumeratorOptions pOptions,
                                                         IWin32FileApi& pApi = TSystemFileApi::Instance());

 protected:
  TRef<TWin32Enumerator> CreateForFolder(std::u16string pPath) const override;
};

}  // namespace Vantrel::Enumerators
