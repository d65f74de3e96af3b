#pragma once

// The column catalogue, and how values are formatted and compared.

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

// The single catalogue of columns. Lists, sorting, exports, pattern targets and search conditions all use it.

// A column's identity in files: a 16-byte format identifier and a property id.
struct TPropertyKey {
  std::array<uint8_t, 16> fFormatId{};
  uint32_t fPropertyId = 0;
  auto operator<=>(const TPropertyKey&) const = default;
};

// A column's index in the catalogue, for use inside the program.
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
  mdSizeChange,         // since the earlier scan that the root is compared with
  mdSizeChangePercent,  // of the earlier size
  mdFileChange,         // change in the number of files
  mdAllocatedChange,    // change in bytes on the disk
  mdChangeState,        // "new", "gone", or nothing
  mdError,              // why the folder could not be read; only in exports
  mdCount               // number of columns
};

enum class TColumnKind : uint8_t { ckText, ckSize, ckCount, ckDate, ckShare, ckAttributes };

struct TColumnInfo {
  TColumn fColumn;
  TPropertyKey fKey;
  std::u16string_view fName;     // for command lines and files: letters only, compared without regard to case
  std::u16string_view fCaption;  // for users
  TColumnKind fKind;
};

// The catalogue's entry of a column.
const TColumnInfo& ColumnInfo(TColumn pColumn);
// Finds a column by key or by name; nullptr when there is none.
const TColumnInfo* FindColumn(const TPropertyKey& pKey);
const TColumnInfo* FindColumn(std::u16string_view pName);

// A raw value: none, a size, count or attribute set, a share (0 to 1), a date, or text.
using TMetaDataValue = std::variant<std::monostate, int64_t, double, TKivFileTime, std::u16string>;

// How values are written for users. Units are powers of 1,024, or of 1,000.
enum class TSizeUnit : uint8_t { suBytes, suKB, suMB, suGB, suTB, suAutomatic };

struct TValueFormat {
  TSizeUnit fSizeUnit = TSizeUnit::suAutomatic;
  bool fDecimalUnits = false;     // powers of 1,000, the first of them called kB
  bool fPlainByteValues = false;  // sizes as bare numbers of bytes, counts without grouping
  bool fShowUnits = true;
  int fDecimals = 1;
  std::u16string fThousandsSeparator = u",";
  std::u16string fDecimalSeparator = u".";
};

// "17.3 MB", "1,234", "43.2 %", "2026-11-21 14:03:59", "A-H-" … by the column's kind. Empty for "no value".
std::u16string FormatValue(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat);
// The unit that the automatic unit picks for a size: the largest in which the value is at least 1.
TSizeUnit AutomaticUnit(int64_t pBytes, bool pDecimal = false);
std::u16string_view UnitName(TSizeUnit pUnit, bool pDecimal = false);
// The bytes of a unit; 1 for the automatic unit.
int64_t BytesOfUnit(TSizeUnit pUnit, bool pDecimal);

// Compares two values of one column, "no value" first; texts in code-unit order.
std::partial_ordering CompareValues(const TMetaDataValue& pA, const TMetaDataValue& pB);

// An object with column values. Values are snapshots. Any thread may ask.
class IMetaDataFormatter : public IInterface {
 public:
  // The raw value. "No value" for a column that the object does not have.
  virtual TMetaDataValue GetValue(TColumn pColumn) const = 0;
  // The value as text for users, in the given format.
  virtual std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const {
    return FormatValue(pColumn, GetValue(pColumn), pFormat);
  }
};

}  // namespace Vantrel
