#pragma once

// What can be scanned: a kind of storage, the facts that it knows, and the list of all kinds.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "platform/files/ByteStreams.h"
#include "platform/system/Errors.h"

namespace Vantrel {

// What goes along with everything that a storage opens.
struct TScanContext {
  TRef<ICancellationIndicator> fCancellation;  // nullptr: cannot be cancelled
  THierarchicalEnumeratorOptions fOptions = 0;
};

// A path that no known kind of storage serves. The text names the kinds that there are.
class EUnknownProtocol : public EException {
 public:
  using EException::EException;
};

// A kind of storage: local files, a loaded scan file, an image of a volume. It alone asks the system about its paths.
// Its paths are those that its roots carry, as AbsolutePath makes them. Any thread.
class IStorage : public IInterface {
 public:
  // What its paths may begin with, in lower case and with the colon: "file:".
  virtual std::u16string_view GetProtocol() const = 0;
  virtual char16_t GetPathDelimiter() const = 0;
  // A path as typed, with or without the protocol, as its root carries it. Empty when there is no such path.
  virtual std::u16string AbsolutePath(std::u16string_view pTyped) const = 0;
  virtual bool Exists(const std::u16string& pPath) const = 0;
  // An enumerator of a folder's contents, standing before its first entry. A path that cannot be opened gives one that
  // lists nothing and tells the error.
  virtual TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath,
                                                         const TScanContext& pContext) const = 0;
  virtual TStorageInformation GetInformation(const std::u16string& pPath) const = 0;
  // The text for a code that one of its enumerators gave, in UTF-8, without a full stop.
  virtual std::string ErrorText(uint32_t pCode) const = 0;
  // The bytes of a file from its start. EOSError when it cannot be opened; reading throws the same.
  virtual std::unique_ptr<IByteSource> OpenFile(const std::u16string& pPath, const TScanContext& pContext) const = 0;
};

// The kinds of storage that the program knows. Any thread.
class IStorages : public IInterface {
 public:
  // The kind that serves a path as typed: the one whose protocol the path begins with, else local files.
  // EUnknownProtocol for another protocol, unless a local file has that name.
  virtual TRef<IStorage> FindForPath(std::u16string_view pTyped) const = 0;
  // Their protocols, in the order of their registration.
  virtual std::vector<std::u16string> GetProtocols() const = 0;
};

}  // namespace Vantrel
