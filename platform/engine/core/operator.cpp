#include "Velmar/Lattix/Operator.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <type_traits>

#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "Velmar/Lattix/DataFactory.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/OperatorDefinition.h"
#include "core/records.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix {

std::shared_ptr<const std::wstring> DefaultColorCategory() {
    static const auto shared = std::make_shared<const std::wstring>(L"Default");
    return shared;
}

Operator::Operator() : operatorData(std::make_shared<operatorRecord>()) {
    // Shared: most operators are made bare and named by their definition straight away.
    static const ObjectName bare(L"TAMARIN", L"Operator");
    operatorData->name = bare;
}

Operator::Operator(std::wstring nameSpace, std::wstring name)
    : operatorData(std::make_shared<operatorRecord>()) {
    operatorData->name = ObjectName(std::move(nameSpace), std::move(name));
}

Operator::~Operator() = default;

std::wstring Operator::GetOperatorNamespace() const {
    return operatorData->name.GetNamespace();
}
std::wstring Operator::GetOperatorName() const {
    return operatorData->name.GetName();
}
ObjectName Operator::GetObjectName() const {
    return operatorData->name;
}
void Operator::SetOperatorName(const ObjectName& name) {
    operatorData->name = name;
}
std::wstring Operator::GetDisplayName() const {
    const auto& displayName = operatorData->displayName.Get();
    return displayName.empty() ? operatorData->name.GetName() : displayName;
}
void Operator::SetDisplayName(const std::wstring& displayName) {
    operatorData->displayName.Set(displayName);
}
std::wstring Operator::GetDescription() const {
    return operatorData->description.Get();
}
void Operator::SetDescription(const std::wstring& description) {
    operatorData->description.Set(description);
}
std::wstring Operator::GetIcon() const {
    return operatorData->icon.Get();
}
void Operator::SetIcon(const std::wstring& icon) {
    operatorData->icon.Set(icon);
}
std::wstring Operator::GetDisplayCategory() const {
    return operatorData->displayCategory.Get();
}
void Operator::SetDisplayCategory(const std::wstring& category) {
    operatorData->displayCategory.Set(category);
}
std::wstring Operator::GetColorCategory() const {
    return operatorData->colorCategory.Get();
}
void Operator::SetColorCategory(const std::wstring& category) {
    operatorData->colorCategory.Set(category);
}
std::vector<std::wstring> Operator::GetKeywords() const {
    return operatorData->keywords.Get();
}
void Operator::SetKeywords(const std::vector<std::wstring>& keywords) {
    operatorData->keywords.Set(keywords);
}
bool Operator::IsUsableInExpression() const {
    return operatorData->usableInExpression;
}
void Operator::SetUsableInExpression(bool usable) {
    operatorData->usableInExpression = usable;
}
std::vector<std::wstring> Operator::GetSyntaxForms() const {
    return operatorData->syntaxForms.Get();
}
void Operator::SetSyntaxForms(const std::vector<std::wstring>& forms) {
    operatorData->syntaxForms.Set(forms);
}
std::wstring Operator::GetUri() const {
    return operatorData->uri;
}
void Operator::SetUri(const std::wstring& uri) {
    operatorData->uri = uri;
}

namespace {

// Points the texts at the definition itself (it never changes once registered).
void ShareIdentity(operatorRecord& record,
                   const std::shared_ptr<const OperatorDefinition>& definition) {
    auto part = [&definition](const auto& member) {
        using T = std::remove_cvref_t<decltype(member)>;
        return std::shared_ptr<const T>(definition, &member);
    };
    record.name = definition->name;
    record.displayName.Share(part(definition->displayName));
    record.description.Share(part(definition->description));
    record.displayCategory.Share(part(definition->displayCategory));
    record.colorCategory.Share(part(definition->colorCategory));
    record.icon.Share(part(definition->icon));
    record.keywords.Share(part(definition->keywords));
    record.usableInExpression = definition->usableInExpression;
    record.syntaxForms.Share(part(definition->syntaxForms));
}

}  // namespace

