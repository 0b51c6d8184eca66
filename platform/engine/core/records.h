#pragma once

// The private records of ports, operators and models, and the link bookkeeping that the three
// classes share (not installed).
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"

namespace Velmar::Lattix {

struct portRecord {
    std::wstring name;
    std::wstring displayName;
    std::wstring description;
    std::vector<std::wstring> keywords;
    PortDirection direction = PortDirection::Input;
    bool optional = false;
    bool hidden = false;
    bool isPrivate = false;
    bool native = false;
    std::vector<ObjectName> supported;
    std::vector<ObjectName> extra;
    std::vector<ObjectName> excluded;
    std::shared_ptr<Data> data;
    std::shared_ptr<Data> defaultData;
    Port::AttributeMap attributes;
    Port::DataTypeAttributeMapMap dataTypeAttributes;
    std::weak_ptr<Operator> owner;
    // Links: the child port owns them, the parent port refers to them.
    std::vector<std::shared_ptr<PortConnection>> inbound;
    std::vector<std::weak_ptr<PortConnection>> outbound;
    // A model port's inner aliased ports; an inner port's model port.
    std::vector<std::shared_ptr<Port>> innerAliased;
    std::weak_ptr<Port> aliasingPort;
};

// One registration of a message callback. Calls and the token's release are serialised by
// callLock, so that no call starts or runs on another thread once the release has returned.
struct messageCallbackEntry {
    std::recursive_mutex callLock;
    bool alive = true;
    Operator::MessageCallback fn;
};

struct operatorRecord {
    ObjectName name;
    std::wstring displayName;
    std::wstring description;
    std::wstring icon;
    std::wstring displayCategory;
    std::wstring colorCategory = L"Default";
    std::vector<std::wstring> keywords;
    bool usableInExpression = false;
    std::vector<std::wstring> syntaxForms;
    std::wstring uri;
    std::vector<PortDefinition> declaredPorts;
    std::vector<std::shared_ptr<Port>> ports;
    std::map<std::wstring, std::shared_ptr<Data>> attributes;
    std::vector<std::weak_ptr<Operator>> parents;

    // Shared with other threads: guarded by lock.
    mutable std::mutex lock;
    std::weak_ptr<Model> process;
    std::vector<OperatorMessage> messages;
    std::vector<std::shared_ptr<messageCallbackEntry>> callbacks;
    bool executed = false;
    double progress = 0.0;
    double minimumProgress = 0.0;
    double maximumProgress = 100.0;
};

struct modelRecord {
    std::vector<std::shared_ptr<Operator>> operators;
    bool readonly = false;
    bool locked = false;
    bool plainFormatForbidden = false;
    std::wstring processName;
};

struct LinkAccess {
    static portRecord& Of(const Port& port) { return *port.portData; }
    static operatorRecord& Of(const Operator& op) { return *op.operatorData; }
    static modelRecord& Of(const Model& model) { return *model.modelData; }

    // Takes a link out of both of its ports.
    static void Detach(std::shared_ptr<PortConnection> connection);
    // Makes a link and enters it at both ports.
    static std::shared_ptr<PortConnection> Attach(const std::shared_ptr<Operator>& parent,
                                                  const std::shared_ptr<Port>& parentPort,
                                                  const std::shared_ptr<Operator>& child,
                                                  const std::shared_ptr<Port>& childPort,
                                                  bool innerAlias);
    // Removes every link and alias of a port.
    static void DetachAll(const std::shared_ptr<Port>& port);

    static void Validate(Operator& op, const Port& port, const std::shared_ptr<Data>& data) {
        op.ValidatePortData(port, data);
    }
    static void Changed(Operator& op, const std::shared_ptr<Port>& port) {
        op.OnPortDataChanged(port);
    }
};

}  // namespace Velmar::Lattix
