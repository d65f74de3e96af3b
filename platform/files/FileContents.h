#pragma once

// Reads a whole file into memory.

#include <cstddef>
#include <string>

namespace Vantrel {

// All bytes of a file, or of a pipe to its end. EOSError when it cannot be read or is a folder. A file of more than
// pMostBytes is an EOSError with kErrorFileTooLarge.
std::string ReadFileContents(const std::u16string& pPath, size_t pMostBytes);

}  // namespace Vantrel
