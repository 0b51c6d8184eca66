#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

#include <pugixml.hpp>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"
#include "core/records.h"
#include "format/modelxml.h"
#include "format/modelxmlnames.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix::format {

namespace {

std::string U8(const std::wstring& text) {
    return qtxt::DefaultWideToUTF8(text);
}

bool SameData(const std::shared_ptr<Data>& a, const std::shared_ptr<Data>& b) {
    if (!a || !b) return !a && !b;
    return a->Equals(*b);
}

void SetText(pugi::xml_node node, const std::wstring& text) {
    node.text().set(U8(text).c_str());
}

// The UTF-8 full name of a data type. A model holds few types and many values: each name is
// converted once per thread (names are shared, so most lookups compare pointers).
const std::string& TypeText(const ObjectName& type) {
    thread_local std::vector<std::pair<ObjectName, std::string>> known;
    for (const auto& [name, text] : known)
        if (name == type) return text;
    known.emplace_back(type, U8(type.GetFullName()));
    return known.back().second;
}

void WriteData(pugi::xml_node node, const std::shared_ptr<Data>& data) {
    if (!data) return;
    node.append_attribute(xml::Type).set_value(TypeText(data->GetDataTypeName()).c_str());
    node.text().set(data->ToJson().ToText().c_str());
}

void WriteTexts(pugi::xml_node parent, const char* listName, const char* itemName,
                const std::vector<std::wstring>& items) {
    auto list = parent.append_child(listName);
    for (const auto& item : items) SetText(list.append_child(itemName), item);
}

void WriteTypes(pugi::xml_node parent, const char* listName, const std::vector<ObjectName>& types) {
    auto list = parent.append_child(listName);
    for (const auto& type : types) SetText(list.append_child(xml::TypeItem), type.GetFullName());
}

void WriteFlag(pugi::xml_node node, const char* name, bool value) {
    node.append_attribute(name).set_value(value ? "true" : "false");
}

// Writes the entries of `own` that differ from `reference`, then marks the entries `reference` has
// and `own` lacks as removed. Both maps are ordered, so the output is too.
void WriteAttributeChanges(pugi::xml_node parent,
                           const std::map<std::wstring, std::shared_ptr<Data>>& own,
                           const std::map<std::wstring, std::shared_ptr<Data>>& reference,
                           const char* elementName, const std::wstring& dataType = {}) {
    auto start = [&](const std::wstring& name) {
        auto node = parent.append_child(elementName);
        if (!dataType.empty()) node.append_attribute(xml::DataType).set_value(U8(dataType).c_str());
        node.append_attribute(xml::Name).set_value(U8(name).c_str());
        return node;
    };
    for (const auto& [name, value] : own) {
        auto found = reference.find(name);
        if (found != reference.end() && SameData(found->second, value)) continue;
        WriteData(start(name), value);
    }
    for (const auto& [name, value] : reference)
        if (!own.count(name)) WriteFlag(start(name), xml::Removed, true);
}

bool IsPlainModel(const Operator& op) {
    return typeid(op) == typeid(Model);
}

// The attributes a port shows in its map but keeps in dedicated fields.
bool IsDerivedPortAttribute(const std::wstring& name) {
    return name == L"Keywords" || name == L"AdditionalTypes" || name == L"ExcludedTypes";
}

// A port's own attributes: the map itself, or a copy without the derived entries when it has any.
const Port::AttributeMap& OwnPortAttributes(const Port::AttributeMap& all,
                                            Port::AttributeMap& filtered) {
    if (std::none_of(all.begin(), all.end(),
                     [](const auto& entry) { return IsDerivedPortAttribute(entry.first); }))
        return all;
    filtered = all;
    for (auto it = filtered.begin(); it != filtered.end();)
        it = IsDerivedPortAttribute(it->first) ? filtered.erase(it) : std::next(it);
    return filtered;
}

// What the writer compares of a port, read in place from its record (the getters answer copies,
// and a save compares every port). The port must outlive it; it is neither copied nor moved.
struct PortState {
    explicit PortState(const Port& port) : PortState(LinkAccess::Of(port)) {}
    explicit PortState(const portRecord& record)
        : direction(record.direction),
          displayName(record.shape->displayName.empty() ? record.shape->name
                                                        : record.shape->displayName),
          description(record.shape->description),
          keywords(record.shape->keywords),
          optional(record.optional),
          hidden(record.hidden),
          isPrivate(record.isPrivate),
          native(record.native),
          types(record.shape->supported),
          extra(record.shape->extra),
          excluded(record.shape->excluded),
          defaultData(record.defaultData),
          data(record.data),
          attributes(OwnPortAttributes(record.attributes, filtered)),
          dataAttributes(record.dataTypeAttributes) {}
    PortState(const PortState&) = delete;
    PortState& operator=(const PortState&) = delete;

