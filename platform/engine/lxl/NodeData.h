#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Lxl/Node.h"

namespace Velmar::Lattix::Lxl {

// The state of one syntax tree node; only the fields its kind uses are set.
struct NodeData {
    NodeKind kind = NodeKind::Number;
    SourceSpan span;
    std::size_t height = 1;
    std::vector<Node::Ptr> children;
    std::wstring text;
    bool isInteger = false;
    std::int64_t integer = 0;
    double number = 0.0;
    bool boolean = false;
    UnaryOperator unary = UnaryOperator::Negate;
    BinaryOperator binary = BinaryOperator::Add;
};

}  // namespace Velmar::Lattix::Lxl
