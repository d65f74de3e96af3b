#pragma once

// Answers what conditions ask of a file beyond its listing.

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "model/roots/Storage.h"
#include "search/files/ContentMatcher.h"
#include "search/metadata/FileProperties.h"
#include "search/query/Expressions.h"
#include "search/query/FileFacts.h"

namespace Vantrel::Search {

// What a search reports to while it answers. Any thread.
class IFactErrors {
 public:
  virtual ~IFactErrors() = default;
  // A file could not be read. pText is its storage's, in UTF-8.
  virtual void FileFailed(const std::u16string& pPath, uint32_t pCode, std::string_view pText) = 0;
  // Whether the search is to end. Waits while it is paused.
  virtual bool IsStopped() = 0;
};

// Answers for the files of a storage, or of a tree whose storage can still be read. For one thread at a time. Ordinary
// files only are opened: a link, a pipe or a device has no contents.
class TFileFactsReader final : public IFileFacts {
 public:
  // The storage may be nullptr: nothing can be opened then. pErrors must outlive the object.
  TFileFactsReader(TRef<IStorage> pStorage, TScanContext pContext, IFactErrors& pErrors)
      : fStorage(std::move(pStorage)), fContext(std::move(pContext)), fErrors(pErrors) {}

  // What can be answered for the entries of a storage.
  static constexpr TSearchAbilities kOfStorage = saContents | saProperties | saShortcuts | saEmptyFolders;
  // The same for a tree that cannot be opened, such as a loaded scan.
  static constexpr TSearchAbilities kOfTree = saEmptyFolders;

  // The listing whose current entry is matched; nullptr for what comes from no listing.
  void SetListing(IHierarchicalEnumerator* pListing) { fListing = pListing; }

  // The number of lines on which regular expressions gave up.
  int64_t GivenUp() const;

  bool ContentsMatch(TSearchItem& pItem, const TContentSearch& pSearch) override;
  TMetaDataValue GetProperty(TSearchItem& pItem, TFileProperty pProperty) override;
  bool IsInvalidShortcut(TSearchItem& pItem) override;
  bool IsEmptyFolder(TSearchItem& pItem) override;
  std::u16string GetOwner(TSearchItem&) override { return {}; }

 private:
  // Whether the item has bytes to read.
  bool IsReadable(TSearchItem& pItem) const;
  // Keeps the error that is being handled.
  void KeepError(const std::u16string& pPath, std::string_view pWhere);
  // Whether it is known that the target of a shortcut file does not exist.
  bool LeadsNowhere(TSearchItem& pItem);
  TContentMatcher& MatcherOf(const TContentSearch& pSearch);

  const TRef<IStorage> fStorage;
  const TScanContext fContext;
  IFactErrors& fErrors;
  IHierarchicalEnumerator* fListing = nullptr;
  std::unordered_map<const TContentSearch*, std::unique_ptr<TContentMatcher>> fMatchers;
  // Several conditions ask for properties of one file.
  std::u16string fPathOfProperties;
  TFileProperties fProperties;
};

}  // namespace Vantrel::Search
