#pragma once

// Draws the pictures of a run's exports. It needs no display.

#include <QGuiApplication>
#include <memory>

#include "export/pictures/PictureRenderer.h"

namespace Vantrel::Window {

// Starts Qt with the first picture if no window has started it: runs without pictures do not wait for its fonts.
class TPictureRenderer final : public Pictures::IPictureRenderer {
 public:
  std::vector<uint32_t> Render(const Drawing::TDrawing& pDrawing) override;

 private:
  std::unique_ptr<QGuiApplication> fOwnApplication;
};

}  // namespace Vantrel::Window
