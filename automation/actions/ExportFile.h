#pragma once

// The file of an export, which can be cancelled, and file names made from other names.

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "export/walk/HierarchicalExport.h"
#include "platform/files/OutputFile.h"
#include "platform/system/Errors.h"

namespace Vantrel::PostScanActions {

// Thrown when the user stops an export while it is written.
class EExportCancelled : public EException {
 public:
  using EException::EException;
};

// Whether the scan of this run was stopped. Then no export is written, so that half a tree does not replace yesterday's
// whole one. False for an opened file: its tree is what the file holds, even if its scan was stopped.
bool WasStopped(const IHierarchicalRoot& pRoot);
void CheckNotCancelled(bool pIsCancelled, const std::u16string& pPath);
// Whether the reader of the standard output has gone, as "head" does. The run then fails without a message.
bool IsReaderGone(const EOSError& pError);

// A file of an export, written by bytes or by lines, which replaces its target on Commit. Every failure is an
// exception: EOSError, or EExportCancelled after the callback says so. Lines end with CRLF, on the
// standard output as is usual there. One thread.
class TExportFile final : public IByteSink, public Exporting::ILineOutput {
 public:
  using TIsCancelled = std::function<bool()>;
  // With pUnseen nothing appears at the path until Commit, not even a temporary name. So scans that run meanwhile do
  // not count the export itself. On Windows the name appears, and goes with the process.
  TExportFile(const std::u16string& pPath, TIsCancelled pIsCancelled, bool pUnseen = false);

  void Write(std::string_view pBytes) override;
  bool WriteLine(std::string_view pLine) override;
  int64_t LineCount() const override { return fLines; }
  Exporting::TLineWidth LineWidth() const override;
  Exporting::TLineLook LineLook() const override;
  // Sets another line end for the following lines.
  void SetLineEnd(std::string_view pLineEnd) { fLineEnd = pLineEnd; }
  void Commit();
  const std::u16string& Path() const { return fPath; }

 private:
  void CopyScratch();
  IByteSink& Sink() { return fFile ? static_cast<IByteSink&>(*fFile) : fScratch; }

  const std::u16string fPath;
  const TIsCancelled fIsCancelled;
  std::unique_ptr<TOutputFile> fFile;  // not there yet: output goes into the scratch file
  TFileStream fScratch;
  std::string fLineEnd = "\r\n";
  int64_t fLines = 0;
};

// Finds out before a scan, which may take hours, whether the file can be written. Creates its folder. The file is not
// kept open meanwhile, because the scan would count it. EOSError.
void ProbeTarget(const std::u16string& pPath);

// The path with a part added to the name before the extension. ".xml.zip" is one extension: "data.xml.zip" and
// "_photos" give "data_photos.xml.zip".
std::u16string WithPartInName(std::u16string_view pPath, std::u16string_view pPart);
// The root's path as a part of file names: "photos" of "/data/photos", "C" of "C:\".
std::u16string NameForFiles(const IHierarchicalRoot& pRoot);
std::u16string NameForFiles(std::u16string_view pPath, char16_t pDelimiter);

// The names of the roots of one run, as parts of file names. Two folders with the same name on different drives get
// different names. So do names that differ by letter case only.
class TNamesOfRoots {
 public:
  // Called once for each root, with what NameForFiles gives.
  std::u16string Next(const std::u16string& pName);

 private:
  std::set<std::u16string> fNames;
};

}  // namespace Vantrel::PostScanActions
