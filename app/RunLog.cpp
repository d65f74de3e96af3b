#include "app/RunLog.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>
#include <thread>

#include "platform/system/DebugLog.h"
#include "platform/text/Text.h"

namespace Vantrel {

void TRunLog::Start(bool pToConsole, const std::u16string& pFile) {
  if (!pFile.empty()) {
    // Written line by line, because a log matters most when the program does not reach its end.
    auto file = std::make_shared<std::ofstream>();
    try {
      file->open(std::filesystem::path(pFile), std::ios::binary);
    } catch (const std::system_error&) {  // the name is not valid text
      file->setstate(std::ios::failbit);
    }
    if (!*file) fWriteError("The log cannot be written: " + ToQuotedDisplay(pFile));
    SetDebugLogSink([file](std::u16string_view pLine) { *file << ToDisplay(pLine) << std::endl; });
  } else if (pToConsole) {
    SetDebugLogSink([this, mainThread = std::this_thread::get_id()](std::u16string_view pLine) {
      {
        TCriticalSectionLock lock(fLock);
        fWaiting.push_back(ToDisplay(pLine));
      }
      if (std::this_thread::get_id() == mainThread) WriteWaiting();
    });
  }
}

void TRunLog::WriteWaiting() {
  std::vector<std::string> lines;
  {
    TCriticalSectionLock lock(fLock);
    lines.swap(fWaiting);
  }
  for (const std::string& line : lines) fWriteError(line);
}

void TRunLog::Stop() {
  SetDebugLogSink({});
  WriteWaiting();
}

}  // namespace Vantrel
