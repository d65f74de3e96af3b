// Reads whatever a fuzzer makes up as an NTFS image; a tree must come out, or an error.

// The input is a small image. To let changes reach the parser, the fuzzer's input holds only the used parts: one byte
// of settings, the boot sector, then records, each with its number. Other inputs are read as a whole image.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "scan/ntfs/NtfsStorage.h"
#include "tests/support/MemoryVolume.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Testing;

constexpr size_t kRecord = 1024;
constexpr size_t kTable = 16 * 4096;
constexpr size_t kRecords = 64;
constexpr size_t kLargestInput = 256 << 10;

// A sound volume, whose records the input replaces.
const TImage& SoundVolume() {
  static const TImage image = [] {
    TMadeVolume volume;
    volume.fTableRuns = {{16, 16}};
    volume.fTableRecords = kRecords;
    return volume.Image();
  }();
  return image;
}

TImage ImageOf(const uint8_t* pData, size_t pSize, bool pIsWhole) {
  if (pIsWhole) return TImage(pData, pData + pSize);
  TImage image = SoundVolume();
  image.resize(std::max(image.size(), kTable + kRecords * kRecord));
  for (size_t at = 0; at + 1 < pSize; at += 1 + kRecord) {
    const size_t record = pData[at] % kRecords;
    const size_t length = std::min(kRecord, pSize - at - 1);
    std::memcpy(image.data() + kTable + record * kRecord, pData + at + 1, length);
  }
  return image;
}

constexpr int kMostFilesRead = 20;

