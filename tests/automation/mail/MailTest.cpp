// Addresses and lists of them; mails read piece by piece; headers of any text.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "automation/mail/Mail.h"
#include "automation/mail/MailAddress.h"
#include "automation/mail/MailSource.h"
#include "automation/mail/MailText.h"
#include "tests/support/Failures.h"
#include "tests/support/NastyText.h"
#include "tests/support/TemporaryFolder.h"

// What mails look like to a reader, and what servers make of them, is in mail_test.py.

namespace Vantrel::Mail {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MailTest, ListsAreSplitOutsideQuotesAndBrackets) {
  EXPECT_THAT(SplitMailAddresses(u""), IsEmpty());
  EXPECT_THAT(SplitMailAddresses(u" ;, ;"), IsEmpty());
  EXPECT_THAT(SplitMailAddresses(u"a@b"), ElementsAre(u"a@b"));
  EXPECT_THAT(SplitMailAddresses(u" a@b ;c@d,e@f, "), ElementsAre(u"a@b", u"c@d", u"e@f"));
  EXPECT_THAT(SplitMailAddresses(u"\"Last, First; Jr\" <a@b>;Name <c@d>"),
              ElementsAre(u"\"Last, First; Jr\" <a@b>", u"Name <c@d>"));
  EXPECT_THAT(SplitMailAddresses(u"\"a\\\",b\" <a@b>,c@d"), ElementsAre(u"\"a\\\",b\" <a@b>", u"c@d"));
  EXPECT_THAT(SplitMailAddresses(u"\"a<b\" <a@b>,c@d"), ElementsAre(u"\"a<b\" <a@b>", u"c@d"));
  EXPECT_THAT(SplitMailAddresses(u"<a;b>;c@d"), ElementsAre(u"<a;b>", u"c@d"));
  EXPECT_THAT(SplitMailAddresses(u"\"never closed, a@b"), ElementsAre(u"\"never closed, a@b"));
  EXPECT_THAT(SplitMailAddresses(u"\"\\"), ElementsAre(u"\"\\"));
}

TEST(MailTest, AddressesAreTakenApart) {
  const std::string longest = std::string(64, 'l') + "@" + std::string(63, 'd') + "." + std::string(63, 'd');
  const struct {
    std::u16string fText, fName;
    std::string fAddress;
  } cases[] = {{u"a@b", u"", "a@b"},
               {u" a.b+c@d-e.example ", u"", "a.b+c@d-e.example"},
               {u"<a@b>", u"", "a@b"},
               {u"Name<a@b>", u"Name", "a@b"},
               {u"J\u00F6rg M <a@b>", u"J\u00F6rg M", "a@b"},
               {u"\"Last, \\\"First\\\" <x>\" <a@b>", u"Last, \"First\" <x>", "a@b"},
               {u"O'Neil & 'Sons' <o'n{}@[192.0.2.1]>", u"O'Neil & 'Sons'", "o'n{}@[192.0.2.1]"},
               {std::u16string(longest.begin(), longest.end()), u"", longest}};
  for (const auto& [text, name, address] : cases) {
    const TMailAddress parsed = ParseMailAddress(text);
    EXPECT_EQ(parsed.fName, name);
    EXPECT_EQ(parsed.fAddress, address);
  }
}

TEST(MailTest, WhatIsNoAddressIsRefused) {
  const std::u16string texts =
      u"| |a|@|a@|@b|a@b@c|a b@c|a@b c|.a@b|a.@b|a..b@c|a@.b|a@b.|a@b..c|a@b_c|<a@b|a@b>|<>|>|<|><|"
      u"n <a@b> x|n <m> <a@b>|n <a@b>>|\"n <a@b>|\"n\"x <a@b>|n\" <a@b>|\"n\\\" <a@b>|a@b\n|a@b\r\nBcc: c@d|"
      u"n\nm <a@b>|\"n\\\nm\" <a@b>|n\u0085m <a@b>|-f@b|<-f@b>|a,b@c|a@[]|a@[b|\u00E4@b|a@\u00E4.de";
  for (size_t at = 0, end = 0; end != texts.npos; at = end + 1) {
    end = texts.find(u'|', at);
    const std::u16string text = texts.substr(at, end - at);
    EXPECT_THROW(CheckMailAddress(text), EInvalidArgumentValue) << std::string(text.begin(), text.end());
  }
  EXPECT_THROW(CheckMailAddress(std::u16string(65, u'l') + u"@b"), EInvalidArgumentValue);
  EXPECT_THROW(CheckMailAddress(u"a@" + std::u16string(64, u'd')), EInvalidArgumentValue);
  EXPECT_EQ(Vantrel::Testing::MessageOf<EInvalidArgumentValue>([] { CheckMailAddress(u"x\r\nBcc: y"); }),
            "\"x\\r\\nBcc: y\" is no mail address");
}

