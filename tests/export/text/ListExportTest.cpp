// The lists' sums against the recount, their layout, every name read back from delimited lines.

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <set>

#include "export/text/ListExport.h"
#include "platform/text/Text.h"
#include "tests/support/LineList.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/NastyText.h"
#include "tests/support/Recount.h"

namespace Vantrel::Exporting {
namespace {

using namespace Vantrel::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using Vantrel::Testing::TLineList;
using Vantrel::Testing::TNastyText;

using TRow = std::vector<TMetaDataValue>;

const std::map<std::u16string, std::u16string> kFileTypes = {{u".txt", u"Text"},
                                                             {u".jpg", u"Images"},
                                                             {u".qqq", u"Miscellaneous Files"},
                                                             {u"<no extension>", u"Miscellaneous Files"},
                                                             {u".vhdproj", u"Software Development, Virtualization"}};

void FillRandomly(TMemoryEntry& pFolder, std::mt19937& pRandom, int pDepth) {
  static const char16_t* const kExtensions[] = {u".txt", u".JPG", u".jpg", u"", u".qqq", u".vhdproj"};
  static const char16_t* const kOwners[] = {u"", u"anna", u"bert"};
  for (uint32_t i = pRandom() % 8; i > 0; --i) {
    const std::u16string name = u"f" + FromUtf8(std::to_string(pFolder.fChildren.size()));
    // Few sizes, so that some are equal.
    TMemoryEntry& file = pFolder.AddFile(name + kExtensions[pRandom() % 6], pRandom() % 40 * 1000, pRandom() % 50'000);
    file.fValues.fLastChangeDate.fTicks =
        TKivFileTime::Now().fTicks - (int64_t(pRandom() % 500) * 24 + 12) * 3600 * TKivFileTime::kTicksPerSecond;
    file.fOwnerId = 1 + pRandom() % 3;
    file.fOwner = kOwners[file.fOwnerId - 1];
  }
  for (uint32_t i = pDepth > 0 ? 3 : 0; i > 0; --i)
    FillRandomly(pFolder.AddFolder(u"d" + FromUtf8(std::to_string(i))), pRandom, pDepth - 1);
}

struct TScannedRoot : TMemoryRoot {
  explicit TScannedRoot(
      uint32_t pSeed, const std::function<void(TGlobalOptions&)>& pSetUp = [](TGlobalOptions&) {}) {
    std::mt19937 random(pSeed);
    FillRandomly(Top(), random, 3);
    fOptions->CollectOwners = true;
    fOptions->NumberOfTopFiles = 20;
    pSetUp(*fOptions);
    Scan();
  }

  TRecountedFolder Recounted() {
    TRecountSettings settings;
    settings.fNow = fRoot->GetScanTimeStamp();
    return RecountStorage(Top(), settings)[fPath];
  }
};

template <class TValue>
TValue Cell(const TListTable& pTable, size_t pRow, std::u16string_view pCaption) {
  for (size_t i = 0; i < pTable.fColumns.size(); ++i)
    if (pTable.fColumns[i].fCaption == pCaption) return std::get<TValue>(pTable.fRows.at(pRow).at(i));
  throw std::out_of_range("no column " + ToUtf8(pCaption));
}

void ExpectSums(const TListTable& pTable, size_t pRow, const TBasicSizeValues& pExpected, double pShare) {
  EXPECT_EQ(Cell<int64_t>(pTable, pRow, u"Size"), pExpected.fSize);
  EXPECT_EQ(Cell<int64_t>(pTable, pRow, u"Allocated"), pExpected.fAllocated);
  EXPECT_EQ(Cell<int64_t>(pTable, pRow, u"Files"), pExpected.fFiles);
  EXPECT_NEAR(Cell<double>(pTable, pRow, u"% of Root"), pShare, 1e-12);
}

// A row for each key of the recount and no other, by size and then by key.
void ExpectKeys(const TListTable& pTable, std::u16string_view pKeyCaption,
                const std::map<std::u16string, TBasicSizeValues>& pExpected, int64_t pWhole) {
  ASSERT_EQ(pTable.fRows.size(), pExpected.size());
  std::set<std::pair<int64_t, std::u16string>> order;
  for (const auto& [key, values] : pExpected) order.emplace(-values.fSize, key);
  size_t row = 0;
  for (const auto& [negativeSize, key] : order) {
    EXPECT_EQ(Cell<std::u16string>(pTable, row, pKeyCaption), key);
    ExpectSums(pTable, row++, pExpected.at(key), static_cast<double>(-negativeSize) / static_cast<double>(pWhole));
  }
}

}  // namespace

TEST(ListTables, SumsAreThoseOfARecount) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    TScannedRoot live(seed);
    const TRecountedFolder expected = live.Recounted();
    const int64_t whole = expected.fValues.fSize;
    ASSERT_GT(whole, 0);
    const TListTable extensions = ExtensionsList(*live.fRoot);
    ExpectKeys(extensions, u"Extension", expected.fExtensions, whole);
    for (size_t i = 0; i < extensions.fRows.size(); ++i)
      EXPECT_EQ(Cell<std::u16string>(extensions, i, u"File Type"),
                kFileTypes.at(Cell<std::u16string>(extensions, i, u"Extension")));
    ExpectKeys(UsersList(*live.fRoot), u"Owner", expected.fOwners, whole);

