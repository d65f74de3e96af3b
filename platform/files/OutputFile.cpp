#include "platform/files/OutputFile.h"

#include <fmt/format.h>

#include <random>

namespace Vantrel {

TOutputFile::TOutputFile(const std::u16string& pPath) : fPath(pPath) {
  try {
    Open();
  } catch (...) {
    fFile = {};
    RemoveTemporary();
    throw;
  }
}

TOutputFile::~TOutputFile() {
  fFile = {};  // Windows does not remove an open file
  RemoveTemporary();
}

void TOutputFile::Commit() {
  if (fCommitted) return;
  // Without this a system crash soon after could leave an empty file under the new name.
  fFile.Sync();
  fFile.Close();
  if (!fTemporary.empty()) Replace();
  fTemporary.clear();
  fCommitted = true;
}

std::u16string TemporaryName() {
  std::random_device random;
  const std::string name = fmt::format(".vantrel-{:08x}{:08x}.tmp", random(), random());
  return {name.begin(), name.end()};
}

}  // namespace Vantrel
