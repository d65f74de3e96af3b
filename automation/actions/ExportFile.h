#pragma once

// The file of an export: stopped by the user, or in its place; names made of names.

#include <functional>
#include <memory>
#include <string>

#include "export/walk/HierarchicalExport.h"
#include "platform/files/OutputFile.h"
#include "platform/system/Errors.h"

namespace Vantrel::PostScanActions {

// An export that was stopped while it was written.
class EExportCancelled : public EException {
 public:
  using EException::EException;
};

// Whether the scan of this run was stopped: half a tree in place of yesterday's whole one would be a loss. The tree of
// an opened file is what that file holds, also when its scan was stopped.
bool WasStopped(const IHierarchicalRoot& pRoot);
void CheckNotCancelled(bool pIsCancelled, const std::u16string& pPath);
// Whether the reader of the standard output has left, as "head" does: the run fails, but says nothing of it.
bool IsReaderGone(const EOSError& pError);

// A file of an export, by bytes or by lines, that takes its place on Commit. Every failure is an exception: EOSError,
// or EExportCancelled once the question says so. Lines end with CRLF. One thread.
class TExportFile final : public IByteSink, public Exporting::ILineOutput {
 public:
  using TIsCancelled = std::function<bool()>;
  // With pUnseen there is nothing at the path until Commit, a temporary name neither, so that scans which run meanwhile
  // do not count the export itself. On Windows the name is there, and gone with the process.
  TExportFile(const std::u16string& pPath, TIsCancelled pIsCancelled, bool pUnseen = false);

  void Write(std::string_view pBytes) override;
  bool WriteLine(std::string_view pLine) override;
  int64_t LineCount() const override { return fLines; }
  // Another end for the lines to come.
  void SetLineEnd(std::string_view pLineEnd) { fLineEnd = pLineEnd; }
  void Commit();
  const std::u16string& Path() const { return fPath; }

 private:
  void CopyScratch();
  IByteSink& Sink() { return fFile ? static_cast<IByteSink&>(*fFile) : fScratch; }

  const std::u16string fPath;
  const TIsCancelled fIsCancelled;
  std::unique_ptr<TOutputFile> fFile;  // not there yet: what is written goes into the scratch file
  TFileStream fScratch;
  std::string fLineEnd = "\r\n";
  int64_t fLines = 0;
};

// The path with a part behind the name, before the extension, ".xml.zip" being one: "data.xml.zip" and "_photos" give
// "data_photos.xml.zip".
std::u16string WithPartInName(std::u16string_view pPath, std::u16string_view pPart);
// The root's path as a part of file names: "photos" of "/data/photos", "C" of "C:\".
std::u16string NameForFiles(const IHierarchicalRoot& pRoot);
std::u16string NameForFiles(std::u16string_view pPath, char16_t pDelimiter);

}  // namespace Vantrel::PostScanActions
