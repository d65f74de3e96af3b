#include "model/statistics/AssocSizeArray.h"

#include <algorithm>
#include <cmath>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel {

// Every folder has two arrays, so their size decides the memory of a scan of millions of folders.
static_assert(sizeof(TExtensionSizeArray) <= 56);

namespace {

int64_t ValueOf(const TBasicSizeValues& pValues, TColumn pColumn) {
  switch (pColumn) {
    case TColumn::mdSize:
      return pValues.fSize;
    case TColumn::mdAllocated:
      return pValues.fAllocated;
    case TColumn::mdFiles:
    case TColumn::mdItems:
      return pValues.fFiles;
    case TColumn::mdAverageFileSize:
      return pValues.fFiles == 0 ? 0 : pValues.fSize / pValues.fFiles;
    default:
      return 0;
  }
}

// Millionths. The small summand prevents a division by zero for an empty reference. A double has 53 bits, which is
// exact for all sizes that differ in a millionth.
int64_t ShareOf(int64_t pValue, int64_t pReference) {
  double share = 1'000'000.0 * static_cast<double>(pValue) / (static_cast<double>(pReference) + 0.00000001);
  constexpr double limit = 9e18;  // a value without a reference; only a race can cause it
  return static_cast<int64_t>(std::nearbyint(std::clamp(share, -limit, limit)));  // halves to even
}

}  // namespace

int TCustomAssocSizeArray::TSizeArrayComparer::Compare(const TKeyedSizeValues& pA, const TKeyedSizeValues& pB) const {
  int64_t a = ValueOf(pA.fValues, fColumn);
  int64_t b = ValueOf(pB.fValues, fColumn);
  if (a != b) return a > b ? -1 : 1;
  return TextOfKey(pA.fKey).compare(TextOfKey(pB.fKey));
}

struct TCustomAssocSizeArray::TSortedKeys {
  TColumn fColumn;
  uint32_t fChanges;
  std::vector<std::u16string> fKeys;
};

TCustomAssocSizeArray::TCustomAssocSizeArray(uint16_t pFlags) : fFlags(pFlags) {}

TCustomAssocSizeArray::TCustomAssocSizeArray(const TCustomAssocSizeArray& pOther)
    : TInterfaced(pOther), fTable(pOther.CopyOfTable()), fFlags(pOther.fFlags) {}

TCustomAssocSizeArray::~TCustomAssocSizeArray() = default;

TPackedSizeTable TCustomAssocSizeArray::CopyOfTable() const {
  TSharedLock lock(fLock);
  return fTable;
}

std::u16string TCustomAssocSizeArray::NormalisedKey(std::u16string_view pKey, std::u16string_view pTextForEmpty,
                                                    bool pLowerCase) {
  if (pKey.empty() || pKey == pTextForEmpty) return std::u16string(pTextForEmpty);
  return pLowerCase ? ToLowerLinguistic(pKey) : std::u16string(pKey);
}

std::u16string TCustomAssocSizeArray::NormalisedKey(std::u16string_view pKey) const {
  return NormalisedKey(pKey, TextForEmptyKey(), (fFlags & kLowerCaseKeys) != 0);
}

void TCustomAssocSizeArray::Add(std::u16string_view pKey, const TBasicSizeValues& pValues) {
  TKeyId key = InternKey(NormalisedKey(pKey));
  TExclusiveLock lock(fLock);
  fTable.Add(key, pValues);
  Changed();
}

void TCustomAssocSizeArray::Add(std::span<const TKeyedSizeValues> pEntries) {
  TExclusiveLock lock(fLock);
  fTable.AddSorted(pEntries);
  Changed();
}

// All size arrays are of this class. The interface is for their users, not for other implementations. A checked cast
// would cost more than the merge itself.
void TCustomAssocSizeArray::AddArray(const ICustomAssocSizeArray& pOther) {
  const auto& other = static_cast<const TCustomAssocSizeArray&>(pOther);
  TSharedLock otherLock(other.fLock);
  TExclusiveLock lock(fLock);
  fTable.AddTable(other.fTable);
  Changed();
}

void TCustomAssocSizeArray::SubtractArray(const ICustomAssocSizeArray& pOther) {
  const auto& other = static_cast<const TCustomAssocSizeArray&>(pOther);
  TSharedLock otherLock(other.fLock);
  TExclusiveLock lock(fLock);
  fTable.SubtractTable(other.fTable);
  Changed();
}

