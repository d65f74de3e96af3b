#pragma once

// Saves options to an XML file and loads them. See `docs/options-file.md`.

#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/system/Errors.h"

// A user's options, kept in an XML file. docs/options-file.md describes the file.
namespace Vantrel::Options {

// Reports an options file that cannot be used at all. The message is one line for the user: the file, the place in it,
// what is wrong.
class EOptionsFileError : public EException {
 public:
  explicit EOptionsFileError(const std::string& pMessage, bool pIsMissing = false)
      : EException(pMessage), fIsMissing(pIsMissing) {}
  // Whether this user has no such file. That also covers a home folder of another user, as after "su". If the user did
  // not name the file, nothing need be reported.
  bool IsMissing() const { return fIsMissing; }

 private:
  bool fIsMissing;
};

struct TLoadedOptions {
  // Messages for the user, one line for each item that was skipped or changed, in the order of the file: 'line 12: the
  // option "Foo" is not known to this version'.
  std::vector<std::string> fSkipped;
};

// Sets every option that the file names; the others keep their values. Options that this version does not know, and
// values that it does not accept, are skipped. So a file of a newer version loads as far as possible. EOptionsFileError
// when the file is damaged or cannot be read; the options then stay unchanged.
TLoadedOptions LoadOptionsFile(const std::u16string& pPath, TGlobalOptions& pOptions);

// Writes the options that differ from their defaults. The file is written completely or not at all. Its folder is
// created if missing. The program's name and version are information for people. EOSError.
void SaveOptionsFile(const std::u16string& pPath, const TGlobalOptions& pOptions, std::string_view pProgramName,
                     std::string_view pVersion);

// The file that holds the user's own options. Empty if the system names no place for it.
std::u16string UserOptionsFile();

}  // namespace Vantrel::Options
