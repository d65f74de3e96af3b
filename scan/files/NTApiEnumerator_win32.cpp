#include "scan/files/NTApiEnumerator_win32.h"

#include <winternl.h>

#include <utility>

#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "scan/files/DirectoryBuffers_win32.h"
#include "scan/files/VolumeInformationCache.h"
#include "scan/files/Win32FindEnumerator_win32.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::Enumerators {

namespace {

using TBuffers = TDirectoryBuffers<TCustomNTApiEnumerator::kBufferSize>;

constexpr size_t kHeaderSize = offsetof(FILE_FULL_DIRECTORY_INFORMATION, FileName);

constexpr uint32_t kStatusSuccess = 0;
constexpr uint32_t kStatusBufferOverflow = 0x80000005;
constexpr uint32_t kStatusNoMoreFiles = 0x80000006;
constexpr uint32_t kStatusInvalidParameter = 0xC000000D;
constexpr uint32_t kStatusNoSuchFile = 0xC000000F;

// Whether the code means that the driver does not know the query at all.
bool IsQueryUnknown(uint32_t pErrorCode) {
  return pErrorCode == ERROR_INVALID_FUNCTION || pErrorCode == ERROR_NOT_SUPPORTED ||
         pErrorCode == ERROR_CALL_NOT_IMPLEMENTED || pErrorCode == ERROR_INVALID_LEVEL;
}

}  // namespace

TCustomNTApiEnumerator::~TCustomNTApiEnumerator() {
  TCustomNTApiEnumerator::CloseListing();
}

void TCustomNTApiEnumerator::CloseListing() noexcept {
  if (fHandle != INVALID_HANDLE_VALUE) fApi.CloseDirectory(std::exchange(fHandle, INVALID_HANDLE_VALUE));
  TBuffers::GiveBack(std::move(fBuffer));
  fBufferIndex = kNoRecord;
  fFileInfo = nullptr;
}

void TCustomNTApiEnumerator::RestartListing() {
  fRestartScan = true;
  fBufferIndex = kNoRecord;
}

bool TCustomNTApiEnumerator::Open() {
  uint32_t code = OpenFolder(fPath, [&](const std::u16string& pApiPath) {
    uint32_t error = 0;
    fHandle = fApi.OpenDirectory(pApiPath, OpenFlags(), error);
    return error;
  });
  if (code != 0) return Fail(code);
  if (!BelongsToScan(fHandle)) return false;  // the end of the listing closes fHandle
  fBuffer = TBuffers::Take();
  fRestartScan = true;
  return true;
}

bool TCustomNTApiEnumerator::Query() {
  const std::u16string* mask = fForFile.empty() ? nullptr : &fForFile;
  bool isFirst = fRestartScan;
  uint32_t bytes = 0;
  uint32_t status = fApi.QueryDirectory(fHandle, {fBuffer.get(), kBufferSize}, mask, isFirst, bytes);
  if (status == kStatusSuccess && bytes == 0) status = kStatusBufferOverflow;
  if (status == kStatusInvalidParameter) {
    CloseListing();
    Fail(ERROR_PATH_NOT_FOUND);
    throw EOSError(ERROR_PATH_NOT_FOUND, "NtQueryDirectoryFile", fPath);
  }
  if (status == kStatusNoMoreFiles) return false;
  // The root of an empty drive has no "." and "..". Its first query gives this status.
  if (status == kStatusNoSuchFile && isFirst && mask == nullptr) return false;
  if (status != kStatusSuccess) return Fail(RtlNtStatusToDosError(static_cast<NTSTATUS>(status)));
  fRestartScan = false;
  fBufferIndex = 0;
  fBufferBytes = bytes;
  return true;
}

// Checks that the record lies inside the filled part. Some drivers of file servers and filters write offsets beyond it.
bool TCustomNTApiEnumerator::IsRecordSound(size_t pIndex) const {
  if (pIndex % alignof(FILE_FULL_DIRECTORY_INFORMATION) != 0 || pIndex + kHeaderSize > fBufferBytes) return false;
  auto* info = reinterpret_cast<const FILE_FULL_DIRECTORY_INFORMATION*>(fBuffer.get() + pIndex);
  return info->FileNameLength <= fBufferBytes - pIndex - kHeaderSize;
}

