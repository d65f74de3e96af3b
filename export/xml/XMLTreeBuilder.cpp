#include "export/xml/XMLTreeBuilder.h"

#include <algorithm>

#include "model/tree/CustomFolder.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"

namespace Vantrel::XML {

using XML::TXMLUtils;

enum class TXMLTreeBuilder::TElement : uint8_t {
  elUnknown,
  elRoot,
  elPath,
  elTitle,
  elDate,
  elDateISO,
  elFilesystem,
  elBytesPerCluster,
  elTotalBytes,
  elFreeBytes,
  elExcludedObjects,
  elTerminated,
  elIsFullExport,
  elIsCompared,
  elFileAgesDateType,
  elDoCreateFileAges,
  elTopSizeList,
  elTopFile,
  elPatterns,  // of either type
  elPatternList,
  elPattern,
  elFolder,
  elAttributes,
  elOwner,
  elErrorMessage,
  elFolderState,
  elLastAccess,
  elLastChange,
  elCreation,
  elSizeData,
  elExtensionSizeArray,
  elUserSizeArray,
  elItem,
  elFileAges,
};

TXMLTreeBuilder::TElement TXMLTreeBuilder::ElementOf(std::u16string_view pName) {
  using enum TElement;
  static const boost::unordered_flat_map<std::u16string_view, TElement> elements = {
      {u"root", elRoot},
      {u"path", elPath},
      {u"title", elTitle},
      {u"date", elDate},
      {u"dateiso", elDateISO},
      {u"filesystem", elFilesystem},
      {u"bytespercluster", elBytesPerCluster},
      {u"totalbytesondrive", elTotalBytes},
      {u"usedbytesondrive", elTotalBytes},
      {u"freebytesondrive", elFreeBytes},
      {u"excludedobjects", elExcludedObjects},
      {u"terminated", elTerminated},
      {u"isfullexport", elIsFullExport},
      {u"iscompared", elIsCompared},
      {u"fileagesdatetype", elFileAgesDateType},
      {u"docreatefileages", elDoCreateFileAges},
      {u"ttopsizefilelist", elTopSizeList},
      {u"topfile", elTopFile},
      {u"includepatterns", elPatterns},
      {u"excludepatterns", elPatterns},
      {u"tpatternlist", elPatternList},
      {u"pattern", elPattern},
      {u"folder", elFolder},
      {u"attributes", elAttributes},
      {u"owner", elOwner},
      {u"errormessage", elErrorMessage},
      {u"folderstate", elFolderState},
      {u"lastaccessdate", elLastAccess},
      {u"lastchangedate", elLastChange},
      {u"creationdate", elCreation},
      {u"sizedata", elSizeData},
      {u"textensionsizearray", elExtensionSizeArray},
      {u"tusersizearray", elUserSizeArray},
      {u"item", elItem},
      {u"fileagedistribution", elFileAges},
  };
  constexpr size_t kLongest = 32;
  if (pName.size() > kLongest) return elUnknown;
  char16_t folded[kLongest];
  std::transform(pName.begin(), pName.end(), folded, FoldAscii);
  const auto found = elements.find(std::u16string_view(folded, pName.size()));
  return found == elements.end() ? elUnknown : found->second;
}

// A tree that was not finished is taken apart here, or it would never go.
TXMLTreeBuilder::~TXMLTreeBuilder() {
  if (!fRoot) return;
  fOpen.clear();
  fRoot->Dispose();
}

// --- values --------------------------------------------------------------------------------------------------------

void TXMLTreeBuilder::Fail(const std::string& pMessage) const {
  throw fParser->ErrorHere(pMessage);
}

int64_t TXMLTreeBuilder::Integer(std::u16string_view pText, std::string_view pWhat, int64_t pLeast,
                                 int64_t pMost) const {
  int64_t value = 0;
  if (!TXMLUtils::TryReadInteger(pText, value))
    Fail(std::string(pWhat) + " is no whole number: " + ToQuotedDisplay(pText.substr(0, 100)));
  if (value < pLeast || value > pMost) Fail(std::string(pWhat) + " is out of range: " + std::to_string(value));
  return value;
}

int64_t TXMLTreeBuilder::Number(TXMLAttributeSpan pAttributes, std::u16string_view pName, int64_t pLeast,
                                int64_t pMost) const {
  const std::u16string_view text = TXMLUtils::GetValueFromAttributeByQName(pAttributes, pName, u"0");
  int64_t value = 0;
  // Without making a text of the name for the message that is hardly ever wanted.
  if (TXMLUtils::TryReadInteger(text, value) && value >= pLeast && value <= pMost) return value;
  return Integer(text, ToUtf8(pName), pLeast, pMost);
}

TKivFileTime TXMLTreeBuilder::FileTime(TXMLAttributeSpan pAttributes, std::u16string_view pLow,
                                       std::u16string_view pHigh) const {
  int64_t ticks = 0;
  if (!TXMLUtils::TryJoinHalves(Number(pAttributes, pLow, INT64_MIN), Number(pAttributes, pHigh, INT64_MIN), ticks) ||
      ticks < 0)
    Fail(ToUtf8(pLow) + " and " + ToUtf8(pHigh) + " are no date");
  return {ticks};
}

TBasicSizeValues TXMLTreeBuilder::Sizes(TXMLAttributeSpan pAttributes) const {
  return {Number(pAttributes, u"Size"), Number(pAttributes, u"Allocated"), Number(pAttributes, u"Files")};
}

std::u16string TXMLTreeBuilder::ExactText() const {
  if (fEscaped.empty()) return fText;
  const XML::TXMLAttribute escaped{TXMLUtils::kEscapedSuffix, fEscaped};
  return TXMLUtils::ExactText({&escaped, 1}, fText);
}

TXMLTreeBuilder::TOpenFolder& TXMLTreeBuilder::OpenFolder(std::string_view pWhere) {
  if (fOpen.empty()) Fail("Folder not Assigned at " + std::string(pWhere) + " Node");
  return fOpen.back();
}

// --- events --------------------------------------------------------------------------------------------------------

void TXMLTreeBuilder::StartElement(std::u16string_view pName, TXMLAttributeSpan pAttributes) {
  using enum TElement;
  // Attributes are looked up one by one: a million of them would take hours.
  constexpr size_t kMostAttributes = 1000;
  if (pAttributes.size() > kMostAttributes)
    Fail("An element has " + std::to_string(pAttributes.size()) + " attributes; no scan file has so many");
  fText.clear();
  fEscaped = TXMLUtils::GetValueFromAttributeByQName(pAttributes, TXMLUtils::kEscapedSuffix, {});
  const TElement element = ElementOf(pName);
  if (!fSeenRoot && element != elRoot) Fail("The document is no scan file: it begins with " + ToQuotedDisplay(pName));
  switch (element) {
    case elRoot:
      return BeginRoot(pAttributes);
    case elFolder:
      return BeginFolder(pAttributes);
    case elSizeData:
      return ReadSizeData(pAttributes);
    case elLastAccess:
      return ReadDate(&TEntryValues::fLastAccessDate, "begin of 'LastAccessDate'", pAttributes);
    case elLastChange:
      return ReadDate(&TEntryValues::fLastChangeDate, "begin of 'LastChangeDate'", pAttributes);
    case elCreation:
      return ReadDate(&TEntryValues::fCreationDate, "begin of 'CreationDate'", pAttributes);
    case elExtensionSizeArray:
      return BeginSizeArray(false);
    case elUserSizeArray:
      return BeginSizeArray(true);
    case elItem:
      return AddItem(pAttributes);
    case elFileAges:
      return ReadFileAges(pAttributes);
    case elTopSizeList:
      if (!fScan.fTopFiles)
        fScan.fTopFiles.emplace();  // a second list goes on with the first: files are known by number
      return;
    case elTopFile:
      return ReadTopFile(pAttributes);
    case elErrorMessage:
      return ReadError(pAttributes);
    case elDoCreateFileAges:
      fScan.fFileAgesDateType =
          static_cast<TDateType>(Number(pAttributes, u"FileAgesDateType", 0, static_cast<int64_t>(TDateType::dtNone)));
      return;
    case elPatternList:
    case elPattern:
      return ReadPatternElement(element, pAttributes);
    default:
      return;
  }
}

void TXMLTreeBuilder::EndElement(std::u16string_view pName) {
  using enum TElement;
  const TElement element = ElementOf(pName);
  switch (element) {
    case elFolder:
      EndFolder();
      break;
    case elExtensionSizeArray:
    case elUserSizeArray:
      fSizeArray = nullptr;
      break;
    case elAttributes:
      OpenFolder("end of 'Attributes'").fValues.fEntry.fAttributes =
          static_cast<TAttributes>(Integer(fText, "Attributes", 0, UINT32_MAX));
      break;
    case elFolderState:
      OpenFolder("end of 'FolderState'").fValues.fState =
          static_cast<TFolderStates>(Integer(fText, "FolderState", 0, UINT16_MAX));
      break;
    case elOwner:
      OpenFolder("end of 'Owner'").fValues.fOwnerKey = InternKey(ExactText());
      break;
    default:
      if (fOpen.empty()) ReadHeaderText(element);
  }
  fText.clear();
}

void TXMLTreeBuilder::ReadHeaderText(TElement pElement) {
  using enum TElement;
  auto number = [&](std::string_view pWhat) { return Integer(fText, pWhat, 0, INT64_MAX); };
  auto boolean = [&](std::string_view pWhat) { return Integer(fText, pWhat, INT64_MIN, INT64_MAX) != 0; };
  switch (pElement) {
    case elPath:
      fRootPath = TXMLUtils::HtmlDecode(ExactText());
      break;
    case elTitle:
      fScan.fTitle = TXMLUtils::HtmlDecode(ExactText());
      break;
    case elDate:
      TryParseIso(ToUtf8(fText), fScan.fScanTimeStamp);  // older files have the date in some language's form
      break;
    case elDateISO:
      if (!fText.empty() && !TryParseIso(ToUtf8(fText), fScan.fScanTimeStamp))
        Fail("DateISO is no date: " + ToQuotedDisplay(fText.substr(0, 100)));
      break;
    case elFilesystem:
      fScan.fStorage.fFileSystem = ExactText();
      break;
    case elBytesPerCluster:
      fScan.fStorage.fBytesPerCluster = number("BytesPerCluster");
      break;
    case elTotalBytes:
      fScan.fStorage.fTotalBytes = number("TotalBytesOnDrive");
      break;
    case elFreeBytes:
      fScan.fStorage.fFreeBytes = number("FreeBytesOnDrive");
      break;
    case elExcludedObjects:
      fScan.fExcludedObjects = number("ExcludedObjects");
      break;
    case elTerminated:
      fScan.fWasCancelled = boolean("Terminated");
      break;
    case elIsFullExport:
      fIsFullExport = boolean("IsFullExport");
      if (fPurpose == TPurpose::puCompare && !fIsFullExport)
        throw EScanFileError(
            "The XML file " + ToQuotedDisplay(fName) +
            " includes information for directories limited to a certain directory level.\r\n\r\n"
            "Only exports of the full directory tree can be used for comparison. To get a full export, "
            "activate the option \"Tools > Options > Export > XML > Full directory tree\".");
      break;
    case elIsCompared:
      if (fPurpose == TPurpose::puCompare && boolean("IsCompared"))
        throw EScanFileError("The XML file " + ToQuotedDisplay(fName) +
                             " contains data of a previous comparison.\r\n\r\n"
                             "Exports containing comparison data cannot be used for a second comparison.");
      break;
    case elFileAgesDateType:
      fScan.fFileAgesDateType =
          static_cast<TDateType>(Integer(fText, "FileAgesDateType", 0, static_cast<int64_t>(TDateType::dtNone)));
      break;
    default:
      break;
  }
}

// --- the header ----------------------------------------------------------------------------------------------------

void TXMLTreeBuilder::BeginRoot(TXMLAttributeSpan pAttributes) {
  if (fSeenRoot) Fail("A file holds one root only");
  fSeenRoot = true;
  const std::u16string_view type = TXMLUtils::GetValueFromAttributeByQName(pAttributes, u"Type", u"TRoot");
  if (SameTextAscii(type, u"TCustomUnixRoot"))
    fDelimiter = u'/';
  else if (SameTextAscii(type, u"TFileSystemRoot"))
    fDelimiter = u'\\';
  else if (!SameTextAscii(type, u"TRoot"))
    Fail("Root has an unknown type: " + ToQuotedDisplay(type));
}

void TXMLTreeBuilder::ReadPatternElement(TElement pElement, TXMLAttributeSpan pAttributes) {
  using namespace PatternMatching;
  TElementAttributes attributes;
  for (const XML::TXMLAttribute& attribute : pAttributes) {
    if (attribute.fName.ends_with(TXMLUtils::kEscapedSuffix)) continue;
    attributes.emplace_back(attribute.fName, TXMLUtils::ExactValue(pAttributes, attribute.fName, {}));
  }
  if (!fPatterns) {
    // Paths in patterns are those of the root.
    const bool slashes = fDelimiter != 0 ? fDelimiter == u'/' : fRootPath.starts_with(u'/');
    fPatterns = MakeRef<TPatternList>(slashes ? u'/' : u'\\');
  }
  try {
    if (pElement == TElement::elPatternList)
      fPatterns->ReadProperties(attributes);
    else
      fPatterns->ReadFromXML(attributes);
  } catch (const EInvalidArgumentValue& error) {
    Fail(error.what());
  }
}

void TXMLTreeBuilder::ReadError(TXMLAttributeSpan pAttributes) {
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

void TXMLTreeBuilder::ReadTopFile(TXMLAttributeSpan pAttributes) {
  if (!fScan.fTopFiles) fScan.fTopFiles.emplace();
  TTopSizeEntry file;
  file.fName = TXMLUtils::ExactValue(pAttributes, u"name", {});
  file.fSize = Number(pAttributes, u"Size");
  file.fAllocated = Number(pAttributes, u"Allocated");
  file.fAttributes = static_cast<TAttributes>(Number(pAttributes, u"FileAttributes", 0, UINT32_MAX));
  file.fLastChangeDate = FileTime(pAttributes, u"LastChangeLow", u"LastChangeHigh");
  file.fLastAccessDate = FileTime(pAttributes, u"LastAccessLow", u"LastAccessHigh");
  file.fCreationDate = {Number(pAttributes, u"CreationDate")};
  fTopFilesByFolder[TXMLUtils::ExactValue(pAttributes, u"Path", {})].push_back(fScan.fTopFiles->size());
  fScan.fTopFiles->push_back(std::move(file));
}

// The root comes into being with its first folder: by then its kind and path are known.
void TXMLTreeBuilder::CreateRoot() {
  std::u16string_view path = fRootPath;
  TXMLParseHelper::ParseXMLProtocol(path);
  if (path.empty()) path = fPath;
  if (fDelimiter == 0) fDelimiter = path.starts_with(u'/') ? u'/' : u'\\';
  const TRef<IHierarchicalRoot> root = fTarget.CreateRootForLoading(path, fDelimiter);
  fRoot = TRef<TCustomRoot>(dynamic_cast<TCustomRoot*>(root.get()));
}

// --- folders -------------------------------------------------------------------------------------------------------

void TXMLTreeBuilder::BeginFolder(TXMLAttributeSpan pAttributes) {
  if (fTreeDone) Fail("A root has one top folder only");
  TOpenFolder folder;
  const std::u16string path = TXMLUtils::ExactValue(pAttributes, u"fullpath", {});
  folder.fIsFilesNode = Number(pAttributes, u"IsFilesNode", INT64_MIN) != 0;
  if (path.empty()) Fail("A folder has no fullpath");
  if (fOpen.empty()) {
    if (folder.fIsFilesNode) Fail("The top folder is the files of a folder");
    fPath = path;
    CreateRoot();
    folder.fNode = fRoot->BeginLoading();
  } else {
    TOpenFolder& parent = fOpen.back();
    if (parent.fIsFilesNode) Fail("There is a folder in the files of " + ToQuotedDisplay(fPath));
    if (folder.fIsFilesNode && parent.fNode->GetFilesNode())
      Fail("The files of " + ToQuotedDisplay(fPath) + " are there twice");
    const std::u16string_view name = folder.fIsFilesNode ? std::u16string_view() : NameIn(parent, path);
    folder.fNode = parent.fNode->AddLoadedChild(name, folder.fIsFilesNode);
    if (!folder.fIsFilesNode) fPath = path;
  }
  folder.fPathLength = fPath.size();
  if (const auto files = fTopFilesByFolder.find(fPath); !folder.fIsFilesNode && files != fTopFilesByFolder.end())
    for (const size_t index : files->second) (*fScan.fTopFiles)[index].fParentFolder = folder.fNode;
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
  values.fFolders = Number(pAttributes, u"Folders");
  values.fCompression = static_cast<TCompressionStates>(Number(pAttributes, u"Compression", 0, UINT8_MAX));
}

void TXMLTreeBuilder::BeginSizeArray(bool pIsUsers) {
  TOpenFolder& folder = OpenFolder(pIsUsers ? "begin of 'TUserSizeArray'" : "begin of 'TExtensionSizeArray'");
  folder.fHasStatistics = true;
  TFolderStatistics& statistics = folder.fValues.fStatistics;
  if (pIsUsers) {
    fScan.fHasUsers = true;
    fSizeArray = statistics.fUsers = MakeRef<TUserSizeArray>();
  } else {
    fScan.fHasExtensions = true;
    fSizeArray = statistics.fExtensions = MakeRef<TExtensionSizeArray>();
  }
}

void TXMLTreeBuilder::AddItem(TXMLAttributeSpan pAttributes) {
  if (!fSizeArray) return;  // an item of something else
  fSizeArray->Add(TXMLUtils::ExactValue(pAttributes, u"name", {}), Sizes(pAttributes));
}

void TXMLTreeBuilder::ReadFileAges(TXMLAttributeSpan pAttributes) {
  TOpenFolder& folder = OpenFolder("begin of 'FileAgeDistribution'");
  if (folder.fValues.fStatistics.fAges) return;
  folder.fHasStatistics = true;
  if (!fFileAges) {
    std::vector<std::pair<std::u16string, std::u16string>> attributes;
    for (const XML::TXMLAttribute& attribute : pAttributes) attributes.emplace_back(attribute.fName, u"");
    try {
      fFileAges = TFileAges::CreateFromXML(attributes);
    } catch (const EInvalidArgumentValue& error) {
      Fail(error.what());
    }
    for (int i = 0; i < fFileAges->GetCount(); ++i)
      fFileAgesNames.push_back(u"Days_" + FromUtf8(std::to_string(fFileAges->GetItem(i))));
    fScan.fFileAges = fFileAges;
  }
  auto ages = MakeRef<TFileAgeDistribution>(fFileAges, fScan.fFileAgesDateType);
  for (size_t i = 0; i < fFileAgesNames.size(); ++i) {
    std::u16string_view rest = TXMLUtils::GetValueFromAttributeByQName(pAttributes, fFileAgesNames[i], u"0 0 0");
    int64_t numbers[3] = {};
    for (int64_t& number : numbers) {
      const size_t end = std::min(rest.find(u' '), rest.size());
      number = Integer(rest.substr(0, end), "FileAgeDistribution", 0, INT64_MAX);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    const TBasicSizeValues values{numbers[0], numbers[1], numbers[2]};
    if (!values.IsZero()) ages->Add(static_cast<int>(i), values);
  }
  folder.fValues.fStatistics.fAges = ages;
}

// --- the end -------------------------------------------------------------------------------------------------------

TRef<IHierarchicalRoot> TXMLTreeBuilder::Finish() {
  if (!fTreeDone) throw Vantrel::XML::EXMLError("The file holds no folder", 1, 1);
  if (fPatterns && fPatterns->Count() > 0) fScan.fFilter = MakeRef<TPatternFilter>(fPatterns);
  if (fScan.fTopFiles) std::erase_if(*fScan.fTopFiles, [](const TTopSizeEntry& pFile) { return !pFile.fParentFolder; });
  fRoot->EndLoading(fScan);
  TRef<TCustomRoot> root;
  root.swap(fRoot);
  return root;
}

}  // namespace Vantrel::XML
