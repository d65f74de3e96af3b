#pragma once

// The program's exceptions, and the kinds and texts of error codes.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Vantrel {

// Base of the program's own failures. The text is UTF-8 and ready to be shown; those from data classes begin with the
// class and method name and a colon.
class EException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class EInvalidArgumentValue : public EException {
 public:
  using EException::EException;
};

class EInvalidOperation : public EException {
 public:
  using EException::EException;
};

class ENotImplemented : public EException {
 public:
  using EException::EException;
};

class EUnknownEnumException : public EException {
 public:
  using EException::EException;
};

// The kind of failure that a system's error code means, the same on every platform.
enum class TErrorKind : uint8_t { ekNone, ekAccessDenied, ekNotFound, ekOther };

TErrorKind ClassifyOSError(uint32_t pCode);

// The program's own codes. No system's codes have bit 29 set.
constexpr uint32_t kErrorPseudoFileSystem = 0x2000'0001;  // the path leads into a pseudo file system of the kernel
constexpr uint32_t kErrorFileTooLarge = 0x2000'0002;      // larger than what is read as a whole
constexpr uint32_t kErrorNoMemory = 0x2000'0003;
constexpr uint32_t kErrorNoThread = 0x2000'0004;    // no thread could be started
constexpr uint32_t kErrorUnexpected = 0x2000'0005;  // an exception without a code; the debug log has its text

// The text for a code, UTF-8, without a trailing full stop or line break ("Permission denied").
std::string OSErrorText(uint32_t pCode);
// The same, but for the system's own codes only.
std::string SystemErrorText(uint32_t pCode);

// A failed call to the operating system: which operation, on which object, and the system's code (errno or Win32).
class EOSError : public EException {
 public:
  EOSError(uint32_t pCode, std::string_view pOperation, std::u16string_view pObject);
  uint32_t Code() const { return fCode; }
  const std::string& Operation() const { return fOperation; }
  const std::u16string& Object() const { return fObject; }

 private:
  uint32_t fCode;
  std::string fOperation;
  std::u16string fObject;
};

// To be called in an exception handler: the code that stands for the exception. If the exception has no code, its text
// goes to the debug log, after pPlace, the name of the place that caught it.
uint32_t CodeOfCaughtException(std::string_view pPlace) noexcept;

}  // namespace Vantrel
