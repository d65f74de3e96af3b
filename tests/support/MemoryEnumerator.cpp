#include "tests/support/MemoryEnumerator.h"

#include <new>
#include <utility>

#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "scan/files/LinkRules.h"

namespace Vantrel::Testing {

void TGate::Open() {
  TCriticalSectionLock lock(fLock);
  fOpen = true;
  fChanged.notify_all();
}

void TGate::WaitUntilReached() {
  TCriticalSectionLock lock(fLock);
  while (!fReached) lock.Wait(fChanged);
}

void TGate::Pass() {
  TCriticalSectionLock lock(fLock);
  fReached = true;
  fChanged.notify_all();
  while (!fOpen) lock.Wait(fChanged);
}

void TGate::WaitUntilOpen() {
  TCriticalSectionLock lock(fLock);
  while (!fOpen) lock.Wait(fChanged);
}

bool TGate::IsOpenBefore(int64_t pMilliseconds) {
  const int64_t end = TickCount64() + pMilliseconds;
  TCriticalSectionLock lock(fLock);
  while (!fOpen && TickCount64() < end) lock.WaitFor(fChanged, end - TickCount64());
  return fOpen;
}

TMemoryEntry& TMemoryEntry::AddFile(std::u16string_view pName, int64_t pSize, int64_t pAllocated) {
  TMemoryEntry& entry = fChildren.emplace_back();
  entry.fName = pName;
  entry.fValues.fSize = pSize;
  entry.fValues.fAllocated = pAllocated < 0 ? pSize : pAllocated;
  entry.fValues.fAttributes = kAttributeArchive;
  fByName[entry.fName] = &entry;
  return entry;
}

TMemoryEntry& TMemoryEntry::AddFolder(std::u16string_view pName) {
  TMemoryEntry& entry = AddFile(pName, 0);
  entry.fValues.fAttributes = kAttributeDirectory;
  return entry;
}

TMemoryEntry* TMemoryEntry::Find(std::u16string_view pName) {
  auto found = fByName.find(std::u16string(pName));
  return found == fByName.end() || found->second->fRemoved ? nullptr : found->second;
}

void TMemoryEntry::FailListing(int pAtNext, uint32_t pErrorCode) {
  fErrorCode = pErrorCode;
  fFailAtNext = pAtNext;
}

std::shared_ptr<TMemoryStorage> TMemoryStorage::Create(std::u16string_view pPath, char16_t pDelimiter) {
  auto storage = std::make_shared<TMemoryStorage>();
  storage->fPath = pPath;
  storage->fDelimiter = pDelimiter;
  storage->fTop.fName = pPath;
  storage->fTop.fValues.fAttributes = kAttributeDirectory;
  return storage;
}

// A chain of 10,000 folders must not be destroyed level by level on the stack: the deepest parts are cut off first.
TMemoryStorage::~TMemoryStorage() {
  std::vector<TMemoryEntry*> inBreadthFirstOrder{&fTop};
  for (size_t i = 0; i < inBreadthFirstOrder.size(); ++i)
    for (TMemoryEntry& child : inBreadthFirstOrder[i]->fChildren)
      if (!child.fChildren.empty()) inBreadthFirstOrder.push_back(&child);
  for (size_t i = inBreadthFirstOrder.size(); i-- > 0;) inBreadthFirstOrder[i]->fChildren.clear();
}

TMemoryEntry& TMemoryStorage::Folder(std::u16string_view pRelativePath) {
  TMemoryEntry* folder = &fTop;
  while (!pRelativePath.empty()) {
    size_t end = std::min(pRelativePath.find(u'/'), pRelativePath.size());
    std::u16string_view part = pRelativePath.substr(0, end);
    pRelativePath.remove_prefix(std::min(end + 1, pRelativePath.size()));
    TMemoryEntry* child = folder->Find(part);
    folder = child != nullptr ? child : &folder->AddFolder(part);
  }
  return *folder;
}

TRef<IHierarchicalEnumerator> TMemoryStorage::CreateEnumerator(THierarchicalEnumeratorOptions pOptions) {
  return MakeRef<TMemoryEnumerator>(shared_from_this(), &fTop, fPath, pOptions);
}

void TMemoryStorage::WatchThisThread() {
  fWatchedCalls = 0;
  fWatchedThread = std::this_thread::get_id();
}

uint32_t TMemoryStorage::AccessDeniedCode() {
  return ClassifyOSError(5) == TErrorKind::ekAccessDenied ? 5 : 13;
}

TMemoryEnumerator::TMemoryEnumerator(std::shared_ptr<TMemoryStorage> pStorage, TMemoryEntry* pFolder,
                                     std::u16string pPath, THierarchicalEnumeratorOptions pOptions)
    : TBaseVisualHierarchicalEnumerator(pOptions),
      fStorage(std::move(pStorage)),
      fFolder(pFolder),
      fPath(std::move(pPath)) {
  if (fFolder == nullptr) {
    fMissing = std::make_unique<TMemoryEntry>();
    fMissing->fName = FileNameOfPath(fPath, fStorage->fDelimiter);
    fMissing->fValues.fAttributes = kAttributeDirectory;
    fMissing->fVanished = true;
    fFolder = fMissing.get();
  }
  ++fStorage->fLiveEnumerators;
  fStorage->Watch();
}

TMemoryEnumerator::~TMemoryEnumerator() {
  --fStorage->fLiveEnumerators;
}

bool TMemoryEnumerator::Fail(uint32_t pErrorCode) {
  fErrorCode = pErrorCode;
  fCurrent = nullptr;
  return false;
}

bool TMemoryEnumerator::Next() {
  if (fErrorCode != 0) return false;
  ++fCalls;
  fStorage->Watch();
  ++fStorage->fNextCalls;
  if (TGate* gate = fFolder->fGate; gate != nullptr && fCalls == 1) gate->Pass();
  if (fFolder->fVanished) return Fail(TMemoryStorage::NotFoundCode());
  if (fCalls == fFolder->fFailAtNext) {
    if (fFolder->fNoMemory) throw std::bad_alloc();
    if (fFolder->fRaises) throw EOSError(fFolder->fErrorCode, "Next", fFolder->fName);
    return Fail(fFolder->fErrorCode);
  }
  while (fNextIndex < fFolder->fChildren.size() && fFolder->fChildren[fNextIndex].fRemoved) ++fNextIndex;
  if (fNextIndex >= fFolder->fChildren.size()) {
    fCurrent = nullptr;
    return false;
  }
  fCurrent = &fFolder->fChildren[fNextIndex++];
  return true;
}

void TMemoryEnumerator::Reset() {
  fCurrent = nullptr;
  fNextIndex = 0;
  fCalls = 0;
  fErrorCode = 0;
}

TRef<IHierarchicalEnumerator> TMemoryEnumerator::GetChildHierarchicalEnumerator() {
  return CreateChildEnumerator(GetObjectName(), GetAttributes());
}

TRef<IHierarchicalEnumerator> TMemoryEnumerator::CreateChildEnumerator(std::u16string_view pName, TAttributes) {
  if (fFolder->fNoChildren) throw std::bad_alloc();
  return MakeRef<TMemoryEnumerator>(fStorage, fFolder->Find(pName), JoinPath(fPath, pName, fStorage->fDelimiter),
                                    fOptions);
}

TRef<IHierarchicalEnumerator> TMemoryEnumerator::Clone() const {
  return MakeRef<TMemoryEnumerator>(fStorage, fMissing != nullptr ? nullptr : fFolder, fPath, fOptions);
}

std::u16string TMemoryEnumerator::GetFullPath() const {
  return fCurrent == nullptr ? fPath : JoinPath(fPath, fCurrent->fName, fStorage->fDelimiter);
}

TEnumeratorError TMemoryEnumerator::GetError() const {
  return Enumerators::ClassifyEnumeratorError(fErrorCode, {});
}

}  // namespace Vantrel::Testing