TEST(MailTest, Dates) {
  const auto date = [](std::string_view pIso) {
    TKivFileTime time;
    EXPECT_TRUE(TryParseIso(pIso, time));
    return MailDate(time);
  };
  EXPECT_EQ(date("1999-12-31T23:59:59.9999999Z"), "Fri, 31 Dec 1999 23:59:59 +0000");
  EXPECT_EQ(date("2024-02-29T00:00:00Z"), "Thu, 29 Feb 2024 00:00:00 +0000");
  EXPECT_EQ(date("2026-11-01T07:08:09Z"), "Sun, 01 Nov 2026 07:08:09 +0000");
}

std::string ReadAll(TMailSource& pMail, size_t pMost) {
  std::string bytes, buffer(pMost, '\0');
  while (const size_t length = pMail.Read(buffer.data(), buffer.size())) bytes.append(buffer, 0, length);
  EXPECT_EQ(pMail.Read(buffer.data(), buffer.size()), 0u);
  return bytes;
}

// However a mail is asked for, it is the same and as long as announced.
TEST(MailTest, ReadsTheSameInPiecesOfAnySize) {
  const Vantrel::Testing::TTemporaryFolder folder;
  TMailMessage message;
  message.fText = "text\n";
  const TMailEnvelope envelope{ParseMailAddress(u"a@b"), {ParseMailAddress(u"N <c@d>")}};
  for (const size_t size : {0, 1, 2, 3, 56, 57, 58, 58'367, 58'368, 58'369, 150'000}) {
    folder.Put(std::to_string(size), std::string(size, 'x'));
    message.fAttachments.push_back(folder.File(std::to_string(size)));
  }
  for (size_t attachments : {message.fAttachments.size(), size_t{3}, size_t{1}, size_t{0}}) {
    message.fAttachments.resize(attachments);
    const auto read = [&](size_t pMost) {
      TMailSource mail(message, envelope, {TKivFileTime::FromUnix(0, 0), "unique", "host"});
      const std::string bytes = ReadAll(mail, pMost);
      EXPECT_EQ(bytes.size(), mail.Size());
      return bytes;
    };
    const std::string whole = read(1 << 20);
    for (const size_t most : {1, 3, 7, 4096, 65536}) EXPECT_EQ(read(most), whole);
  }
}

// Whatever is in a name or a subject: ASCII, no line that is too long, and no line that could begin a header of its
// own.
TEST(MailTest, HeadersKeepTheirFormForAnyText) {
  Vantrel::Testing::TNastyText nasty(11);
  for (int round = 0; round < 3000; ++round) {
    const std::u16string text = nasty.Next(60);
    for (const std::string& header : {TextHeader("Subject", text), AddressHeader("To", {{text, "a@b"}, {text, "c@d"}}),
                                      "Content-Disposition: attachment" + FileNameParameter(text) + "\r\n"}) {
      ASSERT_TRUE(header.ends_with("\r\n"));
      size_t start = 0;
      for (size_t end = header.find("\r\n"); end != std::string::npos; end = header.find("\r\n", start)) {
        const std::string line = header.substr(start, end - start);
        ASSERT_LE(line.size(), 78u);
        ASSERT_TRUE(std::all_of(line.begin(), line.end(), [](char pChar) { return pChar >= ' ' && pChar <= '~'; }))
            << line;
        ASSERT_TRUE(start == 0 || line.find_first_not_of(' ') == 1) << header;
        start = end + 2;
      }
    }
  }
}

}  // namespace
}  // namespace Vantrel::Mail
