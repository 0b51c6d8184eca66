#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Lxl/NodeKind.h"
#include "Velmar/Lattix/Lxl/SourceSpan.h"

namespace Velmar::Lattix::Lxl {

class NodeVisitor;
struct NodeData;

// One node of an expression's syntax tree. Nodes are immutable once made and shared between
// trees; a tree is held by a shared pointer to its root. Each node knows the span of text it was
// read from and its height (1 for a leaf), which keeps recursive walks bounded.
class Node {
public:
    using Ptr = std::shared_ptr<const Node>;

    // Makers. Children must not be null; their count must fit the kind (see NodeKind). The
    // parser is the usual caller; tools that build trees by hand use the same makers.
    static Ptr MakeInteger(std::int64_t value, SourceSpan span);
    static Ptr MakeDecimal(double value, SourceSpan span);
    static Ptr MakeString(std::wstring value, SourceSpan span);
    static Ptr MakeBoolean(bool value, SourceSpan span);
    static Ptr MakePortReference(std::wstring name, SourceSpan span);
    static Ptr MakePlaceholder(std::wstring name, SourceSpan span);
    static Ptr MakeUnary(UnaryOperator op, Ptr operand, SourceSpan span);
    static Ptr MakeBinary(BinaryOperator op, std::vector<Ptr> operands, SourceSpan span);
    static Ptr MakeConditional(Ptr condition, Ptr whenTrue, Ptr whenFalse, SourceSpan span);
    static Ptr MakeCall(std::wstring name, std::vector<Ptr> arguments, SourceSpan span);
    // operand may be null for a keyword that takes none.
    static Ptr MakeOption(std::wstring keyword, Ptr operand, SourceSpan span);
    static Ptr MakeValueList(std::vector<Ptr> values, SourceSpan span);
    static Ptr MakeLayerSelection(Ptr value, std::vector<Ptr> items, SourceSpan span);
    static Ptr MakeRange(Ptr first, Ptr last, SourceSpan span);

    NodeKind Kind() const noexcept;
    SourceSpan Span() const noexcept;
    // The longest path from this node down to a leaf, counted in nodes.
    std::size_t Height() const noexcept;
    const std::vector<Ptr>& Children() const noexcept;

    // The text of the node: a string's value, a port's or placeholder's name (without "$" or
    // angle brackets), a call's function name as written ("Sin" or "TAMARIN.Sin"), an option's
    // keyword. Empty for other kinds.
    const std::wstring& Text() const noexcept;

    // Numbers: an integer literal keeps its exact value; NumberValue() is the value of either.
    bool IsInteger() const noexcept;
    std::int64_t IntegerValue() const noexcept;
    double NumberValue() const noexcept;
    bool BooleanValue() const noexcept;

    // Only meaningful for the Unary and Binary kinds respectively.
    UnaryOperator Unary() const noexcept;
    BinaryOperator Binary() const noexcept;

    void Accept(NodeVisitor& visitor) const;

private:
    struct Key {
        explicit Key() = default;
    };
    static Ptr Make(NodeData data);

public:
    // Only the makers can name Key; use them.
    Node(Key, std::shared_ptr<const NodeData> data);

private:
    std::shared_ptr<const NodeData> nodeData;
};

}  // namespace Velmar::Lattix::Lxl
