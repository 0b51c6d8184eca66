#pragma once

#include <memory>
#include <string>

#include "Velmar/Lattix/Issue.h"

namespace Velmar::Lattix {

class Port;

// One message that an operator holds (a plain value): the port it is about (weak, may be empty),
// the text, the help key and the severity.
struct OperatorMessage {
    std::weak_ptr<Port> port;
    std::wstring text;
    std::wstring helpKey;
    Issue::Severity severity = Issue::Severity::Info;
};

}  // namespace Velmar::Lattix
