#pragma once

// Wrappers around another enumerator: one caches values, one adds up sizes, one is the base of filters.

#include <array>
#include <bitset>
#include <cstdint>
#include <string>

#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Enumerators {

// Wraps another enumerator and forwards all calls to it. Child enumerators are wrapped in the same way.
class TBaseNestedHierarchicalEnumerator : public TBaseVisualHierarchicalEnumerator {
 public:
  bool Next() override { return fNestedEnumerator->Next(); }
  void Reset() override { fNestedEnumerator->Reset(); }
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  uint64_t GetEntryId() const override { return fNestedEnumerator->GetEntryId(); }
  TRef<IHierarchicalEnumerator> CreateChildEnumeratorById(uint64_t pId, std::u16string_view pName,
                                                          TAttributes pAttributes) override;
  TRef<IHierarchicalEnumerator> Clone() const override { return Wrap(fNestedEnumerator->Clone()); }

  std::u16string_view GetObjectName() const override { return fNestedEnumerator->GetObjectName(); }
  int64_t GetSize() const override { return fNestedEnumerator->GetSize(); }
  int64_t GetAllocated() const override { return fNestedEnumerator->GetAllocated(); }
  TKivFileTime GetLastAccessDate() const override { return fNestedEnumerator->GetLastAccessDate(); }
  TKivFileTime GetLastChangeDate() const override { return fNestedEnumerator->GetLastChangeDate(); }
  TKivFileTime GetCreationDate() const override { return fNestedEnumerator->GetCreationDate(); }
  TAttributes GetAttributes() const override { return fNestedEnumerator->GetAttributes(); }
  bool IsFolder() const override { return fNestedEnumerator->IsFolder(); }
  std::u16string GetFullPath() const override { return fNestedEnumerator->GetFullPath(); }
  bool ReadValues() override { return fNestedEnumerator->ReadValues(); }
  TEntryValues GetEntryValues() const override { return fNestedEnumerator->GetEntryValues(); }
  std::u16string GetOwner() const override { return fNestedEnumerator->GetOwner(); }
  uint64_t GetOwnerId() const override { return fNestedEnumerator->GetOwnerId(); }
  bool CanDescend() const override { return fNestedEnumerator->CanDescend(); }
  uint32_t GetErrorCode() const override { return fNestedEnumerator->GetErrorCode(); }
  TEnumeratorError GetError() const override { return fNestedEnumerator->GetError(); }
  std::u16string GetPath() const override { return fNestedEnumerator->GetPath(); }
  TMetaDataValue GetValue(TColumn pColumn) const override { return fNestedEnumerator->GetValue(pColumn); }
  std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const override {
    return fNestedEnumerator->GetFormattedValue(pColumn, pFormat);
  }

 protected:
  explicit TBaseNestedHierarchicalEnumerator(TRef<IHierarchicalEnumerator> pNested);
  // Makes a wrapper of the same kind, with the same settings, around another enumerator.
  virtual TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const = 0;

  TRef<IHierarchicalEnumerator> fNestedEnumerator;  // never nullptr
};

// Caches the wrapped enumerator's values of the current entry, so each is computed once. It serves displays and filters
// that ask for the same columns repeatedly.
class TCachingEnumerator : public TBaseNestedHierarchicalEnumerator {
 public:
  explicit TCachingEnumerator(TRef<IHierarchicalEnumerator> pNested);

  bool Next() override;
  void Reset() override;
  int64_t GetSize() const override;
  int64_t GetAllocated() const override;
  TKivFileTime GetLastAccessDate() const override;
  TKivFileTime GetLastChangeDate() const override;
  TKivFileTime GetCreationDate() const override;
  TAttributes GetAttributes() const override;
  TEntryValues GetEntryValues() const override;
  std::u16string GetFullPath() const override;
  std::u16string GetOwner() const override;
  TMetaDataValue GetValue(TColumn pColumn) const override;
  std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const override;

 protected:
  TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const override;

 private:
  // Values by column. Clearing marks all as unset but keeps the memory of texts.
  template <class T>
  struct TColumnCache {
    static constexpr size_t kColumns = static_cast<size_t>(TColumn::mdCount);
    std::array<T, kColumns> fValues;
    std::bitset<kColumns> fFilled;

