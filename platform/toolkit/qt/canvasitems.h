#pragma once

#include <QFont>
#include <QGraphicsItem>
#include <QPainterPath>
#include <memory>
#include <vector>

#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphNodeEx.h"

namespace ZML::Qt6 {

// Stacking of the canvas's items: connections under nodes, the gesture feedback above both.
constexpr qreal kConnectionZ = 0;
constexpr qreal kTextZ = 1;
constexpr qreal kNodeZ = 2;
constexpr qreal kFeedbackZ = 10;

// The scene item of one node. It copies what it draws from the node in Sync (called for every
// change of the node), so that painting never goes back to the canvas; the item's position is the
// node's location and its shape the node's rectangle by the canvas metrics, so that what is drawn
// and what the canvas hit-tests agree.
class NodeItem : public QGraphicsItem {
public:
    explicit NodeItem(std::shared_ptr<ZML::FlowGraphNodeEx> node);

    void Sync();
    const std::shared_ptr<ZML::FlowGraphNodeEx>& Node() const;
    bool ShownSelected() const;

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    struct PointLook {
        QPointF at;  // relative to the node's location
        QString caption;
        QColor color;
        QColor captionColor;
        bool italics = false;
        bool input = true;
    };

    void PaintText(QPainter* painter, bool detailed);
    void PaintBox(QPainter* painter, bool detailed);

    std::shared_ptr<ZML::FlowGraphNodeEx> node;
    bool syncing = false;
    // What Sync copied.
    QRectF box;
    QString caption;
    std::wstring icon;
    QColor fill;
    QColor outline;
    QColor textColor;
    QFont textFont;
    bool textOnly = false;
    bool selected = false;
    int state = 0;
    double progress = 0;
    int orientation = 0;
    std::vector<PointLook> points;
};

// The scene item of one connection: a curve from the output point to the input point, leaving and
// entering each node square to the edge its point is on, with an arrow head at the input.
class ConnectionItem : public QGraphicsItem {
public:
    explicit ConnectionItem(std::shared_ptr<ZML::FlowGraphConnectionEx> connection);

    // Follows the connection's points and colour.
    void Sync();
    const std::shared_ptr<ZML::FlowGraphConnectionEx>& Connection() const;

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    std::shared_ptr<ZML::FlowGraphConnectionEx> connection;
    QPainterPath path;
    QPolygonF arrow;
    QColor color;
    QRectF bounds;
};

// The direction in which a curve leaves `point` of `node`: outwards from the edge it sits on.
QPointF PointDirection(const ZML::FlowGraphNodeEx& node, const QPointF& point);

}  // namespace ZML::Qt6
