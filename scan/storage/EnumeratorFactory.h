#pragma once

// The registry of enumerator classes, by protocol.

#include <string>
#include <string_view>
#include <vector>

#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Enumerators {

// What the factory knows of a class of enumerators. The texts are literals.
struct TEnumeratorClass {
  using TCreate = TRef<IHierarchicalEnumerator> (*)(const std::u16string& pPath,
                                                    THierarchicalEnumeratorOptions pOptions);
  std::string_view fName;  // "TNTApiEnumerator"
  std::u16string_view
      fProtocol;  // what the paths that it serves begin with, "file:"; ASCII, letter case does not count
  TCreate fCreateForPath = nullptr;    // lists a folder; gets the path with its protocol
  TCreate fCreateForObject = nullptr;  // stands for one file or folder; without it fCreateForPath serves
};

// The registry of enumerator classes. The standard ones of the platform are there from the first use. Any thread.
class THierarchicalEnumeratorFactory {
 public:
  // Makes the class known; of two with one protocol the default one serves it, else the later. The default class also
  // serves the paths without a known protocol; a later default replaces an earlier one.
  static void RegisterEnumerator(const TEnumeratorClass& pClass, bool pDefault);

  // An enumerator of the folder, standing before its first entry. ENotImplemented when the class that serves the path
  // cannot be created from one, or no class does. A path that does not exist is no failure here: the enumerator tells.
  static TRef<IHierarchicalEnumerator> CreateForPath(const std::u16string& pPath,
                                                     THierarchicalEnumeratorOptions pOptions);
  // An enumerator with one entry, the file or folder itself.
  static TRef<IHierarchicalEnumerator> CreateForObject(const std::u16string& pPath,
                                                       THierarchicalEnumeratorOptions pOptions);
  // The protocols in the order of their registration, each once.
  static std::vector<std::u16string> GetKnownEnumeratorsProtocols();
};

// Registers the classes that come with the platform, through RegisterEnumerator. The factory calls it on its first use:
// initialisers of a static library's objects only run when something else happens to pull the object in.
void RegisterStandardEnumerators();

}  // namespace Vantrel::Enumerators
