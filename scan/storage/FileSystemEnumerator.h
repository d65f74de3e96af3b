#pragma once

// The base of Windows' enumerators: path, root, and what is handed down to children; paths given as `file:`.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "scan/files/LinkRules.h"
#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Enumerators {

// A path as the file system takes it: without the protocol "file:", whose letter case does not count. For the backslash
// every "/" of such a URL becomes "\", and the three slashes before a drive letter go ("file:///C:/x" is "C:\x"); for
// the slash any number of leading slashes is one. Other paths stay as they are.
std::u16string PathOfFileUrl(std::u16string_view pPath, char16_t pDelimiter);

// Common to Windows' enumerators of file systems. The one for Linux stands on folder handles and shares none of this.
class TBaseFileSystemEnumerator : public TBaseVisualHierarchicalEnumerator {
 public:
  static constexpr std::u16string_view kProtocol = u"file:";

  std::u16string GetPath() const override { return fPath; }
  // Of the current entry; of the folder before the first and after the last.
  std::u16string GetFullPath() const override { return fFullPath.empty() ? fPath : fFullPath; }

  // What is handed down to the children; no value while nobody has worked it out.
  // Whether a folder above, or this one, stands for files of a cloud storage.
  std::optional<bool> GetAnyParentIsReparseTagCloud() const { return fAnyParentIsReparseTagCloud; }
  // Whether this folder was reached through a symbolic link.
  std::optional<bool> GetParentWasSymLink() const { return fParentWasSymLink; }
  // Whether every entry beside this folder, itself included, is a link.
  std::optional<bool> GetAllSiblingsAreLinks() const { return fAllSiblingsAreLinks; }

 protected:
  // A root of a scan: links are judged against pPath.
  TBaseFileSystemEnumerator(std::u16string pPath, THierarchicalEnumeratorOptions pOptions);
  // A folder inside the scan of pParent.
  TBaseFileSystemEnumerator(std::u16string pPath, const TBaseFileSystemEnumerator& pParent);

  const std::u16string& RootPath() const { return *fRootPath; }

  std::u16string fPath;
  mutable std::u16string fFullPath;
  mutable int64_t fClusterSize = 0;  // bytes; 0 until first needed, and where the system does not tell
  mutable int64_t fADSSize = 0;      // of the current file, bytes
  mutable uint32_t fNumberOfHardLinks = 1;
  std::optional<bool> fAnyParentIsReparseTagCloud;
  std::optional<bool> fParentWasSymLink;
  std::optional<bool> fAllSiblingsAreLinks;

 private:
  std::shared_ptr<const std::u16string> fRootPath;  // shared by all enumerators of one scan
};

}  // namespace Vantrel::Enumerators
