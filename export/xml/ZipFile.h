#pragma once

// An archive of one entry written; the XML entry of an archive read.

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

// What is wrong with an archive; the text names it. Failures of the system are EOSErrors here too.
class EZipError : public EException {
 public:
  using EException::EException;
};

// An archive with one packed entry. What is written goes to a scratch file first, as libzip asks for its data and does
// not take them; Commit packs it into the archive, which then takes its place as any TOutputFile does. So there has to
// be room for the entry unpacked, in the folder of the archive. For one thread at a time.
class TZipOutput final : public IByteSink {
 public:
  // The entry's time is shown with it; "no date" gives the earliest that an archive can hold.
  TZipOutput(const std::u16string& pPath, std::u16string_view pEntryName, TKivFileTime pTime);

  void Write(std::string_view pBytes) override { fScratch.Write(pBytes); }
  // Once. Takes long for large entries.
  void Commit();

 private:
  TOutputFile fTarget;
  TFileStream fScratch;
  std::string fEntryName;
  TKivFileTime fTime;
};

// The XML entry of an archive, unpacked piece by piece: memory does not depend on its size. Its checksum is checked
// with the last piece.
class TZipXMLSource final : public IByteSource {
 public:
  // EZipError when this is no zip archive, or holds not exactly one entry whose name ends in ".xml" (in any case; what
  // macOS adds below "__MACOSX/" does not count), or one that is encrypted or packed in an unknown way.
  explicit TZipXMLSource(const std::u16string& pPath);
  ~TZipXMLSource() override;

  // EZipError for damaged data and for a wrong checksum or size.
  size_t Read(char* pBuffer, size_t pLength) override;

  // The unpacked size as the archive tells it, which Read holds it to.
  uint64_t Size() const { return fSize; }

 private:
  class TArchive;
  std::unique_ptr<TArchive> fArchive;
  uint64_t fSize = 0;
};

// The XML file at a path, unpacked when it is in a zip archive, which shows in its first bytes or its name.
std::unique_ptr<IByteSource> OpenXMLSource(const std::u16string& pPath);

}  // namespace Vantrel::Zip
