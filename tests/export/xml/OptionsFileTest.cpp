// Every option there and back, every truncation, what is skipped and what is refused.

#include <gmock/gmock.h>

#include <array>
#include <filesystem>
#include <set>
#include <string_view>
#include <vector>

#include "export/xml/OptionsFile.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "tests/support/RandomOptions.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Options;
using testing::ElementsAreArray;
using testing::HasSubstr;
using Vantrel::Testing::TRandomOptions;
using Vantrel::Testing::TTemporaryFolder;

std::vector<std::string> Values(const TGlobalOptions& pOptions) {
  std::vector<std::string> values;
  for (const TOptionInfo& option : AllOptions())
    values.push_back(std::string(option.fName) + "=" + option.fGet(pOptions));
  return values;
}

void Set(TGlobalOptions& pOptions, std::string_view pName, std::string_view pValue) {
  ASSERT_TRUE(FindOption(pName)->fSet(pOptions, pValue)) << pName;
}

// What the refusal says behind the file's name; empty when the file loads. The options must not have changed then.
std::string Refusal(const std::u16string& pPath) {
  TGlobalOptions options = TRandomOptions(3).Next();
  const TRef<const IFileTypeGroups> groups = options.FileTypeGroups;
  const std::vector<std::string> before = Values(options);
  try {
    LoadOptionsFile(pPath, options);
    return {};
  } catch (const EOptionsFileError& error) {
    EXPECT_EQ(Values(options), before);
    EXPECT_EQ(options.FileTypeGroups, groups);
    EXPECT_TRUE(options.UserColors.empty());
    const std::string start = "The options file " + ToQuotedDisplay(pPath) + " cannot be ";
    EXPECT_THAT(error.what(), testing::StartsWith(start));
    return std::string(error.what()).substr(start.size());
  }
}

TEST(OptionsFile, EveryOptionComesBack) {
  TTemporaryFolder folder;
  TRandomOptions random(20);
  const std::vector<std::string> defaults = Values({});
  std::set<std::string> unchanged(defaults.begin(), defaults.end());
  for (int round = 0; round < 100; ++round) {
    const TGlobalOptions saved = random.Next();
    const std::vector<std::string> expected = Values(saved);
    SaveOptionsFile(folder.File("x"), saved, "Vantrel", "1.0");

    TGlobalOptions loaded;
    ASSERT_TRUE(LoadOptionsFile(folder.File("x"), loaded).fSkipped.empty());
    ASSERT_EQ(Values(loaded), expected);

    // What had its default when it was saved is not in the file, and stays.
    TGlobalOptions other = random.Next();
    std::vector<std::string> merged = Values(other);
    for (size_t i = 0; i < merged.size(); ++i) {
      if (expected[i] == defaults[i]) continue;
      merged[i] = expected[i];
      unchanged.erase(defaults[i]);
    }
    LoadOptionsFile(folder.File("x"), other);
    ASSERT_EQ(Values(other), merged);
  }
  // Otherwise TRandomOptions has to learn the form of that option's texts.
  EXPECT_TRUE(unchanged.empty()) << "never had another value than " << *unchanged.begin();
}

TRef<TFileTypeGroups> Groups(const std::vector<std::array<std::u16string_view, 4>>& pGroups) {
  auto groups = MakeRef<TFileTypeGroups>();
  for (const auto& [caption, description, icon, patterns] : pGroups) {
    const TRef<IFileTypeGroup> group = groups->AddNewGroup();
    group->SetCaption(caption);
    group->SetDescription(description);
    group->SetExtensionForIcon(icon);
    group->SetPatterns(patterns);
  }
  return groups;
}

// Groups and colors as one text.
std::string Tables(const TGlobalOptions& pOptions) {
  std::u16string text;
  for (int i = 0; i < pOptions.FileTypeGroups->GetCount(); ++i) {
    const TRef<IFileTypeGroup> group = pOptions.FileTypeGroups->GetItem(i);
    for (const std::u16string& part :
         {group->GetCaption(), group->GetDescription(), group->GetExtensionForIcon(), group->GetPatterns()})
      text += part + u"|";
    text += u"\n";
  }
  for (const auto& [key, color] : pOptions.UserColors) text += key + u"=" + FromUtf8(std::to_string(color)) + u"\n";
  for (const auto& [name, query] : pOptions.KeptSearches) text += name + u"?" + query + u"\n";
  return ToNativeBytes(text);
}

