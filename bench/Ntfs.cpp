// Measures the scan of an NTFS image through its file table, against reading the same bytes.

//   ntfs                an image with a million records, made in /tmp and removed at the end
//   ntfs N              the same with N records
//   ntfs N IMAGE        the same in that file, which is kept and used again
//
// The image is read from the cache. Each folder has eight files, and names have 16 characters. Rounds alternate between
// the floor, which reads the table with the same buffers on one thread and looks at nothing, and whole scans.

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "bench/Timing.h"
#include "model/options/GlobalOptions.h"
#include "model/roots/Root.h"
#include "model/roots/ScanRoots.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanServices.h"
#include "scan/ntfs/NtfsVolumes.h"
#include "tests/support/MadeNtfs.h"

using namespace Vantrel;

namespace {

constexpr int kRounds = 5;
constexpr int64_t kRecordSize = 1024;
constexpr int64_t kCluster = 4096;
constexpr int64_t kTable = 16;  // cluster
constexpr double kMostTimesFloor = 4;
constexpr double kMostBytesPerRecord = 300;

uint64_t FolderOf(int64_t pRecord) {
  const int64_t folder = (pRecord - 64) / 9 / 9 * 9 + 64;  // the first folder of nine groups
  return folder == pRecord || pRecord < 145 ? Testing::Reference(5, 5)
                                            : Testing::Reference(static_cast<uint64_t>(folder));
}

Testing::TMadeRecord RecordFor(int64_t pRecord) {
  const bool isFolder = (pRecord - 64) % 9 == 0;
  const std::string name = fmt::format("entry{:08}.{}", pRecord, "abc"[pRecord % 3]);
  Testing::TMadeRecord record(isFolder ? 3 : 1);
  const int64_t time = 132'000'000'000'000'000 + pRecord * 10'000'000;
  record.Standard(isFolder ? 0 : 0x20, time, time + 1, time + 2);
  const uint64_t folder =
      isFolder ? FolderOf(pRecord) : Testing::Reference(static_cast<uint64_t>((pRecord - 64) / 9 * 9 + 64));
  record.Name(folder, std::u16string(name.begin(), name.end()));
  const int64_t size = pRecord * 2'654'435'761 % 1'000'003;  // in no order
  if (!isFolder) record.Stream(0x80, {size, (size / kCluster + 1) * kCluster, {{pRecord, 2}}});
  return record;
}

void MakeImage(const std::string& pPath, int64_t pRecords) {
  const int64_t clusters = kTable + pRecords * kRecordSize / kCluster + 1;
  Testing::TMadeVolume volume;
  std::ofstream file(pPath, std::ios::binary);
  const auto put = [&](const Testing::TImage& pBytes) {
    file.write(reinterpret_cast<const char*>(pBytes.data()), static_cast<std::streamsize>(pBytes.size()));
  };
  put(volume.BootSector(clusters, kTable, 8));
  file.seekp(kTable * kCluster);
  Testing::TMadeRecord table;
  table.Standard(6).Name(Testing::Reference(5, 5), u"$MFT", 3);
  table.Stream(0x80, {pRecords * kRecordSize, pRecords * kRecordSize, {{kTable, clusters - kTable}}});
  for (int64_t record = 0; record < pRecords; ++record) {
    const auto number = static_cast<uint32_t>(record);
    if (record == 0)
      put(table.Bytes(kRecordSize, number));
    else if (record == 5)
      put(volume.fRecords.at(5).Bytes(kRecordSize, number));
    else if (record < 64)
      put(Testing::TImage(kRecordSize));
    else
      put(RecordFor(record).Bytes(kRecordSize, number));
  }
  put(Testing::TImage(kCluster));
}

// The table's bytes in turn into four buffers.
void ReadTable(const std::string& pPath, int64_t pRecords) {
  constexpr size_t kBuffer = 262'144;
  const int file = open(pPath.c_str(), O_RDONLY | O_CLOEXEC);
  const auto buffers = std::make_unique<char[]>(4 * kBuffer);
  const int64_t end = kTable * kCluster + pRecords * kRecordSize;
  size_t turn = 0;
  for (int64_t at = kTable * kCluster; at < end; at += kBuffer)
    if (pread(file, buffers.get() + kBuffer * (turn++ % 4), kBuffer, at) <= 0) std::abort();
  close(file);
}

void ScanImage(const std::string& pPath, int32_t pThreads, int64_t pRecords) {
  auto options = std::make_shared<TGlobalOptions>();
  options->MaximumThreads = pThreads;
  const TRef<IScanRoots> roots = CreateScanRoots(ScanEngine::CreateScanServices(), options);
  const TRef<IHierarchicalRoot> root = roots->Scan(u"ntfs:" + FromNativeBytes(pPath));
  root->WaitForScan(600'000);
  const TScanProgress progress = root->GetProgress();
  if (progress.fFiles + progress.fFolders != pRecords - 64 || progress.fErrors != 0) std::abort();
  roots.get()->AddRef();  // taking the tree apart is not measured
}

int64_t StatusBytes(const char* pKey) {
  std::ifstream file("/proc/self/status");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with(pKey)) return std::strtoll(line.c_str() + std::string(pKey).size(), nullptr, 10) * 1024;
  return 0;
}

bool BuildIndex(const std::string& pPath) {
  const std::unique_ptr<IVolumeReader> reader = OpenVolumeReader(FromNativeBytes(pPath));
  const Ntfs::TMftLocation location = Ntfs::LocateTable(*reader, {0, reader->Size()}, u"bench");
  const TScanContext context;
  return Ntfs::IndexVolume(*reader, location, u"bench", Ntfs::BuildSettingsOf(context, {}, u'/'), context).fRoot !=
         nullptr;
}

// Bytes that the process grows by, at most, while the index is built. In a process of its own.
double BytesPerRecord(const std::string& pPath, int64_t pRecords) {
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    const int64_t before = StatusBytes("VmRSS:");
    const int64_t grown = BuildIndex(pPath) ? StatusBytes("VmHWM:") - before : -1;
    if (write(ends[1], &grown, sizeof grown) != sizeof grown) std::abort();
    _exit(0);
  }
  int64_t grown = 0;
  if (read(ends[0], &grown, sizeof grown) != sizeof grown || grown < 0) std::abort();
  waitpid(child, nullptr, 0);
  return static_cast<double>(grown) / static_cast<double>(pRecords);
}