    PortDirection direction;
    const std::wstring& displayName;
    const std::wstring& description;
    const std::vector<std::wstring>& keywords;
    bool optional;
    bool hidden;
    bool isPrivate;
    bool native;
    const std::vector<ObjectName>& types;
    const std::vector<ObjectName>& extra;
    const std::vector<ObjectName>& excluded;
    const std::shared_ptr<Data>& defaultData;
    const std::shared_ptr<Data>& data;

private:
    Port::AttributeMap filtered;

public:
    const Port::AttributeMap& attributes;
    const Port::DataTypeAttributeMapMap& dataAttributes;
};

// A fresh operator of a type, as the reader starts from it before it applies the file; taken
// once per type and save. Keeps the operator, whose ports its port states read.
struct ReferenceState {
    explicit ReferenceState(std::shared_ptr<Operator> fresh)
        : op(std::move(fresh)),
          displayName(op->GetDisplayName()),
          icon(op->GetIcon()),
          displayCategory(op->GetDisplayCategory()),
          colorCategory(op->GetColorCategory()),
          uri(op->GetUri()),
          description(op->GetDescription()),
          usableInExpression(op->IsUsableInExpression()),
          keywords(op->GetKeywords()),
          syntaxForms(op->GetSyntaxForms()),
          attributes(op->GetAttributeMap()) {
        for (const auto& port : op->GetPorts()) {
            portNames.push_back(port->GetName());
            ports.emplace(std::piecewise_construct, std::forward_as_tuple(port->GetName()),
                          std::forward_as_tuple(*port));
        }
    }

    const PortState* FindPort(const std::wstring& name) const {
        auto found = ports.find(name);
        return found == ports.end() ? nullptr : &found->second;
    }

