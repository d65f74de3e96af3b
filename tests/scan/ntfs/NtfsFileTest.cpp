// Contents of files of volumes made byte by byte: each form of storage, and what cannot be read.

#include <gtest/gtest.h>

#include <random>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "scan/ntfs/Lznt1.h"
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

constexpr size_t kCluster = 4096;
constexpr size_t kUnit = 16 * kCluster;
constexpr int64_t kFree = 300;  // the first cluster that the made volumes leave free

// --- packing -------------------------------------------------------------------------------------------------------

void AppendNumber(TImage& pBytes, size_t pNumber) {
  pBytes.push_back(static_cast<uint8_t>(pNumber));
  pBytes.push_back(static_cast<uint8_t>(pNumber >> 8));
}

// One chunk of at most 4,096 bytes. Repeats are looked for everywhere before, so that near and far ones are common.
TImage PackedChunk(const uint8_t* pBytes, size_t pLength) {
  TImage packed;
  size_t kinds = 0;
  int element = 8;
  for (size_t done = 0; done < pLength;) {
    if (element == 8) {
      kinds = packed.size();
      packed.push_back(0);
      element = 0;
    }
    size_t placeBits = 4;
    while ((size_t{1} << placeBits) < done) ++placeBits;
    const size_t longest = std::min((size_t{1} << (16 - placeBits)) + 2, pLength - done);
    size_t best = 0, distance = 0;
    for (size_t back = 1; back <= done; ++back) {
      size_t length = 0;
      while (length < longest && pBytes[done + length] == pBytes[done + length - back]) ++length;
      if (length > best) best = length, distance = back;
    }
    if (best >= 3) {
      packed[kinds] = static_cast<uint8_t>(packed[kinds] | 1 << element);
      AppendNumber(packed, (distance - 1) << (16 - placeBits) | (best - 3));
      done += best;
    } else {
      packed.push_back(pBytes[done++]);
    }
    ++element;
  }
  return packed;
}

TImage Packed(const TImage& pBytes) {
  TImage packed;
  for (size_t at = 0; at < pBytes.size(); at += 4096) {
    const size_t length = std::min<size_t>(4096, pBytes.size() - at);
    const TImage chunk = PackedChunk(pBytes.data() + at, length);
    const bool isSmaller = chunk.size() < 4096;
    AppendNumber(packed, 0x3000 | (isSmaller ? 0x8000 | (chunk.size() - 1) : length - 1));
    const uint8_t* begin = isSmaller ? chunk.data() : pBytes.data() + at;
    packed.insert(packed.end(), begin, begin + (isSmaller ? chunk.size() : length));
  }
  AppendNumber(packed, 0);
  return packed;
}

bool Unpack(const TImage& pPacked, TImage& pUnit) {
  return UnpackLznt1(std::as_bytes(std::span(pPacked)), std::as_writable_bytes(std::span(pUnit)));
}

// Texts of few words, noise and runs.
TImage SomeBytes(std::mt19937& pRandom, size_t pLength) {
  TImage bytes;
  while (bytes.size() < pLength) {
    const size_t kind = pRandom() % 4;
    const size_t length = 1 + pRandom() % 600;
    for (size_t i = 0; i < length; ++i)
      bytes.push_back(kind == 0   ? static_cast<uint8_t>(pRandom())
                      : kind == 1 ? 'x'
                                  : static_cast<uint8_t>("the needle in the hay "[(i * (kind - 1)) % 22]));
  }
  bytes.resize(pLength);
  return bytes;
}