void TCustomAssocSizeArray::SetRecord(std::u16string_view pKey, const TBasicSizeValues* pValues) {
  if (!pValues) {
    throw EInvalidArgumentValue("The content of a size array must not be nil. Index: " + ToUtf8(pKey));
  }
  TKeyId key = InternKey(NormalisedKey(pKey));
  TExclusiveLock lock(fLock);
  fTable.Set(key, *pValues);
  Changed();
}

bool TCustomAssocSizeArray::Find(std::u16string_view pKey, TBasicSizeValues& pValues) const {
  TKeyId key = 0;
  if (!FindInternedKey(NormalisedKey(pKey), key)) return false;
  TSharedLock lock(fLock);
  const TBasicSizeValues* found = fTable.Find(key);
  if (!found || found->IsZero()) return false;
  pValues = *found;
  return true;
}

int64_t TCustomAssocSizeArray::GetValueOfKey(std::u16string_view pKey, TColumn pColumn, const TSizeValues& pReference,
                                             TColumn pShareBasis) const {
  TBasicSizeValues values;
  if (!Find(pKey, values)) return 0;
  if (pColumn != TColumn::mdPercentOfParent) return ValueOf(values, pColumn);
  return ShareOf(ValueOf(values, pShareBasis), ValueOf(pReference, pShareBasis));
}

std::vector<TKeyedSizeValues> TCustomAssocSizeArray::GetEntries() const {
  std::vector<TKeyedSizeValues> entries;
  TSharedLock lock(fLock);
  entries.reserve(fTable.RecordCount());
  fTable.ForEach([&entries](TKeyId pKey, const TBasicSizeValues& pValues) {
    if (!pValues.IsZero()) entries.push_back({pKey, pValues});
  });
  return entries;
}

std::vector<std::u16string> TCustomAssocSizeArray::GetKeysSorted(TColumn pSortColumn) const {
  TSizeArrayComparer comparer(pSortColumn);
  uint32_t changes = 0;
  {
    TSharedLock lock(fLock);
    if (fSorted && fSorted->fChanges == fChanges && fSorted->fColumn == comparer.Column()) return fSorted->fKeys;
    // the entries read below are at least as new; if they are newer, the count shows the kept order as out of date
    changes = fChanges;
  }
  // Sorted without the lock, so that a view never delays the scan.
  std::vector<TKeyedSizeValues> entries = GetEntries();
  std::sort(entries.begin(), entries.end(), comparer);
  auto sorted = std::make_unique<TSortedKeys>(TSortedKeys{comparer.Column(), changes, {}});
  for (const TKeyedSizeValues& entry : entries) sorted->fKeys.push_back(TextOfKey(entry.fKey));
  std::vector<std::u16string> result = sorted->fKeys;
  TExclusiveLock lock(fLock);
  fSorted.swap(sorted);
  return result;
}

TColor TCustomAssocSizeArray::GetColorForKey(std::u16string_view pKey) const {
  return CommonColorPalette().GetColorForKey(NormalisedKey(pKey));
}

size_t TCustomAssocSizeArray::Count() const {
  size_t count = 0;
  TSharedLock lock(fLock);
  fTable.ForEach([&count](TKeyId, const TBasicSizeValues& pValues) { count += pValues.IsZero() ? 0 : 1; });
  return count;
}

void TCustomAssocSizeArray::Clear() {
  TExclusiveLock lock(fLock);
  fTable.Clear();
  Changed();
}

TKeyId TExtensionSizeArray::KeyOf(std::u16string_view pExtension) {
  return InternKey(NormalisedKey(pExtension, kNoExtension, true));
}

TKeyId TUserSizeArray::KeyOf(std::u16string_view pOwner) {
  return InternKey(NormalisedKey(pOwner, kUnknownOwner, false));
}

TNamedSizeData::TNamedSizeData(std::u16string_view pName, const TBasicSizeValues& pValues) : fName(pName) {
  fValues.fSize = pValues.fSize;
  fValues.fAllocated = pValues.fAllocated;
  fValues.fFiles = pValues.fFiles;
}

void TNamedSizeData::Assign(const IBasicSizeData& pSource) {
  TBasicSizeData::Assign(pSource);
  if (const auto* named = dynamic_cast<const TNamedSizeData*>(&pSource)) fName = named->fName;
}

TMetaDataValue TNamedSizeData::GetValue(TColumn pColumn) const {
  if (pColumn == TColumn::mdName) return fName;
  return TBasicSizeData::GetValue(pColumn);
}

}  // namespace Vantrel
