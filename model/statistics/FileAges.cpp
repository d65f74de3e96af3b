#include "model/statistics/FileAges.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel {

// Every folder of a scan may have one.
static_assert(sizeof(TFileAgeDistribution) <= 48);

namespace {

// From green through yellow to red.
constexpr std::array<TColor, 21> kRamp = {0x00D000, 0x20D000, 0x40D000, 0x57D000, 0x70D000, 0x80D000, 0x90D000,
                                          0xA0D800, 0xB0E000, 0xC8E000, 0xE0E000, 0xE0C800, 0xE0B000, 0xE09800,
                                          0xE08000, 0xE07000, 0xE06000, 0xE05000, 0xE04000, 0xE02000, 0xE00000};

bool ParseDays(std::u16string_view pText, int64_t& pDays) {
  return TryParseInt64(ToUtf8(pText), pDays);
}

std::u16string_view Trimmed(std::u16string_view pText) {
  size_t first = pText.find_first_not_of(u" \t");
  if (first == pText.npos) return {};
  return pText.substr(first, pText.find_last_not_of(u" \t") - first + 1);
}

std::vector<int64_t> ValuesOf(const IFileAges& pAges) {
  std::vector<int64_t> values;
  for (int i = 0; i < pAges.GetCount(); ++i) values.push_back(pAges.GetItem(i));
  return values;
}

}  // namespace

int64_t FileAgeInDays(TKivFileTime pNow, TKivFileTime pDate) {
  int64_t ticks = pNow.fTicks - std::max<int64_t>(pDate.fTicks, 0);  // a damaged date may have any value
  int64_t days = ticks / TKivFileTime::kTicksPerDay;
  return ticks % TKivFileTime::kTicksPerDay > 0 ? days + 1 : days;
}

std::u16string FileAgeLabelFromDays(int64_t pDays) {
  struct TUnit {
    int64_t fDays;
    std::string_view fWord;  // of one
  };
  static constexpr TUnit units[] = {{365, "year"}, {30, "month"}, {7, "week"}, {0, "day"}};
  const TUnit& unit =
      *std::find_if(std::begin(units), std::end(units) - 1, [&](const TUnit& pUnit) { return pDays >= pUnit.fDays; });
  const int64_t count = unit.fDays > 0 ? pDays / unit.fDays : pDays;
  return FromUtf8(fmt::format("{} {}{}", count, unit.fWord, count == 1 ? "" : "s"));
}

void TIntegerList::CheckIndex(int pIndex) const {
  if (pIndex < 0 || pIndex >= Count()) {
    throw EInvalidArgumentValue(fmt::format("TIntegerList.GetItem: List index out of bounds ({})", pIndex));
  }
}

int64_t TIntegerList::Item(int pIndex) const {
  CheckIndex(pIndex);
  return fValues[static_cast<size_t>(pIndex)];
}

void TDistributionList::Add(int64_t pValue) {
  auto place = std::lower_bound(fValues.begin(), fValues.end(), pValue);
  if (place == fValues.end() || *place != pValue) fValues.insert(place, pValue);
}

void TDistributionList::Assign(std::span<const int64_t> pValues) {
  TDistributionList assigned;
  for (int64_t value : pValues) assigned.Add(value);
  if (assigned.Count() < 1) {
    throw EInvalidArgumentValue(
        fmt::format("TDistributionList.Assign: Count of list is lower 1 ({}) after assign from given enumerable",
                    assigned.Count()));
  }
  fValues.swap(assigned.fValues);
}

TRef<TFileAges> TFileAges::CreateFromXML(std::span<const std::pair<std::u16string, std::u16string>> pAttributes) {
  constexpr std::u16string_view prefix = u"Days_";
  auto ages = MakeRef<TFileAges>();
  for (const auto& [name, value] : pAttributes) {
    int64_t days = 0;
    if (name.starts_with(prefix) && ParseDays(std::u16string_view(name).substr(prefix.size()), days)) ages->Add(days);
  }
  if (ages->GetCount() < 1) {
    throw EInvalidArgumentValue("TFileAges.CreateFromXML: Given XML attributes did not contain any FileAge info");
  }
  return ages;
}

void TFileAges::Assign(const IFileAges& pSource) {
  TDistributionList::Assign(ValuesOf(pSource));
}

std::u16string TFileAges::GetAsString() const {
  return FromUtf8(fmt::format("{}", fmt::join(fValues, ";")));
}

void TFileAges::SetAsString(std::u16string_view pText) {
  std::vector<int64_t> bounds;
  for (size_t begin = 0; begin <= pText.size();) {
    size_t end = std::min(pText.find(u';', begin), pText.size());
    int64_t days = 0;
    if (ParseDays(Trimmed(pText.substr(begin, end - begin)), days)) bounds.push_back(days);
    begin = end + 1;
  }
  if (bounds.empty()) {
    throw EInvalidArgumentValue(
        fmt::format("TFileAges.SetAsString: Given string (\"{}\") conatins no parsable data.", ToUtf8(pText)));
  }
  TDistributionList::Assign(bounds);
}

bool TFileAges::EqualsTo(const IFileAges& pOther) const {
  return fValues == ValuesOf(pOther);
}

std::u16string TFileAges::GetLabel(int pIndex) const {
  CheckIndex(pIndex);
  bool last = pIndex == Count() - 1;
  if (pIndex == 0) return last ? u"any age" : u"up to " + FileAgeLabelFromDays(Item(0));
  std::u16string from = FileAgeLabelFromDays(Item(pIndex - 1));
  return last ? u"over " + from : from + u" - " + FileAgeLabelFromDays(Item(pIndex));
}

