#pragma once

// The options in an XML file, saved and loaded; `docs/options-file.md`.

#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/system/Errors.h"

// The options of a user, kept in an XML file; docs/options-file.md describes it.
namespace Vantrel::Options {

// An options file of which nothing can be taken. One line for the user: the file, where in it, what is wrong.
class EOptionsFileError : public EException {
 public:
  explicit EOptionsFileError(const std::string& pMessage, bool pIsMissing = false)
      : EException(pMessage), fIsMissing(pIsMissing) {}
  // Whether there is no such file for this user, as after "su", which leaves a home that is another's: nothing to tell
  // of when nobody named the file.
  bool IsMissing() const { return fIsMissing; }

 private:
  bool fIsMissing;
};

struct TLoadedOptions {
  // One line each for what was not taken as it stands, in the order of the file: 'line 12: the option "Foo" is not
  // known to this version'. For the user to see.
  std::vector<std::string> fSkipped;
};

// Sets every option that the file names; what it does not name keeps its value. An option that this version does not
// know or whose value it does not take is skipped, so a file of a newer version loads as far as it can. A damaged file
// changes nothing and is an EOptionsFileError, as is one that cannot be read.
TLoadedOptions LoadOptionsFile(const std::u16string& pPath, TGlobalOptions& pOptions);

// Writes the options whose values are not their defaults, complete or not at all. Creates the file's folder where it is
// missing. The program's name and version are for people who read the file. EOSError.
void SaveOptionsFile(const std::u16string& pPath, const TGlobalOptions& pOptions, std::string_view pProgramName,
                     std::string_view pVersion);

// The file that the user's own options are kept in; empty when the system tells no place for it.
std::u16string UserOptionsFile();

}  // namespace Vantrel::Options
