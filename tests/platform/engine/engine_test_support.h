#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"

namespace enginetest {

inline Velmar::Lattix::ObjectName Type(const wchar_t* fullName) {
    return Velmar::Lattix::ObjectName::Parse(fullName);
}

// A plain operator inside model with one input and one output port of the given types.
inline std::shared_ptr<Velmar::Lattix::Operator> AddOperator(
    const std::shared_ptr<Velmar::Lattix::Model>& model, const std::wstring& name,
    std::vector<Velmar::Lattix::ObjectName> inTypes,
    std::vector<Velmar::Lattix::ObjectName> outTypes) {
    auto op = std::make_shared<Velmar::Lattix::Operator>(L"TEST", name);
    op->SetDisplayName(name);
    op->AddPort(L"In", Velmar::Lattix::PortDirection::Input)->SetSupportedTypes(inTypes);
    op->AddPort(L"Out", Velmar::Lattix::PortDirection::Output)->SetSupportedTypes(outTypes);
    if (model) model->AddOperator(op);
    return op;
}

}  // namespace enginetest
