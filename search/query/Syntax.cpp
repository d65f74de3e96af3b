#include "search/query/Syntax.h"

#include <algorithm>

#include "model/statistics/FileTypeGroups.h"
#include "platform/text/Text.h"
#include "search/patterns/SizeText.h"
#include "search/query/FileExpressions.h"
#include "search/query/QueryDates.h"
#include "search/query/QueryValues.h"

namespace Vantrel::Search {

namespace {

// A bare number of these is a year; any other is a size.
constexpr std::u16string_view kFirstBareYear = u"1900", kLastBareYear = u"2099";

bool IsSize(std::u16string_view pText) {
  if (pText.empty() || pText[0] < u'0' || pText[0] > u'9') return false;  // most values: no exception for these
  try {
    ParseSizeText(pText);
    return true;
  } catch (const ESizeTextError&) {
    return false;
  }
}

TPropertySettings TextSettings(TPropertyFunction pFunction, std::string pExample) {
  return {.fPropertyFunction = std::move(pFunction), .fExample = std::move(pExample)};
}

TPropertySettings NumberSettings(TPropertyFunction pFunction, std::string pExample) {
  return {
      .fPropertyFunction = std::move(pFunction), .fCommaUse = TCommaUse::cuThousands, .fExample = std::move(pExample)};
}

TPropertySettings DateSettings(TPropertyFunction pFunction, std::string pExample) {
  return {.fPropertyFunction = std::move(pFunction),
          .fIgnoreChars = u" ,",
          .fCommaUse = TCommaUse::cuEnds,
          .fTakesAges = true,
          .fExample = std::move(pExample)};
}

TPropertySettings ContentSettings() {
  return {
      .fPropertyFunction = PropertyFunctions::Content(), .fCommaUse = TCommaUse::cuText, .fExample = "content:invoice"};
}

}  // namespace

void TDSMParserSyntax::RegisterAll(TLexerGrammar& pGrammar) const {
  RegisterProperties(pGrammar);
  if (fSettings.fExtendedProperties) {
    RegisterExtendedProperties(pGrammar);
    RegisterMetaData(pGrammar);
  }
  pGrammar.RegisterConjunction({u"AND", true, JoinAnd});
  pGrammar.RegisterConjunction({u"OR", false, JoinOr});
  pGrammar.RegisterConjunction({u",", false, JoinOr});
  pGrammar.RegisterOperator({u"=", TOperator::Equal});
  pGrammar.RegisterOperator({u"!=", TOperator::NotEqual});
  pGrammar.RegisterOperator({u"<", TOperator::Smaller});
  pGrammar.RegisterOperator({u"<=", TOperator::SmallerOrEqual});
  pGrammar.RegisterOperator({u">", TOperator::Larger});
  pGrammar.RegisterOperator({u">=", TOperator::LargerOrEqual});
  pGrammar.RegisterOperator({u"~", TStringOperator::MatchesRegEx});
  pGrammar.RegisterOperator({u"!~", TStringOperator::NotMatchesRegEx});
}

void TDSMParserSyntax::RegisterProperties(TLexerGrammar& pGrammar) const {
  using namespace PropertyFunctions;
  pGrammar.RegisterProperty({u"name:", TextSettings(Name(fSettings), "name:*.txt")});
  pGrammar.RegisterProperty({u"path:", TextSettings(FolderPath(fSettings), "path:src")});
  pGrammar.RegisterProperty({u"extension:", TextSettings(Extension(fSettings), "extension:txt")});
  pGrammar.RegisterProperty({u"ext:", TextSettings(Extension(fSettings), "ext:txt")});
  pGrammar.RegisterProperty({u"filetype:", TextSettings(FileType(), "filetype:Audio")});
  pGrammar.RegisterProperty({u"content:", ContentSettings()});
  pGrammar.RegisterProperty({u"cont:", ContentSettings()});
  pGrammar.RegisterProperty({u"attribute:", TextSettings(Attribute(), "attribute:H")});
}

void TDSMParserSyntax::RegisterExtendedProperties(TLexerGrammar& pGrammar) const {
  using namespace PropertyFunctions;
  const auto date = [&](const TValueTarget& pTarget) { return Date(pTarget, fSettings); };
  const auto text = [&](const TValueTarget& pTarget) { return PropertyFunctions::Text(pTarget, fSettings); };
  pGrammar.RegisterProperty({u"size:", NumberSettings(Size(TColumn::mdSize), "size:>10MB")});
  pGrammar.RegisterProperty({u"allocated:", NumberSettings(Size(TColumn::mdAllocated), "allocated:>10MB")});
  pGrammar.RegisterProperty({u"accessed:", DateSettings(date(TColumn::mdLastAccess), "accessed:<2024")});
  pGrammar.RegisterProperty({u"created:", DateSettings(date(TColumn::mdCreation), "created:today")});
  pGrammar.RegisterProperty({u"modified:", DateSettings(date(TColumn::mdLastChange), "modified:2024-05")});
  pGrammar.RegisterProperty({u"datetaken:", DateSettings(date(TFileProperty::fpDateTaken), "datetaken:2024-05")});
  pGrammar.RegisterProperty({u"owner:", TextSettings(text(TColumn::mdOwner), "owner:=root")});
  pGrammar.RegisterProperty({u"creator:", TextSettings(text(TFileProperty::fpCreator), "creator:Smith")});
  pGrammar.RegisterProperty({u"keyword:", TextSettings(text(TFileProperty::fpKeywords), "keyword:holiday")});
}

// The columns that an entry has, under their names in the catalogue, and the properties that stand inside files.
void TDSMParserSyntax::RegisterMetaData(TLexerGrammar& pGrammar) const {
  using namespace PropertyFunctions;
  std::string names;
  const auto add = [&](std::u16string_view pName, TPropertySettings pSettings) {
    names += (names.empty() ? "" : ", ") + ToUtf8(pName);
    pGrammar.RegisterProperty({u"mdata:" + std::u16string(pName) + u":", std::move(pSettings)});
  };
  const auto addColumn = [&](TColumn pColumn, TPropertySettings pSettings) {
    add(ColumnInfo(pColumn).fName, std::move(pSettings));
  };
  const auto addKeyword = [&](TColumn pColumn) {
    addColumn(pColumn, pGrammar.FindProperty(KeywordOf(pColumn))->fSettings);
  };
  addKeyword(TColumn::mdName);
  for (const TColumn column : {TColumn::mdFullPath, TColumn::mdParentPath})
    addColumn(column, TextSettings(PropertyFunctions::Text(column, fSettings), "mdata:FullPath:draft"));
  for (const TColumn column : {TColumn::mdExtension, TColumn::mdOwner, TColumn::mdSize, TColumn::mdAllocated,
                               TColumn::mdLastAccess, TColumn::mdLastChange, TColumn::mdCreation})
    addKeyword(column);
  addKeyword(TColumn::mdAttributes);
  addColumn(TColumn::mdPathLength, NumberSettings(PathLength(), "mdata:PathLength:>260"));
  addColumn(TColumn::mdDepth, NumberSettings(Level(), "mdata:Depth:<=2"));
  for (int i = 0; i < static_cast<int>(TFileProperty::fpCount); ++i) {
    const TFilePropertyInfo& info = FilePropertyInfo(static_cast<TFileProperty>(i));
    const std::string keyword = "mdata:" + ToUtf8(info.fName) + ":";
    if (info.fKind == TPropertyKind::pkNumber)
      add(info.fName, NumberSettings(NumberProperty(info.fProperty), keyword + ">10"));
    else if (info.fKind == TPropertyKind::pkDate)
      add(info.fName, DateSettings(Date(info.fProperty, fSettings), keyword + "2024"));
    else
      add(info.fName, TextSettings(PropertyFunctions::Text(info.fProperty, fSettings), keyword + "text"));
  }
  add(kBrokenLinkName, TextSettings(BrokenLink(), "mdata:BrokenLink:yes"));
  add(kEmptyFolderName, TextSettings(EmptyFolder(), "mdata:EmptyFolder:yes"));
  pGrammar.RegisterProperty({u"mdata:", TextSettings(UnknownMetaData(names), "mdata:Title:report")});
}

TDSMLexerGrammar::TDSMLexerGrammar(const TQuerySettings& pSettings) : fSettings(pSettings) {
  TDSMParserSyntax(pSettings).RegisterAll(*this);
  const TRef<const IFileTypeGroups> groups = CommonFileTypeGroups();
  for (int i = 0; i < groups->GetCount(); ++i) fGroups.push_back(groups->GetItem(i)->GetCaption());
}

// Whether the value is the name of a file-type group, or of several.
bool TDSMLexerGrammar::IsGroupList(std::u16string_view pValue) const {
  const std::vector<TValuePart> parts = SplitValue(pValue, u";");
  return !parts.empty() && std::all_of(parts.begin(), parts.end(), [&](const TValuePart& pPart) {
    return std::any_of(fGroups.begin(), fGroups.end(),
                       [&](const std::u16string& pGroup) { return SameTextAscii(pGroup, pPart.fText); });
  });
}

std::u16string_view TDSMLexerGrammar::ClassifyValue(std::u16string_view pValue) const {
  const std::u16string_view name = DefaultProperty().fIdentifier;
  if (pValue.starts_with(u'"')) return name;
  if (pValue.starts_with(u'.')) return u"extension:";
  if (IsGroupList(pValue)) return u"filetype:";
  if (!fSettings.fExtendedProperties) return name;
  const bool isYear = IsYear(pValue) && pValue >= kFirstBareYear && pValue <= kLastBareYear;
  if (!isYear && IsSize(pValue)) return u"size:";
  TDateLiteral date;
  return TryReadDate(pValue, NowOf(fSettings), date) ? u"modified:" : name;
}

bool TDSMLexerGrammar::IsNumber(std::u16string_view pText) const {
  return fSettings.fExtendedProperties && IsSize(pText);
}

bool TDSMLexerGrammar::IsUnit(std::u16string_view pWord) const {
  return IsAgeUnit(pWord);
}

}  // namespace Vantrel::Search