    std::shared_ptr<Operator> op;
    std::wstring displayName;
    std::wstring icon;
    std::wstring displayCategory;
    std::wstring colorCategory;
    std::wstring uri;
    std::wstring description;
    bool usableInExpression;
    std::vector<std::wstring> keywords;
    std::vector<std::wstring> syntaxForms;
    std::map<std::wstring, std::shared_ptr<Data>> attributes;
    std::vector<std::wstring> portNames;
    std::map<std::wstring, PortState> ports;
};

// Calls fn with each link of a port, in the order of Port::GetConnections, without copying them.
template <typename Fn>
void ForEachConnection(const Port& port, Fn&& fn) {
    const auto& record = LinkAccess::Of(port);
    for (const auto& connection : record.inbound) fn(connection);
    for (const auto& link : record.outbound)
        if (auto connection = link.lock()) fn(connection);
}

class Writer {
public:
    void WriteOperator(pugi::xml_node parent, const Operator& op, int id) {
        bool plainModel = IsPlainModel(op);
        auto node = parent.append_child(plainModel ? xml::ModelElement : xml::OperatorElement);
        if (id > 0) node.append_attribute(xml::Id).set_value(id);
        node.append_attribute(xml::Namespace).set_value(U8(op.GetOperatorNamespace()).c_str());
        node.append_attribute(xml::Name).set_value(U8(op.GetOperatorName()).c_str());
        const ReferenceState& ref = Reference(op, plainModel);

        auto text = [&](const char* name, const std::wstring& own, const std::wstring& theirs) {
            if (own != theirs) node.append_attribute(name).set_value(U8(own).c_str());
        };
        text(xml::DisplayName, op.GetDisplayName(), ref.displayName);
        // The texts are compared in place: a save visits every operator.
        const auto& record = LinkAccess::Of(op);
        text(xml::Icon, record.icon.Get(), ref.icon);
        text(xml::DisplayCategory, record.displayCategory.Get(), ref.displayCategory);
        text(xml::ColorCategory, record.colorCategory.Get(), ref.colorCategory);
        if (op.IsUsableInExpression() != ref.usableInExpression)
            WriteFlag(node, xml::UsableInExpression, op.IsUsableInExpression());
        text(xml::Uri, op.GetUri(), ref.uri);
        const auto* model = dynamic_cast<const Model*>(&op);
        if (model) {
            if (!model->GetProcessName().empty())
                node.append_attribute(xml::ProcessName)
                    .set_value(U8(model->GetProcessName()).c_str());
            if (model->IsReadonly()) WriteFlag(node, xml::Readonly, true);
            if (model->IsLocked()) WriteFlag(node, xml::Locked, true);
            if (!model->CanSaveInPlainFormat()) WriteFlag(node, xml::PlainFormatForbidden, true);
        }
        if (const auto& description = record.description.Get(); description != ref.description)
            SetText(node.append_child(xml::Description), description);
        if (const auto& keywords = record.keywords.Get(); keywords != ref.keywords)
            WriteTexts(node, xml::Keywords, xml::Keyword, keywords);
        if (const auto& forms = record.syntaxForms.Get(); forms != ref.syntaxForms)
            WriteTexts(node, xml::SyntaxForms, xml::Form, forms);

        WritePorts(node, op, ref);
        WriteAttributeChanges(node, op.GetAttributeMap(), ref.attributes, xml::Attribute);

        if (model) {
            auto ops = model->GetOperators();
            for (std::size_t i = 0; i < ops.size(); ++i)
                WriteOperator(node, *ops[i], static_cast<int>(i) + 1);
            WriteLinks(node, *model, ops);
        }
    }

private:
    const ReferenceState& Reference(const Operator& op, bool plainModel) {
        auto key = (plainModel ? L"model:" : L"operator:") + op.GetObjectName().GetFullName();
        auto& slot = references[key];
        if (!slot) {
            std::shared_ptr<Operator> fresh;
            if (plainModel)
                fresh = std::make_shared<Model>(op.GetOperatorNamespace(), op.GetOperatorName());
            else
                fresh = OperatorFactory::TryCreate(op.GetObjectName());
            if (!fresh) {
                QuarnLog::Write(
                    QuarnLog::Level::Warning, __PRETTY_FUNCTION__, __FILE__,
                    L"Operator type \"" + op.GetObjectName().GetFullName() +
                        L"\" is not registered: the saved model can be read only where it is.");
                fresh = std::make_shared<Operator>(op.GetOperatorNamespace(), op.GetOperatorName());
            }
            slot = std::make_unique<ReferenceState>(std::move(fresh));
        }
        return *slot;
    }

    void WritePorts(pugi::xml_node node, const Operator& op, const ReferenceState& ref) {
        // Names are read in place: a save visits every port.
        const auto& ports = LinkAccess::Of(op).ports;
        std::vector<const std::wstring*> actual;
        actual.reserve(ports.size());
        for (const auto& port : ports) actual.push_back(&LinkAccess::Of(*port).Name());
        auto present = [&actual](const std::wstring& name) {
            return std::any_of(actual.begin(), actual.end(),
                               [&name](const std::wstring* own) { return *own == name; });
        };
        std::vector<const std::wstring*> expected;
        for (const auto& name : ref.portNames)
            if (present(name)) expected.push_back(&name);
        for (std::size_t i = 0; i < ports.size(); ++i) {
            const auto* refPort = ref.FindPort(*actual[i]);
            if (!refPort) expected.push_back(actual[i]);
            WritePort(node, *ports[i], *actual[i], refPort);
        }
        for (const auto& name : ref.portNames) {
            if (present(name)) continue;
            auto removed = node.append_child(xml::PortElement);
            removed.append_attribute(xml::Name).set_value(U8(name).c_str());
            WriteFlag(removed, xml::Removed, true);
        }
        bool sameOrder =
            std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(),
                       [](const std::wstring* a, const std::wstring* b) { return *a == *b; });
        if (!sameOrder) {
            std::vector<std::wstring> names;
            for (const auto* name : actual) names.push_back(*name);
            WriteTexts(node, xml::PortOrder, xml::PortName, names);
        }
    }

