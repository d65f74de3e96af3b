#pragma once

// Reads a volume, a disk or an image of one at any position, with several reads under way.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace Vantrel {

// An open volume, disk or image. For one thread at a time. Positions are in bytes.
class IVolumeReader {
 public:
  static constexpr size_t kMostReads = 4;

  virtual ~IVolumeReader() = default;
  virtual int64_t Size() const = 0;  // bytes; 0 when empty
  // Starts a read. The slot, below kMostReads, must be free. The buffer must stay until Wait or Cancel. EOSError. On
  // Windows, positions and lengths on a disk must be multiples of its sector.
  virtual void Start(size_t pSlot, int64_t pPosition, std::span<std::byte> pBuffer) = 0;
  // Waits for the read and frees the slot. Returns the number of bytes, which are fewer than asked for only at the end.
  // EOSError.
  virtual size_t Wait(size_t pSlot) = 0;
  // Abandons all reads and frees their slots.
  virtual void Cancel() noexcept = 0;
};

// Reads and waits. No other read may be under way.
size_t ReadVolume(IVolumeReader& pReader, int64_t pPosition, std::span<std::byte> pBuffer);

// Opens a file or a device for reading: "/dev/sdb1", "\\.\C:", "disk.img". EOSError.
std::unique_ptr<IVolumeReader> OpenVolumeReader(const std::u16string& pPath);

// What the driver of a mounted NTFS volume tells about it. Windows alone has such calls. The answers are in the form of
// their control codes.
class INtfsDriver {
 public:
  static constexpr size_t kVolumeDataSize = 96;

  virtual ~INtfsDriver() = default;
  // Both return the system's code, 0 for success. The answer to FSCTL_GET_NTFS_VOLUME_DATA:
  virtual uint32_t GetVolumeData(std::span<std::byte, kVolumeDataSize> pAnswer) = 0;
  // The answer to FSCTL_GET_RETRIEVAL_POINTERS for the volume's file table, from its start.
  virtual uint32_t GetTableExtents(std::span<std::byte> pAnswer) = 0;
};

// The driver of a mounted volume, by its device and its root, such as "\\.\C:" and "C:\". nullptr where the system has
// no such calls. EOSError.
std::unique_ptr<INtfsDriver> OpenNtfsDriver(const std::u16string& pDevice, const std::u16string& pVolumeRoot);

}  // namespace Vantrel
