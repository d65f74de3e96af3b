#pragma once

// What deleted files take that programs still hold open.

#include <cstdint>
#include <string>

namespace Vantrel {

// Bytes on the disk of files without a name on the path's file system, as far as this user may see the programs that
// hold them. 0 on Windows, which has no such files. Any thread.
int64_t OpenDeletedBytes(const std::u16string& pPath);

}  // namespace Vantrel
