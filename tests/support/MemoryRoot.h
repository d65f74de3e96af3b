#pragma once

// Real engines over such storages; a root that they scan.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "model/roots/Root.h"
#include "tests/support/MemoryServices.h"

namespace Vantrel::Testing {

constexpr int64_t kForever = 300'000;  // only there to end a hang; sanitizers on a busy machine are slow

// A root over a storage in memory, with the options that its first scan finds. Disposed of at the end.
struct TMemoryRoot {
  explicit TMemoryRoot(std::shared_ptr<TMemoryStorage> pStorage = TMemoryStorage::Create(),
                       std::u16string pPath = u"/memory")
      : fPath(std::move(pPath)), fStorage(std::move(pStorage)) {
    fServices->fStorages[fPath] = fStorage;
  }
  ~TMemoryRoot() {
    if (fRoot) fRoot->Dispose();
  }
  TMemoryRoot(const TMemoryRoot&) = delete;
  TMemoryRoot& operator=(const TMemoryRoot&) = delete;

  Vantrel::TCustomRoot& Root() {
    if (!fRoot) fRoot = MakeRef<Vantrel::TCustomUnixRoot>(fPath, u"", fServices, fOptions, nullptr);
    return *fRoot;
  }
  void Begin() { Root().Scan(); }
  void Scan() {
    Begin();
    ASSERT_TRUE(fRoot->WaitForScan(kForever));
  }
  TMemoryEntry& Top() { return fStorage->Top(); }

  const std::u16string fPath;
  std::shared_ptr<TGlobalOptions> fOptions = std::make_shared<TGlobalOptions>();
  TRef<TMemoryServices> fServices = MakeRef<TMemoryServices>();
  std::shared_ptr<TMemoryStorage> fStorage;
  TRef<Vantrel::TCustomRoot> fRoot;
};

}  // namespace Vantrel::Testing
