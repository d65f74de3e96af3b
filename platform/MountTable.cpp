#include "platform/MountTable.h"

#include <algorithm>
#include <charconv>

namespace Kiv {

namespace {

// Takes the text up to the delimiter off the front, and the delimiter with it.
std::string_view Take(std::string_view& pText, char pDelimiter) {
  const std::string_view taken = pText.substr(0, pText.find(pDelimiter));
  pText.remove_prefix(std::min(taken.size() + 1, pText.size()));
  return taken;
}

bool IsOctal(char pChar) {
  return pChar >= '0' && pChar <= '7';
}

// Blank, tab, line break and backslash stand in the table as a backslash and three octal digits.
std::string Decoded(std::string_view pField) {
  std::string result;
  for (size_t at = 0; at < pField.size(); ++at) {
    if (pField[at] == '\\' && at + 3 < pField.size() && IsOctal(pField[at + 1]) && IsOctal(pField[at + 2]) &&
        IsOctal(pField[at + 3])) {
      result += static_cast<char>((pField[at + 1] - '0') * 64 + (pField[at + 2] - '0') * 8 + (pField[at + 3] - '0'));
      at += 3;
    } else {
      result += pField[at];
    }
  }
  return result;
}

// "36 35 98:0 /root /mount/point options [optional fields] - type source superoptions"
bool ParseLine(std::string_view pLine, TMount& pMount) {
  for (uint64_t* number : {&pMount.fId, &pMount.fParentId}) {
    const std::string_view id = Take(pLine, ' ');
    if (std::from_chars(id.data(), id.data() + id.size(), *number).ec != std::errc()) return false;
  }
  pMount.fDevice = Take(pLine, ' ');
  pMount.fRoot = Decoded(Take(pLine, ' '));
  pMount.fMountPoint = Decoded(Take(pLine, ' '));
  while (!pLine.empty() && Take(pLine, ' ') != "-") {
  }
  pMount.fFileSystem = Decoded(Take(pLine, ' '));
  pMount.fSource = Decoded(Take(pLine, ' '));
  return !pMount.fMountPoint.empty() && !pMount.fFileSystem.empty();
}

}  // namespace

std::vector<TMount> ParseMountTable(std::string_view pTable) {
  std::vector<TMount> mounts;
  while (!pTable.empty()) {
    TMount mount;
    if (ParseLine(Take(pTable, '\n'), mount)) mounts.push_back(std::move(mount));
  }
  return mounts;
}

bool IsSameOrBeneath(std::string_view pPath, std::string_view pFolder) {
  if (!pPath.starts_with(pFolder)) return false;
  return pFolder == "/" || pPath.size() == pFolder.size() || pPath[pFolder.size()] == '/';
}

const TMount* FindMount(const std::vector<TMount>& pMounts, std::string_view pPath) {
  const TMount* found = nullptr;
  for (const TMount& mount : pMounts)
    if (IsSameOrBeneath(pPath, mount.fMountPoint) &&
        (found == nullptr || mount.fMountPoint.size() >= found->fMountPoint.size()))
      found = &mount;
  return found;
}

}  // namespace Kiv
