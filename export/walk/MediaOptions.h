#pragma once

// The settings of each kind of output, with what the global options say.

#include "model/options/GlobalOptions.h"

namespace Vantrel::Exporting {

// The settings of every kind of output, which the global options hold and must outlive this.
class TMediaOptions {
 public:
  explicit TMediaOptions(TGlobalOptions& pOptions) : fOptions(pOptions) {}

  TMediaSettings& Of(TMediaType pMedia) { return fOptions.Media(pMedia); }
  // A copy whose unit fields hold what counts: its own or, when it does not override them, the global options'; and
  // plain byte values only where no unit of its own goes first.
  TMediaSettings Effective(TMediaType pMedia) const;
  const TGlobalOptions& GlobalOptions() const { return fOptions; }

 private:
  TGlobalOptions& fOptions;
};

}  // namespace Vantrel::Exporting
