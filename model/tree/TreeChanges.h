#pragma once

// The changes of a tree, for views of it: the kinds of change, a subscriber's queue, and all queues of a root.
//
// Workers only mark what changed. A node that is already marked costs them one look, however often it changes. This
// matters since a folder near the top changes with every folder beneath it. A subscriber takes its queue at any time,
// on its own thread, and then reads the nodes' values. So a queue holds each node once, and nothing is sent per file.

#include <array>
#include <atomic>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <functional>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel {

// What happened to a node since its queue was last taken.
enum TNodeChange : uint8_t {
  ncAdded = 1 << 0,    // new in its parent: read all of it; its children arrive as separate changes
  ncRemoved = 1 << 1,  // left the tree with all beneath it; only its identity is still valid
  ncChanged = 1 << 2,  // its totals, dates or state changed
  ncFiles = 1 << 3,    // the list of its own files changed
  ncReset = 1 << 4,    // all its children are gone; new ones arrive as separate changes
};
using TNodeChanges = uint8_t;

// What happened to the root as a whole.
enum TRootChange : uint8_t {
  rcTreeReplaced = 1 << 0,      // the whole earlier tree is gone: read the tree from the top folder down
  rcScanStarted = 1 << 1,       // a scan of the whole path or of a branch
  rcScanEnded = 1 << 2,         // the root now behaves as a finished one
  rcComparisonChanged = 1 << 3  // a comparison was set, changed or ended
};
using TRootChanges = uint8_t;

struct TChangedNode {
  TRef<IHierarchicalElement> fNode;
  TNodeChanges fChanges = 0;
};

// The contents of a queue. The root's changes come before those of nodes, and a parent's before its children's.
struct TTreeChanges {
  TRootChanges fRoot = 0;
  std::vector<TChangedNode> fNodes;

  bool IsEmpty() const { return fRoot == 0 && fNodes.empty(); }
};

// One subscription to a root's changes. Any thread.
class ITreeSubscription : public IInterface {
 public:
  // Takes the changes since the last call. Nodes below a removed node are not included. A removed node may be one that
  // the subscriber has never seen.
  virtual TTreeChanges Take() = 0;
  // Ends the subscription: no further change is queued. Releasing the last reference does the same.
  virtual void End() = 0;
};

// The marks of one node: a bit for each queue that holds it.
using TChangeMarks = std::atomic<uint8_t>;
// The bit that says that the node is in the tree. ncAdded covers all changes before that.
constexpr uint8_t kIsInTree = 0x80;

// All queues of a root. A root owns one; a subscription keeps it alive.
class TChangeQueues : public TInterfaced<IInterface> {
 public:
  // The number of places for subscriptions. Each subscription takes one.
  static constexpr size_t kMostSubscriptions = 7;

  // Queues changes from now on, with rcTreeReplaced as the first. The subscriber then reads the present tree, which may
  // already include changes that the queue reports later. The callback, if any, runs on the worker that makes the first
  // change after each Take. It must return soon and must not take the queue. EInvalidOperation when all places are
  // taken. Any thread.
  TRef<ITreeSubscription> Subscribe(std::function<void()> pOnFirstChange = {});

  // Whether a change of a node with these marks is news to a subscriber. Workers ask after the change. If the node is
  // already marked, the subscriber has not read it yet.
  bool IsNews(TChangeMarks& pMarks) const {
    const uint8_t subscribed = fSubscribed.load(std::memory_order_relaxed);
    if (subscribed == 0) return false;
    // Reads the marks by writing them: so this comes either before Take clears them, and Take's subscriber sees the
    // change, or after it, and the change is queued.
    return (subscribed & ~pMarks.fetch_or(0, std::memory_order_acq_rel)) != 0;
  }
  bool HasSubscribers() const { return fSubscribed.load(std::memory_order_relaxed) != 0; }
  // Queues a change. pMarks are the node's own.
  void Mark(IHierarchicalElement& pNode, TChangeMarks& pMarks, TNodeChanges pChanges);
  // Queues a change of the root as a whole.
  void MarkRoot(TRootChanges pChanges);

 private:
  class TSubscription;

  struct TEntry {
    TRef<IHierarchicalElement> fNode;
    TChangeMarks* fMarks;
    TNodeChanges fChanges;
  };
  // The queue of one subscription's place.
  struct TQueue {
    bool fTaken = false;  // a subscription uses the place
    std::function<void()> fOnFirstChange;
    TRootChanges fRoot = 0;
    std::vector<TEntry> fEntries;
    boost::unordered_flat_map<const IHierarchicalElement*, size_t> fIndexOf;  // into fEntries

    bool IsEmpty() const { return fRoot == 0 && fEntries.empty(); }
    void Add(IHierarchicalElement& pNode, TChangeMarks& pMarks, TNodeChanges pChanges);
  };

  // Calls pCall with each queue in use, under the lock. Then calls the callbacks of the queues that were empty before,
  // outside the lock.
  template <class TCall>
  void Change(const TCall& pCall);
  TTreeChanges Take(size_t pPlace);
  void End(size_t pPlace);

  std::atomic<uint8_t> fSubscribed{0};  // a bit for each place in use
  TCriticalSection fLock;
  std::array<TQueue, kMostSubscriptions> fQueues GUARDED_BY(fLock);
};

}  // namespace Vantrel
