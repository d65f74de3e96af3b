#pragma once

// The settings of each kind of output, combined with the global options.

#include "model/options/GlobalOptions.h"

namespace Vantrel::Exporting {

// Gives the settings of every kind of output. The global options hold them and must outlive this object.
class TMediaOptions {
 public:
  explicit TMediaOptions(TGlobalOptions& pOptions) : fOptions(pOptions) {}

  TMediaSettings& Of(TMediaType pMedia) { return fOptions.Media(pMedia); }
  // A copy of the settings with the unit fields that are in effect. They are the media's own, or the global options'
  // unless overridden. Plain byte values are set only if no unit of the media's own takes precedence.
  TMediaSettings Effective(TMediaType pMedia) const;
  const TGlobalOptions& GlobalOptions() const { return fOptions; }

 private:
  TGlobalOptions& fOptions;
};

}  // namespace Vantrel::Exporting
