#include "canvasitems.h"

#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <algorithm>
#include <cmath>

#include "ZML/FlowGraphConnectionPointEx.h"
#include "ZML/TextMetrics.h"
#include "ZMLQt/CanvasFont.h"
#include "qtcolor.h"

namespace ZML::Qt6 {

namespace {

// The canvas metrics the drawing keeps to (the node rectangles come from the canvas itself).
constexpr qreal kHeaderHeight = 24;
constexpr qreal kRowHeight = 18;
constexpr qreal kPadding = 8;
constexpr int kIconSize = 16;
constexpr qreal kPointRadius = 4;
// Room round a node for point markers, the state badge and the selection outline.
constexpr qreal kMargin = 8;
// Below this scale texts are too small to read and are left out.
constexpr qreal kDetailScale = 0.4;

QColor StateColor(int state) {
    switch (state) {
        case FlowGraphNodeEx::Running:
            return QColor(30, 110, 230);
        case FlowGraphNodeEx::Waiting:
            return QColor(150, 150, 150);
        case FlowGraphNodeEx::Executed:
            return QColor(40, 160, 60);
        case FlowGraphNodeEx::Error:
            return QColor(210, 30, 30);
        case FlowGraphNodeEx::Warning:
            return QColor(235, 150, 0);
        case FlowGraphNodeEx::Information:
            return QColor(60, 140, 200);
        default:
            return {};
    }
}

QString StateLetter(int state) {
    switch (state) {
        case FlowGraphNodeEx::Running:
            return ">";
        case FlowGraphNodeEx::Waiting:
            return "z";
        case FlowGraphNodeEx::Executed:
            return "+";
        case FlowGraphNodeEx::Error:
            return "!";
        case FlowGraphNodeEx::Warning:
            return "!";
        case FlowGraphNodeEx::Information:
            return "i";
        default:
            return {};
    }
}

// The fonts the canvas's geometry measured its captions in (TextMetrics), so that they fit.
const QFont& CaptionFont() {
    static const QFont font = CanvasQFont(CanvasCaptionFont());
    return font;
}

const QFont& PointFont(bool italics) {
    static const QFont plain = CanvasQFont(CanvasPointCaptionFont(false));
    static const QFont italic = CanvasQFont(CanvasPointCaptionFont(true));
    return italics ? italic : plain;
}

QPointF ToPoint(const FlowGraphLocation& at) {
    return QPointF(at.x, at.y);
}

}  // namespace

QPointF PointDirection(const FlowGraphNodeEx& node, const QPointF& point) {
    const auto bounds = node.GetBounds();
    if (point.x() <= bounds.x) {
        return {-1, 0};
    }
    if (point.x() >= bounds.x + bounds.width) {
        return {1, 0};
    }
    if (point.y() <= bounds.y) {
        return {0, -1};
    }
    return {0, 1};
}

// ---- NodeItem -------------------------------------------------------------------------------

NodeItem::NodeItem(std::shared_ptr<FlowGraphNodeEx> node) : node(std::move(node)) {
    setFlag(QGraphicsItem::ItemUsesExtendedStyleOption, false);
    Sync();
}

const std::shared_ptr<FlowGraphNodeEx>& NodeItem::Node() const {
    return node;
}

bool NodeItem::ShownSelected() const {
    return selected;
}

void NodeItem::Sync() {
    if (syncing) {
        return;
    }
    syncing = true;
    // Points refresh what they show just before they are drawn; a change they make comes back
    // here as a node change and is ignored while this copy is taken.
    const auto nodePoints = node->GetFlowConnectionPoints();
    for (const auto& point : nodePoints) {
        point->PreDraw();
    }
    const auto bounds = node->GetBounds();
    const QRectF newBox(0, 0, bounds.width, bounds.height);
    if (newBox != box || textOnly != node->IsTextOnly()) {
        prepareGeometryChange();
    }
    box = newBox;
    caption = ToQString(node->GetCaption());
    icon = node->GetIcon();
    fill = ColorFromWord(node->GetColor());
    outline = ColorFromWord(node->GetOutlineColor());
    textOnly = node->IsTextOnly();
    selected = node->IsSelected();
    state = node->GetState();
    orientation = node->GetOrientation();
    const double range = node->GetProgressMaximum() - node->GetProgressMinimum();
    progress =
        range > 0 ? std::clamp((node->GetProgress() - node->GetProgressMinimum()) / range, 0.0, 1.0)
                  : 0.0;
    if (textOnly) {
        textFont = CanvasQFont(node->GetTextFont());
        textColor = ColorFromWord(selected ? node->GetSelectedTextColor() : node->GetTextColor());
    }
    points.clear();
    const QPointF origin = ToPoint(node->GetLocation());
    for (const auto& point : nodePoints) {
        PointLook look;
        look.at = ToPoint(node->GetPointPosition(point)) - origin;
        look.caption = ToQString(point->GetCaption());
        look.color = ColorFromWord(point->GetColor());
        look.captionColor = ColorFromWord(point->GetCaptionColor());
        look.italics = point->GetItalics();
        look.input = point->IsInput();
        points.push_back(std::move(look));
    }
    setPos(origin);
    setZValue(textOnly ? kTextZ : kNodeZ);
    update();
    syncing = false;
}

QRectF NodeItem::boundingRect() const {
    return box.adjusted(-kMargin, -kMargin, kMargin, kMargin);
}

void NodeItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*) {
    const bool detailed =
        option->levelOfDetailFromTransform(painter->worldTransform()) >= kDetailScale;
    // Small drawings need no smoothing; the view does not restore the painter between items.
    painter->setRenderHint(QPainter::Antialiasing, detailed);
    if (textOnly) {
        PaintText(painter, detailed);
    } else {
        PaintBox(painter, detailed);
    }
}

