#pragma once

// Reads and writes the text form of one pattern, and makes a pattern from an XML element.

#include "platform/system/Errors.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// The text form of single patterns, which users type and edit. docs/patterns.md explains it.

// Reports a typed pattern that is not accepted. The message is complete and meant for users.
class EPatternError : public EInvalidArgumentValue {
 public:
  using EInvalidArgumentValue::EInvalidArgumentValue;
};

// Makes the pattern from its text form. EPatternError for an empty text (argument "pPattern"). The pattern's
// GetErrorText tells whether an expression fails to compile or a group is unknown.
TRef<IPattern> ParsePattern(std::u16string_view pPattern, TPatternType pDefaultType, char16_t pPathDelimiter);

// Which prefixes are written. A column is always written if the reader would guess another one.
struct TPatternTextPrefixes {
  bool fInactive = true;  // "<||" in front of an inactive pattern
  bool fType = true;      // "(+)" or "(-)"; without it the reader must know the type
};
// The text form. ParsePattern makes an equal pattern from it, if called with the pattern's delimiter and its type as
// the default.
std::u16string PatternToText(const IPattern& pPattern, TPatternTextPrefixes pPrefixes);

// Takes a prefix from the front of the text, without regard to ASCII case. False when the text does not begin with it.
bool TakePrefix(std::u16string_view& pText, std::u16string_view pPrefix);

// Makes the pattern that an XML element's attributes describe. EInvalidArgumentValue: "Class "…" is no knonw class
// derived by TCustomPattern.", "Empty patterns are not allowed!".
TRef<IPattern> CreateForXML(const TElementAttributes& pAttributes, char16_t pPathDelimiter);

}  // namespace Vantrel::PatternMatching
