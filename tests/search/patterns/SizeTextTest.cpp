// Sizes such as "10 MB", and what each refusal says.

#include <gtest/gtest.h>

#include "platform/text/Text.h"
#include "search/patterns/SizeText.h"
#include "tests/support/Failures.h"

namespace Vantrel {

namespace {

constexpr int64_t kKilo = 1024, kMega = kKilo * kKilo, kGiga = kMega * kKilo, kTera = kGiga * kKilo;

std::string MessageOf(std::u16string_view pText, bool pUnitRequired = false) {
  return Vantrel::Testing::MessageOf<ESizeTextError>([&] { ParseSizeText(pText, pUnitRequired); });
}

}  // namespace

TEST(SizeText, UnitsAreBinaryAndGroupsOfThreeAreAllowed) {
  const std::pair<int64_t, std::vector<const char16_t*>> cases[] = {
      {0, {u"0", u"0B"}},
      {7, {u"7b"}},
      {1, {u"1 byte"}},
      {12, {u"12Bytes", u"0012B"}},
      {kKilo, {u"1kb", u"1 KiB", u"1kibibyte", u"1 KILOBYTE"}},
      {10 * kMega, {u"10", u"10MB", u"10mib", u"10Mebibyte", u"10megabyte"}},
      {5 * kGiga, {u"5GB", u"5GiB", u"5gibibyte", u"5gigabyte", u"   5 GB  "}},
      {4 * kTera, {u"4TB", u"4tib", u"4tebibyte", u"4terabyte"}},
      {1000, {u"1,000B", u"1.000 B", u"1 000 B"}},
      {12'345'678, {u"12,345,678B"}},
      {999'999'999, {u"999.999.999 b"}},
      {8'388'607 * kTera, {u"8388607TB"}},  // the largest: one more is 2 to the 63rd
  };
  for (const auto& [bytes, texts] : cases)
    for (const char16_t* text : texts) EXPECT_EQ(ParseSizeText(text), bytes) << ToUtf8(text);
  EXPECT_EQ(ParseSizeText(u"6 B", true), 6);
}

TEST(SizeText, RefusesWithTheReason) {
  const std::string units =
      "Valid units are: B, BYTE, BYTES, KB, KIB, KIBIBYTE, KILOBYTE, MB, MIB, MEBIBYTE, MEGABYTE, GB, GIB, GIBIBYTE, "
      "GIGABYTE, TB, TIB, TEBIBYTE, TERABYTE";
  EXPECT_EQ(MessageOf(u"6", true), "\"6\" is expected to contain a unit, but none was found. " + units);
  EXPECT_EQ(MessageOf(u"10XB"), "\"XB\" is no valid unit. " + units);
  EXPECT_EQ(MessageOf(u"KBs"), "\"KBs\" is no valid unit. " + units);

  const auto noNumber = [](const std::string& pText) {
    return "\"" + pText +
           "\" is no valid number. Valid numbers may only consist of digits (0-9) and a thousands separator (\".\" or "
           "\",\")";
  };
  EXPECT_EQ(MessageOf(u""), noNumber(""));
  EXPECT_EQ(MessageOf(u"MB"), noNumber(""));
  for (const char* number :
       {"-1", "+1", "0x10", "1e3", "1'000", ".", "1,x00", "\xD9\xA3"})  // the last: a three in Arabic
    EXPECT_EQ(MessageOf(FromUtf8(number) + u"B"), noNumber(number));

  for (const char* number : {"1.5", "1,25", "1.0000", "1,000.5", "1,000.500", "1.000,000", "1 000,000", "0.1234"})
    EXPECT_EQ(
        MessageOf(FromUtf8(number) + u" GB"),
        "\"" + std::string(number) +
            "\" is a decimal value and not supported. Please use a smaller size unit and provide the number as an "
            "integer.");

  for (const char* number : {"1000,000", "1,00,000", "1,0000,000", ",000", "1,,000", "1,"})
    EXPECT_EQ(MessageOf(FromUtf8(number) + u"B"),
              "The thousands marks for \"" + std::string(number) +
                  "\" are invalid. Please assure each separated block represents a multiple of thousands.");
  for (const char16_t* size : {u"8388608TB", u"9223372036854775808B", u"99999999999999999999"})
    EXPECT_NE(MessageOf(size), "") << ToUtf8(size);
}

}  // namespace Vantrel
