#include "ZMLQt/CanvasView.h"

#include <QDragEnterEvent>
#include <QGraphicsPathItem>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTimer>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "QuarnLog/Exception.h"
#include "ZMLQt/QtBackend.h"
#include "canvasitems.h"
#include "guard.h"
#include "qtcolor.h"

namespace ZML::Qt6 {

namespace {

// Half the side of the area the view can scroll over, in canvas units.
constexpr qreal kExtent = 200000;
constexpr double kMinScale = 0.05;
constexpr double kMaxScale = 20;

enum class Gesture { None, Connect, Move, Band, Pan };

}  // namespace

struct canvasViewData {
    CanvasView* view = nullptr;  // the owner of this record
    std::shared_ptr<FlowGraphPart> owned;
    std::weak_ptr<FlowGraphPart> canvas;
    QGraphicsScene* scene = nullptr;  // a child of the view
    std::unordered_map<const FlowGraphNodeEx*, NodeItem*> nodeItems;
    std::unordered_map<const FlowGraphConnectionEx*, ConnectionItem*> connectionItems;
    FlowGraphPart::Token changeToken;
    bool applyingDisplay = false;

    Gesture gesture = Gesture::None;
    std::shared_ptr<FlowGraphConnectionPointEx> connectFrom;
    std::optional<FlowGraphConnectCheck> pendingCheck;
    QGraphicsPathItem* feedback = nullptr;
    QGraphicsRectItem* band = nullptr;
    QPointF pressCanvas;
    QPoint pressView;
    QPoint applied;
    bool moved = false;
    bool extend = false;

    QTimer* tooltipTimer = nullptr;  // a child of the view
    QPoint tooltipAt;

    void AddNode(const std::shared_ptr<FlowGraphNodeEx>& node) {
        if (nodeItems.count(node.get())) {
            return;
        }
        auto* item = new NodeItem(node);
        scene->addItem(item);
        nodeItems.emplace(node.get(), item);
    }
    void RemoveNode(const FlowGraphNodeEx* node) {
        auto found = nodeItems.find(node);
        if (found != nodeItems.end()) {
            delete found->second;  // leaves the scene
            nodeItems.erase(found);
        }
    }
    void AddConnection(const std::shared_ptr<FlowGraphConnectionEx>& connection) {
        if (connectionItems.count(connection.get())) {
            return;
        }
        auto* item = new ConnectionItem(connection);
        scene->addItem(item);
        connectionItems.emplace(connection.get(), item);
    }
    void RemoveConnection(const FlowGraphConnectionEx* connection) {
        auto found = connectionItems.find(connection);
        if (found != connectionItems.end()) {
            delete found->second;
            connectionItems.erase(found);
        }
    }
    void RemoveAll() {
        for (auto& [key, item] : connectionItems) {
            delete item;
        }
        connectionItems.clear();
        for (auto& [key, item] : nodeItems) {
            delete item;
        }
        nodeItems.clear();
    }
    // The connections of `node` follow its points.
    void SyncConnections(const FlowGraphPart& part, const FlowGraphNodeEx& node) {
        for (const auto& point : node.GetFlowConnectionPoints()) {
            for (const auto& connection : part.GetConnections(point)) {
                auto found = connectionItems.find(connection.get());
                if (found != connectionItems.end()) {
                    found->second->Sync();
                }
            }
        }
    }
    void Populate() {
        auto part = canvas.lock();
        if (!part) {
            return;
        }
        for (const auto& node : part->GetNodes()) {
            AddNode(node);
        }
        for (const auto& connection : part->GetConnections()) {
            AddConnection(connection);
        }
    }

    void ApplyDisplay() {
        auto part = canvas.lock();
        if (!part) {
            return;
        }
        const auto info = part->GetFlowGraphDisplayInfo();
        applyingDisplay = true;
        view->setTransform(QTransform::fromScale(info.scale, info.scale));
        view->horizontalScrollBar()->setValue(
            static_cast<int>(std::lround(info.scrollX * info.scale)));
        view->verticalScrollBar()->setValue(
            static_cast<int>(std::lround(info.scrollY * info.scale)));
        applyingDisplay = false;
    }
    // The view scrolled or zoomed by itself (scroll bars, a resize): the canvas keeps the result.
    void StoreDisplay() {
        auto part = canvas.lock();
        if (!part || applyingDisplay) {
            return;
        }
        auto info = part->GetFlowGraphDisplayInfo();
        info.scrollX = view->horizontalScrollBar()->value() / info.scale;
        info.scrollY = view->verticalScrollBar()->value() / info.scale;
        applyingDisplay = true;
        part->SetFlowGraphDisplayInfo(info);
        applyingDisplay = false;
    }

