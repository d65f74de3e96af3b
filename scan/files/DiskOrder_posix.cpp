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

bool DeviceRotates(const std::filesystem::path& pDevice) {
  std::error_code ignored;
  // What is made of other devices, as an encrypted or a logical volume is.
  bool hasParts = false;
  for (const auto& part : std::filesystem::directory_iterator(pDevice / "slaves", ignored)) {
    hasParts = true;
    if (DeviceRotates(part.path())) return true;
  }
  if (hasParts) return false;
  const std::filesystem::path device = std::filesystem::canonical(pDevice, ignored);
  const std::filesystem::path disk =
      std::filesystem::exists(device / "partition", ignored) ? device.parent_path() : device;
  // The disks of a virtual machine call themselves rotating, whatever the host has.
  const std::filesystem::path bus = std::filesystem::read_symlink(disk / "device" / "subsystem", ignored).filename();
  if (bus == "virtio" || bus == "xen") return false;
  std::ifstream file(disk / "queue" / "rotational");
  return file.get() == '1';
}

bool LiesOnRotatingDisk(const std::u16string& pPath) {
  struct stat info {};
  if (stat(ToNativeBytes(pPath).c_str(), &info) != 0) return false;
  return DeviceRotates(fmt::format("/sys/dev/block/{}:{}", major(info.st_dev), minor(info.st_dev)));
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
