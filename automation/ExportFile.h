#pragma once

#include <functional>
#include <string>

#include "export/HierarchicalExport.h"
#include "platform/Errors.h"
#include "platform/OutputFile.h"

namespace Kiv::PostScanActions {

// An export that was stopped while it was written.
class EExportCancelled : public EException {
 public:
  using EException::EException;
};

void CheckNotCancelled(bool pIsCancelled, const std::u16string& pPath);

// A file of an export, by bytes or by lines, that takes its place on Commit. Every failure is an exception: EOSError, or
// EExportCancelled once the question says so. One thread.
class TExportFile final : public IByteSink, public Hierarchical::Exporting::ILineOutput {
 public:
  using TIsCancelled = std::function<bool()>;
  TExportFile(const std::u16string& pPath, TIsCancelled pIsCancelled)
      : fFile(pPath), fIsCancelled(std::move(pIsCancelled)) {}

  void Write(std::string_view pBytes) override;
  bool WriteLine(std::string_view pLine) override;
  int64_t LineCount() const override { return fLines; }
  void Commit() { fFile.Commit(); }
  const std::u16string& Path() const { return fFile.Path(); }

 private:
  TOutputFile fFile;
  const TIsCancelled fIsCancelled;
  int64_t fLines = 0;
};

// The path with a part behind the name, before the extension, ".xml.zip" being one: "data.xml.zip" and "_photos" give
// "data_photos.xml.zip".
std::u16string WithPartInName(std::u16string_view pPath, std::u16string_view pPart);
// The root's path as a part of file names: "photos" of "/data/photos", "C" of "C:\".
std::u16string NameForFiles(const IHierarchicalRoot& pRoot);

}  // namespace Kiv::PostScanActions
