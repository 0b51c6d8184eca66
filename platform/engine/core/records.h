#pragma once

// The private records of ports, operators and models, and the link bookkeeping that the three
// classes share (not installed).
#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorDefinition.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"

namespace Velmar::Lattix {

// The texts and type lists of a port. The ports an operator type makes share one with the type's
// definition until one of them changes it; then that port gets its own copy (portRecord::Edit).
struct portShape {
    std::wstring name;
    std::wstring displayName;
    std::wstring description;
    std::vector<std::wstring> keywords;
    std::vector<ObjectName> supported;
    std::vector<ObjectName> extra;
    std::vector<ObjectName> excluded;
};

struct portRecord {
    // Never null.
    std::shared_ptr<const portShape> shape;
    // Whether shape was made for this port alone (then Edit changes it in place).
    bool ownShape = false;
    PortDirection direction = PortDirection::Input;
    bool optional = false;
    bool hidden = false;
    bool isPrivate = false;
    bool native = false;
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

    const std::wstring& Name() const { return shape->name; }
    // The shape, to change: copied first when it is shared.
    portShape& Edit() {
        if (!ownShape) {
            shape = std::make_shared<portShape>(*shape);
            ownShape = true;
        }
        // Made non-const by the line above or by whoever set ownShape.
        return const_cast<portShape&>(*shape);
    }
};

// One declared port of an operator type, made ready once for all the ports made from it: the
// shape to share, and the default and data attributes read into values to copy.
struct preparedPort {
    std::shared_ptr<const portShape> shape;
    PortDirection direction = PortDirection::Input;
    bool optional = false;
    bool hidden = false;
    bool isPrivate = false;
    std::shared_ptr<const Data> defaultData;
    Port::DataTypeAttributeMapMap dataAttributes;
};

// An operator definition with its ports made ready. Never changed once made, so that operators
// share it.
struct preparedDefinition {
    OperatorDefinition definition;
    std::vector<preparedPort> ports;

    // Reads the defaults and data attributes of the definition's ports; a default that its
    // port's first type does not read raises QuarnLog::Exception naming the operator and port.
    static std::shared_ptr<const preparedDefinition> Prepare(OperatorDefinition definition);
};

// One registration of a message callback. Calls and the token's release are serialised by
// callLock, so that no call starts or runs on another thread once the release has returned.
struct messageCallbackEntry {
    std::recursive_mutex callLock;
    bool alive = true;
    Operator::MessageCallback fn;
};

// A value that the operators of one type share with their definition (or with each other) until
// one of them is given its own: making an operator then copies no texts.
template <typename T>
class SharedValue {
public:
    SharedValue() = default;
    explicit SharedValue(std::shared_ptr<const T> shared) : value(std::move(shared)) {}
    const T& Get() const {
        static const T empty{};
        return value ? *value : empty;
    }
    void Set(T own) { value = std::make_shared<const T>(std::move(own)); }
    void Share(std::shared_ptr<const T> shared) { value = std::move(shared); }

private:
    std::shared_ptr<const T> value;
};

// "Default", shared by every operator that keeps it.
std::shared_ptr<const std::wstring> DefaultColorCategory();

struct operatorRecord {
    ObjectName name;
    SharedValue<std::wstring> displayName;
    SharedValue<std::wstring> description;
    SharedValue<std::wstring> icon;
    SharedValue<std::wstring> displayCategory;
    SharedValue<std::wstring> colorCategory{DefaultColorCategory()};
    SharedValue<std::vector<std::wstring>> keywords;
    bool usableInExpression = false;
    SharedValue<std::vector<std::wstring>> syntaxForms;
    std::wstring uri;
    // Shared with the factory's definition (never changed once made), so that creating an
    // operator does not copy its port definitions.
    std::shared_ptr<const preparedDefinition> definition;
    std::vector<std::shared_ptr<Port>> ports;
    // In name order. Names are held in an 8-bit form (see operator.cpp), in which the short ASCII
    // names operators carry ("PositionX") need no allocation of their own.
    struct attribute {
        std::string name;
        std::shared_ptr<Data> value;
    };
    std::vector<attribute> attributes;
    // An attribute name's key, and back.
    static std::string KeyOf(const std::wstring& name);
    static std::wstring NameOf(const std::string& key);
    // Where the attribute of that key is in a list, or would be put.
    template <typename List>
    static auto AttributeAt(List& list, const std::string& key) {
        return std::lower_bound(
            list.begin(), list.end(), key,
            [](const attribute& entry, const std::string& k) { return entry.name < k; });
    }
    // The attribute of that key in a list, or null.
    static const attribute* FindAttribute(const std::vector<attribute>& list,
                                          const std::string& key) {
        auto at = AttributeAt(list, key);
        return at != list.end() && at->name == key ? &*at : nullptr;
    }
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
    // The same operators, for a membership test that does not grow with the model.
    std::unordered_set<const Operator*> members;
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

    // ApplyDefinition without copying: the operator keeps a share of the definition.
    static void ApplySharedDefinition(Operator& op,
                                      const std::shared_ptr<const preparedDefinition>& definition);
    // Model::AddOperator for an operator just made, which belongs to no model yet and so can be
    // neither the model itself nor above it: the checks are left out.
    static void AddNewOperator(const std::shared_ptr<Model>& model,
                               const std::shared_ptr<Operator>& op);
    // Makes room for that many more operators in the model.
    static void ReserveOperators(Model& model, std::size_t count);
    // A new operator of a built-in type, as OperatorFactory::Create makes it.
    static std::shared_ptr<Operator> Instantiate(
        const std::shared_ptr<const preparedDefinition>& definition);
    // The registered built-in type of that name, or null (a user operator, or no such type).
    static std::shared_ptr<const preparedDefinition> FindBuiltIn(const ObjectName& name);

    static void Validate(Operator& op, const Port& port, const std::shared_ptr<Data>& data) {
        op.ValidatePortData(port, data);
    }
    static void Changed(Operator& op, const std::shared_ptr<Port>& port) {
        op.OnPortDataChanged(port);
    }
};

}  // namespace Velmar::Lattix
