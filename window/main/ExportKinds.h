#pragma once

// The formats in which the window writes a root.

#include <QString>
#include <optional>
#include <vector>

#include "automation/commandline/CommandLineState.h"

namespace Vantrel::Window {

struct TExportKind {
  QString fFilter;  // as file dialogs show it
  QString fSuffix;
  CommandLine::TExportFormat fFormat = CommandLine::TExportFormat::efXML;
  std::optional<CommandLine::TPictureSubject> fPicture;  // set: a picture, and the format does not count
};

// All that the command line can write, the scan file first.
const std::vector<TExportKind>& ExportKinds();

}  // namespace Vantrel::Window
