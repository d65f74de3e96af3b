#pragma once

// Size records, as plain numbers and as objects with column values.

#include <cstdint>
#include <string>

#include "model/columns/MetaData.h"

namespace Vantrel {

// Whether a node holds uncompressed and compressed content. Both bits may be set.
enum TCompressionState : uint8_t { compr_no = 1, compr_yes = 2 };
using TCompressionStates = uint8_t;

// The plain numbers of a size record, in bytes and items. Arrays and tables of records hold these.
struct TBasicSizeValues {
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  int64_t fFiles = 0;

  bool IsZero() const { return fSize == 0 && fAllocated == 0 && fFiles == 0; }
  bool operator==(const TBasicSizeValues&) const = default;
  TBasicSizeValues& operator+=(const TBasicSizeValues& pOther) {
    fSize += pOther.fSize;
    fAllocated += pOther.fAllocated;
    fFiles += pOther.fFiles;
    return *this;
  }
  TBasicSizeValues& operator-=(const TBasicSizeValues& pOther) {
    fSize -= pOther.fSize;
    fAllocated -= pOther.fAllocated;
    fFiles -= pOther.fFiles;
    return *this;
  }
};

// The same with folders and compression: all of a folder's totals.
struct TSizeValues : TBasicSizeValues {
  int64_t fFolders = 0;
  TCompressionStates fCompression = 0;
  bool operator==(const TSizeValues&) const = default;
  using TBasicSizeValues::operator+=;
  TSizeValues& operator+=(const TSizeValues& pOther) {
    TBasicSizeValues::operator+=(pOther);
    fFolders += pOther.fFolders;
    fCompression |= pOther.fCompression;
    return *this;
  }
};

// A size record as an object with column values: sizes and counts in bytes and items.
class IBasicSizeData : public IMetaDataFormatter {
 public:
  virtual int64_t GetSize() const = 0;
  virtual int64_t GetAllocated() const = 0;
  virtual int64_t GetFiles() const = 0;
  virtual void SetSize(int64_t pValue) = 0;
  virtual void SetAllocated(int64_t pValue) = 0;
  virtual void SetFiles(int64_t pValue) = 0;
  virtual void Assign(const IBasicSizeData& pSource) = 0;
  virtual bool IsZero() const = 0;
  virtual std::u16string ToString() const = 0;
};

class ISizeData : public IBasicSizeData {
 public:
  virtual int64_t GetFolders() const = 0;
  virtual void SetFolders(int64_t pValue) = 0;
  virtual TCompressionStates GetCompression() const = 0;
  virtual void SetCompression(TCompressionStates pValue) = 0;
  virtual TSizeValues GetValues() const = 0;
};

// Size records without a node, for summaries, selections and comparisons. Owned by one thread at a time.
template <class TInterface>
class TBasicSizeDataOf : public TInterfaced<TInterface> {
 public:
  int64_t GetSize() const override { return fValues.fSize; }
  int64_t GetAllocated() const override { return fValues.fAllocated; }
  int64_t GetFiles() const override { return fValues.fFiles; }
  void SetSize(int64_t pValue) override { fValues.fSize = pValue; }
  void SetAllocated(int64_t pValue) override { fValues.fAllocated = pValue; }
  void SetFiles(int64_t pValue) override { fValues.fFiles = pValue; }
  void Assign(const IBasicSizeData& pSource) override;
  bool IsZero() const override { return fValues.IsZero() && fValues.fFolders == 0; }
  // "1.5 MB (1.6 MB allocated), 12 files", with ", 3 folders" where folders are counted.
  std::u16string ToString() const override;
  TMetaDataValue GetValue(TColumn pColumn) const override;

 protected:
  TSizeValues fValues;
};

class TBasicSizeData : public TBasicSizeDataOf<IBasicSizeData> {};

class TSizeData : public TBasicSizeDataOf<ISizeData> {
 public:
  TSizeData() = default;
  explicit TSizeData(const TSizeValues& pValues) { fValues = pValues; }
  int64_t GetFolders() const override { return fValues.fFolders; }
  void SetFolders(int64_t pValue) override { fValues.fFolders = pValue; }
  TCompressionStates GetCompression() const override { return fValues.fCompression; }
  void SetCompression(TCompressionStates pValue) override { fValues.fCompression = pValue; }
  TSizeValues GetValues() const override { return fValues; }
};

// The value of a size column in a record. "No value" for any other column.
TMetaDataValue ValueOfSizes(const TSizeValues& pValues, TColumn pColumn);

// The size that leads, of anything that has both: fAllocated for mdAllocated, otherwise fSize.
template <class TSizes>
int64_t LeadingSizeOf(const TSizes& pSizes, TColumn pLeading) {
  return pLeading == TColumn::mdAllocated ? pSizes.fAllocated : pSizes.fSize;
}

// The part that a size has in a whole, from 0 to 1. Nothing has no parts, so the share is then 0.
inline double ShareOfWhole(int64_t pPart, int64_t pWhole) {
  return pWhole == 0 ? 0.0 : static_cast<double>(pPart) / static_cast<double>(pWhole);
}

// An entry now and in an earlier scan. What was not there, or is not there any more, has zeros.
struct TChange {
  TSizeValues fNow{};
  TSizeValues fThen{};
  bool fIsNew = false;
  bool fIsGone = false;
};
// The value of a column of change. The percentage has no value without an earlier size, nor the state without a change
// of state. "No value" for any other column.
TMetaDataValue ValueOfChange(const TChange& pChange, TColumn pColumn);

}  // namespace Vantrel
