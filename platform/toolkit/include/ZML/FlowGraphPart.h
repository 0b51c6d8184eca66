#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ZML/Event.h"
#include "ZML/FlowGraphChange.h"
#include "ZML/FlowGraphConnectCheck.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphConnectionPointEx.h"
#include "ZML/FlowGraphDisplayInfo.h"
#include "ZML/FlowGraphHit.h"
#include "ZML/FlowGraphNodeEx.h"
#include "ZML/FlowGraphRect.h"
#include "ZML/Part.h"

namespace ZML {

struct flowGraphPartData;

// The flow-graph canvas: a retained model of nodes, their connection points and the connections
// between them, with selection, display information and automatic layout. It works headless; a
// backend view draws it by observing OnChange and forwards the user's actions to the User...
// gesture operations, which hold every editing rule.
//
// Two kinds of callers change it:
// - the program (AddNode, AddConnection, RemoveConnection, ...) — these never call the host's
//   gesture callbacks, only the OnChange observers (Layout alone also reports the nodes it
//   moved, see there);
// - the user, through the gesture operations (UserConnect, UserRemoveConnection, UserMoveNodes,
//   UserDeleteSelection, ...) — these check the rules, refuse everything that edits while the
//   canvas is read-only, and tell the host through OnConnectionAdded, OnConnectionRemoved,
//   OnNodeChanged and OnNodeRemoved (boost::signals2 callback lists).
// Mouse events arrive as Part events ("mousedown", "mouseup", "doubleclick", "mousemove") fired
// by UserMouse.
//
// Callbacks are registered with the On... operations, which return a token; dropping the last
// copy of the token unregisters the callback. Callbacks run after the change is complete and may
// change the canvas again. Everything here belongs to the user-interface thread, except Layout's
// use of Graphviz, which is serialised process-wide.
class FlowGraphPart : public Part {
public:
    // Codes that the canvas puts into Event::key of the mouse events it fires.
    enum MouseCode : unsigned { MouseDown = 1, MouseUp = 2, DoubleClick = 3, MouseMove = 4 };

    using Token = std::shared_ptr<void>;
    using NodeCallback = std::function<void(const std::shared_ptr<FlowGraphNodeEx>&)>;
    using ConnectionCallback = std::function<void(const std::shared_ptr<FlowGraphConnectionEx>&)>;
    using ChangeCallback = std::function<void(const FlowGraphChange&)>;

    explicit FlowGraphPart(std::string name = {});
    ~FlowGraphPart() override;
    std::string Kind() const override;

    // ---- Nodes -------------------------------------------------------------------------------
    // Puts `node` (not null, not on a canvas) on the canvas after the nodes already there; the
    // canvas shares ownership of it until it is removed.
    void AddNode(const std::shared_ptr<FlowGraphNodeEx>& node);
    // Takes `node` and its connections off the canvas; false when it is not on this canvas.
    bool RemoveNode(const std::shared_ptr<FlowGraphNodeEx>& node);
    // Empties the canvas: every connection and node, the selection and the clicked point.
    void RemoveAllNodes();
    // The nodes in the order they were added.
    std::vector<std::shared_ptr<FlowGraphNodeEx>> GetNodes() const;
    std::size_t GetNodeCount() const;

    // ---- Connections -------------------------------------------------------------------------
    // Puts `connection` on the canvas. Its output point must be an output and its input point an
    // input, both on nodes of this canvas, and the pair must not be joined already; otherwise a
    // QuarnLog::Exception says what is wrong. CanConnect and the maximum are not consulted: this
    // is how a program draws what it already holds.
    void AddConnection(const std::shared_ptr<FlowGraphConnectionEx>& connection);
    // Takes `connection` off the canvas; false when it is not on this canvas.
    bool RemoveConnection(const std::shared_ptr<FlowGraphConnectionEx>& connection);
    // The connection from `outputPoint` to `inputPoint`, or null. Points are matched by identity.
    std::shared_ptr<FlowGraphConnectionEx> FindConnection(
        const std::shared_ptr<FlowGraphConnectionPointEx>& inputPoint,
        const std::shared_ptr<FlowGraphConnectionPointEx>& outputPoint) const;
    // Every connection, in the order added; and those that end at `point`.
    std::vector<std::shared_ptr<FlowGraphConnectionEx>> GetConnections() const;
    std::vector<std::shared_ptr<FlowGraphConnectionEx>> GetConnections(
        const std::shared_ptr<FlowGraphConnectionPointEx>& point) const;
    std::size_t GetConnectionCount() const;

    // ---- Selection and the clicked point -----------------------------------------------------
    // The selected nodes in canvas order.
    std::vector<std::shared_ptr<FlowGraphNodeEx>> GetSelectedNodes() const;
    void ClearSelection();
    // Selects `node`, which must be on this canvas (an exception otherwise).
    void AddNodeToSelection(const std::shared_ptr<FlowGraphNodeEx>& node);
    void RemoveNodeFromSelection(const std::shared_ptr<FlowGraphNodeEx>& node);
    // The connection point last pressed on, or null (never pressed, pressed elsewhere since, or
    // removed from the canvas).
    std::shared_ptr<FlowGraphConnectionPointEx> GetClickedPoint() const;

    // ---- Display -----------------------------------------------------------------------------
    FlowGraphDisplayInfo GetFlowGraphDisplayInfo() const;
    // Scale must be positive; it is clamped to 0.05 .. 20.
    void SetFlowGraphDisplayInfo(const FlowGraphDisplayInfo& info);
    // The size of the view in pixels, which ZoomTo fits into; the view sets it. Until then the
    // part's geometry stands in when it has a size, else 800 x 600.
    void SetViewSize(int width, int height);
    // Scrolls and scales so that `nodes` (those on this canvas) fill the view with a margin,
    // never enlarging beyond scale 1. Nothing happens for an empty list.
    void ZoomTo(const std::vector<std::shared_ptr<FlowGraphNodeEx>>& nodes);
    // ZoomTo every node.
    void ZoomToFit();
    // The rectangle that holds every node (empty rectangle for an empty canvas).
    FlowGraphRect GetContentBounds() const;

