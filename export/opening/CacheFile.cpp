#include "export/opening/CacheFile.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "platform/text/Text.h"

namespace Vantrel::Opening {

namespace {

constexpr int64_t kBlock = 512;
constexpr std::string_view kBlanks = " \t";

std::vector<std::string_view> Fields(std::string_view pLine) {
  std::vector<std::string_view> fields;
  for (size_t begin = pLine.find_first_not_of(kBlanks); begin != std::string_view::npos;
       begin = pLine.find_first_not_of(kBlanks, begin)) {
    const size_t end = std::min(pLine.find_first_of(kBlanks, begin), pLine.size());
    fields.push_back(pLine.substr(begin, end - begin));
    begin = end;
  }
  return fields;
}

std::optional<int64_t> Number(std::string_view pText, int pBase = 10) {
  int64_t number = 0;
  const char* end = pText.data() + pText.size();
  const auto [read, error] = std::from_chars(pText.data(), end, number, pBase);
  if (error != std::errc() || read != end || number < 0 || number > kMostOfAnything) return std::nullopt;
  return number;
}

// "17", "17K", "17M", "17G", "17T".
std::optional<int64_t> Size(std::string_view pText) {
  constexpr std::string_view kUnits = "KMGT";
  const size_t unit = pText.empty() ? std::string_view::npos : kUnits.find(pText.back());
  if (unit == std::string_view::npos) return Number(pText);
  const std::optional<int64_t> number = Number(pText.substr(0, pText.size() - 1));
  const int shift = 10 * (static_cast<int>(unit) + 1);
  if (!number || *number > (kMostOfAnything >> shift)) return std::nullopt;
  return *number << shift;
}

std::optional<int64_t> Seconds(std::string_view pText) {
  if (pText.starts_with("0x") || pText.starts_with("0X")) return Number(pText.substr(2), 16);
  return Number(pText);
}

// "%20" is a blank.
std::u16string Unescaped(std::string_view pText) {
  std::string bytes;
  for (size_t i = 0; i < pText.size(); ++i) {
    const std::optional<int64_t> code =
        pText[i] == '%' && i + 2 < pText.size() ? Number(pText.substr(i + 1, 2), 16) : std::nullopt;
    bytes += code ? static_cast<char>(*code) : pText[i];
    if (code) i += 2;
  }
  return FromNativeBytes(bytes);
}

// Folders have whole paths and come before what is in them. Files have names, and lie in the last folder, or paths.
class TCacheFileReader {
 public:
  TCacheFileReader(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress)
      : fLines(pSource, pProgress), fTree(pTarget) {}

  TOpenedScan Read() {
    std::string_view line;
    if (!fLines.Next(line) && !fLines.WasCancelled()) throw EFileError("The file is empty");
    while (fLines.Next(line)) {
      const std::vector<std::string_view> fields = Fields(line);
      if (fields.empty() || fields.front().starts_with('#')) continue;
      try {
        ReadLine(fields);
      } catch (const EFileError& error) {
        fLines.Fail(error.what());
      }
    }
    if (fLines.WasCancelled()) return {};
    try {
      if (fLines.IsCutOff()) throw EFileError("The file ends within a line, so it was cut off");
      if (!fTree.HasTop()) throw EFileError("The file holds no folder");
      while (fTree.OpenFolders() > 0) fTree.EndFolder();
      TOpenedScan opened;
      opened.fRoot = fTree.Finish({});
      return opened;
    } catch (const EFileError& error) {
      fLines.Fail(error.what());
    }
  }

