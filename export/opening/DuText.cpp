#include "export/opening/DuText.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <vector>

#include "platform/text/Text.h"

namespace Vantrel::Opening {

namespace {

constexpr int64_t kKilobyte = 1024;

struct TDuLine {
  int64_t fBytes;
  std::string_view fPath;
};

std::optional<TDuLine> ParseLine(std::string_view pLine) {
  int64_t kilobytes = 0;
  const char* end = pLine.data() + pLine.size();
  const auto [read, error] = std::from_chars(pLine.data(), end, kilobytes);
  if (error != std::errc() || read == end || *read != '\t' || read + 1 == end) return std::nullopt;
  if (kilobytes < 0 || kilobytes > kMostOfAnything / kKilobyte) return std::nullopt;
  return TDuLine{kilobytes * kKilobyte, pLine.substr(static_cast<size_t>(read + 1 - pLine.data()))};
}

// du writes a folder after all that is in it, so the lines are read from the last to the first: a folder then comes
// before its contents. Whatever has something in it is a folder; an empty folder looks like a file. A folder's number
// is not used: it also counts the blocks of folders, which a scan does not.
class TDuReader {
 public:
  TDuReader(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress)
      : fLines(pSource, pProgress), fTree(pTarget) {}

  TOpenedScan Read() {
    std::string_view line;
    while (fLines.Next(line)) Keep(line);
    if (fLines.WasCancelled()) return {};
    try {
      if (fLines.IsCutOff()) throw EFileError("The file ends within a line, so it was cut off");
      if (fRows.empty()) throw EFileError("The file is empty");
      BuildTree();
      TOpenedScan opened;
      opened.fRoot = fTree.Finish({});
      opened.fLacksFiles = LacksFiles(*opened.fRoot);
      return opened;
    } catch (const EFileError& error) {
      fLines.Fail(error.what());
    }
  }

 private:
  struct TRow {
    int64_t fBytes;
    size_t fBegin;  // of the path in fPaths
    size_t fLength;
  };

  void Keep(std::string_view pLine) {
    const std::optional<TDuLine> row = ParseLine(pLine);
    if (!row) fLines.Fail("A line has a number of kilobytes, a tab and a path, as \"du -ak\" writes them");
    fRows.push_back({row->fBytes, fPaths.size(), row->fPath.size()});
    fPaths += row->fPath;
  }

  // Without -a, du lists folders alone. What they hold is then far more than the blocks of the folders themselves.
  bool LacksFiles(const IHierarchicalRoot& pRoot) const {
    constexpr int64_t kMostOfAFolder = 64 * kKilobyte;
    const int64_t rest = fRows.back().fBytes - pRoot.GetTopFolder()->GetValues().fAllocated;
    return rest / static_cast<int64_t>(fRows.size()) > kMostOfAFolder;
  }

  std::string_view PathOf(size_t pRow) const {
    std::string_view path = std::string_view(fPaths).substr(fRows[pRow].fBegin, fRows[pRow].fLength);
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path;
  }

  static bool LiesIn(std::string_view pPath, std::string_view pFolder) {
    if (!pPath.starts_with(pFolder) || pPath.size() <= pFolder.size()) return false;
    return pFolder.ends_with('/') || pPath[pFolder.size()] == '/';
  }

  void BuildTree() {
    const size_t top = fRows.size() - 1;
    fOpen.push_back(PathOf(top));
    fTree.BeginTop(FromNativeBytes(fOpen.back()), u'/', Entry(top, kAttributeDirectory));
    for (size_t i = top; i-- > 0;) {
      const std::string_view path = PathOf(i);
      while (fOpen.size() > 1 && !LiesIn(path, fOpen.back())) EndFolder();
      if (!LiesIn(path, fOpen.back()))
        throw EFileError(ToQuotedDisplay(FromNativeBytes(path)) + " does not lie in " +
                         ToQuotedDisplay(FromNativeBytes(fOpen.back())) + ", which comes last");
      std::string_view name = path.substr(fOpen.back().size());
      if (name.starts_with('/')) name.remove_prefix(1);
      fName = FromNativeBytes(name);
      // Its contents would have come just before it.
      const bool isFolder = i > 0 && LiesIn(PathOf(i - 1), path);
      if (!isFolder) {
        fTree.AddFile(Entry(i, 0));
        continue;
      }
      fTree.BeginFolder(Entry(i, kAttributeDirectory));
      fOpen.push_back(path);
    }
    while (!fOpen.empty()) EndFolder();
  }

  void EndFolder() {
    fTree.EndFolder();
    fOpen.pop_back();
  }

  TLoadedEntry Entry(size_t pRow, TAttributes pAttributes) const {
    TLoadedEntry entry;
    entry.fName = fName;
    entry.fValues.fSize = entry.fValues.fAllocated = fRows[pRow].fBytes;
    entry.fValues.fAttributes = pAttributes;
    return entry;
  }

  TLines fLines;
  TLoadedTree fTree;
  std::string fPaths;  // one after the other
  std::vector<TRow> fRows;
  std::vector<std::string_view> fOpen;  // the paths of the open folders
  std::u16string fName;
};

}  // namespace

bool IsDuText(std::string_view pStart) {
  const size_t tab = pStart.find('\t');
  return tab != std::string_view::npos && tab > 0 && tab < 20 &&
         std::all_of(pStart.begin(), pStart.begin() + static_cast<ptrdiff_t>(tab),
                     [](char pByte) { return pByte >= '0' && pByte <= '9'; });
}

TOpenedScan ReadDuText(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  return TDuReader(pSource, pTarget, pProgress).Read();
}

}  // namespace Vantrel::Opening
