#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ZML/FlowGraphFont.h"
#include "ZML/FlowGraphLocation.h"
#include "ZML/FlowGraphRect.h"

namespace ZML {

class FlowGraphConnectionPointEx;
class Icon;
struct flowGraphNodeData;
struct FlowGraphAccess;

// A node of the flow-graph canvas: a captioned box with connection points, or a free text when
// text-only. Derive from it to tie nodes to objects of your own; objects are always made with
// std::make_shared<Derived>() and held by std::shared_ptr (the canvas keeps the pointers it is
// given). Derived classes must not add a second std::enable_shared_from_this base.
// Colours are 32-bit words with red in the low byte, then green, then blue.
// Every setter tells the canvas the node is on, if any, so that views follow.
class FlowGraphNodeEx : public std::enable_shared_from_this<FlowGraphNodeEx> {
public:
    // Node orientations: where the inputs are. Left-to-right puts inputs on the left edge and
    // outputs on the right; top-to-bottom puts inputs on the top edge and outputs on the bottom.
    enum Orientation : int { LeftToRight = 0, TopToBottom = 1, RightToLeft = 2, BottomToTop = 3 };
    // Node states as the views show them (a badge; Running also draws the progress bar).
    enum State : int {
        Idle = 0,
        Running = 1,
        Waiting = 2,
        Executed = 3,
        Error = 4,
        Warning = 5,
        Information = 6,
    };

    virtual ~FlowGraphNodeEx();
    FlowGraphNodeEx(const FlowGraphNodeEx&) = delete;
    FlowGraphNodeEx& operator=(const FlowGraphNodeEx&) = delete;

    void SetCaption(const std::wstring& caption);
    const std::wstring& GetCaption() const;
    void SetTooltip(const std::wstring& tooltip);
    const std::wstring& GetTooltip() const;
    // The icon drawn left of the caption: a name or path as qzml_IconCreateFromFile resolves it
    // (empty: no icon). Setting it by name forgets an icon object set before.
    void SetIcon(const std::wstring& icon);
    // The icon as qzml_IconCreateFromFile made it; its file path (or, for a placeholder, the name
    // asked for) becomes the icon name. Null clears the icon.
    void SetIcon(const std::shared_ptr<Icon>& icon);
    const std::wstring& GetIcon() const;
    // The icon object given to SetIcon, or null when the icon was set by name.
    std::shared_ptr<Icon> GetIconObject() const;
    // Fill colour; default white. Outline colour; default black.
    void SetColor(std::uint32_t color);
    std::uint32_t GetColor() const;
    void SetOutlineColor(std::uint32_t color);
    std::uint32_t GetOutlineColor() const;
    // The kind of node as the host classifies it (for example operator, input/output, model port,
    // sub-model); views may draw kinds differently. Default 0.
    void SetFlowNodeType(int type);
    int GetFlowNodeType() const;

    // One of State; other values are refused with an exception.
    void SetState(int state);
    int GetState() const;
    void SetProgress(double progress);
    double GetProgress() const;
    // The range the progress moves in; default 0 to 100. `minimum` must not exceed `maximum`.
    void SetProgressBounds(double minimum, double maximum);
    double GetProgressMinimum() const;
    double GetProgressMaximum() const;

    // The top-left corner of the node on the canvas.
    void SetLocation(int x, int y);
    FlowGraphLocation GetLocation() const;
    // One of Orientation; other values are refused with an exception.
    void SetOrientation(int orientation);
    int GetOrientation() const;

    // A text-only node draws its caption as free text, with its own font and colours, and has no
    // box and no points.
    void SetTextOnly(bool textOnly);
    bool IsTextOnly() const;
    void SetTextFont(const std::wstring& name, int size, bool bold, bool italics, bool underline);
    const FlowGraphFont& GetTextFont() const;
    // Colour of the text of a text-only node; default black.
    void SetTextColor(std::uint32_t color);
    std::uint32_t GetTextColor() const;
    // Colour of that text while the node is selected.
    void SetSelectedTextColor(std::uint32_t color);
    std::uint32_t GetSelectedTextColor() const;

    // Appends `point` to the node's points. The point must not be null and must not belong to a
    // node already (QuarnLog::Exception otherwise). The node shares ownership of it.
    void AddConnectionPoint(const std::shared_ptr<FlowGraphConnectionPointEx>& point);
    // Inserts `point` before the point at `index` (index == count appends); an index past the
    // end is refused with an exception.
    void AddConnectionPointAt(std::size_t index,
                              const std::shared_ptr<FlowGraphConnectionPointEx>& point);
    // Takes `point` off the node, and its connections off the canvas. False when the point is not
    // on this node.
    bool RemoveConnectionPoint(const std::shared_ptr<FlowGraphConnectionPointEx>& point);
    // The node's points in order.
    std::vector<std::shared_ptr<FlowGraphConnectionPointEx>> GetFlowConnectionPoints() const;
    std::size_t GetConnectionPointCount() const;

    // Takes the node, and every connection that touches it, off its canvas. Does nothing when the
    // node is on no canvas.
    void Remove();
    // True while the node is on a canvas.
    bool IsOnCanvas() const;
    bool IsSelected() const;

    // The node's size and rectangle by the canvas metrics (docs/canvas.md).
    FlowGraphRect GetBounds() const;
    // Where `point` sits on the node's outline, in canvas units; the location when the point is
    // not on this node.
    FlowGraphLocation GetPointPosition(
        const std::shared_ptr<FlowGraphConnectionPointEx>& point) const;

protected:
    FlowGraphNodeEx();

private:
    friend struct FlowGraphAccess;
    std::shared_ptr<flowGraphNodeData> nodeData;
};

}  // namespace ZML
