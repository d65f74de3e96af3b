// Volumes made byte by byte, and the trees that are read from them.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "model/tree/Tokens.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "scan/ntfs/NtfsErrors.h"
#include "scan/ntfs/NtfsStorage.h"
#include "tests/support/MemoryVolume.h"

namespace Vantrel::Ntfs {
namespace {

using Testing::Reference;
using Testing::TImage;
using Testing::TMadeRecord;
using Testing::TMadeVolume;
using Testing::TMemoryVolume;
using Testing::TVolumeFaults;

// One volume in memory, scanned as "ntfs:image".
struct TScannedVolume {
  explicit TScannedVolume(TImage pImage) : fImage(std::move(pImage)) {
    TVolumeOpener opener;
    opener.fOpenReader = [this](const std::u16string&) { return std::make_unique<TMemoryVolume>(fImage, fFaults); };
    opener.fFreeMemory = [] { return int64_t{1} << 40; };
    fStorage = CreateNtfsStorage(std::move(opener));
    fPath = fStorage->AbsolutePath(u"ntfs:image");
  }

  TRef<IHierarchicalEnumerator> Open(std::u16string_view pInside = {}) {
    return fStorage->CreateEnumerator(fPath + std::u16string(pInside), fContext);
  }
  uint32_t Code() { return Open()->GetErrorCode(); }

