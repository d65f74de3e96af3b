#pragma once

// Fields of a line for programs: separators, quotes, formulas made harmless.

#include <string>
#include <string_view>

#include "model/options/MediaSettings.h"

namespace Vantrel::Exporting {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // by which spreadsheets tell UTF-8

// How fields become a line that programs read back: joined by a separator and quoted as RFC 4180 says.
struct TDelimitedFormat {
  std::string fSeparator = ",";      // UTF-8, not empty
  bool fNeutralizeFormulas = false;  // see AppendTextField
  bool fByteOrderMark = false;       // at the beginning of the output
};

// The settings of tab-separated text, made of those of text: like CSV but for the tabs. Sizes are bytes unless a unit
// was chosen for text.
TMediaSettings TabSettings(TMediaSettings pText);

// The format for values in such a line. A digit group that could be taken for the end of a field, or of the whole
// number, is not set apart.
TValueFormat WithoutMisleadingGroups(TValueFormat pFormat, const TDelimitedFormat& pDelimited);

// Append one field to a line; the separator between fields is the caller's. A field that holds the separator, ends
// like one, or holds a double quote, CR or LF is put in double quotes, those inside doubled.
//
// Of names and other texts from outside, as AppendUnambiguous writes them. A spreadsheet takes a field that begins with
// "=", "+", "-", "@", tab or CR for a formula; with fNeutralizeFormulas such a text gets an apostrophe in front.
void AppendTextField(std::string& pLine, std::u16string_view pText, const TDelimitedFormat& pFormat);
// The same of a text that AppendUnambiguous has written.
void AppendEscapedField(std::string& pLine, std::string_view pText, const TDelimitedFormat& pFormat);
// Of texts of the program's own making, such as numbers, dates and captions; UTF-8.
void AppendOwnField(std::string& pLine, std::string_view pText, const TDelimitedFormat& pFormat);
// Of what somebody has written to the end of the line, from pBegin on.
void QuoteField(std::string& pLine, size_t pBegin, const TDelimitedFormat& pFormat);

// Appends a name or path as UTF-8, so that it can be told from every other one. What UTF-8 cannot hold becomes a
// visible escape, "\xFF" for an undecodable byte and "\uD800" for a lone surrogate. A backslash that would be read as
// the beginning of an escape is written "\x5C". All else, control characters too, stays as it is.
void AppendUnambiguous(std::string& pTarget, std::u16string_view pText);
// The same for a name that follows a path, which is not empty; the delimiter is put in between. A name that is that of
// the "[Files]" rows gets "\x5B" for its bracket, unless it is such a row's.
void AppendNameToPath(std::string& pPath, std::u16string_view pName, char pDelimiter, bool pIsFileGroup);
// Such a name alone.
void AppendName(std::string& pTarget, std::u16string_view pName, bool pIsFileGroup);

}  // namespace Vantrel::Exporting
