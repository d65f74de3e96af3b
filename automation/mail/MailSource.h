#pragma once

// A composed mail as bytes, its attachments read while it is sent.

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

// Who sends a mail to whom.
struct TMailEnvelope {
  std::optional<TMailAddress> fFrom;  // none: sendmail fills it in
  std::vector<TMailAddress> fTo;
};

// What makes one mail differ from another with the same contents.
struct TMailStamp {
  TKivFileTime fTime;
  std::string fUnique;  // letters and digits that no other mail has
  std::string fHost;    // where it was made
  // Now, with random letters.
  static TMailStamp Make(std::string_view pHost);
};

// A mail as the bytes that go over the wire: header, text, and the attachments one after the other, each read from its
// file when its turn comes. Lines end with CRLF and hold ASCII only. libcurl has a composer as well, but none that
// another program could be fed with, and it leaves texts beyond ASCII to its caller; so both ways of sending share this
// one.
class TMailSource final : public IByteSource {
 public:
  // Opens all attachments, so that a missing one is found before anything is sent: EOSError that names it.
  TMailSource(const TMailMessage& pMessage, const TMailEnvelope& pEnvelope, const TMailStamp& pStamp);

  // EOSError when an attachment cannot be read to its end.
  size_t Read(char* pBuffer, size_t pLength) override;

  // How many bytes there are in all, provided that no attachment changes.
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
  std::string fPiece;     // what is given out
  size_t fPosition = 0;   // in the piece
  size_t fCurrent = 0;    // the attachment whose turn it is
  bool fInside = false;   // whether its head is out
  bool fClosed = false;   // whether the last line is out
  std::string fContents;  // of an attachment, before encoding
};

}  // namespace Vantrel::Mail
