// Reads of a file as a volume: at any position, several under way, at the end and behind it.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "platform/system/Errors.h"
#include "platform/volumes/VolumeReader.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {
namespace {

// The byte at each position is known by a rule.
char ByteAt(size_t pPosition) {
  return static_cast<char>(pPosition * 31 + pPosition / 4096);
}

std::string Contents(size_t pLength) {
  std::string bytes(pLength, 0);
  for (size_t i = 0; i < pLength; ++i) bytes[i] = ByteAt(i);
  return bytes;
}

// The number of bytes that are as they should be, from the start.
size_t CountRight(const std::vector<std::byte>& pBytes, size_t pPosition) {
  size_t right = 0;
  while (right < pBytes.size() && pBytes[right] == static_cast<std::byte>(ByteAt(pPosition + right))) ++right;
  return right;
}

TEST(VolumeReader, ReadsStretchesThatAreUnderWayTogether) {
  const Testing::TTemporaryFolder folder;
  constexpr size_t kLength = 3'000'001;
  folder.Put("image", Contents(kLength));
  const std::unique_ptr<IVolumeReader> reader = OpenVolumeReader(folder.File("image"));
  EXPECT_EQ(reader->Size(), static_cast<int64_t>(kLength));
  constexpr size_t kStretch = 262'144;
  std::vector<std::vector<std::byte>> buffers(IVolumeReader::kMostReads, std::vector<std::byte>(kStretch));
  size_t read = 0;
  auto start = [&](size_t pIndex) {
    reader->Start(pIndex % buffers.size(), static_cast<int64_t>(pIndex * kStretch), buffers[pIndex % buffers.size()]);
  };
  for (size_t i = 0; i < buffers.size(); ++i) start(i);
  for (size_t i = 0; i * kStretch < kLength; ++i) {
    const size_t length = reader->Wait(i % buffers.size());
    EXPECT_EQ(length, std::min(kStretch, kLength - i * kStretch)) << "stretch " << i;
    EXPECT_GE(CountRight(buffers[i % buffers.size()], i * kStretch), length) << "stretch " << i;
    read += length;
    start(i + buffers.size());
  }
  EXPECT_EQ(read, kLength);
  reader->Cancel();
  EXPECT_EQ(ReadVolume(*reader, 5, buffers[0]), kStretch) << "after a cancellation all slots are free";
}

TEST(VolumeReader, TheEndGivesFewerBytesOrNone) {
  const Testing::TTemporaryFolder folder;
  folder.Put("image", Contents(10'000));
  folder.Put("empty", "");
  const std::unique_ptr<IVolumeReader> reader = OpenVolumeReader(folder.File("image"));
  std::vector<std::byte> buffer(4096);
  EXPECT_EQ(ReadVolume(*reader, 8192, buffer), 1808u);
  EXPECT_EQ(ReadVolume(*reader, 10'000, buffer), 0u);
  EXPECT_EQ(ReadVolume(*reader, int64_t{1} << 40, buffer), 0u);
  const std::unique_ptr<IVolumeReader> empty = OpenVolumeReader(folder.File("empty"));
  EXPECT_EQ(empty->Size(), 0);
  EXPECT_EQ(ReadVolume(*empty, 0, buffer), 0u);
}

TEST(VolumeReader, WhatIsNoVolumeIsRefused) {
  const Testing::TTemporaryFolder folder;
  EXPECT_THROW(OpenVolumeReader(folder.File("none")), EOSError);
  EXPECT_THROW(OpenVolumeReader(folder.Path().u16string()), EOSError) << "a folder";
}

}  // namespace
}  // namespace Vantrel
