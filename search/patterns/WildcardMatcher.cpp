#include "search/patterns/WildcardMatcher.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_set.hpp>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Vantrel::PatternMatching {

namespace {

constexpr auto kNone = std::u16string_view::npos;

// Up to this number, comparing with each extension costs less than hashing the name's extension.
constexpr size_t kFewExtensions = 3;

// Whether the text holds the part, which is not empty. Most texts do not, and comparing the first and last unit at all
// places shows that. The loop has no early exit, so the compiler compares eight units at a time.
bool Holds(std::u16string_view pText, std::u16string_view pPart) {
  if (pText.size() < pPart.size()) return false;
  const size_t last = pPart.size() - 1;
  const char16_t* const begins = pText.data();
  const char16_t* const ends = begins + last;
  const char16_t firstUnit = pPart.front();
  const char16_t lastUnit = pPart.back();
  uint16_t found = 0;
  for (size_t at = 0; at < pText.size() - last; ++at) {
    found |= static_cast<uint16_t>((begins[at] == firstUnit) & (ends[at] == lastUnit));
  }
  return found != 0 && pText.find(pPart) != kNone;
}

// A mask without "?" and with at most one text between its stars: "begin*middle*end". Each of the three may be missing.
class TPlainMask {
 public:
  static bool Fits(std::u16string_view pMask) {
    if (pMask.find(u'?') != kNone) return false;
    const size_t first = pMask.find(u'*');
    if (first == kNone) return true;
    const std::u16string_view between = Trimmed(pMask.substr(first, pMask.rfind(u'*') + 1 - first));
    return between.find(u'*') == kNone;
  }

  // Call it only with a mask that fits, in upper case.
  explicit TPlainMask(std::u16string_view pMask) : fUnits(UnitsOf(pMask)), fBegin(pMask.substr(0, pMask.find(u'*'))) {
    if (fBegin.size() == pMask.size()) return;
    fIsOpen = true;
    const size_t last = pMask.rfind(u'*');
    fMiddle = Trimmed(pMask.substr(fBegin.size(), last + 1 - fBegin.size()));
    fEnd = pMask.substr(last + 1);
    fUnits = UnitsOf(fBegin) | UnitsOf(fMiddle) | UnitsOf(fEnd);
  }

  bool MatchesAll() const { return fIsOpen && fBegin.empty() && fMiddle.empty() && fEnd.empty(); }

  bool Matches(TMatchText& pText) const {
    if ((fUnits & ~pText.Units()) != 0) return false;
    std::u16string_view text = pText.Folded();
    if (!fIsOpen) return text == fBegin;
    if (text.size() < fBegin.size() + fMiddle.size() + fEnd.size()) return false;  // the three parts must not overlap
    if (!text.starts_with(fBegin) || !text.ends_with(fEnd)) return false;
    text.remove_prefix(fBegin.size());
    text.remove_suffix(fEnd.size());
    return fMiddle.empty() || Holds(text, fMiddle);
  }

 private:
  // The text without the stars at both ends.
  static std::u16string_view Trimmed(std::u16string_view pText) {
    const size_t begin = pText.find_first_not_of(u'*');
    return begin == kNone ? std::u16string_view() : pText.substr(begin, pText.find_last_not_of(u'*') + 1 - begin);
  }

  TUnitSet fUnits;  // units that a text must have
  std::u16string fBegin;
  std::u16string fMiddle;
  std::u16string fEnd;
  bool fIsOpen = false;  // has a star; else the text must equal fBegin
};

class TAllMatcher : public IWildcardMatcher {
 public:
  bool Matches(TMatchText&) const override { return true; }
  TWildcardShape Shape() const override { return TWildcardShape::wsAll; }
};

class TPlainMatcher : public IWildcardMatcher {
 public:
  explicit TPlainMatcher(TPlainMask pMask) : fMask(std::move(pMask)) {}
  bool Matches(TMatchText& pText) const override { return fMask.Matches(pText); }
  TWildcardShape Shape() const override { return TWildcardShape::wsPlain; }

 private:
  const TPlainMask fMask;
};

// Matches the text after the last dot of a name, in upper case.
class TExtensions {
 public:
  // Whether the mask is "*." and a text without wildcards and without a dot. With a dot, the name's last dot would lie
  // inside the text.
  static bool Fits(std::u16string_view pMask) {
    return pMask.starts_with(u"*.") && pMask.find_first_of(u".*?", 2) == kNone;
  }
  void Add(std::u16string_view pMask) { fExtensions.emplace(pMask.substr(2)); }
  bool Matches(std::u16string_view pText) const {
    const size_t dot = pText.rfind(u'.');
    return dot != kNone && fExtensions.contains(pText.substr(dot + 1));
  }
  bool IsEmpty() const { return fExtensions.empty(); }

 private:
  struct THash {
    using is_transparent = void;  // look-up by view, without making a string
    size_t operator()(std::u16string_view pText) const { return std::hash<std::u16string_view>()(pText); }
  };
  boost::unordered_flat_set<std::u16string, THash, std::equal_to<>> fExtensions;
};

struct TMaskList {
  TExtensions fExtensions;
  std::vector<TPlainMask> fPlain;
  std::u16string fOthers;  // the other masks as given, joined with ";"; empty if none
};

class TListMatcher : public IWildcardMatcher {
 public:
  explicit TListMatcher(TMaskList pList)
      : fList(std::move(pList)), fOthers(fList.fOthers.empty() ? nullptr : CreateGeneralMatcher(fList.fOthers)) {}

