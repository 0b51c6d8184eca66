#pragma once

#include <QFont>

#include "ZML/FlowGraphFont.h"

namespace ZML::Qt6 {

// The QFont the canvas view draws a text of `font` with: the application's default family when
// the font names none, `font.size` pixels high. The backend's text measurer measures with the
// same font, so node boxes fit what is drawn in them.
QFont CanvasQFont(const ZML::FlowGraphFont& font);

}  // namespace ZML::Qt6
