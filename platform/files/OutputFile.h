#pragma once

// An output file that replaces its target only when it is complete.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/files/ByteStreams.h"
#include "platform/files/FileStream.h"

namespace Vantrel {

// An output file that replaces its target only when it is complete. It is written under a temporary name in the
// target's folder. Commit renames it over the target. Without Commit it is removed, and an earlier file at the target
// stays untouched. Only a killed process leaves the temporary file behind.
//
// The new file has the permissions of the file it replaces. If the target is a symbolic link, the link stays and the
// file it points to is replaced. If the target has several hard links, only the named one is replaced; the others keep
// the earlier contents. A device, a pipe or one of the process's own streams ("/dev/stdout", "NUL") is written
// directly, and Commit only flushes.
//
// The path "-" stands for the process's standard output.
//
// Every failure is an EOSError. The constructor throws when the target is a folder, may not be written or has no
// folder. Later calls throw when the disk is full. For one thread at a time.
class TOutputFile final : public IByteSink {
 public:
  static constexpr std::u16string_view kStandardOutput = u"-";

  explicit TOutputFile(const std::u16string& pPath);
  ~TOutputFile() override;
  TOutputFile(const TOutputFile&) = delete;
  TOutputFile& operator=(const TOutputFile&) = delete;

  void Write(std::string_view pBytes) override { fFile.Write(pBytes); }
  // The position of the next Write, from the start. A target that is written directly may have none.
  void Seek(uint64_t pPosition) { fFile.Seek(pPosition); }
  void Flush() { fFile.Flush(); }
  // Puts the file on the disk and at its target. A second call does nothing.
  void Commit();

  // The path as the caller gave it.
  const std::u16string& Path() const { return fPath; }
  // The path of the finished file, with symbolic links followed.
  const std::u16string& Target() const { return fTarget; }

 private:
  // Each platform implements these. Open sets the target and, unless it is written directly, the temporary path.
  void Open();
  void Replace();
  void RemoveTemporary() noexcept;

  std::u16string fPath;
  std::u16string fTarget;
  std::u16string fTemporary;  // empty when no file has to be removed
  TFileStream fFile;
  bool fCommitted = false;
};

// A name for a temporary file that no other program uses: 64 random bits.
std::u16string TemporaryName();

}  // namespace Vantrel
