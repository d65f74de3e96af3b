#include "scan/files/DiskOrder_posix.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "platform/text/Text.h"
#include "scan/files/DiskOrder.h"
#include "scan/files/UnixDirectory_posix.h"

namespace Vantrel::Storages {

namespace {

// Nothing where the file system refuses, and for a file whose bytes have no place yet or lie beside its number.
std::optional<uint64_t> FirstBlock(int pFile) {
  alignas(fiemap) char bytes[sizeof(fiemap) + sizeof(fiemap_extent)] = {};
  auto* map = reinterpret_cast<fiemap*>(bytes);
  map->fm_length = FIEMAP_MAX_OFFSET;
  map->fm_extent_count = 1;
  if (ioctl(pFile, FS_IOC_FIEMAP, map) != 0 || map->fm_mapped_extents == 0) return {};
  fiemap_extent extent;
  std::memcpy(&extent, bytes + sizeof(fiemap), sizeof extent);
  if ((extent.fe_flags & FIEMAP_EXTENT_UNKNOWN) != 0) return {};
  return extent.fe_physical;
}

}  // namespace

bool DeviceRotates(const std::string& pDevices, unsigned pMajor, unsigned pMinor) {
  for (const char* place : {"queue/rotational", "../queue/rotational"}) {
    std::ifstream file(fmt::format("{}/{}:{}/{}", pDevices, pMajor, pMinor, place));
    if (char answer = 0; file.get(answer)) return answer == '1';
  }
  return false;
}

bool LiesOnRotatingDisk(const std::u16string& pPath) {
  struct stat info {};
  if (stat(ToNativeBytes(pPath).c_str(), &info) != 0) return false;
  return DeviceRotates("/sys/dev/block", major(info.st_dev), minor(info.st_dev));
}

std::optional<uint64_t> PlaceOfFile(const std::u16string& pPath) {
  const int file =
      Enumerators::OpenInSteps(AT_FDCWD, ToNativeBytes(pPath), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW);
  if (file < 0) return {};
  struct stat info {};
  std::optional<uint64_t> place;
  if (fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
    place = FirstBlock(file);
    if (!place) place = info.st_ino;
  }
  close(file);
  return place;
}

}  // namespace Vantrel::Storages
