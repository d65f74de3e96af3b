// Measures searches over a finished scan, against reading all names of the tree from memory.

// searchtree [ENTRIES [ROUNDS]]: scans a made tree of so many files and folders (1,000,000) in memory. Then, round
// after round: searches it on two threads for names of which few match and of which one in sixteen does, and for sizes;
// and reads all names where they stand in the tree, on two threads too. Ends with 1 when a target is missed.

#include <fmt/format.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "bench/Timing.h"
#include "model/tree/TreeWalk.h"
#include "platform/text/Text.h"
#include "search/files/FileFactsReader.h"
#include "search/files/FileSearch.h"
#include "search/query/Parser.h"
#include "tests/support/MemoryRoot.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Bench;
using namespace Vantrel::Search;

constexpr int kThreads = 2;
constexpr double kMostForSearch = 3;
constexpr double kMostForFirst = 0.005;  // seconds
constexpr int kEntriesInFolder = 32;     // about as in a file system

constexpr const char* kWords[] = {"report", "image", "index", "module", "README", "libvorbis", "config", "test",
                                  "photo",  "notes", "cache", "data",   "main",   "Makefile",  "backup", "draft"};
constexpr const char* kExtensions[] = {"txt", "jpg", "h", "cpp", "so.1", "html", "xml", "tmp"};

std::u16string NameOf(int pNumber) {
  const auto number = static_cast<size_t>(pNumber) * 2654435761u >> 7;
  return FromUtf8(fmt::format("{}_{:x}.{}", kWords[number % 16], number & 0xFFFFFF, kExtensions[number / 16 % 8]));
}

// Folders of folders of files.
void Fill(Testing::TMemoryEntry& pTop, int pEntries) {
  Testing::TMemoryEntry* outer = nullptr;
  Testing::TMemoryEntry* inner = nullptr;
  for (int i = 0; i < pEntries; ++i) {
    if (i % (kEntriesInFolder * kEntriesInFolder) == 0)
      outer = &pTop.AddFolder(FromUtf8(fmt::format("project{:05}", i)));
    else if (i % kEntriesInFolder == 0 || !inner)
      inner = &outer->AddFolder(FromUtf8(fmt::format("folder{:05}", i)));
    else
      inner->AddFile(NameOf(i), i % 100'000);
  }
}

// All names of a tree, where they stand.
class TNames {
 public:
  explicit TNames(IHierarchicalRoot& pRoot) {
    TTreeWalkSettings settings;
    settings.fShowsFileGroups = false;
    settings.fOrder = TSiblingOrder::soAny;
    TTreeWalk(settings).ForEach(*pRoot.GetTopFolder(), [&](const TTreeRow& pRow) {
      fFolders.emplace_back(&pRow.fFolder);
      fTables.push_back(pRow.fFolder.GetFileTable());
      return true;
    });
  }

  // Reads all units, on kThreads threads.
  size_t Read() const {
    std::atomic<size_t> sum{0};
    std::vector<std::thread> threads;
    for (size_t part = 0; part < kThreads; ++part) {
      threads.emplace_back([&, part] {
        size_t units = 0;
        const size_t end = fFolders.size() * (part + 1) / kThreads;
        for (size_t i = fFolders.size() * part / kThreads; i < end; ++i) {
          units += Sum(fFolders[i]->GetObjectName());
          const TFileTable* files = fTables[i].get();
          for (size_t file = 0; files && file < files->Count(); ++file) units += Sum(files->NameAt(file));
        }
        sum += units;
      });
    }
    for (std::thread& thread : threads) thread.join();
    return sum;
  }

 private:
  static size_t Sum(std::u16string_view pName) {
    size_t sum = 0;
    for (const char16_t unit : pName) sum += unit;
    return sum;
  }

  std::vector<TRef<IFolderData>> fFolders;
  std::vector<TRef<const TFileTable>> fTables;  // of the folder at the same place; nullptr where there is none
};

struct TSearched {
  std::vector<double> fAll;
  std::vector<double> fFirst;  // until the first result could be shown
  size_t fFound = 0;
};

void SearchOnce(const TRef<IHierarchicalRoot>& pRoot, const std::u16string& pQuery, TSearched& pFigures) {
  double first = 0;
  size_t found = 0;
  pFigures.fAll.push_back(Seconds([&] {
    const auto start = std::chrono::steady_clock::now();
    TFileSearchSettings settings{
        .fExpression = AdaptExpression(TDSMExpressionParser().Parse(pQuery), TFileFactsReader::kOfTree),
        .fThreads = kThreads};
    TFileSearch search(std::move(settings));
    search.AddTree(pRoot);
    search.Start();
    for (bool hasEnded = false; !hasEnded;) {
      hasEnded = search.WaitForEnd(1);
      const size_t taken = search.TakeFound().size();
      if (found == 0 && taken > 0)
        first = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      found += taken;
    }
  }));
  pFigures.fFirst.push_back(first);
  pFigures.fFound = found;
}

}  // namespace

int main(int pCount, char** pArguments) {
  const int entries = pCount > 1 ? std::atoi(pArguments[1]) : 1'000'000;
  const int rounds = pCount > 2 ? std::atoi(pArguments[2]) : 15;
  if (pCount > 3 || entries < 1 || rounds < 1) {
    std::fputs("usage: searchtree [ENTRIES [ROUNDS]]\n", stderr);
    return 2;
  }
  Testing::TMemoryRoot root;
  root.fOptions->KeepFiles = true;
  Fill(root.Top(), entries);
  root.Begin();
  root.fRoot->WaitForScan(Testing::kForever);
  const TRef<IHierarchicalRoot> tree(&root.Root());
  const TNames names(*tree);

  const std::vector<std::pair<const char*, std::u16string>> queries = {
      {"few match", u"name:libvorbis_ff*.so.1"}, {"one in sixteen", u"report_"}, {"sizes", u"size:>95KB .tmp"}};
  std::vector<double> read, unmeasured;
  std::vector<TSearched> figures(queries.size());
  size_t sum = names.Read();
  for (int round = 0; round < rounds; ++round) {
    read.push_back(Seconds([&] { sum += names.Read(); }));
    for (size_t i = 0; i < queries.size(); ++i) SearchOnce(tree, queries[i].second, figures[i]);
  }
  std::printf("%d entries, %d threads, names read to %zx\n", entries, kThreads, sum);
  bool met = true;
  for (size_t i = 0; i < queries.size(); ++i) {
    std::printf("%s: %zu found\n", queries[i].first, figures[i].fFound);
    met &= ReportMedians(queries[i].first, figures[i].fAll, "reading all names once", read, kMostForSearch);
    const double first = Median(figures[i].fFirst);
    met &= first <= kMostForFirst;
    std::printf("%-6s first result after %.4f s (at most %.4f)\n", first <= kMostForFirst ? "met" : "MISSED", first,
                kMostForFirst);
  }
  return met ? 0 : 1;
}
