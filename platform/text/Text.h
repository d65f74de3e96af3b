#pragma once

// Converts between UTF-16 inside the program and bytes or UTF-8 outside. Makes text safe for a terminal, and lower
// case.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// Names and paths are UTF-16 inside the program. A Linux name is a string of bytes that need not be UTF-8. Each byte
// that does not decode becomes the lone surrogate U+DC00 + byte, and turns back into that byte on the way out. So every
// name survives both ways. A Windows name may hold lone surrogates of its own and is kept as it is.

// Appends the UTF-16 form of native bytes. Pure ASCII is the usual case and takes a fast path, since this runs once per
// file.
void AppendFromNativeBytes(std::u16string& pTarget, std::string_view pBytes);
std::u16string FromNativeBytes(std::string_view pBytes);

// The reverse of FromNativeBytes. A lone surrogate outside U+DC80..U+DCFF, which FromNativeBytes never makes, is
// written in the three-byte form.
void AppendNativeBytes(std::string& pTarget, std::u16string_view pText);
std::string ToNativeBytes(std::u16string_view pText);

// Strict UTF-8 for files and messages: a lone surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view pText);
// UTF-8 for files in which different names must stay different. Undecodable bytes and lone surrogates become visible
// escapes such as \xFF and \uD800. Pure ASCII takes a fast path.
void AppendUtf8Escaped(std::string& pTarget, std::u16string_view pText);
// Decodes UTF-8. Each byte that does not decode becomes U+FFFD.
std::u16string FromUtf8(std::string_view pText);

// The text in a form that a terminal can show on one line. Control characters (C0, DEL, C1, line and paragraph
// separators), bidirectional overrides and undecodable bytes become visible escapes such as \n, \x1B, \u202E, \xFF. A
// backslash stays as it is.
std::string ToDisplay(std::u16string_view pText);

// The same in double quotes, for names in messages.
std::string ToQuotedDisplay(std::u16string_view pText);

// The number of columns that the UTF-8 text takes on a terminal: two for wide East Asian characters, none for combining
// marks.
int DisplayWidth(std::string_view pUtf8);

// Equality that folds only the ASCII letters a-z.
bool SameTextAscii(std::u16string_view pA, std::u16string_view pB);
bool SameTextAscii(std::string_view pA, std::string_view pB);
char16_t FoldAscii(char16_t pChar);

// The text in lower case by the rules of the user's language, such as the Turkish dotless i. ASCII text takes a fast
// path, unless the language has its own rule for it.
std::u16string ToLowerLinguistic(std::u16string_view pText);

// Parses a decimal number. False when the text is anything else (blanks included) or the number does not fit.
bool TryParseInt64(std::string_view pText, int64_t& pValue);

}  // namespace Vantrel
