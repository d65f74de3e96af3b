// `record_history`: records made-up scans, one transaction each.

#include <cstdio>
#include <exception>
#include <string>

#include "export/history/HistoryDocument.h"
#include "platform/text/Text.h"
#include "tests/support/FakeTree.h"

// record_history FILE ROOT COUNT FIRST: records so many scans of a root that is made up, one transaction each.
// Their sizes are FIRST, FIRST + 1 and so on, by which each can be told from every other. A number is printed when its
// scan is recorded.
// record_history export FILE TARGET and record_history import SOURCE FILE take a history out and in; the latter prints
// how many scans were added. Ends with 1 and the message when something fails.

namespace {

using namespace Vantrel::History;
using Vantrel::History::THistoryDocument;
using Vantrel::Testing::TFakeFolder;
using Vantrel::Testing::TFakeRoot;

void Record(const std::u16string& pFile, const std::u16string& pRoot, int64_t pCount, int64_t pFirst) {
  const THistoryDatabaseReaderWriter history("1.2.3");
  const auto root = Vantrel::MakeRef<TFakeRoot>(pRoot);
  root->fScanTimeStamp = Vantrel::TKivFileTime::Now();
  for (int64_t i = pFirst; i < pFirst + pCount; ++i) {
    Vantrel::TSizeValues values;
    values.fSize = i;
    values.fAllocated = 2 * i;
    values.fFiles = 7;
    root->fTop = Vantrel::MakeRef<TFakeFolder>(pRoot, values);
    history.WriteRootHistoryData(pFile, pRoot, *root);
    std::printf("%lld\n", static_cast<long long>(i));
    std::fflush(stdout);
  }
}

int Run(int pCount, char** pArguments) {
  auto text = [&](int pIndex) { return Vantrel::FromNativeBytes(pArguments[pIndex]); };
  const std::string verb = pCount > 1 ? pArguments[1] : "";
  if (pCount == 4 && verb == "export") {
    THistoryDocument(text(2)).ExportHistoryFile(text(3));
  } else if (pCount == 4 && verb == "import") {
    std::printf("%lld\n", static_cast<long long>(THistoryDocument(text(3)).ImportHistoryFile(text(2))));
  } else if (pCount == 5) {
    Record(text(1), text(2), std::stoll(pArguments[3]), std::stoll(pArguments[4]));
  } else {
    std::fputs("Usage: record_history FILE ROOT COUNT FIRST\n", stderr);
    return 2;
  }
  return 0;
}

}  // namespace

int main(int pCount, char** pArguments) {
  try {
    return Run(pCount, pArguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
