#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ZML {

class FlowGraphNodeEx;
struct flowGraphPointData;
struct FlowGraphAccess;

// A connection point of a canvas node: the place where connections start (an output) or end (an
// input). Derive from it to give points a meaning of your own; objects are always made with
// std::make_shared<Derived>() and held by std::shared_ptr. A point belongs to at most one node.
// Colours are 32-bit words with red in the low byte, then green, then blue.
class FlowGraphConnectionPointEx : public std::enable_shared_from_this<FlowGraphConnectionPointEx> {
public:
    virtual ~FlowGraphConnectionPointEx();
    FlowGraphConnectionPointEx(const FlowGraphConnectionPointEx&) = delete;
    FlowGraphConnectionPointEx& operator=(const FlowGraphConnectionPointEx&) = delete;

    // Called by views just before they draw the point (the headless canvas draws nothing and
    // never calls it). The default gives a point without a tool tip its caption as tool tip;
    // override it to refresh what the point shows.
    virtual void PreDraw();

    // Asked on the receiving (input) point of a connection gesture, with the proposed far end;
    // the gesture is refused when it returns false. The default accepts a point of the opposite
    // direction on another node and refuses a null point, a point of the same direction, a point
    // of its own node and a point that is on no node.
    virtual bool CanConnect(const std::shared_ptr<FlowGraphConnectionPointEx>& other);

    void SetCaption(const std::wstring& caption);
    const std::wstring& GetCaption() const;
    void SetTooltip(const std::wstring& tooltip);
    const std::wstring& GetTooltip() const;
    // Colour of the point's marker; default mid grey.
    void SetColor(std::uint32_t color);
    std::uint32_t GetColor() const;
    // Colour of the caption text; default black.
    void SetCaptionColor(std::uint32_t color);
    std::uint32_t GetCaptionColor() const;
    void SetItalics(bool italics);
    bool GetItalics() const;

    // A point is an input (the default) or an output.
    void SetInput();
    void SetOutput();
    bool IsInput() const;
    bool IsOutput() const;

    // The most connections a user may attach to this point; 0 (the default) means no limit.
    // Negative values are refused with an exception. Programmatic FlowGraphPart::AddConnection
    // does not check it; connection gestures do.
    void SetMaxConnections(int maximum);
    int GetMaxConnections() const;

    // The node that carries this point, or null.
    std::shared_ptr<FlowGraphNodeEx> GetNode() const;
    // How many connections of the node's canvas end at this point (0 when not on a canvas).
    std::size_t GetConnectionCount() const;

protected:
    FlowGraphConnectionPointEx();

private:
    friend struct FlowGraphAccess;
    std::shared_ptr<flowGraphPointData> pointData;
};

}  // namespace ZML
