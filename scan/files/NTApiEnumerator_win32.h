#pragma once

// The enumerator that lists a Windows folder by the kernel's directory query.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "scan/files/Win32Enumerator_win32.h"

struct _FILE_FULL_DIR_INFORMATION;  // the kernel's record, from <winternl.h>

namespace Vantrel::Enumerators {

// Lists a folder by the kernel's directory query. One call fills a buffer with records, and each record holds all
// values.
class TCustomNTApiEnumerator : public TWin32Enumerator {
 public:
  static constexpr size_t kBufferSize = 65'536;
  ~TCustomNTApiEnumerator() override;

 protected:
  using TWin32Enumerator::TWin32Enumerator;

  bool FetchRecord(TRecord& pRecord) override;
  void CloseListing() noexcept override;
  void RestartListing() override;
  int64_t RecordAllocation() const override;
  int64_t ResidentLimit() const override { return ClusterSize(); }

 private:
  static constexpr size_t kNoRecord = SIZE_MAX;

  bool Open();
  bool Query();  // fills the buffer; false at the end and after Fail
  bool IsRecordSound(size_t pIndex) const;

  HANDLE fHandle = INVALID_HANDLE_VALUE;
  std::unique_ptr<std::byte[]> fBuffer;                     // only while a listing is open
  size_t fBufferIndex = kNoRecord;                          // of the next record
  size_t fBufferBytes = 0;                                  // bytes filled by the last query
  const ::_FILE_FULL_DIR_INFORMATION* fFileInfo = nullptr;  // the current record, inside the buffer
  bool fRestartScan = true;                                 // for the first query, and after Reset on an open listing
};

class TNTApiEnumerator final : public TCustomNTApiEnumerator {
 public:
  using TCustomNTApiEnumerator::TCustomNTApiEnumerator;

  // For the factory. Takes paths with or without "file:". Returns an enumerator of that one object for a file, and a
  // TPathNotFoundEnumerator for a path that does not exist. If the volume's driver does not know the query, returns the
  // find enumerator.
  static TRef<IHierarchicalEnumerator> CreateForPath(const std::u16string& pPath,
                                                     THierarchicalEnumeratorOptions pOptions);
  static TRef<IHierarchicalEnumerator> CreateForObject(const std::u16string& pPath,
                                                       THierarchicalEnumeratorOptions pOptions);
  // Makes an enumerator for the folder without asking the system anything.
  static TRef<TNTApiEnumerator> CreateForFolderPath(std::u16string pPath, THierarchicalEnumeratorOptions pOptions,
                                                    IWin32FileApi& pApi = TSystemFileApi::Instance());

 protected:
  TRef<TWin32Enumerator> CreateForFolder(std::u16string pPath) const override;
};

}  // namespace Vantrel::Enumerators
