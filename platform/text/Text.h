#pragma once

// UTF-16 inside, bytes and UTF-8 outside; text made safe for a terminal; lower case.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// Names and paths are UTF-16 inside the program. A Linux name is a string of bytes that need not be UTF-8: each byte
// that does not decode becomes the lone surrogate U+DC00 + byte and turns back into that byte, so every name survives
// the way in and out. A Windows name may hold lone surrogates of its own and is kept as it is.

// Appends the UTF-16 form of native bytes. Pure ASCII, the usual case, takes a fast path: this runs once per file.
void AppendFromNativeBytes(std::u16string& pTarget, std::string_view pBytes);
std::u16string FromNativeBytes(std::string_view pBytes);

// The bytes that FromNativeBytes came from. A lone surrogate outside U+DC80..U+DCFF, which no such name holds, is
// written in the three-byte form.
void AppendNativeBytes(std::string& pTarget, std::u16string_view pText);
std::string ToNativeBytes(std::u16string_view pText);

// Strict UTF-8 for files and messages: a lone surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view pText);
// The same for files from which names are to be told apart: undecodable bytes and lone surrogates become visible
// escapes such as \xFF and \uD800. Pure ASCII takes a fast path.
void AppendUtf8Escaped(std::string& pTarget, std::u16string_view pText);
// Reads UTF-8; each byte that does not decode becomes U+FFFD.
std::u16string FromUtf8(std::string_view pText);

// Text that a terminal can show on one line: control characters (C0, DEL, C1, line and paragraph separators),
// bidirectional overrides and undecodable bytes become visible escapes such as \n, \x1B, \u202E, \xFF; a backslash
// stays as it is.
std::string ToDisplay(std::u16string_view pText);

// The same in double quotes, as messages name things.
std::string ToQuotedDisplay(std::u16string_view pText);

// How many columns a terminal needs for the UTF-8 text: wide East Asian characters take two, combining marks none.
int DisplayWidth(std::string_view pUtf8);

// Equality that folds only the ASCII letters a-z.
bool SameTextAscii(std::u16string_view pA, std::u16string_view pB);
bool SameTextAscii(std::string_view pA, std::string_view pB);
char16_t FoldAscii(char16_t pChar);

// The text in lower case by the rules of the user's language (so that a Turkish user's dotless i keeps apart); ASCII
// text takes a fast path where the language has no rule of its own for it.
std::u16string ToLowerLinguistic(std::u16string_view pText);

// The decimal number, or false when the text is anything else (blanks included) or does not fit.
bool TryParseInt64(std::string_view pText, int64_t& pValue);

}  // namespace Vantrel
