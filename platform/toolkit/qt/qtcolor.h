#pragma once

// Small conversions shared by the Qt backend's sources.

#include <QColor>
#include <QImage>
#include <QString>
#include <cstdint>
#include <string>

namespace ZML::Qt6 {

// A toolkit colour word: red in the low byte, then green, then blue.
inline QColor ColorFromWord(std::uint32_t word) {
    return QColor(static_cast<int>(word & 0xFF), static_cast<int>((word >> 8) & 0xFF),
                  static_cast<int>((word >> 16) & 0xFF));
}

inline QString ToQString(const std::wstring& text) {
    return QString::fromStdWString(text);
}

inline std::wstring ToWide(const QString& text) {
    return text.toStdWString();
}

// The icon `name` (as qzml_IconCreateFromFile resolves it) drawn at `size` pixels square. Kept in
// a cache for the life of the process (images, not pixmaps, so that the cache may outlive
// the application object), so that views may ask on every paint. Never null: a name
// that matches nothing gives the placeholder drawing.
QImage IconImage(const std::wstring& name, int size);

}  // namespace ZML::Qt6