std::shared_ptr<const preparedDefinition> preparedDefinition::Prepare(
    OperatorDefinition definition) {
    auto prepared = std::make_shared<preparedDefinition>();
    prepared->ports.reserve(definition.ports.size());
    for (const auto& declared : definition.ports) {
        preparedPort port;
        auto shape = std::make_shared<portShape>();
        shape->name = declared.name;
        shape->description = declared.description;
        shape->keywords = declared.keywords;
        for (const auto& type : declared.types)
            if (std::find(shape->supported.begin(), shape->supported.end(), type) ==
                shape->supported.end())
                shape->supported.push_back(type);
        port.shape = std::move(shape);
        port.direction = declared.direction;
        port.optional = declared.optional;
        port.hidden = declared.hidden;
        port.isPrivate = declared.isPrivate;
        auto where = [&] {
            return L"Operator \"" + definition.name.GetFullName() + L"\", port \"" + declared.name +
                   L"\": ";
        };
        for (const auto& [type, attributes] : declared.dataAttributes) {
            ObjectName parsed;
            if (!ObjectName::TryParse(type, parsed))
                QUARN_THROW(where() + L"the data attribute type \"" + type +
                            L"\" is not a data type name.");
            for (const auto& [name, value] : attributes) {
                if (name.empty()) QUARN_THROW(where() + L"a data attribute needs a name.");
                port.dataAttributes[type][name] = value ? value->Clone() : nullptr;
            }
        }
        if (!declared.defaultValue.empty() && !declared.types.empty()) {
            try {
                port.defaultData =
                    DataFactory::FromString(declared.types.front(), declared.defaultValue);
            } catch (const std::exception& error) {
                QUARN_THROW(where() + L"bad default value: " + qtxt::widen(error.what()));
            }
        }
        prepared->ports.push_back(std::move(port));
    }
    prepared->definition = std::move(definition);
    return prepared;
}

void Operator::ApplyDefinition(const OperatorDefinition& definition) {
    LinkAccess::ApplySharedDefinition(*this, preparedDefinition::Prepare(definition));
}

void LinkAccess::ApplySharedDefinition(
    Operator& op, const std::shared_ptr<const preparedDefinition>& definition) {
    auto& record = Of(op);
    ShareIdentity(record,
                  std::shared_ptr<const OperatorDefinition>(definition, &definition->definition));
    record.definition = definition;
    op.Initialize();
}

std::vector<PortDefinition> Operator::GetDeclaredPorts() const {
    if (!operatorData->definition) return {};
    return operatorData->definition->definition.ports;
}

namespace {

// A declared port made in one allocation with its record: operators are made by the thousand when
// a model is read, and each has a few ports. The port's record pointer does not own the record;
// both live and die together in this block, which nothing but the port refers to.
struct declaredPort : Port {
    declaredPort() : Port(std::shared_ptr<portRecord>(std::shared_ptr<void>(), &record)) {}
    portRecord record;
};

}  // namespace

void Operator::Initialize() {
    if (!operatorData->definition) return;
    // Hold the definition: a derived Initialize may apply another one meanwhile.
    auto definition = operatorData->definition;
    auto self = weak_from_this();
    if (self.expired())
        QUARN_THROW(L"Operator \"" + GetDisplayName() +
                    L"\" must be held by a shared pointer before it gets ports.");
    operatorData->ports.reserve(operatorData->ports.size() + definition->ports.size());
    for (const auto& declared : definition->ports) {
        if (GetPort(declared.shape->name)) continue;
        // The port shares the definition's shape and copies the rest.
        auto port = std::make_shared<declaredPort>();
        auto& record = port->record;
        record.shape = declared.shape;
        record.direction = declared.direction;
        record.optional = declared.optional;
        record.hidden = declared.hidden;
        record.isPrivate = declared.isPrivate;
        record.native = true;
        if (declared.defaultData) record.defaultData = declared.defaultData->Clone();
        for (const auto& [type, attributes] : declared.dataAttributes)
            for (const auto& [name, value] : attributes)
                record.dataTypeAttributes[type][name] = value ? value->Clone() : nullptr;
        record.owner = self;
        operatorData->ports.push_back(std::move(port));
    }
}

