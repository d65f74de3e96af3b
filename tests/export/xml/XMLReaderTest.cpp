// Trees from a file against those it was written from; the reader's refusals.

#include <gtest/gtest.h>

#include "export/xml/XMLCompareReader.h"
#include "export/xml/XMLExport.h"
#include "export/xml/XMLReader.h"
#include "model/roots/Comparison.h"
#include "model/roots/ScanRoots.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"
#include "tests/support/ByteStrings.h"
#include "tests/support/Failures.h"
#include "tests/support/MemoryServices.h"
#include "tests/support/RandomTree.h"
#include "tests/support/Recount.h"

namespace Vantrel::XML {
namespace {

using namespace Vantrel::Testing;
using Vantrel::Exporting::TCustomXMLExport;
using Vantrel::Exporting::TMediaSettings;

constexpr int64_t kForever = 60'000;

// Sources give a few bytes at a time, so that every text is cut somewhere.
constexpr size_t kPiece = 61;

// Names with all that is hard to keep, and few owners.
TRandomWords HardWords() {
  const std::vector<std::u16string> parts = {u"a",    u"&<>\"'",     u"\u0001",  u"\xDCFF",
                                             u"\n\t", u"\U0001F600", u"[Files]", u" "};
  return {parts, parts, {u".txt", u"\u0001.TXT", u"", u"[Files].&", u"\n.\xD800", u" "}, {u"", u"anna", u"D\\b<e>rt"}};
}

struct TLive {
  explicit TLive(const std::u16string& pPath, char16_t pDelimiter, TDateType pAges = TDateType::dtLastChange) {
    fOptions->CollectOwners = true;
    fOptions->FileAgesDateType = pAges;
    fStorage = fServices->fStorages[pPath] = TMemoryStorage::Create(pPath, pDelimiter);
    if (pDelimiter == u'/')
      fRoot = MakeRef<TCustomUnixRoot>(pPath, u"", fServices, fOptions, nullptr);
    else
      fRoot = MakeRef<TFileSystemRoot>(pPath, u"", fServices, fOptions, nullptr);
    fRoots = CreateScanRoots(fServices, fOptions);
  }
  ~TLive() {
    fRoot->Dispose();
    fRoots->Dispose();
  }
  void Scan() {
    fRoot->Scan();
    ASSERT_TRUE(fRoot->WaitForScan(kForever));
  }
  TRef<IHierarchicalRoot> Load(std::string_view pText) {
    TStringSource source(pText, kPiece);
    TLoadedRoot loaded = TQZXMLReader::ReadRoot(source, u"test.xml", *fRoots);
    if (loaded.fRoot) fRoots->AddLoaded(loaded.fRoot);
    fNotes = loaded.fNotes;
    return loaded.fRoot;
  }
  std::string Refusal(std::string_view pText) {
    try {
      Load(pText);
    } catch (const Vantrel::XML::EXMLError& error) {
      return error.Message();
    }
    return "no error";
  }

