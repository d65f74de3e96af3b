#pragma once

#include <cstddef>
#include <string>

namespace Kiv {

// All bytes of a file, or of a pipe to its end. EOSError when it cannot be read, a folder included; a file of more than
// pMostBytes is refused in the same way (kErrorFileTooLarge).
std::string ReadFileContents(const std::u16string& pPath, size_t pMostBytes);

}  // namespace Kiv
