#include "Velmar/Lattix/Model.h"

#include <algorithm>
#include <cassert>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/ListData.h"
#include "core/records.h"
#include "core/textutil.h"

namespace Velmar::Lattix {

Model::Model() : Model(L"TAMARIN", L"Model") {}

Model::Model(std::wstring nameSpace, std::wstring name)
    : Operator(std::move(nameSpace), std::move(name)), modelData(std::make_shared<modelRecord>()) {
    SetDisplayCategory(L"Model");
    SetColorCategory(L"SubModel");
}

Model::~Model() = default;

std::vector<std::shared_ptr<Operator>> Model::GetOperators() const {
    return modelData->operators;
}

std::vector<std::shared_ptr<Model>> Model::GetSubModels() const {
    std::vector<std::shared_ptr<Model>> result;
    for (const auto& op : modelData->operators)
        if (auto model = std::dynamic_pointer_cast<Model>(op)) result.push_back(model);
    return result;
}

void Model::AddOperator(const std::shared_ptr<Operator>& op) {
    if (!op) QUARN_THROW(L"Model \"" + GetDisplayName() + L"\": cannot add an empty operator.");
    auto self = std::static_pointer_cast<Model>(shared_from_this());
    for (std::shared_ptr<Model> above = self; above; above = above->GetProcess())
        if (above == op)
            QUARN_THROW(L"Model \"" + GetDisplayName() +
                        L"\" cannot contain itself or a model above it.");
    if (ContainsOperator(op)) return;
    if (auto owner = op->GetProcess(); owner && owner != self && owner->ContainsOperator(op))
        QUARN_THROW(L"Operator \"" + op->GetDisplayName() + L"\" already belongs to model \"" +
                    owner->GetDisplayName() + L"\".");
    modelData->operators.push_back(op);
    modelData->members.insert(op.get());
    op->SetProcess(self);
}

void LinkAccess::AddNewOperator(const std::shared_ptr<Model>& model,
                                const std::shared_ptr<Operator>& op) {
    assert(op && model && !op->GetProcess() && op != model);
    auto& record = Of(*model);
    record.operators.push_back(op);
    record.members.insert(op.get());
    op->SetProcess(model);
}

void LinkAccess::ReserveOperators(Model& model, std::size_t count) {
    auto& record = Of(model);
    record.operators.reserve(record.operators.size() + count);
    record.members.reserve(record.members.size() + count);
}

void Model::AddSubModel(const std::shared_ptr<Model>& subModel) {
    AddOperator(subModel);
}

bool Model::ContainsOperator(const std::shared_ptr<Operator>& op) const {
    return op && modelData->members.count(op.get()) != 0;
}

bool Model::RemoveOperator(const std::shared_ptr<Operator>& op) {
    if (!ContainsOperator(op)) return false;
    for (const auto& port : op->GetPorts()) LinkAccess::DetachAll(port);
    for (const auto& other : modelData->operators) {
        if (other == op) continue;
        other->RemoveParent(op);
        if (auto conditional = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(other))
            conditional->ForgetOperator(op);
    }
    for (const auto& parent : op->GetParents()) op->RemoveParent(parent);
    auto& ops = modelData->operators;
    ops.erase(std::remove(ops.begin(), ops.end(), op), ops.end());
    modelData->members.erase(op.get());
    op->SetProcess(nullptr);
    return true;
}

std::vector<std::shared_ptr<Operator>> Model::FindOperators(const std::wstring& name) const {
    std::vector<std::shared_ptr<Operator>> result;
    for (const auto& op : modelData->operators)
        if (op->GetDisplayName() == name) result.push_back(op);
    if (result.empty())
        for (const auto& op : modelData->operators)
            if (op->GetOperatorName() == name) result.push_back(op);
    return result;
}

// ---- model ports

std::shared_ptr<Port> Model::AddNewPort(const std::wstring& name, PortDirection direction) {
    auto port = AddPort(name, direction);
    return port;
}

std::shared_ptr<Port> Model::AliasPort(const std::shared_ptr<Port>& innerPort,
                                       const std::wstring& name) {
    if (!innerPort)
        QUARN_THROW(L"Model \"" + GetDisplayName() + L"\": cannot alias an empty port.");
    auto inner = innerPort->TryGetOperator();
    if (!ContainsOperator(inner))
        QUARN_THROW(L"Port \"" + innerPort->GetName() +
                    L"\" does not belong to an operator of model \"" + GetDisplayName() + L"\".");
    auto modelPort = GetPort(name);
    if (auto current = innerPort->GetAliasingPort()) {
        if (current == modelPort) return modelPort;
        QUARN_THROW(L"Port \"" + innerPort->GetName() + L"\" of \"" + inner->GetDisplayName() +
                    L"\" is already aliased by model port \"" + current->GetName() + L"\".");
    }
    if (!modelPort) {
        modelPort = AddPort(name, innerPort->GetDirection());
        modelPort->SetSupportedTypes(innerPort->GetSupportedDataTypes());
        modelPort->SetDescription(innerPort->GetDescription());
        modelPort->SetOptional(innerPort->IsOptional());
    } else if (modelPort->GetDirection() != innerPort->GetDirection()) {
        QUARN_THROW(L"Model port \"" + name + L"\" and port \"" + innerPort->GetName() +
                    L"\" do not have the same direction.");
    } else if (modelPort->IsOutput() && !modelPort->GetInnerAliasedPorts().empty()) {
        QUARN_THROW(L"Model output \"" + name + L"\" already aliases a port.");
    } else if (modelPort->GetSupportedDataTypes().empty()) {
        modelPort->SetSupportedTypes(innerPort->GetSupportedDataTypes());
    }
    auto self = shared_from_this();
    LinkAccess::Of(*modelPort).innerAliased.push_back(innerPort);
    LinkAccess::Of(*innerPort).aliasingPort = modelPort;
    if (innerPort->IsInput())
        LinkAccess::Attach(self, modelPort, inner, innerPort, true);
    else
        LinkAccess::Attach(inner, innerPort, self, modelPort, true);
    return modelPort;
}

std::shared_ptr<PortConnection> Model::ConnectPort(const std::shared_ptr<Port>& modelPort,
                                                   const std::shared_ptr<Port>& innerPort) {
    if (!modelPort || modelPort->TryGetOperator().get() != this)
        QUARN_THROW(L"Model \"" + GetDisplayName() +
                    L"\": the port to link is not one of its own ports.");
    AliasPort(innerPort, modelPort->GetName());
    for (const auto& connection : modelPort->GetConnections())
        if (connection->IsInnerAlias() &&
            (connection->GetChildPort() == innerPort || connection->GetParentPort() == innerPort))
            return connection;
    QUARN_THROW(L"Model \"" + GetDisplayName() + L"\": the alias of port \"" +
                innerPort->GetName() + L"\" was not made.");
}

std::shared_ptr<Port> Model::GetAliasedPort(const std::shared_ptr<Port>& innerPort) const {
    if (!innerPort) return nullptr;
    auto aliasing = innerPort->GetAliasingPort();
    if (aliasing && aliasing->TryGetOperator().get() == this) return aliasing;
    return nullptr;
}

std::vector<std::shared_ptr<Port>> Model::GetInputPorts() const {
    auto result = Operator::GetInputPorts();
    for (const auto& op : modelData->operators) {
        for (const auto& port : op->Operator::GetInputPorts()) {
            if (port->GetAliasingPort()) continue;
            bool fed = false;
            for (const auto& connection : LinkAccess::Of(*port).inbound)
                if (!connection->IsInnerAlias()) fed = true;
            if (!fed) result.push_back(port);
        }
    }
    return result;
}

// ---- connection notifications

bool Model::IsOperatorConnected(const std::shared_ptr<Operator>& op) const {
    if (!op) return false;
    for (const auto& connection : op->GetPortConnections())
        if (!connection->IsInnerAlias()) return true;
    if (!op->GetParents().empty()) return true;
    if (auto conditional = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op)) {
        if (!conditional->GetBody().empty() || conditional->GetTestOperator()) return true;
        if (auto branch = std::dynamic_pointer_cast<LattixBasic::IfProcess>(op))
            if (!branch->GetIfTails(true).empty() || !branch->GetIfTails(false).empty())
                return true;
    }
    for (const auto& other : modelData->operators) {
        if (other == op) continue;
        if (other->IsParent(op)) return true;
        if (auto conditional = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(other)) {
            auto body = conditional->GetBody();
            if (std::find(body.begin(), body.end(), op) != body.end()) return true;
            if (conditional->GetTestOperator() == op) return true;
            if (auto branch = std::dynamic_pointer_cast<LattixBasic::IfProcess>(other)) {
                auto yes = branch->GetIfTails(true);
                auto no = branch->GetIfTails(false);
                if (std::find(yes.begin(), yes.end(), op) != yes.end() ||
                    std::find(no.begin(), no.end(), op) != no.end())
                    return true;
            }
        }
    }
    return false;
}

