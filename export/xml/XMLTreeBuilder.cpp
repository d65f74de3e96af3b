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

// Takes an unfinished tree apart. Otherwise its memory would never be freed.
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
  if (!TXMLUtils::TryReadInteger(TXMLUtils::Trimmed(pText), value))
    Fail(std::string(pWhat) + " is no whole number: " + ToQuotedDisplay(pText.substr(0, 100)));
  if (value < pLeast || value > pMost) Fail(std::string(pWhat) + " is out of range: " + std::to_string(value));
  return value;
}

int64_t TXMLTreeBuilder::Number(TXMLAttributeSpan pAttributes, std::u16string_view pName, int64_t pLeast,
                                int64_t pMost) const {
  const std::u16string_view text = TXMLUtils::GetValueFromAttributeByQName(pAttributes, pName, u"0");
  int64_t value = 0;
  // Reads the number first without trimming, and without making the name's text for a message that is rarely needed.
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
  return {Number(pAttributes, u"Size", 0, kMostOfAnything), Number(pAttributes, u"Allocated", 0, kMostOfAnything),
          Number(pAttributes, u"Files", 0, kMostOfAnything)};
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
  using enum TScanFileElement;
  // Attributes are searched one by one, so a million of them would take hours.
  constexpr size_t kMostAttributes = 1000;
  if (pAttributes.size() > kMostAttributes)
    Fail("An element has " + std::to_string(pAttributes.size()) + " attributes; no scan file has so many");
  fText.clear();
  fEscaped = TXMLUtils::GetValueFromAttributeByQName(pAttributes, TXMLUtils::kEscapedSuffix, {});
  const TScanFileElement element = ElementOf(pName);
  if (!fSeenRoot && element != elRoot) Fail("The document is no scan file: it begins with " + ToQuotedDisplay(pName));
  switch (element) {
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
    case elErrorMessage:
      return BeginError(pAttributes);
    default:
      return BeginHeaderElement(element, pAttributes);
  }
}

void TXMLTreeBuilder::BeginHeaderElement(TScanFileElement pElement, TXMLAttributeSpan pAttributes) {
  using enum TScanFileElement;
  switch (pElement) {
    case elRoot:
      return BeginRoot(pAttributes);
    case elTopSizeList:
      if (!fScan.fTopFiles) fScan.fTopFiles.emplace();  // a second list extends the first
      return;
    case elTopFile:
      return ReadTopFile(pAttributes);
    case elDoCreateFileAges:
      fScan.fFileAgesDateType =
          static_cast<TDateType>(Number(pAttributes, u"FileAgesDateType", 0, static_cast<int64_t>(TDateType::dtNone)));
      return;
    case elPatternList:
    case elPattern:
      return ReadPatternElement(pElement, pAttributes);
    default:
      return;
  }
}

void TXMLTreeBuilder::EndElement(std::u16string_view pName) {
  using enum TScanFileElement;
  const TScanFileElement element = ElementOf(pName);
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
    case elErrorMessage:
      EndError();
      break;
    case elOwner:
      OpenFolder("end of 'Owner'").fValues.fOwnerKey = InternKey(ExactText());
      break;
    default:
      if (fOpen.empty()) ReadHeaderText(element);
  }
  fText.clear();
}

void TXMLTreeBuilder::ReadHeaderText(TScanFileElement pElement) {
  using enum TScanFileElement;
  switch (pElement) {
    case elPath:
      fRootPath = TXMLUtils::HtmlDecode(ExactText());
      break;
    case elTitle:
      fScan.fTitle = TXMLUtils::HtmlDecode(ExactText());
      break;
    case elDate:
      // Older files hold the date in the format of a language.
      TryParseIso(ToUtf8(TXMLUtils::Trimmed(fText)), fScan.fScanTimeStamp);
      break;
    case elDateISO:
      if (const auto date = TXMLUtils::Trimmed(fText);
          !date.empty() && !TryParseIso(ToUtf8(date), fScan.fScanTimeStamp))
        Fail("DateISO is no date: " + ToQuotedDisplay(fText.substr(0, 100)));
      break;
    case elExcludedObjects:
      fScan.fExcludedObjects = Integer(fText, "ExcludedObjects", 0, kMostOfAnything);
      break;
    case elFileAgesDateType:
      fScan.fFileAgesDateType =
          static_cast<TDateType>(Integer(fText, "FileAgesDateType", 0, static_cast<int64_t>(TDateType::dtNone)));
      break;
    case elTerminated:
    case elIsFullExport:
    case elIsCompared:
      return ReadWholeness(pElement);
    default:
      return ReadStorage(pElement);
  }
}

void TXMLTreeBuilder::ReadStorage(TScanFileElement pElement) {
  using enum TScanFileElement;
  auto number = [&](std::string_view pWhat) { return Integer(fText, pWhat, 0, kMostOfAnything); };
  switch (pElement) {
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
    default:
      break;
  }
}