    void WritePort(pugi::xml_node parent, const Port& port, const std::wstring& name,
                   const PortState* refPort) {
        PortState own(port);
        bool fresh = !refPort || refPort->direction != own.direction;
        std::shared_ptr<Port> blankPort;
        std::unique_ptr<PortState> blank;
        if (fresh) {
            blankPort = Port::Create(name, own.direction);
            blank = std::make_unique<PortState>(*blankPort);
            refPort = blank.get();
        }
        const PortState& ref = *refPort;
        auto node = parent.append_child(xml::PortElement);
        node.append_attribute(xml::Name).set_value(U8(name).c_str());
        if (fresh)
            node.append_attribute(xml::Direction)
                .set_value(own.direction == PortDirection::Input ? "input" : "output");
        if (own.displayName != ref.displayName)
            node.append_attribute(xml::DisplayName).set_value(U8(own.displayName).c_str());
        if (own.optional != ref.optional) WriteFlag(node, xml::Optional, own.optional);
        if (own.hidden != ref.hidden) WriteFlag(node, xml::Hidden, own.hidden);
        if (own.isPrivate != ref.isPrivate) WriteFlag(node, xml::Private, own.isPrivate);
        if (own.native != ref.native) WriteFlag(node, xml::Native, own.native);
        if (own.description != ref.description)
            SetText(node.append_child(xml::Description), own.description);
        if (own.keywords != ref.keywords)
            WriteTexts(node, xml::Keywords, xml::Keyword, own.keywords);
        if (own.types != ref.types) WriteTypes(node, xml::Types, own.types);
        if (own.extra != ref.extra) WriteTypes(node, xml::ExtraTypes, own.extra);
        if (own.excluded != ref.excluded) WriteTypes(node, xml::ExcludedTypes, own.excluded);
        if (!SameData(own.defaultData, ref.defaultData))
            WriteData(node.append_child(xml::Default), own.defaultData);
        if (!SameData(own.data, ref.data)) WriteData(node.append_child(xml::Value), own.data);
        WriteAttributeChanges(node, own.attributes, ref.attributes, xml::Attribute);

        std::set<std::wstring> types;
        for (const auto& entry : own.dataAttributes) types.insert(entry.first);
        for (const auto& entry : ref.dataAttributes) types.insert(entry.first);
        static const Port::AttributeMap none;
        for (const auto& type : types) {
            auto a = own.dataAttributes.find(type);
            auto b = ref.dataAttributes.find(type);
            WriteAttributeChanges(node, a == own.dataAttributes.end() ? none : a->second,
                                  b == ref.dataAttributes.end() ? none : b->second,
                                  xml::DataAttribute, type);
        }
        // A port that the operator makes by itself and that matches it needs no element.
        if (!fresh && !node.first_attribute().next_attribute() && !node.first_child())
            parent.remove_child(node);
    }