TEST(Lznt1, UnpacksWhatWasWrittenByHand) {
  const struct {
    const char* fWhat;
    TImage fPacked;
    std::string fUnpacked;  // behind it zeros
    bool fIsSound = true;
  } cases[] = {
      {"nothing", {}, ""},
      {"an end", {0, 0, 'x'}, ""},
      {"a plain chunk", {0x02, 0x30, 'a', 'b', 'c'}, "abc"},
      // Three letters, then: from 3 bytes before, 9 bytes. (3 - 1) << 12 | (9 - 3).
      {"a repeat that overlaps itself", {0x05, 0xB0, 0x08, 'a', 'b', 'c', 0x06, 0x20}, "abcabcabcabc"},
      {"a repeat from before the chunk", {0x03, 0xB0, 0x02, 'a', 0x00, 0x10}, "a", false},
      {"half a pair", {0x02, 0xB0, 0x02, 'a', 0x00}, "a", false},
      {"a chunk that is cut", {0x09, 0x30, 'a'}, "", false},
  };
  for (const auto& each : cases) {
    TImage unit(8192, 'z');
    EXPECT_EQ(Unpack(each.fPacked, unit), each.fIsSound) << each.fWhat;
    TImage expected(each.fUnpacked.begin(), each.fUnpacked.end());
    expected.resize(8192);
    EXPECT_EQ(unit, expected) << each.fWhat;
  }
}

TEST(Lznt1, UnpacksWhatWasPackedAndEndsOnAnyDamage) {
  std::mt19937 random(16);
  for (int round = 0; round < 60; ++round) {
    const TImage bytes = SomeBytes(random, 1 + random() % 20'000);
    TImage packed = Packed(bytes);
    TImage unit(kUnit, 'z');
    ASSERT_TRUE(Unpack(packed, unit));
    ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), unit.begin())) << round;
    for (int damage = 0; damage < 40; ++damage) {
      TImage damaged = packed;
      damaged[random() % damaged.size()] = static_cast<uint8_t>(random());
      if (damage % 4 == 0) damaged.resize(random() % damaged.size());
      Unpack(damaged, unit);  // the sanitizers see what goes wrong
    }
  }
}

// --- files ---------------------------------------------------------------------------------------------------------

struct TVolumeWithFiles {
  TVolumeWithFiles() {
    fVolume.fVolumeClusters = 600;
    TVolumeOpener opener;
    opener.fOpenReader = [this](const std::u16string&) { return std::make_unique<TMemoryVolume>(Image(), fFaults); };
    opener.fFreeMemory = [] { return int64_t{1} << 40; };
    fStorage = CreateNtfsStorage(std::move(opener));
    fPath = fStorage->AbsolutePath(u"ntfs:image");
  }

  TImage Image() const {
    TImage image = fVolume.Image();
    for (const auto& [cluster, bytes] : fClusters)
      std::copy(bytes.begin(), bytes.end(), image.begin() + cluster * static_cast<int64_t>(kCluster));
    if (fLength > 0) image.resize(fLength);
    return image;
  }

  void Add(const char16_t* pName, TMadeRecord pRecord) { fVolume.Add(pRecord.Name(Reference(5, 5), pName)); }

  std::unique_ptr<IStoredFile> Open(std::u16string_view pName) {
    return fStorage->OpenFile(fPath + std::u16string(pName), {});
  }

  // The file's bytes, read in pieces.
  TImage Read(std::u16string_view pName, size_t pPiece = 7'000) {
    const std::unique_ptr<IStoredFile> file = Open(pName);
    TImage bytes;
    for (std::string buffer(pPiece, '\0');;) {
      const size_t length = file->Read(buffer.data(), buffer.size());
      if (length == 0) return bytes;
      bytes.insert(bytes.end(), buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(length));
    }
  }

  std::string Failure(std::u16string_view pName) {
    try {
      Read(pName);
      return "read";
    } catch (const EOSError& error) {
      return fStorage->ErrorText(error.Code());
    }
  }

  TMadeVolume fVolume;
  std::vector<std::pair<int64_t, TImage>> fClusters;  // bytes on the volume, from a cluster
  size_t fLength = 0;                                 // the image ends there
  std::shared_ptr<TVolumeFaults> fFaults = std::make_shared<TVolumeFaults>();
  TRef<IStorage> fStorage;
  std::u16string fPath;
};

// The bytes followed by zeros.
TImage Padded(TImage pBytes, size_t pLength) {
  pBytes.resize(pLength);
  return pBytes;
}