void TXMLTreeBuilder::ReadWholeness(TScanFileElement pElement) {
  using enum TScanFileElement;
  auto boolean = [&](std::string_view pWhat) { return Integer(fText, pWhat, INT64_MIN, INT64_MAX) != 0; };
  switch (pElement) {
    case elTerminated:
      fScan.fWasCancelled = boolean("Terminated");
      if (fScan.fWasCancelled)
        RefuseToCompare(
            "holds a scan that was stopped before its end.\r\n\r\n"
            "Only whole scans can be used for comparison.");
      break;
    case elIsFullExport:
      fScan.fIsFullExport = boolean("IsFullExport");
      if (!fScan.fIsFullExport)
        RefuseToCompare(
            "includes information for directories limited to a certain directory level.\r\n\r\n"
            "Only exports of the full directory tree can be used for comparison. To get a full export, "
            "activate the option \"Tools > Options > Export > XML > Full directory tree\".");
      break;
    case elIsCompared:
      if (boolean("IsCompared"))
        RefuseToCompare(
            "contains data of a previous comparison.\r\n\r\n"
            "Exports containing comparison data cannot be used for a second comparison.");
      break;
    default:
      break;
  }
}

void TXMLTreeBuilder::RefuseToCompare(std::string_view pReason) const {
  if (fPurpose != TPurpose::puCompare) return;
  throw EScanFileError("The XML file " + ToQuotedDisplay(fName) + " " + std::string(pReason));
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

char16_t TXMLTreeBuilder::DelimiterFor(std::u16string_view pPath) const {
  if (fDelimiter != 0) return fDelimiter;
  return pPath.starts_with(u'/') ? u'/' : u'\\';
}

void TXMLTreeBuilder::ReadPatternElement(TScanFileElement pElement, TXMLAttributeSpan pAttributes) {
  using namespace PatternMatching;
  TElementAttributes attributes;
  for (const XML::TXMLAttribute& attribute : pAttributes) {
    if (TXMLUtils::IsEscapedForm(attribute.fName)) continue;
    attributes.emplace_back(attribute.fName, TXMLUtils::ExactValue(pAttributes, attribute.fName, {}));
  }
  if (!fPatterns) {
    // Paths in patterns use the root's delimiter.
    std::u16string_view path = fRootPath;
    TXMLParseHelper::ParseXMLProtocol(path);
    fPatterns = MakeRef<TPatternList>(DelimiterFor(path));
  }
  try {
    if (pElement == TScanFileElement::elPatternList)
      fPatterns->ReadProperties(attributes);
    else
      fPatterns->ReadFromXML(attributes);
  } catch (const EInvalidArgumentValue& error) {
    Fail(error.what());
  }
}

void TXMLTreeBuilder::ReadTopFile(TXMLAttributeSpan pAttributes) {
  if (!fScan.fTopFiles) fScan.fTopFiles.emplace();
  TTopSizeEntry file;
  file.fName = TXMLUtils::ExactValue(pAttributes, u"name", {});
  file.fSize = Number(pAttributes, u"Size", 0, kMostOfAnything);
  file.fAllocated = Number(pAttributes, u"Allocated", 0, kMostOfAnything);
  file.fAttributes = static_cast<TAttributes>(Number(pAttributes, u"FileAttributes", 0, UINT32_MAX));
  file.fLastChangeDate = FileTime(pAttributes, u"LastChangeLow", u"LastChangeHigh");
  file.fLastAccessDate = FileTime(pAttributes, u"LastAccessLow", u"LastAccessHigh");
  file.fCreationDate = {Number(pAttributes, u"CreationDate")};
  fTopFiles.Add(std::move(file), TXMLUtils::ExactValue(pAttributes, u"Path", {}));
}

// Creates the root with its first folder. By then the root's kind and path are known.
void TXMLTreeBuilder::CreateRoot() {
  std::u16string_view path = fRootPath;
  TXMLParseHelper::ParseXMLProtocol(path);
  if (path.empty()) path = fPath;
  fDelimiter = DelimiterFor(path);
  path = WithoutTrailingDelimiter(path, fDelimiter);
  const TRef<IHierarchicalRoot> root = fTarget.CreateRootForLoading(path, fDelimiter);
  fRoot = TRef<TCustomRoot>(dynamic_cast<TCustomRoot*>(root.get()));
}

// --- the end -------------------------------------------------------------------------------------------------------

TRef<IHierarchicalRoot> TXMLTreeBuilder::Finish() {
  if (!fTreeDone) throw Vantrel::XML::EXMLError("The file holds no folder", 1, 1);
  if (fPatterns && fPatterns->Count() > 0) fScan.fFilter = MakeRef<TPatternFilter>(fPatterns);
  if (fScan.fTopFiles) {
    const TRef<IFolderData> top = fRoot->GetTopFolder();
    *fScan.fTopFiles = fTopFiles.Take(static_cast<TCustomFolderData&>(*top), fPath, fDelimiter);
  }
  fRoot->EndLoading(fScan);
  TRef<TCustomRoot> root;
  root.swap(fRoot);
  return root;
}

}  // namespace Vantrel::XML