void NodeItem::PaintText(QPainter* painter, bool detailed) {
    if (selected) {
        painter->setPen(QPen(QColor(0, 120, 215), 1, ::Qt::DashLine));
        painter->setBrush(::Qt::NoBrush);
        painter->drawRect(box);
    }
    if (!detailed) {
        painter->fillRect(box.adjusted(2, 2, -2, -2),
                          QColor(textColor.red(), textColor.green(), textColor.blue(), 60));
        return;
    }
    painter->setFont(textFont);
    painter->setPen(textColor);
    painter->drawText(box.adjusted(kPadding / 2, 2, 0, 0), ::Qt::AlignLeft | ::Qt::AlignTop,
                      caption);
}

void NodeItem::PaintBox(QPainter* painter, bool detailed) {
    painter->setPen(QPen(selected ? QColor(0, 120, 215) : outline, selected ? 2.5 : 1));
    painter->setBrush(fill);
    painter->drawRect(box);
    const bool horizontal =
        orientation == FlowGraphNodeEx::LeftToRight || orientation == FlowGraphNodeEx::RightToLeft;
    // The caption sits in the header, which is below the inputs' row in a top-to-bottom node.
    qreal headerTop = 0;
    if (!horizontal && orientation == FlowGraphNodeEx::TopToBottom &&
        std::any_of(points.begin(), points.end(), [](const PointLook& p) { return p.input; })) {
        headerTop = kRowHeight;
    }
    if (!horizontal && orientation == FlowGraphNodeEx::BottomToTop &&
        std::any_of(points.begin(), points.end(), [](const PointLook& p) { return !p.input; })) {
        headerTop = kRowHeight;
    }
    if (horizontal && !points.empty()) {
        painter->setPen(QPen(outline, 0.5));
        painter->drawLine(QPointF(0, kHeaderHeight), QPointF(box.width(), kHeaderHeight));
    }
    if (detailed) {
        qreal textLeft = kPadding;
        if (!icon.empty()) {
            painter->drawImage(QPointF(kPadding, headerTop + (kHeaderHeight - kIconSize) / 2),
                               IconImage(icon, kIconSize));
            textLeft += kIconSize + 4;
        }
        painter->setFont(CaptionFont());
        painter->setPen(outline);
        painter->drawText(QRectF(textLeft, headerTop, box.width() - textLeft, kHeaderHeight),
                          ::Qt::AlignLeft | ::Qt::AlignVCenter, caption);
    }
    for (const auto& point : points) {
        if (!detailed) {
            break;
        }
        painter->setPen(QPen(outline, 0.75));
        painter->setBrush(point.color);
        painter->drawEllipse(point.at, kPointRadius, kPointRadius);
        if (point.caption.isEmpty()) {
            continue;
        }
        painter->setFont(PointFont(point.italics));
        painter->setPen(point.captionColor);
        QRectF area;
        ::Qt::Alignment align = ::Qt::AlignVCenter;
        if (horizontal) {
            // The box is as wide as the widest caption of each side and a gap between them, so
            // each side may use the whole width inside the padding without meeting the other.
            const bool onLeft = point.at.x() <= 0.5;
            area = QRectF(kPadding, point.at.y() - kRowHeight / 2, box.width() - 2 * kPadding,
                          kRowHeight);
            align |= onLeft ? ::Qt::AlignLeft : ::Qt::AlignRight;
        } else {
            // Centred on its point, a caption stays within the point's slot, which the geometry
            // made wider than the widest caption.
            const bool onTop = point.at.y() <= 0.5;
            area = QRectF(point.at.x() - box.width() / 2, onTop ? 0 : box.height() - kRowHeight,
                          box.width(), kRowHeight);
            align |= ::Qt::AlignHCenter;
        }
        painter->drawText(area, align, point.caption);
    }
    if (state != FlowGraphNodeEx::Idle) {
        const QPointF centre(box.width(), 0);
        painter->setPen(QPen(::Qt::white, 1));
        painter->setBrush(StateColor(state));
        painter->drawEllipse(centre, 7, 7);
        if (detailed) {
            painter->setFont(PointFont(false));
            painter->drawText(QRectF(centre.x() - 7, -7, 14, 14), ::Qt::AlignCenter,
                              StateLetter(state));
        }
    }
    if (state == FlowGraphNodeEx::Running) {
        const QRectF bar(4, headerTop + kHeaderHeight - 5, box.width() - 8, 3);
        painter->fillRect(bar, QColor(220, 220, 220));
        painter->fillRect(QRectF(bar.x(), bar.y(), bar.width() * progress, bar.height()),
                          StateColor(state));
    }
}

