#pragma once

namespace Velmar::Lattix {

// Whether a port receives data (input) or produces it (output).
enum class PortDirection { Input, Output };

}  // namespace Velmar::Lattix
