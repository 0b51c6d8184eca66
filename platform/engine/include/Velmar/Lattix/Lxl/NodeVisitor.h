#pragma once

namespace Velmar::Lattix::Lxl {

class Node;

// One entry per node kind, so that an evaluator or checker that forgets a kind does not compile.
// Node::Accept calls the entry matching the node's kind; visiting the children is up to the
// visitor.
class NodeVisitor {
public:
    virtual ~NodeVisitor() = default;

    virtual void VisitNumber(const Node& node) = 0;
    virtual void VisitString(const Node& node) = 0;
    virtual void VisitBoolean(const Node& node) = 0;
    virtual void VisitPortReference(const Node& node) = 0;
    virtual void VisitPlaceholder(const Node& node) = 0;
    virtual void VisitUnary(const Node& node) = 0;
    virtual void VisitBinary(const Node& node) = 0;
    virtual void VisitConditional(const Node& node) = 0;
    virtual void VisitCall(const Node& node) = 0;
    virtual void VisitOption(const Node& node) = 0;
    virtual void VisitValueList(const Node& node) = 0;
    virtual void VisitLayerSelection(const Node& node) = 0;
    virtual void VisitRange(const Node& node) = 0;
};

}  // namespace Velmar::Lattix::Lxl