namespace {
void RequireMember(const Model& model, bool contained, const std::shared_ptr<Operator>& op) {
    if (!op) QUARN_THROW(L"Model \"" + model.GetDisplayName() + L"\": the operator is empty.");
    if (!contained)
        QUARN_THROW(L"Operator \"" + op->GetDisplayName() + L"\" is not part of model \"" +
                    model.GetDisplayName() + L"\".");
}
}  // namespace

void Model::NotifyOperatorConnecting(const std::shared_ptr<Operator>& op) {
    RequireMember(*this, op.get() == this || ContainsOperator(op), op);
    op->InvalidateExecution();
}

bool Model::NotifyOperatorUnconnected(const std::shared_ptr<Operator>& op) {
    RequireMember(*this, op.get() == this || ContainsOperator(op), op);
    if (op.get() != this && IsOperatorConnected(op)) return false;
    // Information messages speak about links (a value that a link overrides); they are stale now.
    auto kept = op->GetMessages();
    kept.erase(std::remove_if(
                   kept.begin(), kept.end(),
                   [](const OperatorMessage& m) { return m.severity == Issue::Severity::Info; }),
               kept.end());
    {
        auto& record = LinkAccess::Of(*op);
        std::lock_guard guard(record.lock);
        record.messages = std::move(kept);
    }
    op->InvalidateExecution();
    return true;
}

