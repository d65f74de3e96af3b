#pragma once

// The fields of a line for programs: separators, quotes, and protection against formulas.

#include <string>
#include <string_view>

#include "model/options/MediaSettings.h"

namespace Vantrel::Exporting {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // spreadsheets recognise UTF-8 by it

// How fields form a line that programs can read back: joined by a separator and quoted as in RFC 4180.
struct TDelimitedFormat {
  std::string fSeparator = ",";      // UTF-8, not empty
  bool fNeutralizeFormulas = false;  // see AppendTextField
  bool fByteOrderMark = false;       // at the start of the output
};

// The settings of tab-separated text, made from the settings of text. Values are written as in CSV, but with tabs.
// Sizes are bytes unless a unit was chosen for text.
TMediaSettings TabSettings(TMediaSettings pText);

// The value format for such a line. Digits are not grouped if the group separator could be taken for the end of a field
// or of the number.
TValueFormat WithoutMisleadingGroups(TValueFormat pFormat, const TDelimitedFormat& pDelimited);

// These functions append one field to a line. The caller writes the separators. A field is put in double quotes if it
// holds the separator, ends like one, or holds a double quote, CR or LF. Quotes inside are doubled.
//
// AppendTextField takes names and other texts from outside and writes them like AppendUnambiguous. A spreadsheet takes
// a field that begins with "=", "+", "-", "@", tab or CR for a formula. With fNeutralizeFormulas such a text gets an
// apostrophe in front.
void AppendTextField(std::string& pLine, std::u16string_view pText, const TDelimitedFormat& pFormat);
// Like AppendTextField, for a text already written by AppendUnambiguous.
void AppendEscapedField(std::string& pLine, std::string_view pText, const TDelimitedFormat& pFormat);
// For the program's own texts, such as numbers, dates and captions. pText is UTF-8.
void AppendOwnField(std::string& pLine, std::string_view pText, const TDelimitedFormat& pFormat);
// Quotes the end of the line, from pBegin on, if needed.
void QuoteField(std::string& pLine, size_t pBegin, const TDelimitedFormat& pFormat);

// Appends a name or path as UTF-8, so that different names stay different. What UTF-8 cannot hold becomes a visible
// escape: "\xFF" for an undecodable byte, "\uD800" for a lone surrogate. A backslash that would be read as the start of
// an escape is written "\x5C". All else stays as it is, control characters too.
void AppendUnambiguous(std::string& pTarget, std::u16string_view pText);
// Appends a name to a path, which is not empty, with the delimiter in between. A name equal to that of the "[Files]"
// rows gets "\x5B" for its bracket, unless the row is a "[Files]" row.
void AppendNameToPath(std::string& pPath, std::u16string_view pName, char pDelimiter, bool pIsFileGroup);
// Appends such a name without a path.
void AppendName(std::string& pTarget, std::u16string_view pName, bool pIsFileGroup);

}  // namespace Vantrel::Exporting
