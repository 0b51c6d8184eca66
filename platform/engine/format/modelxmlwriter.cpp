#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <typeinfo>
#include <unordered_map>
#include <vector>

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
#include "format/valuetext.h"
#include "format/xmlemitter.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix::format {

namespace {

bool SameData(const std::shared_ptr<Data>& a, const std::shared_ptr<Data>& b) {
    if (!a || !b) return !a && !b;
    return a->Equals(*b);
}

// The UTF-8 full name of a data type. A model holds few types and many values: each name is
// converted once per thread (names are shared, so most lookups compare pointers).
const std::string& TypeText(const ObjectName& type) {
    thread_local std::vector<std::pair<ObjectName, std::string>> known;
    for (const auto& [name, text] : known)
        if (name == type) return text;
    known.emplace_back(type, qtxt::DefaultWideToUTF8(type.GetFullName()));
    return known.back().second;
}

void WriteData(XmlEmitter& out, const std::shared_ptr<Data>& data) {
    if (!data) return;
    out.Attribute(xml::Type, TypeText(data->GetDataTypeName()));
    std::array<char, PlainValueTextCapacity> buffer;
    auto plain = PlainValueText(*data, buffer);
    if (!plain.empty())
        out.Text(plain);
    else
        out.Text(data->ToJson().ToText());
}

void WriteText(XmlEmitter& out, const char* name, std::wstring_view text) {
    out.StartElement(name);
    out.Text(text);
    out.EndElement();
}

void WriteTexts(XmlEmitter& out, const char* listName, const char* itemName,
                const std::vector<std::wstring>& items) {
    out.StartElement(listName);
    for (const auto& item : items) WriteText(out, itemName, item);
    out.EndElement();
}

void WriteTypes(XmlEmitter& out, const char* listName, const std::vector<ObjectName>& types) {
    out.StartElement(listName);
    for (const auto& type : types) {
        out.StartElement(xml::TypeItem);
        out.Text(TypeText(type));
        out.EndElement();
    }
    out.EndElement();
}

void WriteFlag(XmlEmitter& out, const char* name, bool value) {
    out.Attribute(name, value ? "true" : "false");
}

// Writes the entries of `own` that differ from `reference`, then marks the entries `reference` has
// and `own` lacks as removed. Both maps are ordered, so the output is too.
void WriteAttributeChanges(XmlEmitter& out,
                           const std::map<std::wstring, std::shared_ptr<Data>>& own,
                           const std::map<std::wstring, std::shared_ptr<Data>>& reference,
                           const char* elementName, std::wstring_view dataType = {}) {
    auto start = [&out, elementName, dataType](const std::wstring& name) {
        out.StartElement(elementName);
        if (!dataType.empty()) out.Attribute(xml::DataType, dataType);
        out.Attribute(xml::Name, name);
    };
    for (const auto& [name, value] : own) {
        auto found = reference.find(name);
        if (found != reference.end() && SameData(found->second, value)) continue;
        start(name);
        WriteData(out, value);
        out.EndElement();
    }
    for (const auto& [name, value] : reference) {
        if (own.count(name)) continue;
        start(name);
        WriteFlag(out, xml::Removed, true);
        out.EndElement();
    }
}

// The same for an operator's attributes, which it keeps as a list in name order.
void WriteOperatorAttributeChanges(XmlEmitter& out,
                                   const std::vector<operatorRecord::attribute>& own,
                                   const std::vector<operatorRecord::attribute>& reference) {
    auto start = [&out](const std::string& key) {
        out.StartElement(xml::Attribute);
        // Plain ASCII keys are their own UTF-8; any other is converted from its wide name, so
        // that characters outside Unicode come out as the wide text's conversion has them.
        if (std::all_of(key.begin(), key.end(), [](char c) { return (c & 0x80) == 0; }))
            out.Attribute(xml::Name, std::string_view(key));
        else
            out.Attribute(xml::Name, std::wstring_view(operatorRecord::NameOf(key)));
    };
    for (const auto& [key, value] : own) {
        const auto* found = operatorRecord::FindAttribute(reference, key);
        if (found && SameData(found->value, value)) continue;
        start(key);
        WriteData(out, value);
        out.EndElement();
    }
    for (const auto& entry : reference) {
        if (operatorRecord::FindAttribute(own, entry.name)) continue;
        start(entry.name);
        WriteFlag(out, xml::Removed, true);
        out.EndElement();
    }
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

// The writer reads port records only here: in PortState and the helpers after it, down to
// PrefetchAhead.
//
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

// A port's name, read in place.
const std::wstring& PortName(const Port& port) {
    return LinkAccess::Of(port).Name();
}

// Calls fn with each link of a port, in the order of Port::GetConnections, without copying them.
template <typename Fn>
void ForEachConnection(const Port& port, Fn&& fn) {
    const auto& record = LinkAccess::Of(port);
    for (const auto& connection : record.inbound) fn(connection);
    for (const auto& link : record.outbound)
        if (auto connection = link.lock()) fn(connection);
}

// Asks for memory ahead of its use. A large model's records do not fit in the cache, and each
// operator's lie in a dozen places; the writer, waiting for each in turn, would spend most of its
// time waiting.
void PrefetchBytes(const void* start, std::size_t size) {
    constexpr std::size_t Line = 64;
    const auto* bytes = static_cast<const char*>(start);
    for (std::size_t offset = 0; offset < size; offset += Line) __builtin_prefetch(bytes + offset);
}

template <typename T>
void PrefetchText(const std::basic_string<T>& text) {
    if (!text.empty()) __builtin_prefetch(text.data());
}

// While operator i of a model is written, the memory of the next ones is asked for, one hop
// further along their pointers for each operator nearer to i: each hop reads only what an earlier
// step asked for.
void PrefetchAhead(const std::vector<std::shared_ptr<Operator>>& ops, std::size_t i) {
    // Prefetches alone count as doing nothing, and the compiler would drop calls of a function
    // that does nothing; the barrier costs nothing at run time.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    auto at = [&ops](std::size_t k) { return k < ops.size() ? ops[k].get() : nullptr; };
    if (const auto* op = at(i + 10)) PrefetchBytes(op, sizeof(Operator));
    if (const auto* op = at(i + 8)) PrefetchBytes(&LinkAccess::Of(*op), sizeof(operatorRecord));
    if (const auto* op = at(i + 6)) {
        const auto& record = LinkAccess::Of(*op);
        PrefetchBytes(record.ports.data(), record.ports.size() * sizeof(record.ports[0]));
        if (!record.parents.empty()) __builtin_prefetch(record.parents.data());
        if (!record.attributes.empty()) __builtin_prefetch(&*record.attributes.begin());
    }
    if (const auto* op = at(i + 4)) {
        const auto& record = LinkAccess::Of(*op);
        for (const auto& port : record.ports) PrefetchBytes(port.get(), sizeof(Port));
        if (record.attributes.size() > 1)
            __builtin_prefetch(&*std::next(record.attributes.begin()));
    }
    if (const auto* op = at(i + 3)) {
        const auto& record = LinkAccess::Of(*op);
        for (const auto& port : record.ports)
            PrefetchBytes(&LinkAccess::Of(*port), sizeof(portRecord));
    }
    if (const auto* op = at(i + 2)) {
        const auto& record = LinkAccess::Of(*op);
        for (const auto& [name, value] : record.attributes) {
            PrefetchText(name);
            if (value) __builtin_prefetch(value.get());
        }
        for (const auto& port : record.ports) {
            const auto& state = LinkAccess::Of(*port);
            // The texts and types are mostly the type's own, shared and already at hand.
            __builtin_prefetch(state.shape.get());
            if (!state.inbound.empty()) __builtin_prefetch(state.inbound.data());
            if (!state.outbound.empty()) __builtin_prefetch(state.outbound.data());
            if (state.data) __builtin_prefetch(state.data.get());
        }
    }
}

// Whether two texts or lists are equal; operators and ports of one type share many of theirs with
// their definition, and then the very same object is compared.
template <typename T>
bool Same(const T& a, const T& b) {
    return &a == &b || a == b;
}

// As Operator::GetDisplayName answers it.
const std::wstring& DisplayName(const operatorRecord& record) {
    return record.displayName.Get().empty() ? record.name.GetName() : record.displayName.Get();
}

// A fresh operator of a type, as the reader starts from it before it applies the file; taken
// once per type and save. Keeps the operator, whose record and ports are compared in place.
struct ReferenceState {
    explicit ReferenceState(std::shared_ptr<Operator> fresh) : op(std::move(fresh)) {
        for (const auto& port : op->GetPorts()) {
            portNames.push_back(port->GetName());
            ports.emplace(std::piecewise_construct, std::forward_as_tuple(port->GetName()),
                          std::forward_as_tuple(*port));
        }
        for (const auto& name : portNames) ordered.push_back(FindPort(name));
    }

    const operatorRecord& Record() const { return LinkAccess::Of(*op); }

    const PortState* FindPort(const std::wstring& name) const {
        auto found = ports.find(name);
        return found == ports.end() ? nullptr : &found->second;
    }

    std::shared_ptr<Operator> op;
    std::vector<std::wstring> portNames;
    std::map<std::wstring, PortState> ports;
    // FindPort of each of portNames.
    std::vector<const PortState*> ordered;
};

// A guess of a model file's size, from its operators: a few hundred bytes each.
std::size_t ExpectedSize(const Model& model) {
    constexpr std::size_t PerOperator = 448;
    constexpr std::size_t Frame = 4096;
    return Frame + PerOperator * LinkAccess::Of(model).operators.size();
}

// The flow and data links of one model, gathered while its operators are written (their records
// are at hand then) and written after them.
struct modelLinks {
    explicit modelLinks(const Model& model) : model(model) {
        const auto& ops = LinkAccess::Of(model).operators;
        ids.reserve(ops.size() + 1);
        ids[&model] = 0;
        for (std::size_t i = 0; i < ops.size(); ++i) ids[ops[i].get()] = static_cast<int>(i) + 1;
    }

    // The operator's number in the model: 0 for the model, -1 for an operator outside it.
    int IdOf(const Operator* op) const {
        auto found = op ? ids.find(op) : ids.end();
        return found == ids.end() ? -1 : found->second;
    }

    void Dropped(const std::wstring& what) const {
        QuarnLog::Write(QuarnLog::Level::Warning, __PRETTY_FUNCTION__, __FILE__,
                        L"Model \"" + model.GetDisplayName() + L"\": " + what +
                            L" reaches outside the model and is not saved.");
    }

    struct flowLink {
        int child;
        int parent;
    };
    struct dataLink {
        int from;
        const std::string* fromPort;
        int to;
        const std::string* toPort;
    };

    const Model& model;
    std::unordered_map<const Operator*, int> ids;
    std::vector<flowLink> parents;
    std::vector<dataLink> connections;
    // The numbers of the conditional operators, whose branches, bodies and tests are links too.
    std::vector<int> conditionals;
};

class Writer {
public:
    explicit Writer(XmlEmitter& out) : out(out) {}

    // enclosing: the links of the model that holds op, if any.
    void WriteOperator(const Operator& op, int id, modelLinks* enclosing) {
        bool plainModel = IsPlainModel(op);
        // The texts are compared in place: a save visits every operator.
        const auto& record = LinkAccess::Of(op);
        out.StartElement(plainModel ? xml::ModelElement : xml::OperatorElement);
        if (id > 0) out.Attribute(xml::Id, std::int64_t{id});
        out.Attribute(xml::Namespace, record.name.GetNamespace());
        out.Attribute(xml::Name, record.name.GetName());
        const ReferenceState& ref = Reference(op, record.name, plainModel);

        const auto& theirs = ref.Record();
        auto text = [this](const char* name, const std::wstring& own, const std::wstring& other) {
            if (!Same(own, other)) out.Attribute(name, own);
        };
        text(xml::DisplayName, DisplayName(record), DisplayName(theirs));
        text(xml::Icon, record.icon.Get(), theirs.icon.Get());
        text(xml::DisplayCategory, record.displayCategory.Get(), theirs.displayCategory.Get());
        text(xml::ColorCategory, record.colorCategory.Get(), theirs.colorCategory.Get());
        if (record.usableInExpression != theirs.usableInExpression)
            WriteFlag(out, xml::UsableInExpression, record.usableInExpression);
        text(xml::Uri, record.uri, theirs.uri);
        const auto* model = dynamic_cast<const Model*>(&op);
        if (model) {
            const auto& processName = LinkAccess::Of(*model).processName;
            if (!processName.empty()) out.Attribute(xml::ProcessName, processName);
            if (model->IsReadonly()) WriteFlag(out, xml::Readonly, true);
            if (model->IsLocked()) WriteFlag(out, xml::Locked, true);
            if (!model->CanSaveInPlainFormat()) WriteFlag(out, xml::PlainFormatForbidden, true);
        }
        if (const auto& description = record.description.Get();
            !Same(description, theirs.description.Get()))
            WriteText(out, xml::Description, description);
        if (const auto& keywords = record.keywords.Get(); !Same(keywords, theirs.keywords.Get()))
            WriteTexts(out, xml::Keywords, xml::Keyword, keywords);
        if (const auto& forms = record.syntaxForms.Get(); !Same(forms, theirs.syntaxForms.Get()))
            WriteTexts(out, xml::SyntaxForms, xml::Form, forms);

        WritePorts(op, ref);
        WriteOperatorAttributeChanges(out, record.attributes, theirs.attributes);

        // A model's own ports are children in its links (number 0), and in those of the model
        // that holds it.
        std::unique_ptr<modelLinks> own;
        if (model) own = std::make_unique<modelLinks>(*model);
        if (enclosing) {
            GatherParents(*enclosing, op, id);
            if (dynamic_cast<const LattixBasic::ConditionalProcess*>(&op))
                enclosing->conditionals.push_back(id);
        }
        for (const auto& port : record.ports) {
            if (enclosing) GatherConnections(*enclosing, op, id, port);
            if (own) GatherConnections(*own, op, 0, port);
        }

        if (model) {
            const auto& ops = LinkAccess::Of(*model).operators;
            for (std::size_t i = 0; i < ops.size(); ++i) {
                PrefetchAhead(ops, i);
                WriteOperator(*ops[i], static_cast<int>(i) + 1, own.get());
            }
            WriteLinks(*own);
        }
        out.EndElement();
    }

private:
    // One reference per operator type (and per kind: a plain model or an operator of the type).
    struct referenceEntry {
        bool plainModel;
        ObjectName type;
        std::unique_ptr<ReferenceState> state;
    };

    const ReferenceState& Reference(const Operator& op, const ObjectName& type, bool plainModel) {
        // Operators of one type mostly come in runs; the type names are shared, so the
        // comparisons are mostly of pointers.
        for (const auto& entry : references)
            if (entry.plainModel == plainModel && entry.type == type) return *entry.state;
        std::shared_ptr<Operator> fresh;
        if (plainModel)
            fresh = std::make_shared<Model>(type.GetNamespace(), type.GetName());
        else
            fresh = OperatorFactory::TryCreate(type);
        if (!fresh) {
            QuarnLog::Write(
                QuarnLog::Level::Warning, __PRETTY_FUNCTION__, __FILE__,
                L"Operator type \"" + type.GetFullName() +
                    L"\" is not registered: the saved model can be read only where it is.");
            fresh = std::make_shared<Operator>(op.GetOperatorNamespace(), op.GetOperatorName());
        }
        references.push_back(
            {plainModel, type, std::make_unique<ReferenceState>(std::move(fresh))});
        return *references.back().state;
    }

    void WritePorts(const Operator& op, const ReferenceState& ref) {
        // Names are read in place: a save visits every port.
        const auto& ports = LinkAccess::Of(op).ports;
        std::vector<const std::wstring*> actual;
        actual.reserve(ports.size());
        for (const auto& port : ports) actual.push_back(&PortName(*port));
        // Mostly the operator still has the ports of its type, in their order: then nothing is
        // removed or reordered, and each port's reference is the one at its place.
        if (std::equal(
                actual.begin(), actual.end(), ref.portNames.begin(), ref.portNames.end(),
                [](const std::wstring* own, const std::wstring& name) { return *own == name; })) {
            for (std::size_t i = 0; i < ports.size(); ++i)
                WritePort(*ports[i], *actual[i], ref.ordered[i]);
            return;
        }
        auto present = [&actual](const std::wstring& name) {
            return std::any_of(actual.begin(), actual.end(),
                               [&name](const std::wstring* own) { return *own == name; });
        };
        std::vector<const std::wstring*> expected;
        expected.reserve(ports.size());
        for (const auto& name : ref.portNames)
            if (present(name)) expected.push_back(&name);
        for (std::size_t i = 0; i < ports.size(); ++i) {
            const auto* refPort = ref.FindPort(*actual[i]);
            if (!refPort) expected.push_back(actual[i]);
            WritePort(*ports[i], *actual[i], refPort);
        }
        for (const auto& name : ref.portNames) {
            if (present(name)) continue;
            out.StartElement(xml::PortElement);
            out.Attribute(xml::Name, name);
            WriteFlag(out, xml::Removed, true);
            out.EndElement();
        }
        bool sameOrder =
            std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(),
                       [](const std::wstring* a, const std::wstring* b) { return *a == *b; });
        if (!sameOrder) {
            out.StartElement(xml::PortOrder);
            for (const auto* name : actual) WriteText(out, xml::PortName, *name);
            out.EndElement();
        }
    }

    void WritePort(const Port& port, const std::wstring& name, const PortState* refPort) {
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
        auto before = out.GetMark();
        out.StartElement(xml::PortElement);
        out.Attribute(xml::Name, name);
        auto named = out.Size();
        if (fresh)
            out.Attribute(xml::Direction,
                          own.direction == PortDirection::Input ? "input" : "output");
        if (!Same(own.displayName, ref.displayName))
            out.Attribute(xml::DisplayName, own.displayName);
        if (own.optional != ref.optional) WriteFlag(out, xml::Optional, own.optional);
        if (own.hidden != ref.hidden) WriteFlag(out, xml::Hidden, own.hidden);
        if (own.isPrivate != ref.isPrivate) WriteFlag(out, xml::Private, own.isPrivate);
        if (own.native != ref.native) WriteFlag(out, xml::Native, own.native);
        if (!Same(own.description, ref.description))
            WriteText(out, xml::Description, own.description);
        if (!Same(own.keywords, ref.keywords))
            WriteTexts(out, xml::Keywords, xml::Keyword, own.keywords);
        if (!Same(own.types, ref.types)) WriteTypes(out, xml::Types, own.types);
        if (!Same(own.extra, ref.extra)) WriteTypes(out, xml::ExtraTypes, own.extra);
        if (!Same(own.excluded, ref.excluded)) WriteTypes(out, xml::ExcludedTypes, own.excluded);
        if (!SameData(own.defaultData, ref.defaultData)) {
            out.StartElement(xml::Default);
            WriteData(out, own.defaultData);
            out.EndElement();
        }
        if (!SameData(own.data, ref.data)) {
            out.StartElement(xml::Value);
            WriteData(out, own.data);
            out.EndElement();
        }
        WriteAttributeChanges(out, own.attributes, ref.attributes, xml::Attribute);
        WriteDataAttributeChanges(own.dataAttributes, ref.dataAttributes);
        // A port that the operator makes by itself and that matches it needs no element.
        if (!fresh && out.Size() == named)
            out.Restore(before);
        else
            out.EndElement();
    }

    // The data type attributes of both maps, by type name in order.
    void WriteDataAttributeChanges(const Port::DataTypeAttributeMapMap& own,
                                   const Port::DataTypeAttributeMapMap& reference) {
        static const Port::AttributeMap none;
        auto a = own.begin();
        auto b = reference.begin();
        while (a != own.end() || b != reference.end()) {
            if (b == reference.end() || (a != own.end() && a->first < b->first)) {
                WriteAttributeChanges(out, a->second, none, xml::DataAttribute, a->first);
                ++a;
            } else if (a == own.end() || b->first < a->first) {
                WriteAttributeChanges(out, none, b->second, xml::DataAttribute, b->first);
                ++b;
            } else {
                WriteAttributeChanges(out, a->second, b->second, xml::DataAttribute, a->first);
                ++a;
                ++b;
            }
        }
    }

    static void GatherParents(modelLinks& links, const Operator& child, int childId) {
        for (const auto& link : LinkAccess::Of(child).parents) {
            auto parent = link.lock();
            if (!parent) continue;
            int parentId = links.IdOf(parent.get());
            if (parentId < 0) {
                links.Dropped(L"a flow link of \"" + child.GetDisplayName() + L"\"");
                continue;
            }
            links.parents.push_back({childId, parentId});
        }
    }

    void GatherConnections(modelLinks& links, const Operator& child, int childId,
                           const std::shared_ptr<Port>& port) {
        ForEachConnection(*port, [this, &links, &child, childId,
                                  &port](const std::shared_ptr<PortConnection>& connection) {
            if (connection->IsInnerAlias() || connection->GetChildPort() != port) return;
            auto parent = connection->GetParent();
            auto parentPort = connection->GetParentPort();
            int parentId = links.IdOf(parent.get());
            if (parentId < 0 || !parentPort) {
                // A model's own inputs fed from outside belong to the model above.
                if (childId != 0)
                    links.Dropped(L"a data link of \"" + child.GetDisplayName() + L"\"");
                return;
            }
            links.connections.push_back(
                {parentId, &Utf8Name(PortName(*parentPort)), childId, &Utf8Name(PortName(*port))});
        });
    }

    void WriteLinks(const modelLinks& links) {
        const Model& model = links.model;
        const auto& ops = LinkAccess::Of(model).operators;
        auto idOf = [&links](const Operator* op) { return links.IdOf(op); };
        auto dropped = [&links](const std::wstring& what) { links.Dropped(what); };
        auto before = out.GetMark();
        out.StartElement(xml::Links);
        auto empty = out.Size();

        for (const auto& link : links.parents) {
            out.StartElement(xml::Parent);
            out.Attribute(xml::Child, std::int64_t{link.child});
            out.Attribute(xml::ParentId, std::int64_t{link.parent});
            out.EndElement();
        }
        for (const auto& link : links.connections) {
            out.StartElement(xml::Connection);
            out.Attribute(xml::From, std::int64_t{link.from});
            out.Attribute(xml::FromPort, *link.fromPort);
            out.Attribute(xml::To, std::int64_t{link.to});
            out.Attribute(xml::ToPort, *link.toPort);
            out.EndElement();
        }

        for (const auto& modelPort : model.GetPorts()) {
            for (const auto& inner : modelPort->GetInnerAliasedPorts()) {
                int innerId = idOf(inner->TryGetOperator().get());
                if (innerId <= 0) {
                    dropped(L"the alias \"" + modelPort->GetName() + L"\"");
                    continue;
                }
                out.StartElement(xml::Alias);
                out.Attribute(xml::ModelPort, PortName(*modelPort));
                out.Attribute(xml::OperatorRef, std::int64_t{innerId});
                out.Attribute(xml::PortRef, PortName(*inner));
                out.EndElement();
            }
        }

        for (int owner : links.conditionals) {
            const auto& op = ops[static_cast<std::size_t>(owner) - 1];
            auto conditional = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op);
            // Starts the element of a branch, body or test; the caller ends it.
            auto hang = [this, &idOf, &dropped, &op, owner](
                            const char* kind, const std::shared_ptr<Operator>& target) {
                int targetId = idOf(target.get());
                if (targetId < 0) {
                    dropped(L"a branch, body or test of \"" + op->GetDisplayName() + L"\"");
                    return false;
                }
                out.StartElement(kind);
                out.Attribute(xml::Owner, std::int64_t{owner});
                out.Attribute(xml::OperatorRef, std::int64_t{targetId});
                return true;
            };
            for (const auto& body : conditional->GetBody())
                if (hang(xml::Body, body)) out.EndElement();
            if (auto test = conditional->GetTestOperator()) {
                if (hang(xml::Test, test)) {
                    if (auto testPort = conditional->GetTestPort())
                        out.Attribute(xml::PortRef, PortName(*testPort));
                    out.EndElement();
                }
            }
            if (auto ifProcess = std::dynamic_pointer_cast<LattixBasic::IfProcess>(op)) {
                for (bool branch : {true, false}) {
                    for (const auto& tail : ifProcess->GetIfTails(branch)) {
                        if (!hang(xml::Tail, tail)) continue;
                        WriteFlag(out, xml::Branch, branch);
                        out.EndElement();
                    }
                }
            }
        }
        if (out.Size() == empty)
            out.Restore(before);
        else
            out.EndElement();
    }

    // The UTF-8 of a name that recurs through the model. The links are written after all
    // operators, when their ports' names would have to come back from memory one by one.
    const std::string& Utf8Name(const std::wstring& name) {
        auto found = utf8Names.find(name);
        if (found == utf8Names.end())
            found = utf8Names.emplace(name, qtxt::DefaultWideToUTF8(name)).first;
        return found->second;
    }

    XmlEmitter& out;
    std::vector<referenceEntry> references;
    // Node-based: the texts keep their places while names are added.
    std::unordered_map<std::wstring, std::string> utf8Names;
};

}  // namespace

std::string WriteModelXml(const Model& model) {
    XmlEmitter out(ExpectedSize(model));
    out.StartElement(xml::Root);
    out.Attribute(xml::FormatVersion, std::int64_t{ModelXmlVersion});
    auto hold = OperatorFactory::HoldRescan();
    Writer writer(out);
    writer.WriteOperator(model, 0, nullptr);
    out.EndElement();
    return out.Finish();
}

}  // namespace Velmar::Lattix::format