TColor TFileAges::GetColor(int pIndex) const {
  CheckIndex(pIndex);
  // index / count × 21, halves to even. With more than 41 intervals the last ones round up to 21 and share the last
  // colour.
  int count = Count();
  int product = pIndex * static_cast<int>(kRamp.size());
  int entry = product / count;
  int twiceRest = 2 * (product % count);
  if (twiceRest > count || (twiceRest == count && entry % 2 == 1)) ++entry;
  return kRamp[std::min(static_cast<size_t>(entry), kRamp.size() - 1)];
}

TKivFileTime TFileAges::FileAgeFromNow(int pIndex) const {
  int64_t days = Item(pIndex);
  TKivFileTime now = TKivFileTime::Now();
  if (days >= now.fTicks / TKivFileTime::kTicksPerDay) return {};
  constexpr int64_t farthest = -10'000'000;  // in days; the ticks of a later moment do not fit
  return {now.fTicks - std::max(days, farthest) * TKivFileTime::kTicksPerDay};
}

int TFileAges::GetIndexOfMatchingInterval(int64_t pAgeInDays) const {
  int count = Count();
  for (int i = 0; i < count; ++i) {
    if (fValues[static_cast<size_t>(i)] >= pAgeInDays) return i;
  }
  return count - 1;
}

namespace {

void CheckFileAges(const IFileAges* pFileAges) {
  if (!pFileAges) throw EInvalidArgumentValue("TFileAgeDistribution.SetFileAges: Given IFileAges is nil.");
  if (pFileAges->GetCount() < 1) {
    throw EInvalidArgumentValue(
        fmt::format("TFileAgeDistribution.SetFileAges: Count of given IFileAges is lower 1 ({}), which is not allowed.",
                    pFileAges->GetCount()));
  }
}

}  // namespace

TFileAgeDistribution::TFileAgeDistribution(TRef<IFileAges> pFileAges, TDateType pDateType)
    : fFileAges(std::move(pFileAges)), fDateType(pDateType) {
  CheckFileAges(fFileAges.get());
}

// The caller holds the source's lock.
TFileAgeDistribution::TFileAgeDistribution(const TFileAgeDistribution& pOther)
    : TInterfaced(pOther), fFileAges(pOther.fFileAges), fTable(pOther.fTable), fDateType(pOther.fDateType) {}

TRef<IFileAges> TFileAgeDistribution::GetFileAges() const {
  TSharedLock lock(fLock);
  return fFileAges;
}

void TFileAgeDistribution::SetFileAges(TRef<IFileAges> pFileAges) {
  CheckFileAges(pFileAges.get());
  TExclusiveLock lock(fLock);
  fFileAges.swap(pFileAges);
  fTable.Clear();
}

TDateType TFileAgeDistribution::GetDateType() const {
  TSharedLock lock(fLock);
  return fDateType;
}

void TFileAgeDistribution::Add(int pInterval, const TBasicSizeValues& pValues) {
  TExclusiveLock lock(fLock);
  fTable.Add(static_cast<TKeyId>(pInterval), pValues);
}

void TFileAgeDistribution::Add(std::span<const TKeyedSizeValues> pEntries) {
  TExclusiveLock lock(fLock);
  fTable.AddSorted(pEntries);
}

// All distributions are of this class; see TCustomAssocSizeArray::AddArray.
void TFileAgeDistribution::AddDistribution(const IFileAgeDistribution& pOther) {
  const auto& other = static_cast<const TFileAgeDistribution&>(pOther);
  TSharedLock otherLock(other.fLock);
  TExclusiveLock lock(fLock);
  fTable.AddTable(other.fTable);
}

void TFileAgeDistribution::SubtractDistribution(const IFileAgeDistribution& pOther) {
  const auto& other = static_cast<const TFileAgeDistribution&>(pOther);
  TSharedLock otherLock(other.fLock);
  TExclusiveLock lock(fLock);
  fTable.SubtractTable(other.fTable);
}

TBasicSizeValues TFileAgeDistribution::GetRecord(int pInterval) const {
  TSharedLock lock(fLock);
  const TBasicSizeValues* found = fTable.Find(static_cast<TKeyId>(pInterval));
  return found ? *found : TBasicSizeValues{};
}

std::vector<TKeyedSizeValues> TFileAgeDistribution::GetEntries() const {
  std::vector<TKeyedSizeValues> entries;
  {
    TSharedLock lock(fLock);
    fTable.ForEach([&entries](TKeyId pKey, const TBasicSizeValues& pValues) {
      if (!pValues.IsZero()) entries.push_back({pKey, pValues});
    });
  }
  std::sort(entries.begin(), entries.end(), [](const auto& pA, const auto& pB) { return pA.fKey < pB.fKey; });
  return entries;
}

void TFileAgeDistribution::Assign(const IFileAgeDistribution& pSource) {
  const auto& source = static_cast<const TFileAgeDistribution&>(pSource);
  if (&source == this) return;
  TSharedLock sourceLock(source.fLock);
  TExclusiveLock lock(fLock);
  fFileAges = source.fFileAges;
  fDateType = source.fDateType;
  fTable.Clear();
  fTable.AddTable(source.fTable);
}

void TFileAgeDistribution::Clear() {
  TExclusiveLock lock(fLock);
  fTable.Clear();
}

TRef<IFileAgeDistribution> TFileAgeDistribution::Clone() const {
  TSharedLock lock(fLock);
  return TRef<IFileAgeDistribution>(new TFileAgeDistribution(*this));
}

}  // namespace Vantrel
