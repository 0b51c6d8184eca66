#pragma once

#include <QGraphicsView>
#include <memory>
#include <optional>

#include "ZML/FlowGraphConnectCheck.h"
#include "ZML/FlowGraphPart.h"
#include "ZML/TreeViewNode.h"

namespace ZML::Qt6 {

struct canvasViewData;

// A QGraphicsView of a flow-graph canvas. The scene follows the canvas's change notifications one
// change at a time; the user's gestures go through the canvas's User... operations, which hold the
// editing rules:
// - left drag from a connection point to another: connect (the line shows whether the canvas
//   would accept the pair while it is dragged);
// - click on a node: select it (Control or Shift toggles); left drag on a node: move the
//   selection; left drag on empty canvas: rubber-band selection;
// - Delete or Backspace: delete the selection; wheel: zoom about the pointer; middle drag: pan.
// Scale and scroll position live in the canvas (FlowGraphDisplayInfo) and the view follows them.
// Tool tips of nodes and points appear after the canvas's tool tip delay.
class CanvasView : public QGraphicsView {
    Q_OBJECT

public:
    // `canvas` must not be null; the view shares ownership of it and observes it until destroyed.
    explicit CanvasView(std::shared_ptr<ZML::FlowGraphPart> canvas, QWidget* parent = nullptr);
    // As above, but observing `canvas` without owning it (the view of a canvas part realised by
    // the backend, which the part's own peer keeps). The view empties when the canvas goes.
    explicit CanvasView(std::weak_ptr<ZML::FlowGraphPart> canvas, QWidget* parent = nullptr);
    ~CanvasView() override;

    // The canvas shown, or null when an observed canvas has gone.
    std::shared_ptr<ZML::FlowGraphPart> Canvas() const;
    // The scene item that draws `node`, or null when the node is not on the canvas.
    QGraphicsItem* ItemFor(const std::shared_ptr<ZML::FlowGraphNodeEx>& node) const;
    QGraphicsItem* ItemFor(const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection) const;
    // The view-pixel position of a canvas position, and back.
    QPoint ViewPosition(double canvasX, double canvasY) const;
    QPointF CanvasPosition(const QPoint& viewPosition) const;
    // While a connection is dragged over a point: what the canvas says about joining the two.
    std::optional<ZML::FlowGraphConnectCheck> PendingConnectCheck() const;

public slots:
    void ZoomToFit();
    // Multiplies the scale by `factor`, keeping the view's centre in place.
    void ZoomBy(double factor);

signals:
    // A move of the selection began or ended, so that a host may group its steps (each step is
    // reported to the canvas's OnNodeChanged callbacks).
    void moveStarted();
    void moveFinished();
    // A tree node dragged out of a tree view (see DraggedTreeNode) was dropped at the canvas
    // position (x, y).
    void treeNodeDropped(std::shared_ptr<ZML::TreeViewNode> node, double x, double y);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    std::shared_ptr<canvasViewData> canvasViewRecord;
};

}  // namespace ZML::Qt6
