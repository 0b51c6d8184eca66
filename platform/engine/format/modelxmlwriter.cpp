#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
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

void WriteData(pugi::xml_node node, const std::shared_ptr<Data>& data) {
    if (!data) return;
    node.append_attribute(xml::Type).set_value(U8(data->GetDataTypeName().GetFullName()).c_str());
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

Port::AttributeMap OwnPortAttributes(const Port& port) {
    auto map = port.GetAttributeMap();
    for (auto it = map.begin(); it != map.end();)
        it = IsDerivedPortAttribute(it->first) ? map.erase(it) : std::next(it);
    return map;
}

class Writer {
public:
    void WriteOperator(pugi::xml_node parent, const Operator& op, int id) {
        bool plainModel = IsPlainModel(op);
        auto node = parent.append_child(plainModel ? xml::ModelElement : xml::OperatorElement);
        if (id > 0) node.append_attribute(xml::Id).set_value(id);
        node.append_attribute(xml::Namespace).set_value(U8(op.GetOperatorNamespace()).c_str());
        node.append_attribute(xml::Name).set_value(U8(op.GetOperatorName()).c_str());
        const Operator& ref = Reference(op, plainModel);

        auto text = [&](const char* name, const std::wstring& own, const std::wstring& theirs) {
            if (own != theirs) node.append_attribute(name).set_value(U8(own).c_str());
        };
        text(xml::DisplayName, op.GetDisplayName(), ref.GetDisplayName());
        text(xml::Icon, op.GetIcon(), ref.GetIcon());
        text(xml::DisplayCategory, op.GetDisplayCategory(), ref.GetDisplayCategory());
        text(xml::ColorCategory, op.GetColorCategory(), ref.GetColorCategory());
        if (op.IsUsableInExpression() != ref.IsUsableInExpression())
            WriteFlag(node, xml::UsableInExpression, op.IsUsableInExpression());
        text(xml::Uri, op.GetUri(), ref.GetUri());
        const auto* model = dynamic_cast<const Model*>(&op);
        if (model) {
            if (!model->GetProcessName().empty())
                node.append_attribute(xml::ProcessName)
                    .set_value(U8(model->GetProcessName()).c_str());
            if (model->IsReadonly()) WriteFlag(node, xml::Readonly, true);
            if (model->IsLocked()) WriteFlag(node, xml::Locked, true);
            if (!model->CanSaveInPlainFormat()) WriteFlag(node, xml::PlainFormatForbidden, true);
        }
        if (op.GetDescription() != ref.GetDescription())
            SetText(node.append_child(xml::Description), op.GetDescription());
        if (op.GetKeywords() != ref.GetKeywords())
            WriteTexts(node, xml::Keywords, xml::Keyword, op.GetKeywords());
        if (op.GetSyntaxForms() != ref.GetSyntaxForms())
            WriteTexts(node, xml::SyntaxForms, xml::Form, op.GetSyntaxForms());

        WritePorts(node, op, ref);
        WriteAttributeChanges(node, op.GetAttributeMap(), ref.GetAttributeMap(), xml::Attribute);

        if (model) {
            auto ops = model->GetOperators();
            for (std::size_t i = 0; i < ops.size(); ++i)
                WriteOperator(node, *ops[i], static_cast<int>(i) + 1);
            WriteLinks(node, *model, ops);
        }
    }

private:
    // A fresh operator of op's kind: what the reader starts from before it applies the file.
    const Operator& Reference(const Operator& op, bool plainModel) {
        auto key = (plainModel ? L"model:" : L"operator:") + op.GetObjectName().GetFullName();
        auto& slot = references[key];
        if (!slot) {
            if (plainModel)
                slot = std::make_shared<Model>(op.GetOperatorNamespace(), op.GetOperatorName());
            else
                slot = OperatorFactory::TryCreate(op.GetObjectName());
            if (!slot) {
                QuarnLog::Write(
                    QuarnLog::Level::Warning, __PRETTY_FUNCTION__, __FILE__,
                    L"Operator type \"" + op.GetObjectName().GetFullName() +
                        L"\" is not registered: the saved model can be read only where it is.");
                slot = std::make_shared<Operator>(op.GetOperatorNamespace(), op.GetOperatorName());
            }
        }
        return *slot;
    }

    void WritePorts(pugi::xml_node node, const Operator& op, const Operator& ref) {
        auto ports = op.GetPorts();
        auto refPorts = ref.GetPorts();
        std::vector<std::wstring> expected;
        for (const auto& refPort : refPorts)
            if (op.GetPort(refPort->GetName())) expected.push_back(refPort->GetName());
        std::vector<std::wstring> actual;
        for (const auto& port : ports) {
            actual.push_back(port->GetName());
            auto refPort = ref.GetPort(port->GetName());
            if (!refPort) expected.push_back(port->GetName());
            WritePort(node, *port, refPort);
        }
        for (const auto& refPort : refPorts) {
            if (op.GetPort(refPort->GetName())) continue;
            auto removed = node.append_child(xml::PortElement);
            removed.append_attribute(xml::Name).set_value(U8(refPort->GetName()).c_str());
            WriteFlag(removed, xml::Removed, true);
        }
        if (actual != expected) WriteTexts(node, xml::PortOrder, xml::PortName, actual);
    }

    void WritePort(pugi::xml_node parent, const Port& port, std::shared_ptr<Port> refPort) {
        auto node = parent.append_child(xml::PortElement);
        node.append_attribute(xml::Name).set_value(U8(port.GetName()).c_str());
        bool fresh = !refPort || refPort->GetDirection() != port.GetDirection();
        if (fresh) {
            node.append_attribute(xml::Direction).set_value(port.IsInput() ? "input" : "output");
            refPort = Port::Create(port.GetName(), port.GetDirection());
        }
        const Port& ref = *refPort;
        if (port.GetDisplayName() != ref.GetDisplayName())
            node.append_attribute(xml::DisplayName).set_value(U8(port.GetDisplayName()).c_str());
        if (port.IsOptional() != ref.IsOptional())
            WriteFlag(node, xml::Optional, port.IsOptional());
        if (port.IsHidden() != ref.IsHidden()) WriteFlag(node, xml::Hidden, port.IsHidden());
        if (port.IsPrivate() != ref.IsPrivate()) WriteFlag(node, xml::Private, port.IsPrivate());
        if (port.IsNative() != ref.IsNative()) WriteFlag(node, xml::Native, port.IsNative());
        if (port.GetDescription() != ref.GetDescription())
            SetText(node.append_child(xml::Description), port.GetDescription());
        if (port.GetKeywords() != ref.GetKeywords())
            WriteTexts(node, xml::Keywords, xml::Keyword, port.GetKeywords());
        if (port.GetDeclaredSupportedTypes() != ref.GetDeclaredSupportedTypes())
            WriteTypes(node, xml::Types, port.GetDeclaredSupportedTypes());
        if (port.GetExtraSupportedTypes() != ref.GetExtraSupportedTypes())
            WriteTypes(node, xml::ExtraTypes, port.GetExtraSupportedTypes());
        if (port.GetExcludedTypes() != ref.GetExcludedTypes())
            WriteTypes(node, xml::ExcludedTypes, port.GetExcludedTypes());
        if (!SameData(port.GetDefaultData(), ref.GetDefaultData()))
            WriteData(node.append_child(xml::Default), port.GetDefaultData());
        if (!SameData(port.GetData(), ref.GetData()))
            WriteData(node.append_child(xml::Value), port.GetData());
        WriteAttributeChanges(node, OwnPortAttributes(port), OwnPortAttributes(ref),
                              xml::Attribute);

        auto own = port.GetDataTypeAttributeMapMap();
        auto theirs = ref.GetDataTypeAttributeMapMap();
        std::set<std::wstring> types;
        for (const auto& entry : own) types.insert(entry.first);
        for (const auto& entry : theirs) types.insert(entry.first);
        static const Port::AttributeMap none;
        for (const auto& type : types) {
            auto a = own.find(type);
            auto b = theirs.find(type);
            WriteAttributeChanges(node, a == own.end() ? none : a->second,
                                  b == theirs.end() ? none : b->second, xml::DataAttribute, type);
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
            for (const auto& port : child.GetPorts()) {
                for (const auto& connection : port->GetConnections()) {
                    if (connection->IsInnerAlias() || connection->GetChildPort() != port) continue;
                    auto parent = connection->GetParent();
                    auto parentPort = connection->GetParentPort();
                    int parentId = idOf(parent);
                    if (parentId < 0 || !parentPort) {
                        // A model's own inputs fed from outside belong to the model above.
                        if (childId != 0)
                            dropped(L"a data link of \"" + child.GetDisplayName() + L"\"");
                        continue;
                    }
                    auto link = links.append_child(xml::Connection);
                    link.append_attribute(xml::From).set_value(parentId);
                    link.append_attribute(xml::FromPort)
                        .set_value(U8(parentPort->GetName()).c_str());
                    link.append_attribute(xml::To).set_value(childId);
                    link.append_attribute(xml::ToPort).set_value(U8(port->GetName()).c_str());
                }
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

    std::map<std::wstring, std::shared_ptr<Operator>> references;
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
