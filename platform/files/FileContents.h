#pragma once

// All bytes of a file.

#include <cstddef>
#include <string>

namespace Vantrel {

// All bytes of a file, or of a pipe to its end. EOSError when it cannot be read, a folder included; a file of more than
// pMostBytes is refused in the same way (kErrorFileTooLarge).
std::string ReadFileContents(const std::u16string& pPath, size_t pMostBytes);

}  // namespace Vantrel
