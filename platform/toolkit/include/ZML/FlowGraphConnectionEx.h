#pragma once

#include <cstdint>
#include <memory>

namespace ZML {

class FlowGraphNodeEx;
class FlowGraphConnectionPointEx;
struct flowGraphConnectionData;
struct FlowGraphAccess;

// A connection of the canvas, from an output point (the sending end) to an input point (the
// receiving end). Make it with std::make_shared, set both points, then give it to
// FlowGraphPart::AddConnection; its points cannot be changed while it is on a canvas. It holds
// its points strongly and their nodes through them.
class FlowGraphConnectionEx : public std::enable_shared_from_this<FlowGraphConnectionEx> {
public:
    FlowGraphConnectionEx();
    virtual ~FlowGraphConnectionEx();
    FlowGraphConnectionEx(const FlowGraphConnectionEx&) = delete;
    FlowGraphConnectionEx& operator=(const FlowGraphConnectionEx&) = delete;

    // Both throw QuarnLog::Exception while the connection is on a canvas.
    void SetInputPoint(const std::shared_ptr<FlowGraphConnectionPointEx>& point);
    void SetOutputPoint(const std::shared_ptr<FlowGraphConnectionPointEx>& point);
    std::shared_ptr<FlowGraphConnectionPointEx> GetInputPoint() const;
    std::shared_ptr<FlowGraphConnectionPointEx> GetOutputPoint() const;
    // The nodes that carry the two points; null when a point is missing or on no node.
    std::shared_ptr<FlowGraphNodeEx> GetInputNode() const;
    std::shared_ptr<FlowGraphNodeEx> GetOutputNode() const;

    // Line colour (red in the low byte); default dark grey.
    void SetColor(std::uint32_t color);
    std::uint32_t GetColor() const;

    // Anything the host wants to keep with the connection; the canvas never looks inside.
    void SetUserData(std::shared_ptr<void> data);
    std::shared_ptr<void> GetUserData() const;
    // Tells the canvas's observers that the connection's colour or user data changed, so that
    // views redraw it.
    void UpdateUserData();

    // True while the connection is on a canvas.
    bool IsOnCanvas() const;

private:
    friend struct FlowGraphAccess;
    std::shared_ptr<flowGraphConnectionData> connectionData;
};

}  // namespace ZML
