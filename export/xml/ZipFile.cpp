#include "export/xml/ZipFile.h"

#include <fmt/format.h>
#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::Zip {

namespace {

[[noreturn]] void Fail(const std::u16string& pPath, std::string_view pWhat) {
  throw EZipError(fmt::format("{}: {}", ToQuotedDisplay(pPath), pWhat));
}

// Gives libzip access to a file in the way the program opens files: any path, on both platforms. libzip is written in
// C, so exceptions of the file are kept until libzip returns.
class TLibraryFile {
 public:
  virtual ~TLibraryFile() { zip_error_fini(&fError); }
  TLibraryFile() { zip_error_init(&fError); }
  TLibraryFile(const TLibraryFile&) = delete;
  TLibraryFile& operator=(const TLibraryFile&) = delete;

  // The source object for libzip. It must not be used after this object is gone.
  zip_source_t* MakeSource() { return zip_source_function_create(Call, this, nullptr); }
  void RethrowFailure() const {
    if (fFailure) std::rethrow_exception(fFailure);
  }

 protected:
  virtual zip_int64_t Answer(zip_source_cmd_t pCommand, void* pData, zip_uint64_t pLength) = 0;
  zip_int64_t Refuse(int pZipCode, int pSystemCode = 0) {
    zip_error_set(&fError, pZipCode, pSystemCode);
    return -1;
  }
  // The position that a seek asks for, or a negative number.
  zip_int64_t Offset(zip_uint64_t pAt, zip_uint64_t pEnd, void* pData, zip_uint64_t pLength) {
    return zip_source_seek_compute_offset(pAt, pEnd, pData, pLength, &fError);
  }

 private:
  static zip_int64_t Call(void* pFile, void* pData, zip_uint64_t pLength, zip_source_cmd_t pCommand) {
    auto* file = static_cast<TLibraryFile*>(pFile);
    if (pCommand == ZIP_SOURCE_ERROR) return zip_error_to_data(&file->fError, pData, pLength);
    if (pCommand == ZIP_SOURCE_FREE) return 0;
    try {
      return file->Answer(pCommand, pData, pLength);
    } catch (...) {
      if (!file->fFailure) file->fFailure = std::current_exception();
      return file->Refuse(ZIP_ER_INTERNAL);
    }
  }

  zip_error_t fError;
  std::exception_ptr fFailure;
};

class TReadFile final : public TLibraryFile {
 public:
  explicit TReadFile(TFileStream& pFile) : fFile(pFile), fSize(pFile.Size()) {}

 protected:
  zip_int64_t Answer(zip_source_cmd_t pCommand, void* pData, zip_uint64_t pLength) override {
    switch (pCommand) {
      case ZIP_SOURCE_OPEN:
        MoveTo(0);
        return 0;
      case ZIP_SOURCE_READ:
        return Read(static_cast<char*>(pData), pLength);
      case ZIP_SOURCE_SEEK: {
        const zip_int64_t offset = Offset(fPosition, fSize, pData, pLength);
        if (offset < 0) return -1;
        MoveTo(static_cast<uint64_t>(offset));
        return 0;
      }
      case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(fPosition);
      case ZIP_SOURCE_STAT: {
        auto* stat = static_cast<zip_stat_t*>(pData);
        zip_stat_init(stat);
        stat->size = fSize;
        stat->valid = ZIP_STAT_SIZE;
        return sizeof *stat;
      }
      case ZIP_SOURCE_CLOSE:
        return 0;
      case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                                              ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, -1);
      default:
        return Refuse(ZIP_ER_OPNOTSUPP);
    }
  }

 private:
  void MoveTo(uint64_t pPosition) {
    fFile.Seek(pPosition);
    fPosition = pPosition;
  }
  zip_int64_t Read(char* pBuffer, uint64_t pLength) {
    const size_t length = fFile.Read(pBuffer, static_cast<size_t>(pLength));
    fPosition += length;
    return static_cast<zip_int64_t>(length);
  }

  TFileStream& fFile;
  const uint64_t fSize;
  uint64_t fPosition = 0;
};

// A new archive. It reports to libzip that it does not exist yet, so libzip reads no old content. It does not commit
// the file.
class TWriteFile final : public TLibraryFile {
 public:
  explicit TWriteFile(TOutputFile& pFile) : fFile(pFile) {}

