#include "connectionends.h"

#include <algorithm>
#include <vector>

#include "LattixBasic/ConditionalProcess.h"
#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "QuarnLog/UnthrownException.h"
#include "Velmar/Lattix/JsonValue.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "qtxt/Text.h"

namespace quarn::modelgui::detail {

namespace lx = Velmar::Lattix;

namespace {

constexpr std::uint32_t kIncompatibleColor = 6579455;
constexpr std::uint32_t kConvertibleColor = 52685;

std::shared_ptr<lx::Operator> OperatorOf(const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
    if (auto opNode = std::dynamic_pointer_cast<OperatorNode>(node)) {
        return opNode->GetOperator();
    }
    if (auto portNode = std::dynamic_pointer_cast<PortNode>(node)) {
        if (auto port = portNode->GetPort()) {
            return port->TryGetOperator();
        }
    }
    return nullptr;
}

std::string Describe(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& point) {
    if (!point) {
        return "no point";
    }
    auto node = point->GetNode();
    return "\"" + qtxt::DefaultWideToUTF8(point->GetCaption()) + "\" of \"" +
           (node ? qtxt::DefaultWideToUTF8(node->GetCaption()) : std::string("no node")) + "\"";
}

bool IsConditional(const std::shared_ptr<lx::Model>& model) {
    return std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(model) != nullptr;
}

// An end of a data link: an operator and one of its ports. When the operator is a model seen from
// inside (a model port drawn as a port node), `inside` is set.
struct PortEnd {
    std::shared_ptr<lx::Operator> op;
    std::shared_ptr<lx::Port> port;
    bool inside = false;
};

// The model in which a link at `end` is made: the model itself for one of its own ports seen from
// inside, the operator's process otherwise.
std::shared_ptr<lx::Model> ContainerOf(const PortEnd& end) {
    if (end.inside) {
        return std::static_pointer_cast<lx::Model>(end.op);
    }
    return end.op->GetProcess();
}

// The innermost model that holds both containers, or null.
std::shared_ptr<lx::Model> CommonContainer(const std::shared_ptr<lx::Model>& a,
                                           const std::shared_ptr<lx::Model>& b) {
    std::vector<std::shared_ptr<lx::Model>> above;
    for (auto m = a; m; m = m->GetProcess()) {
        above.push_back(m);
    }
    for (auto m = b; m; m = m->GetProcess()) {
        if (std::find(above.begin(), above.end(), m) != above.end()) {
            return m;
        }
    }
    return nullptr;
}

// A port name of `model` not taken yet, made from `base`.
std::wstring FreePortName(const lx::Model& model, const std::wstring& base) {
    if (!model.GetPort(base)) {
        return base;
    }
    for (int n = 2;; ++n) {
        auto name = base + L" " + std::to_wstring(n);
        if (!model.GetPort(name)) {
            return name;
        }
    }
}

// One step of a raised end: `port` of `container` aliases `inner`.
struct RaisedPort {
    std::shared_ptr<lx::Model> container;
    std::shared_ptr<lx::Port> port;
    std::shared_ptr<lx::Port> inner;
};

[[noreturn]] void RaiseNoCommonModel(const PortEnd& parent, const PortEnd& child) {
    QUARN_THROW(L"\"" + parent.op->GetDisplayName() + L"\" and \"" + child.op->GetDisplayName() +
                L"\" are not in one model and cannot be connected.");
}

void ConnectOperators(const std::shared_ptr<lx::Model>& container,
                      const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection,
                      const PortEnd& parent, const PortEnd& child) {
    container->NotifyOperatorConnecting(child.op);
    auto link = lx::Operator::ConnectParent(child.op, parent.op, parent.port, child.port);
    if (link && connection) {
        ColorByStatus(connection, link->GetStatus());
    }
    child.op->InvalidateExecution();
}

}  // namespace

void LogIntegrityError(const char* function) {
    QuarnLog::UnthrownException error(function, __FILE__, "GUI/Data Model integrety error");
}

std::shared_ptr<lx::Model> ModelOf(const ConnectionCall& call,
                                   const std::shared_ptr<lx::Operator>& op) {
    auto process = op->GetProcess();
    return process ? process : call.model;
}

ConnectionEnds ReadEnds(const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection,
                        const char* function) {
    if (!connection) {
        throw QuarnLog::Exception(function, __FILE__, "No connection was given.");
    }
    ConnectionEnds ends;
    ends.inputPoint = connection->GetInputPoint();
    ends.outputPoint = connection->GetOutputPoint();
    ends.parent = OperatorOf(connection->GetOutputNode());
    ends.child = OperatorOf(connection->GetInputNode());
    if (!ends.parent || !ends.child) {
        throw QuarnLog::Exception(function, __FILE__,
                                  "The connection from " + Describe(ends.outputPoint) + " to " +
                                      Describe(ends.inputPoint) +
                                      " does not join two elements of a model.");
    }
    return ends;
}

std::shared_ptr<lx::Port> PortOf(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& point) {
    auto described = std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(point);
    return described ? described->GetPort() : nullptr;
}

bool CrossesConditional(const std::shared_ptr<lx::Model>& model,
                        const std::shared_ptr<lx::Operator>& parent,
                        const std::shared_ptr<lx::Operator>& child) {
    return (parent != model && IsConditional(parent->GetProcess())) ||
           (child != model && IsConditional(child->GetProcess()));
}

void ColorByStatus(const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection, int status) {
    if (status == lx::PortConnection::StatusIncompatible) {
        connection->SetColor(kIncompatibleColor);
        connection->UpdateUserData();
    } else if (status == lx::PortConnection::StatusConvertible) {
        connection->SetColor(kConvertibleColor);
        connection->UpdateUserData();
    }
}

void AliasModelInput(const std::shared_ptr<lx::Model>& model,
                     const std::shared_ptr<lx::Port>& modelPort,
                     const std::shared_ptr<lx::Operator>& child,
                     const std::shared_ptr<lx::Port>& childPort) {
    model->AliasPort(childPort, modelPort->GetName());
    auto childValue = childPort->GetExistingData(false);
    if (!childValue) {
        return;
    }
    auto modelValue = modelPort->GetExistingData(false);
    if (!modelValue) {
        // The value the user gave the operator now belongs to the model's input.
        modelPort->SetData(childValue);
        childPort->ClearData();
        return;
    }
    bool equal = false;
    try {
        equal = modelValue->ToJson() == childValue->ToJson();
    } catch (const std::exception& error) {
        // A value without a structured form cannot be compared: both stay, as for different ones.
        QuarnLog::Write(QuarnLog::Level::Debug, "quarn::modelgui::AddConnection::OnAdded", __FILE__,
                        std::string("Port values not compared: ") + error.what());
    }
    if (equal) {
        childPort->ClearData();
    } else {
        child->SetInfoMessage(L"The value set on " + childPort->GetDisplayName() +
                              L" will not be used because a connection has been made to the port.");
    }
}

void UnaliasModelInput(const std::shared_ptr<lx::Port>& modelPort,
                       const std::shared_ptr<lx::Port>& childPort) {
    modelPort->RemoveInnerAliasedPort(childPort);
    modelPort->ClearSupportedTypes();
    auto modelValue = modelPort->GetExistingData(false);
    if (modelValue && !childPort->GetExistingData(false)) {
        childPort->SetData(modelValue->Clone());
    }
}

void UnaliasModelOutput(const std::shared_ptr<lx::Port>& modelPort,
                        const std::shared_ptr<lx::Port>& parentPort) {
    modelPort->RemoveInnerAliasedPort(parentPort);
    modelPort->ClearSupportedTypes();
}

// A conditional operator is a model of its own: an operator inside it is reached from outside
// only through the conditional's ports. So each end is raised model by model, through a new port
// of each model around it that aliases the port below, until both ends are in one model; there
// the link is an alias when one end is that model's own port, and a data link otherwise. Every
// raised port is new, so that taking the link down again touches nothing else.
void ConnectAcross(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                   const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection,
                   const std::shared_ptr<lx::Model>& model,
                   const std::shared_ptr<lx::Operator>& parentOp,
                   const std::shared_ptr<lx::Port>& parentPort,
                   const std::shared_ptr<lx::Operator>& childOp,
                   const std::shared_ptr<lx::Port>& childPort) {
    (void)canvas;
    PortEnd parent{parentOp, parentPort, parentOp == model};
    PortEnd child{childOp, childPort, childOp == model};
    auto common = CommonContainer(ContainerOf(parent), ContainerOf(child));
    if (!common) {
        RaiseNoCommonModel(parent, child);
    }
    auto raise = [&common, &parent, &child](PortEnd& end) {
        for (auto container = ContainerOf(end); container != common; container = ContainerOf(end)) {
            if (!container) {
                RaiseNoCommonModel(parent, child);
            }
            if (end.inside) {
                // The model's own port, seen from the model around it.
                end.inside = false;
                continue;
            }
            auto port =
                container->AliasPort(end.port, FreePortName(*container, end.port->GetName()));
            end = PortEnd{container, port, false};
        }
    };
    raise(parent);
    raise(child);
    if (parent.inside) {
        AliasModelInput(common, parent.port, child.op, child.port);
    } else if (child.inside) {
        common->AliasPort(parent.port, child.port->GetName());
    } else {
        ConnectOperators(common, connection, parent, child);
    }
}

void DisconnectAcross(const std::shared_ptr<lx::Model>& model,
                      const std::shared_ptr<lx::Operator>& parentOp,
                      const std::shared_ptr<lx::Port>& parentPort,
                      const std::shared_ptr<lx::Operator>& childOp,
                      const std::shared_ptr<lx::Port>& childPort) {
    static const char* function = "quarn::modelgui::RemoveConnection::OnRemoved";
    PortEnd parent{parentOp, parentPort, parentOp == model};
    PortEnd child{childOp, childPort, childOp == model};
    auto common = CommonContainer(ContainerOf(parent), ContainerOf(child));
    if (!common) {
        LogIntegrityError(function);
        return;
    }
    // Follow the aliases up, as ConnectAcross made them.
    auto follow = [&common](PortEnd& end, std::vector<RaisedPort>& chain) {
        for (auto container = ContainerOf(end); container != common; container = ContainerOf(end)) {
            if (!container) {
                return false;
            }
            if (end.inside) {
                end.inside = false;
                continue;
            }
            auto aliasing = end.port->GetAliasingPort();
            if (!aliasing || aliasing->TryGetOperator() != container) {
                return false;
            }
            chain.push_back(RaisedPort{container, aliasing, end.port});
            end = PortEnd{container, aliasing, false};
        }
        return true;
    };
    std::vector<RaisedPort> parentChain;
    std::vector<RaisedPort> childChain;
    if (!follow(parent, parentChain) || !follow(child, childChain)) {
        LogIntegrityError(function);
        return;
    }
    if (parent.inside) {
        UnaliasModelInput(parent.port, child.port);
    } else if (child.inside) {
        UnaliasModelOutput(child.port, parent.port);
    } else {
        if (!child.op->DisconnectParent(parent.op, parent.port, child.port)) {
            LogIntegrityError(function);
        }
        child.op->InvalidateExecution();
        if (!common->IsOperatorConnected(child.op)) {
            common->NotifyOperatorUnconnected(child.op);
        }
    }
    // From the outermost raised port inwards: a port that nothing else uses goes with its alias.
    auto prune = [](std::vector<RaisedPort>& chain) {
        for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
            bool usedOutside = false;
            for (const auto& link : it->port->GetConnections()) {
                if (!link->IsInnerAlias() ||
                    (link->GetParentPort() != it->inner && link->GetChildPort() != it->inner)) {
                    usedOutside = true;
                }
            }
            if (usedOutside || it->port->GetInnerAliasedPorts().size() > 1) {
                return;
            }
            it->container->RemovePort(it->port->GetName());
        }
    };
    prune(parentChain);
    prune(childChain);
}

}  // namespace quarn::modelgui::detail
