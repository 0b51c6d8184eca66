#include "Velmar/Lattix/Lxl/Node.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "Velmar/Lattix/Lxl/NodeVisitor.h"
#include "lxl/NodeData.h"

namespace Velmar::Lattix::Lxl {

std::wstring_view Spelling(UnaryOperator op) noexcept {
    switch (op) {
        case UnaryOperator::Negate:
            return L"-";
        case UnaryOperator::Not:
            return L"not";
    }
    return L"?";
}

std::wstring_view Spelling(BinaryOperator op) noexcept {
    switch (op) {
        case BinaryOperator::Or:
            return L"or";
        case BinaryOperator::And:
            return L"and";
        case BinaryOperator::Equal:
            return L"==";
        case BinaryOperator::NotEqual:
            return L"!=";
        case BinaryOperator::Less:
            return L"<";
        case BinaryOperator::LessEqual:
            return L"<=";
        case BinaryOperator::Greater:
            return L">";
        case BinaryOperator::GreaterEqual:
            return L">=";
        case BinaryOperator::Add:
            return L"+";
        case BinaryOperator::Subtract:
            return L"-";
        case BinaryOperator::Multiply:
            return L"*";
        case BinaryOperator::Divide:
            return L"/";
        case BinaryOperator::Modulo:
            return L"%";
        case BinaryOperator::Power:
            return L"^";
    }
    return L"?";
}

std::wstring_view KindName(NodeKind kind) noexcept {
    switch (kind) {
        case NodeKind::Number:
            return L"number";
        case NodeKind::String:
            return L"string";
        case NodeKind::Boolean:
            return L"boolean";
        case NodeKind::PortReference:
            return L"port reference";
        case NodeKind::Placeholder:
            return L"placeholder";
        case NodeKind::Unary:
            return L"unary";
        case NodeKind::Binary:
            return L"binary";
        case NodeKind::Conditional:
            return L"conditional";
        case NodeKind::Call:
            return L"call";
        case NodeKind::Option:
            return L"option";
        case NodeKind::ValueList:
            return L"value list";
        case NodeKind::LayerSelection:
            return L"layer selection";
        case NodeKind::Range:
            return L"range";
    }
    return L"?";
}

Node::Node(Key, std::shared_ptr<const NodeData> data) : nodeData(std::move(data)) {}

Node::Ptr Node::Make(NodeData data) {
    std::size_t height = 0;
    for (const auto& child : data.children) {
        assert(child);
        height = std::max(height, child->Height());
    }
    data.height = height + 1;
    return std::make_shared<const Node>(Key{}, std::make_shared<const NodeData>(std::move(data)));
}

Node::Ptr Node::MakeInteger(std::int64_t value, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Number;
    d.span = span;
    d.isInteger = true;
    d.integer = value;
    d.number = static_cast<double>(value);
    return Make(std::move(d));
}

Node::Ptr Node::MakeDecimal(double value, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Number;
    d.span = span;
    d.number = value;
    return Make(std::move(d));
}

Node::Ptr Node::MakeString(std::wstring value, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::String;
    d.span = span;
    d.text = std::move(value);
    return Make(std::move(d));
}

Node::Ptr Node::MakeBoolean(bool value, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Boolean;
    d.span = span;
    d.boolean = value;
    return Make(std::move(d));
}

Node::Ptr Node::MakePortReference(std::wstring name, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::PortReference;
    d.span = span;
    d.text = std::move(name);
    return Make(std::move(d));
}

Node::Ptr Node::MakePlaceholder(std::wstring name, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Placeholder;
    d.span = span;
    d.text = std::move(name);
    return Make(std::move(d));
}

Node::Ptr Node::MakeUnary(UnaryOperator op, Ptr operand, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Unary;
    d.span = span;
    d.unary = op;
    d.children.push_back(std::move(operand));
    return Make(std::move(d));
}

Node::Ptr Node::MakeBinary(BinaryOperator op, std::vector<Ptr> operands, SourceSpan span) {
    assert(operands.size() >= 2);
    NodeData d;
    d.kind = NodeKind::Binary;
    d.span = span;
    d.binary = op;
    d.children = std::move(operands);
    return Make(std::move(d));
}

Node::Ptr Node::MakeConditional(Ptr condition, Ptr whenTrue, Ptr whenFalse, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Conditional;
    d.span = span;
    d.children = {std::move(condition), std::move(whenTrue), std::move(whenFalse)};
    return Make(std::move(d));
}

Node::Ptr Node::MakeCall(std::wstring name, std::vector<Ptr> arguments, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Call;
    d.span = span;
    d.text = std::move(name);
    d.children = std::move(arguments);
    return Make(std::move(d));
}

Node::Ptr Node::MakeOption(std::wstring keyword, Ptr operand, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Option;
    d.span = span;
    d.text = std::move(keyword);
    if (operand) d.children.push_back(std::move(operand));
    return Make(std::move(d));
}

Node::Ptr Node::MakeValueList(std::vector<Ptr> values, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::ValueList;
    d.span = span;
    d.children = std::move(values);
    return Make(std::move(d));
}

Node::Ptr Node::MakeLayerSelection(Ptr value, std::vector<Ptr> items, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::LayerSelection;
    d.span = span;
    d.children.reserve(items.size() + 1);
    d.children.push_back(std::move(value));
    for (auto& item : items) d.children.push_back(std::move(item));
    return Make(std::move(d));
}

Node::Ptr Node::MakeRange(Ptr first, Ptr last, SourceSpan span) {
    NodeData d;
    d.kind = NodeKind::Range;
    d.span = span;
    d.children = {std::move(first), std::move(last)};
    return Make(std::move(d));
}

NodeKind Node::Kind() const noexcept {
    return nodeData->kind;
}
SourceSpan Node::Span() const noexcept {
    return nodeData->span;
}
std::size_t Node::Height() const noexcept {
    return nodeData->height;
}
const std::vector<Node::Ptr>& Node::Children() const noexcept {
    return nodeData->children;
}
const std::wstring& Node::Text() const noexcept {
    return nodeData->text;
}
bool Node::IsInteger() const noexcept {
    return nodeData->isInteger;
}
std::int64_t Node::IntegerValue() const noexcept {
    return nodeData->integer;
}
double Node::NumberValue() const noexcept {
    return nodeData->number;
}
bool Node::BooleanValue() const noexcept {
    return nodeData->boolean;
}
UnaryOperator Node::Unary() const noexcept {
    return nodeData->unary;
}
BinaryOperator Node::Binary() const noexcept {
    return nodeData->binary;
}

void Node::Accept(NodeVisitor& visitor) const {
    switch (nodeData->kind) {
        case NodeKind::Number:
            visitor.VisitNumber(*this);
            return;
        case NodeKind::String:
            visitor.VisitString(*this);
            return;
        case NodeKind::Boolean:
            visitor.VisitBoolean(*this);
            return;
        case NodeKind::PortReference:
            visitor.VisitPortReference(*this);
            return;
        case NodeKind::Placeholder:
            visitor.VisitPlaceholder(*this);
            return;
        case NodeKind::Unary:
            visitor.VisitUnary(*this);
            return;
        case NodeKind::Binary:
            visitor.VisitBinary(*this);
            return;
        case NodeKind::Conditional:
            visitor.VisitConditional(*this);
            return;
        case NodeKind::Call:
            visitor.VisitCall(*this);
            return;
        case NodeKind::Option:
            visitor.VisitOption(*this);
            return;
        case NodeKind::ValueList:
            visitor.VisitValueList(*this);
            return;
        case NodeKind::LayerSelection:
            visitor.VisitLayerSelection(*this);
            return;
        case NodeKind::Range:
            visitor.VisitRange(*this);
            return;
    }
}

}  // namespace Velmar::Lattix::Lxl