// ---- ports

std::vector<std::shared_ptr<Port>> Operator::GetPorts() const {
    return operatorData->ports;
}

std::shared_ptr<Port> Operator::GetPort(const std::wstring& name) const {
    for (const auto& port : operatorData->ports)
        if (LinkAccess::Of(*port).Name() == name) return port;
    return nullptr;
}

std::shared_ptr<Port> Operator::GetOrCreatePort(const std::wstring& name, PortDirection direction) {
    if (auto port = GetPort(name)) return port;
    return AddPort(name, direction);
}

std::shared_ptr<Port> Operator::AddPort(const std::wstring& name, PortDirection direction) {
    auto port = Port::Create(name, direction);
    AdoptPort(port);
    return port;
}

void Operator::AdoptPort(const std::shared_ptr<Port>& port) {
    if (!port) QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\": cannot add an empty port.");
    auto& record = LinkAccess::Of(*port);
    const auto& name = record.Name();
    if (name.empty()) QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\": a port needs a name.");
    if (GetPort(name))
        QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\" already has a port named \"" + name +
                    L"\".");
    if (port->TryGetOperator())
        QUARN_THROW(L"Port \"" + name + L"\" already belongs to another operator.");
    auto self = weak_from_this();
    if (self.expired())
        QUARN_THROW(L"Operator \"" + GetDisplayName() +
                    L"\" must be held by a shared pointer before it gets ports.");
    record.owner = self;
    operatorData->ports.push_back(port);
}

bool Operator::RemovePort(const std::wstring& name) {
    auto port = GetPort(name);
    if (!port) return false;
    LinkAccess::DetachAll(port);
    auto& ports = operatorData->ports;
    ports.erase(std::remove(ports.begin(), ports.end(), port), ports.end());
    LinkAccess::Of(*port).owner.reset();
    return true;
}

bool Operator::RenamePort(const std::wstring& oldName, const std::wstring& newName) {
    auto port = GetPort(oldName);
    if (!port) return false;
    if (oldName == newName) return true;
    if (newName.empty())
        QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\": a port needs a name.");
    if (GetPort(newName))
        QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\" already has a port named \"" +
                    newName + L"\".");
    LinkAccess::Of(*port).Edit().name = newName;
    return true;
}

std::vector<std::shared_ptr<Port>> Operator::GetInputPorts() const {
    std::vector<std::shared_ptr<Port>> result;
    for (const auto& port : operatorData->ports)
        if (port->IsInput() && !port->IsPrivate()) result.push_back(port);
    return result;
}

std::vector<std::shared_ptr<Port>> Operator::GetOutputPorts() const {
    std::vector<std::shared_ptr<Port>> result;
    for (const auto& port : operatorData->ports)
        if (port->IsOutput()) result.push_back(port);
    return result;
}

// ---- attributes

namespace {

// Attribute names as 8-bit keys: each character in the UTF-8 byte scheme, extended to all 32 bits
// of a wchar_t (no validation, so every name maps to its own key and back). For names of valid
// Unicode the key is their UTF-8, and byte order of the keys is the order of the names.
std::string AttributeKey(const std::wstring& name) {
    std::string key;
    key.reserve(name.size());
    for (wchar_t c : name) {
        auto code = static_cast<std::uint32_t>(c);
        if (code < 0x80) {
            key += static_cast<char>(code);
            continue;
        }
        int extra = code < 0x800        ? 1
                    : code < 0x10000    ? 2
                    : code < 0x200000   ? 3
                    : code < 0x4000000  ? 4
                    : code < 0x80000000 ? 5
                                        : 6;
        static const unsigned char lead[] = {0, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0xFE};
        // Six continuation bytes hold all 32 bits: the lead of that form carries none.
        key += static_cast<char>(lead[extra] | (extra < 6 ? code >> (6 * extra) : 0));
        for (int i = extra - 1; i >= 0; --i)
            key += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
    }
    return key;
}

std::wstring AttributeName(const std::string& key) {
    std::wstring name;
    name.reserve(key.size());
    for (std::size_t i = 0; i < key.size();) {
        auto byte = static_cast<unsigned char>(key[i++]);
        if (byte < 0x80) {
            name += static_cast<wchar_t>(byte);
            continue;
        }
        int extra = byte >= 0xFE   ? 6
                    : byte >= 0xFC ? 5
                    : byte >= 0xF8 ? 4
                    : byte >= 0xF0 ? 3
                    : byte >= 0xE0 ? 2
                                   : 1;
        std::uint32_t code = byte & (0x3F >> extra);
        for (int k = 0; k < extra && i < key.size(); ++k)
            code = (code << 6) | (static_cast<unsigned char>(key[i++]) & 0x3F);
        name += static_cast<wchar_t>(code);
    }
    return name;
}

}  // namespace

