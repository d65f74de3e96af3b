#include "model/columns/MetaData.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "model/columns/SizeData.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// Format identifiers, with their bytes in the order of the written form {DE632DE0-4253-…}. Files hold them. Name and
// full path have their own identifiers. All other columns share one and differ by property id.
constexpr std::array<uint8_t, 16> kPathFormat = {0xDE, 0x63, 0x2D, 0xE0, 0x42, 0x53, 0x4B, 0xAB,
                                                 0x85, 0xC4, 0xCA, 0x3B, 0xE1, 0x8A, 0xA0, 0xF6};
constexpr std::array<uint8_t, 16> kNameFormat = {0xB0, 0x46, 0x1F, 0x53, 0xEA, 0xF6, 0x4D, 0xA1,
                                                 0xB8, 0x79, 0xBE, 0xA6, 0x41, 0xBF, 0x67, 0x0E};
constexpr std::array<uint8_t, 16> kCommonFormat = {0x5A, 0x1C, 0x7E, 0x94, 0x2B, 0xD3, 0x4F, 0x06,
                                                   0x9E, 0x41, 0x37, 0xC8, 0x60, 0xB5, 0xA2, 0x1D};

// Files hold property ids: a column never changes its id, and a new column gets the next one.
constexpr std::array<TColumnInfo, static_cast<size_t>(TColumn::mdCount)> kColumns = {{
    {TColumn::mdName, {kNameFormat, 61}, u"Name", u"Name", TColumnKind::ckText},
    {TColumn::mdFullPath, {kPathFormat, 1}, u"FullPath", u"Full Path", TColumnKind::ckText},
    {TColumn::mdParentPath, {kCommonFormat, 1}, u"ParentPath", u"Parent Path", TColumnKind::ckText},
    {TColumn::mdExtension, {kCommonFormat, 2}, u"Extension", u"Extension", TColumnKind::ckText},
    {TColumn::mdOwner, {kCommonFormat, 3}, u"Owner", u"Owner", TColumnKind::ckText},
    {TColumn::mdSize, {kCommonFormat, 4}, u"Size", u"Size", TColumnKind::ckSize},
    {TColumn::mdAllocated, {kCommonFormat, 5}, u"Allocated", u"Allocated", TColumnKind::ckSize},
    {TColumn::mdFiles, {kCommonFormat, 6}, u"Files", u"Files", TColumnKind::ckCount},
    {TColumn::mdFolders, {kCommonFormat, 7}, u"Folders", u"Folders", TColumnKind::ckCount},
    {TColumn::mdItems, {kCommonFormat, 8}, u"Items", u"Items", TColumnKind::ckCount},
    {TColumn::mdPercentOfParent, {kCommonFormat, 9}, u"PercentOfParent", u"% of Parent", TColumnKind::ckShare},
    {TColumn::mdPercentOfRoot, {kCommonFormat, 10}, u"PercentOfRoot", u"% of Root", TColumnKind::ckShare},
    {TColumn::mdLastAccess, {kCommonFormat, 11}, u"LastAccess", u"Last Access", TColumnKind::ckDate},
    {TColumn::mdLastChange, {kCommonFormat, 12}, u"LastChange", u"Last Change", TColumnKind::ckDate},
    {TColumn::mdCreation, {kCommonFormat, 13}, u"Creation", u"Creation", TColumnKind::ckDate},
    {TColumn::mdAttributes, {kCommonFormat, 14}, u"Attributes", u"Attributes", TColumnKind::ckAttributes},
    {TColumn::mdCompression, {kCommonFormat, 15}, u"Compression", u"Compressed", TColumnKind::ckAttributes},
    {TColumn::mdAverageFileSize, {kCommonFormat, 16}, u"AverageFileSize", u"Average File Size", TColumnKind::ckSize},
    {TColumn::mdPathLength, {kCommonFormat, 17}, u"PathLength", u"Path Length", TColumnKind::ckCount},
    {TColumn::mdDepth, {kCommonFormat, 18}, u"Depth", u"Depth", TColumnKind::ckCount},
    {TColumn::mdFolderState, {kCommonFormat, 19}, u"FolderState", u"Folder State", TColumnKind::ckAttributes},
    {TColumn::mdSizeChange, {kCommonFormat, 20}, u"SizeChange", u"Size Change", TColumnKind::ckSize},
    {TColumn::mdSizeChangePercent, {kCommonFormat, 21}, u"SizeChangePercent", u"Change %", TColumnKind::ckShare},
    {TColumn::mdFileChange, {kCommonFormat, 22}, u"FileChange", u"File Change", TColumnKind::ckCount},
    {TColumn::mdAllocatedChange, {kCommonFormat, 23}, u"AllocatedChange", u"Allocated Change", TColumnKind::ckSize},
    {TColumn::mdChangeState, {kCommonFormat, 24}, u"State", u"State", TColumnKind::ckText},
    {TColumn::mdError, {kCommonFormat, 25}, u"Error", u"Error", TColumnKind::ckText},
}};

