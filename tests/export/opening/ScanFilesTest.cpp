// Holds what is opened from a source in small pieces against what a whole source gives: JSON, and forms of other
// programs.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "export/json/JSONExport.h"
#include "export/opening/ScanFiles.h"
#include "model/roots/ScanRoots.h"
#include "tests/support/ByteStrings.h"

namespace Vantrel::Opening {
namespace {

using Testing::TStringSink;
using Testing::TStringSource;

TRef<IScanRoots> Roots() {
  return CreateScanRoots(nullptr, std::make_shared<TGlobalOptions>());
}

TOpenedScan Read(IByteSource& pSource, IScanRoots& pRoots, const TFileProgress& pProgress = {}) {
  TPeekedSource source(pSource);
  return TryReadScan(source, pRoots, pProgress).value();
}

// What is opened from a source that gives a few bytes at a time, as JSON lines.
std::string Reread(std::string_view pText, size_t pPiece) {
  const TRef<IScanRoots> roots = Roots();
  TStringSource source(pText, pPiece);
  const TOpenedScan opened = Read(source, *roots);
  Exporting::TMediaSettings settings;
  settings.fIncludedObjectTypes = Exporting::kAllObjectTypes;
  TStringSink sink;
  Exporting::TJSONExport(settings, JSON::TLayout::loLines).Export(*opened.fRoot, sink);
  opened.fRoot->Dispose();
  return sink.fBytes;
}

const std::string kLines =
    R"({"format":"vantrel","version":1,"kind":"tree","path":"/x","title":"/x","delimiter":"/","clustersize":0,"totalbytes":0,)"
    R"("freebytes":0,"excluded":0,"stopped":false,"whole":true,"singlefiles":true})"
    "\n"
    R"({"type":"folder","path":"/x","size":7,"allocated":8,"files":2,"folders":1,"attributes":16})"
    "\n"
    R"({"type":"files","path":"/x","size":7,"allocated":8,"files":2,"folders":0,"attributes":0})"
    "\n"
    // A pair of surrogates, two lone ones, what looks like an escape, and an escaped quote.
    R"({"type":"file","path":"/x/)"
    "\xF0\x9F\x98\x80"
    R"(\udcff\ud800z\\udcff\"\\","size":5,"allocated":4,"lastchange":"2026-11-23T01:07:03.5546697Z","attributes":0})"
    "\n"
    R"({"type":"file","path":"/x/b","size":2,"allocated":4,"attributes":0,"owner":"me"})"
    "\n"
    R"json({"type":"folder","path":"/x/sub","size":0,"allocated":0,"files":0,"folders":0,"attributes":16,)json"
    R"json("error":"Denied (read in part)"})json"
    "\n";

// Every split of a text and its escapes gives the same rows.
TEST(ScanFiles, PiecesOfAnySizeGiveTheSameTree) {
  for (size_t piece = 1; piece < 40; ++piece) EXPECT_EQ(Reread(kLines, piece), kLines) << "pieces of " << piece;
  const std::string escapedPair = R"({"format":"vantrel","version":1,"kind":"tree","path":"/\ud83d\ude00"})"
                                  R"({"type":"folder","path":"/\uD83D\uDE00","attributes":16})";
  for (size_t piece = 1; piece < 20; ++piece)
    EXPECT_NE(Reread(escapedPair, piece).find("\"path\":\"/\xF0\x9F\x98\x80\""), std::string::npos) << piece;
}

TEST(ScanFiles, OtherFormsInPieces) {
  const std::string forms[] = {
      "\xEF\xBB\xBF "
      "[1,2,{\"timestamp\":5},\n[{\"name\":\"/x\"},[{\"name\":\"s\\u0001\xFF\"},{\"name\":\"f\",\"asize\":3,"
      "\"more\":[1,[2,{\"x\":\"\\ud800\"}]]}]]]",
      "[kdirstat 4.0 cache file]\r\nD /x 1 0x5\r\nF f 3 0x6\r\n", "4\t/x/f\n8\t/x\n"};
  for (const std::string& form : forms) {
    const std::string whole = Reread(form, form.size());
    for (size_t piece = 1; piece < 20; ++piece) EXPECT_EQ(Reread(form, piece), whole) << form << piece;
  }
}

TEST(ScanFiles, CancelsAndFailsWithoutARoot) {
  const TRef<IScanRoots> roots = Roots();
  TStringSource source(kLines, 10);
  EXPECT_FALSE(Read(source, *roots, [](uint64_t pBytes) { return pBytes < 100; }).fRoot);
  TStringSource failing(std::string_view(kLines).substr(0, 200), 50);
  failing.fFails = true;
  EXPECT_THROW(Read(failing, *roots), EOSError);
  TStringSource unknown("<html>");
  TPeekedSource peeked(unknown);
  EXPECT_FALSE(TryReadScan(peeked, *roots));
  char kept[10];
  EXPECT_EQ(peeked.Read(kept, sizeof(kept)), 6u) << "what was looked at is lost";
}

}  // namespace
}  // namespace Vantrel::Opening
