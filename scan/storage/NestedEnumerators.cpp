#include "scan/storage/NestedEnumerators.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/system/Errors.h"

namespace Vantrel::Enumerators {
namespace {

bool SameFormat(const TValueFormat& pA, const TValueFormat& pB) {
  return pA.fSizeUnit == pB.fSizeUnit && pA.fPlainByteValues == pB.fPlainByteValues && pA.fShowUnits == pB.fShowUnits &&
         pA.fDecimals == pB.fDecimals && pA.fThousandsSeparator == pB.fThousandsSeparator &&
         pA.fDecimalSeparator == pB.fDecimalSeparator;
}

std::u16string TextOf(const TMetaDataValue& pValue) {
  const std::u16string* text = std::get_if<std::u16string>(&pValue);
  return text == nullptr ? std::u16string() : *text;
}

TMetaDataValue ValueOfText(std::u16string pText) {
  return pText.empty() ? TMetaDataValue() : TMetaDataValue(std::move(pText));
}

// Releases a parent without recursion. Otherwise a chain of 10,000 enumerators, each with the last reference to the one
// above, would need 10,000 stack frames to be destroyed.
void ReleaseParent(TRef<TSummarizingEnumerator> pParent) {
  using TWaiting = std::vector<TRef<TSummarizingEnumerator>>;
  // Points to the list on the stack of the outermost call. mingw destroys a thread_local that has a destructor too
  // late.
  thread_local TWaiting* outermost = nullptr;
  if (pParent == nullptr) return;
  if (outermost != nullptr) return outermost->push_back(std::move(pParent));
  TWaiting waiting;
  waiting.push_back(std::move(pParent));
  outermost = &waiting;
  while (!waiting.empty()) {
    TRef<TSummarizingEnumerator> last = std::move(waiting.back());
    waiting.pop_back();
    last.reset();  // may call this function again, which adds its own parent to the waiting ones
  }
  outermost = nullptr;
}

}  // namespace

// ---- TBaseNestedHierarchicalEnumerator

TBaseNestedHierarchicalEnumerator::TBaseNestedHierarchicalEnumerator(TRef<IHierarchicalEnumerator> pNested)
    : TBaseVisualHierarchicalEnumerator(0), fNestedEnumerator(std::move(pNested)) {
  if (fNestedEnumerator == nullptr)
    throw EInvalidArgumentValue("TBaseNestedHierarchicalEnumerator.Create: there is no enumerator to wrap");
  if (auto* base = fNestedEnumerator->Query<TBaseHierarchicalEnumerator>()) fOptions = base->GetOptions();
}

TRef<IHierarchicalEnumerator> TBaseNestedHierarchicalEnumerator::GetChildHierarchicalEnumerator() {
  return Wrap(fNestedEnumerator->GetChildHierarchicalEnumerator());
}

TRef<IHierarchicalEnumerator> TBaseNestedHierarchicalEnumerator::CreateChildEnumerator(std::u16string_view pName,
                                                                                       TAttributes pAttributes) {
  return Wrap(fNestedEnumerator->CreateChildEnumerator(pName, pAttributes));
}

TRef<IHierarchicalEnumerator> TBaseNestedHierarchicalEnumerator::CreateChildEnumeratorById(uint64_t pId,
                                                                                           std::u16string_view pName,
                                                                                           TAttributes pAttributes) {
  return Wrap(fNestedEnumerator->CreateChildEnumeratorById(pId, pName, pAttributes));
}

// ---- TCachingEnumerator

TCachingEnumerator::TCachingEnumerator(TRef<IHierarchicalEnumerator> pNested)
    : TBaseNestedHierarchicalEnumerator(std::move(pNested)) {}

void TCachingEnumerator::ClearCaches() const {
  fVariantCache.fFilled.reset();
  fFormattedStringsCache.fFilled.reset();
  fPlainValuesCache.fFilled.reset();
}

bool TCachingEnumerator::Next() {
  ClearCaches();
  return TBaseNestedHierarchicalEnumerator::Next();
}

void TCachingEnumerator::Reset() {
  ClearCaches();
  TBaseNestedHierarchicalEnumerator::Reset();
}

int64_t TCachingEnumerator::GetSize() const {
  return fPlainValuesCache.Get(TColumn::mdSize, [this] { return fNestedEnumerator->GetSize(); });
}

int64_t TCachingEnumerator::GetAllocated() const {
  return fPlainValuesCache.Get(TColumn::mdAllocated, [this] { return fNestedEnumerator->GetAllocated(); });
}

TKivFileTime TCachingEnumerator::GetLastAccessDate() const {
  return {
      fPlainValuesCache.Get(TColumn::mdLastAccess, [this] { return fNestedEnumerator->GetLastAccessDate().fTicks; })};
}

TKivFileTime TCachingEnumerator::GetLastChangeDate() const {
  return {
      fPlainValuesCache.Get(TColumn::mdLastChange, [this] { return fNestedEnumerator->GetLastChangeDate().fTicks; })};
}

TKivFileTime TCachingEnumerator::GetCreationDate() const {
  return {fPlainValuesCache.Get(TColumn::mdCreation, [this] { return fNestedEnumerator->GetCreationDate().fTicks; })};
}

TAttributes TCachingEnumerator::GetAttributes() const {
  return static_cast<TAttributes>(fPlainValuesCache.Get(
      TColumn::mdAttributes, [this] { return static_cast<int64_t>(fNestedEnumerator->GetAttributes()); }));
}

TEntryValues TCachingEnumerator::GetEntryValues() const {
  return {GetSize(), GetAllocated(), GetLastAccessDate(), GetLastChangeDate(), GetCreationDate(), GetAttributes()};
}

std::u16string TCachingEnumerator::GetFullPath() const {
  return TextOf(
      fVariantCache.Get(TColumn::mdFullPath, [this] { return ValueOfText(fNestedEnumerator->GetFullPath()); }));
}

std::u16string TCachingEnumerator::GetOwner() const {
  return TextOf(fVariantCache.Get(TColumn::mdOwner, [this] { return ValueOfText(fNestedEnumerator->GetOwner()); }));
}

TMetaDataValue TCachingEnumerator::GetValue(TColumn pColumn) const {
  return fVariantCache.Get(pColumn, [&] { return fNestedEnumerator->GetValue(pColumn); });
}

std::u16string TCachingEnumerator::GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const {
  if (!SameFormat(pFormat, fCachedFormat)) {
    fFormattedStringsCache.fFilled.reset();
    fCachedFormat = pFormat;
  }
  return fFormattedStringsCache.Get(pColumn, [&] { return fNestedEnumerator->GetFormattedValue(pColumn, pFormat); });
}

TRef<IHierarchicalEnumerator> TCachingEnumerator::Wrap(TRef<IHierarchicalEnumerator> pNested) const {
  return MakeRef<TCachingEnumerator>(std::move(pNested));
}

// ---- TSummarizingEnumerator

TSummarizingEnumerator::TSummarizingEnumerator(TRef<IHierarchicalEnumerator> pNested, bool pFolderDateBasedOnFilesOnly)
    : TBaseNestedHierarchicalEnumerator(std::move(pNested)), fFolderDateBasedOnFilesOnly(pFolderDateBasedOnFilesOnly) {}

TSummarizingEnumerator::~TSummarizingEnumerator() {
  ReleaseParent(std::move(fParentEnumerator));
}

TEntrySums TSummarizingEnumerator::SumsOfEntry() const {
  TEntrySums sums;
  bool isFolder = fNestedEnumerator->IsFolder();
  (isFolder ? sums.fNumberOfFolders : sums.fNumberOfFiles) = 1;
  if (!isFolder) {
    sums.fPlainSize = fNestedEnumerator->GetSize();
    sums.fSizeOnStorage = fNestedEnumerator->GetAllocated();
  }
  if (!isFolder || !fFolderDateBasedOnFilesOnly) {
    sums.fLastAccessDate = fNestedEnumerator->GetLastAccessDate();
    sums.fLastChangeDate = fNestedEnumerator->GetLastChangeDate();
  }
  return sums;
}

void TSummarizingEnumerator::AddToSummarized(const TEntrySums& pEntry) {
  fSummarizedPlainSize += pEntry.fPlainSize;
  fSummarizedSizeOnStorage += pEntry.fSizeOnStorage;
  fSummarizedNumberOfFiles += pEntry.fNumberOfFiles;
  fSummarizedNumberOfFolders += pEntry.fNumberOfFolders;
  fSummarizedLastAccessDate = std::max(fSummarizedLastAccessDate, pEntry.fLastAccessDate);
  fSummarizedLastChangeDate = std::max(fSummarizedLastChangeDate, pEntry.fLastChangeDate);
}

void TSummarizingEnumerator::AddToChild(const TEntrySums& pEntry) {
  fChildPlainSize += pEntry.fPlainSize;
  fChildSizeOnStorage += pEntry.fSizeOnStorage;
  fChildNumberOfFiles += pEntry.fNumberOfFiles;
  fChildNumberOfFolders += pEntry.fNumberOfFolders;
  fChildLastAccessDate = std::max(fChildLastAccessDate, pEntry.fLastAccessDate);
  fChildLastChangeDate = std::max(fChildLastChangeDate, pEntry.fLastChangeDate);
}

void TSummarizingEnumerator::ClearChild() {
  fChildPlainSize = fChildSizeOnStorage = fChildNumberOfFiles = fChildNumberOfFolders = 0;
  fChildLastAccessDate = fChildLastChangeDate = {};
}

void TSummarizingEnumerator::CountEntry(const TEntrySums& pEntry) {
  AddToSummarized(pEntry);
  AddToChild(pEntry);
  const TSummarizingEnumerator* child = this;
  for (TSummarizingEnumerator* parent = fParentEnumerator.get(); parent != nullptr;
       parent = parent->fParentEnumerator.get()) {
    parent->AddToSummarized(pEntry);
    if (child->fParentEntryNumber == parent->fEntryNumber) parent->AddToChild(pEntry);
    child = parent;
  }
}

bool TSummarizingEnumerator::Next() {
  ++fEntryNumber;
  ClearChild();
  if (!TBaseNestedHierarchicalEnumerator::Next()) return false;
  CountEntry(SumsOfEntry());
  return true;
}

void TSummarizingEnumerator::Reset() {
  ++fEntryNumber;
  ClearChild();
  fSummarizedPlainSize = fSummarizedSizeOnStorage = fSummarizedNumberOfFiles = fSummarizedNumberOfFolders = 0;
  fSummarizedLastAccessDate = fSummarizedLastChangeDate = {};
  TBaseNestedHierarchicalEnumerator::Reset();
}

TRef<IHierarchicalEnumerator> TSummarizingEnumerator::WrapChild(TRef<IHierarchicalEnumerator> pNested,
                                                                int64_t pEntryNumber) {
  auto child = MakeRef<TSummarizingEnumerator>(std::move(pNested), fFolderDateBasedOnFilesOnly);
  child->fParentEnumerator = this;
  child->fParentEntryNumber = pEntryNumber;
  return child;
}

TRef<IHierarchicalEnumerator> TSummarizingEnumerator::GetChildHierarchicalEnumerator() {
  return WrapChild(fNestedEnumerator->GetChildHierarchicalEnumerator(), fEntryNumber);
}

TRef<IHierarchicalEnumerator> TSummarizingEnumerator::CreateChildEnumerator(std::u16string_view pName,
                                                                            TAttributes pAttributes) {
  return WrapChild(fNestedEnumerator->CreateChildEnumerator(pName, pAttributes), -1);
}

TRef<IHierarchicalEnumerator> TSummarizingEnumerator::CreateChildEnumeratorById(uint64_t pId, std::u16string_view pName,
                                                                                TAttributes pAttributes) {
  return WrapChild(fNestedEnumerator->CreateChildEnumeratorById(pId, pName, pAttributes), -1);
}

TRef<IHierarchicalEnumerator> TSummarizingEnumerator::Wrap(TRef<IHierarchicalEnumerator> pNested) const {
  return MakeRef<TSummarizingEnumerator>(std::move(pNested), fFolderDateBasedOnFilesOnly);
}

// ---- TBaseFilterEnumerator

bool TBaseFilterEnumerator::Next() {
  while (TBaseNestedHierarchicalEnumerator::Next())
    if (IsIncluded()) return true;
  return false;
}

}  // namespace Vantrel::Enumerators
