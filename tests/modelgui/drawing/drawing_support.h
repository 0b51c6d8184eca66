#pragma once

// Small engine models and canvas helpers for the drawing and connection tests.

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/AddConnection.h"
#include "modelgui/RemoveConnection.h"

namespace drawtest {

namespace lx = Velmar::Lattix;

inline lx::ObjectName IntType() {
    return lx::ObjectName(L"TAMARIN", L"Int");
}
inline lx::ObjectName BoolType() {
    return lx::ObjectName(L"TAMARIN", L"Bool");
}
inline lx::ObjectName StringType() {
    return lx::ObjectName(L"TAMARIN", L"String");
}

// Adds `port` to `op` accepting `type`.
inline std::shared_ptr<lx::Port> AddTypedPort(const std::shared_ptr<lx::Operator>& op,
                                              const std::wstring& name, lx::PortDirection direction,
                                              const lx::ObjectName& type = IntType()) {
    auto port = op->AddPort(name, direction);
    port->SetSupportedTypes({type});
    return port;
}

// An operator with one Int input "In" and one Int output "Out", added to `model`.
inline std::shared_ptr<lx::Operator> AddStep(const std::shared_ptr<lx::Model>& model,
                                             const std::wstring& name,
                                             const std::shared_ptr<lx::Operator>& op = nullptr) {
    auto step = op ? op : std::make_shared<lx::Operator>(L"TEST", L"Step");
    step->SetDisplayName(name);
    AddTypedPort(step, L"In", lx::PortDirection::Input);
    AddTypedPort(step, L"Out", lx::PortDirection::Output);
    model->AddOperator(step);
    return step;
}

inline void SetPosition(const std::shared_ptr<lx::Operator>& op, int x, int y) {
    op->SetAttribute(L"PositionX", std::make_shared<lx::IntData>(x));
    op->SetAttribute(L"PositionY", std::make_shared<lx::IntData>(y));
}

// A canvas whose user gestures reach AddConnection and RemoveConnection, as a host wires them.
struct WiredCanvas {
    std::shared_ptr<ZML::FlowGraphPart> canvas = std::make_shared<ZML::FlowGraphPart>();
    std::shared_ptr<lx::Model> model;
    ZML::FlowGraphPart::Token added;
    ZML::FlowGraphPart::Token removed;

    explicit WiredCanvas(std::shared_ptr<lx::Model> edited) : model(std::move(edited)) {
        std::weak_ptr<ZML::FlowGraphPart> weakCanvas = canvas;
        std::weak_ptr<lx::Model> weakModel = model;
        added = canvas->OnConnectionAdded(
            [weakCanvas, weakModel](const std::shared_ptr<ZML::FlowGraphConnectionEx>& c) {
                quarn::modelgui::AddConnection::OnAdded(weakCanvas.lock(), weakModel.lock(), c);
            });
        removed = canvas->OnConnectionRemoved(
            [weakCanvas, weakModel](const std::shared_ptr<ZML::FlowGraphConnectionEx>& c) {
                quarn::modelgui::RemoveConnection::OnRemoved(weakCanvas.lock(), weakModel.lock(),
                                                             c);
            });
    }
};

}  // namespace drawtest
