#include "scan/ntfs/MftItemData.h"

#include "scan/files/LinkRules.h"

namespace Vantrel::Ntfs {

namespace {

constexpr size_t kNamesStep = 32;
constexpr uint8_t kDosNamespace = 2;
constexpr uint32_t kNameIsFolder = 1 << 28;
// The largest file that NTFS allows, with the largest clusters.
constexpr int64_t kLargestFile = int64_t{1} << 53;

void AddSize(int64_t& pSum, int64_t pSize, TMftItemData& pItem) {
  if (pSize < 0 || pSize > kLargestFile - pSum)
    pItem.fIsDamaged = true;
  else
    pSum += pSize;
}

void ParseStandardInformation(TBytes pValue, TMftItemData& pItem) {
  if (pValue.size() < 36) return;
  pItem.fCreationTime = NumberAt<int64_t>(pValue, 0);
  pItem.fLastWriteTime = NumberAt<int64_t>(pValue, 8);
  pItem.fLastAccessTime = NumberAt<int64_t>(pValue, 24);
  const auto attributes = NumberAt<uint32_t>(pValue, 32);
  pItem.fAttributes = attributes == ~uint32_t{0} ? kAttributesUnknown : attributes;
}

void ParseFileName(TBytes pValue, const TParseSettings& pSettings, TMftItemData& pItem) {
  if (pValue.size() < 66) return;
  const size_t length = size_t{2} * NumberAt<uint8_t>(pValue, 64);
  if (length > pValue.size() - 66) return;
  TMftItemName name;
  name.fParent = NumberAt<uint64_t>(pValue, 0);
  if (name.fParent != kNoReference && pSettings.fCompatible) name.fParent &= 0xFF'FFFF;
  name.fIsDos = NumberAt<uint8_t>(pValue, 65) == kDosNamespace;
  name.fText = pValue.subspan(66, length);
  if (name.fIsDos && pSettings.fSkipDosNames) return;
  pItem.AddName(name);
  if ((NumberAt<uint32_t>(pValue, 56) & kNameIsFolder) != 0) pItem.fAttributes |= kAttributeDirectory;
}

// Streams that the system makes for every such file, and that no program shows.
bool IsIgnoredStream(TBytes pName) {
  return BeginsWith(pName, u"Win32App_1") ||
         BeginsWith(pName, u"${3D0CE612-FDEE-43f7-8ACA-957BEC0CCBA0}.SyncRootIdentity");
}

bool CountsAsCompressed(const TMftAttribute& pData, bool pCompatible) {
  // Sparse files may have no compression unit and still tell what they really take.
  return pData.fCompressionUnit != 0 || (pData.fIsSparseOrCompressed && !pCompatible);
}

void ParseUnnamedData(const TMftAttribute& pData, bool pCompatible, TMftItemData& pItem) {
  if (pData.fIsResident) {
    AddSize(pItem.fSize, static_cast<int64_t>(pData.fValue.size()), pItem);
    pItem.fAllocated = 0;
    return;
  }
  AddSize(pItem.fSize, pData.fDataSize, pItem);
  if (CountsAsCompressed(pData, pCompatible))
    AddSize(pItem.fAllocated, pData.fCompressedSize, pItem);
  else if (!pCompatible || (pItem.fAttributes & kAttributeCompressed) == 0)
    AddSize(pItem.fAllocated, pData.fAllocatedSize, pItem);
}

void ParseNamedData(const TMftAttribute& pData, bool pCompatible, TMftItemData& pItem) {
  if (!pData.fIsResident && BeginsWith(pData.fName, u"WofCompressedData")) {
    pItem.fAttributes |= kAttributeCompressed;
    AddSize(pItem.fAllocated == 0 ? pItem.fAllocated : pItem.fADSSize, pData.fAllocatedSize, pItem);
    return;
  }
  pItem.fAttributes |= kAttributeHasStreams;
  if (pData.fIsResident) return;
  AddSize(pItem.fADSSize, CountsAsCompressed(pData, pCompatible) ? pData.fCompressedSize : pData.fAllocatedSize, pItem);
}

void ParseData(const TMftAttribute& pData, bool pCompatible, TMftItemData& pItem) {
  // A later part of a stream has no sizes of its own.
  if (!pCompatible && !pData.fIsResident && pData.fFirstCluster != 0) return;
  if (pData.fName.empty())
    ParseUnnamedData(pData, pCompatible, pItem);
  else if (!IsIgnoredStream(pData.fName))
    ParseNamedData(pData, pCompatible, pItem);
}

void ParseReparsePoint(const TMftAttribute& pReparse, TMftItemData& pItem) {
  if (pReparse.fValue.size() < 4) return;
  pItem.fReparseTag = NumberAt<uint32_t>(pReparse.fValue, 0);
  if (Enumerators::IsCloudTag(pItem.fReparseTag)) pItem.fAttributes |= kAttributeRecallOnDataAccess;
}

}  // namespace

void TMftItemData::AddName(const TMftItemName& pName) {
  // The long name takes the place of its short one.
  if (fNumberOfNames > 0 && fNames[fNumberOfNames - 1].fIsDos) --fNumberOfNames;
  if (fNumberOfNames == fNames.size()) fNames.resize(fNames.size() + kNamesStep);
  fNames[fNumberOfNames++] = pName;
}

void TMftItemData::Clear() {
  std::vector<TMftItemName> names;
  names.swap(fNames);
  *this = {};
  names.swap(fNames);
}

void TMftItemData::MoveNamesTo(std::vector<std::byte>& pTexts) {
  std::vector<TMftItemName> names(fNames.begin(), fNames.begin() + fNumberOfNames);
  size_t bytes = 0;
  for (const TMftItemName& name : names) bytes += name.fText.size();
  pTexts.reserve(bytes);  // the names point into it
  for (TMftItemName& name : names) {
    const size_t at = pTexts.size();
    pTexts.insert(pTexts.end(), name.fText.begin(), name.fText.end());
    name.fText = TBytes(pTexts.data() + at, name.fText.size());
  }
  fNames.swap(names);
}

void ParseItem(TBytes pRecord, const TRecordHeader& pHeader, const TParseSettings& pSettings, TMftItemData& pItem) {
  pItem.Clear();
  // The record itself tells best whether it is a folder's.
  const bool isFolder = (pHeader.fFlags & kRecordIsFolder) != 0 && !pSettings.fCompatible;
  if (isFolder) pItem.fAttributes = kAttributeDirectory;
  TAttributeWalk walk(pRecord, pHeader.fFirstAttribute);
  for (TMftAttribute attribute; walk.Next(attribute);) {
    switch (attribute.fType) {
      case kStandardInformation:
        ParseStandardInformation(attribute.fValue, pItem);
        if (isFolder) pItem.fAttributes |= kAttributeDirectory;
        break;
      case kFileName:
        ParseFileName(attribute.fValue, pSettings, pItem);
        break;
      case kData:
        if ((pItem.fAttributes & kAttributeDirectory) == 0) ParseData(attribute, pSettings.fCompatible, pItem);
        break;
      case kReparsePoint:
        ParseReparsePoint(attribute, pItem);
        break;
      case kAttributeList:
        break;  // the parts are found by their own records
      default:
        continue;
    }
    pItem.fTypes.set(attribute.fType - TMftItemData::kFirstType);
  }
}

namespace {

void MergeSize(int64_t& pBase, int64_t pExtension, bool pCompatible, TMftItemData& pItem) {
  if (pExtension <= 0) return;
  if (pCompatible) pBase = 0;
  AddSize(pBase, pExtension, pItem);
}

}  // namespace

void MergeItem(TMftItemData& pBase, const TMftItemData& pExtension, bool pCompatible) {
  if (pExtension.HasType(kStandardInformation)) {
    pBase.fCreationTime = pExtension.fCreationTime;
    pBase.fLastWriteTime = pExtension.fLastWriteTime;
    pBase.fLastAccessTime = pExtension.fLastAccessTime;
  }
  for (uint32_t i = 0; i < pExtension.fNumberOfNames; ++i) pBase.AddName(pExtension.Name(i));
  // One record holds the sizes of a stream. Several may hold alternate streams, which add up.
  MergeSize(pBase.fSize, pExtension.fSize, pCompatible, pBase);
  MergeSize(pBase.fAllocated, pExtension.fAllocated, pCompatible, pBase);
  MergeSize(pBase.fADSSize, pExtension.fADSSize, pCompatible, pBase);
  if (pExtension.fReparseTag != 0) pBase.fReparseTag = pExtension.fReparseTag;
  pBase.fIsDamaged |= pExtension.fIsDamaged;
  pBase.fAttributes = (pBase.fAttributes | pExtension.fAttributes) & ~kAttributesUnknown;
  pBase.fTypes |= pExtension.fTypes;
}

TMultiMftItemData::TMultiMftItemData(const TMftItemData& pItem, uint16_t pSequence)
    : fItem(pItem), fSequence(pSequence) {
  fItem.MoveNamesTo(fTexts);
}

}  // namespace Vantrel::Ntfs
