#pragma once

// Reads a file table from start to end through a ring of buffers, and hands out its records.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"
#include "scan/ntfs/MftLocation.h"

namespace Vantrel::Ntfs {

// A buffer and the stretch of the table that is read into it.
struct TOverlappedBufferListItem {
  static constexpr size_t kSize = 262'144;

  std::unique_ptr<std::byte[]> fBuffer;
  size_t fLength = 0;  // bytes asked for; 0 when nothing is under way
  bool fIsHole = false;
  uint32_t fError = 0;  // the read could not be started
};

// A ring of buffers that are filled one after the other, while the bytes of the first are used. Stretches follow the
// runs of the table. The last of a run may be shorter than a buffer.
class TOverlappedBufferList {
 public:
  // How many buffers a ring has for so many threads and bytes: 2 to 4, but none that would never be filled.
  static size_t CountFor(int pThreads, int64_t pBytes);

  // Reads so many bytes of the table from this offset.
  TOverlappedBufferList(IVolumeReader& pReader, const TMftLocation& pLocation, int64_t pOffset, int64_t pBytes,
                        int pThreads);
  ~TOverlappedBufferList() { fReader.Cancel(); }
  TOverlappedBufferList(const TOverlappedBufferList&) = delete;
  TOverlappedBufferList& operator=(const TOverlappedBufferList&) = delete;

  // The next stretch, in the table's order. It stays valid until the next call. False at the end. Where the volume
  // could not be read, pError is set to the code, and the stretch holds zeros; a later stretch may be good again.
  bool Next(std::span<std::byte>& pStretch, uint32_t& pError);
  size_t Count() const { return fItems.size(); }

 private:
  void StartNext(size_t pItem);
  void Finish(size_t pItem, uint32_t& pError);

  IVolumeReader& fReader;
  const TMftLocation& fLocation;
  std::vector<TOverlappedBufferListItem> fItems;
  size_t fCurrent = 0;
  bool fHasCurrent = false;
  // What to read next.
  size_t fRun = 0;
  int64_t fOffsetInRun = 0;  // bytes
  int64_t fBytesLeft;
};

// Hands out the usable records of a table, in their order. For one thread.
class TReadFileMftEnumerator {
 public:
  // pIsCancelled is asked after every unusable record and once for each buffer.
  TReadFileMftEnumerator(IVolumeReader& pReader, const TMftLocation& pLocation, std::function<bool()> pIsCancelled,
                         bool pCompatible, int pThreads);

  // Advances to the next usable record. False at the end and when cancelled.
  bool Next();
  // Starts again at the first record.
  void Reset();

  int64_t GetCurrentMftRecordNumber() const { return fNumber; }  // -1 before the first
  TBytes Record() const { return fRecord; }                      // fixed up
  const TRecordHeader& Header() const { return fHeader; }
  // Whether the current record was written in part only.
  bool IsTorn() const { return fIsTorn; }
  // Whether the current record carries attributes that belong to another one.
  bool IsExtension() const { return fIsExtension; }

  bool WasCancelled() const { return fWasCancelled; }
  int64_t CountRecords() const { return fRecords; }  // of the table, free ones included
  // Bytes of the table that could not be read, and the code of the first failure.
  int64_t UnreadBytes() const { return fUnreadBytes; }
  uint32_t GetError() const { return fError; }

 private:
  bool FetchRecord();
  bool FetchStretch();
  bool TakeRecord();

  IVolumeReader& fReader;
  const TMftLocation& fLocation;
  const std::function<bool()> fIsCancelled;
  const bool fCompatible;
  const int fThreads;
  const size_t fRecordBytes;
  const int64_t fRecords;

  std::optional<TOverlappedBufferList> fBuffers;  // from the first Next
  std::span<std::byte> fStretch;                  // the rest of the current buffer
  std::vector<std::byte> fSplit;                  // a record that lies in two stretches
  int64_t fNumber = -1;
  std::span<std::byte> fRecord;
  TRecordHeader fHeader;
  bool fIsTorn = false;
  bool fIsExtension = false;
  bool fWasCancelled = false;
  int64_t fUnreadBytes = 0;
  uint32_t fError = 0;
};

}  // namespace Vantrel::Ntfs
