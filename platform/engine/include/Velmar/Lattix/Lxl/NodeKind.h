#pragma once

#include <string_view>

namespace Velmar::Lattix::Lxl {

// What a syntax tree node stands for. The comments name the children of each kind, in order.
enum class NodeKind {
    Number,          // integer or decimal literal; no children
    String,          // string literal; no children
    Boolean,         // true or false; no children
    PortReference,   // $name; no children
    Placeholder,     // <name> left by the syntax assistant; no children
    Unary,           // operand
    Binary,          // two or more operands, folded from the left with one operator
    Conditional,     // condition, value when true, value when false
    Call,            // the arguments (values and options)
    Option,          // keyword with none or one operand (a value or a ValueList)
    ValueList,       // { a, b, ... } after a value option: the values
    LayerSelection,  // the selected value, then the items of the layer list (values or ranges)
    Range,           // first:last inside a layer list: first, last
};

enum class UnaryOperator { Negate, Not };

enum class BinaryOperator {
    Or,
    And,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Add,
    Subtract,
    Multiply,
    Divide,
    Modulo,
    Power,
};

// The canonical spelling of an operator as ToText prints it ("-", "not", "+", "and", "==", ...).
std::wstring_view Spelling(UnaryOperator op) noexcept;
std::wstring_view Spelling(BinaryOperator op) noexcept;
// A short lower-case name of a node kind ("number", "call", ...), for messages and dumps.
std::wstring_view KindName(NodeKind kind) noexcept;

}  // namespace Velmar::Lattix::Lxl