void Model::NotifyOperatorAttached(const std::shared_ptr<Operator>& owner,
                                   const std::shared_ptr<Operator>& op,
                                   const std::shared_ptr<Port>& testPort) {
    RequireMember(*this, ContainsOperator(owner), owner);
    RequireMember(*this, ContainsOperator(op), op);
    if (!std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(owner))
        QUARN_THROW(L"Operator \"" + owner->GetDisplayName() +
                    L"\" is not a conditional operator and cannot take a body, branch or test.");
    if (testPort && testPort->TryGetOperator() != op)
        QUARN_THROW(L"Port \"" + testPort->GetName() + L"\" is not a port of operator \"" +
                    op->GetDisplayName() + L"\".");
    owner->InvalidateExecution();
    op->InvalidateExecution();
}

// ---- editing state

bool Model::IsReadonly() const {
    return modelData->readonly;
}
void Model::SetReadonly(bool readonly) {
    modelData->readonly = readonly;
}
bool Model::IsLocked() const {
    return modelData->locked;
}
void Model::SetLocked(bool locked) {
    modelData->locked = locked;
}
std::wstring Model::GetProcessName() const {
    return modelData->processName;
}
void Model::SetProcessName(const std::wstring& name) {
    modelData->processName = name;
}
bool Model::CanSaveInPlainFormat() const {
    return !modelData->plainFormatForbidden;
}
void Model::SetPlainFormatForbidden(bool forbidden) {
    modelData->plainFormatForbidden = forbidden;
}

std::shared_ptr<ListData> Model::GetTextAnnotations() {
    auto list = std::dynamic_pointer_cast<ListData>(GetAttribute(L"Text"));
    if (!list) {
        list = std::make_shared<ListData>();
        SetAttribute(L"Text", list);
    }
    return list;
}

// ---- port values

