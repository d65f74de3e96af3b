#include "scan/storage/EnumeratorFactory.h"

#include <algorithm>
#include <mutex>
#include <optional>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::Enumerators {
namespace {

struct TRegistration {
  TEnumeratorClass fClass;
  bool fDefault;
};

struct TRegistry {
  TCriticalSection fLock;
  std::vector<TRegistration> fClasses GUARDED_BY(fLock);
};

TRegistry& Registry() {
  static TRegistry& registry = *new TRegistry;  // never destroyed, because threads may outlive main
  return registry;
}

void RegisterStandardOnce() {
  static std::once_flag once;
  std::call_once(once, RegisterStandardEnumerators);
}

bool IsServedBy(std::u16string_view pPath, const TEnumeratorClass& pClass) {
  return !pClass.fProtocol.empty() && SameTextAscii(pPath.substr(0, pClass.fProtocol.size()), pClass.fProtocol);
}

std::optional<TEnumeratorClass> FindClass(std::u16string_view pPath) {
  TRegistry& registry = Registry();
  TCriticalSectionLock lock(registry.fLock);
  const TRegistration* serving = nullptr;
  const TRegistration* fallback = nullptr;
  for (const TRegistration& candidate : registry.fClasses) {
    if (candidate.fDefault) fallback = &candidate;
    if (IsServedBy(pPath, candidate.fClass) && (serving == nullptr || candidate.fDefault || !serving->fDefault))
      serving = &candidate;
  }
  if (serving == nullptr) serving = fallback;
  return serving == nullptr ? std::nullopt : std::optional(serving->fClass);
}

TEnumeratorClass ClassOfPath(const std::u16string& pPath) {
  RegisterStandardOnce();
  std::optional<TEnumeratorClass> found = FindClass(pPath);
  if (!found)
    throw ENotImplemented("THierarchicalEnumeratorFactory.CreateForPath: no enumerator serves " + ToDisplay(pPath));
  if (found->fCreateForPath == nullptr)
    throw ENotImplemented(std::string(found->fName) +
                          " does not have an implementation for the factory method CreateForPath().");
  return *found;
}

}  // namespace

void THierarchicalEnumeratorFactory::RegisterEnumerator(const TEnumeratorClass& pClass, bool pDefault) {
  TRegistry& registry = Registry();
  TCriticalSectionLock lock(registry.fLock);
  registry.fClasses.push_back({pClass, pDefault});
}

TRef<IHierarchicalEnumerator> THierarchicalEnumeratorFactory::CreateForPath(const std::u16string& pPath,
                                                                            THierarchicalEnumeratorOptions pOptions) {
  return ClassOfPath(pPath).fCreateForPath(pPath, pOptions);
}

TRef<IHierarchicalEnumerator> THierarchicalEnumeratorFactory::CreateForObject(const std::u16string& pPath,
                                                                              THierarchicalEnumeratorOptions pOptions) {
  TEnumeratorClass found = ClassOfPath(pPath);
  auto create = found.fCreateForObject != nullptr ? found.fCreateForObject : found.fCreateForPath;
  return create(pPath, pOptions);
}

std::vector<std::u16string> THierarchicalEnumeratorFactory::GetKnownEnumeratorsProtocols() {
  RegisterStandardOnce();
  TRegistry& registry = Registry();
  TCriticalSectionLock lock(registry.fLock);
  std::vector<std::u16string> protocols;
  for (const TRegistration& registration : registry.fClasses) {
    std::u16string protocol(registration.fClass.fProtocol);
    if (std::find(protocols.begin(), protocols.end(), protocol) == protocols.end()) protocols.push_back(protocol);
  }
  return protocols;
}

}  // namespace Vantrel::Enumerators