constexpr bool InOrderOfColumns() {
  for (size_t i = 0; i < kColumns.size(); ++i) {
    if (kColumns[i].fColumn != static_cast<TColumn>(i)) return false;
  }
  return true;
}
static_assert(InOrderOfColumns(), "a column's number is its place in the table");

constexpr int kMaxDecimals = 6;

__extension__ using TWide = __int128;  // a size times 10^6 does not fit in 64 bits

int64_t PowerOfTen(int pExponent) {
  int64_t power = 1;
  while (pExponent-- > 0) power *= 10;
  return power;
}

// Appends the integer part with separators between groups of three digits.
void AppendGrouped(std::u16string& pText, uint64_t pValue, std::u16string_view pSeparator) {
  std::string digits = std::to_string(pValue);
  for (size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) pText += pSeparator;
    pText += static_cast<char16_t>(digits[i]);
  }
}

// The text of a number given as a multiple of 10^-pDecimals.
std::u16string FixedText(TWide pScaled, int pDecimals, const TValueFormat& pFormat) {
  std::u16string text;
  if (pScaled < 0) text += u'-';
  TWide magnitude = pScaled < 0 ? -pScaled : pScaled;
  int64_t scale = PowerOfTen(pDecimals);
  AppendGrouped(text, static_cast<uint64_t>(magnitude / scale), pFormat.fThousandsSeparator);
  if (pDecimals > 0) {
    text += pFormat.fDecimalSeparator;
    std::string fraction = fmt::format("{:0{}}", static_cast<int64_t>(magnitude % scale), pDecimals);
    text.append(fraction.begin(), fraction.end());
  }
  return text;
}

std::u16string CountText(int64_t pCount, const TValueFormat& pFormat) {
  if (!pFormat.fPlainByteValues) return FixedText(pCount, 0, pFormat);
  std::string digits = std::to_string(pCount);
  return {digits.begin(), digits.end()};
}

// The size in a unit, as a multiple of 10^-pDecimals. Halves are rounded away from zero. Integers are used, since a
// double would round twice.
TWide ScaledSize(int64_t pBytes, int64_t pBytesOfUnit, int pDecimals) {
  const TWide scaled = static_cast<TWide>(pBytes) * PowerOfTen(pDecimals);
  const TWide half = pBytesOfUnit / 2;
  return (scaled < 0 ? scaled - half : scaled + half) / pBytesOfUnit;
}

std::u16string SizeText(int64_t pBytes, const TValueFormat& pFormat) {
  if (pFormat.fPlainByteValues) return CountText(pBytes, pFormat);
  bool automatic = pFormat.fSizeUnit == TSizeUnit::suAutomatic;
  const bool decimal = pFormat.fDecimalUnits;
  TSizeUnit unit = automatic ? AutomaticUnit(pBytes, decimal) : pFormat.fSizeUnit;
  auto decimalsOf = [&pFormat](TSizeUnit pUnit) {
    return pUnit == TSizeUnit::suBytes ? 0 : std::clamp(pFormat.fDecimals, 0, kMaxDecimals);  // a byte has no parts
  };
  TWide scaled = ScaledSize(pBytes, BytesOfUnit(unit, decimal), decimalsOf(unit));
  if (automatic && unit < TSizeUnit::suTB) {
    // A value that rounding raised to the next unit is shown as 1 of it.
    TWide next = static_cast<TWide>(BytesOfUnit(TSizeUnit::suKB, decimal)) * PowerOfTen(decimalsOf(unit));
    if (scaled >= next || scaled <= -next) {
      unit = static_cast<TSizeUnit>(static_cast<int>(unit) + 1);
      scaled = ScaledSize(pBytes, BytesOfUnit(unit, decimal), decimalsOf(unit));
    }
  }
  std::u16string text = FixedText(scaled, decimalsOf(unit), pFormat);
  if (pFormat.fShowUnits) {
    text += u' ';
    text += UnitName(unit, decimal);
  }
  return text;
}

// A share from 0 to 1 in per cent. Halves are rounded away from zero.
std::u16string ShareText(double pShare, const TValueFormat& pFormat) {
  if (!std::isfinite(pShare)) return {};
  int decimals = std::clamp(pFormat.fDecimals, 0, kMaxDecimals);
  double percent = std::clamp(pShare * 100.0 * static_cast<double>(PowerOfTen(decimals)), -9e18, 9e18);
  std::u16string text = FixedText(static_cast<int64_t>(std::round(percent)), decimals, pFormat);
  if (pFormat.fShowUnits) text += u" %";
  return text;
}

