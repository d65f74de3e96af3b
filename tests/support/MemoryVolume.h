#pragma once

// A volume in memory whose reads can fail, and a driver whose answers are staged.

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

#include "platform/system/Errors.h"
#include "platform/volumes/VolumeReader.h"
#include "tests/support/MadeNtfs.h"

namespace Vantrel::Testing {

// What happens to the reads of a volume.
struct TVolumeFaults {
  int fReads = 0;         // started so far
  int fFailingRead = -1;  // counted from 0; fails when it is waited for
  bool fFailsAtStart = false;
  bool fFailsAllAfter = false;
  size_t fMostUnderWay = 0;
  std::vector<size_t> fLengths;
  std::function<void(int pRead)> fOnRead;
};

class TMemoryVolume final : public Vantrel::IVolumeReader {
 public:
  static constexpr uint32_t kReadError = 5;

  explicit TMemoryVolume(TImage pImage, std::shared_ptr<TVolumeFaults> pFaults = std::make_shared<TVolumeFaults>())
      : fImage(std::move(pImage)), fFaults(std::move(pFaults)) {}

  int64_t Size() const override { return static_cast<int64_t>(fImage.size()); }

  void Start(size_t pSlot, int64_t pPosition, std::span<std::byte> pBuffer) override {
    TRead& read = fSlots.at(pSlot);
    if (read.fIsUnderWay) throw std::logic_error("a slot in use was used again");
    const int number = fFaults->fReads++;
    if (fFaults->fOnRead) fFaults->fOnRead(number);
    const bool fails = number == fFaults->fFailingRead ||
                       (fFaults->fFailsAllAfter && fFaults->fFailingRead >= 0 && number > fFaults->fFailingRead);
    if (fails && fFaults->fFailsAtStart) throw Vantrel::EOSError(kReadError, "Reading a volume", u"in memory");
    fFaults->fLengths.push_back(pBuffer.size());
    read = {pPosition, pBuffer, fails, true};
    const auto underWay = static_cast<size_t>(
        std::count_if(fSlots.begin(), fSlots.end(), [](const TRead& pRead) { return pRead.fIsUnderWay; }));
    fFaults->fMostUnderWay = std::max(fFaults->fMostUnderWay, underWay);
  }

  size_t Wait(size_t pSlot) override {
    TRead& read = fSlots.at(pSlot);
    read.fIsUnderWay = false;
    if (read.fFails) throw Vantrel::EOSError(kReadError, "Reading a volume", u"in memory");
    if (read.fPosition < 0 || read.fPosition >= Size()) return 0;
    const size_t length = std::min(read.fBuffer.size(), fImage.size() - static_cast<size_t>(read.fPosition));
    std::memcpy(read.fBuffer.data(), fImage.data() + read.fPosition, length);
    return length;
  }

  void Cancel() noexcept override {
    for (TRead& read : fSlots) read.fIsUnderWay = false;
  }

 private:
  struct TRead {
    int64_t fPosition = 0;
    std::span<std::byte> fBuffer;
    bool fFails = false;
    bool fIsUnderWay = false;
  };

  const TImage fImage;
  const std::shared_ptr<TVolumeFaults> fFaults;
  std::array<TRead, kMostReads> fSlots;
};

// Answers in place of the control codes that Windows' driver has and Wine lacks.
class TStagedNtfsDriver final : public Vantrel::INtfsDriver {
 public:
  static constexpr uint32_t kMoreData = 234;

  uint32_t fDataError = 0;
  uint32_t fExtentsError = 0;
  std::array<uint8_t, kVolumeDataSize> fVolumeData{};
  std::vector<TMadeRun> fExtents;
  std::vector<size_t>* fAskedSizes = nullptr;

  uint32_t GetVolumeData(std::span<std::byte, kVolumeDataSize> pAnswer) override {
    if (fDataError == 0) std::memcpy(pAnswer.data(), fVolumeData.data(), pAnswer.size());
    return fDataError;
  }

  uint32_t GetTableExtents(std::span<std::byte> pAnswer) override {
    if (fAskedSizes) fAskedSizes->push_back(pAnswer.size());
    if (fExtentsError != 0) return fExtentsError;
    if (pAnswer.size() < 16 + 16 * fExtents.size()) return kMoreData;
    const auto put = [&](size_t pAt, int64_t pValue) { std::memcpy(pAnswer.data() + pAt, &pValue, sizeof pValue); };
    put(0, static_cast<int64_t>(fExtents.size()));
    put(8, 0);
    int64_t next = 0;
    for (size_t i = 0; i < fExtents.size(); ++i) {
      next += fExtents[i].fLength;
      put(16 + 16 * i, next);
      put(24 + 16 * i, fExtents[i].fStart);
    }
    return 0;
  }

  // Sets the numbers of Windows' structure.
  void SetVolumeData(int64_t pTableBytes, uint32_t pRecord, uint32_t pCluster, uint32_t pSector) {
    const auto put = [&](size_t pAt, uint64_t pValue, size_t pSize) {
      std::memcpy(fVolumeData.data() + pAt, &pValue, pSize);
    };
    put(40, pSector, 4);
    put(44, pCluster, 4);
    put(48, pRecord, 4);
    put(56, static_cast<uint64_t>(pTableBytes), 8);
  }
};

}  // namespace Vantrel::Testing
