// Mounted volumes, scanned through their tables or the ordinary way. Windows' driver, whose control codes Wine lacks,
// is stood in for by a staged one.

#include <gtest/gtest.h>

#include <algorithm>

#include "model/tree/Tokens.h"
#include "platform/files/Paths.h"
#include "platform/system/DebugLog.h"
#include "platform/text/Text.h"
#include "scan/ntfs/MountedNtfsStorage.h"
#include "scan/ntfs/NtfsErrors.h"
#include "tests/support/MemoryServices.h"
#include "tests/support/MemoryVolume.h"

namespace Vantrel::Ntfs {
namespace {

using Testing::Reference;
using Testing::TImage;
using Testing::TMadeRecord;
using Testing::TMadeVolume;
using Testing::TMemoryVolume;
using Testing::TStagedNtfsDriver;

const std::u16string kRoot = u"/volume";

// A mounted volume: its bytes, its driver, and what the ordinary way lists.
struct TMounted {
  TMounted() {
    fOrdinary = Testing::TMemoryStorage::Create(kRoot, NativePathDelimiter());
    fOrdinary->Top().AddFile(u"by the ordinary way", 1);
    fServices->fStorages[kRoot] = fOrdinary;
    fOpener.fFindMounted = [this](const std::u16string& pPath) {
      return pPath == kRoot ? fMounted : std::optional<TMountedNtfs>();
    };
    fOpener.fOpenReader = [this](const std::u16string&) -> std::unique_ptr<IVolumeReader> {
      if (fOpenError != 0) throw EOSError(fOpenError, "Opening a volume", u"device");
      return std::make_unique<TMemoryVolume>(fImage, fFaults);
    };
    fOpener.fOpenDriver = [this](const std::u16string&, const std::u16string&) -> std::unique_ptr<INtfsDriver> {
      return fDriver ? std::make_unique<TStagedNtfsDriver>(*fDriver) : nullptr;
    };
    fOpener.fFreeMemory = [this] { return fFreeMemory; };
    fContext.fOptions = heoScanMft;
  }

