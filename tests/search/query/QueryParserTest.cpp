// Queries and the trees that they become, worked out by hand; and what is refused, with the place.

#include <gtest/gtest.h>

#include <iterator>
#include <random>

#include "search/query/Parser.h"
#include "search/query/SyntaxColorizing.h"
#include "tests/search/query/QueryText.h"

namespace Vantrel::Search {

namespace {

struct TExample {
  const char16_t* fQuery;
  const char* fTree;
};

template <size_t kCount>
void Expect(const TExample (&pExamples)[kCount], const TQuerySettings& pSettings = TestSettings()) {
  for (const TExample& example : pExamples) {
    try {
      EXPECT_EQ(DumpTree(*ParseQuery(example.fQuery, pSettings)), example.fTree) << ToUtf8(example.fQuery);
    } catch (const EQueryError& error) {
      ADD_FAILURE() << DescribeQueryError(example.fQuery, error);
    }
  }
}

}  // namespace

TEST(QueryParser, NamesAndLists) {
  Expect({
      {u"", "And()"},
      {u"   ", "And()"},
      {u"foo", "String[name:foo]"},
      {u"foo bar", "And(String[name:foo], String[name:bar])"},
      {u"foo,bar", "Or(String[name:foo], String[name:bar])"},
      {u"foo, bar", "Or(String[name:foo], String[name:bar])"},
      {u"name:*.txt;*.log", "Multi(String[name:*.txt], String[name:*.log])"},
      {u"name:foo,bar baz", "And(Multi(String[name:foo], String[name:bar]), String[name:baz])"},
      {u"NAME:foo", "String[name:foo]"},
      {u"name: foo", "String[name:foo]"},
      {u"name:=foo", "String[name:=foo]"},
      {u"name:=*.txt", "String[name:*.txt]"},
      {u"name:!=foo", "String[name:!=foo]"},
      {u"!=foo;bar*", "And(String[name:!=foo], String[name:!=bar*])"},
      {u"name:=foo;b*", "Or(String[name:=foo], String[name:b*])"},
      {u"name:~^a.c$", "String[name:~^a.c$]"},
      {u"name:~\"^(a|b), c\"", "String[name:~\"^(a|b), c\"]"},
      {u"!~foo", "String[name:!~foo]"},
      {u"name:~a;b", "String[name:~\"a;b\"]"},
      {u"name:~a,b", "Or(String[name:~a], String[name:b])"},
      {u"\"two words\"", "String[name:\"two words\"]"},
      {u"\"a\";\"b c\"", "Multi(String[name:a], String[name:\"b c\"])"},
      {u"\"a \"\"b\"\"\"", "String[name:\"a \"\"b\"\"\"]"},
      {u"5\"disk", "String[name:5\"disk]"},
      {u"name:\"a;b,c\"", "String[name:\"a;b,c\"]"},
      {u"name:;a;;b;", "Multi(String[name:a], String[name:b])"},
      {u"name:a,size:1B", "Or(String[name:a], Size[size:=1B])"},
      {u"\"\"", "String[name:\"\"]"},
      {u"myname:foo", "String[name:myname:foo]"},
      {u"and", "String[name:and]"},
      {u"ANDREW ORB", "And(String[name:ANDREW], String[name:ORB])"},
      {u"\"AND\"", "String[name:AND]"},
      {u"name:AND", "String[name:AND]"},
      {u"copy(1).txt", "String[name:\"copy(1).txt\"]"},
      {u"a\tb", "String[name:a\tb]"},
      {u"content:a,b", "FileContent[content:\"a,b\"]"},
      {u"content:a, b", "Or(FileContent[content:a], String[name:b])"},
      {u"cont:\"Dear Sir\"", "FileContent[content:\"Dear Sir\"]"},
      {u"content:~a+", "FileContent[content:~a+]"},
      {u"content:!=TODO", "FileContent[content:!=TODO]"},
  });
}

TEST(QueryParser, PrecedenceAndParentheses) {
  Expect({
      {u"a b,c d", "Or(And(String[name:a], String[name:b]), And(String[name:c], String[name:d]))"},
      {u"a AND b OR c", "Or(And(String[name:a], String[name:b]), String[name:c])"},
      {u"a OR b AND c", "Or(String[name:a], And(String[name:b], String[name:c]))"},
      {u"(a OR b) c", "And(Or(String[name:a], String[name:b]), String[name:c])"},
      {u"(name:a)", "String[name:a]"},
      {u"((a)(b))c", "And(String[name:a], String[name:b], String[name:c])"},
      {u"a(b OR c)", "And(String[name:a], Or(String[name:b], String[name:c]))"},
      {u"(a,b),(c,d)", "Or(String[name:a], String[name:b], String[name:c], String[name:d])"},
      {u"a AND(b)AND c", "And(String[name:a], String[name:b], String[name:c])"},
  });
}

TEST(QueryParser, BareValuesGetAPropertyByTheirForm) {
  Expect({
      {u".txt", "String[extension:txt]"},
      {u".txt,.log", "Or(String[extension:txt], String[extension:log])"},
      {u".txt;.log", "Multi(String[extension:txt], String[extension:log])"},
      {u".tar.gz", "String[name:*.tar.gz]"},
      {u"\".txt\"", "String[name:.txt]"},
      {u"audio", "FileTypeGroup[filetype:Audio]"},
      {u"Audio,videos", "Or(FileTypeGroup[filetype:Audio], FileTypeGroup[filetype:Videos])"},
      {u"Audio;videos", "Multi(FileTypeGroup[filetype:Audio], FileTypeGroup[filetype:Videos])"},
      {u"\"Audio\"", "String[name:Audio]"},
      {u"10MB", "Size[size:=10485760B]"},
      {u"1,000KB", "Size[size:=1024000B]"},
      {u"1,000KB,foo", "Or(Size[size:=1024000B], String[name:foo])"},
      {u"1,000KB, 2KB", "Or(Size[size:=1024000B], Size[size:=2048B])"},
      {u"1,2", "Or(Size[size:=1048576B], Size[size:=2097152B])"},
      {u">10MB", "Size[size:>10485760B]"},
      {u"5XB", "String[name:5XB]"},
      {u"1.5GB", "String[name:1.5GB]"},
      {u"2024", "Timespan[modified:2024-01-01-2024-12-31]"},
      {u"2500", "Size[size:=2621440000B]"},
      {u"2024-05", "Timespan[modified:2024-05-01-2024-05-31]"},
      {u"2023-2024", "Timespan[modified:2023-01-01-2024-12-31]"},
      {u"2024-02-28-2024-03-01", "Timespan[modified:2024-02-28-2024-03-01]"},
      {u"today", "Timespan[modified:2024-06-15]"},
      {u"2024-13", "String[name:2024-13]"},
  });
  TQuerySettings plain = TestSettings();
  plain.fExtendedProperties = false;
  Expect({{u"10MB", "String[name:10MB]"},
          {u"2024", "String[name:2024]"},
          {u"size:5", "String[name:size:5]"},
          {u"mdata:Title:x", "String[name:mdata:Title:x]"},
          {u".txt Audio", "And(String[extension:txt], FileTypeGroup[filetype:Audio])"}},
         plain);
}

TEST(QueryParser, PropertiesAndTheirOperators) {
  Expect({
      {u"size:>1,000KB", "Size[size:>1024000B]"},
      {u"size:=10-20", "And(Size[size:>=10485760B], Size[size:<=20971520B])"},
      {u"size:10-20", "And(Size[size:>=10485760B], Size[size:<=20971520B])"},
      {u"size:1.000.000", "Size[size:=1048576000000B]"},
      {u"size:5 XB", "And(Size[size:=5242880B], String[name:XB])"},
      {u"size:\"5 KB\"", "Size[size:=5120B]"},
      {u"size:!=0B", "Size[size:!=0B]"},
      {u"size:>1GB,foo", "Or(Size[size:>1073741824B], String[name:foo])"},
      {u"allocated:<=4KB", "Numeric[allocated:<=4096B]"},
      {u"ext:iso,zip", "Multi(String[extension:iso], String[extension:zip])"},
      {u"ext:.TXT", "String[extension:TXT]"},
      {u"ext:*.h*", "String[extension:h*]"},
      {u"ext:!=txt", "String[extension:!=txt]"},
      {u"ext:~^h", "String[extension:~^h]"},
      {u"ext:.", "String[extension:\"\"]"},
      {u"filetype:!=audio", "FileTypeGroup[filetype:!=Audio]"},
      {u"filetype:\"Software Development\"", "FileTypeGroup[filetype:\"Software Development\"]"},
      {u"attribute:hs", "Attribute[attribute:HS]"},
      {u"attribute:h,r", "Multi(Attribute[attribute:H], Attribute[attribute:R])"},
      {u"attribute:!=L", "Attribute[attribute:!=L]"},
      {u"owner:=root", "String[owner:=root]"},
      {u"creator:Smith", "String[creator:Smith]"},
      {u"keyword:holiday,family", "Multi(String[keyword:holiday], String[keyword:family])"},
      {u"mdata:title:report", "MetaData[mdata:Title:report]"},
      {u"mdata:pages:10-20", "And(MetaData[mdata:Pages:>=10], MetaData[mdata:Pages:<=20])"},
      {u"mdata:keywords:a", "String[keyword:a]"},
      {u"mdata:PathLength:>260", "Numeric[mdata:PathLength:>260]"},
      {u"mdata:depth:<3", "RecursionLevel[mdata:Depth:<3]"},
      {u"mdata:Size:>1KB", "Size[size:>1024B]"},
      {u"mdata:brokenlink:yes", "InvalidShortcut[mdata:BrokenLink:yes]"},
      {u"mdata:brokenlink:!=yes", "InvalidShortcut[mdata:BrokenLink:no]"},
      {u"mdata:EmptyFolder:yes", "EmptyFolder[mdata:EmptyFolder:yes]"},
      {u"modified:<2024", "Timespan[modified:<2024-01-01]"},
      {u"modified:>2024-02", "Timespan[modified:>=2024-03-01]"},
      {u"modified:<=2024-02-29", "Timespan[modified:<2024-03-01]"},
      {u"modified:!=2023", "Or(Timespan[modified:<2023-01-01], Timespan[modified:>=2024-01-01])"},
      {u"created:yesterday,foo", "Or(Timespan[created:2024-06-14], String[name:foo])"},
      {u"accessed:3 days", "Timespan[accessed:2024-06-12T12:34:56Z-2024-06-15T12:34:56Z]"},
      {u"accessed:>3days", "Timespan[accessed:<=2024-06-12T12:34:55.9999999Z]"},
      {u"accessed:<=2 Hours", "Timespan[accessed:>=2024-06-15T10:34:56Z]"},
      {u"modified:>=1week", "Timespan[modified:<=2024-06-08T12:34:56Z]"},
      {u"modified:>2024years", "Timespan[modified:<=1601-01-01T00:00:00.0000001Z]"},
      {u"modified:7days-3days", "Timespan[modified:2024-06-08T12:34:56Z-2024-06-12T12:34:56Z]"},
      {u"datetaken:2024-05-01", "Timespan[datetaken:2024-05-01]"},
      {u"modified:=2024-05-01T10:20:30Z", "Timespan[modified:2024-05-01T10:20:30Z]"},
  });
}

TEST(QueryParser, ADelimiterMeansThePath) {
  Expect({{u"path:C:\\Temp", "String[path:C:\\Temp]"},
          {u"path:Temp", "ParentFolderName[path:Temp]"},
          {u"path:=C:\\Temp\\", "String[path:=C:\\Temp]"},
          {u"path:=C:\\", "String[path:=C:\\]"},
          {u"C:\\Temp\\*.log", "String[name:C:\\Temp\\*.log]"},
          {u"name:a/b", "String[name:a/b]"},
          {u"name:~\\.txt$", "String[name:~\\.txt$]"}},
         TestSettings(u'\\'));
  Expect({{u"path:/tmp", "String[path:/tmp]"},
          {u"name:a/b;c", "Multi(String[name:a/b], String[name:c])"},
          {u"name:~^/usr/", "String[name:~^/usr/]"},
          {u"mdata:FullPath:a;b/c", "Multi(String[mdata:FullPath:a], String[mdata:FullPath:b/c])"},
          {u"C:\\Temp", "String[name:C:\\Temp]"}});
}

TEST(QueryParser, UnicodeFormD) {
  TQuerySettings settings = TestSettings();
  EXPECT_EQ(ExpressionToText(*ParseQuery(u"caf\xE9", settings)), u"name:caf\xE9");
  settings.fNormalizesUnicode = true;
  EXPECT_EQ(ExpressionToText(*ParseQuery(u"caf\xE9", settings)), u"name:cafe\x301");
  EXPECT_EQ(ExpressionToText(*ParseQuery(u"path:\xC5", settings)), u"path:A\x30A");
}

namespace {

struct TRefusal {
  const char16_t* fQuery;
  const char* fMark;  // under the query
  const char* fMessage;
};

const std::string kUnits =
    " Valid units are: B, BYTE, BYTES, KB, KIB, KIBIBYTE, KILOBYTE, MB, MIB, MEBIBYTE, MEGABYTE, GB, GIB, GIBIBYTE, "
    "GIGABYTE, TB, TIB, TEBIBYTE, TERABYTE";

}  // namespace

TEST(QueryParser, RefusesWithThePlaceAndTheReason) {
  const std::string noUnit = "\"XB\" is no valid unit." + kUnits;
  const TRefusal refusals[] = {
      {u"size:5XB", "     ^^^", noUnit.c_str()},
      {u"a size:1.5GB", "       ^^^^^",
       "\"1.5\" is a decimal value and not supported. Please use a smaller size unit and provide the number as an "
       "integer."},
      {u"size:1000,000", "     ^^^^^^^^",
       "The thousands marks for \"1000,000\" are invalid. Please assure each separated block represents a multiple of "
       "thousands."},
      {u"size:x-y-z", "     ^^^^^", "\"z\" is no valid unit."},  // completed below
      {u"size:20-10", "     ^^^^^", "The range \"20-10\" ends before it begins"},
      {u"size:~5", "     ^", "\"~\" cannot be used with this property"},
      {u"name:<foo", "     ^", "\"<\" cannot be used with this property"},
      {u"content:>=foo", "        ^^", "\">=\" cannot be used with this property"},
      {u"name:", "^^^^^", "A value is missing behind \"name:\""},
      {u"a size:>", "       ^", "A value is missing behind \">\""},
      {u"name: AND b", "^^^^^", "A value is missing behind \"name:\""},
      {u"name: size:5", "^^^^^", "A value is missing behind \"name:\""},
      {u"(name:)", " ^^^^^", "A value is missing behind \"name:\""},
      {u"name:~(a)", "     ^", "A value is missing behind \"~\""},
      {u"name:;", "     ^", "A value is missing"},
      {u"mdata:", "^^^^^^", "A value is missing behind \"mdata:\""},
      {u"foo AND", "    ^^^", "A condition is missing behind \"AND\""},
      {u"foo OR", "    ^^", "A condition is missing behind \"OR\""},
      {u"foo,", "   ^", "A condition is missing behind \",\""},
      {u"AND foo", "^^^", "A condition is missing in front of \"AND\""},
      {u"a AND OR b", "      ^^", "A condition is missing in front of \"OR\""},
      {u"a ( OR b)", "    ^^", "A condition is missing in front of \"OR\""},
      {u"(a OR)", "   ^^", "A condition is missing behind \"OR\""},
      {u"a ()", "  ^^", "There is no condition between \"(\" and \")\""},
      {u"((a)", "^", "The \"(\" is not closed"},
      {u"a)", " ^", "There is no \"(\" for this \")\""},
      {u"a \"b c", "  ^^^^", "The quote is not closed"},
      {u"\"", "^", "The quote is not closed"},
      {u"name:\"\"\"", "     ^^^", "The quote is not closed"},
      {u"name:a;\"b", "       ^^", "The quote is not closed"},
      {u"\"a\"b c", "   ^", "A quoted text must end there"},
      {u"filetype:sound", "         ^^^^^", "No file group found matching \"sound\""},
      {u"attribute:hx", "          ^^", "\"x\" is no attribute"},
      {u"modified:soon", "         ^^^^", "\"soon\" is no date"},
      {u"modified:3 foo", "         ^", "\"3\" is no date"},
      {u"modified:2024-2023", "         ^^^^^^^^^", "The range \"2024-2023\" ends before it begins"},
      {u"modified:2023-02-29", "         ^^^^^^^^^^", "\"2023-02-29\" is no date"},
      {u"mdata:colour:red", "      ^^^^^^", "\"colour\" is no known property"},
      {u"mdata:pages:many", "            ^^^^", "\"many\" is no whole number"},
      {u"mdata:brokenlink:maybe", "                 ^^^^^", "\"maybe\" is neither yes nor no"},
      {u"name:~\"(a\"", "      ^^^^",
       "The regular expression is not valid: missing closing parenthesis (at character 3)"},
      {u"content:\"\"", "        ^^", "The text to look for is missing"},
      {u"size:9999999TB", "     ^^^^^^^^^", "\"9999999TB\" is more than any size can be"},
      {u"\u6F22 name:", "   ^^^^^", "A value is missing behind \"name:\""},  // a character of two columns
  };
  for (const TRefusal& refusal : refusals) {
    try {
      ADD_FAILURE() << ToUtf8(refusal.fQuery) << " is read as " << DumpTree(*ParseQuery(refusal.fQuery));
    } catch (const EQueryError& error) {
      const std::string query = ToUtf8(refusal.fQuery);
      std::string expected = query + "\n" + refusal.fMark + "\n" + refusal.fMessage;
      if (query == "size:x-y-z") expected += kUnits;
      const std::string shown = DescribeQueryError(refusal.fQuery, error);
      EXPECT_EQ(shown.substr(0, shown.rfind('\n')), expected);
      EXPECT_FALSE(error.Hint().empty()) << query;
    }
  }
}

TEST(QueryParser, EachKeywordAtTheEndLacksItsValue) {
  for (const char16_t* keyword : {u"name:",        u"path:",
                                  u"extension:",   u"ext:",
                                  u"filetype:",    u"content:",
                                  u"cont:",        u"attribute:",
                                  u"size:",        u"allocated:",
                                  u"accessed:",    u"created:",
                                  u"modified:",    u"datetaken:",
                                  u"owner:",       u"creator:",
                                  u"keyword:",     u"mdata:",
                                  u"mdata:Depth:", u"mdata:Title:",
                                  u"mdata:Pages:", u"mdata:BrokenLink:"})
    for (const char16_t* end : {u"", u" ", u">", u"!="}) {
      const std::u16string query = std::u16string(u"a ") + keyword + end;
      EXPECT_THROW(ParseQuery(query), EQueryError) << ToUtf8(query);
    }
}

TEST(QueryParser, WhatIsNotUnicodeIsRefusedOnlyWithNormalization) {
  TQuerySettings settings = TestSettings();
  const std::u16string query = u"ab\xD800";
  EXPECT_EQ(ExpressionToText(*ParseQuery(query, settings)), u"name:" + query);
  settings.fNormalizesUnicode = true;
  try {
    ParseQuery(query, settings);
    ADD_FAILURE() << "read";
  } catch (const EQueryError& error) {
    EXPECT_EQ(std::string(error.what()), "Invalid Unicode (\\uD800) in string at position 3. Input string: ab\\uD800");
  }
}

TEST(QueryParser, ALongQueryIsShownAroundThePlace) {
  const std::u16string query = std::u16string(200, u'a') + u" size:5XB " + std::u16string(200, u'b');
  try {
    ParseQuery(query);
    ADD_FAILURE() << "read";
  } catch (const EQueryError& error) {
    const std::string shown = DescribeQueryError(query, error);
    const std::string line = shown.substr(0, shown.find('\n'));
    EXPECT_EQ(line, "... " + std::string(54, 'a') + " size:5XB " + std::string(59, 'b') + " ...");
    EXPECT_EQ(shown.substr(line.size() + 1, 68), std::string(64, ' ') + "^^^\n");
  }
}

TEST(QuerySyntaxColorizing, ColorsTheTokensAndNamesThePropertyOfAValue) {
  const TDSMLexerGrammar grammar(TestSettings());
  const std::u16string query = u"Size: >5MB AND (.txt OR \"x y\") \"z";
  std::string shown;
  for (const TColoredToken& token : TDSMSyntaxColorizing(grammar).GetColorMapping(query)) {
    EXPECT_EQ(token.fColor, TDSMSyntaxColorizing::ColorOf(token.fTokenType));
    shown += "PO&V()!"[static_cast<size_t>(token.fTokenType)] + std::string(" ") +
             ToUtf8(query.substr(token.fPosition, token.fLength)) + " " + ToUtf8(token.fProperty) + "|";
  }
  EXPECT_EQ(shown, "P Size: |O > |V 5MB size:|& AND |( ( |V .txt extension:|& OR |V \"x y\" name:|) ) |! \"z |");
}

// Whatever is typed, no unit of it is lost or taken twice.
TEST(QueryLexer, RawTextsAreTheQuery) {
  const TDSMLexerGrammar grammar(TestSettings());
  std::mt19937 random(14);
  const std::u16string pieces[] = {u" ", u"  ", u"(",     u")",   u",",      u"\"",        u";",     u"=",
                                   u"~", u"!=", u"name:", u"a",   u"AND",    u"OR",        u"10MB",  u"2024",
                                   u"5", u"3",  u"days",  u".gz", u"\xDC80", u"modified:", u"size:", u"mdata:title:"};
  for (int run = 0; run < 5'000; ++run) {
    std::u16string query;
    for (size_t count = random() % 12; count > 0; --count) query += pieces[random() % std::size(pieces)];
    TExpressionLexer lexer(query, grammar);
    std::u16string raw;
    TLexerToken token;
    do {
      token = lexer.NextToken();
      raw += token.fTokenRawString;
      ASSERT_LE(raw.size(), query.size()) << ToUtf8(query);
    } while (token.fTokenType != TTokenType::EndOfFileToken);
    ASSERT_EQ(raw, query) << ToUtf8(query);
  }
}

}  // namespace Vantrel::Search