bool TCustomNTApiEnumerator::FetchRecord(TRecord& pRecord) {
  if (fHandle == INVALID_HANDLE_VALUE && !Open()) return false;
  if (fBufferIndex == kNoRecord && !Query()) return false;
  if (!IsRecordSound(fBufferIndex)) return Fail(ERROR_INVALID_DATA);
  fFileInfo = reinterpret_cast<const FILE_FULL_DIRECTORY_INFORMATION*>(fBuffer.get() + fBufferIndex);
  const auto& info = *fFileInfo;
  fBufferIndex = info.NextEntryOffset == 0 ? kNoRecord : fBufferIndex + info.NextEntryOffset;

  pRecord.fName = Win32::Narrow(info.FileName, info.FileNameLength / 2);
  pRecord.fAttributes = info.FileAttributes;
  // For a reparse point, the extended-attributes size is its tag.
  pRecord.fReparseTag = (info.FileAttributes & kAttributeReparsePoint) != 0 ? info.EaSize : 0;
  pRecord.fSize = info.EndOfFile.QuadPart;
  pRecord.fAllocation = info.AllocationSize.QuadPart;
  pRecord.fLastAccessDate = DateOf(info.LastAccessTime.QuadPart);
  pRecord.fLastChangeDate = DateOf(info.LastWriteTime.QuadPart);
  pRecord.fCreationDate = DateOf(info.CreationTime.QuadPart);
  return true;
}

int64_t TCustomNTApiEnumerator::RecordAllocation() const {
  return Record().fAllocation;
}

TRef<TWin32Enumerator> TNTApiEnumerator::CreateForFolder(std::u16string pPath) const {
  return MakeRef<TNTApiEnumerator>(std::move(pPath), *this);
}

TRef<TNTApiEnumerator> TNTApiEnumerator::CreateForFolderPath(std::u16string pPath,
                                                             THierarchicalEnumeratorOptions pOptions,
                                                             IWin32FileApi& pApi) {
  return MakeRef<TNTApiEnumerator>(std::move(pPath), std::u16string(), pOptions, pApi);
}

TRef<IHierarchicalEnumerator> TNTApiEnumerator::CreateForPath(const std::u16string& pPath,
                                                              THierarchicalEnumeratorOptions pOptions) {
  IWin32FileApi& api = TSystemFileApi::Instance();
  TVolumeInformationCache::Instance().Clear();
  std::u16string path = RootedPathOf(pPath);
  TKivWin32FindData data{};
  uint32_t code = api.QueryEntry(ApiPath(path), data);
  if (ClassifyOSError(code) == TErrorKind::ekNotFound) return MakeRef<TPathNotFoundEnumerator>(path, code, pOptions);
  if (code == 0 && (data.dwFileAttributes & kAttributeDirectory) == 0) return CreateForObject(path, pOptions);
  // The driver is asked once per scan. The scan will meet any other error again, so it is ignored here.
  TRef<TNTApiEnumerator> probe = CreateForFolderPath(path, pOptions, api);
  if (!probe->Next() && IsQueryUnknown(probe->GetErrorCode()))
    return TFileSystemEnumerator::CreateForFolderPath(path, pOptions, api);
  return CreateForFolderPath(path, pOptions, api);
}

TRef<IHierarchicalEnumerator> TNTApiEnumerator::CreateForObject(const std::u16string& pPath,
                                                                THierarchicalEnumeratorOptions pOptions) {
  std::u16string path = RootedPathOf(pPath);
  std::u16string folder(FolderOfPath(path, u'\\'));
  if (folder.empty()) return TFileSystemEnumerator::CreateForObject(path, pOptions);  // no folder lists a drive
  std::u16string name(FileNameOfPath(path, u'\\'));
  return MakeRef<TNTApiEnumerator>(std::move(folder), std::move(name), pOptions, TSystemFileApi::Instance());
}

}  // namespace Vantrel::Enumerators
