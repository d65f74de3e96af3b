#pragma once

// The base of all exporters: columns, settings, the walk over the tree, lines to an output.

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "export/walk/MediaOptions.h"
#include "export/walk/ParallelText.h"
#include "model/roots/RootInterfaces.h"
#include "model/tree/FileTable.h"

namespace Vantrel::Exporting {

// How settings, those that are in effect, want values to be written.
TValueFormat FormatOf(const TMediaSettings& pSettings);

// Takes the lines of an export: the console, a file, a test's list. Lines are UTF-8, without their end, and come from
// one thread.
class ILineOutput {
 public:
  virtual ~ILineOutput() = default;
  // Writes the line and its CRLF. False when it could not be written; the exporter then stops.
  virtual bool WriteLine(std::string_view pLine) = 0;
  // Lines that the output holds, those of earlier exports included.
  virtual int64_t LineCount() const = 0;
};

// A folder or file on its way into an export. Level 0 is the top. A tree has millions of files, which are no nodes of
// their own: a file comes as its record in the folder's table.
struct TExportRow {
  IFolderData& fFolder;  // the node, or the folder that the file lies in
  int32_t fLevel = 0;
  const TFileTable* fFiles = nullptr;  // both set for a file, and only then
  const TFileRecord* fFile = nullptr;
  bool fIsShown = true;  // false for a folder that only leads to rows beneath it

  bool IsFile() const { return fFile != nullptr; }
  std::u16string_view Name() const { return IsFile() ? fFiles->NameOf(*fFile) : fFolder.GetObjectName(); }
  // The folder's node, or one made for the file: not for every file of a tree.
  TRef<IHierarchicalElement> Element() const;
};

// Takes the rows of an export, a folder before its contents. Returning false ends the walk.
class IExportVisitor {
 public:
  virtual ~IExportVisitor() = default;
  // pIsComplete: nothing beneath the node follows, and there is no EndNode for it.
  virtual bool BeginNode(const TExportRow& pRow, bool pIsComplete) = 0;
  virtual bool EndNode(const TExportRow& pRow) = 0;
  virtual bool VisitFile(const TExportRow&) { return true; }
  // Asked before anything else about a folder. True when the visitor sees to it and all beneath it by itself.
  virtual bool TakesBranch(const TExportRow&) { return false; }
};

// A visitor that writes rows into a text.
class TRowWriter : public IExportVisitor {
 public:
  // Another writer, for folders in the innermost open one. Its text goes behind what this one has written.
  virtual std::unique_ptr<TRowWriter> Branch() const = 0;
  // Called before the text is taken.
  virtual void Flush() {}

  TRowText fText;
};

// What all exporters share: the settings of their kind of output, the columns, and the walk over the tree.
class TBaseExport {
 public:
  virtual ~TBaseExport() = default;
  virtual TMediaType MediaType() const = 0;

  const TMediaSettings& Settings() const { return fSettings; }
  void SetColumns(std::vector<TColumn> pColumns) { fColumns = std::move(pColumns); }
  std::span<const TColumn> Columns() const { return fColumns; }
  // Siblings in the order of their change against the scan that the root is compared with, the largest first.
  void SetSortByChange(bool pSortByChange) { fSortByChange = pSortByChange; }
  // How the settings want values to be written.
  TValueFormat ValueFormat() const { return FormatOf(fSettings); }

 protected:
  explicit TBaseExport(const TMediaSettings& pSettings) : fSettings(pSettings) {}

  // Calls the row function for the top folder and everything beneath it that the settings take in, a folder before its
  // contents, sub-folders before files, siblings in the order of the settings, else the largest first. Ends early when
  // the function returns false, and then returns false too.
  bool WalkTree(IFolderData& pTop, const std::function<bool(const TExportRow&)>& pRow) const;
  // The same for exporters whose output nests.
  bool WalkNodes(IFolderData& pTop, IExportVisitor& pVisitor) const;
  // The same on as many threads as there are processors: the writer and its branches write, the pieces come out in the
  // order of the walk. Ends early when pTake returns false, and then returns false too.
  bool WalkInParallel(IFolderData& pTop, TRowWriter& pWriter, const TParallelText::TTake& pTake) const;
  // What has gone since this earlier scan gets rows among the others, from here on; nullptr for no such rows. An
  // exporter that calls this not, or for a root that is not compared, writes the tree alone.
  void ShowGone(TRef<IComparison> pComparison) { fGoneSince = std::move(pComparison); }
  const IComparison* GoneSince() const { return fGoneSince.get(); }

 private:
  class TWalk;
  class TBranchingVisitor;

  bool Includes(TIncludedObjectTypes pTypes) const { return (fSettings.fIncludedObjectTypes & pTypes) != 0; }
  bool IsIncluded(const IFolderData& pFolder) const {
    return Includes(pFolder.IsFileGroup() ? ioFileGroups : ioFolders);
  }
  // Roughly how many rows a branch becomes.
  int64_t RowsOf(const IFolderData& pFolder) const;
  std::vector<TRef<IFolderData>> IncludedChildren(IFolderData& pFolder) const;
  TRef<const TFileTable> IncludedFiles(const IFolderData& pFolder) const;
  std::vector<uint32_t> OrderOfFiles(IFolderData& pFolder, const TFileTable& pFiles) const;

  const TMediaSettings fSettings;
  std::vector<TColumn> fColumns;
  bool fSortByChange = false;
  TRef<IComparison> fGoneSince;
};

// An exporter that writes a whole root to one place.
class TFileExport : public TBaseExport {
 public:
  // False when the output could not take it all. Writes what the tree holds at this moment; no scan should be running.
  virtual bool Export(IHierarchicalRoot& pRoot, ILineOutput& pOutput) = 0;

 protected:
  using TBaseExport::TBaseExport;
};

// An exporter that writes line after line. Once a line could not be written, no further one is tried.
class TFileStreamExport : public TFileExport {
 public:
  bool Export(IHierarchicalRoot& pRoot, ILineOutput& pOutput) final;

 protected:
  using TFileExport::TFileExport;
  // The export itself; it writes by WriteLine. Values that do not change from row to row are prepared here.
  virtual void WriteRoot(IHierarchicalRoot& pRoot) = 0;
  bool WriteLine(std::string_view pLine);
  int64_t LineCount() const { return fOutput->LineCount(); }
  // Why the row's folder could not be read; empty when it could. While an export runs; any thread.
  std::u16string_view ErrorOf(const TExportRow& pRow) const;
  // While an export runs.
  ILineOutput& Output() const { return *fOutput; }

 private:
  void ReadErrors(const IHierarchicalRoot& pRoot);

  ILineOutput* fOutput = nullptr;                                          // while an export runs
  std::unordered_map<const IHierarchicalObject*, std::u16string> fErrors;  // likewise, by folder
  bool fFailed = false;
};

}  // namespace Vantrel::Exporting
