#include "export/json/NcduReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/unordered/unordered_flat_set.hpp>
#include <utility>
#include <vector>

#include "platform/text/Text.h"

namespace Vantrel::JSON {

using namespace Opening;

namespace {

// The number of a device or file. Numbers with 64 bits do not fit into the parser's whole numbers.
double Identity(const TScalar& pNumber) {
  if (const auto* large = std::get_if<double>(&pNumber)) return *large;
  const auto* number = std::get_if<int64_t>(&pNumber);
  return number ? static_cast<double>(*number) : 0;
}

// The brackets between items are taken here, and only items go to the parser. Folders nest as deep as the tree, and the
// parser would take a piece of the thread's stack for each.
class TNcduReader final : public IObjectHandler {
 public:
  TNcduReader(TValues& pValues, IScanRoots& pTarget) : fValues(pValues), fTree(pTarget) {}

  TOpenedScan Read();
  void End(const TObject& pObject) override;

 private:
  enum class TExpected : uint8_t { exHead, exFolder, exItem };

  void ReadHead();
  void ReadItems();
  void ReadObject(TExpected pExpected);
  void Expect(char pByte, const char* pWhere);
  void AddItem(const TObject& pItem);
  void BeginFolder(const TObject& pItem);
  TLoadedEntry Entry(const TObject& pItem);
  // Without a device of its own, an item is on that of its folder.
  double Device(const TObject& pItem) const {
    if (pItem.Has("dev")) return Identity(*pItem.Find("dev"));
    return fDevices.empty() ? 0 : fDevices.back();
  }
  int64_t ShareOfLinks(const TObject& pItem, int64_t pAllocated);

  TValues& fValues;
  TLoadedTree fTree;
  TLoadedScan fScan;
  TExpected fExpected = TExpected::exHead;
  std::u16string fName;
  std::vector<double> fDevices;                                 // of the open folders
  boost::unordered_flat_set<std::pair<double, double>> fLinks;  // device and number of files with several names
};

void TNcduReader::Expect(char pByte, const char* pWhere) {
  const char next = fValues.Peek();
  if (next == 0 && !fValues.WasCancelled()) fValues.Fail("The file ends too early");
  if (next != pByte && !fValues.WasCancelled()) fValues.Fail(fmt::format("\"{}\" was expected {}", pByte, pWhere));
  fValues.Take();
}

void TNcduReader::ReadObject(TExpected pExpected) {
  fExpected = pExpected;
  fValues.ReadObject(*this);
}

void TNcduReader::ReadHead() {
  Expect('[', "at the beginning");
  if (const int64_t version = fValues.ReadNumber(); version != 1)
    fValues.Fail(fmt::format("The file has version {} of ncdu's format, and this program reads version 1", version));
  Expect(',', "after the version");
  fValues.ReadNumber();  // minor versions only add members
  Expect(',', "after the version");
  ReadObject(TExpected::exHead);
  Expect(',', "before the tree");
}

void TNcduReader::ReadItems() {
  Expect('[', "before the top folder");
  ReadObject(TExpected::exFolder);
  while (fTree.OpenFolders() > 0 && !fValues.WasCancelled()) {
    if (fValues.Peek() == ']') {
      fValues.Take();
      try {
        fTree.EndFolder();
      } catch (const EFileError& error) {
        fValues.Fail(error.what());
      }
      fDevices.pop_back();
      continue;
    }
    Expect(',', "between two items");
    const bool isFolder = fValues.Peek() == '[';
    if (isFolder) fValues.Take();
    ReadObject(isFolder ? TExpected::exFolder : TExpected::exItem);
  }
}

TOpenedScan TNcduReader::Read() {
  ReadHead();
  ReadItems();
  Expect(']', "at the end");
  if (!fValues.WasCancelled() && fValues.Peek() != 0) fValues.Fail("There is something after the end");
  if (fValues.WasCancelled()) return {};
  TOpenedScan opened;
  opened.fRoot = fTree.Finish(fScan);
  return opened;
}

void TNcduReader::End(const TObject& pObject) {
  switch (fExpected) {
    case TExpected::exHead:
      fScan.fScanTimeStamp = TKivFileTime::FromUnix(pObject.Number("timestamp", 0, kMostOfAnything), 0);
      return;
    case TExpected::exFolder:
      return BeginFolder(pObject);
    case TExpected::exItem:
      return AddItem(pObject);
  }
}

// The blocks of a file are shared among its names, as in a scan. Before minor version 2 their number is not told; then
// the first of the names has them.
int64_t TNcduReader::ShareOfLinks(const TObject& pItem, int64_t pAllocated) {
  const int64_t names = pItem.Number("nlink", 0, kMostOfAnything);
  if (names >= 2) return pAllocated / names;
  if (names == 1 || !pItem.Boolean("hlnkc", false) || !pItem.Has("ino")) return pAllocated;
  const bool isFirst = fLinks.emplace(Device(pItem), Identity(*pItem.Find("ino"))).second;
  return isFirst ? pAllocated : 0;
}

TLoadedEntry TNcduReader::Entry(const TObject& pItem) {
  constexpr int64_t kFileTypes = 0170000;  // in the mode
  constexpr int64_t kLink = 0120000;
  if (!pItem.Has("name")) throw EFileError("An item has no name");
  fName = FromNativeBytes(pItem.Text("name"));
  TLoadedEntry entry;
  entry.fName = fName;
  entry.fValues.fSize = pItem.Number("asize", 0, kMostOfAnything);
  entry.fValues.fAllocated = ShareOfLinks(pItem, pItem.Number("dsize", 0, kMostOfAnything));
  entry.fValues.fLastChangeDate = TKivFileTime::FromUnix(pItem.Number("mtime", 0, INT64_MAX), 0);
  if (pItem.Number("mtime", 0, INT64_MAX) == 0) entry.fValues.fLastChangeDate = {};
  if ((pItem.Number("mode", 0, INT64_MAX) & kFileTypes) == kLink)
    entry.fValues.fAttributes = kAttributeReparsePoint;
  else if (pItem.Boolean("notreg", false))
    entry.fValues.fAttributes = kAttributeDevice;
  return entry;
}

void TNcduReader::BeginFolder(const TObject& pItem) {
  constexpr const char16_t* kUnread = u"ncdu could not read it";
  TLoadedEntry entry = Entry(pItem);
  entry.fValues.fAttributes = kAttributeDirectory;
  fDevices.push_back(Device(pItem));
  if (fTree.HasTop())
    fTree.BeginFolder(entry);
  else
    fTree.BeginTop(fName, 0, entry);
  if (pItem.Boolean("read_error", false)) fTree.AddError(kUnread, false);
}

// What ncdu left out is counted as excluded. It does not tell whether that is a file or a folder.
void TNcduReader::AddItem(const TObject& pItem) {
  if (pItem.Has("excluded")) {
    ++fScan.fExcludedObjects;
    return;
  }
  fTree.AddFile(Entry(pItem));
  if (pItem.Boolean("read_error", false)) fTree.AddError(u"ncdu could not read " + fName, true);
}

}  // namespace

TOpenedScan ReadNcdu(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  TValues values(pSource, pProgress);
  return TNcduReader(values, pTarget).Read();
}

}  // namespace Vantrel::JSON
