#pragma once

// The registry of enumerator classes. Each class serves the paths of one protocol.

#include <string>
#include <string_view>
#include <vector>

#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Enumerators {

// Describes an enumerator class to the factory. The texts must be literals.
struct TEnumeratorClass {
  using TCreate = TRef<IHierarchicalEnumerator> (*)(const std::u16string& pPath,
                                                    THierarchicalEnumeratorOptions pOptions);
  std::string_view fName;  // such as "TNTApiEnumerator"
  std::u16string_view
      fProtocol;  // the start of the paths that the class serves, such as "file:"; ASCII, in any letter case
  TCreate fCreateForPath = nullptr;    // lists a folder; the path includes its protocol
  TCreate fCreateForObject = nullptr;  // serves one file or folder; if nullptr, fCreateForPath is used
};

// The registry of enumerator classes. It holds the platform's standard classes from its first use. Any thread.
class THierarchicalEnumeratorFactory {
 public:
  // Registers a class. If two classes have one protocol, the default class serves it, else the one registered later.
  // The default class also serves paths without a known protocol. A later default class replaces the earlier one.
  static void RegisterEnumerator(const TEnumeratorClass& pClass, bool pDefault);

  // Makes an enumerator of the folder, positioned before its first entry. ENotImplemented when no class serves the
  // path, or the class cannot be created from a path. A path that does not exist is no error here; the enumerator
  // reports it.
  static TRef<IHierarchicalEnumerator> CreateForPath(const std::u16string& pPath,
                                                     THierarchicalEnumeratorOptions pOptions);
  // Makes an enumerator whose only entry is the file or folder itself.
  static TRef<IHierarchicalEnumerator> CreateForObject(const std::u16string& pPath,
                                                       THierarchicalEnumeratorOptions pOptions);
  // All protocols, each once, in the order of registration.
  static std::vector<std::u16string> GetKnownEnumeratorsProtocols();
};

// Registers the platform's classes by RegisterEnumerator. The factory calls it on its first use. Static initialisers
// would not do: the linker drops an unused object of a static library, with its initialisers.
void RegisterStandardEnumerators();

}  // namespace Vantrel::Enumerators
