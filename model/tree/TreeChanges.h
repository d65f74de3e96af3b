#pragma once

// What has changed in a tree, for those who show it: the kinds of change, a subscriber's queue, and all queues of a
// root.
//
// Workers only mark what changed. A node that is marked already costs them one look, however often it changes: a folder
// near the top changes with every folder beneath it. A subscriber takes its queue when it likes, on its own thread, and
// reads the values of the nodes then. So a queue holds each node once, and nothing is sent per file.

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
  ncAdded = 1 << 0,    // it is new in its parent; read all of it, its children come as changes of their own
  ncRemoved = 1 << 1,  // it left the tree with all beneath it and answers nothing but its identity
  ncChanged = 1 << 2,  // its totals, dates or state
  ncFiles = 1 << 3,    // the list of its own files
  ncReset = 1 << 4,    // all children that it had are gone; new ones come as changes of their own
};
using TNodeChanges = uint8_t;

// What happened to the root as a whole.
enum TRootChange : uint8_t {
  rcTreeReplaced = 1 << 0,      // nothing of the earlier tree is left: read the tree from the top folder down
  rcScanStarted = 1 << 1,       // of the whole path or of a branch
  rcScanEnded = 1 << 2,         // the root answers as a finished one
  rcComparisonChanged = 1 << 3  // a comparison was set, changed or ended
};
using TRootChanges = uint8_t;

struct TChangedNode {
  TRef<IHierarchicalElement> fNode;
  TNodeChanges fChanges = 0;
};

// What a queue held. The root's changes come before those of nodes, and a parent's before its children's.
struct TTreeChanges {
  TRootChanges fRoot = 0;
  std::vector<TChangedNode> fNodes;

  bool IsEmpty() const { return fRoot == 0 && fNodes.empty(); }
};

// One subscription to a root's changes. Any thread.
class ITreeSubscription : public IInterface {
 public:
  // Takes what came since the last call. A node below one that has gone is not among it. The subscriber may never have
  // known a node that is told as removed.
  virtual TTreeChanges Take() = 0;
  // Ends the subscription: nothing is queued from now on. Releasing the last reference does the same.
  virtual void End() = 0;
};

// The marks of one node: a bit for each queue that holds it.
using TChangeMarks = std::atomic<uint8_t>;
// And one that says that the node is in the tree: what changes before that is told by ncAdded.
constexpr uint8_t kIsInTree = 0x80;

// All queues of a root. A root owns one; a subscription keeps it alive.
class TChangeQueues : public TInterfaced<IInterface> {
 public:
  // A subscription can have one of so many places.
  static constexpr size_t kMostSubscriptions = 7;

  // Queues changes from now on, rcTreeReplaced as the first: the subscriber reads the tree as it is, and what the queue
  // tells afterwards may be among that already. The callback, if any, is called on the worker that makes the first
  // change after each Take. It returns soon and takes nothing from the queue. EInvalidOperation when all places are
  // taken. Any thread.
  TRef<ITreeSubscription> Subscribe(std::function<void()> pOnFirstChange = {});

  // Whether a change of a node with these marks is news to a subscriber. Asked after the change: a worker that finds
  // the node marked knows that the subscriber has not read it yet.
  bool IsNews(const TChangeMarks& pMarks) const {
    const uint8_t subscribed = fSubscribed.load(std::memory_order_relaxed);
    if (subscribed == 0) return false;
    std::atomic_thread_fence(std::memory_order_seq_cst);  // pairs with the one in Take
    return (subscribed & ~pMarks.load(std::memory_order_relaxed)) != 0;
  }
  bool HasSubscribers() const { return fSubscribed.load(std::memory_order_relaxed) != 0; }
  // Queues a change. The marks are the node's own.
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
  // The queue of one place.
  struct TQueue {
    bool fTaken = false;  // by a subscription
    std::function<void()> fOnFirstChange;
    TRootChanges fRoot = 0;
    std::vector<TEntry> fEntries;
    boost::unordered_flat_map<const IHierarchicalElement*, size_t> fIndexOf;  // into fEntries

    bool IsEmpty() const { return fRoot == 0 && fEntries.empty(); }
    void Add(IHierarchicalElement& pNode, TChangeMarks& pMarks, TNodeChanges pChanges);
  };

  // Calls with each queue in use, under the lock, and then the callbacks of those that were empty before, outside it.
  template <class TCall>
  void Change(const TCall& pCall);
  TTreeChanges Take(size_t pPlace);
  void End(size_t pPlace);

  std::atomic<uint8_t> fSubscribed{0};  // a bit for each place that is taken
  TCriticalSection fLock;
  std::array<TQueue, kMostSubscriptions> fQueues GUARDED_BY(fLock);
};

}  // namespace Vantrel