std::string operatorRecord::KeyOf(const std::wstring& name) {
    return AttributeKey(name);
}
std::wstring operatorRecord::NameOf(const std::string& key) {
    return AttributeName(key);
}

namespace {

using AttributeList = std::vector<operatorRecord::attribute>;

AttributeList::iterator FindAttribute(AttributeList& list, const std::string& key) {
    auto found = operatorRecord::AttributeAt(list, key);
    return found != list.end() && found->name == key ? found : list.end();
}

}  // namespace

void Operator::SetAttribute(const std::wstring& name, const std::shared_ptr<Data>& value) {
    if (name.empty())
        QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\": an attribute needs a name.");
    if (!value) {
        RemoveAttribute(name);
        return;
    }
    auto key = AttributeKey(name);
    auto& list = operatorData->attributes;
    // Operators mostly carry a position and little else. (Before the search: it moves the items.)
    if (list.empty()) list.reserve(4);
    auto at = operatorRecord::AttributeAt(list, key);
    if (at != list.end() && at->name == key) {
        at->value = value;
        return;
    }
    list.insert(at, operatorRecord::attribute{std::move(key), value});
}

std::shared_ptr<Data> Operator::GetAttribute(const std::wstring& name) const {
    auto& list = operatorData->attributes;
    auto found = FindAttribute(list, AttributeKey(name));
    return found == list.end() ? nullptr : found->value;
}

bool Operator::HasAttribute(const std::wstring& name) const {
    auto& list = operatorData->attributes;
    return FindAttribute(list, AttributeKey(name)) != list.end();
}
bool Operator::RemoveAttribute(const std::wstring& name) {
    auto& list = operatorData->attributes;
    auto found = FindAttribute(list, AttributeKey(name));
    if (found == list.end()) return false;
    list.erase(found);
    return true;
}
std::map<std::wstring, std::shared_ptr<Data>> Operator::GetAttributeMap() const {
    std::map<std::wstring, std::shared_ptr<Data>> map;
    for (const auto& [key, value] : operatorData->attributes)
        map.emplace_hint(map.end(), AttributeName(key), value);
    return map;
}

// ---- process

std::shared_ptr<Model> Operator::GetProcess() const {
    std::lock_guard guard(operatorData->lock);
    return operatorData->process.lock();
}

void Operator::SetProcess(const std::shared_ptr<Model>& process) {
    std::lock_guard guard(operatorData->lock);
    operatorData->process = process;
}

std::shared_ptr<Model> Operator::GetMainProcess() const {
    std::shared_ptr<Model> top;
    auto self = std::const_pointer_cast<Operator>(weak_from_this().lock());
    if (auto model = std::dynamic_pointer_cast<Model>(self)) top = model;
    // Bounded walk: AddOperator refuses cycles, the bound keeps a damaged tree from hanging.
    auto process = GetProcess();
    for (int depth = 0; process && depth < 100000; ++depth) {
        top = process;
        process = process->GetProcess();
    }
    return top;
}

// ---- flow control

bool Operator::AddParent(const std::shared_ptr<Operator>& parent) {
    if (!parent) QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\": the flow parent is empty.");
    if (parent.get() == this)
        QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\" cannot be its own flow parent.");
    if (IsParent(parent)) return false;
    operatorData->parents.push_back(parent);
    return true;
}

