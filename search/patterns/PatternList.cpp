#include "search/patterns/PatternList.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/patterns/CustomPattern.h"
#include "search/patterns/PatternTargets.h"
#include "search/patterns/PatternText.h"

namespace Vantrel::PatternMatching {

namespace {

constexpr std::u16string_view kEmptyMatchesAllAttribute = u"EmptyPatternListMatchesAll";

bool IsAmong(const TPatternTypes& pTypes, TPatternType pType) {
  return pTypes.empty() || pTypes.contains(pType);
}

}  // namespace

TPatternsToStringRepresentationOptions TPatternsToStringRepresentationOptions::Default() {
  TPatternsToStringRepresentationOptions options;
  options.AddUncheckedPrefixForInactivePatterns = true;
  options.Delimiter = u"\t";
  return options;
}

int TPatternComparer::Cost(const IPattern& pPattern) {
  return GetPatternTargetCost(pPattern.GetTarget()) + GetPatternClassCost(pPattern.PatternClass()) +
         GetPatternTypeCost(pPattern.GetPatternType());
}

// --- the list under its lock ---------------------------------------------------------------------------------------

const TPatternList::TItems& TPatternList::TInternalList::BeginRead() const {
  fLock.AcquireShared();
  return fItems;
}

void TPatternList::TInternalList::EndRead() const {
  fLock.ReleaseShared();
}

TPatternList::TItems TPatternList::TInternalList::Snapshot() const {
  TSharedLock lock(fLock);
  return fItems;
}

void TPatternList::TInternalList::Append(const TItems& pItems) {
  TExclusiveLock lock(fLock);
  fItems.insert(fItems.end(), pItems.begin(), pItems.end());
  Sort();
}

void TPatternList::TInternalList::Replace(TItems pItems) {
  TExclusiveLock lock(fLock);
  fItems.swap(pItems);
  Sort();
}

bool TPatternList::TInternalList::RemoveEqual(const IPattern& pPattern) {
  TExclusiveLock lock(fLock);
  const auto found =
      std::find_if(fItems.begin(), fItems.end(), [&](const TRef<IPattern>& pItem) { return pItem->Equals(pPattern); });
  if (found == fItems.end()) return false;
  fItems.erase(found);
  return true;
}

bool TPatternList::TInternalList::GetAutoSort() const {
  TSharedLock lock(fLock);
  return fAutoSort;
}

void TPatternList::TInternalList::SetAutoSort(bool pAutoSort) {
  TExclusiveLock lock(fLock);
  fAutoSort = pAutoSort;
  Sort();
}

// Patterns of equal cost keep their order.
void TPatternList::TInternalList::Sort() {
  if (!fAutoSort) return;
  std::stable_sort(fItems.begin(), fItems.end(), [](const TRef<IPattern>& pA, const TRef<IPattern>& pB) {
    return TPatternComparer::Compare(*pA, *pB) < 0;
  });
}

class TPatternList::TReading {
 public:
  explicit TReading(const TInternalList& pList) NO_THREAD_SAFETY_ANALYSIS : fList(pList), fItems(pList.BeginRead()) {}
  ~TReading() NO_THREAD_SAFETY_ANALYSIS { fList.EndRead(); }
  TReading(const TReading&) = delete;
  TReading& operator=(const TReading&) = delete;

  auto begin() const { return fItems.begin(); }
  auto end() const { return fItems.end(); }
  int size() const { return static_cast<int>(fItems.size()); }

