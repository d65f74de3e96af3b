#pragma once

// Groups of extensions, and size sums by group.

#include <atomic>
#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "model/statistics/AssocSizeArray.h"
#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

// A named kind of files: a list of wildcard masks joined with ";". Any thread.
class IFileTypeGroup : public IInterface {
 public:
  virtual std::u16string GetCaption() const = 0;
  virtual void SetCaption(std::u16string_view pValue) = 0;
  virtual std::u16string GetDescription() const = 0;
  virtual void SetDescription(std::u16string_view pValue) = 0;
  // A mask for the system icon of the group ("*.wav"); may be empty.
  virtual std::u16string GetExtensionForIcon() const = 0;
  virtual void SetExtensionForIcon(std::u16string_view pValue) = 0;
  virtual std::u16string GetPatterns() const = 0;
  virtual void SetPatterns(std::u16string_view pValue) = 0;
  // Whether the group takes all that no other group matches: its pattern is "*" alone.
  virtual bool IsCatchAll() const = 0;
  // Whether a mask matches the extension, given as a key of the extension statistics.
  virtual bool MatchesExtension(std::u16string_view pExtension) const = 0;
  virtual void Assign(const IFileTypeGroup& pSource) = 0;
};

// An ordered list of groups. The order is that of the rows; results name groups by their index. Any thread.
class IFileTypeGroups : public IInterface {
 public:
  virtual TRef<IFileTypeGroup> AddNewGroup() = 0;
  virtual int GetCount() const = 0;
  // EInvalidArgumentValue for an index outside 0..count-1.
  virtual TRef<IFileTypeGroup> GetItem(int pIndex) const = 0;
  // nullptr when there is none.
  virtual TRef<IFileTypeGroup> GetGroupByCaption(std::u16string_view pCaption) const = 0;
  // The first ordinary group that matches, else the catch-all group, else -1.
  virtual int GetGroupIndexByExtension(std::u16string_view pExtension) const = 0;
  // All groups that count an extension: the ordinary ones that match, or the catch-all group when none does. The result
  // is stored per key until a group changes.
  virtual std::vector<int> GetGroupIndexesOfKey(TKeyId pExtension) const = 0;
  virtual void Clear() = 0;
  // Copies every group.
  virtual void Assign(const IFileTypeGroups& pSource) = 0;
  // Whether both lists have equal groups in the same order.
  virtual bool SameGroups(const IFileTypeGroups& pOther) const = 0;
};

class TFileTypeGroup : public TInterfaced<IFileTypeGroup> {
 public:
  std::u16string GetCaption() const override;
  void SetCaption(std::u16string_view pValue) override;
  std::u16string GetDescription() const override;
  void SetDescription(std::u16string_view pValue) override;
  std::u16string GetExtensionForIcon() const override;
  void SetExtensionForIcon(std::u16string_view pValue) override;
  std::u16string GetPatterns() const override;
  void SetPatterns(std::u16string_view pValue) override;
  bool IsCatchAll() const override;
  bool MatchesExtension(std::u16string_view pExtension) const override;
  void Assign(const IFileTypeGroup& pSource) override;

  // Counts every change of any group's patterns. A result stored under an earlier count is out of date.
  static uint32_t PatternChanges() { return fPatternChanges.load(std::memory_order_acquire); }

 private:
  static std::atomic<uint32_t> fPatternChanges;

  mutable TSlimReaderWriterLock fLock;
  std::u16string fCaption GUARDED_BY(fLock);
  std::u16string fDescription GUARDED_BY(fLock);
  std::u16string fExtensionForIcon GUARDED_BY(fLock);
  std::u16string fPatterns GUARDED_BY(fLock);
  // The patterns again, in two parts. Most masks are "*." and a plain extension. One look-up handles all of those at
  // once.
  boost::unordered_flat_set<std::u16string> fPlainExtensions GUARDED_BY(fLock);  // ".jpg"
  std::u16string fOtherMasks GUARDED_BY(fLock);
};

class TFileTypeGroups : public TInterfaced<IFileTypeGroups> {
 public:
  TRef<IFileTypeGroup> AddNewGroup() override;
  int GetCount() const override;
  TRef<IFileTypeGroup> GetItem(int pIndex) const override;
  TRef<IFileTypeGroup> GetGroupByCaption(std::u16string_view pCaption) const override;
  int GetGroupIndexByExtension(std::u16string_view pExtension) const override;
  std::vector<int> GetGroupIndexesOfKey(TKeyId pExtension) const override;
  void Clear() override;
  void Assign(const IFileTypeGroups& pSource) override;
  bool SameGroups(const IFileTypeGroups& pOther) const override;

 private:
  using TGroupList = std::vector<TRef<IFileTypeGroup>>;

  TGroupList Groups() const;
  static std::vector<int> MatchGroups(const TGroupList& pGroups, std::u16string_view pExtension);

  mutable TSlimReaderWriterLock fLock;
  TGroupList fGroups GUARDED_BY(fLock);
  uint32_t fListChanges GUARDED_BY(fLock) = 0;
  // Matching a key against some six hundred masks is slow, and many folders have the same keys. The results are valid
  // for the two change counts under which they were made.
  mutable boost::unordered_flat_map<TKeyId, std::vector<int>> fMatches GUARDED_BY(fLock);
  mutable uint32_t fMatchesPatternChanges GUARDED_BY(fLock) = 0;
  mutable uint32_t fMatchesListChanges GUARDED_BY(fLock) = 0;
};

// The list of groups that the program starts with.
class TStandardFileTypes : public TFileTypeGroups {
 public:
  TStandardFileTypes();
};

// That list, shared by all that only read it.
TRef<const IFileTypeGroups> StandardFileTypes();
// The groups of the common options, which lists and patterns use: the standard ones until others are set. The list
// never changes, so a reader keeps a consistent one. Any thread.
TRef<const IFileTypeGroups> CommonFileTypeGroups();
void SetCommonFileTypeGroups(TRef<const IFileTypeGroups> pGroups);

// An extension's membership in a group. An extension in several groups has an entry for each. All but the first are
// marked as additional.
struct TGroupedKey {
  TKeyId fKey = 0;
  int fGroup = 0;
  bool fAdditional = false;
};

// A size record for a file-type group: the sum of its extensions.
class TSizeDataGroup : public TNamedSizeData {
 public:
  // Named after the group.
  explicit TSizeDataGroup(TRef<IFileTypeGroup> pGroup) : TNamedSizeData(pGroup->GetCaption(), {}), fGroup(pGroup) {}
  const TRef<IFileTypeGroup>& GetGroup() const { return fGroup; }
  void Add(const TBasicSizeValues& pValues);

 private:
  TRef<IFileTypeGroup> fGroup;
};

// Which groups count each extension of an array. Several ordinary groups may count an extension. The catch-all group
// counts it only when no ordinary one matches.
std::vector<TGroupedKey> FillCustomAssocSizeArrayGrouped(const ICustomAssocSizeArray& pExtensions,
                                                         const IFileTypeGroups& pGroups);
// The sum of all extensions that a group counts.
TRef<TSizeDataGroup> CalculateSizeDataForGroup(const ICustomAssocSizeArray& pExtensions, const IFileTypeGroups& pGroups,
                                               int pGroupIndex);
// The same for all groups in one walk, in the order of the list. Groups without files are included with zeros.
std::vector<TRef<TSizeDataGroup>> CalculateSizeDataForGroups(const ICustomAssocSizeArray& pExtensions,
                                                             const IFileTypeGroups& pGroups);

}  // namespace Vantrel
