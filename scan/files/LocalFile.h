#pragma once

// Opens a local file for reading its contents.

#include <memory>
#include <optional>
#include <string>

#include "model/roots/Storage.h"

namespace Vantrel::Storages {

// Opens an ordinary file for reading from its start. EOSError for anything else: a folder, a pipe or a device, which
// might never answer, is closed again unread. The path may be of any length. The file's access date stays as it is
// where the system allows that. A sparse file's holes can be skipped.
std::unique_ptr<IStoredFile> OpenLocalFile(const std::u16string& pPath);
// The facts of an ordinary file, by its path. Nothing for others, and where the system refuses.
std::optional<TStoredFileFacts> QueryLocalFacts(const std::u16string& pPath);

}  // namespace Vantrel::Storages
