#include "qtcolor.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <map>
#include <utility>

#include "ZML/Icon.h"
#include "qzml/Icons.h"

namespace ZML::Qt6 {

namespace {

QImage Render(const ZML::Icon& icon, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(::Qt::transparent);
    const std::string svg = icon.SvgText();
    if (!svg.empty()) {
        QSvgRenderer renderer(QByteArray::fromStdString(svg));
        QPainter painter(&image);
        renderer.render(&painter, QRectF(0, 0, size, size));
        return image;
    }
    QImage bitmap(ToQString(icon.Path()));
    if (bitmap.isNull()) {
        return image;
    }
    return bitmap.scaled(size, size, ::Qt::KeepAspectRatio, ::Qt::SmoothTransformation);
}

}  // namespace

QImage IconImage(const std::wstring& name, int size) {
    // The cache belongs to the user-interface thread, like every caller of this function.
    static std::map<std::pair<std::wstring, int>, QImage> cache;
    auto key = std::make_pair(name, size);
    auto found = cache.find(key);
    if (found != cache.end()) {
        return found->second;
    }
    auto icon = qzml_IconCreateFromFile(name);
    QImage image = Render(*icon, size);
    cache.emplace(std::move(key), image);
    return image;
}

}  // namespace ZML::Qt6