bool Operator::IsParent(const std::shared_ptr<Operator>& parent) const {
    if (!parent) return false;
    for (const auto& link : operatorData->parents)
        if (link.lock() == parent) return true;
    return false;
}

bool Operator::RemoveParent(const std::shared_ptr<Operator>& parent) {
    auto& parents = operatorData->parents;
    bool found = false;
    parents.erase(std::remove_if(parents.begin(), parents.end(),
                                 [&](const std::weak_ptr<Operator>& link) {
                                     auto live = link.lock();
                                     if (parent && live == parent) found = true;
                                     return !live || live == parent;
                                 }),
                  parents.end());
    return found;
}

std::vector<std::shared_ptr<Operator>> Operator::GetParents() const {
    std::vector<std::shared_ptr<Operator>> result;
    for (const auto& link : operatorData->parents)
        if (auto live = link.lock()) result.push_back(live);
    return result;
}

// ---- data links

std::shared_ptr<PortConnection> Operator::ConnectParent(const std::shared_ptr<Operator>& child,
                                                        const std::shared_ptr<Operator>& parent,
                                                        const std::shared_ptr<Port>& parentPort,
                                                        const std::shared_ptr<Port>& childPort) {
    if (!child || !parent || !parentPort || !childPort)
        QUARN_THROW("A data link needs a child, a parent and both of their ports.");
    if (child == parent)
        QUARN_THROW(L"Operator \"" + child->GetDisplayName() + L"\" cannot feed itself.");
    if (parentPort->TryGetOperator() != parent)
        QUARN_THROW(L"Port \"" + parentPort->GetName() + L"\" is not a port of operator \"" +
                    parent->GetDisplayName() + L"\".");
    if (childPort->TryGetOperator() != child)
        QUARN_THROW(L"Port \"" + childPort->GetName() + L"\" is not a port of operator \"" +
                    child->GetDisplayName() + L"\".");
    // A model's input port is a source and its output port a sink for the operators inside it.
    bool parentIsModel = std::dynamic_pointer_cast<Model>(parent) != nullptr;
    bool childIsModel = std::dynamic_pointer_cast<Model>(child) != nullptr;
    if (parentPort->IsInput() && !parentIsModel)
        QUARN_THROW(L"Port \"" + parentPort->GetName() + L"\" of \"" + parent->GetDisplayName() +
                    L"\" is an input and cannot feed another port.");
    if (childPort->IsOutput() && !childIsModel)
        QUARN_THROW(L"Port \"" + childPort->GetName() + L"\" of \"" + child->GetDisplayName() +
                    L"\" is an output and cannot be fed.");
    for (const auto& existing : LinkAccess::Of(*childPort).inbound) {
        if (existing->IsInnerAlias()) continue;
        if (existing->GetParent() == parent && existing->GetParentPort() == parentPort) {
            child->AddParent(parent);
            return existing;
        }
    }
    auto inbound = LinkAccess::Of(*childPort).inbound;
    for (const auto& existing : inbound)
        if (!existing->IsInnerAlias()) LinkAccess::Detach(existing);
    auto connection = LinkAccess::Attach(parent, parentPort, child, childPort, false);
    child->AddParent(parent);
    return connection;
}

bool Operator::DisconnectParent(const std::shared_ptr<Operator>& parent,
                                const std::shared_ptr<Port>& parentPort,
                                const std::shared_ptr<Port>& childPort) {
    if (!childPort || childPort->TryGetOperator().get() != this) return false;
    for (const auto& connection : LinkAccess::Of(*childPort).inbound) {
        if (connection->IsInnerAlias()) continue;
        if (connection->GetParent() == parent && connection->GetParentPort() == parentPort) {
            LinkAccess::Detach(connection);
            return true;
        }
    }
    return false;
}

bool Operator::DisconnectParent(const std::shared_ptr<PortConnection>& connection) {
    if (!connection || connection->IsInnerAlias() || connection->GetChild().get() != this)
        return false;
    auto childPort = connection->GetChildPort();
    if (!childPort) return false;
    const auto& inbound = LinkAccess::Of(*childPort).inbound;
    if (std::find(inbound.begin(), inbound.end(), connection) == inbound.end()) return false;
    LinkAccess::Detach(connection);
    return true;
}