  // A line for each file and folder, by path: "a/b.txt 5/4096", sizes of the file and on storage.
  std::vector<std::string> List(std::u16string_view pInside = {}) {
    std::vector<std::string> lines;
    const TRef<IHierarchicalEnumerator> top = Open(pInside);
    EXPECT_EQ(top->GetErrorCode(), 0u) << fStorage->ErrorText(top->GetErrorCode());
    AddLines(*top, "", lines);
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  void AddLines(IHierarchicalEnumerator& pFolder, const std::string& pPrefix, std::vector<std::string>& pLines) {
    std::vector<TRef<IHierarchicalEnumerator>> folders;
    std::vector<std::string> names;
    while (pFolder.Next()) {
      const std::string name = pPrefix + ToUtf8(pFolder.GetObjectName());
      const TEntryValues values = pFolder.GetEntryValues();
      fValues[name] = values;
      if (!pFolder.IsFolder()) {
        pLines.push_back(fmt::format("{} {}/{}", name, values.fSize, values.fAllocated));
        continue;
      }
      pLines.push_back(name + "/" + (pFolder.CanDescend() ? "" : " not entered"));
      if (!pFolder.CanDescend()) continue;
      names.push_back(name + "/");
      folders.push_back(
          pFolder.CreateChildEnumeratorById(pFolder.GetEntryId(), pFolder.GetObjectName(), values.fAttributes));
    }
    fErrors += pFolder.GetErrorCode() != 0;
    for (size_t i = 0; i < folders.size(); ++i) AddLines(*folders[i], names[i], pLines);
  }

  std::string Notes() {
    std::string notes;
    for (const std::u16string& note : fStorage->GetInformation(fPath).fNotes) notes += ToUtf8(note) + "\n";
    return notes;
  }

  TImage fImage;
  std::shared_ptr<TVolumeFaults> fFaults = std::make_shared<TVolumeFaults>();
  TRef<IStorage> fStorage;
  std::u16string fPath;
  TScanContext fContext;
  std::map<std::string, TEntryValues> fValues;
  int fErrors = 0;  // folders whose listing ended with one
};

using TLines = std::vector<std::string>;

TImage SmallVolume() {
  TMadeVolume volume;
  const uint32_t folder = volume.AddFolder(5, u"a");
  volume.AddFile(folder, u"b.txt", 5);
  volume.AddFile(5, u"c", 300);
  return volume.Image();
}

const TLines kSmallTree = {"a/", "a/b.txt 5/0", "c 300/0"};

TEST(MftTree, NamesSizesAndDatesComeFromTheRecords) {
  TMadeVolume volume;
  const uint32_t folder = volume.AddFolder(5, u"docs");
  TMadeRecord file;
  file.Standard(0x23, 130'000'000'000'000'001, 130'000'000'000'000'002, 130'000'000'000'000'003);
  file.Name(volume.ReferenceTo(folder), u"\u00FCber \U0001F600.txt");
  file.Stream(0x80, {10'000, 12'288, {{500, 3}}});
  volume.Add(file);
  TScannedVolume scan(volume.Image());
  EXPECT_EQ(scan.List(), (TLines{"docs/", "docs/\u00FCber \U0001F600.txt 10000/12288"}));
  const TEntryValues& values = scan.fValues["docs/\u00FCber \U0001F600.txt"];
  EXPECT_EQ(values.fCreationDate.fTicks, 130'000'000'000'000'001);
  EXPECT_EQ(values.fLastChangeDate.fTicks, 130'000'000'000'000'002);
  EXPECT_EQ(values.fLastAccessDate.fTicks, 130'000'000'000'000'003);
  EXPECT_EQ(values.fAttributes, 0x23u);
  const TStorageInformation information = scan.fStorage->GetInformation(scan.fPath);
  EXPECT_EQ(information.fLabel, u"made");
  EXPECT_EQ(information.fFileSystem, u"NTFS");
  EXPECT_EQ(information.fTotalBytes, static_cast<int64_t>(scan.fImage.size()));
  EXPECT_EQ(information.fFreeBytes, 0) << "all clusters of the made volume are marked as used";
}

TEST(MftTree, EachFormOfDataCountsAsItIsStored) {
  const struct {
    const char16_t* fName;
    TMadeRecord fRecord;
    int64_t fSize;
    int64_t fAllocated;
    int64_t fWithStreams;  // with shared hard links, which include alternate streams
    TAttributes fAttributes;
  } cases[] = {
      {u"resident", TMadeRecord().Standard(0x20).Data(700), 700, 0, 0, 0x20},
      {u"plain", TMadeRecord().Standard(0x20).Stream(0x80, {5000, 8192, {{900, 2}}}), 5000, 8192, 8192, 0x20},
      {u"compressed", TMadeRecord().Standard(0x820).Stream(0x80, {99'999, 131'072, {{900, 4}}, 16'384}), 99'999, 16'384,
       16'384, 0x820},
      {u"sparse", TMadeRecord().Standard(0x220).Stream(0x80, {1 << 30, 1 << 30, {{-1, 262'144}}, 0}), 1 << 30, 0, 0,
       0x220},
      {u"marked as compressed, but plain", TMadeRecord().Standard(0x820).Stream(0x80, {5000, 8192, {{900, 2}}}), 5000,
       8192, 8192, 0x820},
      {u"with streams",
       TMadeRecord()
           .Standard(0x20)
           .Stream(0x80, {5000, 8192, {{900, 2}}})
           .Data(9, u"small")
           .Stream(0x80, {5000, 12'288, {{950, 3}}}, u"large"),
       5000, 8192, 20'480, 0x8020},
      {u"overlay",
       TMadeRecord()
           .Standard(0x420)
           .Stream(0x80, {90'000, 90'112, {{-1, 22}}, 0})
           .Stream(0x80, {20'000, 20'480, {{970, 5}}}, u"WofCompressedData")
           .Reparse(0x8000'0017),
       90'000, 20'480, 20'480, 0xC20},
      {u"ignored streams", TMadeRecord().Standard(0x20).Data(3).Stream(0x80, {4096, 4096, {{999, 1}}}, u"Win32App_1"),
       3, 0, 0, 0x20},
      {u"in the cloud", TMadeRecord().Standard(0x420).Data(3).Reparse(0x9000'601A), 3, 0, 0, 0x40'1420},
      {u"link to a file", TMadeRecord().Standard(0x420).Reparse(0xA000'000C), 0, 0, 0, 0x420},
      {u"unknown attributes", TMadeRecord().Standard(0xFFFF'FFFF).Data(1), 1, 0, 0, 0x8000'0000},
      {u"no attributes", TMadeRecord().Standard(0).Data(1), 1, 0, 0, 0x80},
      {u"an impossible size", TMadeRecord().Standard(0x20).Stream(0x80, {-5, int64_t{1} << 62, {{1, 1}}}), 0, 0, 0,
       0x20},
  };
  TMadeVolume volume;
  for (const auto& each : cases) {
    TMadeRecord record = each.fRecord;
    volume.Add(record.Name(volume.ReferenceTo(5), each.fName));
  }
  for (const bool shares : {false, true}) {
    TScannedVolume scan(volume.Image());
    if (shares) scan.fContext.fOptions = heoShareHardLinks;
    EXPECT_EQ(scan.List().size(), std::size(cases));
    for (const auto& each : cases) {
      const std::string name = ToUtf8(each.fName);
      const TEntryValues& values = scan.fValues[name];
      EXPECT_EQ(values.fSize, each.fSize) << name;
      EXPECT_EQ(values.fAllocated, shares ? each.fWithStreams : each.fAllocated) << name;
      EXPECT_EQ(values.fAttributes, each.fAttributes) << name;
    }
    EXPECT_NE(scan.Notes().find("1 name has a file with an impossible size"), std::string::npos) << scan.Notes();
  }
}

TEST(MftTree, AFileHasOneEntryForEachNameButShortOnes) {
  TMadeVolume volume;
  const uint32_t one = volume.AddFolder(5, u"one");
  const uint32_t two = volume.AddFolder(5, u"two");
  TMadeRecord file;
  file.Standard(0x20).Name(volume.ReferenceTo(one), u"LONGNA~1.TXT", 2).Name(volume.ReferenceTo(one), u"long name.txt");
  file.Name(volume.ReferenceTo(two), u"other").Name(volume.ReferenceTo(two), u"OTHER~1", 2);
  file.Stream(0x80, {5000, 8193, {{900, 3}}});
  volume.Add(file);
  volume.Add(TMadeRecord().Standard(0x20).Name(volume.ReferenceTo(one), u"ONLYDO~1", 2).Data(1));
  TScannedVolume scan(volume.Image());
  EXPECT_EQ(scan.List(),
            (TLines{"one/", "one/ONLYDO~1 1/0", "one/long name.txt 5000/8193", "two/", "two/other 5000/8193"}));
  scan.fContext.fOptions = heoShareHardLinks;
  scan.List();
  EXPECT_EQ(scan.fValues["two/other"].fAllocated, 4096) << "half of 8193, cut";
}

TEST(MftTree, ExtensionRecordsAreMergedIntoTheirFiles) {
  TMadeVolume volume;
  const uint32_t folder = volume.AddFolder(5, u"links");
  // The extension with the sizes stands before its base record, those with more names behind it.
  const uint32_t base = 70;
  volume.fRecords.emplace(66, TMadeRecord(TMadeRecord::kUsed, 1, Reference(base, 3))
                                  .Stream(0x80, {1 << 20, 1 << 20, {{300, 256}}})
                                  .Stream(0x80, {100, 4096, {{700, 1}}}, u"s1"));
  volume.fRecords.emplace(base,
                          TMadeRecord(TMadeRecord::kUsed, 3).Standard(0x20).Name(volume.ReferenceTo(folder), u"0"));
  volume.fRecords.emplace(67, TMadeRecord(TMadeRecord::kUsed, 1, Reference(base, 3))
                                  .Stream(0x80, {0, 0, {{900, 50}}, -1, 256})
                                  .Stream(0x80, {100, 8192, {{701, 2}}}, u"s2"));
  TLines expected = {"links/", "links/0 1048576/1048576"};
  for (uint32_t record = 80; record < 90; ++record) {
    TMadeRecord names(TMadeRecord::kUsed, 1, Reference(base, 3));
    for (int i = 0; i < 5; ++i) {
      const std::string name = fmt::format("name {}", (record - 80) * 5 + static_cast<uint32_t>(i));
      names.Name(volume.ReferenceTo(folder), FromUtf8(name));
      expected.push_back("links/" + name + " 1048576/1048576");
    }
    volume.fRecords.emplace(record, names);
  }
  // Left over from a file that had the record before.
  volume.fRecords.emplace(91, TMadeRecord(TMadeRecord::kUsed, 1, Reference(base, 2))
                                  .Name(volume.ReferenceTo(folder), u"of the past")
                                  .Stream(0x80, {777, 4096, {{800, 1}}}));
  std::sort(expected.begin(), expected.end());
  TScannedVolume scan(volume.Image());
  EXPECT_EQ(scan.List(), expected);
  scan.fContext.fOptions = heoShareHardLinks;
  scan.List();
  EXPECT_EQ(scan.fValues["links/name 7"].fAllocated, ((1 << 20) + 4096 + 8192) / 51);
  EXPECT_EQ(scan.fValues["links/name 7"].fAttributes, 0x8020u);
}

TEST(MftTree, TheTableMayLieAnywhereOnVolumesOfAnyShape) {
  const struct {
    const char* fWhat;
    uint32_t fSector, fCluster, fRecord;
    std::vector<Testing::TMadeRun> fRuns;  // empty: in one piece
    uint32_t fInRecord0;
  } cases[] = {
      {"usual", 512, 4096, 1024, {}, 0},
      {"smallest clusters", 512, 512, 1024, {}, 0},
      {"runs that end inside records", 512, 512, 1024, {{300, 9}, {700, 3}, {400, 300}}, 0},
      {"sectors of 4 KiB", 4096, 4096, 4096, {}, 0},
      {"clusters of 64 KiB", 512, 65'536, 1024, {}, 0},
      {"clusters of 2 MiB", 512, 2 << 20, 1024, {}, 0},
      {"in pieces", 512, 4096, 1024, {{40, 5}, {90, 1}, {20, 2}, {200, 20}}, 0},
      {"in pieces that an attribute list tells", 512, 4096, 1024, {{40, 5}, {90, 1}, {20, 2}, {200, 20}}, 1},
  };
  for (const auto& each : cases) {
    TMadeVolume volume;
    volume.fSectorSize = each.fSector;
    volume.fClusterSize = each.fCluster;
    volume.fRecordSize = each.fRecord;
    volume.fTableRuns = each.fRuns;
    volume.fTableRunsInRecord0 = each.fInRecord0;
    const uint32_t folder = volume.AddFolder(5, u"a");
    volume.AddFile(folder, u"b.txt", 5);
    volume.AddFile(5, u"c", 300);
    for (const bool damaged : {false, true}) {
      volume.fDamageFirstRecord = damaged;
      TScannedVolume scan(volume.Image());
      EXPECT_EQ(scan.List(), kSmallTree) << each.fWhat << (damaged ? ", by the copy of the first record" : "");
    }
  }
}

TEST(MftTree, WhatHasNoPlaceIsAmongTheOrphans) {
  TMadeVolume volume;
  volume.Add(TMadeRecord().Standard(0x20).Name(Reference(3000), u"folder beyond the table").Data(1));
  volume.Add(TMadeRecord().Standard(0x20).Name(Reference(5, 9), u"folder was another").Data(1));
  const uint32_t file = volume.AddFile(5, u"file", 1);
  volume.Add(TMadeRecord().Standard(0x20).Name(volume.ReferenceTo(file), u"in a file").Data(1));
  volume.Add(TMadeRecord().Standard(0x20).Data(1));  // record 68: no name
  volume.Add(TMadeRecord().Standard(0x20).Name(~uint64_t{0}, u"nowhere").Data(1));
  // Folders in each other, with a file.
  volume.Add(TMadeRecord(3).Standard(0).Name(Reference(71), u"egg"));       // record 70
  volume.Add(TMadeRecord(3).Standard(0).Name(Reference(70), u"hen"));       // record 71
  volume.AddFile(71, u"feather", 1);                                        // record 72
  volume.Add(TMadeRecord(3).Standard(0).Name(Reference(73), u"own tail"));  // record 73
  volume.Add(TMadeRecord(0).Standard(0x20).Name(Reference(5, 5), u"deleted").Data(1));
  volume.Add(TMadeRecord(2).Standard(0x20).Name(Reference(5, 5), u"deleted folder"));
  // A folder with two places shows its contents in the first.
  const uint32_t twice =
      volume.Add(TMadeRecord(3).Standard(0).Name(Reference(5, 5), u"first").Name(Reference(5, 5), u"second"));
  volume.AddFile(twice, u"..", 1);
  volume.AddFile(twice, u"a/b", 1);
  TScannedVolume scan(volume.Image());
  EXPECT_EQ(scan.List(),
            (TLines{"<orphans>/", "<orphans>/<record 68> 1/0", "<orphans>/egg/", "<orphans>/egg/hen/",
                    "<orphans>/egg/hen/feather 1/0", "<orphans>/folder beyond the table 1/0",
                    "<orphans>/folder was another 1/0", "<orphans>/in a file 1/0", "<orphans>/nowhere 1/0",
                    "<orphans>/own tail/", "file 1/0", "first/", "first/<record 77> 1/0", "first/a\uFFFDb 1/0"}));
  EXPECT_NE(scan.Notes().find("7 names without a folder"), std::string::npos) << scan.Notes();
}

TEST(MftTree, LinksToFoldersAreNotEnteredOtherReparsePointsAre) {
  TMadeVolume volume;
  const struct {
    const char16_t* fName;
    uint32_t fTag;
    TAttributes fAttributes;
  } folders[] = {{u"junction", 0xA000'0003, 0x410}, {u"link", 0xA000'000C, 0x410}, {u"cloud", 0x9000'301A, 0x40'1010}};
  for (const auto& each : folders)
    volume.AddFile(volume.Add(TMadeRecord(3).Standard(0x400).Name(Reference(5, 5), each.fName).Reparse(each.fTag)),
                   u"f");
  TScannedVolume scan(volume.Image());
  EXPECT_EQ(scan.List(), (TLines{"cloud/", "cloud/f 0/0", "junction/ not entered", "link/ not entered"}));
  for (const auto& each : folders)
    EXPECT_EQ(scan.fValues[ToUtf8(each.fName)].fAttributes, each.fAttributes) << ToUtf8(each.fName);
}

TEST(MftTree, TheVolumesOwnFilesAreShownOnlyWhenWanted) {
  TMadeVolume volume;
  volume.AddFile(5, u"$mine", 1);
  TMadeRecord log(TMadeRecord::kUsed, 2);
  volume.fRecords.emplace(
      2, log.Standard(6).Name(Reference(5, 5), u"$LogFile").Stream(0x80, {4 << 20, 4 << 20, {{9, 9}}}));
  volume.fRecords.emplace(11, TMadeRecord(3, 11).Standard(6).Name(Reference(5, 5), u"$Extend"));
  volume.fRecords.emplace(24, TMadeRecord().Standard(6).Name(Reference(11, 11), u"$Quota").Data(1));
  TScannedVolume scan(volume.Image());
  EXPECT_EQ(scan.List(), (TLines{"$mine 1/0"}));
  EXPECT_NE(scan.Notes().find("Not shown: the volume's own files"), std::string::npos) << scan.Notes();
  scan.fContext.fOptions = heoMftSystemFiles;
  const TLines all = scan.List();
  for (const char* name : {"$LogFile 4194304/4194304", "$Extend/", "$Extend/$Quota 1/0", "$mine 1/0"})
    EXPECT_NE(std::find(all.begin(), all.end(), name), all.end()) << name;
  EXPECT_EQ(scan.Notes().find("Not shown"), std::string::npos);
}

TEST(MftTree, CompatibleReadingKeepsItsRules) {
  TMadeVolume volume;
  // Cut to 24 bits, the reference leads to the root.
  volume.Add(TMadeRecord().Standard(0x20).Name(Reference(0x1'0000'0005, 5), u"24 bits").Data(1));
  const uint32_t base = volume.Add(TMadeRecord().Standard(0x20).Name(Reference(5, 5), u"streams").Data(1));
  for (const int64_t size : {4096, 8192})
    volume.Add(TMadeRecord(1, 1, Reference(base)).Stream(0x80, {size, size, {{900, size / 4096}}}, u"s"));
  volume.Add(TMadeRecord().Standard(0x820).Name(Reference(5, 5), u"compressed").Stream(0x80, {5000, 8192, {{9, 2}}}));
  volume.Add(TMadeRecord(4).Standard(0x20).Name(Reference(5, 5), u"flag 4").Data(1));
  for (const bool compatible : {false, true}) {
    TScannedVolume scan(volume.Image());
    scan.fContext.fOptions = heoShareHardLinks | (compatible ? heoMftCompatible : 0u);
    EXPECT_EQ(scan.List(),
              compatible ? (TLines{"24 bits 1/0", "compressed 5000/0", "flag 4 1/0", "streams 1/8192"})
                         : (TLines{"<orphans>/", "<orphans>/24 bits 1/0", "compressed 5000/8192", "streams 1/12288"}));
  }
}

TEST(MftTree, TornRecordsCountAndAreTold) {
  TMadeVolume volume;
  volume.Add(TMadeRecord().Standard(0x20).Name(Reference(5, 5), u"torn").Data(1).Torn());
  TScannedVolume scan(volume.Image());
  EXPECT_EQ(scan.List(), (TLines{"torn 1/0"}));
  EXPECT_NE(scan.Notes().find("1 record was written in part only"), std::string::npos) << scan.Notes();
}

TEST(MftTree, APathMayLeadIntoTheVolume) {
  TScannedVolume scan(SmallVolume());
  EXPECT_EQ(scan.List(u"a"), (TLines{"b.txt 5/0"}));
  EXPECT_EQ(scan.List(u"A"), (TLines{"b.txt 5/0"})) << "letter case does not count";
  const TRef<IHierarchicalEnumerator> file = scan.Open(std::u16string(u"a") + NativePathDelimiter() + u"b.txt");
  EXPECT_FALSE(file->IsFolder());
  ASSERT_TRUE(file->Next());
  EXPECT_EQ(file->GetObjectName(), u"b.txt");
  EXPECT_EQ(ToUtf8(file->GetFullPath()), ToUtf8(JoinPath(scan.fPath + u"a", u"b.txt", NativePathDelimiter())));
  EXPECT_FALSE(file->Next());
  EXPECT_EQ(scan.Open(u"x")->GetErrorCode(), kErrorNoFolder);
}

TEST(MftTree, PathsAreSplitAtTheLastBar) {
  const struct {
    const char16_t *fPath, *fImage, *fInside;
  } cases[] = {{u"ntfs:disk.img", u"disk.img", u""},
               {u"NTFS:disk.img|", u"disk.img", u""},
               {u"ntfs:disk.img|/", u"disk.img", u""},
               {u"ntfs:disk.img|/a//b/", u"disk.img", u"a/b"},
               {u"ntfs:a|b.img", u"a|b.img", u""},
               {u"ntfs:a|b.img|/x", u"a|b.img", u"x"},
               {u"ntfs:/dev/sdb1|/x|y", u"/dev/sdb1", u"x|y"}};
  for (const auto& each : cases) {
    const TNtfsPath path = SplitNtfsPath(each.fPath, u'/');
    EXPECT_EQ(path.fImage, each.fImage) << ToUtf8(each.fPath);
    EXPECT_EQ(path.fInside, each.fInside) << ToUtf8(each.fPath);
  }
}

TEST(MftTree, DisksShowTheirNtfsPartitions) {
  TImage fat(8192);
  std::memcpy(fat.data() + 54, "FAT16   ", 8);
  const TImage small = SmallVolume();
  const struct {
    const char* fWhat;
    TImage fDisk;
    TLines fFolders;
  } cases[] = {
      {"MBR", Testing::MadeMbrDisk({small, fat, small}), {"Partition 1/", "Partition 3/"}},
      {"MBR with logical partitions", Testing::MadeMbrDisk({fat}, {small, small}), {"Partition 5/", "Partition 6/"}},
      {"GPT", Testing::MadeGptDisk({fat, small}), {"Partition 2/"}}};
  for (const auto& each : cases) {
    TScannedVolume scan(each.fDisk);
    TLines expected;
    for (const std::string& folder : each.fFolders) {
      expected.push_back(folder);
      for (const std::string& line : kSmallTree) expected.push_back(folder + line);
    }
    EXPECT_EQ(scan.List(), expected) << each.fWhat;
    const std::u16string name = FromUtf8(each.fFolders.back().substr(0, each.fFolders.back().size() - 1));
    EXPECT_EQ(scan.List(name), kSmallTree) << each.fWhat;
    EXPECT_EQ(scan.List(name + NativePathDelimiter() + u"a"), (TLines{"b.txt 5/0"})) << each.fWhat;
  }
  EXPECT_EQ(TScannedVolume(Testing::MadeMbrDisk({fat})).Code(), kErrorNoNtfsPartition);
}

TEST(MftTree, WhatIsNoNtfsVolumeIsTold) {
  auto withText = [](size_t pAt, std::string_view pText) {
    TImage image(1 << 20);
    std::copy(pText.begin(), pText.end(), image.begin() + static_cast<std::ptrdiff_t>(pAt));
    return image;
  };
  TImage noTable = SmallVolume();
  std::fill(noTable.begin() + 8192, noTable.end(), 0);
  TImage noSize = SmallVolume();
  noSize[13] = 3;
  TImage cut = SmallVolume();
  cut.resize(8192);
  const struct {
    TImage fImage;
    const char* fText;
  } cases[] = {
      {{}, "It is empty"},
      {withText(54, "FAT16   "), "It holds a FAT file system, not NTFS"},
      {withText(82, "FAT32   "), "It holds a FAT file system, not NTFS"},
      {withText(3, "EXFAT   "), "It holds an exFAT file system, not NTFS"},
      {withText(3, std::string_view("ReFS\0\0\0\0", 8)), "It holds a ReFS file system, not NTFS"},
      {withText(3, "-FVE-FS-"), "It is encrypted by BitLocker and must be unlocked first"},
      {withText(0, "something else"), "It holds no NTFS file system"},
      {withText(0, ""), "It holds no NTFS file system"},
      {TImage(100), "It holds no NTFS file system"},
      {noTable, "Its file table cannot be found"},
      {noSize, "Its boot sector is damaged"},
      {cut, "The image ends inside the file table"},
  };
  for (const auto& each : cases) {
    TScannedVolume scan(each.fImage);
    EXPECT_EQ(scan.fStorage->ErrorText(scan.Code()), each.fText);
  }
}

// --- reading -------------------------------------------------------------------------------------------------------

// A table of several buffers, with one file in each record from 64 on.
TImage LargeVolume(uint32_t pRecords, std::vector<Testing::TMadeRun> pRuns = {}) {
  TMadeVolume volume;
  volume.fTableRuns = std::move(pRuns);
  for (uint32_t record = 64; record < pRecords; ++record) volume.AddFile(5, FromUtf8(std::to_string(record)), 1);
  return volume.Image();
}

TEST(MftReading, BuffersAreFilledAheadStretchByStretch) {
  // 3000 records are 750 clusters. A buffer holds 64 clusters.
  TScannedVolume scan(LargeVolume(3000, {{100, 70}, {400, 10}, {1000, 700}}));
  EXPECT_EQ(scan.List().size(), 3000u - 64);
  EXPECT_GE(scan.fFaults->fMostUnderWay, 2u);
  EXPECT_LE(scan.fFaults->fMostUnderWay, 4u);
  std::vector<size_t> stretches;
  for (const size_t length : scan.fFaults->fLengths)
    if (length >= 4096 * 5 && length != 65'536) stretches.push_back(length / 4096);
  EXPECT_EQ(stretches, (std::vector<size_t>{64, 6, 10, 64, 64, 64, 64, 64, 64, 64, 64, 64, 64, 30}))
      << "the last stretch of a run is shorter";
  EXPECT_EQ(TOverlappedBufferList::CountFor(1, 1 << 30), 2u);
  EXPECT_EQ(TOverlappedBufferList::CountFor(9, 1 << 30), 4u);
  EXPECT_EQ(TOverlappedBufferList::CountFor(9, 300'000), 2u);
  EXPECT_EQ(TOverlappedBufferList::CountFor(9, 1000), 1u);
}

TEST(MftReading, EveryReadMayFail) {
  const TImage image = LargeVolume(1500);
  TScannedVolume sound(image);
  const size_t all = sound.List().size();
  const int reads = sound.fFaults->fReads;
  ASSERT_GT(reads, 6);
  for (int failing = 0; failing < reads; ++failing) {
    for (const bool atStart : {false, true}) {
      TScannedVolume scan(image);
      scan.fFaults->fFailingRead = failing;
      scan.fFaults->fFailsAtStart = atStart;
      const TRef<IHierarchicalEnumerator> top = scan.Open();
      if (top->GetErrorCode() != 0) {
        EXPECT_EQ(top->GetErrorCode(), TMemoryVolume::kReadError) << failing;
        continue;
      }
      TLines lines;
      scan.AddLines(*top, "", lines);
      // What is missing is never missing in silence. The volume's label and free space may be.
      const bool isTold = scan.fErrors > 0 && scan.Notes().find("could not be read") != std::string::npos;
      EXPECT_TRUE(lines.size() == all || isTold) << "read " << failing;
      EXPECT_EQ(top->GetErrorCode(), isTold ? TMemoryVolume::kReadError : 0u);
    }
  }
}

TEST(MftReading, AnImageThatEndsInsideItsTableIsReadSoFar) {
  const TImage image = LargeVolume(2000);
  for (const size_t cut : {size_t{1}, size_t{4096}, size_t{1} << 20}) {
    TScannedVolume scan(TImage(image.begin(), image.end() - static_cast<std::ptrdiff_t>(cut)));
    const TRef<IHierarchicalEnumerator> top = scan.Open();
    ASSERT_EQ(top->GetErrorCode(), 0u);
    TLines lines;
    scan.AddLines(*top, "", lines);
    EXPECT_EQ(top->GetErrorCode(), kErrorTruncated) << cut;
    EXPECT_LT(lines.size(), 2000u - 64);
    EXPECT_NE(scan.Notes().find("The image is shorter than its volume."), std::string::npos);
  }
}

TEST(MftReading, CancellingEndsItAtAnyRead) {
  const TImage image = LargeVolume(1500);
  for (int read = 0; read < 8; ++read) {
    TScannedVolume scan(image);
    auto token = MakeRef<TCancellationToken>();
    scan.fContext.fCancellation = token;
    int after = 0;
    scan.fFaults->fOnRead = [&](int pRead) {
      if (pRead == read) token->Cancel();
      if (pRead > read) ++after;
    };
    const TRef<IHierarchicalEnumerator> top = scan.Open();
    EXPECT_LE(after, 8) << "a cancelled scan reads on";
    EXPECT_EQ(top->GetErrorCode() != 0, token->IsCancelled()) << read;
  }
}

TEST(MftReading, ProgressRunsToTheNumberOfRecords) {
  TScannedVolume scan(LargeVolume(20'000));
  std::vector<int64_t> done;
  scan.fContext.fOnPrepare = [&](int64_t pDone, int64_t pAll) {
    EXPECT_EQ(pAll, 20'000);
    done.push_back(pDone);
  };
  scan.Open();
  EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
  EXPECT_GE(done.size(), 3u);
  EXPECT_EQ(done.back(), 20'000);
}

// Bytes of a sound volume are changed at random: a tree must come out, or an error.
TEST(MftReading, DamagedVolumesGiveATreeOrAnError) {
  const TImage image = SmallVolume();
  uint64_t random = 1;
  auto next = [&] { return random = random * 6'364'136'223'846'793'005u + 1'442'695'040'888'963'407u, random >> 33; };
  for (int round = 0; round < 1000; ++round) {
    TImage damaged = image;
    for (uint64_t i = next() % 20 + 1; i > 0; --i) {
      // The boot sector, or one of the records that are used.
      const size_t at = next() % 4 == 0 ? next() % 512 : damaged.size() - (next() % 64 + 1) * 1024 + next() % 1024;
      damaged[at] = static_cast<uint8_t>(next() % 3 == 0 ? 0xFF : next());
    }
    TScannedVolume scan(damaged);
    const TRef<IHierarchicalEnumerator> top = scan.Open();
    TLines lines;
    if (top->GetErrorCode() == 0) scan.AddLines(*top, "", lines);
    EXPECT_LT(lines.size(), 200u);
  }
}

}  // namespace
}  // namespace Vantrel::Ntfs
