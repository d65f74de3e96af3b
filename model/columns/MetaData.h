#pragma once

// The column catalogue; values, how they are formatted and compared.

#include <array>
#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "platform/system/FileTime.h"
#include "platform/threads/Interface.h"

namespace Vantrel {

// The one catalogue of columns: lists, sorting, exports, pattern targets and search conditions all read it.

// A column's identity in files and on the wire: a 16-byte format identifier and a property id.
struct TPropertyKey {
  std::array<uint8_t, 16> fFormatId{};
  uint32_t fPropertyId = 0;
  auto operator<=>(const TPropertyKey&) const = default;
};

// A column's index in the catalogue: what the program uses inside.
enum class TColumn : uint8_t {
  mdName,
  mdFullPath,
  mdParentPath,
  mdExtension,
  mdOwner,
  mdSize,
  mdAllocated,
  mdFiles,
  mdFolders,
  mdItems,  // files and folders
  mdPercentOfParent,
  mdPercentOfRoot,
  mdLastAccess,
  mdLastChange,
  mdCreation,
  mdAttributes,
  mdCompression,
  mdAverageFileSize,
  mdPathLength,
  mdDepth,
  mdFolderState,
  mdSizeChange,         // against an earlier scan that the root is compared with
  mdSizeChangePercent,  // of the earlier size
  mdFileChange,         // files more or fewer
  mdAllocatedChange,    // bytes on the disk more or fewer
  mdChangeState,        // "new", "gone", or nothing
  mdError,              // why the folder could not be read; known to exports alone
  mdCount               // number of columns
};

enum class TColumnKind : uint8_t { ckText, ckSize, ckCount, ckDate, ckShare, ckAttributes };

struct TColumnInfo {
  TColumn fColumn;
  TPropertyKey fKey;
  std::u16string_view fName;     // for command lines and files: letters only, compared without regard to case
  std::u16string_view fCaption;  // for people
  TColumnKind fKind;
};

// The catalogue's entry of a column.
const TColumnInfo& ColumnInfo(TColumn pColumn);
// The column by key or by name; nullptr when there is none.
const TColumnInfo* FindColumn(const TPropertyKey& pKey);
const TColumnInfo* FindColumn(std::u16string_view pName);

// A raw value: none, a size, count or attribute set, a share (0 to 1), a date, or text.
using TMetaDataValue = std::variant<std::monostate, int64_t, double, TKivFileTime, std::u16string>;

// How values are written for people. Units are binary multiples.
enum class TSizeUnit : uint8_t { suBytes, suKB, suMB, suGB, suTB, suAutomatic };

struct TValueFormat {
  TSizeUnit fSizeUnit = TSizeUnit::suAutomatic;
  bool fPlainByteValues = false;  // sizes as bare numbers of bytes, counts without grouping
  bool fShowUnits = true;
  int fDecimals = 1;
  std::u16string fThousandsSeparator = u",";
  std::u16string fDecimalSeparator = u".";
};

// "17.3 MB", "1,234", "43.2 %", "2026-11-21 14:03:59", "A-H-" … by the column's kind. Empty for "no value".
std::u16string FormatValue(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat);
// The unit that the automatic unit picks for a size: the largest in which the value is at least 1.
TSizeUnit AutomaticUnit(int64_t pBytes);
std::u16string_view UnitName(TSizeUnit pUnit);

// Compares two values of one column, "no value" first; texts in code-unit order.
std::partial_ordering CompareValues(const TMetaDataValue& pA, const TMetaDataValue& pB);

// Anything that answers column values. Values are snapshots; any thread may ask.
class IMetaDataFormatter : public IInterface {
 public:
  // The raw value; "no value" for a column that the object does not have.
  virtual TMetaDataValue GetValue(TColumn pColumn) const = 0;
  // The value for people, in the given format.
  virtual std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const {
    return FormatValue(pColumn, GetValue(pColumn), pFormat);
  }
};

// Formatted texts of one node's columns, kept until the node changes. Made on first use: most nodes are never shown.
class IMetaDataCache : public IInterface {
 public:
  // The kept text; false when none is kept. All texts are in one format: whoever asks in another clears first.
  virtual bool Find(TColumn pColumn, std::u16string& pText) const = 0;
  virtual void Store(TColumn pColumn, const std::u16string& pText) = 0;
  virtual void Clear() = 0;
};

}  // namespace Vantrel
