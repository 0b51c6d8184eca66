#pragma once

// What AddConnection and RemoveConnection share: reading the engine objects at the two ends of a
// canvas connection, and the path of a data link whose ends lie in different models (one inside a
// conditional operator).

#include <memory>
#include <string>

namespace ZML {
class FlowGraphPart;
class FlowGraphConnectionEx;
class FlowGraphConnectionPointEx;
class FlowGraphNodeEx;
}  // namespace ZML
namespace Velmar::Lattix {
class Model;
class Operator;
class Port;
}  // namespace Velmar::Lattix

namespace quarn::modelgui::detail {

// The two ends of a canvas connection. The parent is the operator at the output (sending) end, the
// child the one at the input (receiving) end; a port node stands for the operator owning its port,
// which for a model port is the model itself.
struct ConnectionEnds {
    std::shared_ptr<ZML::FlowGraphConnectionPointEx> inputPoint;
    std::shared_ptr<ZML::FlowGraphConnectionPointEx> outputPoint;
    std::shared_ptr<Velmar::Lattix::Operator> parent;
    std::shared_ptr<Velmar::Lattix::Operator> child;
};

// The record of one AddConnection::OnAdded or RemoveConnection::OnRemoved call.
struct ConnectionCall {
    std::shared_ptr<ZML::FlowGraphPart> canvas;
    std::shared_ptr<Velmar::Lattix::Model> model;
    std::shared_ptr<ZML::FlowGraphConnectionEx> connection;
    ConnectionEnds ends;
};

// The model in which `op` sits: its process, else the model drawn on the call's canvas.
std::shared_ptr<Velmar::Lattix::Model> ModelOf(const ConnectionCall& call,
                                               const std::shared_ptr<Velmar::Lattix::Operator>& op);

// Reads the ends of `connection`; raises QuarnLog::Exception naming `function` when an end is
// missing or does not stand for a live engine object.
ConnectionEnds ReadEnds(const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection,
                        const char* function);

// The port of a port description point, or empty for any other point.
std::shared_ptr<Velmar::Lattix::Port> PortOf(
    const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& point);

// True when a data link between `parent` and `child`, drawn on the canvas of `model`, has an end
// inside a conditional operator: such a link runs through the conditional's own ports.
bool CrossesConditional(const std::shared_ptr<Velmar::Lattix::Model>& model,
                        const std::shared_ptr<Velmar::Lattix::Operator>& parent,
                        const std::shared_ptr<Velmar::Lattix::Operator>& child);

// The colour a data link of the given status gets on the canvas (the canvas's own colour for a
// matching link), applied to `connection`.
void ColorByStatus(const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection, int status);

// Aliases `childPort` to the model input `modelPort` of `model` and settles the two values: the
// operator's value moves to a model port without one, an equal value is dropped, a different one
// stays and the operator is told it will not be used.
void AliasModelInput(const std::shared_ptr<Velmar::Lattix::Model>& model,
                     const std::shared_ptr<Velmar::Lattix::Port>& modelPort,
                     const std::shared_ptr<Velmar::Lattix::Operator>& child,
                     const std::shared_ptr<Velmar::Lattix::Port>& childPort);

// Takes the alias of `childPort` off the model input `modelPort`; when the model port has a value
// and the operator port none, the operator port gets a copy, so that it keeps working with the
// value it was fed.
void UnaliasModelInput(const std::shared_ptr<Velmar::Lattix::Port>& modelPort,
                       const std::shared_ptr<Velmar::Lattix::Port>& childPort);
// Takes the alias of `parentPort` off the model output `modelPort`.
void UnaliasModelOutput(const std::shared_ptr<Velmar::Lattix::Port>& modelPort,
                        const std::shared_ptr<Velmar::Lattix::Port>& parentPort);

// The general path of a data link whose ends lie in different models: each end is raised through
// new ports of the models around it (aliases) until both are in one model, where the link is made
// as an alias (when an end is that model's own port) or as a data link. Raises
// QuarnLog::Exception when the ends share no model.
void ConnectAcross(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                   const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection,
                   const std::shared_ptr<Velmar::Lattix::Model>& model,
                   const std::shared_ptr<Velmar::Lattix::Operator>& parent,
                   const std::shared_ptr<Velmar::Lattix::Port>& parentPort,
                   const std::shared_ptr<Velmar::Lattix::Operator>& child,
                   const std::shared_ptr<Velmar::Lattix::Port>& childPort);

// Takes down what ConnectAcross made: the link in the shared model, then each port raised for it
// that nothing else uses. A chain the engine no longer has is logged as an integrity error.
void DisconnectAcross(const std::shared_ptr<Velmar::Lattix::Model>& model,
                      const std::shared_ptr<Velmar::Lattix::Operator>& parent,
                      const std::shared_ptr<Velmar::Lattix::Port>& parentPort,
                      const std::shared_ptr<Velmar::Lattix::Operator>& child,
                      const std::shared_ptr<Velmar::Lattix::Port>& childPort);

// Logs "GUI/Data Model integrety error" for `function` without raising it.
void LogIntegrityError(const char* function);

}  // namespace quarn::modelgui::detail
