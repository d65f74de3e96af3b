#pragma once

// Conditions on files as such: their type, their contents, their properties, broken links and empty folders.

#include <memory>
#include <string>
#include <variant>

#include "search/patterns/WildcardMatcher.h"
#include "search/query/FileFacts.h"
#include "search/query/ValueExpressions.h"

namespace Vantrel::Search {

// Membership in a file-type group, by the extension as in the statistics. A folder is in no group.
class TFileTypeGroupExpression final : public TCondition {
 public:
  // pGroup is the caption of one of the common groups, in any letter case. EInvalidArgumentValue "No file group found
  // matching …" if there is none. The group's masks are those of this moment.
  TFileTypeGroupExpression(TBinaryOperator pOperator, std::u16string_view pGroup);
  std::u16string_view ClassName() const override { return u"TFileTypeGroupExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override;
  int64_t Cost() const override { return 25; }

 private:
  const TBinaryOperator fOperator;
  std::u16string fCaption;
  std::unique_ptr<const PatternMatching::IWildcardMatcher> fMasks;  // of the group; of all others for fIsCatchAll
  bool fIsCatchAll = false;                                         // takes what no other group takes
};

// Text inside the file.
class TFileContentExpression final : public TCondition {
 public:
  TFileContentExpression(TBinaryOperator pOperator, TContentSearch pSearch)
      : fOperator(pOperator), fSearch(std::move(pSearch)) {}
  std::u16string_view ClassName() const override { return u"TFileContentExpression"; }
  // Folders and files that cannot be read have no contents: nothing is found in them, so IsNot holds.
  bool Matches(TSearchItem& pItem) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override { AppendQueryValue(pText, fSearch.fText); }
  int64_t Cost() const override { return 100'000; }
  TSearchAbilities Needs() const override { return saContents; }
  const TContentSearch& Search() const { return fSearch; }

 private:
  const TBinaryOperator fOperator;
  const TContentSearch fSearch;
};

// A property that stands inside the file.
class TMetaDataExpression final : public TCondition {
 public:
  struct TNumberTest {
    TOperator fOperator;
    int64_t fValue;
  };
  using TTest = std::variant<TTextTest, TNumberTest, TTimespan>;
  TMetaDataExpression(TFileProperty pProperty, TTest pTest) : fProperty(pProperty), fTest(std::move(pTest)) {}
  std::u16string_view ClassName() const override { return u"TMetaDataExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override;
  int64_t Cost() const override { return 20'000; }
  TSearchAbilities Needs() const override { return saProperties; }
  std::u16string GetWarning() const override;

 private:
  const TFileProperty fProperty;
  const TTest fTest;
};

// A symbolic link, a junction or a shortcut whose target does not exist.
class TInvalidShortcutExpression final : public TCondition {
 public:
  explicit TInvalidShortcutExpression(TBinaryOperator pOperator) : fOperator(pOperator) {}
  std::u16string_view ClassName() const override { return u"TInvalidShortcutExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override;
  int64_t Cost() const override { return 2'000; }
  TSearchAbilities Needs() const override { return saShortcuts; }

 private:
  const TBinaryOperator fOperator;
};

// A folder without any entry.
class TEmptyFolderExpression final : public TCondition {
 public:
  explicit TEmptyFolderExpression(TBinaryOperator pOperator) : fOperator(pOperator) {}
  std::u16string_view ClassName() const override { return u"TEmptyFolderExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override;
  int64_t Cost() const override { return 2'000; }
  TSearchAbilities Needs() const override { return saEmptyFolders; }

 private:
  const TBinaryOperator fOperator;
};

// The names of the last two behind "mdata:".
constexpr std::u16string_view kBrokenLinkName = u"BrokenLink";
constexpr std::u16string_view kEmptyFolderName = u"EmptyFolder";

}  // namespace Vantrel::Search
