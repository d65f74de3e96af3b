#include "model/tree/TreeChanges.h"

#include <algorithm>

#include "platform/system/Errors.h"

namespace Vantrel {

class TChangeQueues::TSubscription : public TInterfaced<ITreeSubscription> {
 public:
  TSubscription(TRef<TChangeQueues> pQueues, size_t pPlace) : fQueues(std::move(pQueues)), fPlace(pPlace) {}
  ~TSubscription() override { End(); }

  TTreeChanges Take() override {
    return fEnded.load(std::memory_order_acquire) ? TTreeChanges() : fQueues->Take(fPlace);
  }
  void End() override {
    if (!fEnded.exchange(true, std::memory_order_acq_rel)) fQueues->End(fPlace);
  }

 private:
  const TRef<TChangeQueues> fQueues;
  const size_t fPlace;
  std::atomic<bool> fEnded{false};
};

TRef<ITreeSubscription> TChangeQueues::Subscribe(std::function<void()> pOnFirstChange) {
  TCriticalSectionLock lock(fLock);
  const auto queue = std::find_if(fQueues.begin(), fQueues.end(), [](const TQueue& pQueue) { return !pQueue.fTaken; });
  if (queue == fQueues.end())
    throw EInvalidOperation("TChangeQueues.Subscribe: there are " + std::to_string(kMostSubscriptions) +
                            " subscriptions already");
  const auto place = static_cast<size_t>(queue - fQueues.begin());
  TRef<ITreeSubscription> subscription = MakeRef<TSubscription>(TRef<TChangeQueues>(this), place);
  queue->fTaken = true;
  queue->fRoot = rcTreeReplaced;
  queue->fOnFirstChange = std::move(pOnFirstChange);
  fSubscribed.fetch_or(static_cast<uint8_t>(1u << place), std::memory_order_seq_cst);
  return subscription;
}

void TChangeQueues::TQueue::Add(IHierarchicalElement& pNode, TChangeMarks& pMarks, TNodeChanges pChanges) {
  const auto [known, isNew] = fIndexOf.try_emplace(&pNode, fEntries.size());
  if (isNew)
    fEntries.push_back({TRef<IHierarchicalElement>(&pNode), &pMarks, pChanges});
  else
    fEntries[known->second].fChanges |= pChanges;
}

template <class TCall>
void TChangeQueues::Change(const TCall& pCall) {
  std::vector<std::function<void()>> callbacks;
  {
    TCriticalSectionLock lock(fLock);
    for (size_t place = 0; place < kMostSubscriptions; ++place) {
      TQueue& queue = fQueues[place];
      if (!queue.fTaken) continue;
      const bool isFirst = queue.IsEmpty();
      pCall(queue, static_cast<uint8_t>(1u << place));
      if (isFirst && queue.fOnFirstChange && !queue.IsEmpty()) callbacks.push_back(queue.fOnFirstChange);
    }
  }
  for (const std::function<void()>& callback : callbacks) callback();
}

void TChangeQueues::Mark(IHierarchicalElement& pNode, TChangeMarks& pMarks, TNodeChanges pChanges) {
  if (!HasSubscribers()) return;
  Change([&](TQueue& pQueue, uint8_t pBit) {
    const bool isQueued = (pMarks.fetch_or(pBit, std::memory_order_acq_rel) & pBit) != 0;
    if (!isQueued || pChanges != ncChanged) pQueue.Add(pNode, pMarks, pChanges);
  });
}

void TChangeQueues::MarkRoot(TRootChanges pChanges) {
  if (!HasSubscribers()) return;
  Change([&](TQueue& pQueue, uint8_t) { pQueue.fRoot |= pChanges; });
}

TTreeChanges TChangeQueues::Take(size_t pPlace) {
  TTreeChanges changes;
  std::vector<TEntry> entries;
  boost::unordered_flat_map<const IHierarchicalElement*, size_t> indexOf;  // freed outside the lock
  {
    TCriticalSectionLock lock(fLock);
    TQueue& queue = fQueues[pPlace];
    changes.fRoot = std::exchange(queue.fRoot, 0);
    entries.swap(queue.fEntries);
    indexOf.swap(queue.fIndexOf);
    for (const TEntry& entry : entries)
      entry.fMarks->fetch_and(static_cast<uint8_t>(~(1u << pPlace)), std::memory_order_acq_rel);
  }
  changes.fNodes.reserve(entries.size());
  for (TEntry& entry : entries) {
    const bool isGone = (entry.fNode->GetFolderState() & fsDisposed) != 0;
    // A removed branch is reported once, at its top. The subscriber drops all beneath it.
    if (!isGone)
      changes.fNodes.push_back({std::move(entry.fNode), static_cast<TNodeChanges>(entry.fChanges & ~ncRemoved)});
    else if ((entry.fChanges & ncRemoved) != 0)
      changes.fNodes.push_back({std::move(entry.fNode), ncRemoved});
  }
  return changes;
}

void TChangeQueues::End(size_t pPlace) {
  TQueue ended;
  TCriticalSectionLock lock(fLock);
  const auto bit = static_cast<uint8_t>(1u << pPlace);
  fSubscribed.fetch_and(static_cast<uint8_t>(~bit), std::memory_order_acq_rel);
  std::swap(ended, fQueues[pPlace]);
  for (const TEntry& entry : ended.fEntries)
    entry.fMarks->fetch_and(static_cast<uint8_t>(~bit), std::memory_order_acq_rel);
}

}  // namespace Vantrel
