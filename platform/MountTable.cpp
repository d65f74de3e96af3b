#include "platform/MountTable.h"

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

bool Holds(std::string_view pMountPoint, std::string_view pPath) {
  if (!pPath.starts_with(pMountPoint)) return false;
  return pMountPoint == "/" || pPath.size() == pMountPoint.size() || pPath[pMountPoint.size()] == '/';
}

// "36 35 98:0 /root /mount/point options [optional fields] - type source superoptions"
bool ParseLine(std::string_view pLine, TMount& pMount) {
  for (int field = 0; field < 4; ++field) Take(pLine, ' ');
  pMount.fMountPoint = Decoded(Take(pLine, ' '));
  while (!pLine.empty() && Take(pLine, ' ') != "-") {
  }
  pMount.fFileSystem = Decoded(Take(pLine, ' '));
  pMount.fSource = Decoded(Take(pLine, ' '));
  return !pMount.fMountPoint.empty() && !pMount.fFileSystem.empty();
}

}  // namespace

bool FindMount(std::string_view pTable, std::string_view pPath, TMount& pMount) {
  bool found = false;
  TMount candidate;
  while (!pTable.empty()) {
    if (!ParseLine(Take(pTable, '\n'), candidate) || !Holds(candidate.fMountPoint, pPath)) continue;
    if (found && candidate.fMountPoint.size() < pMount.fMountPoint.size()) continue;
    pMount = candidate;
    found = true;
  }
  return found;
}

}  // namespace Kiv
