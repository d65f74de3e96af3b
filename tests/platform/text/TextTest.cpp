// Conversions, text for terminals.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/text/Text.h"

namespace Vantrel {

namespace {

std::string Encode(char32_t pCode, size_t pLength) {
  if (pLength == 1) return {static_cast<char>(pCode)};
  std::string bytes(pLength, 0);
  for (size_t i = pLength; i-- > 1; pCode >>= 6) bytes[i] = static_cast<char>(0x80 | (pCode & 0x3F));
  bytes[0] = static_cast<char>((0xF00u >> pLength) | pCode);
  return bytes;
}

size_t ShortestLength(char32_t pCode) {
  return pCode < 0x80 ? 1 : pCode < 0x800 ? 2 : pCode < 0x10000 ? 3 : 4;
}

std::u16string Units(char32_t pCode) {
  if (pCode < 0x10000) return {static_cast<char16_t>(pCode)};
  return {static_cast<char16_t>(0xD800 + ((pCode - 0x10000) >> 10)),
          static_cast<char16_t>(0xDC00 + ((pCode - 0x10000) & 0x3FF))};
}

// Slow and plain: reads the bits as if they were a sequence of each length, and takes the one whose code, written anew
// in its shortest form, gives these very bytes.
std::u16string ReferenceFromNative(const std::string& pBytes) {
  std::u16string result;
  for (size_t at = 0; at < pBytes.size();) {
    size_t taken = 0;
    for (size_t length = 1; length <= 4 && taken == 0 && at + length <= pBytes.size(); ++length) {
      char32_t code = static_cast<unsigned char>(pBytes[at]) & (length == 1 ? 0xFF : 0xFF >> (length + 1));
      for (size_t i = 1; i < length; ++i) code = code << 6 | (static_cast<unsigned char>(pBytes[at + i]) & 0x3F);
      const bool scalar = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
      if (!scalar || ShortestLength(code) != length || Encode(code, length) != pBytes.substr(at, length)) continue;
      result += Units(code);
      taken = length;
    }
    if (taken == 0) result += static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(pBytes[at++]));
    at += taken;
  }
  return result;
}

}  // namespace

TEST(Text, EveryCharacterSurvivesAndItsLongerFormsDoNotDecode) {
  for (char32_t code = 1; code <= 0x10FFFF; ++code) {
    if (code == 0xD800) code = 0xE000;
    const std::string bytes = Encode(code, ShortestLength(code));
    ASSERT_EQ(FromNativeBytes(bytes), Units(code)) << uint32_t{code};
    ASSERT_EQ(ToNativeBytes(Units(code)), bytes) << uint32_t{code};
    if (ShortestLength(code) < 4) {
      const std::string overlong = Encode(code, ShortestLength(code) + 1);
      ASSERT_EQ(FromNativeBytes(overlong).size(), overlong.size()) << uint32_t{code};
      ASSERT_EQ(ToNativeBytes(FromNativeBytes(overlong)), overlong) << uint32_t{code};
    }
  }
}

TEST(Text, EveryPairOfBytesAndRandomBytesFollowTheReferenceAndComeBack) {
  std::vector<std::string> samples;
  for (int byte = 0; byte < 256; ++byte) samples.emplace_back(1, static_cast<char>(byte));
  for (int pair = 0; pair < 65536; ++pair) samples.push_back({static_cast<char>(pair >> 8), static_cast<char>(pair)});
  // Bytes around the borders of what is allowed, so that random strings get past the first checks.
  const std::string borders = "a/\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF1\xF4\xF5\xFF";
  std::mt19937 random(20261);
  for (int i = 0; i < 100'000; ++i) {
    std::string sample(random() % 24, 'x');
    for (char& byte : sample)
      if (random() % 8 != 0) byte = borders[random() % borders.size()];
    samples.push_back(std::string(random() % 40, 'y') + sample);
  }
  for (const std::string& sample : samples) {
    const std::u16string text = FromNativeBytes(sample);
    ASSERT_EQ(text, ReferenceFromNative(sample)) << testing::PrintToString(sample);
    ASSERT_EQ(ToNativeBytes(text), sample);
  }
}

