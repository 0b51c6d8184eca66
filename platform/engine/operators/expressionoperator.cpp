#include "Velmar/Lattix/ExpressionOperator.h"

#include <algorithm>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Lxl/Parser.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/StringData.h"
#include "core/textutil.h"

namespace Velmar::Lattix {

namespace {

constexpr const wchar_t* expressionPort = L"Expression";

std::wstring TextOf(const std::shared_ptr<Data>& data) {
    if (!data) return {};
    if (auto text = std::dynamic_pointer_cast<StringData>(data)) return text->GetValue();
    return data->ToString();
}

// The "$" names of an expression text; an empty text refers to none. Raises the parser's
// SyntaxError for a text that is not a valid expression.
std::vector<std::wstring> Referenced(const std::wstring& text) {
    if (detail::Trim(text).empty()) return {};
    Lxl::ParseOptions options;
    options.isFunction = [](const std::wstring& name) {
        return OperatorFactory::IsExpressionFunction(name);
    };
    auto tree = Lxl::Parse(text, options);
    return Lxl::ReferencedPorts(*tree);
}

}  // namespace

ExpressionOperator::ExpressionOperator() : Operator(L"TAMARIN", L"Expression") {}
ExpressionOperator::~ExpressionOperator() = default;

std::vector<std::wstring> ExpressionOperator::GetReferencedPortNames() const {
    auto port = GetPort(expressionPort);
    return port ? Referenced(TextOf(port->GetExistingData(false))) : std::vector<std::wstring>{};
}

void ExpressionOperator::ValidatePortData(const Port& port, const std::shared_ptr<Data>& data) {
    if (port.GetName() != expressionPort || !data) return;
    for (const auto& name : Referenced(TextOf(data))) {
        auto existing = GetPort(name);
        bool declared = false;
        for (const auto& definition : GetDeclaredPorts())
            if (definition.name == name) declared = true;
        if (declared || (existing && existing->IsOutput()))
            QUARN_THROW(L"The expression cannot refer to $" + name +
                        L": that is a port of the operator itself.");
    }
}

void ExpressionOperator::OnPortDataChanged(const std::shared_ptr<Port>& port) {
    if (!port || port->GetName() != expressionPort) return;
    auto names = Referenced(TextOf(port->GetExistingData(false)));
    for (const auto& name : names) {
        if (GetPort(name)) continue;
        auto input = AddPort(name, PortDirection::Input);
        input->SetDescription(L"The value of $" + name + L" in the expression.");
    }
    std::vector<std::wstring> declared;
    for (const auto& definition : GetDeclaredPorts()) declared.push_back(definition.name);
    for (const auto& input : GetPorts()) {
        const auto name = input->GetName();
        if (!input->IsInput() ||
            std::find(declared.begin(), declared.end(), name) != declared.end())
            continue;
        if (std::find(names.begin(), names.end(), name) != names.end() || input->IsConnected())
            continue;
        RemovePort(name);
    }
}

}  // namespace Velmar::Lattix