    const TListTable ages = FileAgesList(*live.fRoot);
    ASSERT_EQ(ages.fRows.size(), 7u);
    for (int i = 0; i < 7; ++i) {
      const auto interval = expected.fAges.find(i);
      const TBasicSizeValues values = interval == expected.fAges.end() ? TBasicSizeValues() : interval->second;
      ExpectSums(ages, static_cast<size_t>(i), values, static_cast<double>(values.fSize) / static_cast<double>(whole));
    }
    EXPECT_EQ(Cell<std::u16string>(ages, 0, u"Age"), u"up to 1 day");
    EXPECT_EQ(Cell<std::u16string>(ages, 6, u"Age"), u"over 2 years");  // empty: the files are younger
  }
}

TEST(ListTables, LargestFilesComeWithAllThatIsKnownOfThem) {
  for (const bool keepFiles : {true, false}) {
    TScannedRoot live(7, [&](TGlobalOptions& pOptions) {
      pOptions.KeepFiles = keepFiles;
      pOptions.UseAllocatedForShares = true;
    });
    const TListTable table = TopFilesList(*live.fRoot);
    const auto expected = LargestFiles(live.fStorage->Top(), {}, 20);
    ASSERT_EQ(expected.size(), 20u);
    ASSERT_EQ(table.fRows.size(), expected.size());
    const int64_t whole = live.Recounted().fValues.fAllocated;
    for (size_t i = 0; i < expected.size(); ++i) {
      const auto& [size, path] = expected[i];
      EXPECT_EQ(Cell<std::u16string>(table, i, u"Full Path"), path);
      EXPECT_EQ(Cell<int64_t>(table, i, u"Size"), size);
      const size_t slash = path.rfind(u'/');
      const std::u16string folder = path.substr(0, slash).substr(std::u16string_view(u"/memory").size());
      const TMemoryEntry& file =
          *live.fStorage->Folder(folder.empty() ? u"" : folder.substr(1)).Find(path.substr(slash + 1));
      EXPECT_EQ(Cell<std::u16string>(table, i, u"Name"), file.fName);
      EXPECT_EQ(Cell<int64_t>(table, i, u"Allocated"), file.fValues.fAllocated);
      EXPECT_EQ(Cell<int64_t>(table, i, u"Attributes"), int64_t{kAttributeArchive});
      EXPECT_EQ(Cell<TKivFileTime>(table, i, u"Last Change"), file.fValues.fLastChangeDate);
      EXPECT_NEAR(Cell<double>(table, i, u"% of Root"),
                  static_cast<double>(file.fValues.fAllocated) / static_cast<double>(whole), 1e-12);
      const std::u16string owner = file.fOwner.empty() ? u"<unknown owner>" : file.fOwner;
      if (keepFiles)
        EXPECT_EQ(Cell<std::u16string>(table, i, u"Owner"), owner);
      else
        Cell<std::monostate>(table, i, u"Owner");
    }
  }
}

