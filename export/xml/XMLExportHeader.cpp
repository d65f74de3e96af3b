// The part of TCustomXMLExport that writes what comes before the folders: the scan, its filters and its largest files.

#include "export/xml/XMLExport.h"
#include "export/xml/XMLUtils.h"
#include "model/statistics/TopSizeList.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"

namespace Vantrel::Exporting {

using XML::TXMLAttributes;
using XML::TXMLUtils;

namespace {

void AddHalves(TXMLAttributes& pAttributes, std::string_view pLow, std::string_view pHigh, TKivFileTime pTime) {
  pAttributes.Add(pLow, TXMLUtils::LowHalf(pTime.fTicks));
  pAttributes.Add(pHigh, TXMLUtils::HighHalf(pTime.fTicks));
}

// Writes the elements of a pattern list.
class TPatternWriter : public PatternMatching::IElementWriter {
 public:
  explicit TPatternWriter(XML::TXMLFileStream& pStream) : fStream(pStream) {}
  void BeginElement(std::u16string_view pName, const PatternMatching::TElementAttributes& pAttributes) override {
    TXMLAttributes attributes;
    for (const auto& [name, value] : pAttributes) attributes.Add(ToUtf8(name), value);
    fNames.push_back(ToUtf8(pName));
    fStream.StartElement(fNames.back(), attributes);
  }
  void EndElement() override {
    fStream.EndElement(fNames.back());
    fNames.pop_back();
  }

 private:
  XML::TXMLFileStream& fStream;
  std::vector<std::string> fNames;
};

// The list is written separately for each type, so a reader of one type may ignore the other.
void WriteFilters(const IHierarchicalRoot& pRoot, XML::TXMLFileStream& pStream) {
  using namespace PatternMatching;
  const TRef<IScanFilter> filter = pRoot.GetScanFilter();
  const auto* patterns = dynamic_cast<const Vantrel::TPatternFilter*>(filter.get());
  if (patterns == nullptr) return;
  TPatternWriter writer(pStream);
  for (const TPatternType type : {TPatternType::ptyInclude, TPatternType::ptyExclude}) {
    const IPatterns& all = *patterns->GetPatterns();
    auto part = MakeRef<TPatternList>(all.GetPathDelimiter());
    part->SetEmptyPatternListMatchesAll(all.GetEmptyPatternListMatchesAll());
    for (const TRef<IPattern>& pattern : all.GetItems())
      if (pattern->GetPatternType() == type) part->Add(pattern);
    const char* name = type == TPatternType::ptyInclude ? "IncludePatterns" : "ExcludePatterns";
    pStream.StartElement(name);
    part->WriteToXML(writer);
    pStream.EndElement(name);
  }
}

void WriteTopSizeListToXML(const ITopSizeList& pList, XML::TXMLFileStream& pStream) {
  TXMLAttributes attributes;
  pStream.StartElement("TTopSizeFileList");
  for (const TTopSizeEntry& listed : pList.GetSnapshot()) {
    const TEntryView file(listed);
    attributes.Clear();
    attributes.Add("name", file.GetObjectName());
    attributes.Add("Path", file.GetParentPath());
    attributes.Add("Size", file.GetSize());
    attributes.Add("Allocated", file.GetAllocated());
    attributes.Add("FileAttributes", file.GetAttributes());
    AddHalves(attributes, "LastChangeLow", "LastChangeHigh", file.GetLastChangeDate());
    AddHalves(attributes, "LastAccessLow", "LastAccessHigh", file.GetLastAccessDate());
    attributes.Add("CreationDate", file.GetCreationDate().fTicks);
    pStream.AddElement("TopFile", attributes);
  }
  pStream.EndElement("TTopSizeFileList");
}

}  // namespace

void TCustomXMLExport::WriteHeader(IHierarchicalRoot& pRoot, XML::TXMLFileStream& pStream) const {
  const TStorageInformation storage = pRoot.GetStorageInformation();
  pStream.AddElement("Application", std::string_view(fProgramName));
  pStream.AddElement("Version", std::string_view(fVersion));
  pStream.AddElement("DateISO", std::string_view(FormatIsoUtc(pRoot.GetScanTimeStamp())));
  pStream.AddElement("Path", TXMLUtils::HtmlEncode(pRoot.GetPath()));
  WriteFilters(pRoot, pStream);
  pStream.AddElement("ExcludedObjects", pRoot.GetProgress().fExcludedObjects);
  pStream.AddElement("Filesystem", storage.fFileSystem);
  pStream.AddElement("BytesPerCluster", storage.fBytesPerCluster);
  pStream.AddElement("FoldersCount", pRoot.GetTopFolder()->GetFolders());
  pStream.AddBooleanElement("IsCompared", pRoot.GetComparison() != nullptr);
  pStream.AddElement("Title", TXMLUtils::HtmlEncode(pRoot.GetTitle()));
  pStream.AddElement("TotalBytesOnDrive", storage.fTotalBytes);
  pStream.AddElement("FreeBytesOnDrive", storage.fFreeBytes);
  const TDateType dateType = pRoot.GetScanConfiguration()->GetFileAgesDateType();
  TXMLAttributes attributes;
  attributes.Add("FileAgesDateType", static_cast<int>(dateType));
  pStream.AddBooleanElement("DoCreateFileAges", dateType != TDateType::dtNone, attributes);
  if (const TRef<ITopSizeList> list = pRoot.GetTopSizeList()) WriteTopSizeListToXML(*list, pStream);
  const TRootStates state = pRoot.GetState();
  if (state & rsCancelled) pStream.AddBooleanElement("Terminated", true);
  // A tree loaded from a partial file lacks what the file left out.
  pStream.AddBooleanElement("IsFullExport", IsFullExport() && (state & rsIsPartialImport) == 0);
}

}  // namespace Vantrel::Exporting
