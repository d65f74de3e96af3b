#include "platform/system/Errors.h"

#include <fmt/format.h>

#include <new>
#include <system_error>

#include "platform/system/DebugLog.h"
#include "platform/text/Text.h"

namespace Vantrel {

EOSError::EOSError(uint32_t pCode, std::string_view pOperation, std::u16string_view pObject)
    : EException(
          fmt::format("{}: {}: {} (Error Code {})", pOperation, ToQuotedDisplay(pObject), OSErrorText(pCode), pCode)),
      fCode(pCode),
      fOperation(pOperation),
      fObject(pObject) {}

std::string OSErrorText(uint32_t pCode) {
  if (pCode == kErrorPseudoFileSystem)
    return "It belongs to a pseudo file system of the kernel, where nothing is stored";
  if (pCode == kErrorFileTooLarge) return "The file is too large to be read as a whole";
  if (pCode == kErrorNoMemory) return "Not enough memory";
  if (pCode == kErrorNoThread) return "No thread could be started";
  if (pCode == kErrorUnexpected) return "An unexpected error, whose text is in the debug log";
  return SystemErrorText(pCode);
}

namespace {

// If the log has no memory for the line, the line is lost. The failure it reports is still handled.
void LogCaughtException(std::string_view pPlace, const char* pText) noexcept {
  try {
    LogDebug(FromUtf8(fmt::format("{}: {}", pPlace, pText)));
  } catch (...) {
  }
}

}  // namespace

uint32_t CodeOfCaughtException(std::string_view pPlace) noexcept {
  try {
    throw;
  } catch (const EOSError& error) {
    return error.Code();
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  } catch (const std::system_error& error) {
    LogCaughtException(pPlace, error.what());
    if (error.code() == std::errc::resource_unavailable_try_again) return kErrorNoThread;
    return kErrorUnexpected;
  } catch (const std::exception& error) {
    LogCaughtException(pPlace, error.what());
  } catch (...) {
    LogCaughtException(pPlace, "an exception of an unknown type");
  }
  return kErrorUnexpected;
}

}  // namespace Vantrel