  std::shared_ptr<TGlobalOptions> fOptions = std::make_shared<TGlobalOptions>();
  TRef<TMemoryServices> fServices = MakeRef<TMemoryServices>();
  std::shared_ptr<TMemoryStorage> fStorage;
  TRef<IHierarchicalRoot> fRoot;
  TRef<IScanRoots> fRoots;
  std::vector<std::string> fNotes;
};

std::string Written(IHierarchicalRoot& pRoot, TMediaSettings pSettings = {}) {
  TCustomXMLExport xml(pSettings, "Vantrel", "1");
  TStringSink sink;
  xml.Export(pRoot, sink);
  return sink.fBytes;
}

// What differs between the columns of two trees, node by node.
std::string ColumnDifferences(IHierarchicalRoot& pA, IHierarchicalRoot& pB) {
  std::string differences;
  std::vector<std::pair<TRef<IFolderData>, TRef<IFolderData>>> stack{{pA.GetTopFolder(), pB.GetTopFolder()}};
  while (!stack.empty()) {
    const auto [a, b] = std::move(stack.back());
    stack.pop_back();
    for (int column = 0; column < static_cast<int>(TColumn::mdCount); ++column) {
      const auto id = static_cast<TColumn>(column);
      if (id == TColumn::mdFolderState) continue;  // says that the one was loaded
      if (a->GetValue(id) != b->GetValue(id))
        differences += ToDisplay(a->GetFullPath()) + ": " + ToUtf8(ColumnInfo(id).fName) + "\n";
    }
    const auto childrenOfA = a->FindSubFolders();
    const auto childrenOfB = b->FindSubFolders();
    if (childrenOfA.size() != childrenOfB.size()) return differences + ToDisplay(a->GetFullPath()) + ": children\n";
    for (size_t i = 0; i < childrenOfA.size(); ++i) stack.emplace_back(childrenOfA[i], childrenOfB[i]);
  }
  return differences;
}

// Without the files, which are not in scan files.
TRecount ReadFolders(IHierarchicalRoot& pRoot, TDateType pAges) {
  TRecount read = ReadTree(*pRoot.GetTopFolder(), pAges);
  for (auto& [path, folder] : read) folder.fOwnFiles.clear();
  return read;
}

}  // namespace

TEST(XMLReader, RandomTreesComeBack) {
  for (unsigned round = 0; round < 60; ++round) {
    const bool unix = round % 2 == 0;
    const TDateType ages = round % 3 == 0 ? TDateType::dtNone : TDateType::dtCreation;
    TLive live(unix ? u"/m\xDC80&" : u"C:\\", unix ? u'/' : u'\\', ages);
    TRandomTree(1912 + round, HardWords()).Fill(live.fStorage->Top(), 5);
    auto patterns = MakeRef<PatternMatching::TPatternList>(unix ? u'/' : u'\\');
    patterns->Add(u"<||(-)/^\u0001/i", PatternMatching::TPatternType::ptyInclude);
    if (round % 4 == 0) live.fRoot->SetScanFilter(MakeRef<TPatternFilter>(patterns));
    live.Scan();
    const std::string text = Written(*live.fRoot);
    const TRef<IHierarchicalRoot> loaded = live.Load(text);
    ASSERT_TRUE(loaded);
    ASSERT_EQ(Written(*loaded), text);
    ASSERT_EQ(ColumnDifferences(*live.fRoot, *loaded), "");
    ASSERT_EQ(Difference(ReadFolders(*live.fRoot, ages), ReadFolders(*loaded, ages)), "");
    EXPECT_EQ(loaded->GetScanTimeStamp(), live.fRoot->GetScanTimeStamp());
    EXPECT_NE(loaded->GetState() & rsIsXMLImport, 0u);
    EXPECT_TRUE(live.fNotes.empty());
    EXPECT_FALSE(loaded->RefreshFolder(*loaded->GetTopFolder(), true));
  }
}

TEST(XMLReader, LimitedFilesHoldWhatTheyHold) {
  TRandomTree random(7, HardWords());
  TLive live(u"/m", u'/');
  while (live.fStorage->Top().fChildren.size() < 4) random.Fill(live.fStorage->Top(), 4);
  live.Scan();
  TMediaSettings settings;
  settings.fRecursionLevel = {1, false};
  const std::string text = Written(*live.fRoot, settings);
  const TRef<IHierarchicalRoot> loaded = live.Load(text);
  EXPECT_EQ(live.fNotes, (std::vector<std::string>{
                             "The XML file \"test.xml\" includes information for directories limited to a certain "
                             "directory level.\r\nOnly the information of included directories will be shown."}));
  // The sums of the top's children are those of the top, statistics included.
  EXPECT_EQ(loaded->GetTopFolder()->GetValues(), live.fRoot->GetTopFolder()->GetValues());
  EXPECT_EQ(loaded->GetTopFolder()->GetExtensionSizeArray()->GetKeysSorted(TColumn::mdSize),
            live.fRoot->GetTopFolder()->GetExtensionSizeArray()->GetKeysSorted(TColumn::mdSize));
  for (const TRef<IFolderData>& folder : loaded->GetTopFolder()->FindSubFolders())
    EXPECT_TRUE(folder->FindSubFolders().empty());
}

TEST(XMLReader, RefusesWhatDoesNotFit) {
  TLive live(u"/m", u'/');
  auto inRoot = [](std::string pContent) { return "<Root><Path>/m</Path>" + pContent + "</Root>"; };
  const std::string top = "<Folder fullpath=\"/m\">";
  const struct {
    std::string fText;
    const char* fMessage;
  } cases[] = {
      {"<Rood/>", "The document is no scan file: it begins with \"Rood\""},
      {"<Root><Root/></Root>", "A file holds one root only"},
      {"<Root Type=\"TWebRoot\"/>", "Root has an unknown type: \"TWebRoot\""},
      {"<Root/>", "The file holds no folder"},
      {inRoot("<Folder/>"), "A folder has no fullpath"},
      {inRoot("<Folder fullpath=\"/m\" IsFilesNode=\"-1\"/>"), "The top folder is the files of a folder"},
      {inRoot(top + "</Folder>" + top + "</Folder>"), "A root has one top folder only"},
      {inRoot(top + "<Folder fullpath=\"/n\"/></Folder>"), "\"/n\" does not lie in \"/m\""},
      {inRoot(top + "<Folder fullpath=\"/ma\"/></Folder>"), "\"/ma\" does not lie in \"/m\""},
      {inRoot(top + "<Folder fullpath=\"/m\"/></Folder>"), "\"/m\" does not lie in \"/m\""},
      {inRoot(top + "<Folder fullpath=\"/m/a/b\"/></Folder>"), "\"/m/a/b\" does not lie directly in \"/m\""},
      {inRoot(top + "<Folder fullpath=\"/m/a\"/><Folder fullpath=\"/m/b\"/><Folder fullpath=\"/m/a\"/></Folder>"),
       "\"/m/a\" is there twice"},
      {inRoot(top + "<Folder fullpath=\"/m\" IsFilesNode=\"1\"/><Folder fullpath=\"/m\" IsFilesNode=\"1\"/></Folder>"),
       "The files of \"/m\" are there twice"},
      {inRoot(top + "<Folder fullpath=\"/m\" IsFilesNode=\"1\"><Folder fullpath=\"/m/a\"/></Folder></Folder>"),
       "There is a folder in the files of \"/m\""},
      {inRoot("<TUserSizeArray/>"), "Folder not Assigned at begin of 'TUserSizeArray' Node"},
      {inRoot(top + "<SizeData Size=\"9223372036854775808\"/></Folder>"),
       "Size is no whole number: \"9223372036854775808\""},
      {inRoot(top + "<SizeData Files=\"-1\"/></Folder>"), "Files is out of range: -1"},
      {inRoot(top + "<SizeData Size=\"4611686018427387904\"/></Folder>"), "Size is out of range: 4611686018427387904"},
      {inRoot(top + "<TUserSizeArray><Item name=\"a\" Files=\"4611686018427387907\"/></TUserSizeArray></Folder>"),
       "Files is out of range: 4611686018427387907"},
      {inRoot(top + "<Folder fullpath=\"/m/a\"><TUserSizeArray><Item name=\"a\" Size=\"4611686018427387903\"/>" +
              "</TUserSizeArray></Folder><Folder fullpath=\"/m/b\"><FileAgeDistribution Days_1=\"1 0 0\"/></Folder>" +
              "</Folder>"),
       "The statistics add up to more than any storage holds"},
      {inRoot(top + "<Attributes>4294967296</Attributes></Folder>"), "Attributes is out of range: 4294967296"},
      {inRoot(top + "<FolderState>x</FolderState></Folder>"), "FolderState is no whole number: \"x\""},
      {inRoot(top + "<LastChangeDate Low=\"1\" High=\"-1\"/></Folder>"), "Low and High are no date"},
      {inRoot(top + "<FileAgeDistribution Days=\"1\"/></Folder>"),
       "TFileAges.CreateFromXML: Given XML attributes did not contain any FileAge info"},
      {inRoot(top + "<FileAgeDistribution Days_1=\"1 2\"/></Folder>"), "FileAgeDistribution is no whole number: \"\""},
      {inRoot("<DateISO>yesterday</DateISO>"), "DateISO is no date: \"yesterday\""},
      {inRoot("<IncludePatterns><TPatternList><Pattern Class=\"TOther\"/></TPatternList></IncludePatterns>"),
       "Class \"TOther\" is no knonw class derived by TCustomPattern."},
  };
  std::string many = "<Root><Folder fullpath='/m'><FileAgeDistribution";
  for (int i = 0; i < 100'000; ++i) many += " Days_" + std::to_string(i) + "='0 0 0'";
  EXPECT_EQ(live.Refusal(many + "/></Folder></Root>"), "An element has 100000 attributes; no scan file has so many");
  for (const auto& expected : cases) EXPECT_EQ(live.Refusal(expected.fText), expected.fMessage) << expected.fText;
  EXPECT_TRUE(live.fRoots->GetRoots().empty()) << "nothing half loaded is in the list";
}

TEST(XMLReader, RefusesEveryTruncation) {
  TLive live(u"/m", u'/');
  live.fStorage->Folder(u"a/b").AddFile(u"c.txt", 7);
  live.Scan();
  const std::string text = Written(*live.fRoot);
  const size_t end = text.rfind('>') + 1;
  for (size_t length = 0; length < end; ++length)
    ASSERT_NE(live.Refusal(std::string_view(text).substr(0, length)), "no error") << length;
  EXPECT_TRUE(live.fRoots->GetRoots().empty());
  EXPECT_EQ(live.Refusal(std::string_view(text).substr(0, end)), "no error");
}

TEST(XMLReader, IncompleteScansStayIncomplete) {
  TLive live(u"/m", u'/');
  live.fStorage->Folder(u"half").AddFile(u"a", 1);
  live.fStorage->Folder(u"half").AddFile(u"b", 1);
  live.fStorage->Folder(u"half").FailListing(2, TMemoryStorage::AccessDeniedCode());
  live.fStorage->Folder(u"lost").FailListing(1, 5);
  live.Scan();
  ASSERT_EQ(live.fRoot->GetErrors().size(), 2u);
  const std::string text = Written(*live.fRoot);
  const TRef<IHierarchicalRoot> loaded = live.Load(text);
  EXPECT_EQ(Written(*loaded), text);
  EXPECT_NE(loaded->GetState() & rsHasErrors, 0u);
  auto errors = loaded->GetErrors();
  ASSERT_EQ(errors.size(), 2u);
  std::sort(errors.begin(), errors.end(), [](const auto& pA, const auto& pB) { return pA.fPath < pB.fPath; });
  EXPECT_EQ(errors[0].fPath, u"/m/half");
  EXPECT_TRUE(errors[0].fPartial);
  EXPECT_EQ(errors[0].fCode, TMemoryStorage::AccessDeniedCode());
  EXPECT_EQ(errors[1].fObject->GetFullPath(), u"/m/lost");
  EXPECT_FALSE(errors[1].fPartial);
}

TEST(XMLReader, TakesOlderAndForeignForms) {
  TLive live(u"/m", u'/');
  const TRef<IHierarchicalRoot> windows = live.Load(
      "<ROOT Type='TRoot'><path>file:C:\\Data</path><Title>R&amp;amp;D &amp;lt;x&amp;gt;</Title>"
      "<Date>2001-02-03 04:05:06+01:00</Date><UsedBytesOnDrive>7</UsedBytesOnDrive><Terminated>1</Terminated>"
      "<New><Nested/></New><FOLDER FullPath='C:\\Data'><sizedata size='5' FILES='2'/><Item name='x'/></FOLDER></ROOT>");
  EXPECT_EQ(windows->GetPath(), u"C:\\Data");
  EXPECT_EQ(windows->GetPathDelimiter(), u'\\');
  EXPECT_EQ(windows->GetTitle(), u"R&D <x>");
  EXPECT_EQ(FormatIsoUtc(windows->GetScanTimeStamp()), "2001-02-03T03:05:06Z");
  EXPECT_EQ(windows->GetStorageInformation().fTotalBytes, 7);
  EXPECT_NE(windows->GetState() & rsCancelled, 0u);
  EXPECT_EQ(windows->GetTopFolder()->GetValues(), (TSizeValues{{5, 0, 2}, 0, 0}));
  EXPECT_EQ(live.Load("<Root><Folder fullpath='/x'/></Root>")->GetPathDelimiter(), u'/');
  for (const char* date : {"20010203", " 2001-02-03\n", "20010203T000000Z", "2001-02-03T01:00:00+0100"})
    EXPECT_EQ(FormatIsoUtc(live.Load(std::string("<Root><DateISO>") + date + "</DateISO><Folder fullpath='/x'/></Root>")
                               ->GetScanTimeStamp()),
              "2001-02-03T00:00:00Z");
}

TEST(XMLReader, TakesWhatIsHarmlessOfAFolder) {
  TLive live(u"/m", u'/');
  const TRef<IHierarchicalRoot> loaded = live.Load(
      "<Root><Path>/x</Path><DoCreateFileAges FileAgesDateType=' 1 '>-1</DoCreateFileAges><Folder fullpath='/x/'>"
      "<Folder fullpath='/x/a/'><SizeData Size=' 5\n'/><Attributes>\t16 </Attributes><FolderState>256</FolderState>"
      "<FileAgeDistribution days_7='5 6 7'/></Folder></Folder></Root>");
  const auto children = loaded->GetTopFolder()->FindSubFolders();
  ASSERT_EQ(children.size(), 1u);
  EXPECT_EQ(children[0]->GetFullPath(), u"/x/a");
  EXPECT_EQ(children[0]->GetSize(), 5);
  EXPECT_EQ(children[0]->GetAttributes(), kAttributeDirectory);
  // A file does not make a folder gone (256); and it is told apart from what was scanned.
  EXPECT_EQ(children[0]->GetFolderState(), fsIsXMLImport);
  const auto ages = children[0]->GetFileAgeDistribution(TDateType::dtLastChange);
  ASSERT_TRUE(ages);
  EXPECT_EQ(ages->GetRecord(0), (TBasicSizeValues{5, 6, 7}));
}

TEST(XMLReader, AFolderWithStatisticsOfItsOwnTakesNoneFromItsChildren) {
  TLive live(u"/m", u'/');
  const std::string child =
      "<Folder fullpath='/x/a'><TExtensionSizeArray><Item name='.b' Size='2'/></TExtensionSizeArray></Folder>";
  for (const bool hasOwn : {true, false}) {
    const std::string own = "<TExtensionSizeArray><Item name='.a' Size='9'/></TExtensionSizeArray>";
    const TRef<IHierarchicalRoot> loaded =
        live.Load("<Root><Folder fullpath='/x'>" + (hasOwn ? own : "") + child + "</Folder></Root>");
    EXPECT_EQ(loaded->GetTopFolder()->GetExtensionSizeArray()->GetKeysSorted(TColumn::mdSize),
              std::vector<std::u16string>{hasOwn ? u".a" : u".b"});
  }
}

// Wherever the list stands, and whether its files' folders are in the file or not.
TEST(XMLReader, LargestFilesKeepTheirPaths) {
  TLive live(u"/m", u'/');
  const std::string lists =
      "<TTopSizeFileList><TopFile name='1' Path='/x/a/b/c' Size='9'/><TopFile name='2' Path='/x/a' Size='8'/>"
      "<TopFile name='3' Path='/x' Size='7'/></TTopSizeFileList>"
      "<TTopSizeFileList><TopFile name='4' Path='/x/a/b/c' Size='6'/><TopFile name='5' Path='/xa' Size='5'/>"
      "<TopFile name='6' Path='' Size='4'/></TTopSizeFileList>";
  const std::string tree = "<Folder fullpath='/x'><Folder fullpath='/x/a'/></Folder>";
  for (const std::string& content : {lists + tree, tree + lists}) {
    const TRef<IHierarchicalRoot> loaded = live.Load("<Root>" + content + "</Root>");
    std::vector<std::u16string> paths;
    for (const TTopSizeEntry& file : loaded->GetTopSizeList()->GetSnapshot())
      paths.push_back((file.fParentFolder ? file.fParentFolder->GetFullPath() : u"no folder") + u"/" + file.fName);
    EXPECT_EQ(paths, (std::vector<std::u16string>{u"/x/a/b/c/1", u"/x/a/2", u"/x/3", u"/x/a/b/c/4"}))
        << "those outside the root are left out";
    EXPECT_EQ(loaded->GetTopFolder()->GetSubFolderCount(), 1u) << "no folder enters the tree for them";
  }
}

TEST(XMLReader, PatternsAreAboutThePathsOfTheRoot) {
  TLive live(u"/m", u'/');
  const std::pair<const char*, char16_t> cases[] = {{"/x", u'/'}, {"file:/x", u'/'}, {"C:\\x", u'\\'}};
  for (const auto& [path, delimiter] : cases) {
    const TRef<IHierarchicalRoot> loaded = live.Load(
        std::string("<Root><Path>") + path +
        "</Path><IncludePatterns><TPatternList><Pattern class='TWildcardPattern' TEXT='*.a' active='-1' "
        "target_fmtid='{B0461F53-EAF6-4DA1-B879-BEA641BF670E}' Target_PID='61' patterntype='0'/></TPatternList>"
        "</IncludePatterns><Folder fullpath='" +
        path + "'/></Root>");
    const auto* filter = dynamic_cast<const TPatternFilter*>(loaded->GetScanFilter().get());
    ASSERT_TRUE(filter) << path;
    EXPECT_EQ(filter->GetPatterns()->GetPathDelimiter(), delimiter) << path;
  }
}

TEST(XMLReader, CancelledLoadsLeaveNothing) {
  TLive live(u"/m", u'/');
  for (int i = 0; i < 3000; ++i) live.fStorage->Top().AddFolder(FromUtf8(std::to_string(i)));
  live.Scan();
  const std::string text = Written(*live.fRoot);
  for (uint64_t stop : {uint64_t{0}, uint64_t{1}, uint64_t{text.size() / 2}}) {
    TStringSource source(text, kPiece);
    const TLoadedRoot loaded =
        TQZXMLReader::ReadRoot(source, u"x", *live.fRoots, [&](uint64_t pBytes) { return pBytes < stop; });
    EXPECT_FALSE(loaded.fRoot);
  }
}

TEST(XMLReader, FileNamesAndProtocols) {
  EXPECT_EQ(SplitFileNames(u"a.xml;;\"b;c.xml\"; d"), (std::vector<std::u16string>{u"a.xml", u"b;c.xml", u" d"}));
  EXPECT_EQ(SplitFileNames(u"\"say \"\"hi;\"\"\";a\"b;\"open"),
            (std::vector<std::u16string>{u"say \"hi;\"", u"a\"b", u"\"open"}));
  std::u16string_view path = u"FILE:/srv";
  EXPECT_EQ(TXMLParseHelper::ParseXMLProtocol(path), TXMLParseHelper::TProtocol::prFile);
  EXPECT_EQ(path, u"/srv");
  path = u"webdav:x";
  EXPECT_EQ(TXMLParseHelper::ParseXMLProtocol(path), TXMLParseHelper::TProtocol::prWebDav);
  EXPECT_EQ(path, u"webdav:x");
  EXPECT_EQ(TXMLParseHelper::BuildProtocolString(TXMLParseHelper::TProtocol::prVirtualDisk), u"vdisk:");
}

// Folder by folder, the difference between what two recounts find, those that are gone included.
TEST(Comparison, ChangesAreThoseOfTwoRecounts) {
  TRandomTree random(77, HardWords());
  for (int round = 0; round < 30; ++round) {
    TRecountSettings settings;
    settings.fPath = u"/m";
    TLive earlier(u"/m", u'/');
    random.Fill(earlier.fStorage->Top(), 4);
    earlier.Scan();
    const std::string text = Written(*earlier.fRoot);
    const TRecount before = RecountStorage(earlier.fStorage->Top(), settings);
    std::vector<TMemoryEntry*> stack{&earlier.fStorage->Top()};
    while (!stack.empty()) {
      TMemoryEntry& folder = *stack.back();
      stack.pop_back();
      for (TMemoryEntry& child : folder.fChildren) {
        child.fRemoved = random.Below(6) == 0;
        if (!child.IsFolder()) child.fValues.fSize += random.Below(3) == 0 ? 1000 : 0;
        if (child.IsFolder() && !child.fRemoved) stack.push_back(&child);
      }
      if (random.Below(4) == 0) folder.AddFolder(u"brand new").AddFile(u"x", 17);
    }
    earlier.Scan();  // its state of now
    const TRecount now = RecountStorage(earlier.fStorage->Top(), settings);
    TStringSource source(text, kPiece);
    const TLoadedRoot loaded = TQZXMLReader::ReadRoot(source, u"x", *earlier.fRoots, {}, TPurpose::puCompare);
    earlier.fRoot->SetComparison(MakeRef<TComparison>(*earlier.fRoot, *loaded.fRoot));
    loaded.fRoot->Dispose();

    std::map<std::u16string, std::pair<int64_t, int64_t>> expected;
    for (const auto& [path, folder] : now) expected[path] = {folder.fValues.fSize, folder.fValues.fFiles};
    for (const auto& [path, folder] : before) {
      expected[path].first -= folder.fValues.fSize;
      expected[path].second -= folder.fValues.fFiles;
    }
    std::map<std::u16string, std::pair<int64_t, int64_t>> found;
    std::vector<TRef<IFolderData>> nodes{earlier.fRoot->GetTopFolder()};
    for (size_t i = 0; i < nodes.size(); ++i) {
      const TRef<IFolderData> node = nodes[i];
      const std::u16string path = node->GetFullPath();
      found[path] = {std::get<int64_t>(node->GetValue(TColumn::mdSizeChange)),
                     std::get<int64_t>(node->GetValue(TColumn::mdFileChange))};
      EXPECT_EQ((node->GetFolderState() & fsIsDummyForComparison) != 0, !now.contains(path));
      EXPECT_EQ(earlier.fRoot->GetComparison()->WasThere(*node), before.contains(path));
      std::vector<TRef<IFolderData>> children = node->FindSubFolders();
      if (now.contains(path))
        for (TRef<IFolderData>& row : earlier.fRoot->GetComparison()->FindGone(*node))
          children.push_back(std::move(row));
      for (TRef<IFolderData>& child : children)
        if (!child->IsFileGroup()) nodes.push_back(std::move(child));
    }
    ASSERT_EQ(found, expected);
    EXPECT_EQ(earlier.fRoot->GetTopFolder()->GetFolders(), static_cast<int64_t>(now.size()) - 1)
        << "what is gone is counted nowhere";
    const std::string compared = Written(*earlier.fRoot);
    EXPECT_NE(compared.find("<IsCompared>-1<"), std::string::npos);
    earlier.Scan();
    EXPECT_FALSE(earlier.fRoot->GetComparison()) << "a new scan begins without";
  }
}

TEST(Comparison, RefusesWhatIsNoWholeState) {
  TLive live(u"/m", u'/');
  live.fStorage->Top().AddFolder(u"a");
  live.Scan();
  auto refusal = [&](const std::string& pText) {
    TStringSource source(pText, kPiece);
    return MessageOf<EScanFileError>(
        [&] { TQZXMLReader::ReadRoot(source, u"old.xml", *live.fRoots, {}, TPurpose::puCompare).fRoot->Dispose(); });
  };
  auto refusalOfFile = [&](const std::u16string& pFile) {
    return MessageOf<EScanFileError>(
        [&] { TQZXMLCompareReader::CompareWithXMLFile(pFile, *live.fRoot, *live.fRoots); });
  };
  const std::string folder = "<Folder fullpath='/m'/></Root>";
  EXPECT_EQ(refusal("<Root>" + folder), "") << "what is absent is fine";
  EXPECT_EQ(
      refusal("<Root><IsFullExport>0</IsFullExport>" + folder),
      "The XML file \"old.xml\" includes information for directories limited to a certain directory level.\r\n\r\n"
      "Only exports of the full directory tree can be used for comparison. To get a full export, activate the option "
      "\"Tools > Options > Export > XML > Full directory tree\".");
  EXPECT_EQ(refusal("<Root><IsCompared>-1</IsCompared>" + folder),
            "The XML file \"old.xml\" contains data of a previous comparison.\r\n\r\n"
            "Exports containing comparison data cannot be used for a second comparison.");
  EXPECT_EQ(refusal("<Root><Terminated>-1</Terminated>" + folder),
            "The XML file \"old.xml\" holds a scan that was stopped before its end.\r\n\r\n"
            "Only whole scans can be used for comparison.");
  EXPECT_EQ(refusalOfFile(u""), "The given file path must not be empty");
  TGate gate;
  live.fStorage->Folder(u"a").fGate = &gate;
  live.fRoot->Scan();
  gate.WaitUntilReached();
  EXPECT_EQ(refusalOfFile(u"old.xml"),
            "This operation is not allowed during an active scan.\r\n\"/m\" currently scanning.\r\n"
            "Please wait until the scan is finished.");
  gate.Open();
  EXPECT_TRUE(live.fRoot->WaitForScan(kForever));
}

}  // namespace Vantrel::XML