TEST(Text, AsciiOfEveryLengthIsAppended) {
  for (size_t length = 0; length < 600; ++length) {
    std::string ascii(length, 0);
    for (size_t i = 0; i < length; ++i) ascii[i] = static_cast<char>(1 + i % 127);
    for (const char* tail : {"", "\xC3\xA9", "\xFF"}) {
      std::u16string target = u"kept";
      AppendFromNativeBytes(target, ascii + tail);
      ASSERT_EQ(target, u"kept" + ReferenceFromNative(ascii + tail)) << length;
    }
  }
}

TEST(Text, UndecodableTextIsReplacedInFilesAndEscapedOnScreen) {
  EXPECT_EQ(FromUtf8("a\xC3(\xED\xA0\x80"), u"a\uFFFD(\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(ToUtf8(u"a\xD800z\xDCFF"
                   u"\U0001F600"),
            "a\xEF\xBF\xBDz\xEF\xBF\xBD\xF0\x9F\x98\x80");
  EXPECT_EQ(ToNativeBytes(u"\xD800"), "\xED\xA0\x80");  // a Windows name may hold one; no byte stands behind it
  EXPECT_EQ(ToDisplay(FromNativeBytes("a\\n\n\t\r\x1B[31m\x7F\xFF\x85")), "a\\n\\n\\t\\r\\x1B[31m\\x7F\\xFF\\x85");
  EXPECT_EQ(ToDisplay(u"\u0085\u009B\u2028\u2029\u202E\u2066\u200F\xD83D"),
            "\\u0085\\u009B\\u2028\\u2029\\u202E\\u2066\\u200F\\uD83D");
  EXPECT_EQ(ToDisplay(u"\u00A0\u00E9\u4E2D\U0001F600"), ToUtf8(u"\u00A0\u00E9\u4E2D\U0001F600"));
}

TEST(Text, ColumnsOfAConsole) {
  EXPECT_EQ(DisplayWidth("abc"), 3);
  EXPECT_EQ(DisplayWidth(ToUtf8(u"\u4E2D\u6587\uFF21\uAC00")), 8);  // Han, fullwidth Latin, Hangul
  EXPECT_EQ(DisplayWidth(ToUtf8(u"e\u0301\u200D")), 1);             // combining accent, joiner
  EXPECT_EQ(DisplayWidth(ToUtf8(u"\u00E9\u0416\uFFFD\U0001F600")), 5);
  EXPECT_EQ(DisplayWidth("\xFF\xC3"), 2);
}

TEST(Text, CaseFolding) {
  EXPECT_TRUE(SameTextAscii(u"AZaz[@", u"azAZ[@"));
  EXPECT_FALSE(SameTextAscii(u"[", u"{"));
  EXPECT_FALSE(SameTextAscii(u"\u00C9", u"\u00E9"));
  EXPECT_FALSE(SameTextAscii("ab", "abc"));
  EXPECT_EQ(ToLowerLinguistic(u"JPEG-2000_[Z]"), u"jpeg-2000_[z]");
  EXPECT_EQ(ToLowerLinguistic(u"\u00C9T\u00C9.\u0416\xD800"), u"\u00E9t\u00E9.\u0436\xD800");
  EXPECT_EQ(ToLowerLinguistic(u""), u"");
}

TEST(Text, WholeNumbersOnly) {
  int64_t value = 7;
  for (const char* wrong : {"", " 1", "1 ", "+1", "--1", "0x1", "1.0", "9223372036854775808", "-9223372036854775809"})
    EXPECT_FALSE(TryParseInt64(wrong, value)) << wrong;
  EXPECT_EQ(value, 7);
  EXPECT_TRUE(TryParseInt64("-9223372036854775808", value));
  EXPECT_EQ(value, INT64_MIN);
}

}  // namespace Vantrel
