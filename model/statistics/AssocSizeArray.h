#pragma once

// The size statistics by extension and by owner.

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/columns/SizeData.h"
#include "model/statistics/ColorPalette.h"
#include "model/statistics/InternedKeys.h"
#include "model/statistics/PackedSizeTable.h"
#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

// A dictionary from a text key to a size record: the space of each extension or each owner below a folder. Records that
// a subtraction brought to zero stay inside, but enumeration and look-up skip them. So the array reads like that of a
// fresh scan. Any thread; each call holds the array's own lock.
class ICustomAssocSizeArray : public IInterface {
 public:
  // Adds the numbers of one or more files under a key. An empty text stands for the missing extension or owner.
  virtual void Add(std::u16string_view pKey, const TBasicSizeValues& pValues) = 0;
  // The same by key id, for the scan. Entries must be sorted by key, each key once. The ids come from KeyOf of the
  // array's class.
  virtual void Add(std::span<const TKeyedSizeValues> pEntries) = 0;
  // Adds or subtracts every record of another array, whose lock is held for the whole walk. The other array must not be
  // this one. No other thread may merge the two in the opposite direction at the same time.
  virtual void AddArray(const ICustomAssocSizeArray& pOther) = 0;
  virtual void SubtractArray(const ICustomAssocSizeArray& pOther) = 0;
  // Replaces a key's record. If pValues is nullptr: EInvalidArgumentValue "The content of a size array must not be nil.
  // Index: " and the key.
  virtual void SetRecord(std::u16string_view pKey, const TBasicSizeValues* pValues) = 0;
  // A key's numbers; false when it has none.
  virtual bool Find(std::u16string_view pKey, TBasicSizeValues& pValues) const = 0;
  // A key's value in a column (mdSize, mdAllocated, mdFiles, mdAverageFileSize); 0 when missing. For mdPercentOfParent,
  // the share of the reference record in millionths.
  virtual int64_t GetValueOfKey(std::u16string_view pKey, TColumn pColumn, const TSizeValues& pReference,
                                TColumn pShareBasis) const = 0;
  // All records, in no particular order.
  virtual std::vector<TKeyedSizeValues> GetEntries() const = 0;
  // The keys by descending value of the column. Equal ones are sorted by key text, so the order never depends on
  // threads.
  virtual std::vector<std::u16string> GetKeysSorted(TColumn pSortColumn) const = 0;
  // The key's colour in every chart: the user's own choice, else one picked by the hash of its text.
  virtual TColor GetColorForKey(std::u16string_view pKey) const = 0;
  virtual size_t Count() const = 0;
  virtual void Clear() = 0;
  virtual TRef<ICustomAssocSizeArray> Clone() const = 0;
};

class TCustomAssocSizeArray : public TInterfaced<ICustomAssocSizeArray> {
 public:
  // Orders entries by a column, the largest first. Equal ones are sorted by key text in code-unit order.
  class TSizeArrayComparer {
   public:
    // mdCount selects the default sort column, which is the second argument.
    explicit TSizeArrayComparer(TColumn pColumn, TColumn pDefault = TColumn::mdSize)
        : fColumn(pColumn == TColumn::mdCount ? pDefault : pColumn) {}
    // Negative when the first comes first.
    int Compare(const TKeyedSizeValues& pA, const TKeyedSizeValues& pB) const;
    bool operator()(const TKeyedSizeValues& pA, const TKeyedSizeValues& pB) const { return Compare(pA, pB) < 0; }
    TColumn Column() const { return fColumn; }

   private:
    TColumn fColumn;
  };

  ~TCustomAssocSizeArray() override;