    void OnChange(const FlowGraphChange& change) {
        auto part = canvas.lock();
        if (!part) {
            return;
        }
        using Kind = FlowGraphChange::Kind;
        switch (change.kind) {
            case Kind::NodeAdded:
                AddNode(change.node);
                break;
            case Kind::NodeRemoved:
                RemoveNode(change.node.get());
                break;
            case Kind::NodeChanged: {
                auto found = nodeItems.find(change.node.get());
                if (found != nodeItems.end()) {
                    found->second->Sync();
                }
                if (change.aspects & (FlowGraphChange::Geometry | FlowGraphChange::Points)) {
                    SyncConnections(*part, *change.node);
                }
                break;
            }
            case Kind::ConnectionAdded:
                AddConnection(change.connection);
                break;
            case Kind::ConnectionRemoved:
                RemoveConnection(change.connection.get());
                break;
            case Kind::ConnectionChanged: {
                auto found = connectionItems.find(change.connection.get());
                if (found != connectionItems.end()) {
                    found->second->Sync();
                }
                break;
            }
            case Kind::Cleared:
                RemoveAll();
                break;
            case Kind::SelectionChanged:
                for (auto& [key, item] : nodeItems) {
                    if (item->ShownSelected() != item->Node()->IsSelected()) {
                        item->Sync();
                    }
                }
                break;
            case Kind::DisplayInfoChanged:
                if (!applyingDisplay) {
                    ApplyDisplay();
                }
                break;
            case Kind::OptionsChanged:
                break;
        }
    }

