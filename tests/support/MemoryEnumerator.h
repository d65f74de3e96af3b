#pragma once

// A storage in memory with an enumerator over it, in which every fault can be staged.

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/threads/CriticalSection.h"
#include "scan/storage/EnumeratorBase.h"

// A storage that lives in memory: a tree of described entries and an enumerator over it, in which every fault of a real
// storage can be staged.
namespace Vantrel::Testing {

// A point in a listing at which the listing thread stops until the test lets it go on.
class TGate {
 public:
  void Open();                               // for good
  void WaitUntilReached();                   // returns when a thread has come to the gate
  void Pass();                               // called by the listing thread
  void WaitUntilOpen();                      // the same, without being noticed
  bool IsOpenBefore(int64_t pMilliseconds);  // the same with a bound, for what may never come; false when it did not

 private:
  TCriticalSection fLock;
  std::condition_variable fChanged;
  bool fOpen GUARDED_BY(fLock) = false;
  bool fReached GUARDED_BY(fLock) = false;
};

// One described entry. Its values and children are set up before a scan; the faults may be switched on during one.
struct TMemoryEntry {
  std::u16string fName;
  TEntryValues fValues;
  std::u16string fOwner;
  uint64_t fOwnerId = 0;
  std::deque<TMemoryEntry> fChildren;  // a deque: references to children stay good while more are added
  bool fCanDescend = true;
  bool fRemoved = false;  // deleted from the storage; between scans only

  // Faults of the listing of this folder.
  std::atomic<bool> fVanished{false};  // the first Next fails: not found
  std::atomic<int> fFailAtNext{0};     // this call of Next, counted from 1, fails with fErrorCode; 0: none
  std::atomic<uint32_t> fErrorCode{0};
  std::atomic<bool> fRaises{false};      // it fails with an exception, as some enumerators do
  std::atomic<bool> fNoMemory{false};    // that exception is std::bad_alloc
  std::atomic<bool> fNoChildren{false};  // the folder's enumerator fails with it when a child is to be opened
  std::atomic<TGate*> fGate{nullptr};    // the first Next passes through this gate

  TMemoryEntry& AddFile(std::u16string_view pName, int64_t pSize, int64_t pAllocated = -1);  // -1: as pSize
  TMemoryEntry& AddFolder(std::u16string_view pName);
  TMemoryEntry* Find(std::u16string_view pName);  // nullptr when there is none
  void FailListing(int pAtNext, uint32_t pErrorCode);
  bool IsFolder() const { return (fValues.fAttributes & kAttributeDirectory) != 0; }

 private:
  std::unordered_map<std::u16string, TMemoryEntry*> fByName;
};

class TMemoryStorage : public std::enable_shared_from_this<TMemoryStorage> {
 public:
  static std::shared_ptr<TMemoryStorage> Create(std::u16string_view pPath = u"/memory", char16_t pDelimiter = u'/');
  ~TMemoryStorage();

  TMemoryEntry& Top() { return fTop; }
  // The folder of a path relative to the top, parts separated by "/"; missing parts are made.
  TMemoryEntry& Folder(std::u16string_view pRelativePath);
  TRef<IHierarchicalEnumerator> CreateEnumerator(THierarchicalEnumeratorOptions pOptions = 0);

  int64_t CountNextCalls() const { return fNextCalls; }
  int64_t CountLiveEnumerators() const { return fLiveEnumerators; }
  // From now on, how often the calling thread opens or lists a folder.
  void WatchThisThread();
  int64_t CountWatchedCalls() const { return fWatchedCalls; }

  // Codes that mean the same to this platform's error classification as to the system.
  static uint32_t AccessDeniedCode();
  static uint32_t NotFoundCode() { return 2; }

 private:
  friend class TMemoryEnumerator;
  void Watch() {
    if (fWatchedThread == std::this_thread::get_id()) ++fWatchedCalls;
  }

  TMemoryEntry fTop;
  std::u16string fPath;
  char16_t fDelimiter = u'/';
  std::atomic<int64_t> fNextCalls{0};
  std::atomic<int64_t> fLiveEnumerators{0};
  std::atomic<std::thread::id> fWatchedThread;
  std::atomic<int64_t> fWatchedCalls{0};
};

// Lists one folder of the storage. Without an entry it stands for a folder that is not there.
class TMemoryEnumerator : public Enumerators::TBaseVisualHierarchicalEnumerator {
 public:
  TMemoryEnumerator(std::shared_ptr<TMemoryStorage> pStorage, TMemoryEntry* pFolder, std::u16string pPath,
                    THierarchicalEnumeratorOptions pOptions);
  ~TMemoryEnumerator() override;

  bool Next() override;
  void Reset() override;
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  TRef<IHierarchicalEnumerator> Clone() const override;

  std::u16string_view GetObjectName() const override { return Current().fName; }
  int64_t GetSize() const override { return Current().fValues.fSize; }
  int64_t GetAllocated() const override { return Current().fValues.fAllocated; }
  TKivFileTime GetLastAccessDate() const override { return Current().fValues.fLastAccessDate; }
  TKivFileTime GetLastChangeDate() const override { return Current().fValues.fLastChangeDate; }
  TKivFileTime GetCreationDate() const override { return Current().fValues.fCreationDate; }
  TAttributes GetAttributes() const override { return Current().fValues.fAttributes; }
  bool IsFolder() const override { return Current().IsFolder(); }
  std::u16string GetFullPath() const override;
  std::u16string GetOwner() const override { return Current().fOwner; }
  uint64_t GetOwnerId() const override { return Current().fOwnerId; }
  bool CanDescend() const override { return IsFolder() && Current().fCanDescend; }
  uint32_t GetErrorCode() const override { return fErrorCode; }
  TEnumeratorError GetError() const override;
  std::u16string GetPath() const override { return fPath; }

 private:
  const TMemoryEntry& Current() const { return fCurrent != nullptr ? *fCurrent : *fFolder; }
  bool Fail(uint32_t pErrorCode);

  std::shared_ptr<TMemoryStorage> fStorage;
  TMemoryEntry* fFolder;
  std::unique_ptr<TMemoryEntry> fMissing;  // what fFolder points to when the folder is not there
  std::u16string fPath;
  const TMemoryEntry* fCurrent = nullptr;
  size_t fNextIndex = 0;
  int fCalls = 0;
  uint32_t fErrorCode = 0;
};

}  // namespace Vantrel::Testing
