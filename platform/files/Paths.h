#pragma once

// Splits, joins and compares path texts, and finds absolute and resolved paths.

#include <string>
#include <string_view>

namespace Vantrel {

// Operations on path texts that touch no file system. The delimiter is the root's: backslash for Windows roots, slash
// for Unix-like ones. With the backslash, "/" is a delimiter too and letter case is ignored (simple folding). With the
// slash, every character counts.

// pFolder and pName with one delimiter between them.
std::u16string JoinPath(std::u16string_view pFolder, std::u16string_view pName, char16_t pDelimiter);
// Without trailing delimiters, except those of a root itself ("/", "C:\", "\\server\share\").
std::u16string_view WithoutTrailingDelimiter(std::u16string_view pPath, char16_t pDelimiter);
// The last part of the path ("C:\" and "/" give themselves).
std::u16string_view FileNameOfPath(std::u16string_view pPath, char16_t pDelimiter);
// The path without its last part; empty for a root or a bare name.
std::u16string_view FolderOfPath(std::u16string_view pPath, char16_t pDelimiter);
// Whether the name ends in the extension, which is given with its dot and may be double (".xml.zip"). ASCII letter case
// is ignored. A name that equals the extension has it too: a user who names a file ".csv" wants that kind of file.
bool HasExtension(std::u16string_view pPath, std::u16string_view pExtension);
// "C:\x", "\\server\share", "\\?\…"; "/x".
bool IsRootedPath(std::u16string_view pPath, char16_t pDelimiter);

bool SamePath(std::u16string_view pA, std::u16string_view pB, char16_t pDelimiter);
// Whether pPath is pFolder itself or lies beneath it; whole parts are compared, so "/ab" is not inside "/a".
bool IsSameOrInside(std::u16string_view pPath, std::u16string_view pFolder, char16_t pDelimiter);

// The system's own delimiter, and the absolute form of a path as typed. The current folder is put in front. ".", ".."
// and doubled delimiters are resolved by text alone, so the system may resolve a ".." behind a symbolic link
// differently. On Windows "C:x" and "/" for "\" work too. The result has no trailing delimiter. It is empty for an
// empty path, and when it needs a current folder that no longer exists.
char16_t NativePathDelimiter();
std::u16string AbsolutePath(std::u16string_view pPath);
// The path with all links resolved, as the system sees it; empty when it does not exist.
std::u16string ResolvedPath(const std::u16string& pPath);

}  // namespace Vantrel