 private:
  const TInternalList& fList;
  const TItems& fItems;
};

// --- contents ------------------------------------------------------------------------------------------------------

void TPatternList::Changed() {
  fObservers.Notify([&](IPatternsObserver& pObserver) { pObserver.PatternsChanged(*this); });
}

TRef<IPattern> TPatternList::Add(std::u16string_view pPattern, TPatternType pDefaultType) {
  TRef<IPattern> pattern = ParsePattern(pPattern, pDefaultType, fPathDelimiter);
  Add(pattern);
  return pattern;
}

void TPatternList::Add(TRef<IPattern> pPattern) {
  if (!pPattern) throw EInvalidArgumentValue("TPatternList.Add: pPattern must not be nil");
  fList.Append({std::move(pPattern)});
  Changed();
}

void TPatternList::AddStrings(const std::vector<std::u16string>& pPatterns, TPatternType pDefaultType) {
  TItems parsed;
  for (const std::u16string& text : pPatterns)
    if (!text.empty()) parsed.push_back(ParsePattern(text, pDefaultType, fPathDelimiter));
  fList.Append(parsed);
  Changed();
}

void TPatternList::AddRange(const IPatterns& pPatterns) {
  fList.Append(pPatterns.GetItems());
  Changed();
}

void TPatternList::Assign(const IPatterns& pPatterns) {
  fList.Replace(pPatterns.GetItems());
  SetEmptyPatternListMatchesAll(pPatterns.GetEmptyPatternListMatchesAll());
  Changed();
}

void TPatternList::Remove(const IPattern& pPattern) {
  if (fList.RemoveEqual(pPattern)) Changed();
}

void TPatternList::Clear() {
  fList.Replace({});
  Changed();
}

int TPatternList::Count(bool pActiveOnly, const TPatternTypes& pTypes) const {
  const TReading patterns(fList);
  return static_cast<int>(std::count_if(patterns.begin(), patterns.end(), [&](const TRef<IPattern>& pPattern) {
    return (!pActiveOnly || pPattern->GetActive()) && IsAmong(pTypes, pPattern->GetPatternType());
  }));
}

int TPatternList::IndexOf(const IPattern& pPattern) const {
  const TReading patterns(fList);
  const auto found = std::find_if(patterns.begin(), patterns.end(),
                                  [&](const TRef<IPattern>& pItem) { return pItem->Equals(pPattern); });
  return found == patterns.end() ? -1 : static_cast<int>(found - patterns.begin());
}

bool TPatternList::ContainsPattern(std::u16string_view pText) const {
  const TReading patterns(fList);
  return std::any_of(patterns.begin(), patterns.end(),
                     [&](const TRef<IPattern>& pItem) { return pItem->GetPattern() == pText; });
}

bool TPatternList::Equal(const IPatterns& pOther) const {
  const TItems others = pOther.GetItems();
  const TReading patterns(fList);
  return GetEmptyPatternListMatchesAll() == pOther.GetEmptyPatternListMatchesAll() &&
         std::equal(patterns.begin(), patterns.end(), others.begin(), others.end(),
                    [](const TRef<IPattern>& pA, const TRef<IPattern>& pB) { return pA->Equals(*pB); });
}

TRef<IPattern> TPatternList::GetItem(int pIndex) const {
  const TReading patterns(fList);
  if (pIndex < 0 || pIndex >= patterns.size())
    throw EInvalidArgumentValue(
        fmt::format("TPatternList.GetItem: there is no pattern {} in a list of {}", pIndex, patterns.size()));
  return *(patterns.begin() + pIndex);
}

TRef<IPatterns> TPatternList::Clone() const {
  auto clone = MakeRef<TPatternList>(fPathDelimiter);
  clone->fList.SetAutoSort(GetAutoSort());
  clone->Assign(*this);
  return clone;
}

void TPatternList::SetAutoSort(bool pAutoSort) {
  fList.SetAutoSort(pAutoSort);
  if (pAutoSort) Changed();
}

void TPatternList::Activate(const TPatternTargets& pTargets, const TPatternTypes& pTypes, bool pActive) {
  bool touched = false;
  for (const TRef<IPattern>& pattern : GetItems()) {
    if (!pTargets.contains(pattern->GetTarget()) || !pTypes.contains(pattern->GetPatternType())) continue;
    pattern->SetActive(pActive);
    touched = true;
  }
  if (touched) Changed();
}

// --- matching ------------------------------------------------------------------------------------------------------

// An exclude pattern leaves something out. So a list with one never lets everything in.
bool TPatternList::MatchesAll() const {
  const TReading patterns(fList);
  bool any = false;
  bool all = false;
  for (const TRef<IPattern>& pattern : patterns) {
    if (!pattern->GetActive()) continue;
    if (pattern->GetPatternType() == TPatternType::ptyExclude) return false;
    any = true;
    all = all || pattern->MatchesAll();
  }
  return any ? all : GetEmptyPatternListMatchesAll();
}

// MatchesAll answers for include patterns only. For exclude patterns it would leave out everything.
bool TPatternList::Matches(TPatternItem& pItem, TPatternType pType) {
  if (pType == TPatternType::ptyInclude && MatchesAll()) return true;
  const TReading patterns(fList);
  return std::any_of(patterns.begin(), patterns.end(), [&](const TRef<IPattern>& pPattern) {
    return pPattern->GetActive() && pPattern->GetPatternType() == pType && pPattern->Matches(pItem);
  });
}

TRef<IPattern> TPatternList::GetMatchingPattern(TPatternItem& pItem) {
  const TReading patterns(fList);
  const auto found = std::find_if(patterns.begin(), patterns.end(), [&](const TRef<IPattern>& pPattern) {
    return pPattern->GetActive() && pPattern->Matches(pItem);
  });
  return found == patterns.end() ? nullptr : *found;
}

bool TPatternList::StopTraversing(TPatternItem& pItem) {
  if (!pItem.IsFolder()) return true;
  bool pathsAsked = false;
  bool reached = false;
  const TReading patterns(fList);
  for (const TRef<IPattern>& pattern : patterns) {
    if (!pattern->GetActive()) continue;
    if (pattern->GetPatternType() == TPatternType::ptyExclude) {
      if (pattern->Matches(pItem)) return true;
    } else if (pattern->GetTarget() == FullPathTarget()) {
      pathsAsked = true;
      reached = reached || pattern->FullPathCanBeReached(pItem.TextOf(TColumn::mdFullPath).Text());
    }
  }
  return pathsAsked && !reached;
}

// --- files ---------------------------------------------------------------------------------------------------------

std::u16string TPatternList::ToString(const TPatternsToStringRepresentationOptions& pOptions) const {
  std::u16string text;
  const TPatternTextPrefixes prefixes{pOptions.AddUncheckedPrefixForInactivePatterns,
                                      pOptions.IncludedPatternTypes.size() != 1};
  bool first = true;
  const TReading patterns(fList);
  for (const TRef<IPattern>& pattern : patterns) {
    if ((pOptions.ActivePatternsOnly && !pattern->GetActive()) ||
        !IsAmong(pOptions.IncludedPatternTypes, pattern->GetPatternType()) ||
        (!pOptions.IncludedPatternTargets.empty() && !pOptions.IncludedPatternTargets.contains(pattern->GetTarget())))
      continue;
    if (!first) text += pOptions.Delimiter;
    first = false;
    text += PatternToText(*pattern, prefixes);
  }
  return text;
}

void TPatternList::WriteToXML(IElementWriter& pWriter) const {
  pWriter.BeginElement(u"TPatternList", WriteProperties());
  for (const TRef<IPattern>& pattern : GetItems()) {
    pWriter.BeginElement(u"Pattern", pattern->WriteToXML());
    pWriter.EndElement();
  }
  pWriter.EndElement();
}

void TPatternList::ReadFromXML(const TElementAttributes& pPattern) {
  Add(CreateForXML(pPattern, fPathDelimiter));
}

TElementAttributes TPatternList::WriteProperties() const {
  return {{std::u16string(kEmptyMatchesAllAttribute), BooleanText(GetEmptyPatternListMatchesAll())}};
}

void TPatternList::ReadProperties(const TElementAttributes& pProperties) {
  SetEmptyPatternListMatchesAll(BooleanOf(FindAttribute(pProperties, kEmptyMatchesAllAttribute)));
  Changed();
}

TRef<IPatterns> CreateFor(std::u16string_view pPattern, TPatternType pDefaultType, char16_t pPathDelimiter) {
  return CreateFor(ParsePattern(pPattern, pDefaultType, pPathDelimiter), pPathDelimiter);
}

TRef<IPatterns> CreateFor(TRef<IPattern> pPattern, char16_t pPathDelimiter) {
  auto list = MakeRef<TPatternList>(pPathDelimiter);
  list->Add(std::move(pPattern));
  return list;
}

}  // namespace Vantrel::PatternMatching
