#pragma once

// The scanned path, the reference output and the main function that the export benchmarks share.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "model/roots/ScanRoots.h"
#include "platform/files/FileContents.h"
#include "platform/files/OutputFile.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanServices.h"

namespace Vantrel::Bench {

// A path, scanned with the default settings. Disposed of with the object.
class TScannedPath {
 public:
  explicit TScannedPath(const std::u16string& pPath)
      : fRoots(Vantrel::CreateScanRoots(ScanEngine::CreateScanServices(), std::make_shared<Vantrel::TGlobalOptions>())),
        fRoot(fRoots->CreateRoot(pPath)) {
    fRoot->Scan();
    while (!fRoot->WaitForScan(1000)) {
    }
  }
  ~TScannedPath() { fRoots->Dispose(); }
  TScannedPath(const TScannedPath&) = delete;
  TScannedPath& operator=(const TScannedPath&) = delete;

  Vantrel::IScanRoots& Roots() const { return *fRoots; }
  Vantrel::IHierarchicalRoot& Root() const { return *fRoot; }

 private:
  const Vantrel::TRef<Vantrel::IScanRoots> fRoots;
  const Vantrel::TRef<Vantrel::IHierarchicalRoot> fRoot;
};

inline std::string BytesOf(const std::u16string& pFile) {
  return Vantrel::ReadFileContents(pFile, size_t{1} << 40);
}

// The reference for an export: the same bytes, written from memory.
inline void WriteBytes(const std::u16string& pFile, std::string_view pBytes) {
  Vantrel::TOutputFile file(pFile);
  file.Write(pBytes);
  file.Commit();
}

inline void Remove(const std::u16string& pFile) {
  std::filesystem::remove(Vantrel::ToNativeBytes(pFile));
}

// The main function of "NAME PATH [ROUNDS]"; 5 rounds by default. pRun returns whether the targets are met. Returns 0
// then, 1 when one is missed, and 2 when the command line is wrong or something fails.
inline int RunOnPath(const char* pName, int pCount, char** pArguments,
                     bool (*pRun)(const std::u16string& pPath, int pRounds)) {
  if (pCount < 2) {
    std::fprintf(stderr, "Usage: %s PATH [ROUNDS]\n", pName);
    return 2;
  }
  try {
    const int rounds = pCount > 2 ? std::max(1, std::atoi(pArguments[2])) : 5;
    return pRun(Vantrel::FromNativeBytes(pArguments[1]), rounds) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}

}  // namespace Vantrel::Bench
