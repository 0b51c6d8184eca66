#pragma once

#include <memory>

namespace Velmar::Lattix {

class Operator;
class Port;
struct portConnectionRecord;

// A data link from a parent's port to a child's port, or an alias link between a model port and a
// port of an operator inside the model (the model is the parent of an input alias and the child of
// an output alias). The link refers to both ends weakly; the child port owns it.
class PortConnection {
public:
    // The status values of GetStatus.
    static constexpr int StatusMatching = 0;
    static constexpr int StatusIncompatible = 1;
    static constexpr int StatusConvertible = 2;

    PortConnection(const std::shared_ptr<Operator>& parent, const std::shared_ptr<Port>& parentPort,
                   const std::shared_ptr<Operator>& child, const std::shared_ptr<Port>& childPort,
                   bool innerAlias);

    std::shared_ptr<Operator> GetParent() const;
    std::shared_ptr<Port> GetParentPort() const;
    std::shared_ptr<Operator> GetChild() const;
    std::shared_ptr<Port> GetChildPort() const;
    bool IsInnerAlias() const;

    // Computed from the ports' types now: 0 when a type is supported by both ends, 2 when a value
    // must be converted, 1 when no type fits. An alias link, or one whose port is gone, is 0.
    int GetStatus() const;
    // The same rule for two ports.
    static int ComputeStatus(const Port& from, const Port& to);

private:
    std::shared_ptr<portConnectionRecord> portConnectionData;
};

}  // namespace Velmar::Lattix