TEST(NtfsFile, ContentsAreReadFromEachFormOfStorage) {
  std::mt19937 random(7);
  const TImage a = SomeBytes(random, 5 * kCluster), b = SomeBytes(random, kUnit), c = SomeBytes(random, 30'000);
  const TImage packed = Packed(c);
  const auto packedClusters = static_cast<int64_t>((packed.size() + kCluster - 1) / kCluster);
  ASSERT_LT(packedClusters, 16);
  TVolumeWithFiles it;
  it.fClusters = {{kFree, a}, {kFree + 10, b}, {kFree + 40, packed}};
  it.fVolume.fRecords.emplace(30, TMadeRecord()
                                      .Standard(0x20)
                                      .Resident(0x20, Testing::MadeAttributeList({{30, 0}, {31, 2}, {32, 3}}))
                                      .Name(Reference(5, 5), u"in extension records")
                                      .Stream(0x80, {4 * 4096 - 9, 4 * 4096, {{kFree, 2}}}));
  it.fVolume.fRecords.emplace(31, TMadeRecord(1, 1, Reference(30)).Stream(0x80, {0, 0, {{kFree + 4, 1}}, -1, 2}));
  it.fVolume.fRecords.emplace(32, TMadeRecord(1, 1, Reference(30)).Stream(0x80, {0, 0, {{kFree + 3, 1}}, -1, 3}));
  const auto part = [](const TImage& pBytes, size_t pCluster, size_t pCount) {
    return TImage(pBytes.begin() + static_cast<std::ptrdiff_t>(pCluster * kCluster),
                  pBytes.begin() + static_cast<std::ptrdiff_t>((pCluster + pCount) * kCluster));
  };
  const auto join = [](std::vector<TImage> pParts, size_t pLength) {
    TImage all;
    for (const TImage& each : pParts) all.insert(all.end(), each.begin(), each.end());
    return Padded(all, pLength);
  };
  const int64_t hole = -1;
  const TImage zeros(kUnit);
  const struct {
    const char16_t* fName;
    TMadeRecord fRecord;
    TImage fExpected;
  } cases[] = {
      {u"nothing", TMadeRecord().Standard(0x20).Data(0), {}},
      {u"in the record", TMadeRecord().Standard(0x20).Resident(0x80, Padded(c, 500)), Padded(c, 500)},
      {u"in one run", TMadeRecord().Standard(0x20).Stream(0x80, {9'999, 12'288, {{kFree, 3}}}), Padded(a, 9'999)},
      {u"in pieces",
       TMadeRecord().Standard(0x20).Stream(0x80, {16'000, 16'384, {{kFree + 3, 1}, {kFree, 2}, {kFree + 4, 1}}}),
       join({part(a, 3, 1), part(a, 0, 2), part(a, 4, 1)}, 16'000)},
      {u"sparse",
       TMadeRecord().Standard(0x220).Stream(0x80, {20'000, 20'480, {{hole, 2}, {kFree, 1}, {hole, 2}}, 4096}),
       join({part(zeros, 0, 2), part(a, 0, 1), part(zeros, 0, 2)}, 20'000)},
      {u"written in part", TMadeRecord().Standard(0x20).Stream(0x80, {12'000, 12'288, {{kFree, 3}}, -1, 0, 0, 5'000}),
       Padded(Padded(a, 5'000), 12'000)},
      {u"in extension records", TMadeRecord(), join({part(a, 0, 2), part(a, 4, 1), part(a, 3, 1)}, 4 * 4096 - 9)},
      // Units: packed, plain in two runs, a hole, packed up to the end.
      {u"compressed",
       TMadeRecord().Standard(0x820).Stream(0x80, {3 * int64_t{kUnit} + 29'000,
                                                   4 * int64_t{kUnit},
                                                   {{kFree + 40, packedClusters},
                                                    {hole, 16 - packedClusters},
                                                    {kFree + 10, 9},
                                                    {kFree + 19, 7},
                                                    {hole, 16},
                                                    {kFree + 40, packedClusters},
                                                    {hole, 16 - packedClusters}},
                                                   99'999,
                                                   0,
                                                   1}),
       join({Padded(c, kUnit), b, zeros, c}, 3 * kUnit + 29'000)},
  };
  for (const auto& each : cases)
    if (each.fName != std::u16string_view(u"in extension records")) it.Add(each.fName, each.fRecord);
  for (const auto& each : cases) {
    const TImage& expected = each.fExpected;
    for (const size_t piece : {size_t{1} << 20, size_t{4'095}, size_t{100'000}})
      EXPECT_TRUE(it.Read(each.fName, piece) == expected) << ToUtf8(each.fName) << " in pieces of " << piece;
    // From anywhere, and over the holes.
    const std::unique_ptr<IStoredFile> file = it.Open(each.fName);
    EXPECT_EQ(file->GetFacts().fSize, static_cast<int64_t>(expected.size()));
    for (size_t at = 0; at < expected.size(); at += 3'331) {
      ASSERT_TRUE(file->TrySeek(at));
      const auto skipped = static_cast<size_t>(file->SkipZeros());
      ASSERT_LE(at + skipped, expected.size());
      EXPECT_EQ(std::count(expected.begin() + static_cast<std::ptrdiff_t>(at),
                           expected.begin() + static_cast<std::ptrdiff_t>(at + skipped), 0),
                static_cast<std::ptrdiff_t>(skipped))
          << ToUtf8(each.fName);
      char byte = 0;
      if (at + skipped == expected.size()) continue;
      ASSERT_EQ(file->Read(&byte, 1), 1u);
      EXPECT_EQ(static_cast<uint8_t>(byte), expected[at + skipped]) << ToUtf8(each.fName) << " at " << at;
    }
  }
  // The units that are holes, and what is behind the initialized part, are never read.
  const std::unique_ptr<IStoredFile> file = it.Open(u"compressed");
  file->TrySeek(2 * kUnit);
  EXPECT_EQ(file->SkipZeros(), kUnit);
}

TEST(NtfsFile, WhatCannotBeReadIsTold) {
  TVolumeWithFiles it;
  it.fClusters = {{kFree, TImage{0x03, 0xB0, 0x02, 'a', 0x00, 0x10}}};
  const uint32_t tags[] = {0x8000'0017, 0x8000'0013, 0x9000'601A};
  const auto plain = [] { return TMadeRecord().Standard(0x20); };
  const struct {
    const char16_t* fName;
    TMadeRecord fRecord;
    const char* fText;
  } cases[] = {
      {u"encrypted", plain().Stream(0x80, {5000, 8192, {{kFree, 2}}, -1, 0, 0x4000}),
       "It is encrypted by Windows (EFS)"},
      {u"overlay", plain().Stream(0x80, {5000, 8192, {{-1, 2}}, 0}).Data(9, u"WofCompressedData").Reparse(tags[0]),
       "It is compressed by Windows' overlay (WOF), which only a mounted volume can unpack"},
      {u"elsewhere", plain().Stream(0x80, {5000, 8192, {{-1, 2}}, 0}).Reparse(tags[1]),
       "Its data is not on the volume"},
      {u"in the cloud", plain().Stream(0x80, {5000, 8192, {{-1, 2}}, 0}).Reparse(tags[2]),
       "Its data is not on the volume"},
      {u"larger than its runs", plain().Stream(0x80, {int64_t{1} << 50, 8192, {{kFree, 2}}}),
       "Its data on the volume is damaged"},
      {u"unknown method", plain().Stream(0x80, {5000, 65'536, {{kFree, 2}, {-1, 14}}, 8192, 0, 2}),
       "Its data on the volume is damaged"},
      {u"damaged unit", plain().Stream(0x80, {5000, 65'536, {{kFree, 2}, {-1, 14}}, 8192, 0, 1}),
       "Its data on the volume is damaged"},
      {u"a unit with its hole in front", plain().Stream(0x80, {5000, 65'536, {{-1, 14}, {kFree, 2}}, 8192, 0, 1}),
       "Its data on the volume is damaged"},
      {u"behind the end", plain().Stream(0x80, {5000, 8192, {{9'999'999, 2}}}), "The image ends inside its data"},
      {u"lost extension", plain().Resident(0x20, Testing::MadeAttributeList({{999, 0}})),
       "Its data on the volume is damaged"},
      {u"extension of another", plain().Resident(0x20, Testing::MadeAttributeList({{4, 0}})),
       "Its data on the volume is damaged"},
      {u"part that is not there", plain().Resident(0x20, Testing::MadeAttributeList({{64, 7}})),
       "Its data on the volume is damaged"},
  };
  for (const auto& each : cases) it.Add(each.fName, each.fRecord);
  for (const auto& each : cases) EXPECT_EQ(it.Failure(each.fName), each.fText) << ToUtf8(each.fName);
  EXPECT_EQ(it.Failure(u"missing"), "The volume has no such file");
  // The index is older than the record.
  const TRef<IHierarchicalEnumerator> scan = it.fStorage->CreateEnumerator(it.fPath, {});
  it.fVolume.fRecords.insert_or_assign(64, TMadeRecord(1, 2).Standard(0x20).Name(Reference(5, 5), u"new").Data(5));
  EXPECT_EQ(it.Failure(u"encrypted"), "The volume has no such file");
  EXPECT_EQ(it.Failure(u"encrypted/x"), "The volume has no such file");
}

TEST(NtfsFile, EveryReadMayFailAndTheImageMayEndAnywhere) {
  TVolumeWithFiles it;
  const TImage bytes(9 * kCluster, 'x');
  it.fClusters = {{kFree, bytes}};
  it.Add(u"file", TMadeRecord().Standard(0x20).Stream(0x80, {9 * 4096, 9 * 4096, {{kFree, 4}, {kFree + 4, 5}}}));
  const TRef<IHierarchicalEnumerator> scan = it.fStorage->CreateEnumerator(it.fPath, {});  // keeps the index
  it.Open(u"file");
  const int before = it.fFaults->fReads;
  ASSERT_EQ(it.Read(u"file"), bytes);
  const int reads = it.fFaults->fReads - before;
  ASSERT_GE(reads, 3) << "its record and two runs";
  for (int read = 0; read < reads; ++read)
    for (const bool atStart : {false, true}) {
      it.fFaults->fFailsAtStart = atStart;
      it.fFaults->fFailingRead = it.fFaults->fReads + read;
      EXPECT_NE(it.Failure(u"file"), "read") << read;
      EXPECT_EQ(it.Failure(u"file"), "read") << "the failure does not last";
    }
  for (const size_t clusters : {8, 5, 1, 0}) {
    TVolumeWithFiles cut;
    cut.fVolume = it.fVolume;
    cut.fLength = (static_cast<size_t>(kFree) + clusters) * kCluster;
    EXPECT_EQ(cut.Failure(u"file"), "The image ends inside its data") << clusters;
  }
}

TEST(NtfsFile, FilesOfLargeFoldersAndPartitionsAreFoundByTheirPaths) {
  TMadeVolume volume;
  const uint32_t folder = volume.AddFolder(5, u"Many");
  for (int i = 0; i < 300; ++i) {
    const std::u16string name = FromUtf8(std::to_string(i * 7919 % 1000));
    const TImage bytes(static_cast<size_t>(i) + 1, 'x');
    volume.Add(TMadeRecord().Standard(0x20).Name(volume.ReferenceTo(folder), name).Resident(0x80, bytes));
  }
  const TImage disk = Testing::MadeMbrDisk({volume.Image(), volume.Image()});
  for (const bool isScanned : {false, true}) {
    int opened = 0;
    TVolumeOpener opener;
    opener.fOpenReader = [&](const std::u16string&) {
      ++opened;
      return std::make_unique<TMemoryVolume>(disk);
    };
    opener.fFreeMemory = [] { return int64_t{1} << 40; };
    const TRef<IStorage> storage = CreateNtfsStorage(std::move(opener));
    const std::u16string top =
        JoinPath(storage->AbsolutePath(u"ntfs:disk|/Partition 2"), u"many", NativePathDelimiter());
    TRef<IHierarchicalEnumerator> scan;
    if (isScanned) scan = storage->CreateEnumerator(top, {});
    for (int i = 0; i < 300; ++i) {
      const std::u16string name = FromUtf8(std::to_string(i * 7919 % 1000));
      EXPECT_EQ(storage->OpenFile(JoinPath(top, name, NativePathDelimiter()), {})->GetFacts().fSize, i + 1);
    }
    EXPECT_LE(opened, 2) << "the index is read once, and one reader serves all files";
  }
}

}  // namespace
}  // namespace Vantrel::Ntfs