struct TTimes {
  double fElapsed = 0;
  double fProcessor = 0;
};

// In a process of its own, so that no round finds the memory of another.
TTimes TimesInChild(const std::function<void()>& pWork) {
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    const double before = Bench::ProcessorSeconds();
    TTimes times;
    times.fElapsed = Bench::Seconds(pWork);
    times.fProcessor = Bench::ProcessorSeconds() - before;
    if (write(ends[1], &times, sizeof times) != sizeof times) std::abort();
    _exit(0);
  }
  TTimes times;
  if (read(ends[0], &times, sizeof times) != sizeof times) std::abort();
  waitpid(child, nullptr, 0);
  close(ends[0]);
  close(ends[1]);
  return times;
}

}  // namespace

int main(int pCount, char** pArguments) {
  const int64_t records = pCount > 1 ? std::strtoll(pArguments[1], nullptr, 10) : 1'000'000;
  const std::string path = pCount > 2 ? pArguments[2] : fmt::format("/tmp/bench-ntfs-{}.img", getpid());
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) MakeImage(path, records);
  ReadTable(path, records);  // into the cache
  std::vector<double> floor;
  std::vector<double> index;
  std::vector<double> one;
  std::vector<double> oneElapsed;
  std::vector<double> two;
  for (int round = 0; round < kRounds; ++round) {
    floor.push_back(TimesInChild([&] { ReadTable(path, records); }).fProcessor);
    index.push_back(TimesInChild([&] { BuildIndex(path); }).fProcessor);
    const TTimes scan = TimesInChild([&] { ScanImage(path, 1, records); });
    one.push_back(scan.fProcessor);
    oneElapsed.push_back(scan.fElapsed);
    two.push_back(TimesInChild([&] { ScanImage(path, 2, records); }).fElapsed);
  }
  std::printf("%lld records; index alone %.4f processor seconds\n", static_cast<long long>(records),
              Bench::Median(index));
  bool met =
      Bench::ReportMedians("processor seconds to the finished tree, one thread", one,
                           "reading the table's bytes with the same buffers on one thread", floor, kMostTimesFloor);
  met &= Bench::ReportMedians("seconds to the finished tree, two threads", two, "one thread", oneElapsed, 1);
  met &= Bench::Report("bytes a record while the index is built", BytesPerRecord(path, records), "the target",
                       kMostBytesPerRecord, 1);
  if (pCount <= 2) unlink(path.c_str());
  return met ? 0 : 1;
}
