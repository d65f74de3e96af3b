#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "model/HierarchicalInterfaces.h"

namespace Kiv {

// The program's options: named, typed properties, each declared once in GlobalOptions.cpp with its default, range and help
// line. The command line sets them by name, "--help" lists them. Set before a scan starts; a scan reads them at its start.
struct TGlobalOptions {
  int32_t MaximumThreads;
  int32_t ThreadPriority;
  int32_t LongPathLength;
  int32_t NumberOfTopFiles;
  bool KeepFiles;
  bool CollectExtensions;
  bool CollectOwners;
  TDateType FileAgesDateType;
  std::string FileAges;
  bool ShareHardLinks;
  bool FollowSymbolicLinks;
  bool FollowMountPoints;
  bool StayOnFileSystem;
  bool UseBackupPrivilege;
  bool FolderDateBasedOnFilesOnly;
  bool UseAllocatedForShares;
  int32_t MaximumRoots;
  std::string SizeUnit;
  std::string ExportTitle;

  TGlobalOptions();  // all defaults
};

enum class TOptionKind : uint8_t { okBoolean, okInteger, okText, okChoice };

// One option's declaration.
struct TOptionInfo {
  std::string_view fName;
  TOptionKind fKind;
  std::string_view fHelp;   // one line, no full stop
  std::string fDefault;     // as text, as the command line would set it
  std::string fRange;       // "1..1024", "no|yes", "Created|Changed" …; empty for free text
  // Sets the option from text. False when the text is no value of it; the option then keeps its value.
  std::function<bool(TGlobalOptions&, std::string_view)> fSet;
  std::function<std::string(const TGlobalOptions&)> fGet;
};

// All options, in the order in which help lists them.
std::span<const TOptionInfo> AllOptions();
// The option of a name, without regard to ASCII letter case; nullptr when there is none.
const TOptionInfo* FindOption(std::string_view pName);

}  // namespace Kiv
