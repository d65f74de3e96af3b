#pragma once

// The base of all exporters: columns, settings, walks on several threads, and lines written to an output.

#include <atomic>
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
#include "model/tree/TreeWalk.h"

namespace Vantrel::Exporting {

// The value format for settings that are in effect.
TValueFormat FormatOf(const TMediaSettings& pSettings);

// The columns that a line may take.
struct TLineWidth {
  int fColumns = 0;          // 0: any number
  bool fIsTerminal = false;  // a longer line would be broken, so names are shortened
};

// What lines may show beside their text.
struct TLineLook {
  bool fHasColors = false;  // as escape sequences
  bool fHasBars = false;    // of shares
  int fPartsOfBlock = 8;    // of a bar's character; 1: bars are of "#"
};

// The width of the console on the standard output. What is redirected is laid out like a usual console.
TLineWidth ConsoleWidth();
// What the console on the standard output shows.
TLineLook ConsoleLook();

// Follows an error if some entries of the folder were listed before it.
constexpr std::u16string_view kPartialError = u" (read in part)";

// Takes the lines of an export, such as the console or a file. Lines are UTF-8 without line ends. They come from one
// thread.
class ILineOutput {
 public:
  virtual ~ILineOutput() = default;
  // Where people read the lines as they come, they have a width, and no blanks at their end.
  virtual TLineWidth LineWidth() const { return {}; }
  virtual TLineLook LineLook() const { return {}; }
  // Writes the line and a line end. False when it could not be written; the exporter then stops.
  virtual bool WriteLine(std::string_view pLine) = 0;
  // The number of lines in the output, those of earlier exports included.
  virtual int64_t LineCount() const = 0;
};

// A visitor that writes rows as text.
class TRowWriter : public ITreeVisitor {
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
  // What a view shows expanded. With IncludeExpandedOnly, nothing else is entered. nullptr without a view.
  void SetExpanded(std::shared_ptr<const TExpandedFolders> pExpanded) { fExpanded = std::move(pExpanded); }
  // The value format for the settings.
  TValueFormat ValueFormat() const { return FormatOf(fSettings); }

 protected:
  explicit TBaseExport(const TMediaSettings& pSettings) : fSettings(pSettings) {}

  // Calls pRow for the top folder and everything beneath it that the settings include. A folder comes before its
  // contents, sub-folders before files. Siblings come in the order of the settings, else the largest first. If pRow
  // returns false, the walk ends and returns false.
  bool WalkTree(IFolderData& pTop, const std::function<bool(const TTreeRow&)>& pRow) const;
  // The same on as many threads as there are processors, for nested output too. The writer and its branches make the
  // text. Pieces are passed to pTake in the order of the walk. If pTake returns false, the walk ends and returns false.
  bool WalkInParallel(IFolderData& pTop, TRowWriter& pWriter, const TParallelText::TTake& pTake) const;
  // If the root is compared, what has gone since gets rows from now on too. What did not change gets none, unless the
  // settings show it. Without this call, the exporter writes the tree as it is.
  void ShowChanges(IHierarchicalRoot& pRoot);
  const TRef<IComparison>& GoneSince() const { return fGoneSince; }
  // Reads the root's errors for ErrorOf; ForgetErrors ends that.
  void ReadErrors(const IHierarchicalRoot& pRoot);
  void ForgetErrors() { fErrors.clear(); }
  // Why the row's folder could not be read, or empty if it was read. Any thread.
  std::u16string_view ErrorOf(const TTreeRow& pRow) const;
  // How many rows the walks since ShowChanges left out, because they did not change.
  int64_t UnchangedRows() const { return fUnchangedRows; }
  void ForgetUnchangedRows() { fUnchangedRows = 0; }
  bool LeavesOutUnchanged() const { return fOnlyChanged != nullptr; }
  // The size that leads, mdSize or mdAllocated: siblings come in its order unless another one is set, what is left out
  // is small in it, and percentages refer to it. mdSize unless it is set.
  TColumn LeadingSize() const { return fLeadingSize; }
  // The column of its change since an earlier scan.
  TColumn LeadingChange() const {
    return fLeadingSize == TColumn::mdAllocated ? TColumn::mdAllocatedChange : TColumn::mdSizeChange;
  }
  void SetLeadingSize(TColumn pColumn) { fLeadingSize = pColumn; }
  // The bytes below which the settings leave something out of this tree; 0: nothing.
  int64_t SmallestShown(const IFolderData& pTop) const;

 private:
  class TBranchingVisitor;

  // The walk that the settings ask for.
  TTreeWalk Walk(const IFolderData& pTop) const;

  const TMediaSettings fSettings;
  std::vector<TColumn> fColumns;
  bool fSortByChange = false;
  TColumn fLeadingSize = TColumn::mdSize;
  std::shared_ptr<const TExpandedFolders> fExpanded;
  TRef<IComparison> fGoneSince;
  std::unordered_map<const IHierarchicalObject*, std::u16string> fErrors;  // by folder
  std::shared_ptr<const TChangedFolders> fOnlyChanged;                     // nullptr: all is shown
  mutable std::atomic<int64_t> fUnchangedRows = 0;
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
  // Call it only while an export runs.
  ILineOutput& Output() const { return *fOutput; }

 private:
  ILineOutput* fOutput = nullptr;  // set while an export runs
  bool fFailed = false;
};

}  // namespace Vantrel::Exporting