TEST(OptionsFile, TablesComeBack) {
  TTemporaryFolder folder;
  TGlobalOptions saved;
  saved.FileTypeGroups =
      Groups({{u"A \"<\xDCFF\\", u"", u"*.a", u"*.a;*.\x01;"}, {u"Rest", u"What is left", u"", u"*"}});
  saved.UserColors = {{u".txt", 0x00ABCD}, {u"\xDC80 & co", 0xFFFFFF}};
  saved.KeptSearches = {{u"old <\xDC80>", u"size:>1KB \"a  b\"\x01"}, {u"empty", u""}};
  SaveOptionsFile(folder.File("x"), saved, "Vantrel", "1.0");
  TGlobalOptions loaded;
  loaded.UserColors = {{u".txt", 1}, {u".kept", 2}};
  EXPECT_THAT(LoadOptionsFile(folder.File("x"), loaded).fSkipped, testing::IsEmpty());
  saved.UserColors.emplace(u".kept", 2);
  EXPECT_EQ(Tables(loaded), Tables(saved));

  SaveOptionsFile(folder.File("x"), {}, "Vantrel", "1.0");
  EXPECT_THAT(folder.Get("x"), testing::Not(HasSubstr("Item"))) << "the standard groups are not written";
}

// A list of groups with one fault is not used at all, and one line says why.
TEST(OptionsFile, TablesWithFaults) {
  std::string many;
  for (int i = 0; i < 5000; ++i) many += "<Item Caption='" + std::to_string(i) + "' Patterns='*.x'/>";
  const std::string unused = "the list of file-type groups is not used: ";
  const std::string rest = "<Item Caption='Rest' Patterns='*'/>";
  const struct {
    std::string fInside;
    std::vector<std::string> fSkipped;
    std::string fGroups;  // the captions; empty: as before
    TUserColors fColors;
  } rows[] = {
      {"<FILETYPEGROUPS><item patterns='*.a' caption='A'/>" + rest + "</FILETYPEGROUPS>", {}, "A;Rest;", {}},
      {"<FileTypeGroups/>",
       {unused + "its last group must have the pattern \"*\" and so take all other files"},
       "",
       {}},
      {"<FileTypeGroups><Item Caption='A' Patterns='*.a'/></FileTypeGroups>",
       {unused + "its last group must have the pattern \"*\" and so take all other files"},
       "",
       {}},
      {"<FileTypeGroups>" + rest + "<Item Caption='A' Patterns='*.a'/><Item/></FileTypeGroups>",
       {unused + "the group \"Rest\" has the pattern \"*\" and is not the last one"},
       "",
       {}},
      {"<FileTypeGroups><Item Patterns='*.a'/>" + rest + "</FileTypeGroups>",
       {unused + "a group has no caption"},
       "",
       {}},
      {"<FileTypeGroups><Item Caption='A'/>" + rest + "</FileTypeGroups>",
       {unused + "the group \"A\" has no patterns"},
       "",
       {}},
      {"<FileTypeGroups><Item Caption='rEST' Patterns=''/>" + rest + "</FileTypeGroups>",
       {unused + "the caption \"Rest\" is used twice"},
       "",
       {}},
      {"<FileTypeGroups>" + many + rest + "</FileTypeGroups>", {unused + "it has more than 1000 groups"}, "", {}},
      {"<FileTypeGroups><Group/><Item Caption='R' Patterns='*;' Size='1'/></FileTypeGroups>",
       {"the element \"Group\" is not known to this version", "the attribute \"Size\" is not known to this version"},
       "R;",
       {}},
      {"<FileTypeGroups><Item Caption='B' Patterns='*'/></FileTypeGroups><FileTypeGroups>" + rest + "</FileTypeGroups>",
       {},
       "Rest;",
       {}},
      {"<Colors><Item Key='.a' Color='#12ab3C'/><Item Key='.b' Color='#12345'/><Item Key='.c' Color='red'/>"
       "<Item Key='.d' Color='#-12345'/><Item Key='.e'/><Item Color='#000000'/><Item Key='.f' "
       "Color='#0000000'/></Colors>",
       {"the color \"#12345\" of \".b\" is not allowed; expected #RRGGBB",
        "the color \"red\" of \".c\" is not allowed; expected #RRGGBB",
        "the color \"#-12345\" of \".d\" is not allowed; expected #RRGGBB",
        "the color \"\" of \".e\" is not allowed; expected #RRGGBB", "a color without a key",
        "the color \"#0000000\" of \".f\" is not allowed; expected #RRGGBB"},
       "",
       {{u".a", 0x12AB3C}}},
      {"<Option Name='KeepFiles' Value='0'><Item Key='.a' Color='#000000'/></Option><Item Key='.a' Color='#000000'/>",
       {"the element \"Item\" is not known to this version"},
       "",
       {}},
  };
  TTemporaryFolder folder;
  for (const auto& row : rows) {
    folder.Put("x", "<VantrelOptions Version='1'>" + row.fInside + "</VantrelOptions>");
    TGlobalOptions options;
    std::vector<std::string> skipped;
    for (const std::string& line : row.fSkipped) skipped.push_back("line 1: " + line);
    EXPECT_EQ(LoadOptionsFile(folder.File("x"), options).fSkipped, skipped) << row.fInside.substr(0, 200);
    std::string captions;
    for (int i = 0; i < options.FileTypeGroups->GetCount(); ++i)
      captions += ToUtf8(options.FileTypeGroups->GetItem(i)->GetCaption()) + ";";
    if (row.fGroups.empty())
      EXPECT_TRUE(options.FileTypeGroups->SameGroups(TStandardFileTypes())) << captions;
    else
      EXPECT_EQ(captions, row.fGroups);
    EXPECT_EQ(options.UserColors, row.fColors);
  }
}

