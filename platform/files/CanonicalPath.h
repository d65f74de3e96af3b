#pragma once

// The canonical form of a path. Two spellings of one folder have the same canonical path.

#include <string>

namespace Vantrel {

// The canonical form of a path: the same for every spelling of a folder and on every machine. It is absolute and all
// links are resolved. On Windows names are spelled as on the disk. A mapped drive's letter becomes the server and share
// ("\\server\share\folder"); local drives keep theirs ("C:\folder"). Parts at the end that do not exist, such as a
// wildcard or a deleted folder, stay as they are. Empty for an empty path.
std::u16string CanonicalPath(const std::u16string& pPath);

// Used by CanonicalPath: the canonical form of an absolute path. Empty when the path does not exist.
std::u16string CanonicalPathOfExisting(const std::u16string& pPath);

}  // namespace Vantrel
