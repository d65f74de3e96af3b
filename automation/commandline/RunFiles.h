#pragma once

// All files that a run reads or writes, and which of them must be different files.

#include <cstdint>
#include <string>
#include <vector>

#include "automation/commandline/CommandLineState.h"
#include "platform/files/SameFile.h"

namespace Vantrel::CommandLine {

// What a run does with a file.
enum class TFileUse : uint8_t {
  fuRead,      // before anything is written, or while it is written
  fuOldScan,   // read before an XML file replaces it
  fuSettings,  // read as a whole at the start; may be written again
  fuExport,
  fuScanExport,
  fuWritten,  // all other output: a database, a log
};

// The list of a run's files. Filled and checked before any file is opened for writing. One thread.
class TRunFiles {
 public:
  // pName is what messages call it: "the log". An empty path is no file.
  void Add(const std::u16string& pPath, TFileUse pUse, std::string pName);
  // A message for each two entries that are the same file and would damage each other.
  std::vector<std::string> Conflicts() const;

 private:
  struct TFile {
    std::u16string fPath;
    TFileUse fUse;
    std::string fName;
    TFilePlace fPlace;
  };
  static bool MayBeOne(const TFile& pA, const TFile& pB);

  std::vector<TFile> fFiles;
};

// The files of a parsed command line. The file of the user's own options is empty when there is none.
TRunFiles FilesOfRun(const TCommandLineState& pState, const std::u16string& pUserOptionsFile);

}  // namespace Vantrel::CommandLine
