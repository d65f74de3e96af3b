#include "model/GlobalOptions.h"

#include <algorithm>
#include <utility>

#include "model/OptionDefaults.h"
#include "platform/Text.h"

namespace Kiv {

namespace {

template <class T>
using TField = T TGlobalOptions::*;

bool ParseBoolean(std::string_view pText, bool& pValue) {
  if (SameTextAscii(pText, "true") || pText == "1") {
    pValue = true;
  } else if (SameTextAscii(pText, "false") || pText == "0") {
    pValue = false;
  } else {
    return false;
  }
  return true;
}

// "1;7;30": day counts, each larger than the one before it. A single trailing ";" is let pass.
bool IsAgeList(std::string_view pText) {
  if (pText.ends_with(';')) pText.remove_suffix(1);
  int64_t last = -1;
  for (bool more = true; more;) {
    const size_t end = pText.find(';');
    int64_t days = 0;
    if (!TryParseInt64(pText.substr(0, end), days) || days <= last) return false;
    last = days;
    more = end != std::string_view::npos;
    if (more) pText.remove_prefix(end + 1);
  }
  return true;
}

TOptionInfo Boolean(std::string_view pName, TField<bool> pField, bool pDefault, std::string_view pHelp) {
  return {pName,
          TOptionKind::okBoolean,
          pHelp,
          pDefault ? "true" : "false",
          "true|false",
          [pField](TGlobalOptions& pOptions, std::string_view pText) { return ParseBoolean(pText, pOptions.*pField); },
          [pField](const TGlobalOptions& pOptions) { return std::string(pOptions.*pField ? "true" : "false"); }};
}

TOptionInfo Integer(std::string_view pName, TField<int32_t> pField, int32_t pDefault, int32_t pLeast, int32_t pMost,
                    std::string_view pHelp) {
  auto set = [pField, pLeast, pMost](TGlobalOptions& pOptions, std::string_view pText) {
    int64_t value = 0;
    if (!TryParseInt64(pText, value) || value < pLeast || value > pMost) return false;
    pOptions.*pField = static_cast<int32_t>(value);
    return true;
  };
  return {pName,
          TOptionKind::okInteger,
          pHelp,
          std::to_string(pDefault),
          std::to_string(pLeast) + ".." + std::to_string(pMost),
          set,
          [pField](const TGlobalOptions& pOptions) { return std::to_string(pOptions.*pField); }};
}

template <class T>
using TChoices = std::vector<std::pair<std::string_view, T>>;

// One of a few words; the first is the default.
template <class T>
TOptionInfo Choice(std::string_view pName, TField<T> pField, TChoices<T> pChoices, std::string_view pHelp) {
  std::string range;
  for (const auto& choice : pChoices) range.append(range.empty() ? "" : "|").append(choice.first);
  std::string byDefault(pChoices.front().first);
  auto set = [pField, pChoices](TGlobalOptions& pOptions, std::string_view pText) {
    for (const auto& [word, value] : pChoices) {
      if (!SameTextAscii(pText, word)) continue;
      pOptions.*pField = value;
      return true;
    }
    return false;
  };
  auto get = [pField, pChoices](const TGlobalOptions& pOptions) {
    for (const auto& [word, value] : pChoices)
      if (pOptions.*pField == value) return std::string(word);
    return std::string();
  };
  return {pName, TOptionKind::okChoice, pHelp, byDefault, range, set, get};
}

TOptionInfo Text(std::string_view pName, TField<std::string> pField, std::string pDefault, std::string pRange,
                 bool (*pIsValid)(std::string_view), std::string_view pHelp) {
  auto set = [pField, pIsValid](TGlobalOptions& pOptions, std::string_view pText) {
    if (pIsValid != nullptr && !pIsValid(pText)) return false;
    pOptions.*pField = std::string(pText);
    return true;
  };
  return {pName,
          TOptionKind::okText,
          pHelp,
          std::move(pDefault),
          std::move(pRange),
          set,
          [pField](const TGlobalOptions& pOptions) { return pOptions.*pField; }};
}

constexpr int32_t kMostInt = 2147483647;

std::vector<TOptionInfo> DeclareOptions() {
  using TOptions = TGlobalOptions;
  return {
      Integer("MaximumThreads", &TOptions::MaximumThreads, 8, 1, 256, "Threads that scan, all scans together"),
      Integer("ThreadPriority", &TOptions::ThreadPriority, 3, 0, 6,
              "Priority of the scan: 0 idle, 3 normal, 6 highest"),
      Integer("LongPathLength", &TOptions::LongPathLength, 260, 1, 32767,
              "Paths with at least so many characters are marked as long"),
      Integer("NumberOfTopFiles", &TOptions::NumberOfTopFiles, 100, 0, 100000, "Largest files that a scan remembers"),
      Integer("NumberOfListedErrors", &TOptions::NumberOfListedErrors, 20, 0, kMostInt,
              "Folders that a report lists as unreadable"),
      Boolean("KeepFiles", &TOptions::KeepFiles, true, "Keep every file in the tree, not only folders"),
      Boolean("CollectExtensions", &TOptions::CollectExtensions, true, "Collect sizes by file name extension"),
      Boolean("CollectOwners", &TOptions::CollectOwners, kCollectOwnersByDefault, "Collect sizes by owner"),
      Choice<TDateType>("FileAgesDateType", &TOptions::FileAgesDateType,
                        {{"change", TDateType::dtLastChange},
                         {"creation", TDateType::dtCreation},
                         {"access", TDateType::dtLastAccess},
                         {"none", TDateType::dtNone}},
                        "Date that file ages count from; none collects no ages"),
      Text("FileAges", &TOptions::FileAges, "1;7;30;182;365;730;2147483647", "days;days;... in ascending order",
           IsAgeList, "Upper bounds of the file age intervals"),
      Boolean("ShareHardLinks", &TOptions::ShareHardLinks, kShareHardLinksByDefault,
              "Count a file with several hard links once on storage"),
      Boolean("FollowSymbolicLinks", &TOptions::FollowSymbolicLinks, false, "Scan the folders that links point to"),
      Boolean("FollowMountPoints", &TOptions::FollowMountPoints, false, "Scan volumes mounted into folders (Windows)"),
      Boolean("StayOnFileSystem", &TOptions::StayOnFileSystem, false, "Leave other file systems out"),
      Boolean("UseBackupPrivilege", &TOptions::UseBackupPrivilege, true, "Read folders by backup privilege (Windows)"),
      Boolean("FolderDateBasedOnFilesOnly", &TOptions::FolderDateBasedOnFilesOnly, false,
              "Take a folder's dates from its files alone"),
      Boolean("UseAllocatedForShares", &TOptions::UseAllocatedForShares, false,
              "Reckon percentages from allocated sizes"),
      Integer("MaximumRoots", &TOptions::MaximumRoots, 1000, 1, 100000, "Paths that one run takes"),
      Choice<std::string>("SizeUnit", &TOptions::SizeUnit,
                          {{"auto", "auto"}, {"B", "B"}, {"KB", "KB"}, {"MB", "MB"}, {"GB", "GB"}, {"TB", "TB"}},
                          "Unit in which reports show sizes"),
      Text("ExportTitle", &TOptions::ExportTitle, "", "", nullptr,
           "First line of a report in place of its name and date"),
  };
}

const std::vector<TOptionInfo>& Options() {
  static const std::vector<TOptionInfo> options = DeclareOptions();
  return options;
}

}  // namespace

TGlobalOptions::TGlobalOptions() {
  for (const TOptionInfo& option : Options()) option.fSet(*this, option.fDefault);
}

std::span<const TOptionInfo> AllOptions() {
  return Options();
}

const TOptionInfo* FindOption(std::string_view pName) {
  const auto& options = Options();
  const auto found =
      std::find_if(options.begin(), options.end(), [&](const TOptionInfo& p) { return SameTextAscii(p.fName, pName); });
  return found == options.end() ? nullptr : &*found;
}

}  // namespace Kiv
