// Sends a mail through the system's sendmail.

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "automation/mail/MailTransport.h"
#include "platform/files/FileStream.h"
#include "platform/system/ChildProcess.h"
#include "platform/text/Text.h"

namespace Vantrel::Mail {

namespace {

constexpr const char* kUsualPlaces[] = {"/usr/sbin/sendmail", "/usr/lib/sendmail"};
// Some programs of that name deliver a mail themselves before they end.
constexpr int64_t kPatienceMilliseconds = 10 * 60 * 1000;
constexpr size_t kBufferSize = 64 * 1024;

bool IsThere(const char* pPath) {
  try {
    TFileStream::OpenForReading(FromUtf8(pPath));
    return true;
  } catch (const EOSError& error) {
    // Some systems do not let users read the program.
    return ClassifyOSError(error.Code()) == TErrorKind::ekAccessDenied;
  }
}

std::string FindSendmail() {
  for (const char* place : kUsualPlaces) {
    if (IsThere(place)) return place;
  }
  throw EMailError(
      "No mail server is named, and this system has no sendmail program: name a mail server (option MailServer), or "
      "install a program that brings sendmail.");
}

// "--" keeps the following arguments from being read as options. With -i, dots on lines of their own have no meaning.
std::vector<std::string> Arguments(const TMailEnvelope& pEnvelope) {
  std::vector<std::string> arguments{"-i"};
  if (pEnvelope.fFrom) arguments.insert(arguments.end(), {"-f", pEnvelope.fFrom->fAddress});
  arguments.push_back("--");
  for (const TMailAddress& recipient : pEnvelope.fTo) arguments.push_back(recipient.fAddress);
  return arguments;
}

// False when the program stopped reading.
bool FeedMail(TMailSource& pMail, TChildProcess& pProcess) {
  std::string buffer(kBufferSize, '\0');
  while (const size_t length = pMail.Read(buffer.data(), buffer.size())) {
    // Local programs expect the system's own line ends. A composed mail has carriage returns nowhere else.
    std::string lines = buffer.substr(0, length);
    lines.erase(std::remove(lines.begin(), lines.end(), '\r'), lines.end());
    if (!pProcess.Feed(lines)) return false;
  }
  return true;
}

// The program's output on one line, after a colon.
std::string Output(std::string_view pText) {
  while (!pText.empty() && static_cast<unsigned char>(pText.back()) <= ' ') pText.remove_suffix(1);
  std::string text(pText);
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text.empty() ? "" : ": " + ToDisplay(FromNativeBytes(text));
}

void Check(const std::string& pProgram, const TChildResult& pResult, bool pComplete) {
  const std::string name = ToQuotedDisplay(FromNativeBytes(pProgram));
  const std::string output = Output(pResult.fOutput);
  if (pResult.fSignal != 0) throw EMailError(fmt::format("{} was ended by signal {}{}", name, pResult.fSignal, output));
  if (pResult.fExitCode != 0)
    throw EMailError(fmt::format("{} refused the mail with exit code {}{}", name, pResult.fExitCode, output));
  if (!pComplete) throw EMailError(fmt::format("{} ended before it had read the whole mail{}", name, output));
}

}  // namespace

void CheckSendmail(const std::string& pProgram) {
  if (!TChildProcess::IsAvailable())
    throw EMailError("No mail server is named, and this system has no sendmail program: name a mail server.");
  if (pProgram.empty()) FindSendmail();
}

void SendToSendmail(TMailSource& pMail, const TMailEnvelope& pEnvelope, const std::string& pProgram) {
  CheckSendmail(pProgram);
  const std::string program = pProgram.empty() ? FindSendmail() : pProgram;
  try {
    TChildProcess process(program, Arguments(pEnvelope), kPatienceMilliseconds);
    const bool complete = FeedMail(pMail, process);
    Check(program, process.Finish(), complete);
  } catch (const EOSError& error) {
    if (error.Object() != FromNativeBytes(program)) throw;
    throw EMailError(
        fmt::format("The mail program {} failed: {}. Check that it is there and works, or name a mail server.",
                    ToQuotedDisplay(error.Object()), OSErrorText(error.Code())));
  }
}

}  // namespace Vantrel::Mail