  bool Matches(TMatchText& pText) const override {
    if (!fList.fExtensions.IsEmpty() && fList.fExtensions.Matches(pText.Folded())) return true;
    for (const TPlainMask& mask : fList.fPlain)
      if (mask.Matches(pText)) return true;
    return fOthers && fOthers->Matches(pText);
  }

  TWildcardShape Shape() const override {
    return fList.fPlain.empty() && !fOthers ? TWildcardShape::wsExtensions : TWildcardShape::wsMixed;
  }

 private:
  const TMaskList fList;
  const std::unique_ptr<const IWildcardMatcher> fOthers;
};

// The general match behind a quick check that rejects most texts. The check uses the mask's beginning, its end, and the
// longest text between its wildcards.
class TGuardedMatcher : public IWildcardMatcher {
 public:
  // Takes one mask, without ";".
  explicit TGuardedMatcher(std::u16string_view pMask) : fGeneral(CreateGeneralMatcher(pMask)) {
    TMatchText text(pMask);
    const std::u16string_view mask = text.Folded();
    constexpr std::u16string_view kWildcards = u"*?";
    fBegin = mask.substr(0, mask.find_first_of(kWildcards));
    fEnd = mask.substr(std::min(mask.find_last_of(kWildcards) + 1, mask.size()));
    for (size_t begin = fBegin.size(); begin < mask.size() - fEnd.size();) {
      const size_t end = std::min(mask.find_first_of(kWildcards, begin), mask.size());
      if (end - begin > fInside.size()) fInside = mask.substr(begin, end - begin);
      begin = end + 1;
    }
    std::u16string fixed(mask);
    std::erase_if(fixed, [&](char16_t pUnit) { return kWildcards.find(pUnit) != kNone; });
    fUnits = UnitsOf(fixed);
  }

  bool Matches(TMatchText& pText) const override {
    if ((fUnits & ~pText.Units()) != 0) return false;
    const std::u16string_view folded = pText.Folded();
    return folded.starts_with(fBegin) && folded.ends_with(fEnd) && (fInside.empty() || Holds(folded, fInside)) &&
           fGeneral->Matches(pText);
  }
  TWildcardShape Shape() const override { return TWildcardShape::wsGeneral; }

 private:
  const std::unique_ptr<const IWildcardMatcher> fGeneral;
  TUnitSet fUnits = 0;  // units that a text must have
  std::u16string fBegin;
  std::u16string fEnd;
  std::u16string fInside;
};

// The masks between the ";". An empty part after the last ";" is not a mask.
std::vector<std::u16string_view> Split(std::u16string_view pMasks) {
  std::vector<std::u16string_view> result;
  while (!pMasks.empty()) {
    result.push_back(pMasks.substr(0, pMasks.find(u';')));
    pMasks.remove_prefix(std::min(result.back().size() + 1, pMasks.size()));
  }
  return result;
}

TMaskList Sort(const std::vector<std::u16string_view>& pMasks) {
  TMaskList result;
  const bool fewExtensions =
      std::count_if(pMasks.begin(), pMasks.end(), TExtensions::Fits) <= std::ptrdiff_t{kFewExtensions};
  for (const std::u16string_view mask : pMasks) {
    TMatchText text(mask);
    if (!TPlainMask::Fits(mask)) {
      if (!result.fOthers.empty()) result.fOthers += u';';
      result.fOthers += mask;
    } else if (TExtensions::Fits(mask) && !fewExtensions) {
      result.fExtensions.Add(text.Folded());
    } else {
      result.fPlain.emplace_back(text.Folded());
    }
  }
  return result;
}

}  // namespace

bool HasWildcards(std::u16string_view pText) {
  return pText.find_first_of(u"*?") != kNone;
}

std::unique_ptr<const IWildcardMatcher> CreateWildcardMatcher(std::u16string_view pMasks) {
  if (pMasks == u"*.*") return std::make_unique<TAllMatcher>();  // alone, it also matches names without a dot
  TMaskList list = Sort(Split(pMasks));
  if (std::any_of(list.fPlain.begin(), list.fPlain.end(), [](const TPlainMask& pMask) { return pMask.MatchesAll(); })) {
    return std::make_unique<TAllMatcher>();
  }
  if (list.fPlain.empty() && list.fExtensions.IsEmpty()) {
    if (pMasks.empty() || pMasks.find(u';') != kNone) return CreateGeneralMatcher(pMasks);
    return std::make_unique<TGuardedMatcher>(pMasks);
  }
  const bool onePlain = list.fPlain.size() == 1 && list.fExtensions.IsEmpty() && list.fOthers.empty();
  if (onePlain) return std::make_unique<TPlainMatcher>(std::move(list.fPlain.front()));
  return std::make_unique<TListMatcher>(std::move(list));
}

}  // namespace Vantrel::PatternMatching
