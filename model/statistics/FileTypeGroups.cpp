#include "model/statistics/FileTypeGroups.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/text/WildcardMatch.h"

namespace Vantrel {

std::atomic<uint32_t> TFileTypeGroup::fPatternChanges{0};

namespace {

// Whether the text is a dot and then ASCII without dots, wildcards and characters with a meaning in mask lists. For
// such an extension the mask "*" + extension only needs a comparison without ASCII letter case. Outside ASCII some
// characters fold into ASCII ones.
bool IsPlainExtension(std::u16string_view pText) {
  return pText.size() > 1 && pText.front() == u'.' && std::all_of(pText.begin() + 1, pText.end(), [](char16_t pChar) {
           return pChar > u' ' && pChar < 0x7F &&
                  std::u16string_view(u".*?;\\/:").find(pChar) == std::u16string_view::npos;
         });
}

std::u16string Folded(std::u16string_view pText) {
  std::u16string folded(pText);
  std::transform(folded.begin(), folded.end(), folded.begin(), FoldAscii);
  return folded;
}

}  // namespace

std::u16string TFileTypeGroup::GetCaption() const {
  TSharedLock lock(fLock);
  return fCaption;
}

void TFileTypeGroup::SetCaption(std::u16string_view pValue) {
  TExclusiveLock lock(fLock);
  fCaption = pValue;
}

std::u16string TFileTypeGroup::GetDescription() const {
  TSharedLock lock(fLock);
  return fDescription;
}

void TFileTypeGroup::SetDescription(std::u16string_view pValue) {
  TExclusiveLock lock(fLock);
  fDescription = pValue;
}

std::u16string TFileTypeGroup::GetExtensionForIcon() const {
  TSharedLock lock(fLock);
  return fExtensionForIcon;
}

void TFileTypeGroup::SetExtensionForIcon(std::u16string_view pValue) {
  TExclusiveLock lock(fLock);
  fExtensionForIcon = pValue;
}

std::u16string TFileTypeGroup::GetPatterns() const {
  TSharedLock lock(fLock);
  return fPatterns;
}

void TFileTypeGroup::SetPatterns(std::u16string_view pValue) {
  TExclusiveLock lock(fLock);
  fPatterns = pValue;
  fPlainExtensions.clear();
  fOtherMasks.clear();
  for (size_t begin = 0; begin < pValue.size();) {
    size_t end = std::min(pValue.find(u';', begin), pValue.size());
    std::u16string_view mask = pValue.substr(begin, end - begin);
    if (mask.starts_with(u'*') && IsPlainExtension(mask.substr(1))) {
      fPlainExtensions.insert(Folded(mask.substr(1)));
    } else {
      (fOtherMasks += mask) += u';';
    }
    begin = end + 1;
  }
  fPatternChanges.fetch_add(1, std::memory_order_release);
}

bool TFileTypeGroup::IsCatchAll() const {
  TSharedLock lock(fLock);
  return fPatterns == u"*" || fPatterns == u"*;";
}

// Masks are made for file names, but the statistics only know extensions. So the key with its dot is matched like a
// whole name. "*.jpg", "*.~*" and "*mbox" then work as intended. A mask on the part before the extension
// ("report*.txt") matches no extension, since most files with that extension would not match it.
bool TFileTypeGroup::MatchesExtension(std::u16string_view pExtension) const {
  if (pExtension.empty() || pExtension == TExtensionSizeArray::kNoExtension) return IsCatchAll();
  std::u16string name;
  if (pExtension.front() != u'.') name = u'.';
  name += pExtension;
  TSharedLock lock(fLock);
  if (!IsPlainExtension(name)) return MatchesWildcards(name, fPatterns);
  return fPlainExtensions.contains(Folded(name)) || MatchesWildcards(name, fOtherMasks);
}

void TFileTypeGroup::Assign(const IFileTypeGroup& pSource) {
  SetCaption(pSource.GetCaption());
  SetDescription(pSource.GetDescription());
  SetExtensionForIcon(pSource.GetExtensionForIcon());
  SetPatterns(pSource.GetPatterns());
}

TFileTypeGroups::TGroupList TFileTypeGroups::Groups() const {
  TSharedLock lock(fLock);
  return fGroups;
}

TRef<IFileTypeGroup> TFileTypeGroups::AddNewGroup() {
  auto group = MakeRef<TFileTypeGroup>();
  TExclusiveLock lock(fLock);
  fGroups.push_back(group);
  ++fListChanges;
  return group;
}

int TFileTypeGroups::GetCount() const {
  TSharedLock lock(fLock);
  return static_cast<int>(fGroups.size());
}

TRef<IFileTypeGroup> TFileTypeGroups::GetItem(int pIndex) const {
  TSharedLock lock(fLock);
  if (pIndex < 0 || static_cast<size_t>(pIndex) >= fGroups.size()) {
    throw EInvalidArgumentValue(fmt::format("TFileTypeGroups.GetItem: List index out of bounds ({})", pIndex));
  }
  return fGroups[static_cast<size_t>(pIndex)];
}

TRef<IFileTypeGroup> TFileTypeGroups::GetGroupByCaption(std::u16string_view pCaption) const {
  for (const TRef<IFileTypeGroup>& group : Groups()) {
    if (group->GetCaption() == pCaption) return group;
  }
  return {};
}

std::vector<int> TFileTypeGroups::MatchGroups(const TGroupList& pGroups, std::u16string_view pExtension) {
  std::vector<int> matches;
  int catchAll = -1;
  for (size_t i = 0; i < pGroups.size(); ++i) {
    if (pGroups[i]->IsCatchAll()) {
      catchAll = static_cast<int>(i);
    } else if (pGroups[i]->MatchesExtension(pExtension)) {
      matches.push_back(static_cast<int>(i));
    }
  }
  if (matches.empty() && catchAll >= 0) matches.push_back(catchAll);
  return matches;
}

int TFileTypeGroups::GetGroupIndexByExtension(std::u16string_view pExtension) const {
  std::vector<int> matches = GetGroupIndexesOfKey(TExtensionSizeArray::KeyOf(pExtension));
  return matches.empty() ? -1 : matches.front();
}

std::vector<int> TFileTypeGroups::GetGroupIndexesOfKey(TKeyId pExtension) const {
  uint32_t patternChanges = TFileTypeGroup::PatternChanges();
  uint32_t listChanges = 0;
  TGroupList groups;
  {
    TSharedLock lock(fLock);
    if (fMatchesPatternChanges == patternChanges && fMatchesListChanges == fListChanges) {
      auto found = fMatches.find(pExtension);
      if (found != fMatches.end()) return found->second;
    }
    listChanges = fListChanges;
    groups = fGroups;
  }
  std::vector<int> matches = MatchGroups(groups, TextOfKey(pExtension));
  TExclusiveLock lock(fLock);
  if (fMatchesPatternChanges != patternChanges || fMatchesListChanges != listChanges) {
    fMatches.clear();
    fMatchesPatternChanges = patternChanges;
    fMatchesListChanges = listChanges;
  }
  fMatches[pExtension] = matches;
  return matches;
}

void TFileTypeGroups::Clear() {
  TExclusiveLock lock(fLock);
  fGroups.clear();
  ++fListChanges;
}

void TFileTypeGroups::Assign(const IFileTypeGroups& pSource) {
  TGroupList copies;
  for (int i = 0; i < pSource.GetCount(); ++i) {
    copies.push_back(MakeRef<TFileTypeGroup>());
    copies.back()->Assign(*pSource.GetItem(i));
  }
  TExclusiveLock lock(fLock);
  fGroups.swap(copies);
  ++fListChanges;
}

bool TFileTypeGroups::SameGroups(const IFileTypeGroups& pOther) const {
  TGroupList groups = Groups();
  if (pOther.GetCount() != static_cast<int>(groups.size())) return false;
  for (size_t i = 0; i < groups.size(); ++i) {
    TRef<IFileTypeGroup> other = pOther.GetItem(static_cast<int>(i));
    if (groups[i]->GetCaption() != other->GetCaption() || groups[i]->GetDescription() != other->GetDescription() ||
        groups[i]->GetExtensionForIcon() != other->GetExtensionForIcon() ||
        groups[i]->GetPatterns() != other->GetPatterns())
      return false;
  }
  return true;
}

void TSizeDataGroup::Add(const TBasicSizeValues& pValues) {
  SetSize(GetSize() + pValues.fSize);
  SetAllocated(GetAllocated() + pValues.fAllocated);
  SetFiles(GetFiles() + pValues.fFiles);
}

std::vector<TGroupedKey> FillCustomAssocSizeArrayGrouped(const ICustomAssocSizeArray& pExtensions,
                                                         const IFileTypeGroups& pGroups) {
  std::vector<TGroupedKey> grouped;
  for (const TKeyedSizeValues& entry : pExtensions.GetEntries()) {
    bool additional = false;
    for (int group : pGroups.GetGroupIndexesOfKey(entry.fKey)) {
      grouped.push_back({entry.fKey, group, additional});
      additional = true;
    }
  }
  return grouped;
}

TRef<TSizeDataGroup> CalculateSizeDataForGroup(const ICustomAssocSizeArray& pExtensions, const IFileTypeGroups& pGroups,
                                               int pGroupIndex) {
  auto sum = MakeRef<TSizeDataGroup>(pGroups.GetItem(pGroupIndex));
  for (const TKeyedSizeValues& entry : pExtensions.GetEntries()) {
    for (int group : pGroups.GetGroupIndexesOfKey(entry.fKey)) {
      if (group == pGroupIndex) sum->Add(entry.fValues);
    }
  }
  return sum;
}

std::vector<TRef<TSizeDataGroup>> CalculateSizeDataForGroups(const ICustomAssocSizeArray& pExtensions,
                                                             const IFileTypeGroups& pGroups) {
  std::vector<TRef<TSizeDataGroup>> sums;
  for (int i = 0; i < pGroups.GetCount(); ++i) sums.push_back(MakeRef<TSizeDataGroup>(pGroups.GetItem(i)));
  for (const TKeyedSizeValues& entry : pExtensions.GetEntries()) {
    for (int group : pGroups.GetGroupIndexesOfKey(entry.fKey)) {
      // A group that was added meanwhile has no sum here.
      if (static_cast<size_t>(group) < sums.size()) sums[static_cast<size_t>(group)]->Add(entry.fValues);
    }
  }
  return sums;
}

}  // namespace Vantrel
