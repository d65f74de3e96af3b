// Measures the bytes per folder and per kept file, on trees of both kinds.

// Builds trees through the engine's own calls, with all statistics on. Divides the growth of the process by the number
// of nodes.
//
//   memory              both kinds of trees, a million folders and a million files
//   memory N            the same with N
//
// A folder's cost is measured on folders of which half have sub-folders, each with a file. The files' cost is measured
// separately and subtracted.

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "model/options/GlobalOptions.h"
#include "model/roots/Root.h"
#include "model/roots/ScanRoots.h"
#include "model/statistics/FileStatistics.h"
#include "platform/text/Text.h"
#include "scan/engine/FolderAccumulator.h"
#include "scan/engine/ScanServices.h"

using namespace Vantrel;

namespace {

// Bytes of memory that the process holds.
int64_t ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  int64_t all = 0;
  int64_t resident = 0;
  file >> all >> resident;
  return resident * 4096;
}

// Replaces an enumerator's current entry.
class TEntry : public TInterfaced<IHierarchicalEnumerator> {
 public:
  std::u16string fName;
  TEntryValues fValues;
  bool Next() override { return false; }
  void Reset() override {}
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override { return nullptr; }
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view, TAttributes) override { return nullptr; }
  TRef<IHierarchicalEnumerator> Clone() const override { return nullptr; }
  TMetaDataValue GetValue(TColumn) const override { return {}; }
  std::u16string_view GetObjectName() const override { return fName; }
  int64_t GetSize() const override { return fValues.fSize; }
  int64_t GetAllocated() const override { return fValues.fAllocated; }
  TKivFileTime GetLastAccessDate() const override { return fValues.fLastAccessDate; }
  TKivFileTime GetLastChangeDate() const override { return fValues.fLastChangeDate; }
  TKivFileTime GetCreationDate() const override { return fValues.fCreationDate; }
  TAttributes GetAttributes() const override { return fValues.fAttributes; }
  TEntryValues GetEntryValues() const override { return fValues; }
  bool IsFolder() const override { return false; }
  std::u16string GetFullPath() const override { return fName; }
  std::u16string GetOwner() const override { return u"owner"; }
  uint64_t GetOwnerId() const override { return 1; }
  bool CanDescend() const override { return false; }
  uint32_t GetErrorCode() const override { return 0; }
  TEnumeratorError GetError() const override { return TEnumeratorError::eeOk; }
  std::u16string GetPath() const override { return {}; }
  uint64_t GetParentPathDepth() const override { return 0; }
};

// Names of 16 characters, the extension one of eight.
constexpr int64_t kNameLength = 16;

std::u16string NameOf(int64_t pNumber) {
  const std::string name = fmt::format("file{:08}.{:03}", pNumber, pNumber % 8);
  return std::u16string(name.begin(), name.end());
}

