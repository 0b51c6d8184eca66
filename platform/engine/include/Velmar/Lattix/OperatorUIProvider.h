#pragma once

#include <memory>

namespace Velmar::Lattix {

class Operator;

// A settings dialog for some operators, put into the UIProviderFactory by the toolkit or the host.
class OperatorUIProvider {
public:
    virtual ~OperatorUIProvider() = default;
    virtual bool HandlesOperator(const Operator& op) const = 0;
    // Shows the dialog; true when the user accepted it.
    virtual bool ShowDialog(const std::shared_ptr<Operator>& op) = 0;
};

}  // namespace Velmar::Lattix
