#include "automation/commandline/RunFiles.h"

#include <fmt/format.h>

#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

constexpr std::u16string_view kStandardOutput = u"-";

bool IsExport(TFileUse pUse) {
  return pUse == TFileUse::fuExport || pUse == TFileUse::fuXMLExport;
}

bool IsWritten(TFileUse pUse) {
  return IsExport(pUse) || pUse == TFileUse::fuWritten;
}

}  // namespace

void TRunFiles::Add(const std::u16string& pPath, TFileUse pUse, std::string pName) {
  if (pPath.empty()) return;
  fFiles.push_back(
      {pPath, pUse, std::move(pName), pPath == kStandardOutput ? TFilePlace{pPath, {}} : PlaceOfFile(pPath)});
}

bool TRunFiles::MayBeOne(const TFile& pA, const TFile& pB) {
  if (!IsWritten(pA.fUse) && !IsWritten(pB.fUse)) return true;
  auto are = [&](TFileUse pOne, TFileUse pOther) {
    return (pA.fUse == pOne && pB.fUse == pOther) || (pA.fUse == pOther && pB.fUse == pOne);
  };
  // Each week's scan is compared with the last one and takes its place.
  return are(TFileUse::fuOldScan, TFileUse::fuXMLExport);
}

std::vector<std::string> TRunFiles::Conflicts() const {
  std::vector<std::string> messages;
  for (size_t later = 1; later < fFiles.size(); ++later) {
    for (size_t earlier = 0; earlier < later; ++earlier) {
      const TFile& a = fFiles[earlier];
      const TFile& b = fFiles[later];
      if (MayBeOne(a, b) || !IsSamePlace(a.fPlace, b.fPlace)) continue;
      messages.push_back(IsExport(a.fUse) && IsExport(b.fUse)
                             ? "Two exports would go into the same file: " + ToQuotedDisplay(b.fPath)
                             : fmt::format("{} cannot be both {} and {}", ToQuotedDisplay(b.fPath), a.fName, b.fName));
      break;  // one message for each file
    }
  }
  return messages;
}

}  // namespace Vantrel::CommandLine
