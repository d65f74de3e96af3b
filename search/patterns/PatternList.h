#pragma once

// The list of patterns: its order, matching, `StopTraversing`, and the text and XML forms of the whole list.

#include "model/tree/Observable.h"
#include "platform/threads/SlimReaderWriterLock.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// Called when the patterns of a list have changed. It runs on the thread that changed them, outside the list's locks.
class IPatternsObserver : public IInterface {
 public:
  virtual void PatternsChanged(IPatterns& pPatterns) = 0;
};

// Orders patterns by the cost of matching them, cheap ones first.
class TPatternComparer {
 public:
  static int Cost(const IPattern& pPattern);
  static int Compare(const IPattern& pA, const IPattern& pB) { return Cost(pA) - Cost(pB); }
};

class TPatternList : public TInterfaced<IPatterns> {
 public:
  // pPathDelimiter is the delimiter of the roots whose paths will be matched.
  explicit TPatternList(char16_t pPathDelimiter) : fPathDelimiter(pPathDelimiter) {}

  TRef<IPattern> Add(std::u16string_view pPattern, TPatternType pDefaultType) override;
  void Add(TRef<IPattern> pPattern) override;
  void AddStrings(const std::vector<std::u16string>& pPatterns, TPatternType pDefaultType) override;
  void AddRange(const IPatterns& pPatterns) override;
  void Assign(const IPatterns& pPatterns) override;

  bool Matches(TPatternItem& pItem, TPatternType pType) override;
  TRef<IPattern> GetMatchingPattern(TPatternItem& pItem) override;
  bool StopTraversing(TPatternItem& pItem) override;
  bool MatchesAll() const override;

  int Count(bool pActiveOnly, const TPatternTypes& pTypes) const override;
  int Count() const override { return Count(false, {}); }
  int IndexOf(const IPattern& pPattern) const override;
  bool Contains(const IPattern& pPattern) const override { return IndexOf(pPattern) >= 0; }
  bool ContainsPattern(std::u16string_view pText) const override;
  void Remove(const IPattern& pPattern) override;
  void Clear() override;
  bool Equal(const IPatterns& pOther) const override;
  TRef<IPattern> GetItem(int pIndex) const override;
  std::vector<TRef<IPattern>> GetItems() const override { return fList.Snapshot(); }
  TRef<IPatterns> Clone() const override;

  void Activate(const TPatternTargets& pTargets, const TPatternTypes& pTypes, bool pActive) override;
  std::u16string ToString(const TPatternsToStringRepresentationOptions& pOptions) const override;
  char16_t GetPathDelimiter() const override { return fPathDelimiter; }
  bool GetAutoSort() const override { return fList.GetAutoSort(); }
  void SetAutoSort(bool pAutoSort) override;
  bool GetEmptyPatternListMatchesAll() const override { return fEmptyMatchesAll.load(std::memory_order_relaxed); }
  void SetEmptyPatternListMatchesAll(bool pValue) override { fEmptyMatchesAll = pValue; }

  void WriteToXML(IElementWriter& pWriter) const override;
  void ReadFromXML(const TElementAttributes& pPattern) override;
  TElementAttributes WriteProperties() const override;
  void ReadProperties(const TElementAttributes& pProperties) override;

  void Subscribe(TRef<IPatternsObserver> pObserver) { fObservers.Subscribe(std::move(pObserver)); }

 private:
  using TItems = std::vector<TRef<IPattern>>;

  // The patterns and their lock. Readers may match between BeginRead and EndRead. Meanwhile they take no other lock of
  // this list.
  class TInternalList {
   public:
    const TItems& BeginRead() const ACQUIRE_SHARED(fLock);
    void EndRead() const RELEASE_SHARED(fLock);
    TItems Snapshot() const;
    void Append(const TItems& pItems);
    void Replace(TItems pItems);
    bool RemoveEqual(const IPattern& pPattern);
    bool GetAutoSort() const;
    void SetAutoSort(bool pAutoSort);

   private:
    void Sort() REQUIRES(fLock);

    mutable TSlimReaderWriterLock fLock;
    TItems fItems GUARDED_BY(fLock);
    bool fAutoSort GUARDED_BY(fLock) = false;
  };
  // Holds a read for a scope.
  class TReading;

  void Changed();

  const char16_t fPathDelimiter;
  TInternalList fList;
  std::atomic<bool> fEmptyMatchesAll{false};
  TObservable<IPatternsObserver> fObservers;
};

// Makes a list of one pattern in the text form.
TRef<IPatterns> CreateFor(std::u16string_view pPattern, TPatternType pDefaultType, char16_t pPathDelimiter);
TRef<IPatterns> CreateFor(TRef<IPattern> pPattern, char16_t pPathDelimiter);
}  // namespace Vantrel::PatternMatching