namespace {

// One "Operator.Port=value" entry, split into its name pieces and its value text.
struct PortValueEntry {
    std::vector<std::wstring> names;
    std::wstring value;
};

[[noreturn]] void RaiseEntryError(const std::wstring& entry, const std::wstring& reason) {
    QUARN_THROW(L"Invalid port value " + detail::Quote(entry) + L": " + reason);
}

PortValueEntry SplitEntry(const std::wstring& entry) {
    PortValueEntry result;
    std::wstring piece;
    bool quoted = false;
    bool wasQuoted = false;
    std::size_t i = 0;
    for (; i < entry.size(); ++i) {
        wchar_t c = entry[i];
        if (quoted) {
            if (c == L'"') {
                if (i + 1 < entry.size() && entry[i + 1] == L'"') {
                    piece += L'"';
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                piece += c;
            }
            continue;
        }
        if (c == L'"') {
            quoted = true;
            wasQuoted = true;
        } else if (c == L'.' || c == L'=') {
            auto name = wasQuoted ? piece : detail::Trim(piece);
            if (name.empty()) RaiseEntryError(entry, L"an operator or port name is empty.");
            result.names.push_back(name);
            piece.clear();
            wasQuoted = false;
            if (c == L'=') break;
        } else {
            piece += c;
        }
    }
    if (quoted) RaiseEntryError(entry, L"a quoted name is not closed.");
    if (i >= entry.size() || result.names.size() < 2)
        RaiseEntryError(entry, L"expected Operator.Port=value.");
    result.value = entry.substr(i + 1);
    // A value wholly in double quotes is taken literally, with doubled quotes inside.
    auto trimmed = detail::Trim(result.value);
    if (trimmed.size() >= 2 && trimmed.front() == L'"' && trimmed.back() == L'"') {
        std::wstring literal;
        for (std::size_t k = 1; k + 1 < trimmed.size(); ++k) {
            if (trimmed[k] == L'"' && k + 2 < trimmed.size() && trimmed[k + 1] == L'"') ++k;
            literal += trimmed[k];
        }
        result.value = literal;
    }
    return result;
}

std::shared_ptr<Port> FindPortByName(const Operator& op, const std::wstring& name) {
    if (auto port = op.GetPort(name)) return port;
    for (const auto& port : op.GetPorts())
        if (port->GetDisplayName() == name) return port;
    return nullptr;
}

}  // namespace

void Model::SetPortValues(const std::vector<std::wstring>& portValues) {
    for (const auto& entry : portValues) {
        auto parsed = SplitEntry(entry);
        const auto portName = parsed.names.back();
        parsed.names.pop_back();

        // The operator: a path of operator names through sub-models, or the model itself; when
        // no path fits, the pieces joined by dots name one operator (names may hold dots).
        std::shared_ptr<Operator> target;
        std::shared_ptr<Model> scope = std::static_pointer_cast<Model>(shared_from_this());
        for (std::size_t k = 0; k < parsed.names.size() && scope; ++k) {
            auto found = scope->FindOperators(parsed.names[k]);
            if (found.size() > 1)
                RaiseEntryError(entry, L"the name \"" + parsed.names[k] + L"\" belongs to " +
                                           std::to_wstring(found.size()) + L" operators.");
            target = found.empty() ? nullptr : found.front();
            if (!target) break;
            scope =
                k + 1 < parsed.names.size() ? std::dynamic_pointer_cast<Model>(target) : nullptr;
            if (k + 1 < parsed.names.size() && !scope) target = nullptr;
        }
        auto joined = detail::Join(parsed.names, L".");
        if (!target) {
            auto found = FindOperators(joined);
            if (found.size() > 1)
                RaiseEntryError(entry, L"the name \"" + joined + L"\" belongs to " +
                                           std::to_wstring(found.size()) + L" operators.");
            if (!found.empty()) target = found.front();
        }
        if (!target && (joined == GetDisplayName() || joined == GetProcessName() ||
                        joined == GetOperatorName()))
            target = shared_from_this();
        if (!target)
            RaiseEntryError(entry, L"the model has no operator named \"" + joined + L"\".");

        auto port = FindPortByName(*target, portName);
        if (!port)
            RaiseEntryError(entry, L"operator \"" + target->GetDisplayName() +
                                       L"\" has no port named \"" + portName + L"\".");
        bool accepted = false;
        try {
            accepted = port->SetDataFromString(parsed.value);
        } catch (const QuarnLog::Exception& error) {
            RaiseEntryError(entry, error.WideMessage());
        }
        if (!accepted) {
            std::vector<std::wstring> types;
            for (const auto& type : port->GetSupportedDataTypes())
                types.push_back(type.GetFullName());
            RaiseEntryError(entry, detail::Quote(parsed.value) +
                                       L" is not a value of any type port \"" +
                                       port->GetDisplayName() + L"\" accepts (" +
                                       detail::Join(types, L", ") + L").");
        }
    }
}

}  // namespace Velmar::Lattix
