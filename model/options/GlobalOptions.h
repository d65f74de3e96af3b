#pragma once

// The program's options with their defaults, ranges and help lines.

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "model/options/MediaSettings.h"
#include "model/statistics/ColorPalette.h"
#include "model/statistics/FileTypeGroups.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "platform/system/Console.h"

namespace Vantrel {

// How the connection to a mail server is encrypted: not at all, after the greeting, or from the start.
enum class TMailSecurity : uint8_t { msNone, msStartTLS, msTLS };

// What a treemap shows, and what its colours mean.
enum class TTreemapSource : uint8_t { tsFolders, tsExtensions, tsOwners };
enum class TTreemapColors : uint8_t { tcType, tcExtension, tcAge, tcDepth, tcGrowth };
// The form of charts. The first lets each chart choose.
enum class TChartForm : uint8_t { cfAutomatic, cfBar, cfColumn, cfPie, cfRing };
enum class THistoryChartForm : uint8_t { hfArea, hfLine };

struct TPictureSize {
  int32_t fWidth = 0;  // in pixels
  int32_t fHeight = 0;
};

// The program's options: named, typed properties. GlobalOptions.cpp declares each once with its default, range and help
// line. The command line sets them by name, and "--help" lists them. A scan reads them at its start, so they are set
// before.
class TGlobalOptions {
 public:
  int32_t MaximumThreads = 0;
  int32_t ThreadPriority = 0;
  int32_t LongPathLength = 0;
  int32_t NumberOfTopFiles = 0;
  int32_t NumberOfListedErrors = 0;
  bool KeepFiles = false;
  bool CollectExtensions = false;
  bool CollectOwners = false;
  TDateType FileAgesDateType = TDateType::dtNone;
  std::string FileAges;
  bool ShareHardLinks = false;
  bool FollowSymbolicLinks = false;
  bool FollowMountPoints = false;
  bool StayOnFileSystem = false;
  bool UseBackupPrivilege = false;
  bool ScanMFT = false;
  bool MftSystemFiles = false;
  bool MftCompatible = false;
  bool FolderDateBasedOnFilesOnly = false;
  bool UseAllocatedForShares = false;
  int32_t MaximumRoots = 0;
  int32_t SearchLimit = 0;
  bool NormalizeUnicode = false;
  TSizeUnit SizeUnit = TSizeUnit::suAutomatic;
  bool DecimalUnits = false;
  bool ShowUnchanged = false;
  TColorUse Colors = TColorUse::cuAutomatic;
  std::string ExportTitle;
  bool ListTopFiles = false;
  bool ListTopFolders = false;
  bool ListExtensions = false;
  bool ListFileTypes = false;
  bool ListUsers = false;
  bool ListFileAges = false;
  bool ChartFolders = false;
  bool ChartExtensions = false;
  bool ChartFileTypes = false;
  bool ChartUsers = false;
  bool ChartFileAges = false;
  TPictureSize PictureSize;
  bool DarkPictures = false;
  int32_t ChartItems = 0;
  TChartForm ChartType = TChartForm::cfAutomatic;
  THistoryChartForm HistoryChartType = THistoryChartForm::hfArea;
  TTreemapSource TreemapOf = TTreemapSource::tsFolders;
  TTreemapColors TreemapColors = TTreemapColors::tcType;
  std::string MailServer;
  int32_t MailPort = 0;
  TMailSecurity MailSecurity = TMailSecurity::msStartTLS;
  std::string MailUser;
  std::string MailFrom;
  std::string ChecksumCache;
  bool RecordHistory = false;
  std::string HistoryFile;
  bool CloseAfterExport = false;

  TGlobalOptions();  // all defaults

  // Queries by the names that the user gave them.
  std::map<std::u16string, std::u16string> KeptSearches;

  // Tables that only options files can change. Copies share the groups, so replace the list instead of changing it.
  TRef<const IFileTypeGroups> FileTypeGroups;
  TUserColors UserColors;

  // The export settings of one kind of output. Each is an option of its own: "CSVSeparator".
  Exporting::TMediaSettings& Media(Exporting::TMediaType pMedia) { return fMedia.at(static_cast<size_t>(pMedia)); }
  const Exporting::TMediaSettings& Media(Exporting::TMediaType pMedia) const {
    return fMedia.at(static_cast<size_t>(pMedia));
  }

 private:
  std::array<Exporting::TMediaSettings, 7> fMedia;  // by media type
};

enum class TOptionKind : uint8_t { okBoolean, okInteger, okText, okChoice };

// Makes the groups and colours of these options those of the process: CommonFileTypeGroups and CommonColorPalette.
// Patterns take the groups when they are made, so call it before.
void UseAsCommonOptions(const TGlobalOptions& pOptions);

// One option's declaration.
struct TOptionInfo {
  std::string fName;
  TOptionKind fKind;
  std::string fHelp;     // one line, without a full stop
  std::string fDefault;  // as text, in the command line's form
  std::string fRange;    // "1..1024", "no|yes", "Created|Changed" …; empty for free text
  // Sets the option from text. When the text is not a valid value, returns false and keeps the option's value.
  std::function<bool(TGlobalOptions&, std::string_view)> fSet;
  std::function<std::string(const TGlobalOptions&)> fGet;
};

// The message for a value that an option refuses: 'MaximumThreads: "0" is not allowed; expected 1..256'. The value is
// shown unchanged.
std::string RefusedValueText(const TOptionInfo& pOption, std::string_view pValue);

// All options, in the order in which help lists them.
std::span<const TOptionInfo> AllOptions();
// The option with a name, ignoring ASCII letter case; nullptr when there is none.
const TOptionInfo* FindOption(std::string_view pName);

}  // namespace Vantrel