TEST(OptionsFile, EveryTruncationIsRefused) {
  TTemporaryFolder folder;
  TGlobalOptions options;
  options.FileTypeGroups = Groups({{u"Rest", u"", u"", u"*"}});
  options.UserColors = {{u".txt", 1}};
  Set(options, "MaximumThreads", "4");
  Set(options, "ExportTitle", "\xC3\x84");
  SaveOptionsFile(folder.File("whole"), options, "Vantrel", "1.0");
  const std::string whole = folder.Get("whole");
  // Without its last line break it is complete.
  for (size_t length = 0; length < whole.size() - 2; ++length) {
    folder.Put("x", std::string_view(whole).substr(0, length));
    ASSERT_THAT(Refusal(folder.File("x")), testing::MatchesRegex("loaded. Line .* column .*")) << length;
  }
}

TEST(OptionsFile, TakesWhatItCanAndTellsTheRest) {
  using TLines = std::vector<std::string>;
  const struct {
    const char* fInside;
    TLines fSkipped;
    TLines fSet;
  } rows[] = {
      {"", {}, {}},
      {"<OPTION value='4' NAME='maximumthreads'/>", {}, {"MaximumThreads=4"}},
      {"<Option Name='MaximumRoots' Value='5'>6</Option>", {}, {"MaximumRoots=5"}},
      {"<Option Name='KeepFiles' Value='FALSE'/><Option Name='FollowMountPoints' Value='7'/>"
       "<Option Name='StayOnFileSystem' Value='true'/><Option Name='UseBackupPrivilege' Value='0'/>",
       {},
       {"KeepFiles=false", "FollowMountPoints=true", "StayOnFileSystem=true", "UseBackupPrivilege=false"}},
      {"<Option Name='Foo' Value='1'/>\n<Option Name='' Value='1'/>\n\n<Option Name='MaximumThreads' Value='2'/>",
       {"line 2: the option \"Foo\" is not known to this version",
        "line 3: the option \"\" is not known to this version"},
       {"MaximumThreads=2"}},
      {"<Option Name='MaximumThreads' Value='257'/>\n<Option Name='KeepFiles' Value='yes'/>\n"
       "<Option Name='FileAges'\n  Value=''/>\n<Option Name='SizeUnit' Value='kb '/>",
       {"line 2: MaximumThreads: \"257\" is not allowed; expected 1..256",
        "line 3: KeepFiles: \"yes\" is not allowed; expected true|false",
        "line 4: FileAges: \"\" is not allowed; expected days;days;... in ascending order",
        "line 6: SizeUnit: \"kb \" is not allowed; expected auto|B|KB|MB|GB|TB"},
       {}},
      {"<Option Value='1'/><Option Name='MaximumThreads'/>",
       {"line 2: an option without a name", "line 2: the option \"MaximumThreads\" has no value"},
       {}},
      {"<Option Name='MaximumThreads' Value='2'/>\n<Option Name='maximumThreads' Value='3'/>\n"
       "<Option Name='MaximumThreads' Value='0'/>",
       {"line 3: the option \"MaximumThreads\" is set a second time; this is the value that counts",
        "line 4: MaximumThreads: \"0\" is not allowed; expected 1..256"},
       {"MaximumThreads=3"}},
      {"<Group><Option Name='MaximumThreads' Value='2'/></Group><Version><Option Name='KeepFiles' Value='0'/></Version>"
       "<Option Name='MaximumRoots' Value='3' On='Linux'/>",
       {"line 2: the element \"Group\" is not known to this version",
        "line 2: the attribute \"On\" is not known to this version"},
       {"MaximumRoots=3"}},
  };
  TTemporaryFolder folder;
  for (const auto& row : rows) {
    for (const bool newer : {false, true}) {
      folder.Put("x", std::string(newer ? "<vantreloptions version='12'>\n" : "<VantrelOptions Version='1'>\n") +
                          row.fInside + (newer ? "</vantreloptions>" : "</VantrelOptions>"));
      TGlobalOptions options, expected;
      TLines skipped = LoadOptionsFile(folder.File("x"), options).fSkipped;
      if (newer) {
        ASSERT_FALSE(skipped.empty());
        EXPECT_EQ(skipped[0], "line 1: the file has the format 12 of a newer version; this one knows formats up to 1");
        skipped.erase(skipped.begin());
      }
      EXPECT_EQ(skipped, row.fSkipped);
      for (const std::string& line : row.fSet)
        Set(expected, line.substr(0, line.find('=')), line.substr(line.find('=') + 1));
      EXPECT_EQ(Values(options), Values(expected)) << row.fInside;
    }
  }
}