std::vector<std::shared_ptr<PortConnection>> Operator::GetPortConnections() const {
    std::vector<std::shared_ptr<PortConnection>> result;
    for (const auto& port : operatorData->ports) {
        const auto& inbound = LinkAccess::Of(*port).inbound;
        result.insert(result.end(), inbound.begin(), inbound.end());
    }
    for (const auto& port : operatorData->ports)
        for (const auto& link : LinkAccess::Of(*port).outbound)
            if (auto live = link.lock()) result.push_back(live);
    return result;
}

std::vector<std::shared_ptr<Operator>> Operator::GetConnectedOperators() const {
    std::vector<std::shared_ptr<Operator>> result;
    for (const auto& connection : GetPortConnections()) {
        if (connection->IsInnerAlias()) continue;
        auto parent = connection->GetParent();
        auto other = parent.get() == this ? connection->GetChild() : parent;
        if (other && std::find(result.begin(), result.end(), other) == result.end())
            result.push_back(other);
    }
    return result;
}

std::shared_ptr<PortConnection> Operator::FindParentConnection(
    const std::shared_ptr<Operator>& parent) const {
    if (!parent) return nullptr;
    for (const auto& port : operatorData->ports)
        for (const auto& connection : LinkAccess::Of(*port).inbound)
            if (!connection->IsInnerAlias() && connection->GetParent() == parent) return connection;
    return nullptr;
}

// ---- messages

void Operator::SetInfoMessage(const std::wstring& text, const std::shared_ptr<Port>& port,
                              const std::wstring& helpKey) {
    AddMessage(port, text, helpKey, Issue::Severity::Info);
}
void Operator::SetWarningMessage(const std::wstring& text, const std::shared_ptr<Port>& port,
                                 const std::wstring& helpKey) {
    AddMessage(port, text, helpKey, Issue::Severity::Warning);
}
void Operator::SetErrorMessage(const std::wstring& text, const std::shared_ptr<Port>& port,
                               const std::wstring& helpKey) {
    AddMessage(port, text, helpKey, Issue::Severity::Error);
}

void Operator::AddMessage(const std::shared_ptr<Port>& port, const std::wstring& text,
                          const std::wstring& helpKey, Issue::Severity severity) {
    {
        std::lock_guard guard(operatorData->lock);
        auto& messages = operatorData->messages;
        // A repeated report replaces the one it repeats.
        messages.erase(std::remove_if(messages.begin(), messages.end(),
                                      [&](const OperatorMessage& old) {
                                          return old.port.lock() == port && old.text == text &&
                                                 old.severity == severity;
                                      }),
                       messages.end());
        messages.push_back(OperatorMessage{port, text, helpKey, severity});
    }
    DeliverMessage(weak_from_this().lock(), port, text, helpKey, severity);
}

void Operator::ClearMessages() {
    std::lock_guard guard(operatorData->lock);
    operatorData->messages.clear();
}

std::vector<OperatorMessage> Operator::GetMessages() const {
    std::lock_guard guard(operatorData->lock);
    return operatorData->messages;
}

namespace {
bool HasSeverity(const operatorRecord& record, Issue::Severity severity) {
    std::lock_guard guard(record.lock);
    return std::any_of(
        record.messages.begin(), record.messages.end(),
        [&](const OperatorMessage& message) { return message.severity == severity; });
}

// Releasing the token ends the registration: it waits for a call in progress on another thread,
// marks the entry dead so that no call starts afterwards, and drops it from the operator.
struct messageCallbackToken {
    std::shared_ptr<messageCallbackEntry> entry;
    std::weak_ptr<operatorRecord> owner;

    ~messageCallbackToken() {
        {
            std::lock_guard call(entry->callLock);
            entry->alive = false;
        }
        if (auto record = owner.lock()) {
            std::lock_guard guard(record->lock);
            auto& callbacks = record->callbacks;
            callbacks.erase(std::remove(callbacks.begin(), callbacks.end(), entry),
                            callbacks.end());
        }
    }
};
}  // namespace

