#pragma once

// The base of all exporters: columns, settings, the walk over the tree, and lines written to an output.

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

// The value format for settings that are in effect.
TValueFormat FormatOf(const TMediaSettings& pSettings);

// Takes the lines of an export, such as the console or a file. Lines are UTF-8 without line ends. They come from one
// thread.
class ILineOutput {
 public:
  virtual ~ILineOutput() = default;
  // Writes the line and CRLF. False when it could not be written; the exporter then stops.
  virtual bool WriteLine(std::string_view pLine) = 0;
  // The number of lines in the output, those of earlier exports included.
  virtual int64_t LineCount() const = 0;
};

// A folder or file on its way into an export. Level 0 is the top. A tree has millions of files without nodes of their
// own, so a file is passed as its record in the folder's table.
struct TExportRow {
  IFolderData& fFolder;  // the node, or the folder that the file lies in
  int32_t fLevel = 0;
  const TFileTable* fFiles = nullptr;  // set for a file only, as is fFile
  const TFileRecord* fFile = nullptr;
  bool fIsShown = true;  // false for a folder that only leads to rows beneath it

  bool IsFile() const { return fFile != nullptr; }
  std::u16string_view Name() const { return IsFile() ? fFiles->NameOf(*fFile) : fFolder.GetObjectName(); }
  // The folder's node, or a node made for the file. Too slow to call for every file of a tree.
  TRef<IHierarchicalElement> Element() const;
};

// Takes the rows of an export, a folder before its contents. A return value of false ends the walk.
class IExportVisitor {
 public:
  virtual ~IExportVisitor() = default;
  // pIsComplete means that nothing beneath the node follows and EndNode is not called for it.
  virtual bool BeginNode(const TExportRow& pRow, bool pIsComplete) = 0;
  virtual bool EndNode(const TExportRow& pRow) = 0;
  virtual bool VisitFile(const TExportRow&) { return true; }
  // Called first for each folder. True means that the visitor itself handles the folder and everything beneath it.
  virtual bool TakesBranch(const TExportRow&) { return false; }
};

// A visitor that writes rows as text.
class TRowWriter : public IExportVisitor {
 public:
  // Makes a writer for folders in the innermost open folder. Its text follows the text that this writer has written.
  virtual std::unique_ptr<TRowWriter> Branch() const = 0;
  // Called before the text is taken.
  virtual void Flush() {}

  TRowText fText;
};

// Common to all exporters: the settings of their kind of output, the columns, and the walk over the tree.
class TBaseExport {
 public:
  virtual ~TBaseExport() = default;
  virtual TMediaType MediaType() const = 0;

  const TMediaSettings& Settings() const { return fSettings; }
  void SetColumns(std::vector<TColumn> pColumns) { fColumns = std::move(pColumns); }
  std::span<const TColumn> Columns() const { return fColumns; }
  // Sorts siblings by their change since the compared scan, the largest change first.
  void SetSortByChange(bool pSortByChange) { fSortByChange = pSortByChange; }
  // The value format for the settings.
  TValueFormat ValueFormat() const { return FormatOf(fSettings); }

 protected:
  explicit TBaseExport(const TMediaSettings& pSettings) : fSettings(pSettings) {}

  // Calls pRow for the top folder and everything beneath it that the settings include. A folder comes before its
  // contents, sub-folders before files. Siblings come in the order of the settings, else the largest first. If pRow
  // returns false, the walk ends and returns false.
  bool WalkTree(IFolderData& pTop, const std::function<bool(const TExportRow&)>& pRow) const;
  // The same for exporters with nested output.
  bool WalkNodes(IFolderData& pTop, IExportVisitor& pVisitor) const;
  // The same on as many threads as there are processors. The writer and its branches make the text. Pieces are passed
  // to pTake in the order of the walk. If pTake returns false, the walk ends and returns false.
  bool WalkInParallel(IFolderData& pTop, TRowWriter& pWriter, const TParallelText::TTake& pTake) const;
  // From now on, items deleted since this earlier scan get rows too. nullptr means no such rows. Without this call, or
  // if the root is not compared, the exporter writes only the tree.
  void ShowGone(TRef<IComparison> pComparison) { fGoneSince = std::move(pComparison); }
  const IComparison* GoneSince() const { return fGoneSince.get(); }

 private:
  class TWalk;
  class TBranchingVisitor;

  bool Includes(TIncludedObjectTypes pTypes) const { return (fSettings.fIncludedObjectTypes & pTypes) != 0; }
  bool IsIncluded(const IFolderData& pFolder) const {
    return Includes(pFolder.IsFileGroup() ? ioFileGroups : ioFolders);
  }
  // The approximate number of rows of a branch.
  int64_t RowsOf(const IFolderData& pFolder) const;
  std::vector<TRef<IFolderData>> IncludedChildren(IFolderData& pFolder) const;
  TRef<const TFileTable> IncludedFiles(const IFolderData& pFolder) const;
  std::vector<uint32_t> OrderOfFiles(IFolderData& pFolder, const TFileTable& pFiles) const;

  const TMediaSettings fSettings;
  std::vector<TColumn> fColumns;
  bool fSortByChange = false;
  TRef<IComparison> fGoneSince;
};

// An exporter that writes a whole root to one output.
class TFileExport : public TBaseExport {
 public:
  // Writes the tree as it is now. No scan should be running. False when the output could not take it all.
  virtual bool Export(IHierarchicalRoot& pRoot, ILineOutput& pOutput) = 0;

 protected:
  using TBaseExport::TBaseExport;
};

// An exporter that writes line by line. After a line could not be written, it tries no further one.
class TFileStreamExport : public TFileExport {
 public:
  bool Export(IHierarchicalRoot& pRoot, ILineOutput& pOutput) final;

 protected:
  using TFileExport::TFileExport;
  // Makes the export by calling WriteLine. Values that are the same for all rows are prepared here.
  virtual void WriteRoot(IHierarchicalRoot& pRoot) = 0;
  bool WriteLine(std::string_view pLine);
  int64_t LineCount() const { return fOutput->LineCount(); }
  // Why the row's folder could not be read, or empty if it was read. Call it only while an export runs. Any thread.
  std::u16string_view ErrorOf(const TExportRow& pRow) const;
  // Call it only while an export runs.
  ILineOutput& Output() const { return *fOutput; }

 private:
  void ReadErrors(const IHierarchicalRoot& pRoot);

  ILineOutput* fOutput = nullptr;                                          // set while an export runs
  std::unordered_map<const IHierarchicalObject*, std::u16string> fErrors;  // by folder; set while an export runs
  bool fFailed = false;
};

}  // namespace Vantrel::Exporting
