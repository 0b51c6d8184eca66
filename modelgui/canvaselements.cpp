// The editor's own canvas nodes and connection points, and the rules by which a receiving point
// accepts the far end of a connection gesture.

#include <memory>

#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "canvasindex.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "modelgui/SolutionBuilderConnectionPoint.h"
#include "modelgui/SolutionBuilderNode.h"
#include "modelgui/TestConnectionPoint.h"
#include "modelgui/TextNode.h"
#include "modelgui/TrueFalseConnectionPoint.h"

namespace quarn::modelgui {

// Nodes and flow-control points refer to their engine objects weakly on purpose: the model owns
// them, and a canvas that outlives an edit must not keep a deleted operator alive.
struct OperatorNodeData {
    std::weak_ptr<Velmar::Lattix::Operator> op;
};
struct PortNodeData {
    std::weak_ptr<Velmar::Lattix::Port> port;
};
struct TextNodeData {
    std::weak_ptr<Velmar::Lattix::Data> dictionary;
};
struct FlowControlPointData {
    std::weak_ptr<Velmar::Lattix::Operator> op;
};
// The one strong reference: connections to a port removed during an edit are taken down after
// the port has left its operator, and they still need to read it.
struct PortDescriptionPointData {
    std::shared_ptr<Velmar::Lattix::Port> port;
};
struct TrueFalsePointData {
    bool isTrue = false;
};

SolutionBuilderNode::SolutionBuilderNode() = default;
SolutionBuilderNode::~SolutionBuilderNode() = default;

OperatorNode::OperatorNode() : operatorNodeData(std::make_shared<OperatorNodeData>()) {}
OperatorNode::~OperatorNode() = default;

void OperatorNode::SetOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op) {
    operatorNodeData->op = op;
    if (IsOnCanvas()) detail::NoteNodeRebound();
}

std::shared_ptr<Velmar::Lattix::Operator> OperatorNode::GetOperator() const {
    return operatorNodeData->op.lock();
}

PortNode::PortNode() : portNodeData(std::make_shared<PortNodeData>()) {}
PortNode::~PortNode() = default;

void PortNode::SetThePort(const std::shared_ptr<Velmar::Lattix::Port>& port) {
    portNodeData->port = port;
    if (IsOnCanvas()) detail::NoteNodeRebound();
}

std::shared_ptr<Velmar::Lattix::Port> PortNode::GetPort() const {
    return portNodeData->port.lock();
}

TextNode::TextNode() : textNodeData(std::make_shared<TextNodeData>()) {
    SetTextOnly(true);
    SetSelectedTextColor(SelectedTextColor);
}
TextNode::~TextNode() = default;

void TextNode::SetDictionary(const std::shared_ptr<Velmar::Lattix::Data>& dictionary) {
    textNodeData->dictionary = dictionary;
}

std::shared_ptr<Velmar::Lattix::Data> TextNode::GetDictionary() const {
    return textNodeData->dictionary.lock();
}

SolutionBuilderConnectionPoint::SolutionBuilderConnectionPoint() = default;
SolutionBuilderConnectionPoint::~SolutionBuilderConnectionPoint() = default;

PortDescriptionConnectionPoint::PortDescriptionConnectionPoint()
    : portDescriptionPointData(std::make_shared<PortDescriptionPointData>()) {}
PortDescriptionConnectionPoint::~PortDescriptionConnectionPoint() = default;

void PortDescriptionConnectionPoint::PreDraw() {}

bool PortDescriptionConnectionPoint::CanConnect(
    const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) {
    return std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(other) != nullptr;
}

void PortDescriptionConnectionPoint::SetThePort(const std::shared_ptr<Velmar::Lattix::Port>& port) {
    portDescriptionPointData->port = port;
}

std::shared_ptr<Velmar::Lattix::Port> PortDescriptionConnectionPoint::GetPort() const {
    return portDescriptionPointData->port;
}

FlowControlConnectionPoint::FlowControlConnectionPoint()
    : flowControlPointData(std::make_shared<FlowControlPointData>()) {}
FlowControlConnectionPoint::~FlowControlConnectionPoint() = default;

bool FlowControlConnectionPoint::CanConnect(
    const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) {
    if (std::dynamic_pointer_cast<FlowControlConnectionPoint>(other)) return true;
    if (std::dynamic_pointer_cast<TrueFalseConnectionPoint>(other)) return true;
    if (std::dynamic_pointer_cast<BodyConnectionPoint>(other)) return true;
    return false;
}

void FlowControlConnectionPoint::SetOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op) {
    flowControlPointData->op = op;
}

std::shared_ptr<Velmar::Lattix::Operator> FlowControlConnectionPoint::GetOperator() const {
    return flowControlPointData->op.lock();
}

BodyConnectionPoint::BodyConnectionPoint() {
    SetOutput();
    SetCaption(L"Body");
}
BodyConnectionPoint::~BodyConnectionPoint() = default;

TestConnectionPoint::TestConnectionPoint() {
    SetInput();
    SetCaption(L"Test");
}
TestConnectionPoint::~TestConnectionPoint() = default;

bool TestConnectionPoint::CanConnect(
    const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& other) {
    const auto portPoint = std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(other);
    if (!portPoint) return false;
    const auto port = portPoint->GetPort();
    if (!port) return false;
    return port->SupportsType(Velmar::Lattix::ObjectName(L"TAMARIN", L"Bool"));
}

TrueFalseConnectionPoint::TrueFalseConnectionPoint()
    : trueFalsePointData(std::make_shared<TrueFalsePointData>()) {
    SetOutput();
}
TrueFalseConnectionPoint::~TrueFalseConnectionPoint() = default;

void TrueFalseConnectionPoint::SetIsTruePoint(bool isTrue) {
    trueFalsePointData->isTrue = isTrue;
    SetCaption(isTrue ? L"True" : L"False");
}

bool TrueFalseConnectionPoint::IsTruePoint() const {
    return trueFalsePointData->isTrue;
}

}  // namespace quarn::modelgui
