#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Operator.h"

namespace Velmar::Lattix {

// "TAMARIN.Expression": computes its "Output" from the text of its "Expression" port. Setting the
// text checks it (a syntax error is raised with the parser's message, naming the position) and
// gives the operator one input port (any type) per "$" name the text refers to, in order of first
// appearance; input ports no longer referred to go unless they are connected. Function names are
// those of the factory's operators usable in an expression.
class ExpressionOperator : public Operator {
public:
    ExpressionOperator();
    ~ExpressionOperator() override;

    // The "$" names of the present text (without "$"), in order of first appearance.
    std::vector<std::wstring> GetReferencedPortNames() const;

protected:
    void ValidatePortData(const Port& port, const std::shared_ptr<Data>& data) override;
    void OnPortDataChanged(const std::shared_ptr<Port>& port) override;
};

}  // namespace Velmar::Lattix
