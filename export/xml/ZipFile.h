#pragma once

// Writes an archive of one entry, and reads the XML entry of an archive.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files/ByteStreams.h"
#include "platform/files/FileStream.h"
#include "platform/files/OutputFile.h"
#include "platform/system/Errors.h"
#include "platform/system/FileTime.h"

namespace Vantrel::Zip {

// Reports what is wrong with an archive; the text names it. Failures of the system are EOSErrors here too.
class EZipError : public EException {
 public:
  using EException::EException;
};

// Writes an archive with one packed entry. Data goes to a scratch file first, because libzip pulls its data. Commit
// packs it into the archive. The archive then replaces an earlier file like any TOutputFile. So the archive's folder
// needs room for the unpacked entry. One thread at a time.
class TZipOutput final : public IByteSink {
 public:
  // pTime is shown with the entry. "No date" gives the earliest time that an archive can hold.
  TZipOutput(const std::u16string& pPath, std::u16string_view pEntryName, TKivFileTime pTime);

  void Write(std::string_view pBytes) override { fScratch.Write(pBytes); }
  // Call it once. It takes long for large entries.
  void Commit();

 private:
  TOutputFile fTarget;
  TFileStream fScratch;
  std::string fEntryName;
  TKivFileTime fTime;
};

// Unpacks the XML entry of an archive piece by piece, so memory does not depend on its size. The checksum is checked
// with the last piece.
class TZipXMLSource final : public IByteSource {
 public:
  // EZipError when the file is not a zip archive, or the entry is encrypted or packed in an unknown way. The archive
  // must hold exactly one entry whose name ends in ".xml", in any letter case. Entries that macOS adds below
  // "__MACOSX/" do not count.
  explicit TZipXMLSource(const std::u16string& pPath);
  ~TZipXMLSource() override;

  // EZipError for damaged data and for a wrong checksum or size.
  size_t Read(char* pBuffer, size_t pLength) override;

  // The unpacked size that the archive states. Read enforces it.
  uint64_t Size() const { return fSize; }

 private:
  class TArchive;
  std::unique_ptr<TArchive> fArchive;
  uint64_t fSize = 0;
};

// Opens the XML file at a path. It is unpacked if it is in a zip archive, which its first bytes or its name show.
std::unique_ptr<IByteSource> OpenXMLSource(const std::u16string& pPath);

}  // namespace Vantrel::Zip
