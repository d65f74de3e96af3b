#pragma once

// Random texts of what markup and encodings trip over.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>

namespace Vantrel::Testing {

// Texts of everything that markup, encodings and line ends trip over: control characters, noncharacters, halves of
// surrogate pairs, characters with a meaning in XML, and what looks like an escape.
class TNastyText {
 public:
  explicit TNastyText(uint32_t pSeed) : fRandom(pSeed) {}

  std::u16string Next(size_t pMostPieces = 12) {
    std::u16string text;
    for (size_t pieces = fRandom() % (pMostPieces + 1); pieces > 0; --pieces) text += Piece();
    return text;
  }

 private:
  std::u16string Piece() {
    static const std::u16string kPieces[] = {
        u"&",      u"<",      u">",      u"\"",     u"'",      u"\\",         u"\\u",        u"\\u0041",
        u"&amp;",  u"&#10;",  u"]]>",    u"\t",     u"\n",     u"\r",         u"\r\n",       u" ",
        u"a",      u"Folder", u"0",      u"\x7F",   u"\x85",   u"\xE9",       u"\x7FF",      u"\x800",
        u"\x2028", u"\xD7FF", u"\xE000", u"\xFEFF", u"\xFFFD", u"\xFFFE",     u"\xFFFF",     u"\xD800",
        u"\xDBFF", u"\xDC00", u"\xDC80", u"\xDCFF", u"\xDFFF", u"\U00010000", u"\U0001F600", u"\U0010FFFF"};
    constexpr size_t kControls = 0x20;
    const size_t choice = fRandom() % (std::size(kPieces) + kControls);
    if (choice < std::size(kPieces)) return kPieces[choice];
    return std::u16string(1, static_cast<char16_t>(choice - std::size(kPieces)));
  }

  std::mt19937 fRandom;
};

}  // namespace Vantrel::Testing
