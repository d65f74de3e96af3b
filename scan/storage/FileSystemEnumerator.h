#pragma once

// The base of the Windows enumerators: the path, the root, and values passed to children. Also converts `file:` paths.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "scan/files/LinkRules.h"
#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Enumerators {

// A path as the file system takes it, without the protocol "file:" in any letter case. With a backslash as delimiter,
// every "/" of such a URL becomes "\". The slashes before a drive letter are dropped: "file:///C:/x" is "C:\x". With a
// slash as delimiter, leading slashes become one. Other paths stay unchanged.
std::u16string PathOfFileUrl(std::u16string_view pPath, char16_t pDelimiter);

// Base of the Windows file system enumerators. The Linux enumerator works on folder handles and does not use it.
class TBaseFileSystemEnumerator : public TBaseVisualHierarchicalEnumerator {
 public:
  static constexpr std::u16string_view kProtocol = u"file:";

  std::u16string GetPath() const override { return fPath; }
  // The path of the current entry. Before the first entry and after the last, the path of the folder.
  std::u16string GetFullPath() const override { return fFullPath.empty() ? fPath : fFullPath; }

  // The next three values are passed to the children. They have no value until computed.
  //
  // Whether this folder or one above it stands for files of a cloud storage.
  std::optional<bool> GetAnyParentIsReparseTagCloud() const { return fAnyParentIsReparseTagCloud; }
  // Whether this folder was reached through a symbolic link.
  std::optional<bool> GetParentWasSymLink() const { return fParentWasSymLink; }
  // Whether all entries of the parent folder, this one included, are links.
  std::optional<bool> GetAllSiblingsAreLinks() const { return fAllSiblingsAreLinks; }

 protected:
  // Makes the root of a scan. Links are judged against pPath.
  TBaseFileSystemEnumerator(std::u16string pPath, THierarchicalEnumeratorOptions pOptions);
  // Makes a folder inside the scan of pParent.
  TBaseFileSystemEnumerator(std::u16string pPath, const TBaseFileSystemEnumerator& pParent);

  const std::u16string& RootPath() const { return *fRootPath; }

  std::u16string fPath;
  mutable std::u16string fFullPath;
  mutable int64_t fClusterSize = 0;  // bytes; 0 until first needed, and if the system does not tell
  mutable int64_t fADSSize = 0;      // of the current file, bytes
  mutable uint32_t fNumberOfHardLinks = 1;
  std::optional<bool> fAnyParentIsReparseTagCloud;
  std::optional<bool> fParentWasSymLink;
  std::optional<bool> fAllSiblingsAreLinks;

 private:
  std::shared_ptr<const std::u16string> fRootPath;  // shared by all enumerators of one scan
};

}  // namespace Vantrel::Enumerators
