#include "automation/mail/MailSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>

#include "automation/mail/MailText.h"
#include "platform/files/Paths.h"

namespace Vantrel::Mail {

namespace {

constexpr size_t kLongestTextLine = 998;
constexpr size_t kContentsPerPiece = kBase64BytesPerLine * 1024;

// Exports are UTF-8.
const char* ContentType(std::u16string_view pFileName) {
  constexpr struct {
    std::u16string_view fExtension;
    const char* fType;
  } kTypes[] = {
      {u".csv", "text/csv; charset=utf-8"},   {u".txt", "text/plain; charset=utf-8"},
      {u".html", "text/html; charset=utf-8"}, {u".htm", "text/html; charset=utf-8"},
      {u".xml", "application/xml"},           {u".zip", "application/zip"},
      {u".pdf", "application/pdf"},           {u".png", "image/png"},
  };
  for (const auto& [extension, type] : kTypes)
    if (HasExtension(pFileName, extension)) return type;
  return "application/octet-stream";
}

// Turns every kind of line end into CRLF and adds one at the end.
std::string WithNetworkLineEnds(std::string_view pText) {
  std::string result;
  for (size_t i = 0; i < pText.size(); ++i) {
    const bool lineEnd = pText[i] == '\n' || pText[i] == '\r';
    if (pText.substr(i, 2) == "\r\n") ++i;
    if (lineEnd) {
      result += "\r\n";
    } else {
      result += pText[i];
    }
  }
  if (!result.ends_with("\r\n")) result += "\r\n";
  return result;
}

// Whether every server takes the text as it is.
bool IsSevenBitText(std::string_view pText) {
  size_t length = 0;
  for (const char character : pText) {
    length = character == '\n' ? 0 : length + 1;
    const bool allowed =
        (character >= ' ' && character <= '~') || character == '\t' || character == '\r' || character == '\n';
    if (!allowed || length > kLongestTextLine) return false;
  }
  return true;
}

std::string TextPart(std::string_view pText) {
  const std::string text = WithNetworkLineEnds(pText);
  const bool plain = IsSevenBitText(text);
  return fmt::format("Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: {}\r\n\r\n{}",
                     plain ? "7bit" : "base64", plain ? text : Base64Lines(text));
}

uint64_t EncodedSize(uint64_t pSize) {
  const uint64_t lines = (pSize + kBase64BytesPerLine - 1) / kBase64BytesPerLine;
  return (pSize + 2) / 3 * 4 + lines * 2;
}

std::string ClosingLine(std::string_view pBoundary) {
  return fmt::format("\r\n--{}--\r\n", pBoundary);
}

// Reads until the buffer is full or the file ends. A read may return less than requested.
size_t ReadFully(TFileStream& pFile, std::string& pBuffer) {
  size_t length = 0;
  while (length < pBuffer.size()) {
    const size_t count = pFile.Read(pBuffer.data() + length, pBuffer.size() - length);
    if (count == 0) break;
    length += count;
  }
  return length;
}

}  // namespace

TMailStamp TMailStamp::Make(std::string_view pHost) {
  std::random_device random;
  std::string unique;
  for (int i = 0; i < 4; ++i) unique += fmt::format("{:08x}", random());
  return {TKivFileTime::Now(), std::move(unique), std::string(pHost)};
}

TMailSource::TMailSource(const TMailMessage& pMessage, const TMailEnvelope& pEnvelope, const TMailStamp& pStamp)
    // No encoding used here produces "=_".
    : fBoundary("=_" + pStamp.fUnique), fPiece(Header(pMessage, pEnvelope, pStamp)) {
  for (const std::u16string& path : pMessage.fAttachments) {
    fAttachments.push_back({TFileStream::OpenForReading(path), AttachmentHead(path)});
    fSize += fAttachments.back().fHead.size() + EncodedSize(fAttachments.back().fFile.Size());
  }
  if (fAttachments.empty()) {
    fPiece += TextPart(pMessage.fText);
  } else {
    fPiece += fmt::format("Content-Type: multipart/mixed;\r\n boundary=\"{}\"\r\n\r\n--{}\r\n", fBoundary, fBoundary);
    fPiece += TextPart(pMessage.fText);
    fSize += ClosingLine(fBoundary).size();
  }
  fSize += fPiece.size();
}

std::string TMailSource::Header(const TMailMessage& pMessage, const TMailEnvelope& pEnvelope,
                                const TMailStamp& pStamp) {
  std::string header = fmt::format("Date: {}\r\n", MailDate(pStamp.fTime));
  if (pEnvelope.fFrom) header += AddressHeader("From", {*pEnvelope.fFrom});
  header += AddressHeader("To", pEnvelope.fTo);
  header += TextHeader("Subject", pMessage.fSubject);
  header += fmt::format("Message-ID: <{}@{}>\r\n", pStamp.fUnique, pStamp.fHost);
  // Prevents automatic holiday replies.
  header += "Auto-Submitted: auto-generated\r\nMIME-Version: 1.0\r\n";
  return header;
}

std::string TMailSource::AttachmentHead(const std::u16string& pPath) const {
  const std::u16string_view name = FileNameOfPath(pPath, NativePathDelimiter());
  return fmt::format(
      "\r\n--{}\r\nContent-Type: {}\r\nContent-Disposition: attachment{}\r\nContent-Transfer-Encoding: base64\r\n\r\n",
      fBoundary, ContentType(name), FileNameParameter(name));
}

bool TMailSource::NextPiece() {
  fPosition = 0;
  while (fCurrent < fAttachments.size()) {
    TAttachment& attachment = fAttachments[fCurrent];
    if (!std::exchange(fInside, true)) {
      fPiece = attachment.fHead;
      return true;
    }
    fContents.resize(kContentsPerPiece);
    if (const size_t length = ReadFully(attachment.fFile, fContents); length > 0) {
      fPiece = Base64Lines(std::string_view(fContents).substr(0, length));
      return true;
    }
    fInside = false;
    ++fCurrent;
  }
  if (fAttachments.empty() || std::exchange(fClosed, true)) return false;
  fPiece = ClosingLine(fBoundary);
  return true;
}

size_t TMailSource::Read(char* pBuffer, size_t pLength) {
  if (fPosition == fPiece.size() && !NextPiece()) {
    fPiece.clear();
    return 0;
  }
  const size_t length = std::min(pLength, fPiece.size() - fPosition);
  std::memcpy(pBuffer, fPiece.data() + fPosition, length);
  fPosition += length;
  return length;
}

}  // namespace Vantrel::Mail