  void Add(std::u16string_view pKey, const TBasicSizeValues& pValues) override;
  void Add(std::span<const TKeyedSizeValues> pEntries) override;
  void AddArray(const ICustomAssocSizeArray& pOther) override;
  void SubtractArray(const ICustomAssocSizeArray& pOther) override;
  void SetRecord(std::u16string_view pKey, const TBasicSizeValues* pValues) override;
  bool Find(std::u16string_view pKey, TBasicSizeValues& pValues) const override;
  int64_t GetValueOfKey(std::u16string_view pKey, TColumn pColumn, const TSizeValues& pReference,
                        TColumn pShareBasis) const override;
  std::vector<TKeyedSizeValues> GetEntries() const override;
  std::vector<std::u16string> GetKeysSorted(TColumn pSortColumn) const override;
  TColor GetColorForKey(std::u16string_view pKey) const override;
  size_t Count() const override;
  void Clear() override;

 protected:
  // Bits of the flag word.
  static constexpr uint16_t kLowerCaseKeys = 1;  // A.TXT and b.txt share one key

  explicit TCustomAssocSizeArray(uint16_t pFlags);
  TCustomAssocSizeArray(const TCustomAssocSizeArray& pOther);
  // The text that stands for a missing key. No real key can equal it.
  virtual std::u16string_view TextForEmptyKey() const = 0;

  // The key under which a text is stored.
  std::u16string NormalisedKey(std::u16string_view pKey) const;
  static std::u16string NormalisedKey(std::u16string_view pKey, std::u16string_view pTextForEmpty, bool pLowerCase);

 private:
  struct TSortedKeys;

  TPackedSizeTable CopyOfTable() const;
  void Changed() REQUIRES(fLock) { ++fChanges; }

  // The members are ordered to leave no holes: 40 bytes with a 4-byte lock.
  mutable TSlimReaderWriterLock fLock;
  // The order requested last, made on demand, since only a few of millions of arrays are ever shown. It is valid while
  // its change count equals fChanges.
  mutable std::unique_ptr<TSortedKeys> fSorted GUARDED_BY(fLock);
  [[no_unique_address]] TPackedSizeTable fTable GUARDED_BY(fLock);
  const uint16_t fFlags;
  uint32_t fChanges GUARDED_BY(fLock) = 0;
};

// The space of each file extension. Keys are lower-case and begin with the dot (".txt"). "<no extension>" stands for
// files without one. It has no dot, so it cannot be confused with an extension.
class TExtensionSizeArray : public TCustomAssocSizeArray {
 public:
  TExtensionSizeArray() : TCustomAssocSizeArray(kLowerCaseKeys) {}
  static constexpr std::u16string_view kNoExtension = u"<no extension>";
  // The key id of an extension; empty means none. Not cheap: a scan worker uses its own cache first.
  static TKeyId KeyOf(std::u16string_view pExtension);

  TRef<ICustomAssocSizeArray> Clone() const override {
    return TRef<ICustomAssocSizeArray>(new TExtensionSizeArray(*this));
  }

 protected:
  std::u16string_view TextForEmptyKey() const override { return kNoExtension; }
};

// The space of each owner, by unchanged account name. "<unknown owner>" stands for files with an unknown owner. Neither
// system allows "<" in an account name.
class TUserSizeArray : public TCustomAssocSizeArray {
 public:
  TUserSizeArray() : TCustomAssocSizeArray(0) {}
  static constexpr std::u16string_view kUnknownOwner = u"<unknown owner>";
  static TKeyId KeyOf(std::u16string_view pOwner);

  TRef<ICustomAssocSizeArray> Clone() const override { return TRef<ICustomAssocSizeArray>(new TUserSizeArray(*this)); }

 protected:
  std::u16string_view TextForEmptyKey() const override { return kUnknownOwner; }
};

// A size record that carries its key as a name.
class TNamedSizeData : public TBasicSizeData {
 public:
  TNamedSizeData() = default;
  TNamedSizeData(std::u16string_view pName, const TBasicSizeValues& pValues);
  const std::u16string& GetName() const { return fName; }
  // Copies the values, and the name if the source has one.
  void Assign(const IBasicSizeData& pSource) override;
  TMetaDataValue GetValue(TColumn pColumn) const override;

 private:
  std::u16string fName;
};

}  // namespace Vantrel