 protected:
  zip_int64_t Answer(zip_source_cmd_t pCommand, void* pData, zip_uint64_t pLength) override {
    switch (pCommand) {
      case ZIP_SOURCE_STAT:
        return Refuse(ZIP_ER_READ, ENOENT);
      case ZIP_SOURCE_WRITE:
        fFile.Write({static_cast<const char*>(pData), static_cast<size_t>(pLength)});
        fPosition += pLength;
        if (fPosition > fEnd) fEnd = fPosition;
        return static_cast<zip_int64_t>(pLength);
      case ZIP_SOURCE_SEEK_WRITE: {
        const zip_int64_t offset = Offset(fPosition, fEnd, pData, pLength);
        if (offset < 0) return -1;
        fFile.Seek(static_cast<uint64_t>(offset));
        fPosition = static_cast<uint64_t>(offset);
        return 0;
      }
      case ZIP_SOURCE_TELL_WRITE:
        return static_cast<zip_int64_t>(fPosition);
      case ZIP_SOURCE_COMMIT_WRITE:
        fFile.Flush();
        return 0;
      case ZIP_SOURCE_BEGIN_WRITE:
      case ZIP_SOURCE_ROLLBACK_WRITE:
        return 0;
      case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                                              ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL,
                                              ZIP_SOURCE_BEGIN_WRITE, ZIP_SOURCE_COMMIT_WRITE,
                                              ZIP_SOURCE_ROLLBACK_WRITE, ZIP_SOURCE_WRITE, ZIP_SOURCE_SEEK_WRITE,
                                              ZIP_SOURCE_TELL_WRITE, ZIP_SOURCE_REMOVE, -1);
      default:
        return Refuse(ZIP_ER_OPNOTSUPP);
    }
  }

 private:
  TOutputFile& fFile;
  uint64_t fPosition = 0;
  uint64_t fEnd = 0;
};

// Holds an error, with the text that zip_error_strerror allocates and that must be freed.
struct TZipError {
  TZipError() { zip_error_init(&fError); }
  ~TZipError() { zip_error_fini(&fError); }
  TZipError(const TZipError&) = delete;
  TZipError& operator=(const TZipError&) = delete;
  zip_error_t fError;
};

struct TDiscard {
  void operator()(zip_t* pArchive) const { zip_discard(pArchive); }
};
struct TCloseEntry {
  void operator()(zip_file_t* pEntry) const { zip_fclose(pEntry); }
};
using TArchiveHandle = std::unique_ptr<zip_t, TDiscard>;

// pFile must outlive the archive. pError receives the error.
TArchiveHandle OpenArchive(TLibraryFile& pFile, int pFlags, zip_error_t& pError) {
  zip_source_t* source = pFile.MakeSource();
  zip_t* archive = source == nullptr ? nullptr : zip_open_from_source(source, pFlags, &pError);
  if (archive == nullptr) zip_source_free(source);
  return TArchiveHandle(archive);
}

// The time of an archive's entry. Archives cannot hold times before 1980.
time_t EntryTime(TKivFileTime pTime) {
  constexpr time_t kEarliest = 315'619'200;  // 1980-01-02, which lies in 1980 in every time zone
  const auto seconds = static_cast<time_t>((pTime.fTicks - TKivFileTime::kUnixEpoch) / TKivFileTime::kTicksPerSecond);
  return seconds < kEarliest ? kEarliest : seconds;
}

bool IsXMLName(std::string_view pName) {
  return HasExtension(FromUtf8(pName), u".xml") && !pName.starts_with("__MACOSX/");
}

}  // namespace

TZipOutput::TZipOutput(const std::u16string& pPath, std::u16string_view pEntryName, TKivFileTime pTime)
    : fTarget(pPath),
      fScratch(TFileStream::CreateScratch(fTarget.Target())),
      fEntryName(ToUtf8(pEntryName)),
      fTime(pTime) {}

void TZipOutput::Commit() {
  fScratch.Flush();
  TReadFile entry(fScratch);
  TWriteFile target(fTarget);
  TZipError error;
  TArchiveHandle archive = OpenArchive(target, ZIP_CREATE | ZIP_TRUNCATE, error.fError);
  const auto fail = [&](zip_error_t* pError) {
    entry.RethrowFailure();
    target.RethrowFailure();
    Fail(fTarget.Path(), fmt::format("The archive cannot be written: {}", zip_error_strerror(pError)));
  };
  if (!archive) fail(&error.fError);
  zip_source_t* source = entry.MakeSource();
  const zip_int64_t index = zip_file_add(archive.get(), fEntryName.c_str(), source, ZIP_FL_ENC_UTF_8);
  if (index < 0) zip_source_free(source);
  if (index < 0 || zip_file_set_mtime(archive.get(), static_cast<zip_uint64_t>(index), EntryTime(fTime), 0) != 0 ||
      zip_close(archive.get()) != 0)
    fail(zip_get_error(archive.get()));
  (void)archive.release();  // zip_close has freed it
  fScratch = {};            // frees its space before the archive waits for the disk
  fTarget.Commit();
}