// ---- ConnectionItem -------------------------------------------------------------------------

ConnectionItem::ConnectionItem(std::shared_ptr<FlowGraphConnectionEx> connection)
    : connection(std::move(connection)) {
    setZValue(kConnectionZ);
    Sync();
}

const std::shared_ptr<FlowGraphConnectionEx>& ConnectionItem::Connection() const {
    return connection;
}

void ConnectionItem::Sync() {
    color = ColorFromWord(connection->GetColor());
    auto fromNode = connection->GetOutputNode();
    auto toNode = connection->GetInputNode();
    QPainterPath newPath;
    QPolygonF newArrow;
    if (fromNode && toNode) {
        const QPointF from = ToPoint(fromNode->GetPointPosition(connection->GetOutputPoint()));
        const QPointF to = ToPoint(toNode->GetPointPosition(connection->GetInputPoint()));
        const QPointF out = PointDirection(*fromNode, from);
        const QPointF in = PointDirection(*toNode, to);
        const qreal reach =
            std::max<qreal>(30, 0.4 * std::hypot(to.x() - from.x(), to.y() - from.y()));
        newPath.moveTo(from);
        newPath.cubicTo(from + out * reach, to + in * reach, to);
        // The arrow head points into the input, against the direction the curve leaves it.
        const QPointF tip = to;
        const QPointF back = tip + in * 8;
        const QPointF side(-in.y() * 4, in.x() * 4);
        newArrow << tip << back + side << back - side;
    }
    const QRectF newBounds =
        newPath.boundingRect().united(newArrow.boundingRect()).adjusted(-2, -2, 2, 2);
    if (newBounds != bounds) {
        prepareGeometryChange();
    }
    path = newPath;
    arrow = newArrow;
    bounds = newBounds;
    update();
}

QRectF ConnectionItem::boundingRect() const {
    return bounds;
}

QPainterPath ConnectionItem::shape() const {
    QPainterPathStroker stroker;
    stroker.setWidth(6);
    return stroker.createStroke(path);
}

void ConnectionItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*) {
    const bool detailed =
        option->levelOfDetailFromTransform(painter->worldTransform()) >= kDetailScale;
    painter->setRenderHint(QPainter::Antialiasing, detailed);
    painter->setPen(QPen(color, 1.5));
    painter->setBrush(::Qt::NoBrush);
    painter->drawPath(path);
    if (!detailed) {
        return;
    }
    painter->setPen(::Qt::NoPen);
    painter->setBrush(color);
    painter->drawPolygon(arrow);
}

}  // namespace ZML::Qt6
