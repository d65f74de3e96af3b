#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "model/GlobalOptions.h"
#include "model/MetaData.h"

namespace Kiv::Hierarchical::Exporting {

// The kinds of output that have export settings of their own. The numbers are kept in option files.
enum class TMediaType : uint8_t { mtText = 2, mtCSV = 5, mtXML = 6 };

// Which nodes an export takes in, as a set of bits.
enum TIncludedObject : uint32_t {
  ioFolders = 1 << 0,     // folders, and with them the header line of the columns
  ioFileGroups = 1 << 1,  // the "[Files]" nodes
};
using TIncludedObjectTypes = uint32_t;

// How many levels below the top an export goes.
struct TRecursionLevel {
  static constexpr int32_t kUnlimited = 2147483647;
  int32_t fLevel = kUnlimited;
  bool fFullExpand = true;  // nobody has chosen a level: each use may put in a better default
  bool operator==(const TRecursionLevel&) const = default;
};

// The export settings of one kind of output.
struct TMediaSettings {
  bool fIncludeHeader = true;         // the block above the table: title, root, drive
  bool fIncludeExpandedOnly = false;  // only what a view shows expanded; without a view, no effect
  TIncludedObjectTypes fIncludedObjectTypes = ioFolders | ioFileGroups;
  bool fUsePlainByteValues = false;
  bool fOverrideUnits = false;  // the two fields below count; otherwise the global options' unit does
  TSizeUnit fSizeUnit = TSizeUnit::suMB;
  bool fAutomaticUnit = true;
  std::u16string fSeparator = u"  ";
  std::u16string fAlternativeSeparator = u"\t";
  bool fUseAlternativeSeparator = false;
  TRecursionLevel fRecursionLevel;

  const std::u16string& Separator() const { return fUseAlternativeSeparator ? fAlternativeSeparator : fSeparator; }
};

// The settings of every kind of output, on top of the global options, which must outlive it.
class TMediaOptions {
 public:
  explicit TMediaOptions(const TGlobalOptions& pOptions);

  TMediaSettings& Of(TMediaType pMedia);
  // A copy whose unit fields hold what counts: its own or, when it does not override them, the global options'.
  TMediaSettings Effective(TMediaType pMedia) const;
  const TGlobalOptions& GlobalOptions() const { return fOptions; }

 private:
  const TGlobalOptions& fOptions;
  std::array<TMediaSettings, 8> fSettings;  // by media type
};

}  // namespace Kiv::Hierarchical::Exporting
