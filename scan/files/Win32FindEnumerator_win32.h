#pragma once

// Lists a folder by find-first and find-next.

#include <memory>
#include <string>

#include "scan/files/Win32Enumerator_win32.h"

namespace Vantrel::Enumerators {

// Lists a folder by find-first and find-next. Its records lack the allocated size, which is worked out from the size by
// whole clusters; only compressed, sparse and offline files are asked for it one by one.
class TCustomFileSystemEnumerator : public TWin32Enumerator {
 public:
  ~TCustomFileSystemEnumerator() override;

 protected:
  using TWin32Enumerator::TWin32Enumerator;

  bool FetchRecord(TRecord& pRecord) override;
  void CloseListing() noexcept override;
  void RestartListing() override { CloseListing(); }
  int64_t RecordAllocation() const override;
  int64_t ResidentLimit() const override { return 0; }  // a rounded size says nothing about where the data lies

 private:
  bool FindFirst();
  bool FindNext();

  HANDLE fFindHandle = INVALID_HANDLE_VALUE;
  std::unique_ptr<TKivWin32FindData> fFindData;  // only while a listing is open: it is large
  bool fSingleObjectOnly = false;                // the open listing is that of one object, which has been fetched
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