TEST(OptionsFile, RefusesWhatIsNone) {
  const std::pair<const char*, const char*> rows[] = {
      {"<Root Type='TRoot'/>",
       "Line 1, column 1: this is no options file: it begins with \"Root\" and not with \"VantrelOptions\""},
      {"\n <VantrelOptions/>", "Line 2, column 2: \"\" is no version of an options file"},
      {"<VantrelOptions Version='0'/>", "Line 1, column 1: \"0\" is no version of an options file"},
      {"<VantrelOptions Version='1.1'/>", "Line 1, column 1: \"1.1\" is no version of an options file"},
      {"<VantrelOptions Version='1'>\n<Option Name='MaximumThreads' Value='2'/>\n</Vantreloptions>",
       "Line 3, column 3: mismatched tag"},
      {"<!DOCTYPE x [<!ENTITY e 'e'>]><VantrelOptions Version='1'/>",
       "Line 1, column 13: a document type declaration is not accepted"},
  };
  TTemporaryFolder folder;
  for (const auto& [contents, message] : rows) {
    folder.Put("x", contents);
    EXPECT_EQ(Refusal(folder.File("x")),
              std::string("loaded. ") + message + ". Nothing in it counts until that is corrected");
  }
  std::string endless = "<VantrelOptions Version='1'><Option Name='MaximumThreads' Value='2'/>";
  while (endless.size() < 6'000'000) endless += "<Option/>";
  folder.Put("x", endless + "</VantrelOptions>");
  EXPECT_EQ(Refusal(folder.File("x")), "loaded. It is larger than 4 MB. Nothing in it counts until that is corrected");
}

TEST(OptionsFile, ShowsLongAndHostileTextsShort) {
  TTemporaryFolder folder;
  folder.Put("x", "<VantrelOptions Version='1'><Option Name='&#27;[2J' Value=''/><Option Name='" +
                      std::string(100'000, 'a') + "' Value=''/></VantrelOptions>");
  // XML cannot hold the escape character, so the file is damaged.
  EXPECT_THAT(Refusal(folder.File("x")), HasSubstr("invalid character number"));
  folder.Put("x", "<VantrelOptions Version='1'><Option Name='&#x202E;&#10;' Value=''/><Option Name='" +
                      std::string(100'000, 'a') + "' Value=''/></VantrelOptions>");
  TGlobalOptions options;
  EXPECT_THAT(
      LoadOptionsFile(folder.File("x"), options).fSkipped,
      ElementsAreArray({std::string("line 1: the option \"\\u202E\\n\" is not known to this version"),
                        "line 1: the option \"" + std::string(60, 'a') + "...\" is not known to this version"}));
}

TEST(OptionsFile, SaysWhatCannotBeRead) {
  TTemporaryFolder folder;
  std::filesystem::create_directory(folder.Path() / "folder");
  const std::pair<const char*, bool> rows[] = {{"none", true}, {"none/x", true}, {"folder", false}};
  for (const auto& [name, missing] : rows) {
    TGlobalOptions options;
    try {
      LoadOptionsFile(folder.File(name), options);
      ADD_FAILURE() << name;
    } catch (const EOptionsFileError& error) {
      EXPECT_EQ(error.IsMissing(), missing) << name;
    }
    EXPECT_THAT(Refusal(folder.File(name)), testing::StartsWith("read: ")) << name;
  }
}

TEST(OptionsFile, IsWrittenWhollyOrNotAtAll) {
  TTemporaryFolder folder;
  std::filesystem::create_directory(folder.Path() / "folder");
  folder.Put("file", "earlier");
  for (const char* name : {"folder", "file/x", "file/y/x"})
    EXPECT_THROW(SaveOptionsFile(folder.File(name), {}, "Vantrel", "1.0"), EOSError) << name;
  EXPECT_EQ(folder.Count(), 2u);
  EXPECT_EQ(folder.Get("file"), "earlier");

  SaveOptionsFile(folder.File("new/deeper/x"), {}, "Vantrel", "1.0");
  SaveOptionsFile(folder.File("file"), {}, "Vantrel", "1.0");
  EXPECT_EQ(folder.Get("new/deeper/x"), folder.Get("file"));
  EXPECT_EQ(Refusal(folder.File("file")), "");
  EXPECT_EQ(folder.Count(), 3u);
}

}  // namespace