    void WriteLinks(pugi::xml_node node, const Model& model,
                    const std::vector<std::shared_ptr<Operator>>& ops) {
        std::map<const Operator*, int> ids;
        ids[&model] = 0;
        for (std::size_t i = 0; i < ops.size(); ++i) ids[ops[i].get()] = static_cast<int>(i) + 1;
        auto idOf = [&](const std::shared_ptr<Operator>& op) {
            auto found = op ? ids.find(op.get()) : ids.end();
            return found == ids.end() ? -1 : found->second;
        };
        auto links = node.append_child(xml::Links);
        auto dropped = [&](const std::wstring& what) {
            QuarnLog::Write(QuarnLog::Level::Warning, __PRETTY_FUNCTION__, __FILE__,
                            L"Model \"" + model.GetDisplayName() + L"\": " + what +
                                L" reaches outside the model and is not saved.");
        };

        for (const auto& op : ops) {
            for (const auto& parent : op->GetParents()) {
                int parentId = idOf(parent);
                if (parentId < 0) {
                    dropped(L"a flow link of \"" + op->GetDisplayName() + L"\"");
                    continue;
                }
                auto link = links.append_child(xml::Parent);
                link.append_attribute(xml::Child).set_value(idOf(op));
                link.append_attribute(xml::ParentId).set_value(parentId);
            }
        }

        auto writeConnections = [&](const Operator& child, int childId) {
            for (const auto& port : LinkAccess::Of(child).ports) {
                ForEachConnection(*port, [&](const std::shared_ptr<PortConnection>& connection) {
                    if (connection->IsInnerAlias() || connection->GetChildPort() != port) return;
                    auto parent = connection->GetParent();
                    auto parentPort = connection->GetParentPort();
                    int parentId = idOf(parent);
                    if (parentId < 0 || !parentPort) {
                        // A model's own inputs fed from outside belong to the model above.
                        if (childId != 0)
                            dropped(L"a data link of \"" + child.GetDisplayName() + L"\"");
                        return;
                    }
                    auto link = links.append_child(xml::Connection);
                    link.append_attribute(xml::From).set_value(parentId);
                    link.append_attribute(xml::FromPort)
                        .set_value(U8(LinkAccess::Of(*parentPort).Name()).c_str());
                    link.append_attribute(xml::To).set_value(childId);
                    link.append_attribute(xml::ToPort)
                        .set_value(U8(LinkAccess::Of(*port).Name()).c_str());
                });
            }
        };
        writeConnections(model, 0);
        for (const auto& op : ops) writeConnections(*op, idOf(op));

        for (const auto& modelPort : model.GetPorts()) {
            for (const auto& inner : modelPort->GetInnerAliasedPorts()) {
                int innerId = idOf(inner->TryGetOperator());
                if (innerId <= 0) {
                    dropped(L"the alias \"" + modelPort->GetName() + L"\"");
                    continue;
                }
                auto link = links.append_child(xml::Alias);
                link.append_attribute(xml::ModelPort).set_value(U8(modelPort->GetName()).c_str());
                link.append_attribute(xml::OperatorRef).set_value(innerId);
                link.append_attribute(xml::PortRef).set_value(U8(inner->GetName()).c_str());
            }
        }

        for (const auto& op : ops) {
            auto conditional = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op);
            if (!conditional) continue;
            int owner = idOf(op);
            auto hang = [&](const char* kind, const std::shared_ptr<Operator>& target) {
                int targetId = idOf(target);
                if (targetId < 0) {
                    dropped(L"a branch, body or test of \"" + op->GetDisplayName() + L"\"");
                    return pugi::xml_node();
                }
                auto link = links.append_child(kind);
                link.append_attribute(xml::Owner).set_value(owner);
                link.append_attribute(xml::OperatorRef).set_value(targetId);
                return link;
            };
            for (const auto& body : conditional->GetBody()) hang(xml::Body, body);
            if (auto test = conditional->GetTestOperator()) {
                auto link = hang(xml::Test, test);
                if (link && conditional->GetTestPort())
                    link.append_attribute(xml::PortRef)
                        .set_value(U8(conditional->GetTestPort()->GetName()).c_str());
            }
            if (auto ifProcess = std::dynamic_pointer_cast<LattixBasic::IfProcess>(op)) {
                for (bool branch : {true, false})
                    for (const auto& tail : ifProcess->GetIfTails(branch))
                        if (auto link = hang(xml::Tail, tail)) WriteFlag(link, xml::Branch, branch);
            }
        }
        if (!links.first_child()) node.remove_child(links);
    }

    std::map<std::wstring, std::unique_ptr<ReferenceState>> references;
};

struct StringSink : pugi::xml_writer {
    std::string text;
    void write(const void* data, size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

}  // namespace

std::string WriteModelXml(const Model& model) {
    pugi::xml_document document;
    auto root = document.append_child(xml::Root);
    root.append_attribute(xml::FormatVersion).set_value(ModelXmlVersion);
    auto hold = OperatorFactory::HoldRescan();
    Writer writer;
    writer.WriteOperator(root, model, 0);
    StringSink sink;
    document.save(sink, "  ", pugi::format_indent, pugi::encoding_utf8);
    return std::move(sink.text);
}

}  // namespace Velmar::Lattix::format
