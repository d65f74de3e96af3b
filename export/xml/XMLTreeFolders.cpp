// The part of TXMLTreeBuilder that builds folders: nodes, totals, errors and statistics.

#include <algorithm>

#include "export/xml/XMLTreeBuilder.h"
#include "model/tree/CustomFolder.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel::XML {

void TXMLTreeBuilder::BeginFolder(TXMLAttributeSpan pAttributes) {
  if (fTreeDone) Fail("A root has one top folder only");
  TOpenFolder folder;
  std::u16string path = TXMLUtils::ExactValue(pAttributes, u"fullpath", {});
  folder.fIsFilesNode = Number(pAttributes, u"IsFilesNode", INT64_MIN) != 0;
  if (path.empty()) Fail("A folder has no fullpath");
  if (fOpen.empty()) {
    if (folder.fIsFilesNode) Fail("The top folder is the files of a folder");
    fPath = path;
    CreateRoot();
    fPath = WithoutTrailingDelimiter(path, fDelimiter);
    folder.fNode = fRoot->BeginLoading();
  } else {
    TOpenFolder& parent = fOpen.back();
    if (parent.fIsFilesNode) Fail("There is a folder in the files of " + ToQuotedDisplay(fPath));
    if (folder.fIsFilesNode && parent.fNode->GetFilesNode())
      Fail("The files of " + ToQuotedDisplay(fPath) + " are there twice");
    if (path.ends_with(fDelimiter)) path.resize(WithoutTrailingDelimiter(path, fDelimiter).size());
    const std::u16string_view name = folder.fIsFilesNode ? std::u16string_view() : NameIn(parent, path);
    folder.fNode = parent.fNode->AddLoadedChild(name, folder.fIsFilesNode);
    if (!folder.fIsFilesNode) fPath = path;
  }
  folder.fPathLength = fPath.size();
  fOpen.push_back(std::move(folder));
}

std::u16string_view TXMLTreeBuilder::NameIn(const TOpenFolder& pParent, std::u16string_view pPath) const {
  const std::u16string_view parent = std::u16string_view(fPath).substr(0, pParent.fPathLength);
  std::u16string_view name = pPath;
  if (!name.starts_with(parent)) Fail(ToQuotedDisplay(pPath) + " does not lie in " + ToQuotedDisplay(parent));
  name.remove_prefix(parent.size());
  if (!parent.ends_with(fDelimiter)) {
    if (!name.starts_with(fDelimiter)) Fail(ToQuotedDisplay(pPath) + " does not lie in " + ToQuotedDisplay(parent));
    name.remove_prefix(1);
  }
  if (name.empty() || name.find(fDelimiter) != std::u16string_view::npos)
    Fail(ToQuotedDisplay(pPath) + " does not lie directly in " + ToQuotedDisplay(parent));
  return name;
}

void TXMLTreeBuilder::EndFolder() {
  OpenFolder("end of 'Folder'");
  TOpenFolder folder = std::move(fOpen.back());
  fOpen.pop_back();
  CheckNames(folder);
  // Other states in a file must not mark a folder as gone or as being removed.
  folder.fValues.fState &= kFolderStatesInFiles & ~fsIsRoot;  // the top folder's node sets this itself
  folder.fValues.fState |= fsIsXMLImport;
  folder.fNode->SetLoaded(folder.fValues);
  if (fOpen.empty()) {
    fTreeDone = true;
    return;
  }
  TOpenFolder& parent = fOpen.back();
  if (!parent.fHasStatistics) parent.fValues.fStatistics.AddOrCreate(folder.fValues.fStatistics);
  if (!folder.fIsFilesNode) parent.fChildren.push_back(std::move(folder.fNode));
  fPath.resize(parent.fPathLength);
}

void TXMLTreeBuilder::CheckNames(const TOpenFolder& pFolder) const {
  if (pFolder.fChildren.size() < 2) return;
  std::vector<std::u16string_view> names;
  for (const TRef<TCustomFolderData>& child : pFolder.fChildren) names.push_back(child->GetObjectName());
  std::sort(names.begin(), names.end());
  const auto twice = std::adjacent_find(names.begin(), names.end());
  if (twice != names.end())
    Fail(ToQuotedDisplay(JoinPath(std::u16string_view(fPath).substr(0, pFolder.fPathLength), *twice, fDelimiter)) +
         " is there twice");
}

void TXMLTreeBuilder::ReadDate(TKivFileTime TEntryValues::*pDate, std::string_view pWhere,
                               TXMLAttributeSpan pAttributes) {
  OpenFolder(pWhere).fValues.fEntry.*pDate = FileTime(pAttributes, u"Low", u"High");
}