    template <class TCompute>
    const T& Get(TColumn pColumn, TCompute pCompute) {
      size_t index = static_cast<size_t>(pColumn);
      if (!fFilled[index]) {
        fValues[index] = pCompute();
        fFilled.set(index);
      }
      return fValues[index];
    }
  };

  void ClearCaches() const;
  std::u16string CachedText(TColumn pColumn) const;

  mutable TColumnCache<TMetaDataValue> fVariantCache;
  mutable TColumnCache<std::u16string> fFormattedStringsCache;
  mutable TColumnCache<int64_t> fPlainValuesCache;
  mutable TValueFormat fCachedFormat;  // the format of the formatted strings
};

// The sums over the entries of a listing. Each date is the newest one.
struct TEntrySums {
  int64_t fPlainSize = 0;
  int64_t fSizeOnStorage = 0;
  int64_t fNumberOfFiles = 0;
  int64_t fNumberOfFolders = 0;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  bool operator==(const TEntrySums&) const = default;
};

// Adds up the entries that it lists, and those listed by enumerators for its entries. Each entry counts here and in
// every summarizing enumerator above. All enumerators of one chain belong to one thread.
class TSummarizingEnumerator : public TBaseNestedHierarchicalEnumerator {
 public:
  // With pFolderDateBasedOnFilesOnly the dates of folder entries do not count.
  TSummarizingEnumerator(TRef<IHierarchicalEnumerator> pNested, bool pFolderDateBasedOnFilesOnly);
  ~TSummarizingEnumerator() override;

  bool Next() override;
  // Sets the sums to zero. The enumerators above keep what was added to them.
  void Reset() override;
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  TRef<IHierarchicalEnumerator> CreateChildEnumeratorById(uint64_t pId, std::u16string_view pName,
                                                          TAttributes pAttributes) override;

  // The sums of all entries listed so far, those beneath the entries included.
  TEntrySums Summarized() const {
    return {fSummarizedPlainSize,       fSummarizedSizeOnStorage,  fSummarizedNumberOfFiles,
            fSummarizedNumberOfFolders, fSummarizedLastAccessDate, fSummarizedLastChangeDate};
  }
  // The sums of the current entry and of what its GetChildHierarchicalEnumerator has listed beneath it. A folder's own
  // entry counts as one folder.
  TEntrySums Child() const {
    return {fChildPlainSize,       fChildSizeOnStorage,  fChildNumberOfFiles,
            fChildNumberOfFolders, fChildLastAccessDate, fChildLastChangeDate};
  }

 protected:
  TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const override;

 private:
  TRef<IHierarchicalEnumerator> WrapChild(TRef<IHierarchicalEnumerator> pNested, int64_t pEntryNumber);
  void CountEntry(const TEntrySums& pEntry);
  TEntrySums SumsOfEntry() const;
  void AddToSummarized(const TEntrySums& pEntry);
  void AddToChild(const TEntrySums& pEntry);
  void ClearChild();

  int64_t fSummarizedPlainSize = 0;
  int64_t fSummarizedSizeOnStorage = 0;
  int64_t fSummarizedNumberOfFiles = 0;
  int64_t fSummarizedNumberOfFolders = 0;
  TKivFileTime fSummarizedLastAccessDate;
  TKivFileTime fSummarizedLastChangeDate;
  // Sums of the current entry and what lies beneath it.
  int64_t fChildPlainSize = 0;
  int64_t fChildSizeOnStorage = 0;
  int64_t fChildNumberOfFiles = 0;
  int64_t fChildNumberOfFolders = 0;
  TKivFileTime fChildLastAccessDate;
  TKivFileTime fChildLastChangeDate;
  bool fFolderDateBasedOnFilesOnly;
  TRef<TSummarizingEnumerator> fParentEnumerator;  // nullptr at the top
  int64_t fEntryNumber = 0;                        // of the current entry, counted from 1
  int64_t fParentEntryNumber = 0;  // the parent's entry that this enumerator lists; -1 for one listed earlier
};

// Base of the wrappers that leave out entries.
class TBaseFilterEnumerator : public TBaseNestedHierarchicalEnumerator {
 public:
  bool Next() override;

 protected:
  using TBaseNestedHierarchicalEnumerator::TBaseNestedHierarchicalEnumerator;
  // Whether the wrapped enumerator's current entry is passed on.
  virtual bool IsIncluded() = 0;
};

}  // namespace Vantrel::Enumerators