    void EndFeedback() {
        delete feedback;
        feedback = nullptr;
        delete band;
        band = nullptr;
        pendingCheck.reset();
    }
};

namespace {

void Init(const std::shared_ptr<canvasViewData>& data, CanvasView* view) {
    data->view = view;
    data->scene = new QGraphicsScene(view);
    data->scene->setBackgroundBrush(::Qt::white);
    view->setScene(data->scene);
    view->setSceneRect(-kExtent, -kExtent, 2 * kExtent, 2 * kExtent);
    view->setTransformationAnchor(QGraphicsView::NoAnchor);
    view->setResizeAnchor(QGraphicsView::NoAnchor);
    view->setDragMode(QGraphicsView::NoDrag);
    view->setRenderHint(QPainter::Antialiasing);
    view->setOptimizationFlags(QGraphicsView::DontSavePainterState |
                               QGraphicsView::DontAdjustForAntialiasing);
    view->setViewportUpdateMode(QGraphicsView::SmartViewportUpdate);
    view->setMouseTracking(true);
    view->setFocusPolicy(::Qt::StrongFocus);
    view->setAcceptDrops(true);
    data->tooltipTimer = new QTimer(view);
    data->tooltipTimer->setSingleShot(true);
    std::weak_ptr<canvasViewData> weak = data;
    QObject::connect(data->tooltipTimer, &QTimer::timeout, view, [weak] {
        auto held = weak.lock();
        auto part = held ? held->canvas.lock() : nullptr;
        if (!part || held->gesture != Gesture::None) {
            return;
        }
        const QPointF at = held->view->mapToScene(held->tooltipAt);
        const auto hit = part->HitTest(at.x(), at.y());
        std::wstring text;
        if (hit.point) {
            text = hit.point->GetTooltip();
        } else if (hit.node) {
            text = hit.node->GetTooltip();
        }
        if (text.empty()) {
            QToolTip::hideText();
        } else {
            QToolTip::showText(held->view->viewport()->mapToGlobal(held->tooltipAt),
                               ToQString(text), held->view->viewport());
        }
    });
    auto part = data->canvas.lock();
    if (!part) {
        QUARN_THROW("A canvas view needs a canvas.");
    }
    data->changeToken = part->OnChange([weak](const FlowGraphChange& change) {
        if (auto held = weak.lock()) {
            held->OnChange(change);
        }
    });
    data->Populate();
    part->SetViewSize(view->viewport()->width(), view->viewport()->height());
    data->ApplyDisplay();
}

Event MouseEventOf(const QPointF& at, const QMouseEvent& event) {
    Event fired;
    fired.x = static_cast<int>(std::lround(at.x()));
    fired.y = static_cast<int>(std::lround(at.y()));
    // A press or release names its button; a move, the first button held.
    const auto buttons =
        event.button() != ::Qt::NoButton ? ::Qt::MouseButtons(event.button()) : event.buttons();
    if (buttons & ::Qt::LeftButton) {
        fired.button = MouseButton::Left;
    } else if (buttons & ::Qt::RightButton) {
        fired.button = MouseButton::Right;
    } else if (buttons & ::Qt::MiddleButton) {
        fired.button = MouseButton::Middle;
    }
    unsigned modifiers = ModNone;
    if (event.modifiers() & ::Qt::ShiftModifier) {
        modifiers |= ModShift;
    }
    if (event.modifiers() & ::Qt::ControlModifier) {
        modifiers |= ModControl;
    }
    if (event.modifiers() & ::Qt::AltModifier) {
        modifiers |= ModAlt;
    }
    fired.modifiers = modifiers;
    return fired;
}

void FireMouse(FlowGraphPart& part, const char* name, const QPointF& at, const QMouseEvent& event) {
    // The canvas hit-tests every event it fires; moves come often and are rarely listened to.
    if (std::string_view(name) == "mousemove" && !part.HasHandler(name)) {
        return;
    }
    Event fired = MouseEventOf(at, event);
    fired.name = name;
    Guarded("ZML::Qt6::CanvasView mouse event", [&] { part.UserMouse(fired); });
}

QPointF PointPosition(const FlowGraphConnectionPointEx& point) {
    auto node = point.GetNode();
    if (!node) {
        return {};
    }
    const auto at = node->GetPointPosition(
        std::const_pointer_cast<FlowGraphConnectionPointEx>(point.shared_from_this()));
    return QPointF(at.x, at.y);
}

}  // namespace

CanvasView::CanvasView(std::shared_ptr<FlowGraphPart> canvas, QWidget* parent)
    : QGraphicsView(parent), canvasViewRecord(std::make_shared<canvasViewData>()) {
    if (!canvas) {
        QUARN_THROW("A canvas view needs a canvas.");
    }
    canvasViewRecord->owned = canvas;
    canvasViewRecord->canvas = canvas;
    Init(canvasViewRecord, this);
}

CanvasView::CanvasView(std::weak_ptr<FlowGraphPart> canvas, QWidget* parent)
    : QGraphicsView(parent), canvasViewRecord(std::make_shared<canvasViewData>()) {
    canvasViewRecord->canvas = std::move(canvas);
    Init(canvasViewRecord, this);
}

CanvasView::~CanvasView() {
    // Observing stops first, so that nothing reaches the items while they go.
    canvasViewRecord->changeToken.reset();
    canvasViewRecord->EndFeedback();
    canvasViewRecord->RemoveAll();
}

std::shared_ptr<FlowGraphPart> CanvasView::Canvas() const {
    return canvasViewRecord->canvas.lock();
}

QGraphicsItem* CanvasView::ItemFor(const std::shared_ptr<FlowGraphNodeEx>& node) const {
    auto found = canvasViewRecord->nodeItems.find(node.get());
    return found == canvasViewRecord->nodeItems.end() ? nullptr : found->second;
}

QGraphicsItem* CanvasView::ItemFor(const std::shared_ptr<FlowGraphConnectionEx>& connection) const {
    auto found = canvasViewRecord->connectionItems.find(connection.get());
    return found == canvasViewRecord->connectionItems.end() ? nullptr : found->second;
}

QPoint CanvasView::ViewPosition(double canvasX, double canvasY) const {
    return mapFromScene(QPointF(canvasX, canvasY));
}

QPointF CanvasView::CanvasPosition(const QPoint& viewPosition) const {
    return mapToScene(viewPosition);
}

std::optional<FlowGraphConnectCheck> CanvasView::PendingConnectCheck() const {
    return canvasViewRecord->pendingCheck;
}

void CanvasView::ZoomToFit() {
    if (auto part = Canvas()) {
        part->SetViewSize(viewport()->width(), viewport()->height());
        part->ZoomToFit();
    }
}

void CanvasView::ZoomBy(double factor) {
    auto part = Canvas();
    if (!part || !(factor > 0)) {
        return;
    }
    auto info = part->GetFlowGraphDisplayInfo();
    const QPointF centre = mapToScene(viewport()->rect().center());
    info.scale = std::clamp(info.scale * factor, kMinScale, kMaxScale);
    info.scrollX = centre.x() - viewport()->width() / 2.0 / info.scale;
    info.scrollY = centre.y() - viewport()->height() / 2.0 / info.scale;
    part->SetFlowGraphDisplayInfo(info);
}

void CanvasView::mousePressEvent(QMouseEvent* event) {
    auto& data = *canvasViewRecord;
    auto part = Canvas();
    if (!part) {
        return;
    }
    setFocus();
    data.tooltipTimer->stop();
    const QPoint pos = event->position().toPoint();
    const QPointF at = mapToScene(pos);
    FireMouse(*part, "mousedown", at, *event);
    data.EndFeedback();
    data.gesture = Gesture::None;
    if (event->button() == ::Qt::MiddleButton) {
        data.gesture = Gesture::Pan;
        data.pressView = pos;
        viewport()->setCursor(::Qt::ClosedHandCursor);
        return;
    }
    if (event->button() != ::Qt::LeftButton) {
        return;
    }
    data.extend = event->modifiers() & (::Qt::ControlModifier | ::Qt::ShiftModifier);
    const auto hit = part->HitTest(at.x(), at.y());
    if (hit.point) {
        data.gesture = Gesture::Connect;
        data.connectFrom = hit.point;
        data.feedback =
            data.scene->addPath(QPainterPath(), QPen(QColor(90, 90, 90), 1.5, ::Qt::DashLine));
        data.feedback->setZValue(kFeedbackZ);
        return;
    }
    if (hit.node) {
        Guarded("ZML::Qt6::CanvasView select", [&] {
            if (data.extend) {
                part->UserClickNode(hit.node, true);
            } else if (!hit.node->IsSelected()) {
                part->UserClickNode(hit.node, false);
            }
        });
        if (hit.node->IsSelected() && !part->IsReadonly()) {
            data.gesture = Gesture::Move;
            data.pressCanvas = at;
            data.applied = QPoint();
            data.moved = false;
        }
        return;
    }
    if (!data.extend) {
        Guarded("ZML::Qt6::CanvasView select", [&] { part->UserClickNode(nullptr, false); });
    }
    data.gesture = Gesture::Band;
    data.pressCanvas = at;
    data.band = data.scene->addRect(QRectF(at, at), QPen(QColor(0, 120, 215), 0, ::Qt::DashLine),
                                    QColor(0, 120, 215, 30));
    data.band->setZValue(kFeedbackZ);
}

void CanvasView::mouseMoveEvent(QMouseEvent* event) {
    auto& data = *canvasViewRecord;
    auto part = Canvas();
    if (!part) {
        return;
    }
    const QPoint pos = event->position().toPoint();
    const QPointF at = mapToScene(pos);
    switch (data.gesture) {
        case Gesture::Connect: {
            const QPointF from = PointPosition(*data.connectFrom);
            QPointF to = at;
            auto target = part->PointAt(at.x(), at.y());
            QColor color(90, 90, 90);
            if (target && target != data.connectFrom) {
                const auto check = part->CheckConnect(data.connectFrom, target);
                data.pendingCheck = check;
                to = PointPosition(*target);
                color = check == FlowGraphConnectCheck::Accepted ? QColor(40, 160, 60)
                                                                 : QColor(210, 30, 30);
                if (check != FlowGraphConnectCheck::Accepted) {
                    QToolTip::showText(viewport()->mapToGlobal(pos),
                                       QString::fromUtf8(FlowGraphConnectCheckText(check)),
                                       viewport());
                } else {
                    QToolTip::hideText();
                }
            } else {
                data.pendingCheck.reset();
                QToolTip::hideText();
            }
            QPainterPath path(from);
            path.lineTo(to);
            data.feedback->setPath(path);
            data.feedback->setPen(QPen(color, 1.5, ::Qt::DashLine));
            break;
        }
        case Gesture::Move: {
            const QPoint total(static_cast<int>(std::lround(at.x() - data.pressCanvas.x())),
                               static_cast<int>(std::lround(at.y() - data.pressCanvas.y())));
            const QPoint step = total - data.applied;
            if (!step.isNull()) {
                if (!data.moved) {
                    data.moved = true;
                    emit moveStarted();
                }
                Guarded("ZML::Qt6::CanvasView move",
                        [&] { part->UserMoveSelection(step.x(), step.y()); });
                data.applied = total;
            }
            break;
        }
        case Gesture::Band:
            data.band->setRect(QRectF(data.pressCanvas, at).normalized());
            break;
        case Gesture::Pan: {
            const QPoint delta = pos - data.pressView;
            data.pressView = pos;
            auto info = part->GetFlowGraphDisplayInfo();
            info.scrollX -= delta.x() / info.scale;
            info.scrollY -= delta.y() / info.scale;
            part->SetFlowGraphDisplayInfo(info);
            break;
        }
        case Gesture::None:
            data.tooltipAt = pos;
            data.tooltipTimer->start(std::max(0, part->GetTooltipDelay()));
            break;
    }
    FireMouse(*part, "mousemove", at, *event);
}

void CanvasView::mouseReleaseEvent(QMouseEvent* event) {
    auto& data = *canvasViewRecord;
    auto part = Canvas();
    if (!part) {
        return;
    }
    const QPointF at = mapToScene(event->position().toPoint());
    const Gesture gesture = data.gesture;
    data.gesture = Gesture::None;
    switch (gesture) {
        case Gesture::Connect: {
            auto target = part->PointAt(at.x(), at.y());
            if (target && target != data.connectFrom) {
                Guarded("ZML::Qt6::CanvasView connect",
                        [&] { part->UserConnect(data.connectFrom, target); });
            }
            QToolTip::hideText();
            break;
        }
        case Gesture::Move:
            if (data.moved) {
                emit moveFinished();
            }
            break;
        case Gesture::Band: {
            const QRectF band = QRectF(data.pressCanvas, at).normalized();
            const int left = static_cast<int>(std::floor(band.left()));
            const int top = static_cast<int>(std::floor(band.top()));
            const FlowGraphRect rect{left, top, static_cast<int>(std::ceil(band.right())) - left,
                                     static_cast<int>(std::ceil(band.bottom())) - top};
            Guarded("ZML::Qt6::CanvasView select",
                    [&] { part->UserSelectRect(rect, data.extend); });
            break;
        }
        case Gesture::Pan:
            viewport()->unsetCursor();
            break;
        case Gesture::None:
            break;
    }
    data.connectFrom.reset();
    data.EndFeedback();
    FireMouse(*part, "mouseup", at, *event);
}

void CanvasView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (auto part = Canvas()) {
        FireMouse(*part, "doubleclick", mapToScene(event->position().toPoint()), *event);
    }
}

