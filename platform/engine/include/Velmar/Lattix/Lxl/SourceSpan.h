#pragma once

#include <cstddef>

namespace Velmar::Lattix::Lxl {

// The characters of the expression text that a syntax tree node was read from: 0-based offsets,
// end exclusive.
struct SourceSpan {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool operator==(const SourceSpan&) const = default;
};

}  // namespace Velmar::Lattix::Lxl
