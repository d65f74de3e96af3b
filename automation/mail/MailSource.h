#pragma once

// A composed mail as bytes; attachments are read while it is sent.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/mail/Mail.h"
#include "automation/mail/MailAddress.h"
#include "platform/files/ByteStreams.h"
#include "platform/files/FileStream.h"
#include "platform/system/FileTime.h"

namespace Vantrel::Mail {

// The sender and the recipients of a mail.
struct TMailEnvelope {
  std::optional<TMailAddress> fFrom;  // none: sendmail fills it in
  std::vector<TMailAddress> fTo;
};

// The values that differ between mails with the same contents.
struct TMailStamp {
  TKivFileTime fTime;
  std::string fUnique;  // letters and digits that no other mail has
  std::string fHost;    // where it was made
  // The current time and random letters.
  static TMailStamp Make(std::string_view pHost);
};

// A mail as the bytes that are sent: header, text, and the attachments one after the other. Each attachment is read
// from its file when it is sent. Lines end with CRLF and hold ASCII only. libcurl has a composer too, but its output
// cannot go to another program, and it leaves texts beyond ASCII to its caller. So both ways of sending use this one.
class TMailSource final : public IByteSource {
 public:
  // Opens all attachments, so that a missing one is found before sending: EOSError that names it.
  TMailSource(const TMailMessage& pMessage, const TMailEnvelope& pEnvelope, const TMailStamp& pStamp);

  // EOSError when an attachment cannot be read to its end.
  size_t Read(char* pBuffer, size_t pLength) override;

  // The number of bytes in all, provided that no attachment changes.
  uint64_t Size() const { return fSize; }

 private:
  struct TAttachment {
    TFileStream fFile;
    std::string fHead;
  };
  static std::string Header(const TMailMessage& pMessage, const TMailEnvelope& pEnvelope, const TMailStamp& pStamp);
  std::string AttachmentHead(const std::u16string& pPath) const;
  // Puts the next piece into fPiece; false at the end.
  bool NextPiece();

  std::string fBoundary;
  std::vector<TAttachment> fAttachments;
  uint64_t fSize = 0;
  std::string fPiece;     // the bytes to hand out next
  size_t fPosition = 0;   // in the piece
  size_t fCurrent = 0;    // index of the current attachment
  bool fInside = false;   // whether its header has been written
  bool fClosed = false;   // whether the last line has been written
  std::string fContents;  // of an attachment, before encoding
};

}  // namespace Vantrel::Mail
