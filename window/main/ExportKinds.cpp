#include "window/main/ExportKinds.h"

#include <QCoreApplication>

namespace Vantrel::Window {

const std::vector<TExportKind>& ExportKinds() {
  using CommandLine::TExportFormat;
  using CommandLine::TPictureSubject;
  const auto text = [](const char* pText) { return QCoreApplication::translate("ExportKinds", pText); };
  const auto file = [&](const char* pFilter, const char* pSuffix, TExportFormat pFormat) {
    return TExportKind{text(pFilter), QString::fromLatin1(pSuffix), pFormat, {}};
  };
  const auto picture = [&](const char* pFilter, TPictureSubject pSubject) {
    return TExportKind{text(pFilter), QStringLiteral("png"), TExportFormat::efXML, pSubject};
  };
  static const std::vector<TExportKind> kinds{
      file(QT_TRANSLATE_NOOP("ExportKinds", "Scan file (*.xml *.xml.zip)"), "xml", TExportFormat::efXML),
      file(QT_TRANSLATE_NOOP("ExportKinds", "Report (*.txt)"), "txt", TExportFormat::efReport),
      file(QT_TRANSLATE_NOOP("ExportKinds", "CSV (*.csv)"), "csv", TExportFormat::efCSV),
      file(QT_TRANSLATE_NOOP("ExportKinds", "JSON (*.json)"), "json", TExportFormat::efJSON),
      file(QT_TRANSLATE_NOOP("ExportKinds", "JSON, a row in each line (*.jsonl)"), "jsonl", TExportFormat::efJSONLines),
      file(QT_TRANSLATE_NOOP("ExportKinds", "For ncdu (*.ncdu.json)"), "ncdu.json", TExportFormat::efNcdu),
      file(QT_TRANSLATE_NOOP("ExportKinds", "Columns between tabs (*.tsv)"), "tsv", TExportFormat::efTabText),
      file(QT_TRANSLATE_NOOP("ExportKinds", "List of paths (*.paths.txt)"), "paths.txt", TExportFormat::efPathList),
      picture(QT_TRANSLATE_NOOP("ExportKinds", "Treemap (*.png *.svg)"), TPictureSubject::psTreemap),
      picture(QT_TRANSLATE_NOOP("ExportKinds", "Chart of the folders (*.png *.svg)"), TPictureSubject::psFolders),
      picture(QT_TRANSLATE_NOOP("ExportKinds", "Chart of the extensions (*.png *.svg)"), TPictureSubject::psExtensions),
      picture(QT_TRANSLATE_NOOP("ExportKinds", "Chart of the file types (*.png *.svg)"), TPictureSubject::psFileTypes),
      picture(QT_TRANSLATE_NOOP("ExportKinds", "Chart of the owners (*.png *.svg)"), TPictureSubject::psUsers),
      picture(QT_TRANSLATE_NOOP("ExportKinds", "Chart of the file ages (*.png *.svg)"), TPictureSubject::psFileAges),
      picture(QT_TRANSLATE_NOOP("ExportKinds", "Chart of the history (*.png *.svg)"), TPictureSubject::psHistory),
  };
  return kinds;
}

}  // namespace Vantrel::Window
