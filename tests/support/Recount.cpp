#include "tests/support/Recount.h"

#include <algorithm>
#include <tuple>

#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileAges.h"
#include "model/tree/FileTable.h"
#include "platform/text/Text.h"

namespace Vantrel::Testing {

namespace {

// An entry with the paths of all folders above it.
struct TFlatEntry {
  const TMemoryEntry* fEntry;
  std::u16string fPath;
  std::vector<std::u16string> fFolders;
};

std::vector<TFlatEntry> Flatten(const TMemoryEntry& pTop, const TRecountSettings& pSettings) {
  std::vector<TFlatEntry> entries{{&pTop, pSettings.fPath, {}}};
  for (size_t i = 0; i < entries.size(); ++i) {
    const TFlatEntry folder = entries[i];
    if (!folder.fEntry->IsFolder() || folder.fEntry->fVanished || !folder.fEntry->fCanDescend) continue;
    int listed = 0;
    for (const TMemoryEntry& child : folder.fEntry->fChildren) {
      if (child.fRemoved) continue;
      if (folder.fEntry->fFailAtNext != 0 && ++listed >= folder.fEntry->fFailAtNext) break;
      TFlatEntry flat{&child, folder.fPath + pSettings.fDelimiter + child.fName, folder.fFolders};
      flat.fFolders.push_back(folder.fPath);
      entries.push_back(std::move(flat));
    }
  }
  return entries;
}

std::u16string ExtensionKey(const std::u16string& pName) {
  const size_t dot = pName.rfind(u'.');
  if (dot == std::u16string::npos || dot + 1 == pName.size()) return u"<no extension>";
  std::u16string key = pName.substr(dot, 33);
  for (char16_t& c : key)
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
  return key;
}

int AgeInterval(const TEntryValues& pValues, const TRecountSettings& pSettings) {
  const TKivFileTime date = pSettings.fAgesDateType == TDateType::dtLastAccess ? pValues.fLastAccessDate
                            : pSettings.fAgesDateType == TDateType::dtCreation ? pValues.fCreationDate
                                                                               : pValues.fLastChangeDate;
  const int64_t age = pSettings.fNow.fTicks - date.fTicks;
  const auto last = static_cast<int>(pSettings.fAgeBounds.size()) - 1;
  for (int i = 0; i < last; ++i)
    if (age <= pSettings.fAgeBounds[static_cast<size_t>(i)] * TKivFileTime::kTicksPerDay) return i;
  return last;
}

void RaiseDates(TRecountedFolder& pFolder, const TEntryValues& pValues) {
  pFolder.fLastAccessDate = std::max(pFolder.fLastAccessDate, pValues.fLastAccessDate);
  pFolder.fLastChangeDate = std::max(pFolder.fLastChangeDate, pValues.fLastChangeDate);
}

void CountFile(TRecountedFolder& pFolder, const TFlatEntry& pFile, const TRecountSettings& pSettings) {
  const TEntryValues& values = pFile.fEntry->fValues;
  TBasicSizeValues sizes;
  sizes.fSize = values.fSize;
  sizes.fAllocated = values.fAllocated;
  sizes.fFiles = 1;
  pFolder.fValues += sizes;
  pFolder.fValues.fCompression |= (values.fAttributes & kAttributeCompressed) != 0 ? compr_yes : compr_no;
  pFolder.fOwners[pFile.fEntry->fOwner.empty() ? u"<unknown owner>" : pFile.fEntry->fOwner] += sizes;
  pFolder.fExtensions[ExtensionKey(pFile.fEntry->fName)] += sizes;
  pFolder.fAges[AgeInterval(values, pSettings)] += sizes;
  pFolder.fLongPaths |= pFile.fPath.size() >= pSettings.fLongPathLength;
  RaiseDates(pFolder, values);
}

std::map<std::u16string, TBasicSizeValues> ReadArray(const TRef<ICustomAssocSizeArray>& pArray) {
  std::map<std::u16string, TBasicSizeValues> records;
  if (!pArray) return records;
  for (const std::u16string& key : pArray->GetKeysSorted(TColumn::mdSize)) pArray->Find(key, records[key]);
  return records;
}

TRecountedFolder ReadFolder(IFolderData& pFolder, TDateType pAgesDateType) {
  TRecountedFolder read;
  read.fValues = pFolder.GetValues();
  read.fLastAccessDate = pFolder.GetLastAccessDate();
  read.fLastChangeDate = pFolder.GetLastChangeDate();
  read.fLongPaths = (pFolder.GetFolderState() & fsContainsLongPaths) != 0;
  read.fHasFilesNode = pFolder.GetFilesNode() != nullptr;
  read.fOwners = ReadArray(pFolder.GetUserSizeArray());
  read.fExtensions = ReadArray(pFolder.GetExtensionSizeArray());
  if (TRef<IFileAgeDistribution> ages = pFolder.GetFileAgeDistribution(pAgesDateType))
    for (int i = 0; i < ages->GetFileAges()->GetCount(); ++i)
      if (TBasicSizeValues record = ages->GetRecord(i); !record.IsZero()) read.fAges[i] = record;
  for (const TRef<IHierarchicalElement>& file : pFolder.FindFiles())
    read.fOwnFiles.emplace(file->GetObjectName(), file->GetSize());
  return read;
}

std::string Text(int64_t pValue) {
  return std::to_string(pValue);
}
std::string Text(const TBasicSizeValues& pValues) {
  return Text(pValues.fSize) + "/" + Text(pValues.fAllocated) + "/" + Text(pValues.fFiles);
}
std::string Text(const TSizeValues& pValues) {
  return Text(static_cast<const TBasicSizeValues&>(pValues)) + "/" + Text(pValues.fFolders) + " folders/compression " +
         Text(pValues.fCompression);
}
std::string Text(TKivFileTime pTime) {
  return Text(pTime.fTicks);
}
std::string Text(const std::u16string& pText) {
  return ToUtf8(pText);
}
template <class TKey, class TValue>
std::string Text(const std::map<TKey, TValue>& pMap) {
  std::string text = "{";
  for (const auto& [key, value] : pMap) text += Text(key) + ": " + Text(value) + ", ";
  return text + "}";
}

}  // namespace

TRecount RecountStorage(const TMemoryEntry& pTop, const TRecountSettings& pSettings) {
  TRecount recount;
  for (const TFlatEntry& entry : Flatten(pTop, pSettings)) {
    if (!entry.fEntry->IsFolder()) {
      for (const std::u16string& folder : entry.fFolders) CountFile(recount[folder], entry, pSettings);
      recount[entry.fFolders.back()].fOwnFiles[entry.fEntry->fName] = entry.fEntry->fValues.fSize;
      continue;
    }
    TRecountedFolder& own = recount[entry.fPath];
    if (!pSettings.fFolderDateBasedOnFilesOnly) RaiseDates(own, entry.fEntry->fValues);
    for (const std::u16string& folder : entry.fFolders) {
      ++recount[folder].fValues.fFolders;
      if (!pSettings.fFolderDateBasedOnFilesOnly) RaiseDates(recount[folder], entry.fEntry->fValues);
    }
  }
  for (auto& [path, folder] : recount) folder.fHasFilesNode = folder.fValues.fFolders > 0 && !folder.fOwnFiles.empty();
  return recount;
}

TRecount ReadTree(IFolderData& pTop, TDateType pAgesDateType) {
  TRecount recount;
  std::vector<TRef<IFolderData>> stack{TRef<IFolderData>(&pTop)};
  while (!stack.empty()) {
    TRef<IFolderData> folder = std::move(stack.back());
    stack.pop_back();
    recount[folder->GetFullPath()] = ReadFolder(*folder, pAgesDateType);
    for (TRef<IFolderData>& child : folder->FindSubFolders())
      if (!child->IsFileGroup()) stack.push_back(std::move(child));
  }
  return recount;
}

std::string Difference(const TRecount& pExpected, const TRecount& pActual) {
  std::string text;
  int lines = 0;
  auto line = [&](const std::u16string& pPath, const std::string& pWhat) {
    if (++lines <= 12) text += ToUtf8(pPath) + ": " + pWhat + "\n";
  };
  for (const auto& [path, actual] : pActual)
    if (!pExpected.contains(path)) line(path, "not in the storage");
  for (const auto& [path, expected] : pExpected) {
    const auto found = pActual.find(path);
    if (found == pActual.end()) {
      line(path, "not in the tree");
      continue;
    }
    auto compare = [&, where = &path](const char* pName, const auto& pWanted, const auto& pGot) {
      if (!(pWanted == pGot)) line(*where, std::string(pName) + " is " + Text(pGot) + ", should be " + Text(pWanted));
    };
    const TRecountedFolder& actual = found->second;
    compare("sizes", expected.fValues, actual.fValues);
    compare("last access", expected.fLastAccessDate, actual.fLastAccessDate);
    compare("last change", expected.fLastChangeDate, actual.fLastChangeDate);
    compare("long paths", expected.fLongPaths, actual.fLongPaths);
    compare("[Files] node", expected.fHasFilesNode, actual.fHasFilesNode);
    compare("owners", expected.fOwners, actual.fOwners);
    compare("extensions", expected.fExtensions, actual.fExtensions);
    compare("ages", expected.fAges, actual.fAges);
    compare("own files", expected.fOwnFiles, actual.fOwnFiles);
  }
  return text;
}

std::vector<std::pair<int64_t, std::u16string>> LargestFiles(const TMemoryEntry& pTop,
                                                             const TRecountSettings& pSettings, size_t pCount) {
  std::vector<std::pair<int64_t, std::u16string>> files;
  for (const TFlatEntry& entry : Flatten(pTop, pSettings))
    if (!entry.fEntry->IsFolder()) files.emplace_back(entry.fEntry->fValues.fSize, entry.fPath);
  std::sort(files.begin(), files.end(), [](const auto& pA, const auto& pB) {
    return std::tuple(-pA.first, pA.second.size(), pA.second) < std::tuple(-pB.first, pB.second.size(), pB.second);
  });
  files.resize(std::min(files.size(), pCount));
  return files;
}

}  // namespace Vantrel::Testing
