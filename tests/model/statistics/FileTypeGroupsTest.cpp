// The standard groups against their table; sums by group.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "model/statistics/FileTypeGroups.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/text/WildcardMatch.h"

namespace Vantrel {
namespace {

std::vector<std::string> Split(const std::string& pText, char pSeparator) {
  std::vector<std::string> parts;
  std::istringstream stream(pText + pSeparator);
  for (std::string part; std::getline(stream, part, pSeparator);) parts.push_back(part);
  return parts;
}

TRef<IFileTypeGroup> AddGroup(IFileTypeGroups& pGroups, std::u16string_view pCaption, std::u16string_view pPatterns) {
  TRef<IFileTypeGroup> group = pGroups.AddNewGroup();
  group->SetCaption(pCaption);
  group->SetPatterns(pPatterns);
  return group;
}

// The table was written apart from the program's: caption, description, icon and masks, with tabs between them.
TEST(StandardFileTypes, AgreeWithTheTableLetterByLetter) {
  std::ifstream table(VANTREL_SOURCE_DIR "/tests/model/statistics/standard_file_types.txt", std::ios::binary);
  ASSERT_TRUE(table);
  TRef<IFileTypeGroups> groups = MakeRef<TStandardFileTypes>();
  const long maskCounts[] = {32, 35, 93, 23, 43, 102, 9,  46, 43,
                             13, 12, 9,  7,  18, 11,  15, 9,  1};  // counted in the table by awk
  int row = 0;
  for (std::string line; std::getline(table, line); ++row) {
    std::vector<std::string> columns = Split(line, '\t');
    ASSERT_EQ(columns.size(), 4u);
    ASSERT_LT(row, groups->GetCount());
    TRef<IFileTypeGroup> group = groups->GetItem(row);
    EXPECT_EQ(ToUtf8(group->GetCaption()), columns[0]);
    EXPECT_EQ(ToUtf8(group->GetDescription()), columns[1]);
    EXPECT_EQ(ToUtf8(group->GetExtensionForIcon()), columns[2]);
    EXPECT_EQ(ToUtf8(group->GetPatterns()), columns[3]);
    std::vector<std::string> masks = Split(ToUtf8(group->GetPatterns()), ';');
    EXPECT_EQ(static_cast<long>(masks.size()) - std::count(masks.begin(), masks.end(), ""), maskCounts[row])
        << columns[0];
  }
  EXPECT_EQ(row, 18);
  EXPECT_EQ(groups->GetCount(), 18);
}

// The plain masks are looked up instead of matched; matching all masks one by one is the slow reference. Every mask,
// its wildcards filled in, serves as an extension, with look-alikes around it.
TEST(StandardFileTypes, LookUpAgreesWithMatchingEveryMask) {
  TRef<IFileTypeGroups> groups = MakeRef<TStandardFileTypes>();
  std::vector<std::u16string> extensions = {u".\u0131so", u".\u017Fys", u".\u212Adc", u".tar.gz",
                                            u".a b",      u".JpG",      u"",          u"."};
  for (int i = 0; i < groups->GetCount(); ++i) {
    for (const std::string& mask : Split(ToUtf8(groups->GetItem(i)->GetPatterns()), ';')) {
      std::string text = mask.substr(mask.find_first_of('.') == std::string::npos ? 0 : mask.find_first_of('.'));
      std::replace_if(
          text.begin(), text.end(), [](char pChar) { return pChar == '*' || pChar == '?'; }, 'q');
      if (text.empty() || text.front() != '.') text.insert(text.begin(), '.');
      for (const std::string& each : {text, text + "q", text.substr(0, text.size() - 1)}) {
        if (!each.empty()) extensions.push_back(FromUtf8(each));
      }
    }
  }
  ASSERT_GT(extensions.size(), 1000u);
  for (int i = 0; i < groups->GetCount(); ++i) {
    TRef<IFileTypeGroup> group = groups->GetItem(i);
    for (const std::u16string& extension : extensions) {
      EXPECT_EQ(group->MatchesExtension(extension), MatchesWildcards(extension, group->GetPatterns()))
          << ToUtf8(group->GetCaption()) << " " << ToUtf8(extension);
    }
  }
  // The last group, "*", takes what no other does.
  for (const std::u16string& extension : extensions) {
    const TKeyId key = TExtensionSizeArray::KeyOf(extension);
    std::vector<int> expected;
    for (int i = 0; i + 1 < groups->GetCount(); ++i)
      if (MatchesWildcards(TextOfKey(key), groups->GetItem(i)->GetPatterns())) expected.push_back(i);
    if (expected.empty()) expected.push_back(groups->GetCount() - 1);
    const auto found = groups->GetGroupIndexesOfKey(key);
    EXPECT_EQ(std::vector<int>(found.begin(), found.end()), expected) << ToUtf8(extension);
    EXPECT_EQ(groups->GetGroupIndexByExtension(extension), expected.front()) << ToUtf8(extension);
  }
  EXPECT_EQ(groups->GetGroupIndexByExtension(u"jpg"), groups->GetGroupIndexByExtension(u".jpg")) << "without its dot";
}

TEST(FileTypeGroups, SumsCountAnExtensionInEachGroupThatMatches) {
  TRef<IFileTypeGroups> groups = MakeRef<TFileTypeGroups>();
  AddGroup(*groups, u"Rest", u"*");  // the catch-all group need not stand last
  AddGroup(*groups, u"A", u"*.a;*.ab");
  AddGroup(*groups, u"B", u"*.?b;");
  AddGroup(*groups, u"None", u"");
  auto array = MakeRef<TExtensionSizeArray>();
  array->Add(u".a", {1, 10, 1});
  array->Add(u".AB", {2, 20, 2});
  array->Add(u".cb", {4, 40, 4});
  array->Add(u".x", {8, 80, 8});
  array->Add(u"", {16, 160, 16});

  std::vector<TRef<TSizeDataGroup>> sums = CalculateSizeDataForGroups(*array, *groups);
  const int64_t sizes[] = {24, 3, 6, 0};
  ASSERT_EQ(sums.size(), 4u);
  for (int i = 0; i < 4; ++i) {
    TRef<TSizeDataGroup> sum = CalculateSizeDataForGroup(*array, *groups, i);
    for (const TRef<TSizeDataGroup>& each : {sums[static_cast<size_t>(i)], sum}) {
      EXPECT_EQ(each->GetName(), groups->GetItem(i)->GetCaption());
      EXPECT_EQ(each->GetSize(), sizes[i]);
      EXPECT_EQ(each->GetAllocated(), 10 * sizes[i]);
      EXPECT_EQ(each->GetFiles(), sizes[i]);
    }
  }
  std::vector<std::tuple<std::string, int, bool>> grouped;
  for (const TGroupedKey& each : FillCustomAssocSizeArrayGrouped(*array, *groups)) {
    grouped.emplace_back(ToUtf8(TextOfKey(each.fKey)), each.fGroup, each.fAdditional);
  }
  std::sort(grouped.begin(), grouped.end());
  EXPECT_EQ(grouped, (decltype(grouped){{".a", 1, false},
                                        {".ab", 1, false},
                                        {".ab", 2, true},
                                        {".cb", 2, false},
                                        {".x", 0, false},
                                        {"<no extension>", 0, false}}));
}

TEST(FileTypeGroups, WhatWasRememberedEndsWithAChange) {
  TRef<IFileTypeGroups> groups = MakeRef<TFileTypeGroups>();
  EXPECT_EQ(groups->GetGroupIndexByExtension(u".q"), -1);
  TRef<IFileTypeGroup> first = AddGroup(*groups, u"First", u"*.p");
  EXPECT_EQ(groups->GetGroupIndexByExtension(u".q"), -1);
  AddGroup(*groups, u"Rest", u"*");
  EXPECT_EQ(groups->GetGroupIndexByExtension(u".q"), 1);
  first->SetPatterns(u"*.q");
  EXPECT_EQ(groups->GetGroupIndexByExtension(u".q"), 0);
  EXPECT_EQ(groups->GetGroupIndexByExtension(u".p"), 1);
  TRef<IFileTypeGroups> standard = MakeRef<TStandardFileTypes>();
  groups->Assign(*standard);
  EXPECT_EQ(groups->GetGroupIndexByExtension(u".q"), 17);
}

TEST(FileTypeGroups, AssignedGroupsAreEqualAndApart) {
  TRef<IFileTypeGroups> standard = MakeRef<TStandardFileTypes>();
  TRef<IFileTypeGroups> copy = MakeRef<TFileTypeGroups>();
  EXPECT_FALSE(copy->SameGroups(*standard));
  copy->Assign(*standard);
  EXPECT_TRUE(copy->SameGroups(*standard));
  copy->GetGroupByCaption(u"Mail")->SetDescription(u"post");
  EXPECT_FALSE(copy->SameGroups(*standard));
  EXPECT_EQ(standard->GetGroupByCaption(u"Mail")->GetDescription(), u"Email messages and files of email clients");
  EXPECT_EQ(standard->GetGroupByCaption(u"mail"), nullptr);
  EXPECT_THROW(standard->GetItem(18), EInvalidArgumentValue);
  EXPECT_THROW(standard->GetItem(-1), EInvalidArgumentValue);
}

}  // namespace
}  // namespace Vantrel
