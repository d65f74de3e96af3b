#pragma once

// Saves and copies what a pane shows.

#include <QFont>
#include <QString>
#include <functional>

#include "presentation/drawing/Drawing.h"

class QImage;
class QWidget;

namespace Vantrel::Window {

// Writes a drawing as SVG, or as PNG if the name ends so. The file replaces its target when it is complete. Any thread.
// An exception names the file if it cannot be written.
void WritePictureFile(const Drawing::TDrawing& pDrawing, const std::u16string& pFile, const QFont& pFont);

// Asks for a file and writes a picture there, on another thread. pMakeDrawing is called on that thread. Tells if it
// fails.
void SavePictureAs(QWidget* pParent, const QString& pName, const QFont& pFont,
                   std::function<Drawing::TDrawing()> pMakeDrawing);

void CopyPicture(const QImage& pImage);

}  // namespace Vantrel::Window
