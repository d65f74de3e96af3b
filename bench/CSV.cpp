#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "automation/ExportFile.h"
#include "bench/Timing.h"
#include "export/DelimitedExport.h"
#include "model/ScanRoots.h"
#include "platform/Text.h"
#include "scan/ScanServices.h"

// csv PATH [ROUNDS]: scans the path, then holds writing it as CSV against writing the same bytes, in turn, round after
// round: with the settings as they are before anybody changes them, and with every single file. The file lies in the
// current folder. Ends with 1 when the target is missed.

namespace {

using namespace Kiv;
using namespace Kiv::Hierarchical::Exporting;
using namespace Vantrel;
using namespace Vantrel::Bench;
using PostScanActions::TExportFile;

constexpr double kMost = 4.0;
const std::u16string kFile = u"bench-csv.csv";
const std::u16string kCopy = u"bench-csv.copy";

void WriteCSV(IHierarchicalRoot& pRoot, const TMediaSettings& pSettings) {
  TExportFile file(kFile, [] { return false; });
  Text::TCSVExport(pSettings).Export(pRoot, file);
  file.Commit();
}

bool Compare(const char* pWhat, IHierarchicalRoot& pRoot, const TMediaSettings& pSettings, int pRounds) {
  WriteCSV(pRoot, pSettings);
  std::ifstream file(ToNativeBytes(kFile), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::printf("%s: %td rows, %.1f MB\n", pWhat, std::count(bytes.begin(), bytes.end(), '\n'),
              static_cast<double>(bytes.size()) / 1e6);
  std::vector<double> writes;
  std::vector<double> copies;
  double writeWork = 0;
  double copyWork = 0;
  for (int round = 0; round < pRounds; ++round) {
    const double start = ProcessorSeconds();
    copies.push_back(Seconds([&] {
      TOutputFile copy(kCopy);
      copy.Write(bytes);
      copy.Commit();
    }));
    const double between = ProcessorSeconds();
    writes.push_back(Seconds([&] { WriteCSV(pRoot, pSettings); }));
    copyWork += between - start;
    writeWork += ProcessorSeconds() - between;
  }
  std::printf("       processor time: %.4f against %.4f, ratio %.2f\n", writeWork / pRounds, copyWork / pRounds,
              writeWork / copyWork);
  return ReportMedians("seconds", writes, "writing the same bytes", copies, kMost);
}

int Run(const std::u16string& pPath, int pRounds) {
  const auto options = std::make_shared<TGlobalOptions>();
  const TRef<IScanRoots> roots = CreateScanRoots(ScanEngine::CreateScanServices(), options);
  const TRef<IHierarchicalRoot> root = roots->CreateRoot(pPath);
  root->Scan();
  while (!root->WaitForScan(1000)) {
  }
  TMediaSettings settings = TMediaOptions(*options).Effective(TMediaType::mtCSV);
  bool met = Compare("folders", *root, settings, pRounds);
  settings.fIncludedObjectTypes |= ioFiles;
  met = Compare("folders and files", *root, settings, pRounds) && met;
  std::filesystem::remove(ToNativeBytes(kFile));
  std::filesystem::remove(ToNativeBytes(kCopy));
  roots->Dispose();
  return met ? 0 : 1;
}

}  // namespace

int main(int pCount, char** pArguments) {
  if (pCount < 2) {
    std::fputs("Usage: csv PATH [ROUNDS]\n", stderr);
    return 2;
  }
  try {
    return Run(FromNativeBytes(pArguments[1]), pCount > 2 ? std::max(1, std::atoi(pArguments[2])) : 5);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