// Reads the beginning of a file, and what follows its holes. All ends, or with an error.
void ReadFile(const IStorage& pStorage, const std::u16string& pPath) {
  try {
    const std::unique_ptr<IStoredFile> file = pStorage.OpenFile(pPath, {});
    char buffer[5'000];
    for (int i = 0; i < 40; ++i) {
      const size_t length = file->Read(buffer, sizeof buffer);
      if (length > sizeof buffer) std::abort();
      if (length == 0) break;
      if (i % 8 == 7) file->SkipZeros();
    }
    file->TrySeek(static_cast<uint64_t>(file->GetFacts().fSize) / 2);
    file->Read(buffer, sizeof buffer);
  } catch (const EOSError&) {  // a damaged file
  }
}

// Walks the whole tree and adds up as a scan does. Each entry may be there once.
void Walk(const IStorage& pStorage, const TRef<IHierarchicalEnumerator>& pTop) {
  std::vector<TRef<IHierarchicalEnumerator>> folders{pTop};
  int64_t size = 0;
  int64_t allocated = 0;
  size_t entries = 0;
  int filesRead = 0;
  while (!folders.empty()) {
    const TRef<IHierarchicalEnumerator> folder = folders.back();
    folders.pop_back();
    while (folder->Next()) {
      const TEntryValues values = folder->GetEntryValues();
      size += values.fSize;
      allocated += values.fAllocated;
      if (values.fSize < 0 || values.fAllocated < 0 || folder->GetObjectName().empty()) std::abort();
      if (++entries > 100'000) std::abort();  // more than names fit into the image: it runs in circles
      if (!folder->IsFolder() && filesRead++ < kMostFilesRead) ReadFile(pStorage, folder->GetFullPath());
      if (folder->IsFolder() && folder->CanDescend())
        folders.push_back(
            folder->CreateChildEnumeratorById(folder->GetEntryId(), folder->GetObjectName(), values.fAttributes));
    }
    folder->GetFullPath();
  }
  if (size < 0 || allocated < 0) std::abort();  // the sanitizer finds an overflow first
}

void WriteSeed(const std::string& pPath, uint8_t pSettings, const TImage& pBytes) {
  std::ofstream file(pPath, std::ios::binary);
  file.put(static_cast<char>(pSettings));
  file.write(reinterpret_cast<const char*>(pBytes.data()), static_cast<std::streamsize>(pBytes.size()));
}

// One seed for each kind of record, and one whole image.
void WriteSeeds(const std::string& pFolder) {
  const uint64_t root = Reference(5, 5);
  const TMadeRecord records[] = {
      TMadeRecord(3).Standard(0).Name(root, u"folder"),
      TMadeRecord().Standard(0x20).Name(root, u"LONGNA~1", 2).Name(root, u"long name").Data(9).Data(9, u"stream"),
      TMadeRecord().Standard(0x820).Name(root, u"packed").Stream(0x80, {99'999, 131'072, {{9, 4}, {2, 1}}, 16'384}),
      TMadeRecord(1, 1, Reference(40)).Name(root, u"more").Stream(0x80, {4096, 4096, {{9, 1}}}, u"WofCompressedData"),
      TMadeRecord(3).Standard(0x400).Name(Reference(41), u"link").Reparse(0xA000'0003),
      TMadeRecord().Standard(6).Name(root, u"$MFT", 3).Stream(0x80, {65'536, 65'536, {{16, 9}, {30, 7}}}),
      TMadeRecord()
          .Standard(0x820)
          .Name(root, u"lznt1")
          .Stream(0x80, {99'999, 131'072, {{9, 4}, {-1, 12}, {2, 16}}, 81'920, 0, 1, 90'000}),
      TMadeRecord()
          .Standard(0x20)
          .Resident(0x20, MadeAttributeList({{45, 0}, {46, 1}}))
          .Name(root, u"in parts")
          .Stream(0x80, {8000, 8192, {{9, 1}}}),
      TMadeRecord(1, 1, Reference(45)).Stream(0x80, {0, 0, {{2, 1}}, -1, 1}),
  };
  TImage all;
  const uint8_t numbers[] = {41, 42, 40, 43, 44, 0, 47, 45, 46};
  for (size_t i = 0; i < std::size(records); ++i) {
    TImage one{numbers[i]};
    const TImage bytes = records[i].Bytes(kRecord, numbers[i]);
    one.insert(one.end(), bytes.begin(), bytes.end());
    WriteSeed(pFolder + "/record" + std::to_string(i), 0, one);
    if (numbers[i] != 0) all.insert(all.end(), one.begin(), one.end());
  }
  WriteSeed(pFolder + "/records", 2, all);
  TMadeVolume volume;
  volume.fClusterSize = 512;
  volume.fTableRecords = 48;
  volume.fTableRuns = {{150, 21}, {190, 75}};
  WriteSeed(pFolder + "/image", 1, volume.Image());
}

}  // namespace

// "ntfs_fuzz write-seeds FOLDER" writes the inputs from which the fuzzer starts.
extern "C" int LLVMFuzzerInitialize(int* pCount, char*** pArguments) {
  if (*pCount != 3 || std::string_view((*pArguments)[1]) != "write-seeds") return 0;
  WriteSeeds((*pArguments)[2]);
  std::exit(0);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize) {
  if (pSize < 2 || pSize > kLargestInput) return 0;
  const uint8_t settings = pData[0];
  const TImage image = ImageOf(pData + 1, pSize - 1, (settings & 1) != 0);
  Ntfs::TVolumeOpener opener;
  opener.fOpenReader = [&](const std::u16string&) { return std::make_unique<TMemoryVolume>(image); };
  opener.fFreeMemory = [] { return int64_t{1} << 30; };
  const TRef<IStorage> storage = Ntfs::CreateNtfsStorage(std::move(opener));
  TScanContext context;
  context.fOptions = heoShareHardLinks;
  if ((settings & 2) != 0) context.fOptions |= heoMftCompatible;
  if ((settings & 4) != 0) context.fOptions |= heoMftSystemFiles;
  const std::u16string path = storage->AbsolutePath(u"ntfs:image");
  Walk(*storage, storage->CreateEnumerator(path, context));
  storage->GetInformation(path);
  return 0;
}
