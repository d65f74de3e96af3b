// That a target is complete or untouched: refusals, links, permissions, full disks, devices, own streams.

#include <gmock/gmock.h>

#include <filesystem>

#include "platform/files/OutputFile.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {

namespace {

using Vantrel::Testing::TTemporaryFolder;

// Pieces from nothing to beyond any buffer.
std::string WritePieces(IByteSink& pSink) {
  std::string written;
  for (const size_t length : {0u, 1u, 1000u, 131'071u, 131'072u, 5u, 400'000u, 131'070u, 2u, 1u}) {
    const std::string piece(length, static_cast<char>('a' + written.size() % 26));
    pSink.Write(piece);
    written += piece;
  }
  return written;
}

}  // namespace

TEST(OutputFile, TakesItsPlaceOnlyWhenItIsComplete) {
  TTemporaryFolder folder;
  for (const bool earlier : {false, true}) {
    {
      TOutputFile abandoned(folder.File("x"));
      WritePieces(abandoned);
      abandoned.Flush();
      EXPECT_EQ(folder.Count(), earlier ? 2u : 1u);
    }
    EXPECT_EQ(folder.Count(), earlier ? 1u : 0u);
    if (earlier) {
      EXPECT_EQ(folder.Get("x"), "earlier");
    }

    TOutputFile file(folder.File("x"));
    const std::string written = WritePieces(file);
    if (earlier) {
      EXPECT_EQ(folder.Get("x"), "earlier");
    }
    file.Commit();
    file.Commit();
    EXPECT_EQ(folder.Get("x"), written);
    EXPECT_EQ(folder.Count(), 1u);
    folder.Put("x", "earlier");
  }
}

TEST(OutputFile, IsWrittenAnewAtAnEarlierPosition) {
  TTemporaryFolder folder;
  TOutputFile file(folder.File("x"));
  file.Write("0123456789");
  file.Seek(4);
  file.Write("ab");
  file.Seek(9);
  file.Write("cd");
  file.Commit();
  EXPECT_EQ(folder.Get("x"), "0123ab678cd");
}

TEST(OutputFile, SaysAtOnceWhatCannotBeWritten) {
  TTemporaryFolder folder;
  std::filesystem::create_directory(folder.Path() / "folder");
  folder.Put("file", "earlier");
  for (const std::u16string& path : {folder.File("folder"), folder.File("missing/x"), folder.File("file/x"),
                                     folder.File("new/"), std::u16string()}) {
    try {
      TOutputFile file(path);
      ADD_FAILURE() << ToUtf8(path);
    } catch (const EOSError& error) {
      EXPECT_NE(error.Code(), 0u);
      EXPECT_EQ(error.Object(), path);
      EXPECT_FALSE(error.Operation().empty());
    }
  }
  EXPECT_EQ(folder.Count(), 2u);
  EXPECT_EQ(folder.Get("file"), "earlier");
}

TEST(OutputFile, SeveralAtOnceKeepApart) {
  TTemporaryFolder folder;
  TOutputFile first(folder.File("x"));
  TOutputFile second(folder.File("x"));
  first.Write("first");
  second.Write("second");
  second.Commit();
  EXPECT_EQ(folder.Get("x"), "second");
  first.Commit();
  EXPECT_EQ(folder.Get("x"), "first");
  EXPECT_EQ(folder.Count(), 1u);
}

TEST(FileStream, AScratchFileIsReadBackAndLeavesNothing) {
  TTemporaryFolder folder;
  {
    TFileStream scratch = TFileStream::CreateScratch(folder.File("beside"));
    const std::string written = WritePieces(scratch);
    EXPECT_EQ(scratch.Size(), written.size());
    scratch.Seek(0);
    std::string back, buffer(70'000, ' ');
    for (size_t length; (length = scratch.Read(buffer.data(), buffer.size())) > 0;) back.append(buffer, 0, length);
    EXPECT_EQ(back, written);
  }
  EXPECT_EQ(folder.Count(), 0u);
  EXPECT_THROW(TFileStream::CreateScratch(folder.File("missing/x")), EOSError);
  EXPECT_THROW(TFileStream::OpenForReading(folder.File("")), EOSError);
  EXPECT_THROW(TFileStream::OpenForReading(folder.File("missing")), EOSError);
}

}  // namespace Vantrel