void CanvasView::wheelEvent(QWheelEvent* event) {
    auto part = Canvas();
    if (!part || event->angleDelta().y() == 0) {
        return;
    }
    auto info = part->GetFlowGraphDisplayInfo();
    const QPointF pointer = event->position();
    const QPointF anchor = mapToScene(pointer.toPoint());
    // One notch (120) zooms by a fifth.
    info.scale = std::clamp(info.scale * std::pow(1.2, event->angleDelta().y() / 120.0), kMinScale,
                            kMaxScale);
    info.scrollX = anchor.x() - pointer.x() / info.scale;
    info.scrollY = anchor.y() - pointer.y() / info.scale;
    part->SetFlowGraphDisplayInfo(info);
    event->accept();
}

void CanvasView::keyPressEvent(QKeyEvent* event) {
    auto part = Canvas();
    if (part && (event->key() == ::Qt::Key_Delete || event->key() == ::Qt::Key_Backspace)) {
        Guarded("ZML::Qt6::CanvasView delete", [&] { part->UserDeleteSelection(); });
        event->accept();
        return;
    }
    QGraphicsView::keyPressEvent(event);
}

void CanvasView::resizeEvent(QResizeEvent* event) {
    QGraphicsView::resizeEvent(event);
    if (auto part = Canvas()) {
        part->SetViewSize(viewport()->width(), viewport()->height());
        canvasViewRecord->ApplyDisplay();
    }
}

void CanvasView::scrollContentsBy(int dx, int dy) {
    QGraphicsView::scrollContentsBy(dx, dy);
    canvasViewRecord->StoreDisplay();
}

bool CanvasView::viewportEvent(QEvent* event) {
    // Tool tips follow the canvas's own delay (see mouseMoveEvent), not the style's.
    if (event->type() == QEvent::ToolTip) {
        return true;
    }
    return QGraphicsView::viewportEvent(event);
}

void CanvasView::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData() && DraggedTreeNode(*event->mimeData())) {
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void CanvasView::dragMoveEvent(QDragMoveEvent* event) {
    if (event->mimeData() && DraggedTreeNode(*event->mimeData())) {
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void CanvasView::dropEvent(QDropEvent* event) {
    auto node = event->mimeData() ? DraggedTreeNode(*event->mimeData()) : nullptr;
    if (!node) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    const QPointF at = mapToScene(event->position().toPoint());
    emit treeNodeDropped(node, at.x(), at.y());
}

}  // namespace ZML::Qt6
