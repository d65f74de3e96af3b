// Compares writing a scanned tree as CSV with writing the same bytes.

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "automation/actions/ExportFile.h"
#include "bench/ExportBenchmark.h"
#include "bench/Timing.h"
#include "export/text/DelimitedExport.h"

// csv PATH [ROUNDS]: scans the path, then writes it as CSV and writes the same bytes, in turn, round after round. It
// does so with the default settings, and with every single file. The file is in the current folder. Ends with 1 when
// the target is missed.

namespace {

using namespace Vantrel;
using namespace Vantrel::Exporting;
using namespace Vantrel::Bench;
using PostScanActions::TExportFile;

constexpr double kMost = 4.0;
const std::u16string kFile = u"bench-csv.csv";
const std::u16string kCopy = u"bench-csv.copy";

void WriteCSV(IHierarchicalRoot& pRoot, const TMediaSettings& pSettings) {
  TExportFile file(kFile, [] { return false; });
  TCSVExport(pSettings).Export(pRoot, file);
  file.Commit();
}

bool Compare(const char* pWhat, IHierarchicalRoot& pRoot, const TMediaSettings& pSettings, int pRounds) {
  WriteCSV(pRoot, pSettings);
  const std::string bytes = BytesOf(kFile);
  std::printf("%s: %td rows, %.1f MB\n", pWhat, std::count(bytes.begin(), bytes.end(), '\n'),
              static_cast<double>(bytes.size()) / 1e6);
  std::vector<double> writes;
  std::vector<double> copies;
  double writeWork = 0;
  double copyWork = 0;
  for (int round = 0; round < pRounds; ++round) {
    const double start = ProcessorSeconds();
    copies.push_back(Seconds([&] { WriteBytes(kCopy, bytes); }));
    const double between = ProcessorSeconds();
    writes.push_back(Seconds([&] { WriteCSV(pRoot, pSettings); }));
    copyWork += between - start;
    writeWork += ProcessorSeconds() - between;
  }
  std::printf("       processor time: %.4f against %.4f, ratio %.2f\n", writeWork / pRounds, copyWork / pRounds,
              writeWork / copyWork);
  return ReportMedians("seconds", writes, "writing the same bytes", copies, kMost);
}

bool Run(const std::u16string& pPath, int pRounds) {
  const TScannedPath scanned(pPath);
  TGlobalOptions options;
  TMediaSettings settings = TMediaOptions(options).Effective(TMediaType::mtCSV);
  bool met = Compare("folders", scanned.Root(), settings, pRounds);
  settings.fIncludedObjectTypes |= ioFiles;
  met = Compare("folders and files", scanned.Root(), settings, pRounds) && met;
  Remove(kFile);
  Remove(kCopy);
  return met;
}

}  // namespace

int main(int pCount, char** pArguments) {
  return RunOnPath("csv", pCount, pArguments, Run);
}
