// Archives there and back, hand-made ones, every truncation and damaged byte.

#include <gmock/gmock.h>

#include "export/xml/ZipFile.h"
#include "tests/support/Failures.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Zip;
using testing::HasSubstr;
using Vantrel::Testing::MessageOf;
using Vantrel::Testing::TTemporaryFolder;

std::string ReadAll(IByteSource& pSource, size_t pPiece = 1000) {
  std::string contents, buffer(pPiece, ' ');
  for (size_t length; (length = pSource.Read(buffer.data(), buffer.size())) > 0;) contents.append(buffer, 0, length);
  return contents;
}

void Pack(const TTemporaryFolder& pFolder, std::string_view pContents, std::u16string_view pEntry) {
  TZipOutput output(pFolder.File("x.zip"), pEntry, {});
  output.Write(pContents);
  output.Commit();
}

// An entry of an archive that is put together by hand, without any library. The data are not packed.
struct TStored {
  std::string fName;
  std::string fData;
  uint32_t fChecksum = 0x01D11CD4;  // of "<a/>", by Python's zlib.crc32
  uint32_t fFlags = 0;
  uint32_t fMethod = 0;
};

void Put(std::string& pTarget, uint64_t pNumber, int pBytes) {
  for (; pBytes > 0; --pBytes, pNumber >>= 8) pTarget += static_cast<char>(pNumber & 0xFF);
}

std::string HandMade(const std::vector<TStored>& pEntries) {
  std::string archive, directory;
  for (const TStored& entry : pEntries) {
    std::string shared;  // what both headers hold in common
    Put(shared, 20, 2);
    Put(shared, entry.fFlags, 2);
    Put(shared, entry.fMethod, 2);
    Put(shared, 0x21 << 16, 4);  // 1980-01-01 00:00
    Put(shared, entry.fChecksum, 4);
    Put(shared, entry.fData.size(), 4);
    Put(shared, entry.fData.size(), 4);
    Put(shared, entry.fName.size(), 2);
    Put(shared, 0, 2);
    directory += "PK\x01\x02";
    Put(directory, 20, 2);
    directory += shared;
    Put(directory, 0, 10);
    Put(directory, archive.size(), 4);
    directory += entry.fName;
    archive += "PK\x03\x04" + shared + entry.fName + entry.fData;
  }
  std::string end = "PK\x05\x06";
  Put(end, 0, 4);
  Put(end, pEntries.size(), 2);
  Put(end, pEntries.size(), 2);
  Put(end, directory.size(), 4);
  Put(end, archive.size(), 4);
  Put(end, 0, 2);
  return archive + directory + end;
}

TEST(ZipFile, WhatIsWrittenIsReadBack) {
  TTemporaryFolder folder;
  folder.Put("x.zip", "earlier");
  std::string contents;
  for (int64_t i = 0; i < 300'000; ++i) contents += "<Item name=\"" + std::to_string(i * 7919) + "\"/>\r\n";
  {
    TZipOutput abandoned(folder.File("x.zip"), u"a.xml", {});
    abandoned.Write(contents);
  }
  EXPECT_EQ(folder.Get("x.zip"), "earlier");
  Pack(folder, contents, u"\xE9.xml");
  EXPECT_EQ(folder.Count(), 1u);
  EXPECT_LT(folder.Get("x.zip").size(), contents.size() / 3);
  {
    TZipXMLSource source(folder.File("x.zip"));
    EXPECT_EQ(source.Size(), contents.size());
    EXPECT_TRUE(ReadAll(source, 70'000) == contents);
  }
  Pack(folder, "", u"empty.XML");
  TZipXMLSource empty(folder.File("x.zip"));
  EXPECT_EQ(ReadAll(empty), "");
}

TEST(ZipFile, FindsTheOneXMLFile) {
  TTemporaryFolder folder;
  const auto read = [&](const std::vector<TStored>& pEntries) {
    folder.Put("x.zip", HandMade(pEntries));
    return ReadAll(*OpenXMLSource(folder.File("x.zip")));
  };
  EXPECT_EQ(read({{"readme.txt", "text"}, {"folder/a.Xml", "<a/>"}, {"__MACOSX/folder/._a.xml", "junk"}}), "<a/>");
  // Of an export to ".zip".
  EXPECT_EQ(read({{".xml", "<a/>"}}), "<a/>");
  const auto refused = [&](const std::vector<TStored>& pEntries) {
    return MessageOf<EException>([&] { read(pEntries); });
  };
  EXPECT_THAT(refused({{"readme.txt", "text"}, {"xml", "<a/>"}, {"a.xml/", ""}}), HasSubstr("holds no XML file"));
  EXPECT_THAT(refused({}), HasSubstr("holds no XML file"));
  EXPECT_THAT(refused({{"a.xml", "<a/>"}, {"b.XML", "<a/>"}}), HasSubstr("more than one XML file"));
  EXPECT_THAT(refused({{"a.xml", "<a/>", 0x01D11CD5}}), HasSubstr("wrong checksum"));
  EXPECT_THAT(refused({{"a.xml", "<a/>", 0x01D11CD4, 1}}), HasSubstr("is encrypted"));
  EXPECT_THAT(refused({{"a.xml", "<a/>", 0x01D11CD4, 0, 99}}), HasSubstr("cannot be read"));
  EXPECT_THAT(refused({{"a.xml", "<a/>", 0x01D11CD4, 0, 8}}), HasSubstr("is damaged"));
}

TEST(ZipFile, ArchivesAreToldByTheirFirstBytesOrTheirName) {
  TTemporaryFolder folder;
  folder.Put("plain.xml", "<plain/>");
  folder.Put("short", "P");
  folder.Put("packed", HandMade({{"a.xml", "<a/>"}}));
  folder.Put("text.ZIP", "<a/>");
  EXPECT_EQ(ReadAll(*OpenXMLSource(folder.File("plain.xml"))), "<plain/>");
  EXPECT_EQ(ReadAll(*OpenXMLSource(folder.File("short"))), "P");
  EXPECT_EQ(ReadAll(*OpenXMLSource(folder.File("packed"))), "<a/>");
  const std::string message = MessageOf<EException>([&] { OpenXMLSource(folder.File("text.ZIP")); });
  EXPECT_THAT(message, HasSubstr("This is not a zip archive"));
  EXPECT_THAT(message, HasSubstr("text.ZIP"));
  EXPECT_THROW(OpenXMLSource(folder.File("missing.zip")), EOSError);
  EXPECT_THROW(TZipOutput(folder.File("missing/x.zip"), u"a.xml", {}), EOSError);
}

TEST(ZipFile, NoDamagePassesForTheContents) {
  TTemporaryFolder folder;
  const std::string contents = "<a>some text, some text, some more text</a>";
  Pack(folder, contents, u"a.xml");
  const std::string archive = folder.Get("x.zip");
  const auto read = [&](const std::string& pArchive) {
    folder.Put("damaged.zip", pArchive);
    return ReadAll(*OpenXMLSource(folder.File("damaged.zip")));
  };
  for (size_t length = 0; length < archive.size(); ++length)
    EXPECT_NE(MessageOf<EException>([&] { read(archive.substr(0, length)); }), "") << length;
  int refused = 0;
  for (size_t at = 0; at < archive.size(); ++at) {
    std::string damaged = archive;
    damaged[at] ^= 0x55;
    // A time, say, may well be another one.
    refused += !MessageOf<EException>([&] { EXPECT_EQ(read(damaged), contents) << at; }).empty();
  }
  EXPECT_GT(refused, static_cast<int>(archive.size()) / 3);
}

}  // namespace
