#pragma once

// Age intervals, and the statistics by file age.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/statistics/ColorPalette.h"
#include "model/statistics/PackedSizeTable.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

// The age of a file in days, rounded up. So a file is at most n days old exactly when its age is at most n: a day and a
// minute is 2, not "up to a day". At most 0 for a date in the future. A file without a date is very old.
int64_t FileAgeInDays(TKivFileTime pNow, TKivFileTime pDate);

// "6 months": a number of days in the largest unit of days, weeks, months (30 days) and years (365) that fits, cut to
// whole units.
std::u16string FileAgeLabelFromDays(int64_t pDays);

// Age intervals: an ascending list of bounds in days. Each interval reaches from the previous bound to its own, which
// is included. The last interval is open-ended. Set up before a scan, then only read, by any thread.
class IFileAges : public IInterface {
 public:
  virtual void Assign(const IFileAges& pSource) = 0;
  // Inserts a bound in order. A bound that is already present is not added again.
  virtual void Add(int64_t pDays) = 0;
  virtual int GetCount() const = 0;
  // The bounds in decimal, joined with ";".
  virtual std::u16string GetAsString() const = 0;
  // Sets the bounds from text. Parts that are no number are skipped. When the text has no bound: EInvalidArgumentValue,
  // and the list stays unchanged.
  virtual void SetAsString(std::u16string_view pText) = 0;
  // The calls with an index raise EInvalidArgumentValue for one outside 0..count-1.
  virtual int64_t GetItem(int pIndex) const = 0;
  virtual bool EqualsTo(const IFileAges& pOther) const = 0;
  // "1 week - 1 month"; "up to 1 day" for the first and "over 2 years" for the last.
  virtual std::u16string GetLabel(int pIndex) const = 0;
  // A colour from green for the youngest to red for the oldest.
  virtual TColor GetColor(int pIndex) const = 0;
  // The moment that is the bound's days before now. "No date" when that is before file times begin.
  virtual TKivFileTime FileAgeFromNow(int pIndex) const = 0;
  // The first interval whose bound is at least the age in days; the last when there is none; -1 for an empty list.
  virtual int GetIndexOfMatchingInterval(int64_t pAgeInDays) const = 0;
};

// A list of whole numbers.
class TIntegerList {
 public:
  virtual ~TIntegerList() = default;
  virtual void Add(int64_t pValue) { fValues.push_back(pValue); }
  int Count() const { return static_cast<int>(fValues.size()); }
  // EInvalidArgumentValue for an index outside the list.
  int64_t Item(int pIndex) const;
  const std::vector<int64_t>& Values() const { return fValues; }
  void Clear() { fValues.clear(); }

 protected:
  void CheckIndex(int pIndex) const;

  std::vector<int64_t> fValues;
};

// A list of bounds: ascending, each value once.
class TDistributionList : public TIntegerList {
 public:
  void Add(int64_t pValue) override;
  // Copies the values without duplicates. When none would be left: EInvalidArgumentValue, and the list stays unchanged.
  void Assign(std::span<const int64_t> pValues);
};

class TFileAges : public TInterfaced<IFileAges>, private TDistributionList {
 public:
  // An empty list.
  TFileAges() = default;
  // Creates the list from the attributes of an XML element: every name "Days_" and a number gives a bound.
  // EInvalidArgumentValue when there is none.
  static TRef<TFileAges> CreateFromXML(std::span<const std::pair<std::u16string, std::u16string>> pAttributes);

  void Assign(const IFileAges& pSource) override;
  void Add(int64_t pDays) override { TDistributionList::Add(pDays); }
  int GetCount() const override { return Count(); }
  std::u16string GetAsString() const override;
  void SetAsString(std::u16string_view pText) override;
  int64_t GetItem(int pIndex) const override { return Item(pIndex); }
  bool EqualsTo(const IFileAges& pOther) const override;
  std::u16string GetLabel(int pIndex) const override;
  TColor GetColor(int pIndex) const override;
  TKivFileTime FileAgeFromNow(int pIndex) const override;
  int GetIndexOfMatchingInterval(int64_t pAgeInDays) const override;
};

// The space below a folder by age interval: a size record per interval. Any thread.
class IFileAgeDistribution : public IInterface {
 public:
  virtual TRef<IFileAges> GetFileAges() const = 0;
  // Replaces the intervals and clears the records. EInvalidArgumentValue for nullptr and for an empty list.
  virtual void SetFileAges(TRef<IFileAges> pFileAges) = 0;
  // The date of a file from which its age is counted.
  virtual TDateType GetDateType() const = 0;
  virtual void Add(int pInterval, const TBasicSizeValues& pValues) = 0;
  // The same for many files, for the scan. The key is the interval; entries must be in ascending order, each key once.
  virtual void Add(std::span<const TKeyedSizeValues> pEntries) = 0;
  // Adds or subtracts another distribution of the same intervals, whose lock is held for the whole walk. It must not be
  // this one. No other thread may merge the two in the opposite direction at the same time.
  virtual void AddDistribution(const IFileAgeDistribution& pOther) = 0;
  virtual void SubtractDistribution(const IFileAgeDistribution& pOther) = 0;
  // An interval's numbers. All zero when it holds no file.
  virtual TBasicSizeValues GetRecord(int pInterval) const = 0;
  // The records of all intervals that hold files, by ascending interval. The interval is the key.
  virtual std::vector<TKeyedSizeValues> GetEntries() const = 0;
  virtual void Assign(const IFileAgeDistribution& pSource) = 0;
  virtual void Clear() = 0;
  virtual TRef<IFileAgeDistribution> Clone() const = 0;
  // Creates a distribution of the same intervals and date kind, without values.
  virtual TRef<IFileAgeDistribution> CloneEmpty() const = 0;
};

class TFileAgeDistribution : public TInterfaced<IFileAgeDistribution> {
 public:
  TFileAgeDistribution(TRef<IFileAges> pFileAges, TDateType pDateType);

  TRef<IFileAges> GetFileAges() const override;
  void SetFileAges(TRef<IFileAges> pFileAges) override;
  TDateType GetDateType() const override;
  void Add(int pInterval, const TBasicSizeValues& pValues) override;
  void Add(std::span<const TKeyedSizeValues> pEntries) override;
  void AddDistribution(const IFileAgeDistribution& pOther) override;
  void SubtractDistribution(const IFileAgeDistribution& pOther) override;
  TBasicSizeValues GetRecord(int pInterval) const override;
  std::vector<TKeyedSizeValues> GetEntries() const override;
  void Assign(const IFileAgeDistribution& pSource) override;
  void Clear() override;
  TRef<IFileAgeDistribution> Clone() const override;
  TRef<IFileAgeDistribution> CloneEmpty() const override {
    return MakeRef<TFileAgeDistribution>(GetFileAges(), GetDateType());
  }

 private:
  TFileAgeDistribution(const TFileAgeDistribution& pOther) NO_THREAD_SAFETY_ANALYSIS;

  mutable TSlimReaderWriterLock fLock;
  TRef<IFileAges> fFileAges GUARDED_BY(fLock);
  [[no_unique_address]] TPackedSizeTable fTable GUARDED_BY(fLock);
  TDateType fDateType GUARDED_BY(fLock);
};

}  // namespace Vantrel
