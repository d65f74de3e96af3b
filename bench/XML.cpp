// Compares writing scan files with writing the same bytes, and loading them with the bare parser.

#include <expat.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "bench/ExportBenchmark.h"
#include "bench/Timing.h"
#include "export/xml/XMLExport.h"
#include "export/xml/XMLReader.h"

// xml PATH [ROUNDS]: scans the path and measures in turn, round after round. Writing it as XML is compared with writing
// the same bytes. Loading the file is compared with the bare parser with empty callbacks. The loaded tree's memory is
// compared with the scanned one's. The file is in the current folder. Ends with 1 when a target is missed.

namespace {

using namespace Vantrel;
using namespace Vantrel::Bench;
using Vantrel::XML::TLoadedRoot;
using Vantrel::XML::TQZXMLReader;

constexpr double kMostWrite = 4.0;
constexpr double kMostLoad = 2.5;
constexpr double kMostMemory = 1.1;
const std::u16string kFile = u"bench-xml.xml";
const std::u16string kCopy = u"bench-xml.copy";

size_t HeapBytes() {
  malloc_trim(0);
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void ParseBare(const std::u16string& pPath) {
  const XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetElementHandler(
      parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
  XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
  std::ifstream file(ToNativeBytes(pPath), std::ios::binary);
  constexpr int kPiece = 64 * 1024;
  bool more = true;
  while (more) {
    file.read(static_cast<char*>(XML_GetBuffer(parser, kPiece)), kPiece);
    more = file.gcount() == kPiece;
    if (XML_ParseBuffer(parser, static_cast<int>(file.gcount()), !more) != XML_STATUS_OK) std::terminate();
  }
  XML_ParserFree(parser);
}

bool Run(const std::u16string& pPath, int pRounds) {
  const size_t before = HeapBytes();
  const TScannedPath scanned(pPath);
  IHierarchicalRoot& live = scanned.Root();
  const double liveMemory = static_cast<double>(HeapBytes() - before);
  Exporting::TCustomXMLExport xml({}, "bench", "1");
  ExportXMLFile(xml, live, kFile);
  const std::string bytes = BytesOf(kFile);
  std::printf("%lld files, %lld folders, %.1f MB of XML\n", static_cast<long long>(live.GetTopFolder()->GetFiles()),
              static_cast<long long>(live.GetTopFolder()->GetFolders()), static_cast<double>(bytes.size()) / 1e6);

  std::vector<double> writes, copies, loads, parses;
  double loadedMemory = 0;
  for (int round = 0; round < pRounds; ++round) {
    copies.push_back(Seconds([&] { WriteBytes(kCopy, bytes); }));
    writes.push_back(Seconds([&] { ExportXMLFile(xml, live, kFile); }));
    parses.push_back(Seconds([&] { ParseBare(kFile); }));
    const size_t heap = HeapBytes();
    TLoadedRoot loaded;
    loads.push_back(Seconds([&] { loaded = TQZXMLReader::ReadRootFromXMLFile(kFile, scanned.Roots()); }));
    loadedMemory = static_cast<double>(HeapBytes() - heap);
    loaded.fRoot->Dispose();
  }
  const bool met[] = {
      ReportMedians("write, seconds", writes, "writing the same bytes", copies, kMostWrite),
      ReportMedians("load, seconds", loads, "the bare parser", parses, kMostLoad),
      Report("memory of the loaded tree, MB", loadedMemory / 1e6, "the scanned tree", liveMemory / 1e6, kMostMemory)};
  Remove(kFile);
  Remove(kCopy);
  return std::all_of(std::begin(met), std::end(met), [](bool pMet) { return pMet; });
}

}  // namespace

int main(int pCount, char** pArguments) {
  return RunOnPath("xml", pCount, pArguments, Run);
}
