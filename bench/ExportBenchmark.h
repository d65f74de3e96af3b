#pragma once

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

// What the benchmarks of exports have in common: a scanned path, files in the current folder, and their main.
namespace Vantrel::Bench {

// A path, scanned with the settings as they are before anybody changes them. Disposed of with the object.
class TScannedPath {
 public:
  explicit TScannedPath(const std::u16string& pPath)
      : fRoots(Kiv::CreateScanRoots(ScanEngine::CreateScanServices(), std::make_shared<Kiv::TGlobalOptions>())),
        fRoot(fRoots->CreateRoot(pPath)) {
    fRoot->Scan();
    while (!fRoot->WaitForScan(1000)) {
    }
  }
  ~TScannedPath() { fRoots->Dispose(); }
  TScannedPath(const TScannedPath&) = delete;
  TScannedPath& operator=(const TScannedPath&) = delete;

  Kiv::IScanRoots& Roots() const { return *fRoots; }
  Kiv::IHierarchicalRoot& Root() const { return *fRoot; }

 private:
  const Kiv::TRef<Kiv::IScanRoots> fRoots;
  const Kiv::TRef<Kiv::IHierarchicalRoot> fRoot;
};

inline std::string BytesOf(const std::u16string& pFile) {
  return Kiv::ReadFileContents(pFile, size_t{1} << 40);
}

// What an export is held against: the same bytes from memory.
inline void WriteBytes(const std::u16string& pFile, std::string_view pBytes) {
  Kiv::TOutputFile file(pFile);
  file.Write(pBytes);
  file.Commit();
}

inline void Remove(const std::u16string& pFile) {
  std::filesystem::remove(Kiv::ToNativeBytes(pFile));
}

// The main of "NAME PATH [ROUNDS]", of 5 rounds unless told otherwise. pRun tells whether the targets are met. Returns
// 0 then, 1 when one is missed, and 2 when the command line is wrong or something fails.
inline int RunOnPath(const char* pName, int pCount, char** pArguments,
                     bool (*pRun)(const std::u16string& pPath, int pRounds)) {
  if (pCount < 2) {
    std::fprintf(stderr, "Usage: %s PATH [ROUNDS]\n", pName);
    return 2;
  }
  try {
    const int rounds = pCount > 2 ? std::max(1, std::atoi(pArguments[2])) : 5;
    return pRun(Kiv::FromNativeBytes(pArguments[1]), rounds) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}

}  // namespace Vantrel::Bench