class TBuilder {
 public:
  TBuilder() {
    fRoots = CreateScanRoots(ScanEngine::CreateScanServices(), std::make_shared<TGlobalOptions>());
    // The scan of an empty folder sets the root's clock, from which the files' ages count.
    char folder[] = "/tmp/memory-XXXXXX";
    if (!mkdtemp(folder)) std::abort();
    fRoot = fRoots->Scan(FromNativeBytes(folder));
    fRoot->WaitForScan(60'000);
    rmdir(folder);
    fTop = MakeRef<TFolderData>(fRoot, fRoot->GetPath());
    fFiles = std::make_unique<ScanEngine::TFolderAccumulator>(*fRoot->GetScanConfiguration());
    fEntry = MakeRef<TEntry>();
  }
  ~TBuilder() {
    fTop->Dispose();
    fRoots->Dispose();
  }

  // Adds so many files of mixed extensions and ages to the folder.
  void AddFiles(TCustomFolderData& pFolder, int64_t pCount) {
    fFiles->Begin();
    fFiles->SetPathLength(1);
    for (int64_t i = 0; i < pCount; ++i) {
      fEntry->fName = NameOf(fNumber++);
      fEntry->fValues.fSize = fEntry->fValues.fAllocated = 4096;
      fEntry->fValues.fLastChangeDate = TKivFileTime::FromUnix(1'000'000'000 + fNumber % 97 * 5'000'000, 0);
      fFiles->AddFile(*fEntry);
    }
    const TFileGroupContents files = fFiles->Finish();
    fFiles->OfferTopFiles(pFolder);
    pFolder.AddFiles(files);
  }

  std::vector<TRef<TCustomFolderData>> AddFolders(TCustomFolderData& pFolder, int64_t pCount) {
    std::vector<TRef<TCustomFolderData>> children;
    for (int64_t i = 0; i < pCount; ++i)
      children.push_back(pFolder.MakeChild(NameOf(fNumber++), fEntry->fValues, 0, true));
    pFolder.AppendChildren(children);
    return children;
  }

  TRef<TFolderData> fTop;

 private:
  TRef<IScanRoots> fRoots;
  TRef<IHierarchicalRoot> fRoot;
  std::unique_ptr<ScanEngine::TFolderAccumulator> fFiles;
  TRef<TEntry> fEntry;
  int64_t fNumber = 0;
};

// Folders of 1000 files. Bytes for each file.
double CostOfFile(int64_t pFiles) {
  TBuilder tree;
  const auto folders = tree.AddFolders(*tree.fTop, pFiles / 1000);
  const int64_t before = ResidentBytes();
  for (const auto& folder : folders) tree.AddFiles(*folder, 1000);
  return static_cast<double>(ResidentBytes() - before) / static_cast<double>(pFiles);
}

// Half of the folders hold another one, and all hold pFilesInEach files. Bytes for each folder, files and all.
double CostOfFolder(int64_t pFolders, int64_t pFilesInEach) {
  TBuilder tree;
  const int64_t before = ResidentBytes();
  for (const auto& folder : tree.AddFolders(*tree.fTop, pFolders / 2)) {
    for (const auto& child : tree.AddFolders(*folder, 1)) tree.AddFiles(*child, pFilesInEach);
    tree.AddFiles(*folder, pFilesInEach);
  }
  return static_cast<double>(ResidentBytes() - before) / static_cast<double>(pFolders);
}

// Each measurement has its own process. Otherwise memory that one measurement frees would go to the next, and the
// process would not grow.
template <class TMeasure>
double InFreshProcess(const TMeasure& pMeasure) {
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    const double result = pMeasure();
    _exit(write(ends[1], &result, sizeof(result)) == sizeof(result) ? 0 : 1);
  }
  double result = 0;
  int status = 0;
  const bool complete = read(ends[0], &result, sizeof(result)) == sizeof(result);
  if (child < 0 || waitpid(child, &status, 0) != child || !complete || status != 0) std::abort();
  close(ends[0]);
  close(ends[1]);
  return result;
}

void Print(const char* pWhat, double pBytes, int64_t pNames, double pTarget) {
  const double withoutNames = pBytes - static_cast<double>(pNames * kNameLength * 2);
  fmt::print("{:<58} {:7.1f} bytes plus names; at most {:.0f}: {}\n", pWhat, withoutNames, pTarget,
             withoutNames <= pTarget ? "met" : "MISSED");
}

}  // namespace

int main(int pCount, char** pArguments) {
  const int64_t entries = pCount > 1 ? std::atoll(pArguments[1]) : 1'000'000;
  const double file = InFreshProcess([&] { return CostOfFile(entries); });
  Print("a file", file, 1, 64);
  Print("a folder, empty, half of them with a sub-folder", InFreshProcess([&] { return CostOfFolder(entries, 0); }), 1,
        640);
  for (const int64_t files : {1, 3, 10}) {
    const double whole = InFreshProcess([&] { return CostOfFolder(entries / 4, files); });
    const double folder = whole - static_cast<double>(files) * file;
    Print(fmt::format("a folder with {} files, these taken off", files).c_str(), folder, 1, 640);
  }
}
