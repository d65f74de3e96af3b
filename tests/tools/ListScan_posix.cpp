// `list_scan`: scans with a file of patterns and prints every entry of the tree.

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/roots/ScanRoots.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanServices.h"
#include "search/patterns/PatternFile.h"
#include "search/patterns/PatternFilter.h"

// list_scan PATH PATTERNFILE: scans the path with the patterns of the file and prints what is in the tree, so that a
// test can hold the one against the other. For every file "f", for every folder "d", then the full path, byte by byte,
// and a NUL; the scanned path itself is not printed. Ends with 1 when the path or the file cannot be read, or not to
// its end.

namespace {

using namespace Vantrel;

constexpr int64_t kPollMilliseconds = 100;
constexpr int32_t kThreads = 4;  // more than one, so that what is shared between workers is

void Print(char pKind, const IHierarchicalBase& pNode) {
  const std::string path = ToNativeBytes(pNode.GetFullPath());
  std::fputc(pKind, stdout);
  std::fwrite(path.c_str(), 1, path.size() + 1, stdout);
}

void PrintTree(const TRef<IFolderData>& pTop) {
  std::vector<TRef<IFolderData>> stack{pTop};
  while (!stack.empty()) {
    const TRef<IFolderData> folder = std::move(stack.back());
    stack.pop_back();
    for (const TRef<IHierarchicalElement>& file : folder->FindFiles()) Print('f', *file);
    for (TRef<IFolderData>& child : folder->FindSubFolders()) {
      if (child->IsFileGroup()) continue;
      Print('d', *child);
      stack.push_back(std::move(child));
    }
  }
}

int ListScan(const char* pPath, const char* pPatternFile) {
  const auto patterns =
      PatternMatching::CreateFromFile(FromNativeBytes(pPatternFile), PatternMatching::TPatternType::ptyInclude);
  auto options = std::make_shared<TGlobalOptions>();
  options->MaximumThreads = kThreads;
  options->KeepFiles = true;
  const TRef<IScanRoots> roots = CreateScanRoots(Vantrel::ScanEngine::CreateScanServices(), options);
  const TRef<IHierarchicalRoot> root = roots->CreateRoot(FromNativeBytes(pPath));
  root->SetScanFilter(MakeRef<Vantrel::TPatternFilter>(patterns));
  root->Scan();
  while (!root->WaitForScan(kPollMilliseconds)) {
  }
  const bool complete = (root->GetState() & (rsPathNotFound | rsHasErrors)) == 0;
  if (complete) PrintTree(root->GetTopFolder());
  roots->Dispose();
  return complete && std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace

int main(int pCount, char** pArguments) {
  if (pCount != 3) {
    std::fputs("Usage: list_scan PATH PATTERNFILE\n", stderr);
    return 2;
  }
  try {
    return ListScan(pArguments[1], pArguments[2]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