 private:
  void ReadLine(const std::vector<std::string_view>& pFields) {
    constexpr size_t kLeastFields = 4;
    if (pFields.size() < kLeastFields) throw EFileError("A line has a type, a path, a size and a time");
    const std::u16string path = Unescaped(pFields[1]);
    const std::optional<int64_t> size = Size(pFields[2]);
    const std::optional<int64_t> time = Seconds(pFields[3]);
    if (!size) throw EFileError("The size is no number: " + ToQuotedDisplay(FromUtf8(pFields[2].substr(0, 100))));
    if (!time) throw EFileError("The time is no number: " + ToQuotedDisplay(FromUtf8(pFields[3].substr(0, 100))));
    TLoadedEntry entry;
    entry.fValues.fSize = *size;
    // Only of sparse files are the blocks told. Others take as many as their bytes need.
    entry.fValues.fAllocated = (*size + kUsualCluster - 1) / kUsualCluster * kUsualCluster;
    if (*time > 0) entry.fValues.fLastChangeDate = TKivFileTime::FromUnix(*time, 0);
    ReadOptionalFields(pFields, entry.fValues);
    if (SameTextAscii(pFields[0], "D")) return ReadFolder(path, entry);
    if (SameTextAscii(pFields[0], "L")) entry.fValues.fAttributes = kAttributeReparsePoint;
    if (SameTextAscii(pFields[0], "L")) entry.fValues.fAllocated = 0;
    for (const char* special : {"BlockDev", "CharDev", "FIFO", "Socket"})
      if (SameTextAscii(pFields[0], special)) {
        entry.fValues.fAttributes = kAttributeDevice;
        entry.fValues.fAllocated = 0;
      }
    if (entry.fValues.fAttributes == 0 && !SameTextAscii(pFields[0], "F"))
      throw EFileError("The type is unknown: " + ToQuotedDisplay(FromUtf8(pFields[0].substr(0, 100))));
    if (!fTree.HasTop()) throw EFileError("A file comes before the first folder");
    entry.fName = path.starts_with(u'/') ? EnterParentOf(path) : std::u16string_view(path);
    fTree.AddFile(entry);
  }

  static void ReadOptionalFields(const std::vector<std::string_view>& pFields, TEntryValues& pValues) {
    int64_t links = 1;
    for (size_t i = 4; i + 1 < pFields.size(); i += 2) {
      const std::optional<int64_t> number = Number(pFields[i + 1]);
      if (!number) continue;
      if (SameTextAscii(pFields[i], "blocks:"))
        pValues.fAllocated = std::min(*number, kMostOfAnything / kBlock) * kBlock;
      if (SameTextAscii(pFields[i], "links:")) links = std::max<int64_t>(*number, 1);
    }
    pValues.fAllocated /= links;
  }

  // Ends the folders that the path does not lie in. Returns the name that is left of the path.
  std::u16string_view EnterParentOf(std::u16string_view pPath) {
    const size_t slash = pPath.rfind(u'/');
    const std::u16string_view parent = pPath.substr(0, std::max<size_t>(slash, 1));
    while (fTree.OpenFolders() > 1 && fTree.Path() != parent) fTree.EndFolder();
    if (fTree.Path() != parent)
      throw EFileError("The folder of " + ToQuotedDisplay(pPath) + " does not come before it");
    return pPath.substr(slash + 1);
  }

  void ReadFolder(std::u16string_view pPath, TLoadedEntry& pEntry) {
    pEntry.fValues.fAttributes = kAttributeDirectory;
    if (!pPath.starts_with(u'/')) throw EFileError("A folder needs a whole path: " + ToQuotedDisplay(pPath));
    if (!fTree.HasTop()) return fTree.BeginTop(pPath, u'/', pEntry);
    if (pPath.size() > 1 && pPath.ends_with(u'/')) pPath.remove_suffix(1);
    pEntry.fName = EnterParentOf(pPath);
    fTree.BeginFolder(pEntry);
  }

  static constexpr int64_t kUsualCluster = 4096;

  TLines fLines;
  TLoadedTree fTree;
};

}  // namespace

bool IsCacheFile(std::string_view pStart) {
  return pStart.starts_with("[qdirstat ") || pStart.starts_with("[kdirstat ");
}

TOpenedScan ReadCacheFile(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  return TCacheFileReader(pSource, pTarget, pProgress).Read();
}

}  // namespace Vantrel::Opening
