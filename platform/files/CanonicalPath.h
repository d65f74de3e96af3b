#pragma once

// The one form of a path by which a folder is known again.

#include <string>

namespace Vantrel {

// The one form of a path by which a folder is known again, however it was typed and from whichever machine: absolute,
// with all links resolved; on Windows with names as the disk spells them and the server's name in place of a mapped
// drive's letter ("\\server\share\folder"), while local drives stay as they are ("C:\folder"). What of the path does
// not exist, such as a wildcard at its end or a folder that has gone, is taken as it is. Empty for an empty path.
std::u16string CanonicalPath(const std::u16string& pPath);

// Serves CanonicalPath: that form of an absolute path; empty when it does not exist.
std::u16string CanonicalPathOfExisting(const std::u16string& pPath);

}  // namespace Vantrel
