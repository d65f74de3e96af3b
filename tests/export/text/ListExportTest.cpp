// The layout of lists, and every name read back from delimited lines.

#include <gmock/gmock.h>

#include "export/text/ListExport.h"
#include "platform/text/Text.h"
#include "tests/support/LineList.h"
#include "tests/support/NastyText.h"

namespace Vantrel::Exporting {
namespace {

using testing::ElementsAre;
using Vantrel::Presentation::TList;
using Vantrel::Testing::TLineList;
using Vantrel::Testing::TNastyText;

// A table with a column of each kind, its rows by name, size and share.
TList SmallTable() {
  TList table{
      u"Things\n", {{u"Name", TColumn::mdName}, {u"Size", TColumn::mdSize}, {u"Share", TColumn::mdPercentOfRoot}}, {}};
  table.fRows = {{{u"long", int64_t{1536 * 1024}, 0.25}}, {{u"\x1B[1mä", int64_t{0}, {}}}, {{u"", {}, 1.0}}};
  return table;
}

TValueFormat InMegabytes() {
  TValueFormat format;
  format.fSizeUnit = TSizeUnit::suMB;
  format.fShowUnits = false;
  return format;
}

// The fields of a text by RFC 4180, read without knowing anything of how it was written: a quote opens a field that
// ends at a quote not followed by another.
std::vector<std::vector<std::string>> ReadDelimited(std::string_view pText, std::string_view pSeparator) {
  std::vector<std::vector<std::string>> records;
  while (!pText.empty()) {
    auto& record = records.emplace_back();
    for (bool more = true; more;) {
      std::string& field = record.emplace_back();
      if (pText.starts_with('"')) {
        for (pText.remove_prefix(1); !pText.empty(); pText.remove_prefix(1)) {
          if (pText.front() == '"') {
            pText.remove_prefix(1);
            if (!pText.starts_with('"')) break;
          }
          field += pText.front();
        }
      }
      for (; !pText.empty() && !pText.starts_with(pSeparator) && !pText.starts_with("\r\n"); pText.remove_prefix(1))
        field += pText.front();
      more = pText.starts_with(pSeparator);
      pText.remove_prefix(std::min(pText.size(), more ? pSeparator.size() : 2));
    }
  }
  return records;
}

std::string Joined(const TLineList& pLines) {
  std::string text;
  for (const std::string& line : pLines.fLines) text += line + "\r\n";
  return text;
}

// The escape that a text begins with, without its backslash; empty when there is none.
std::string EscapeAt(const std::string& pText) {
  auto isHex = [](char pDigit) { return (pDigit >= '0' && pDigit <= '9') || (pDigit >= 'A' && pDigit <= 'F'); };
  auto isHigh = [&](char pDigit) { return pDigit >= '8' && isHex(pDigit); };
  const std::string byte = pText.substr(0, 3), unit = pText.substr(0, 5);
  if (byte == "x5B" || byte == "x5C") return byte;
  if (byte.size() == 3 && byte[0] == 'x' && isHigh(byte[1]) && isHex(byte[2])) return byte;
  const bool isUnit = unit.size() == 5 && unit.starts_with("uD") && isHigh(unit[2]) && isHex(unit[3]) && isHex(unit[4]);
  return isUnit ? unit : std::string();
}

// The name that a field stands for, as docs/text-exports.md tells it.
std::u16string NameOfField(const std::string& pField) {
  const std::u16string text = FromUtf8(pField);
  std::u16string name;
  for (size_t i = 0; i < text.size(); ++i) {
    const std::string escape = text[i] == u'\\' ? EscapeAt(ToUtf8(text.substr(i + 1, 5))) : "";
    if (escape.empty()) {
      name += text[i];
      continue;
    }
    const auto number = static_cast<char16_t>(std::stoi(escape.substr(1), nullptr, 16));
    name += escape[0] == 'x' && number >= 0x80 ? static_cast<char16_t>(0xDC00 + number) : number;
    i += escape.size();
  }
  return name;
}

std::vector<std::vector<std::u16string>> NamesOfFields(const std::vector<std::vector<std::string>>& pRows) {
  std::vector<std::vector<std::u16string>> names;
  for (const auto& row : pRows) {
    names.emplace_back();
    for (const std::string& field : row) names.back().push_back(NameOfField(field));
  }
  return names;
}

}  // namespace

TEST(ListAsText, IsLaidOutToTheColumn) {
  TLineList output;
  EXPECT_TRUE(WriteListAsText(SmallTable(), {}, output));
  EXPECT_TRUE(WriteListAsText(SmallTable(), InMegabytes(), output));
  EXPECT_THAT(output.fLines, ElementsAre("Things\\n",                   //
                                         "",                            //
                                         "Name        Size    Share",   //
                                         "--------  ------  -------",   //
                                         "long      1.5 MB   25.0 %",   //
                                         "\\x1B[1mä     0 B",           //
                                         "                  100.0 %",   //
                                         "",                            //
                                         "Things\\n",                   //
                                         "",                            //
                                         "Name      Size (MB)  Share",  //
                                         "--------  ---------  -----",  //
                                         "long            1.5   25.0",  //
                                         "\\x1B[1mä        0.0",        //
                                         "                     100.0"));
}

TEST(Lists, StopAtTheFirstLineThatCannotBeWritten) {
  for (size_t capacity = 0; capacity < 7; ++capacity) {
    TLineList text;
    text.fCapacity = capacity;
    EXPECT_FALSE(WriteListAsText(SmallTable(), {}, text));
    EXPECT_EQ(text.fRefused, 1);
    TLineList delimited;
    delimited.fCapacity = capacity;
    const bool fits = capacity >= 4;  // a header and three rows
    EXPECT_EQ(WriteListAsDelimited(SmallTable(), {}, {}, true, delimited), fits);
    EXPECT_EQ(delimited.fRefused, fits ? 0 : 1);
  }
}

TEST(ListAsDelimited, SeparatorsOfNumbersAreNeverMistakenForThoseOfFields) {
  TList table{u"", {{u"Size", TColumn::mdSize}, {u"Allocated", TColumn::mdAllocated}}, {}};
  table.fRows = {{{int64_t{1'234'567}, int64_t{-1}}}};
  const struct {
    const char16_t* fThousands;
    const char16_t* fDecimal;
    const char* fSeparator;
    TSizeUnit fUnit;
    bool fPlain;
    std::vector<std::string> fLines;
  } cases[] = {
      // 1'234'567 / 1024 = 1205.6…
      {u",", u".", ",", TSizeUnit::suKB, false, {"Size (KB),Allocated (KB)", "1205.6,0.0"}},
      {u",", u".", ";", TSizeUnit::suKB, false, {"Size (KB);Allocated (KB)", "1,205.6;0.0"}},
      {u".", u",", ",", TSizeUnit::suKB, false, {"Size (KB),Allocated (KB)", "\"1.205,6\",\"0,0\""}},
      {u".", u".", ";", TSizeUnit::suKB, false, {"Size (KB);Allocated (KB)", "1205.6;0.0"}},
      {u".", u",", "\t", TSizeUnit::suBytes, false, {"Size (B)\tAllocated (B)", "1.234.567\t-1"}},
      {u",", u".", ";", TSizeUnit::suKB, true, {"Size;Allocated", "1234567;-1"}},
      {u",", u".", ";", TSizeUnit::suAutomatic, true, {"Size;Allocated", "1234567;-1"}},
  };
  for (const auto& each : cases) {
    TValueFormat format;
    format.fThousandsSeparator = each.fThousands;
    format.fDecimalSeparator = each.fDecimal;
    format.fSizeUnit = each.fUnit;
    format.fShowUnits = false;
    format.fPlainByteValues = each.fPlain;
    TLineList output;
    EXPECT_TRUE(WriteListAsDelimited(table, format, {each.fSeparator, true}, true, output));
    EXPECT_EQ(output.fLines, each.fLines);
  }
}

TEST(ListAsDelimited, EveryNameComesBack) {
  TNastyText nasty(20'26);
  for (const std::string separator : {",", ";", "\t", "; ", "|"}) {
    TList table{u"",
                {{u"A \"b\"" + FromUtf8(separator), TColumn::mdName},
                 {u"Size", TColumn::mdSize},
                 {u"Path", TColumn::mdFullPath}},
                {}};
    std::vector<std::vector<std::u16string>> expected{{u"A \"b\"" + FromUtf8(separator), u"Size", u"Path"}};
    // What looks like an escape, and what is written as one.
    std::vector<std::u16string> names{u"\\xFF",     u"\xDCFF", u"\\x5C",    u"\\",     u"\\\\xFF",
                                      u"\\x5CxFF",  u"\\x7F",  u"\\uD800",  u"\xD800", u"\\\xDC80",
                                      u"\\x\xDC80", u"\\uD8",  u"\\uDFFFF", u"\\xff"};
    while (expected.size() < 2000) {
      const std::u16string name = names.empty() ? nasty.Next() : names.back();
      const std::u16string path = nasty.Next() + FromUtf8(separator);
      if (!names.empty()) names.pop_back();
      table.fRows.push_back({{name, int64_t(expected.size()), path}});
      expected.push_back({name, FromUtf8(std::to_string(expected.size())), path});
    }
    TValueFormat format;
    format.fPlainByteValues = true;
    TLineList output;
    EXPECT_TRUE(WriteListAsDelimited(table, format, {separator, false}, true, output));
    EXPECT_EQ(NamesOfFields(ReadDelimited(Joined(output), separator)), expected);

    TLineList withoutHeader;
    EXPECT_TRUE(WriteListAsDelimited(table, format, {separator, false}, false, withoutHeader));
    expected.erase(expected.begin());
    EXPECT_EQ(NamesOfFields(ReadDelimited(Joined(withoutHeader), separator)), expected);
  }
}

TEST(DelimitedText, QuotesNeutralizesAndEscapes) {
  const struct {
    std::u16string fText;
    const char* fField;
    const char* fHarmless;
  } cases[] = {
      {u"", "", ""},
      {u"plain text", "plain text", "plain text"},
      {u" 'x' ", " 'x' ", " 'x' "},
      {u"a;b", "\"a;b\"", "\"a;b\""},
      {u"say \"hi\"", "\"say \"\"hi\"\"\"", "\"say \"\"hi\"\"\""},
      {u"two\nlines", "\"two\nlines\"", "\"two\nlines\""},
      {u"=1+1", "=1+1", "'=1+1"},
      {u"+1", "+1", "'+1"},
      {u"-x.txt", "-x.txt", "'-x.txt"},
      {u"@SUM(A1;A2)", "\"@SUM(A1;A2)\"", "\"'@SUM(A1;A2)\""},
      {u"\t=1", "\t=1", "'\t=1"},
      {u"\r=1", "\"\r=1\"", "\"'\r=1\""},
      {u"a=1", "a=1", "a=1"},
      {u"\xDCFF.txt", "\\xFF.txt", "\\xFF.txt"},
      {u"\xD800", "\\uD800", "\\uD800"},
      {u"\\xFF.\\a", "\\x5CxFF.\\a", "\\x5CxFF.\\a"},
      {u"ä\x1B", "ä\x1B", "ä\x1B"},
  };
  for (const auto& each : cases) {
    std::string line = "x;";
    AppendTextField(line, each.fText, {";", false});
    EXPECT_EQ(line, std::string("x;") + each.fField);
    line.clear();
    AppendTextField(line, each.fText, {";", true});
    EXPECT_EQ(line, each.fHarmless);
    // A path, which was made of its parts before.
    std::string text;
    AppendUnambiguous(text, each.fText);
    line.clear();
    AppendEscapedField(line, text, {";", true});
    EXPECT_EQ(line, each.fHarmless) << "a full path that looks like a formula";
  }
  std::string line;
  AppendOwnField(line, "-1;5", {";", true});
  EXPECT_EQ(line, "\"-1;5\"");
}

}  // namespace Vantrel::Exporting