// The objects needed to read an entry. Their order ensures that they are destroyed in the right order.
class TZipXMLSource::TArchive {
 public:
  explicit TArchive(const std::u16string& pPath)
      : fPath(pPath), fStream(TFileStream::OpenForReading(pPath)), fFile(fStream) {
    TZipError error;
    fArchive = OpenArchive(fFile, ZIP_RDONLY, error.fError);
    if (fArchive) return;
    fFile.RethrowFailure();
    if (zip_error_code_zip(&error.fError) == ZIP_ER_NOZIP) Fail(fPath, "This is not a zip archive");
    Fail(fPath, fmt::format("The archive cannot be read: {}", zip_error_strerror(&error.fError)));
  }

  zip_uint64_t FindXML() const {
    std::optional<zip_uint64_t> found;
    const zip_int64_t count = zip_get_num_entries(fArchive.get(), 0);
    for (zip_int64_t index = 0; index < count; ++index) {
      const char* name = zip_get_name(fArchive.get(), static_cast<zip_uint64_t>(index), 0);
      if (name == nullptr || !IsXMLName(name)) continue;
      if (found) Fail(fPath, "The archive holds more than one XML file");
      found = static_cast<zip_uint64_t>(index);
    }
    if (!found) Fail(fPath, "The archive holds no XML file");
    return *found;
  }

  // Opens the entry and returns its unpacked size.
  uint64_t OpenEntry(zip_uint64_t pIndex) {
    zip_stat_t stat;
    if (zip_stat_index(fArchive.get(), pIndex, 0, &stat) != 0) FailReading(zip_get_error(fArchive.get()));
    if ((stat.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && stat.encryption_method != ZIP_EM_NONE)
      Fail(fPath, "The XML file in the archive is encrypted");
    RefuseBomb(stat);
    fEntry.reset(zip_fopen_index(fArchive.get(), pIndex, 0));
    if (!fEntry) FailReading(zip_get_error(fArchive.get()));
    return (stat.valid & ZIP_STAT_SIZE) != 0 ? stat.size : 0;
  }

  size_t Read(char* pBuffer, size_t pLength) {
    const zip_int64_t length = zip_fread(fEntry.get(), pBuffer, pLength);
    if (length < 0) FailReading(zip_file_get_error(fEntry.get()));
    return static_cast<size_t>(length);
  }

 private:
  // Scan files shrink to a tenth or a thirtieth. An entry that would fill the memory and has shrunk to less than a
  // two-hundredth was made to do harm.
  void RefuseBomb(const zip_stat_t& pStat) const {
    constexpr uint64_t kHarmless = 256 << 20;
    constexpr uint64_t kMostRatio = 200;
    if ((pStat.valid & ZIP_STAT_SIZE) == 0 || (pStat.valid & ZIP_STAT_COMP_SIZE) == 0) return;
    if (pStat.size > kHarmless && pStat.size / std::max<uint64_t>(pStat.comp_size, 1) > kMostRatio)
      Fail(fPath, fmt::format("The archive unpacks to {} times its size, which no scan file does",
                              pStat.size / std::max<uint64_t>(pStat.comp_size, 1)));
  }

  [[noreturn]] void FailReading(zip_error_t* pError) const {
    fFile.RethrowFailure();
    if (zip_error_code_zip(pError) == ZIP_ER_CRC)
      Fail(fPath, "The archive is damaged: the XML file in it has a wrong checksum");
    Fail(fPath, fmt::format("The XML file in the archive cannot be read: {}", zip_error_strerror(pError)));
  }

  const std::u16string fPath;
  TFileStream fStream;
  TReadFile fFile;
  TArchiveHandle fArchive;
  std::unique_ptr<zip_file_t, TCloseEntry> fEntry;
};

TZipXMLSource::TZipXMLSource(const std::u16string& pPath) : fArchive(std::make_unique<TArchive>(pPath)) {
  fSize = fArchive->OpenEntry(fArchive->FindXML());
}

TZipXMLSource::~TZipXMLSource() = default;

size_t TZipXMLSource::Read(char* pBuffer, size_t pLength) {
  return fArchive->Read(pBuffer, pLength);
}

std::unique_ptr<IByteSource> OpenXMLSource(const std::u16string& pPath) {
  if (HasExtension(pPath, u".zip")) return std::make_unique<TZipXMLSource>(pPath);
  char start[4] = {};
  auto file = std::make_unique<TFileStream>(TFileStream::OpenForReading(pPath));
  // A pipe cannot be checked for an archive, so it is read as it is.
  if (!file->CanSeek()) return file;
  const size_t length = file->Read(start, sizeof start);
  const std::string_view head(start, length);
  if (head == "PK\x03\x04" || head == "PK\x05\x06") return std::make_unique<TZipXMLSource>(pPath);
  file->Seek(0);
  return file;
}

}  // namespace Vantrel::Zip
