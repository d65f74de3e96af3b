#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/InternedKeys.h"
#include "model/SizeData.h"
#include "platform/SlimReaderWriterLock.h"

namespace Kiv {

// One key of a size array with its numbers.
struct TKeyedSizeValues {
  TKeyId fKey = 0;
  TBasicSizeValues fValues;
};

// A dictionary from a text key to a size record: what each extension or each owner takes below a folder. Records that a
// subtraction brought to zero stay inside but are not shown: enumeration and look-up pass over them, so that the array
// reads as that of a fresh scan. Any thread; each call holds the array's own lock.
class ICustomAssocSizeArray : public IInterface {
 public:
  // Adds one file's or many files' numbers under a key. An empty text stands for the missing extension or owner.
  virtual void Add(std::u16string_view pKey, const TBasicSizeValues& pValues) = 0;
  virtual void Add(std::span<const TKeyedSizeValues> pEntries) = 0;
  // Adds or takes away every record of another array, which is read under its own lock for the whole walk. The other
  // array is never this one, nor one that another thread merges the other way.
  virtual void AddArray(const ICustomAssocSizeArray& pOther) = 0;
  virtual void SubtractArray(const ICustomAssocSizeArray& pOther) = 0;
  // Replaces a key's record. No record: EInvalidArgumentValue "The content of a size array must not be nil. Index: " key.
  virtual void SetRecord(std::u16string_view pKey, const TBasicSizeValues* pValues) = 0;
  // A key's numbers; false when it has none.
  virtual bool Find(std::u16string_view pKey, TBasicSizeValues& pValues) const = 0;
  // A key's value in a column (mdSize, mdAllocated, mdFiles), 0 when missing; for mdPercentOfParent the share of the
  // reference record in millionths.
  virtual int64_t GetValueOfKey(std::u16string_view pKey, TColumn pColumn, const TSizeValues& pReference,
                                TColumn pShareBasis) const = 0;
  // All records, in no particular order.
  virtual std::vector<TKeyedSizeValues> GetEntries() const = 0;
  // The keys by descending value of the column; equal ones by key text, so that the order never depends on threads.
  virtual std::vector<std::u16string> GetKeysSorted(TColumn pSortColumn) const = 0;
  virtual size_t Count() const = 0;
  virtual void Clear() = 0;
  virtual TRef<ICustomAssocSizeArray> Clone() const = 0;
};

}  // namespace Kiv