// One letter per attribute in a fixed place, "-" where the attribute is missing.
std::u16string AttributeText(int64_t pAttributes) {
  struct TLetter {
    TAttributes fBit;
    char16_t fLetter;
  };
  static constexpr TLetter letters[] = {
      {kAttributeReadOnly, u'R'},  {kAttributeHidden, u'H'},       {kAttributeSystem, u'S'},
      {kAttributeArchive, u'A'},   {kAttributeDirectory, u'D'},    {kAttributeCompressed, u'C'},
      {kAttributeEncrypted, u'E'}, {kAttributeReparsePoint, u'L'}, {kAttributeSparse, u'P'},
      {kAttributeOffline, u'O'},
  };
  std::u16string text;
  for (const TLetter& letter : letters) text += (pAttributes & letter.fBit) != 0 ? letter.fLetter : u'-';
  return text;
}

std::u16string CompressionText(int64_t pStates) {
  switch (pStates) {
    case compr_no:
      return u"no";
    case compr_yes:
      return u"yes";
    case compr_no | compr_yes:
      return u"partly";
    default:
      return {};
  }
}

std::u16string NumberText(TColumn pColumn, int64_t pValue, const TValueFormat& pFormat) {
  switch (ColumnInfo(pColumn).fKind) {
    case TColumnKind::ckSize:
      return SizeText(pValue, pFormat);
    case TColumnKind::ckAttributes:
      if (pColumn == TColumn::mdAttributes) return AttributeText(pValue);
      if (pColumn == TColumn::mdCompression) return CompressionText(pValue);
      return FromUtf8(std::to_string(pValue));
    default:
      return CountText(pValue, pFormat);
  }
}

}  // namespace

const TColumnInfo& ColumnInfo(TColumn pColumn) {
  return kColumns[static_cast<size_t>(pColumn)];
}

const TColumnInfo* FindColumn(const TPropertyKey& pKey) {
  auto found =
      std::find_if(kColumns.begin(), kColumns.end(), [&](const TColumnInfo& pInfo) { return pInfo.fKey == pKey; });
  return found == kColumns.end() ? nullptr : &*found;
}

const TColumnInfo* FindColumn(std::u16string_view pName) {
  auto found = std::find_if(kColumns.begin(), kColumns.end(),
                            [&](const TColumnInfo& pInfo) { return SameTextAscii(pInfo.fName, pName); });
  return found == kColumns.end() ? nullptr : &*found;
}

TSizeUnit AutomaticUnit(int64_t pBytes, bool pDecimal) {
  const uint64_t magnitude = pBytes < 0 ? 0 - static_cast<uint64_t>(pBytes) : static_cast<uint64_t>(pBytes);
  int unit = static_cast<int>(TSizeUnit::suTB);
  while (unit > 0 && magnitude < static_cast<uint64_t>(BytesOfUnit(static_cast<TSizeUnit>(unit), pDecimal))) --unit;
  return static_cast<TSizeUnit>(unit);
}

std::u16string_view UnitName(TSizeUnit pUnit, bool pDecimal) {
  static constexpr std::array<std::u16string_view, 6> names = {u"B", u"KB", u"MB", u"GB", u"TB", u""};
  return pDecimal && pUnit == TSizeUnit::suKB ? u"kB" : names[static_cast<size_t>(pUnit)];
}

int64_t BytesOfUnit(TSizeUnit pUnit, bool pDecimal) {
  static constexpr std::array<int64_t, 6> binary = {1, 1LL << 10, 1LL << 20, 1LL << 30, 1LL << 40, 1};
  static constexpr std::array<int64_t, 6> decimal = {1, 1'000, 1'000'000, 1'000'000'000, 1'000'000'000'000, 1};
  return (pDecimal ? decimal : binary)[static_cast<size_t>(pUnit)];
}

namespace {

std::u16string FormatUnsigned(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat) {
  if (const auto* number = std::get_if<int64_t>(&pValue)) return NumberText(pColumn, *number, pFormat);
  if (const auto* share = std::get_if<double>(&pValue)) return ShareText(*share, pFormat);
  if (const auto* date = std::get_if<TKivFileTime>(&pValue)) return FromUtf8(FormatIsoLocal(*date));
  if (const auto* text = std::get_if<std::u16string>(&pValue)) return *text;
  return {};
}

// Users need the direction of a change, but programs read numbers without a plus.
bool ShowsPlus(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat) {
  if (pFormat.fPlainByteValues || (pColumn != TColumn::mdSizeChange && pColumn != TColumn::mdSizeChangePercent &&
                                   pColumn != TColumn::mdFileChange && pColumn != TColumn::mdAllocatedChange))
    return false;
  const auto* number = std::get_if<int64_t>(&pValue);
  const auto* share = std::get_if<double>(&pValue);
  return (number && *number > 0) || (share && *share > 0);
}

}  // namespace

std::u16string FormatValue(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat) {
  const std::u16string text = FormatUnsigned(pColumn, pValue, pFormat);
  return ShowsPlus(pColumn, pValue, pFormat) ? u"+" + text : text;
}

// Values of different kinds are ordered by kind. In one column this only happens with "no value".
std::partial_ordering CompareValues(const TMetaDataValue& pA, const TMetaDataValue& pB) {
  return pA <=> pB;
}

}  // namespace Vantrel