void TXMLTreeBuilder::ReadSizeData(TXMLAttributeSpan pAttributes) {
  TSizeValues& values = OpenFolder("begin of 'SizeData'").fValues.fValues;
  static_cast<TBasicSizeValues&>(values) = Sizes(pAttributes);
  values.fFolders = Number(pAttributes, u"Folders", 0, kMostOfAnything);
  values.fCompression = static_cast<TCompressionStates>(Number(pAttributes, u"Compression", 0, UINT8_MAX));
}

void TXMLTreeBuilder::BeginError(TXMLAttributeSpan pAttributes) {
  const TOpenFolder& folder = OpenFolder("begin of 'ErrorMessage'");
  TScanError error;
  error.fObject = folder.fNode;
  error.fPath = TXMLUtils::ExactValue(pAttributes, u"Path", std::u16string_view(fPath).substr(0, folder.fPathLength));
  error.fCode = static_cast<uint32_t>(Number(pAttributes, u"Code", 0, UINT32_MAX));
  error.fKind =
      static_cast<TEnumeratorError>(Number(pAttributes, u"Kind", 0, static_cast<int64_t>(TEnumeratorError::eeOther)));
  error.fPartial = Number(pAttributes, u"Partial", INT64_MIN) != 0;
  fScan.fErrors.push_back(std::move(error));
}

// The file holds the message of the scanned system. This system's message may differ, or the code may be unknown here.
void TXMLTreeBuilder::EndError() {
  OpenFolder("end of 'ErrorMessage'");
  if (fScan.fErrors.empty()) return;
  TScanError& error = fScan.fErrors.back();
  error.fText = ExactText();
  if (error.fText.empty()) error.fText = FromUtf8(OSErrorText(error.fCode));
}

void TXMLTreeBuilder::BeginSizeArray(bool pIsUsers) {
  TOpenFolder& folder = OpenFolder(pIsUsers ? "begin of 'TUserSizeArray'" : "begin of 'TExtensionSizeArray'");
  folder.fHasStatistics = true;
  TFolderStatistics& statistics = folder.fValues.fStatistics;
  if (pIsUsers) {
    fScan.fHasUsers = true;
    fSizeArray = statistics.fUserSizeArray = MakeRef<TUserSizeArray>();
  } else {
    fScan.fHasExtensions = true;
    fSizeArray = statistics.fExtensionSizeArray = MakeRef<TExtensionSizeArray>();
  }
}

void TXMLTreeBuilder::AddItem(TXMLAttributeSpan pAttributes) {
  if (!fSizeArray) return;  // the item belongs to another element
  fSizeArray->Add(TXMLUtils::ExactValue(pAttributes, u"name", {}), Counted(Sizes(pAttributes)));
}

const TBasicSizeValues& TXMLTreeBuilder::Counted(const TBasicSizeValues& pValues) {
  fCounted += pValues;
  if (std::max({fCounted.fSize, fCounted.fAllocated, fCounted.fFiles}) > kMostOfAnything)
    Fail("The statistics add up to more than any storage holds");
  return pValues;
}

// Letter case does not count in files.
constexpr std::u16string_view kDays = u"Days_";

void TXMLTreeBuilder::ReadFileAges(TXMLAttributeSpan pAttributes) {
  TOpenFolder& folder = OpenFolder("begin of 'FileAgeDistribution'");
  if (folder.fValues.fStatistics.fFileAgeDistribution) return;
  folder.fHasStatistics = true;
  if (!fFileAges) {
    std::vector<std::pair<std::u16string, std::u16string>> attributes;
    for (const XML::TXMLAttribute& attribute : pAttributes)
      if (SameTextAscii(attribute.fName.substr(0, kDays.size()), kDays))
        attributes.emplace_back(std::u16string(kDays).append(attribute.fName.substr(kDays.size())), u"");
    try {
      fFileAges = TFileAges::CreateFromXML(attributes);
    } catch (const EInvalidArgumentValue& error) {
      Fail(error.what());
    }
    for (int i = 0; i < fFileAges->GetCount(); ++i)
      fFileAgesNames.push_back(std::u16string(kDays) + FromUtf8(std::to_string(fFileAges->GetItem(i))));
    fScan.fFileAges = fFileAges;
  }
  auto ages = MakeRef<TFileAgeDistribution>(fFileAges, fScan.fFileAgesDateType);
  for (size_t i = 0; i < fFileAgesNames.size(); ++i) {
    std::u16string_view rest = TXMLUtils::GetValueFromAttributeByQName(pAttributes, fFileAgesNames[i], u"0 0 0");
    int64_t numbers[3] = {};
    for (int64_t& number : numbers) {
      const size_t end = std::min(rest.find(u' '), rest.size());
      number = Integer(rest.substr(0, end), "FileAgeDistribution", 0, kMostOfAnything);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    const TBasicSizeValues values{numbers[0], numbers[1], numbers[2]};
    if (!values.IsZero()) ages->Add(static_cast<int>(i), Counted(values));
  }
  folder.fValues.fStatistics.fFileAgeDistribution = ages;
}

}  // namespace Vantrel::XML
