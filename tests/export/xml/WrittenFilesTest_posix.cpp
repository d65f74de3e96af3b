// What is written, read by Python and xmllint; full disks.

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "export/xml/OptionsFile.h"
#include "export/xml/XMLFileStream.h"
#include "export/xml/ZipFile.h"
#include "platform/files/OutputFile.h"
#include "platform/system/Errors.h"
#include "tests/support/NastyText.h"
#include "tests/support/RandomOptions.h"
#include "tests/support/TemporaryFolder.h"

// What is written, read by programs that share nothing with ours.

namespace {

using namespace Vantrel;
using namespace Vantrel::XML;
using Vantrel::Testing::TNastyText;
using Vantrel::Testing::TTemporaryFolder;
using Vantrel::Zip::TZipOutput;

// The program's output; it must end well.
std::string OutputOf(const std::string& pCommand) {
  std::FILE* pipe = popen(pCommand.c_str(), "r");
  std::string output;
  for (int byte; (byte = std::fgetc(pipe)) != EOF;) output += static_cast<char>(byte);
  EXPECT_EQ(pclose(pipe), 0) << pCommand;
  return output;
}

std::string Hex(std::u16string_view pText) {
  std::string result;
  for (const char16_t unit : pText) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%04x", unit);
    result += digits;
  }
  return result;
}

// The exact text from the two forms that a text or an attribute has.
constexpr const char* kExact = R"(
import re, sys, xml.etree.ElementTree as tree
def exact(plain, escaped):
    if escaped is None:
        return plain
    return re.sub(r'\\(\\|u[0-9A-F]{4})', lambda m: '\\' if m[1] == '\\' else chr(int(m[1][1:], 16)), escaped)
)";

// Prints the units of each element's text and of its attribute "a", the exact ones, as hexadecimal digits.
constexpr const char* kReader = R"(
for element in tree.parse(sys.argv[1]).getroot():
    for text in (exact(element.text or '', element.get('Escaped')), exact(element.get('a'), element.get('aEscaped'))):
        print(text.encode('utf-16-be', 'surrogatepass').hex())
)";

// Prints the name and the units of the value of each option in the files.
constexpr const char* kOptionsReader = R"(
for file in sys.argv[1:]:
    for option in tree.parse(file).getroot().iter('Option'):
        value = exact(option.get('Value'), option.get('ValueEscaped'))
        print(option.get('Name'), value.encode('utf-16-be', 'surrogatepass').hex())
)";

// Writes the texts to the sink and returns what the reader has to print.
std::string WriteNasty(IByteSink& pSink) {
  TNastyText nasty(7);
  std::string expected;
  TXMLFileStream stream(pSink);
  TXMLAttributes attributes;
  stream.StartDocument();
  stream.StartElement("All");
  for (int i = 0; i < 3000; ++i) {
    const std::u16string text = nasty.Next(), value = nasty.Next();
    attributes.Clear();
    attributes.Add("a", value);
    stream.AddElement("E", text, attributes);
    expected += Hex(text) + "\n" + Hex(value) + "\n";
  }
  stream.EndElement("All");
  stream.EndDocument();
  return expected;
}

}  // namespace

TEST(WrittenFiles, OtherReadersFindTheSameTexts) {
  TTemporaryFolder folder;
  TOutputFile file(folder.File("x.xml"));
  const std::string expected = WriteNasty(file);
  file.Commit();
  folder.Put("read.py", std::string(kExact) + kReader);
  const std::string path = folder.Path().string();
  EXPECT_EQ(OutputOf("xmllint --noout " + path + "/x.xml 2>&1"), "");
  EXPECT_TRUE(OutputOf("python3 " + path + "/read.py " + path + "/x.xml") == expected);
}

void AddTables(TGlobalOptions& pOptions, Vantrel::Testing::TNastyText& pTexts) {
  auto groups = MakeRef<TFileTypeGroups>();
  const TRef<IFileTypeGroup> group = groups->AddNewGroup();
  group->SetCaption(pTexts.Next());
  group->SetDescription(pTexts.Next());
  group->SetExtensionForIcon(pTexts.Next());
  group->SetPatterns(pTexts.Next());
  pOptions.FileTypeGroups = groups;
  pOptions.UserColors.emplace(pTexts.Next(), 0x0A);
}

TEST(WrittenFiles, OptionsFilesKeepToTheirGrammar) {
  TTemporaryFolder folder;
  Vantrel::Testing::TRandomOptions random(5);
  Vantrel::Testing::TNastyText nasty(5);
  const TGlobalOptions defaults;
  std::string files, grammarSays, expected;
  for (int i = 0; i < 30; ++i) {
    TGlobalOptions options = i == 0 ? defaults : random.Next();
    if (i > 0) AddTables(options, nasty);
    const std::string file = folder.Path().string() + "/" + std::to_string(i) + ".xml";
    Options::SaveOptionsFile(FromNativeBytes(file), options, "Vantrel", "1.0");
    files += " " + file;
    grammarSays += file + " validates\n";
    for (const TOptionInfo& option : AllOptions()) {
      const std::string value = option.fGet(options);
      if (value == option.fGet(defaults)) continue;
      const bool boolean = option.fKind == TOptionKind::okBoolean;
      expected += std::string(option.fName) + " " +
                  Hex(FromNativeBytes(!boolean          ? value
                                      : value == "true" ? "-1"
                                                        : "0"));
      expected += "\n";
    }
  }
  EXPECT_EQ(OutputOf("xmllint --noout --relaxng " VANTREL_SOURCE_DIR "/docs/options-file.rng" + files + " 2>&1"),
            grammarSays);
  folder.Put("read.py", std::string(kExact) + kOptionsReader);
  EXPECT_TRUE(OutputOf("python3 " + folder.Path().string() + "/read.py" + files) == expected);
}

// A limit to the size of files stands in for a disk that gets full: while the text is collected, while it is packed.
TEST(WrittenFiles, AFullDiskLeavesTheEarlierArchive) {
  TTemporaryFolder folder;
  folder.Put("x.zip", "earlier");
  TNastyText nasty(1);
  std::string random;
  for (int i = 0; i < 100'000; ++i) random += Hex(nasty.Next(1));
  const auto handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  for (const bool whilePacking : {false, true}) {
    const rlimit tight{1000, before.rlim_max};
    uint32_t code = 0;
    try {
      TZipOutput archive(folder.File("x.zip"), u"x.xml", {});
      if (!whilePacking) setrlimit(RLIMIT_FSIZE, &tight);
      archive.Write(random);
      setrlimit(RLIMIT_FSIZE, &tight);
      archive.Commit();
    } catch (const EOSError& error) {
      code = error.Code();
    }
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(code, uint32_t{EFBIG});
  }
  std::signal(SIGXFSZ, handlerBefore);
  EXPECT_EQ(folder.Get("x.zip"), "earlier");
  EXPECT_EQ(folder.Count(), 1u);
}
