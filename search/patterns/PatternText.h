#pragma once

// The text form of one pattern, both ways; the pattern of an XML element.

#include "platform/system/Errors.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// The text form of single patterns, which users type and edit: docs/patterns.md explains it.

// A pattern that was typed and cannot be taken. The text is for people, and complete.
class EPatternError : public EInvalidArgumentValue {
 public:
  using EInvalidArgumentValue::EInvalidArgumentValue;
};

// The pattern that the text stands for. EPatternError for an empty text (argument "pPattern"). Whether an expression
// compiles and a group exists says the pattern's GetErrorText.
TRef<IPattern> ParsePattern(std::u16string_view pPattern, TPatternType pDefaultType, char16_t pPathDelimiter);

// Which prefixes are written. A column in front is written whenever the reader would guess another one.
struct TPatternTextPrefixes {
  bool fInactive = true;  // "<||" in front of an inactive pattern
  bool fType = true;      // "(+)" or "(-)"; without it the reader has to know the type
};
// The text form; ParsePattern gives an equal pattern back, with the delimiter of the pattern and its type as the
// default.
std::u16string PatternToText(const IPattern& pPattern, TPatternTextPrefixes pPrefixes);

// The pattern that an XML element's attributes describe. EInvalidArgumentValue: "Class "…" is no knonw class derived by
// TCustomPattern.", "Empty patterns are not allowed!".
TRef<IPattern> CreateForXML(const TElementAttributes& pAttributes, char16_t pPathDelimiter);

}  // namespace Vantrel::PatternMatching
