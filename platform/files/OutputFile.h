#pragma once

// A file that takes its place only when it is complete.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/files/ByteStreams.h"
#include "platform/files/FileStream.h"

namespace Vantrel {

// A file that takes its place only when it is complete. It is written under a temporary name in the folder of its
// target and renamed over it by Commit; without Commit it is removed again and an earlier file at the target stays
// untouched. Only a killed process leaves the temporary file behind.
//
// The new file has the permissions of the one it replaces. A target that is a symbolic link stays one: what it points
// to is replaced. Of several hard links the one that is named is replaced, the others keep the earlier contents. A
// device, a pipe or one of the process's own streams ("/dev/stdout", "NUL") is written directly, and Commit only
// flushes.
//
// The path "-" stands for the process's standard output.
//
// Every failure is an EOSError: at once when the target is a folder, may not be written or lies in no folder, later
// when the disk is full. For one thread at a time.
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
  // The file is on the disk and at its target after this. A second call does nothing.
  void Commit();

  // As given.
  const std::u16string& Path() const { return fPath; }
  // The path that the file will have, with symbolic links followed.
  const std::u16string& Target() const { return fTarget; }

 private:
  // Each platform's part. Open sets the target and, unless it is written directly, the temporary path.
  void Open();
  void Replace();
  void RemoveTemporary() noexcept;

  std::u16string fPath;
  std::u16string fTarget;
  std::u16string fTemporary;  // empty once nothing has to be removed
  TFileStream fFile;
  bool fCommitted = false;
};

// A name for a temporary file that no other program comes up with: 64 random bits.
std::u16string TemporaryName();

}  // namespace Vantrel