bool Operator::HasError() const {
    return HasSeverity(*operatorData, Issue::Severity::Error);
}
bool Operator::HasWarning() const {
    return HasSeverity(*operatorData, Issue::Severity::Warning);
}
bool Operator::HasInfo() const {
    return HasSeverity(*operatorData, Issue::Severity::Info);
}

std::shared_ptr<void> Operator::AddOnMessageCallback(MessageCallback fn) {
    if (!fn) QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\": the message callback is empty.");
    auto entry = std::make_shared<messageCallbackEntry>();
    entry->fn = std::move(fn);
    {
        std::lock_guard guard(operatorData->lock);
        operatorData->callbacks.push_back(entry);
    }
    return std::make_shared<messageCallbackToken>(entry,
                                                  std::weak_ptr<operatorRecord>(operatorData));
}

void Operator::DeliverMessage(const std::shared_ptr<Operator>& op,
                              const std::shared_ptr<Port>& port, const std::wstring& text,
                              const std::wstring& helpKey, Issue::Severity severity) {
    std::vector<std::shared_ptr<messageCallbackEntry>> callbacks;
    std::shared_ptr<Model> process;
    {
        std::lock_guard guard(operatorData->lock);
        callbacks = operatorData->callbacks;
        process = operatorData->process.lock();
    }
    for (const auto& entry : callbacks) {
        std::lock_guard call(entry->callLock);
        if (entry->alive) entry->fn(op, port, text, helpKey, severity);
    }
    if (process) process->DeliverMessage(op, port, text, helpKey, severity);
}

// ---- execution state

bool Operator::IsExecuted() const {
    std::lock_guard guard(operatorData->lock);
    return operatorData->executed;
}
void Operator::SetExecuted(bool executed) {
    std::lock_guard guard(operatorData->lock);
    operatorData->executed = executed;
}
double Operator::GetProgress() const {
    std::lock_guard guard(operatorData->lock);
    return operatorData->progress;
}
double Operator::GetMinimumProgress() const {
    std::lock_guard guard(operatorData->lock);
    return operatorData->minimumProgress;
}
double Operator::GetMaximumProgress() const {
    std::lock_guard guard(operatorData->lock);
    return operatorData->maximumProgress;
}
void Operator::SetProgress(double progress) {
    std::lock_guard guard(operatorData->lock);
    operatorData->progress = progress;
}
void Operator::SetProgressBounds(double minimum, double maximum) {
    if (!(minimum <= maximum))
        QUARN_THROW("Progress bounds must not be reversed: " + std::to_string(minimum) + " > " +
                    std::to_string(maximum) + ".");
    std::lock_guard guard(operatorData->lock);
    operatorData->minimumProgress = minimum;
    operatorData->maximumProgress = maximum;
}

void Operator::InvalidateExecution() {
    std::set<const Operator*> seen;
    std::vector<std::shared_ptr<Operator>> pending{shared_from_this()};
    while (!pending.empty()) {
        auto current = pending.back();
        pending.pop_back();
        if (!seen.insert(current.get()).second) continue;
        std::shared_ptr<Model> process;
        {
            auto& record = *current->operatorData;
            std::lock_guard guard(record.lock);
            record.executed = false;
            record.progress = record.minimumProgress;
            process = record.process.lock();
        }
        for (const auto& connection : current->GetPortConnections())
            if (connection->GetParent() == current && !connection->IsInnerAlias())
                if (auto child = connection->GetChild()) pending.push_back(child);
        if (process) {
            for (const auto& sibling : process->GetOperators())
                if (sibling->IsParent(current)) pending.push_back(sibling);
            // The process's own results are stale too, but not its other operators'.
            std::lock_guard guard(process->operatorData->lock);
            process->operatorData->executed = false;
        }
    }
}

void Operator::ValidatePortData(const Port&, const std::shared_ptr<Data>&) {}
void Operator::OnPortDataChanged(const std::shared_ptr<Port>&) {}

}  // namespace Velmar::Lattix
