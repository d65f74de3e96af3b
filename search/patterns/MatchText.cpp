#include "search/patterns/MatchText.h"

#include <algorithm>

#include "platform/text/Utf.h"

namespace Vantrel::PatternMatching {

void TMatchText::Fold() {
  fFolded.resize(fText.size());
  // A loop without branches lets the compiler fold eight units at a time. Names with non-ASCII letters get a second
  // pass.
  char16_t all = 0;
  for (size_t at = 0; at < fText.size(); ++at) {
    const char16_t unit = fText[at];
    all |= unit;
    fFolded[at] = static_cast<char16_t>(unit - (unit >= u'a' && unit <= u'z' ? u'a' - u'A' : 0));
  }
  if (all >= 0x80) std::transform(fText.begin(), fText.end(), fFolded.begin(), UpcaseUnit);
  fUnits = UnitsOf(fFolded);
  fIsFolded = true;
}

}  // namespace Vantrel::PatternMatching