TEST(ListTables, SayWhatTheScanDidNotCollect) {
  TScannedRoot live(1, [](TGlobalOptions& pOptions) {
    pOptions.CollectExtensions = pOptions.CollectOwners = false;
    pOptions.NumberOfTopFiles = 0;
    pOptions.FileAgesDateType = TDateType::dtNone;
  });
  const struct {
    TListTable fTable;
    std::u16string fTitle;
  } cases[] = {{TopFilesList(*live.fRoot), u"Largest files of /memory (not collected)"},
               {ExtensionsList(*live.fRoot), u"Extensions of /memory (not collected)"},
               {UsersList(*live.fRoot), u"Owners of /memory (not collected)"},
               {FileAgesList(*live.fRoot), u"File ages of /memory (not collected)"}};
  for (const auto& each : cases) {
    EXPECT_EQ(each.fTable.fTitle, each.fTitle);
    EXPECT_TRUE(each.fTable.fRows.empty());
  }

  TScannedRoot empty(0);
  empty.fStorage->Top().fChildren.clear();
  empty.Scan();
  EXPECT_EQ(TopFilesList(*empty.fRoot).fTitle, u"Largest files of /memory");
  EXPECT_EQ(FileAgesList(*empty.fRoot).fTitle, u"File ages of /memory, by last change");
  ExpectSums(FileAgesList(*empty.fRoot), 3, {}, 0.0);
}

TEST(DriveList, ShowsADriveThatDoesNotAnswer) {
  TVolumeInformation answers;
  answers.fMountPoint = u"/";
  answers.fFileSystem = u"ext4";
  answers.fLabel = u"/dev/sda1";
  answers.fTotalBytes = 1000;
  answers.fUsedBytes = 250;
  answers.fFreeBytes = 700;  // 50 are kept back
  TVolumeInformation hangs;
  hangs.fMountPoint = u"/mnt/gone";
  hangs.fFileSystem = u"nfs4";
  const TListTable table = DriveList(std::vector{answers, hangs});
  EXPECT_THAT(table.fRows,
              ElementsAre(TRow{u"/", u"/dev/sda1", u"ext4", int64_t{1000}, int64_t{250}, int64_t{700}, 250.0 / 950.0},
                          TRow{u"/mnt/gone", u"", u"nfs4", {}, {}, {}, {}}));
}

TEST(DriveList, HoldsTheDriveOfTheCurrentFolder) {
  const TListTable table = DriveList();
  const std::filesystem::path root = std::filesystem::current_path().root_path();
  bool found = false;
  for (size_t i = 0; i < table.fRows.size(); ++i) {
    const auto path = Cell<std::u16string>(table, i, u"Drive");
    if (i > 0) {
      EXPECT_LT(Cell<std::u16string>(table, i - 1, u"Drive"), path);
    }
    if (path != root.u16string()) continue;
    found = true;
    const std::filesystem::space_info space = std::filesystem::space(root);
    EXPECT_EQ(Cell<int64_t>(table, i, u"Total"), static_cast<int64_t>(space.capacity));
    // Others write meanwhile.
    const auto tolerance = static_cast<double>(space.capacity) / 50;
    EXPECT_NEAR(static_cast<double>(Cell<int64_t>(table, i, u"Free")), static_cast<double>(space.available), tolerance);
    EXPECT_NEAR(static_cast<double>(Cell<int64_t>(table, i, u"Used")), static_cast<double>(space.capacity - space.free),
                tolerance);
  }
  EXPECT_TRUE(found) << root;
}

namespace {

// A table with a column of each kind, its rows by name, size and share.
TListTable SmallTable() {
  TListTable table{u"Things\n",
                   u"things",
                   {{u"Name", TColumn::mdName}, {u"Size", TColumn::mdSize}, {u"Share", TColumn::mdPercentOfRoot}},
                   {}};
  table.fRows = {{u"long", int64_t{1536 * 1024}, 0.25}, {u"\x1B[1mä", int64_t{0}, {}}, {u"", {}, 1.0}};
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
  TListTable table{u"", u"t", {{u"Size", TColumn::mdSize}, {u"Allocated", TColumn::mdAllocated}}, {}};
  table.fRows = {{int64_t{1'234'567}, int64_t{-1}}};
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
    TListTable table{u"",
                     u"t",
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
      table.fRows.push_back({name, int64_t(expected.size()), path});
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