    void SetReadonly(bool readonly);
    bool IsReadonly() const;
    // How long the pointer rests before a tool tip shows, in milliseconds (default 500).
    void SetTooltipDelay(int milliseconds);
    int GetTooltipDelay() const;
    // Whether port names and port data are shown in point captions. The canvas keeps the flags for
    // whoever builds the captions; default: names shown, data hidden.
    void SetShowPortNames(bool show);
    bool GetShowPortNames() const;
    void SetShowPortData(bool show);
    bool GetShowPortData() const;

    // ---- Hit testing -------------------------------------------------------------------------
    // The topmost (last added) node whose rectangle holds the canvas position, or null.
    std::shared_ptr<FlowGraphNodeEx> NodeAt(double x, double y) const;
    // The connection point within its hit radius of the canvas position, or null.
    std::shared_ptr<FlowGraphConnectionPointEx> PointAt(double x, double y) const;
    FlowGraphHit HitTest(double x, double y) const;

    // ---- Layout ------------------------------------------------------------------------------
    // Places every node as a layered drawing of the directed graph (Graphviz "dot"), connections
    // running from output to input; the rank direction follows the orientation most nodes have.
    // Nodes are moved so that the drawing starts at (20, 20). Moved nodes are reported to
    // OnChange and, unless the canvas is read-only, to OnNodeChanged so that the host keeps their
    // positions. Throws QuarnLog::Exception when Graphviz fails.
    void Layout();
    // The graph that Layout hands to Graphviz, in the dot language: for diagnostics, and for
    // timing the dot program on the very same input.
    std::string GetLayoutGraph() const;

    // ---- User gestures -----------------------------------------------------------------------
    // Whether a connection gesture between `from` and `to` (in either direction) would be
    // accepted. The input end is the receiving point; only its CanConnect is asked.
    FlowGraphConnectCheck CheckConnect(const std::shared_ptr<FlowGraphConnectionPointEx>& from,
                                       const std::shared_ptr<FlowGraphConnectionPointEx>& to) const;
    // The user joined `from` and `to`: when CheckConnect accepts, adds a new connection (output
    // end to input end), reports it to OnConnectionAdded and returns it; otherwise returns null
    // and changes nothing.
    std::shared_ptr<FlowGraphConnectionEx> UserConnect(
        const std::shared_ptr<FlowGraphConnectionPointEx>& from,
        const std::shared_ptr<FlowGraphConnectionPointEx>& to);
    // The user deleted `connection`: removes it and reports it to OnConnectionRemoved. False when
    // read-only or not on this canvas.
    bool UserRemoveConnection(const std::shared_ptr<FlowGraphConnectionEx>& connection);
    // The user dragged `nodes` by (dx, dy): moves each one on this canvas and reports each to
    // OnNodeChanged. False when read-only.
    bool UserMoveNodes(const std::vector<std::shared_ptr<FlowGraphNodeEx>>& nodes, int dx, int dy);
    // The user moved the selected nodes.
    bool UserMoveSelection(int dx, int dy);
    // One step of a drag in progress: moves `nodes` by (dx, dy) for the observers only, and
    // remembers them. UserFinishDrag then reports each node moved since the drag began to
    // OnNodeChanged once, so that the host records one change per drag, not per mouse step.
    // False when read-only.
    bool UserDragNodes(const std::vector<std::shared_ptr<FlowGraphNodeEx>>& nodes, int dx, int dy);
    void UserFinishDrag();
    // The user pressed on a connection point: it becomes the clicked point (null clears it).
    void UserClickPoint(const std::shared_ptr<FlowGraphConnectionPointEx>& point);
    // The user clicked `node` (null: empty canvas). Without `extend` the selection becomes that
    // node alone (or nothing); with `extend` the node's selection is toggled.
    void UserClickNode(const std::shared_ptr<FlowGraphNodeEx>& node, bool extend);
    // The user dragged a rubber band: selects the nodes wholly inside `rect`, added to the current
    // selection with `extend`, replacing it otherwise.
    void UserSelectRect(const FlowGraphRect& rect, bool extend);
    // The user pressed Delete: removes every connection that touches a selected node, reporting
    // each to OnConnectionRemoved while both its nodes are still on the canvas, then the selected
    // nodes, reporting each to OnNodeRemoved. False when read-only or nothing is selected.
    bool UserDeleteSelection();
    // A mouse event from the view, in canvas coordinates (event.x, event.y): records the clicked
    // point on "mousedown", fills key with the MouseCode and detail with the FlowGraphHit, and
    // fires the event through Part::UserEvent. `event.name` must be "mousedown", "mouseup",
    // "doubleclick" or "mousemove".
    void UserMouse(const Event& event);

    // ---- Callbacks ---------------------------------------------------------------------------
    [[nodiscard]] Token OnConnectionAdded(ConnectionCallback callback);
    [[nodiscard]] Token OnConnectionRemoved(ConnectionCallback callback);
    [[nodiscard]] Token OnNodeChanged(NodeCallback callback);
    [[nodiscard]] Token OnNodeRemoved(NodeCallback callback);
    // Every change of the canvas, programmatic or not, for views.
    [[nodiscard]] Token OnChange(ChangeCallback callback);

private:
    std::shared_ptr<flowGraphPartData> flowGraphData;
};

}  // namespace ZML