  std::vector<std::string> List() {
    fStorage = CreateMountedNtfsStorage(fServices->FindStorage(kRoot), fOpener);
    std::vector<std::string> lines;
    AddLines(*fStorage->CreateEnumerator(kRoot, fContext), "", lines);
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  void AddLines(IHierarchicalEnumerator& pFolder, const std::string& pPrefix, std::vector<std::string>& pLines) {
    while (pFolder.Next()) {
      pLines.push_back(pPrefix + ToUtf8(pFolder.GetObjectName()));
      if (!pFolder.IsFolder() || !pFolder.CanDescend()) continue;
      AddLines(
          *pFolder.CreateChildEnumeratorById(pFolder.GetEntryId(), pFolder.GetObjectName(), pFolder.GetAttributes()),
          pLines.back() + "/", pLines);
    }
  }

  std::vector<std::string> Notes() const {
    std::vector<std::string> notes;
    for (const std::u16string& note : fStorage->GetInformation(kRoot).fNotes) notes.push_back(ToUtf8(note));
    return notes;
  }

  TImage fImage;
  std::shared_ptr<Testing::TVolumeFaults> fFaults = std::make_shared<Testing::TVolumeFaults>();
  std::optional<TStagedNtfsDriver> fDriver;
  std::optional<TMountedNtfs> fMounted = TMountedNtfs{kRoot, u"device", {}};
  uint32_t fOpenError = 0;
  int64_t fFreeMemory = int64_t{1} << 40;
  TRef<Testing::TMemoryServices> fServices = MakeRef<Testing::TMemoryServices>();
  std::shared_ptr<Testing::TMemoryStorage> fOrdinary;
  TVolumeOpener fOpener;
  TScanContext fContext;
  TRef<IStorage> fStorage;
};

using TLines = std::vector<std::string>;
const TLines kOrdinary = {"by the ordinary way"};
const TLines kIndexed = {"a", "a/b"};

// A table in three pieces, and a staged driver that tells them.
void MakeVolume(TMounted& pMounted) {
  TMadeVolume volume;
  volume.fTableRuns = {{40, 5}, {90, 1}, {20, 20}};
  volume.AddFile(volume.AddFolder(5, u"a"), u"b", 5);
  pMounted.fImage = volume.Image();
  std::fill_n(pMounted.fImage.begin(), 512, uint8_t{0});  // only the driver knows where the table is
  pMounted.fDriver.emplace();
  pMounted.fDriver->fExtents = volume.fTableRuns;
  pMounted.fDriver->SetVolumeData(66 * 1024, 1024, 4096, 512);
}

TEST(MountedNtfs, AStagedDriverTellsWhereTheTableIs) {
  TMounted mounted;
  MakeVolume(mounted);
  std::vector<size_t> sizes;
  mounted.fDriver->fAskedSizes = &sizes;
  EXPECT_EQ(mounted.List(), kIndexed);
  EXPECT_EQ(sizes, (std::vector<size_t>{32, 64})) << "three extents and the header need 64 bytes";
  EXPECT_EQ(mounted.Notes().at(0), "Read from the file table of the volume: 66 records.");
  mounted.fDriver->SetVolumeData(67 * 1024, 1024, 4096, 512);
  mounted.List();
  EXPECT_EQ(mounted.Notes().at(0), "Read from the file table of the volume: 67 records.")
      << "a new scan asks the driver again";
}

TEST(MountedNtfs, WithoutADriverTheVolumeItselfTells) {
  TMounted mounted;
  TMadeVolume volume;
  volume.AddFile(volume.AddFolder(5, u"a"), u"b", 5);
  mounted.fImage = volume.Image();
  EXPECT_EQ(mounted.List(), kIndexed);
}

TEST(MountedNtfs, WhatPreventsTheTableIsToldInOneLine) {
  const struct {
    const char* fWhat;
    std::function<void(TMounted&)> fSet;
    std::string fReason;
  } cases[] = {
      {"no rights", [](TMounted& pIt) { pIt.fOpenError = 5; }, OSErrorText(5)},
      {"extents refused", [](TMounted& pIt) { pIt.fDriver->fExtentsError = 87; }, OSErrorText(87)},
      {"sizes refused", [](TMounted& pIt) { pIt.fDriver->fDataError = 1; }, "Its file table is empty"},
      {"too little memory", [](TMounted& pIt) { pIt.fFreeMemory = 65'999; }, "Not enough memory"},
      {"a read that fails", [](TMounted& pIt) { pIt.fFaults->fFailingRead = 1; }, OSErrorText(5)},
      {"a read that cannot be started",
       [](TMounted& pIt) {
         pIt.fFaults->fFailingRead = 0;
         pIt.fFaults->fFailsAtStart = true;
       },
       OSErrorText(5)},
  };
  for (const auto& each : cases) {
    TMounted mounted;
    MakeVolume(mounted);
    each.fSet(mounted);
    EXPECT_EQ(mounted.List(), kOrdinary) << each.fWhat;
    EXPECT_EQ(mounted.Notes(), (TLines{"Not read from the file table of the volume: " + each.fReason + "."}))
        << each.fWhat;
  }
}

TEST(MountedNtfs, TheOrdinaryWayServesWhereTheTableIsNotWanted) {
  const struct {
    const char* fWhat;
    std::function<void(TMounted&)> fSet;
  } cases[] = {{"option off", [](TMounted& pIt) { pIt.fContext.fOptions = 0; }},
               {"refresh of a branch", [](TMounted& pIt) { pIt.fContext.fIsWholeTree = false; }},
               {"no NTFS volume", [](TMounted& pIt) { pIt.fMounted.reset(); }}};
  for (const auto& each : cases) {
    TMounted mounted;
    MakeVolume(mounted);
    each.fSet(mounted);
    EXPECT_EQ(mounted.List(), kOrdinary) << each.fWhat;
    EXPECT_EQ(mounted.Notes(), TLines()) << each.fWhat;
  }
}

TEST(MountedNtfs, FollowedLinksAndMountsAreListedTheOrdinaryWay) {
  TMadeVolume volume;
  const uint32_t folder = volume.AddFolder(5, u"a");
  volume.AddFile(volume.AddFolder(folder, u"mount"), u"hidden beneath the mount", 1);
  volume.Add(TMadeRecord(3).Standard(0x400).Name(Reference(5, 5), u"link").Reparse(0xA000'0003));
  TMounted mounted;
  mounted.fImage = volume.Image();
  mounted.fOrdinary->Folder(u"a/mount").AddFile(u"in the mount", 1);
  mounted.fOrdinary->Folder(u"link").AddFile(u"behind the link", 1);
  EXPECT_EQ(mounted.List(), (TLines{"a", "a/mount", "a/mount/hidden beneath the mount", "link"}));
  mounted.fContext.fOptions |= heoFollowMountPoints;
  mounted.fMounted->fMountsBeneath = {
      JoinPath(JoinPath(kRoot, u"a", NativePathDelimiter()), u"mount", NativePathDelimiter())};
  EXPECT_EQ(mounted.List(), (TLines{"a", "a/mount", "a/mount/in the mount", "link", "link/behind the link"}));
}

TEST(MountedNtfs, TheLogSaysHowTheIndexWasBuilt) {
  std::vector<std::string> lines;
  SetDebugLogSink([&](std::u16string_view pLine) { lines.push_back(ToUtf8(pLine)); });
  TMounted mounted;
  MakeVolume(mounted);
  mounted.List();
  auto token = MakeRef<TCancellationToken>();
  token->Cancel();
  mounted.fContext.fCancellation = token;
  mounted.List();
  mounted.fContext.fCancellation = nullptr;
  mounted.fFreeMemory = 65'999;
  mounted.List();
  SetDebugLogSink({});
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], "<MFT INDEX start: \"/volume\". 66 records>");
  EXPECT_TRUE(lines[1].starts_with("<INDEX: Duration: ")) << lines[1];
  EXPECT_NE(lines[1].find(" ms. Path: \"/volume\". 1 files, 1 folders. Version: "), std::string::npos) << lines[1];
  EXPECT_TRUE(lines[3].starts_with("<INDEX CANCELED: Duration: ")) << lines[3];
  EXPECT_EQ(lines[4],
            "THierarchicalMftRoot.HasSufficientMemory : Not sufficient memory to fill the MftRoot (66 MFT entries / "
            "65999 Bytes memory available).");
}

}  // namespace
}  // namespace Vantrel::Ntfs
