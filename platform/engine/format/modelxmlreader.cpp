#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <typeinfo>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include <pugixml.hpp>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/DataFactory.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/JsonValue.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "core/records.h"
#include "format/modelxml.h"
#include "format/modelxmlnames.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix::format {

namespace {

std::wstring W(const char* text) {
    return qtxt::UTF8toDefaultWide(text);
}

// Names are compared first by their first letter: elements and attributes are looked up among
// many candidates, and most differ there.
bool Same(const char* a, const char* b) {
    return a[0] == b[0] && std::strcmp(a, b) == 0;
}

bool Is(const pugi::xml_node& node, const char* name) {
    return Same(node.name(), name);
}

// The attribute of that name, or an empty one.
pugi::xml_attribute Attr(const pugi::xml_node& node, const char* name) {
    for (auto attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute())
        if (Same(attribute.name(), name)) return attribute;
    return {};
}

// An element with its attributes gathered in one pass: an element is asked for each attribute
// it may have, and each ask of the parser walks the attribute list anew.
class Element {
public:
    explicit Element(pugi::xml_node node) : node(node) {
        for (auto attribute = node.first_attribute(); attribute;
             attribute = attribute.next_attribute()) {
            if (count == std::size(items)) {
                // More than any element of the format has: the rest are looked up in the parser.
                overflow = true;
                break;
            }
            items[count++] = {attribute.name(), attribute.value()};
        }
    }

    // The value of the attribute, or null when the element has none of that name.
    const char* Get(const char* name) const {
        for (std::size_t i = 0; i < count; ++i)
            if (Same(items[i].name, name)) return items[i].value;
        if (overflow)
            if (auto attribute = Attr(node, name)) return attribute.value();
        return nullptr;
    }
    bool Has(const char* name) const { return Get(name) != nullptr; }
    // How many attributes the element has (at least that many when it has very many).
    std::size_t Size() const { return overflow ? count + 1 : count; }

    pugi::xml_node node;

private:
    struct Item {
        const char* name;
        const char* value;
    };
    Item items[12] = {};
    std::size_t count = 0;
    bool overflow = false;
};

// A value text quoted in a message, cut short when long.
std::wstring Excerpt(const std::wstring& text) {
    constexpr std::size_t limit = 60;
    return L"\"" + (text.size() > limit ? text.substr(0, limit) + L"..." : text) + L"\"";
}

// The deepest nesting of JSON arrays and objects in text (brackets inside strings do not count).
int JsonDepth(std::string_view text) {
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return deepest;
}

// Whether text is exactly a JSON number: -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?
bool IsJsonNumber(std::string_view text, bool& integral) {
    std::size_t i = 0;
    auto digits = [&] {
        std::size_t start = i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
        return i - start;
    };
    if (i < text.size() && text[i] == '-') ++i;
    if (i < text.size() && text[i] == '0')
        ++i;
    else if (digits() == 0)
        return false;
    integral = true;
    if (i < text.size() && text[i] == '.') {
        ++i;
        integral = false;
        if (digits() == 0) return false;
    }
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        integral = false;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        if (digits() == 0) return false;
    }
    return i == text.size();
}

// Most values in a model are single numbers: those are read without the JSON parser, into the
// same kind of number it makes (unsigned, signed or floating). Anything else, or a number that
// does not fit, goes to the parser.
// Text that is exactly a JSON number, read into the same kind of number the JSON parser makes of
// it (unsigned, signed or floating); none for any other text, or a number that does not fit.
std::optional<std::variant<std::uint64_t, std::int64_t, double>> ReadJsonNumber(
    std::string_view text) {
    bool integral = false;
    if (!IsJsonNumber(text, integral)) return std::nullopt;
    auto read =
        [text](auto number) -> std::optional<std::variant<std::uint64_t, std::int64_t, double>> {
        auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
        return number;
    };
    if (!integral) return read(double{});
    return text.front() == '-' ? read(std::int64_t{}) : read(std::uint64_t{});
}

// Most values in a model are single numbers: those are read without the JSON parser. Anything
// else, or a number that does not fit, goes to the parser.
JsonValue ParseValue(std::string_view text) {
    if (auto number = ReadJsonNumber(text))
        return std::visit([](auto value) { return JsonValue(nlohmann::json(value)); }, *number);
    return JsonValue::FromText(std::string(text));
}

// The operators of one model by their file id, each with the number of flow parents the file gave
// it. The writer numbers operators 1, 2, 3...: those ids go to a vector, and only ids far beyond
// the model's size (hand-edited files) to a map.
struct IdEntry {
    std::shared_ptr<Operator> op;
    std::size_t flowParents = 0;
};

class IdTable {
public:
    explicit IdTable(std::size_t expected) : denseLimit(2 * expected + 64) {}

    bool Contains(int id) const { return Find(id) != nullptr; }

    void Add(int id, std::shared_ptr<Operator> op) {
        auto index = static_cast<std::size_t>(id);
        if (index < denseLimit) {
            if (dense.size() <= index) dense.resize(index + 1);
            dense[index].op = std::move(op);
        } else {
            sparse[id].op = std::move(op);
        }
    }

    // Null when no operator has the id.
    IdEntry* Find(int id) {
        if (id < 0) return nullptr;
        auto index = static_cast<std::size_t>(id);
        if (index < denseLimit)
            return index < dense.size() && dense[index].op ? &dense[index] : nullptr;
        auto found = sparse.find(id);
        return found == sparse.end() ? nullptr : &found->second;
    }
    const IdEntry* Find(int id) const { return const_cast<IdTable&>(*this).Find(id); }

    template <typename Fn>
    void ForEach(Fn&& fn) const {
        for (std::size_t index = 0; index < dense.size(); ++index)
            if (dense[index].op) fn(static_cast<int>(index), dense[index]);
        for (const auto& [id, entry] : sparse) fn(id, entry);
    }

private:
    std::size_t denseLimit;
    std::vector<IdEntry> dense;
    std::unordered_map<int, IdEntry> sparse;
};

// Reads text that is exactly a JSON number into a double, as DoubleData::FromJson reads the
// number the JSON parser makes of it; false for any other text.
bool ReadNumber(std::string_view text, DoubleData& data) {
    auto number = ReadJsonNumber(text);
    if (!number) return false;
    // Whole numbers stay whole in the parser; they become doubles only when read.
    data.SetValue(std::visit([](auto value) { return static_cast<double>(value); }, *number));
    return true;
}

class Reader {
public:
    Reader(std::string_view bytes, std::wstring source) : bytes(bytes), source(std::move(source)) {}

    std::shared_ptr<Model> Read() {
        auto hold = OperatorFactory::HoldRescan();
        pugi::xml_document document;
        auto result = document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default,
                                           pugi::encoding_utf8);
        if (!result) {
            if (result.status == pugi::status_no_document_element)
                FailAt(result.offset, {},
                       L"it holds no XML element (the file is empty or cut short).");
            FailAt(result.offset, {},
                   L"the XML is malformed or cut short (" + W(result.description()) + L").");
        }
        auto root = document.document_element();
        if (!Is(root, xml::Root))
            Fail(root, L"the root element is <" + W(root.name()) + L">, not <" + W(xml::Root) +
                           L">: this is not a model file.");
        auto versionText = Required(Element(root), xml::FormatVersion);
        int version = 0;
        try {
            std::size_t used = 0;
            version = std::stoi(versionText, &used);
            if (used != versionText.size()) throw std::invalid_argument("trailing text");
        } catch (const std::exception&) {
            Fail(root, L"the format version " + Excerpt(versionText) + L" is not a whole number.");
        }
        if (version > ModelXmlVersion)
            Fail(root, L"the file has format version " + std::to_wstring(version) +
                           L", newer than the version this program reads (" +
                           std::to_wstring(ModelXmlVersion) + L").");
        if (version < 1)
            Fail(root, L"the format version " + std::to_wstring(version) + L" does not exist.");
        pugi::xml_node modelNode;
        for (auto child : root.children()) {
            if (child.type() != pugi::node_element) continue;
            // The root is a <Model>, or an <Operator> that is a model (a loop saved on its own).
            bool model = Is(child, xml::ModelElement) || Is(child, xml::OperatorElement);
            if (!model || modelNode)
                Fail(child, L"a model file holds exactly one <Model> element, found <" +
                                W(child.name()) + L">.");
            modelNode = child;
        }
        if (!modelNode) Fail(root, L"the file holds no <Model> element.");
        auto model = std::dynamic_pointer_cast<Model>(ReadOperator(Element(modelNode), 0));
        if (!model) Fail(modelNode, L"the operator at the root is not a model.");
        return model;
    }

private:
    [[noreturn]] void FailAt(std::ptrdiff_t offset, const pugi::xml_node& node,
                             const std::wstring& message) const {
        std::wstring where;
        if (offset >= 0 && static_cast<std::size_t>(offset) <= bytes.size()) {
            auto before = bytes.substr(0, static_cast<std::size_t>(offset));
            auto line = std::count(before.begin(), before.end(), '\n') + 1;
            auto lineStart = before.rfind('\n');
            auto column =
                offset -
                (lineStart == std::string_view::npos ? 0
                                                     : static_cast<std::ptrdiff_t>(lineStart) + 1) +
                1;
            where = L", line " + std::to_wstring(line) + L", column " + std::to_wstring(column);
        }
        std::wstring path;
        for (auto n = node; n && n.type() == pugi::node_element; n = n.parent()) {
            std::wstring step = W(n.name());
            if (auto id = Attr(n, xml::Id))
                step += L"[id=" + W(id.value()) + L"]";
            else if (auto name = Attr(n, xml::Name))
                step += L"[name=" + W(name.value()) + L"]";
            path = path.empty() ? step : step + L"/" + path;
        }
        if (!path.empty()) where += L" (" + path + L")";
        QUARN_THROW(L"Cannot read " + source + where + L": " + message);
    }

    [[noreturn]] void Fail(const pugi::xml_node& node, const std::wstring& message) const {
        FailAt(node.offset_debug(), node, message);
    }

    const char* RequiredText(const Element& element, const char* name) const {
        const char* value = element.Get(name);
        if (!value) Fail(element.node, L"the attribute \"" + W(name) + L"\" is missing.");
        return value;
    }

    std::wstring Required(const Element& element, const char* name) const {
        return W(RequiredText(element, name));
    }

    // A name that a file repeats many times (port, attribute and operator names), widened once.
    const std::wstring& RequiredName(const Element& element, const char* attributeName) const {
        std::string_view text = RequiredText(element, attributeName);
        auto found = names.find(text);
        if (found == names.end()) found = names.emplace(std::string(text), W(text.data())).first;
        return found->second;
    }

    bool Flag(const Element& element, const char* name, bool fallback = false) const {
        const char* text = element.Get(name);
        if (!text) return fallback;
        std::string_view value = text;
        if (value == "true") return true;
        if (value == "false") return false;
        Fail(element.node, L"the attribute \"" + W(name) + L"\" is " + Excerpt(W(text)) +
                               L"; true or false expected.");
    }

    int Reference(const Element& element, const char* name) const {
        // Plain digits, as the writer puts them, are read in place; anything else goes the long way
        // round so that its message quotes it.
        if (const char* text = element.Get(name)) {
            std::string_view digits = text;
            int value = 0;
            auto [end, error] =
                std::from_chars(digits.data(), digits.data() + digits.size(), value);
            if (error == std::errc() && end == digits.data() + digits.size() && !digits.empty() &&
                digits.front() != '-')
                return value;
        }
        auto text = Required(element, name);
        try {
            std::size_t used = 0;
            int value = std::stoi(text, &used);
            if (used == text.size() && value >= 0) return value;
        } catch (const std::exception&) {
        }
        Fail(element.node, L"the attribute \"" + W(name) + L"\" is " + Excerpt(text) +
                               L"; an operator id (a whole number from 0) expected.");
    }

    std::vector<std::wstring> Texts(const pugi::xml_node& list, const char* itemName) const {
        std::vector<std::wstring> items;
        for (auto item : list.children()) {
            if (item.type() != pugi::node_element) continue;
            if (!Is(item, itemName))
                Fail(item, L"<" + W(itemName) + L"> expected, found <" + W(item.name()) + L">.");
            items.push_back(W(item.child_value()));
        }
        return items;
    }

    std::vector<ObjectName> Types(const pugi::xml_node& list) const {
        std::vector<ObjectName> types;
        for (const auto& text : Texts(list, xml::TypeItem)) {
            ObjectName type;
            if (!ObjectName::TryParse(text, type))
                Fail(list, L"the data type name " + Excerpt(text) +
                               L" is not of the form Namespace.Name.");
            types.push_back(type);
        }
        return types;
    }

    // A value from its element (type attribute, JSON text); null when the element has no type.
    std::shared_ptr<Data> ReadData(const Element& element) const {
        const auto& node = element.node;
        const char* typeText = element.Get(xml::Type);
        if (!typeText) {
            if (node.first_child()) Fail(node, L"a value needs a \"type\" attribute.");
            return nullptr;
        }
        // Files name few types many times: each is converted, checked and made once, and its values
        // are copies of that first one.
        // Most values of a file are of one type: the last one found is tried first.
        auto known = lastType != dataTypes.end() && lastType->first == typeText
                         ? lastType
                         : dataTypes.find(std::string_view(typeText));
        if (known == dataTypes.end()) {
            auto typeName = W(typeText);
            ObjectName type;
            if (!ObjectName::TryParse(typeName, type))
                Fail(node, L"the data type name " + Excerpt(typeName) +
                               L" is not of the form Namespace.Name.");
            auto prototype = DataFactory::TryCreate(type);
            if (!prototype) Fail(node, L"unknown data type \"" + typeName + L"\".");
            bool isDouble = typeid(*prototype) == typeid(DoubleData);
            known = dataTypes.emplace(typeText, KnownType{type, prototype, isDouble}).first;
        }
        lastType = known;
        const auto& [type, prototype, isDouble] = known->second;
        auto data = prototype->Clone();
        std::string_view text = node.child_value();
        // The common case read directly, as FromJson would read it: any JSON number.
        if (isDouble && ReadNumber(text, static_cast<DoubleData&>(*data))) return data;
        if (JsonDepth(text) > MaxValueDepth)
            Fail(node, L"the value nests lists or dictionaries deeper than " +
                           std::to_wstring(MaxValueDepth) + L" levels.");
        try {
            data->FromJson(ParseValue(text));
        } catch (const std::exception& error) {
            Fail(node, L"bad value text " + Excerpt(W(std::string(text).c_str())) +
                           L" for type \"" + type.GetFullName() + L"\": " + W(error.what()));
        }
        return data;
    }

    std::shared_ptr<Operator> ReadOperator(const Element& element, int depth) {
        const auto& node = element.node;
        if (depth > MaxModelDepth)
            Fail(node, L"models nest deeper than " + std::to_wstring(MaxModelDepth) + L" levels.");
        bool plainModel = Is(node, xml::ModelElement);
        const auto& nameSpace = RequiredName(element, xml::Namespace);
        const auto& name = RequiredName(element, xml::Name);
        if (nameSpace.empty() || name.empty() || nameSpace.find(L'.') != std::wstring::npos ||
            name.find(L'.') != std::wstring::npos)
            Fail(node, L"the operator name \"" + nameSpace + L"." + name + L"\" is not valid.");
        std::shared_ptr<Operator> op;
        if (plainModel) {
            op = std::make_shared<Model>(nameSpace, name);
        } else {
            try {
                // Each type is looked up in the factory once per file.
                auto key = std::make_pair(&nameSpace, &name);
                auto known = operatorTypes.find(key);
                if (known == operatorTypes.end()) {
                    ObjectName type(nameSpace, name);
                    known = operatorTypes
                                .emplace(key, KnownOperator{type, LinkAccess::FindBuiltIn(type)})
                                .first;
                }
                const auto& [type, builtIn] = known->second;
                op = builtIn ? LinkAccess::Instantiate(builtIn) : OperatorFactory::TryCreate(type);
            } catch (const std::exception& error) {
                Fail(node, L"operator \"" + nameSpace + L"." + name + L"\" cannot be made: " +
                               W(error.what()));
            }
            if (!op) Fail(node, L"unknown operator \"" + nameSpace + L"." + name + L"\".");
        }
        auto model = std::dynamic_pointer_cast<Model>(op);

        // Most operator elements hold only their id and name: then there is nothing more to ask.
        if (model || element.Size() > (element.Has(xml::Id) ? 3u : 2u))
            ReadOperatorAttributes(element, *op, model.get());

        auto childCount = static_cast<std::size_t>(std::distance(node.begin(), node.end()));
        IdTable ids(model ? childCount : 0);
        if (model) LinkAccess::ReserveOperators(*model, childCount);
        if (model) ids.Add(0, op);
        pugi::xml_node links;
        pugi::xml_node portOrder;
        // A model's ports take the types of the ports they alias when they have none; the types
        // read from the file are put back once the aliases are made.
        std::vector<std::pair<std::shared_ptr<Port>, std::vector<ObjectName>>> modelPortTypes;

        for (auto child : node.children()) {
            if (child.type() != pugi::node_element) continue;
            if (Is(child, xml::Description)) {
                op->SetDescription(W(child.child_value()));
            } else if (Is(child, xml::Keywords)) {
                op->SetKeywords(Texts(child, xml::Keyword));
            } else if (Is(child, xml::SyntaxForms)) {
                op->SetSyntaxForms(Texts(child, xml::Form));
            } else if (Is(child, xml::PortElement)) {
                auto port = ReadPort(Element(child), *op);
                if (model && port)
                    modelPortTypes.emplace_back(port, port->GetDeclaredSupportedTypes());
            } else if (Is(child, xml::PortOrder)) {
                portOrder = child;
            } else if (Is(child, xml::Attribute)) {
                Element attribute(child);
                const auto& attributeName = RequiredName(attribute, xml::Name);
                if (Flag(attribute, xml::Removed)) {
                    op->RemoveAttribute(attributeName);
                } else {
                    auto value = ReadData(attribute);
                    if (!value) Fail(child, L"an operator attribute needs a value.");
                    op->SetAttribute(attributeName, value);
                }
            } else if (model && (Is(child, xml::OperatorElement) || Is(child, xml::ModelElement))) {
                Element inner(child);
                int id = Reference(inner, xml::Id);
                if (id == 0) Fail(child, L"operator id 0 stands for the model itself.");
                if (ids.Contains(id))
                    Fail(child, L"duplicate operator id " + std::to_wstring(id) + L".");
                auto innerOp = ReadOperator(inner, depth + 1);
                LinkAccess::AddNewOperator(model, innerOp);
                ids.Add(id, innerOp);
            } else if (model && Is(child, xml::Links)) {
                if (links) Fail(child, L"a model has one <Links> element.");
                links = child;
            } else {
                Fail(child, L"unexpected element <" + W(child.name()) + L"> in <" + W(node.name()) +
                                L">.");
            }
        }
        if (portOrder) ApplyPortOrder(portOrder, *op);
        if (links) ReadLinks(links, *model, ids);
        for (const auto& [port, types] : modelPortTypes)
            if (port->GetDeclaredSupportedTypes() != types) port->SetSupportedTypes(types);
        return op;
    }

    // The attributes of an operator element beyond its id and name. A model (and only a model)
    // takes its flags from the file, absent ones as false.
    void ReadOperatorAttributes(const Element& element, Operator& op, Model* model) const {
        if (const char* a = element.Get(xml::DisplayName)) op.SetDisplayName(W(a));
        if (const char* a = element.Get(xml::Icon)) op.SetIcon(W(a));
        if (const char* a = element.Get(xml::DisplayCategory)) op.SetDisplayCategory(W(a));
        if (const char* a = element.Get(xml::ColorCategory)) op.SetColorCategory(W(a));
        if (element.Has(xml::UsableInExpression))
            op.SetUsableInExpression(Flag(element, xml::UsableInExpression));
        if (const char* a = element.Get(xml::Uri)) op.SetUri(W(a));
        bool modelFlags = element.Has(xml::ProcessName) || element.Has(xml::Readonly) ||
                          element.Has(xml::Locked) || element.Has(xml::PlainFormatForbidden);
        if (modelFlags && !model)
            Fail(element.node, L"only models have a process name or editing flags.");
        if (model) {
            if (const char* processName = element.Get(xml::ProcessName))
                model->SetProcessName(W(processName));
            model->SetReadonly(Flag(element, xml::Readonly));
            model->SetLocked(Flag(element, xml::Locked));
            model->SetPlainFormatForbidden(Flag(element, xml::PlainFormatForbidden));
        }
    }

    // Runs an engine call, turning its error into one that names the element.
    template <typename Fn>
    void Guard(const pugi::xml_node& node, Fn&& fn) const {
        try {
            fn();
        } catch (const std::exception& error) {
            Fail(node, W(error.what()));
        }
    }

    std::shared_ptr<Port> ReadPort(const Element& element, Operator& op) const {
        const auto& node = element.node;
        const auto& name = RequiredName(element, xml::Name);
        if (name.empty()) Fail(node, L"a port needs a name.");
        if (Flag(element, xml::Removed)) {
            op.RemovePort(name);
            return nullptr;
        }
        auto port = op.GetPort(name);
        if (const char* directionText = element.Get(xml::Direction)) {
            std::string_view text = directionText;
            if (text != "input" && text != "output")
                Fail(node, L"the port direction " + Excerpt(W(directionText)) +
                               L" is neither input nor output.");
            auto direction = text == "input" ? PortDirection::Input : PortDirection::Output;
            if (port && port->GetDirection() != direction) {
                op.RemovePort(name);
                port = nullptr;
            }
            if (!port) Guard(node, [&] { port = op.AddPort(name, direction); });
        }
        if (!port)
            Fail(node, L"operator \"" + op.GetObjectName().GetFullName() + L"\" has no port \"" +
                           name + L"\" of its own and the file gives no direction for it.");

        if (const char* a = element.Get(xml::DisplayName)) port->SetDisplayName(W(a));
        if (element.Has(xml::Optional)) port->SetOptional(Flag(element, xml::Optional));
        if (element.Has(xml::Hidden)) port->SetIsHidden(Flag(element, xml::Hidden));
        if (element.Has(xml::Private)) port->SetPrivate(Flag(element, xml::Private));
        if (element.Has(xml::Native)) port->SetNative(Flag(element, xml::Native));
        for (auto child : node.children()) {
            if (child.type() != pugi::node_element) continue;
            if (Is(child, xml::Description)) {
                port->SetDescription(W(child.child_value()));
            } else if (Is(child, xml::Keywords)) {
                port->SetKeywords(Texts(child, xml::Keyword));
            } else if (Is(child, xml::Types)) {
                port->SetSupportedTypes(Types(child));
            } else if (Is(child, xml::ExtraTypes)) {
                port->ClearExtraSupportedTypes();
                for (const auto& type : Types(child)) port->AddExtraSupportedType(type);
            } else if (Is(child, xml::ExcludedTypes)) {
                port->ClearExcludedTypes();
                for (const auto& type : Types(child)) port->AddExcludedType(type);
            } else if (Is(child, xml::Default)) {
                auto value = ReadData(Element(child));
                Guard(child, [&] { port->SetDefaultData(value); });
            } else if (Is(child, xml::Value)) {
                auto value = ReadData(Element(child));
                Guard(child, [&] { port->SetData(value); });
            } else if (Is(child, xml::Attribute)) {
                Element attribute(child);
                auto attributeName = Required(attribute, xml::Name);
                if (Flag(attribute, xml::Removed))
                    port->RemoveAttribute(attributeName);
                else
                    port->SetAttribute(attributeName, ReadData(attribute));
            } else if (Is(child, xml::DataAttribute)) {
                Element attribute(child);
                auto typeName = Required(attribute, xml::DataType);
                ObjectName type;
                if (!ObjectName::TryParse(typeName, type))
                    Fail(child, L"the data type name " + Excerpt(typeName) +
                                    L" is not of the form Namespace.Name.");
                auto attributeName = Required(attribute, xml::Name);
                if (Flag(attribute, xml::Removed))
                    port->RemoveDataTypeAttribute(type, attributeName);
                else
                    port->SetDataTypeAttribute(type, attributeName, ReadData(attribute));
            } else {
                Fail(child, L"unexpected element <" + W(child.name()) + L"> in <Port>.");
            }
        }
        return port;
    }

    // Puts the ports in the order the file lists them (the operator's own order is kept unless the
    // saved operator had another).
    void ApplyPortOrder(const pugi::xml_node& node, Operator& op) const {
        auto names = Texts(node, xml::PortName);
        auto ports = op.GetPorts();
        std::set<std::wstring> listed(names.begin(), names.end());
        if (listed.size() != names.size() || names.size() != ports.size())
            Fail(node, L"the port order does not list each port of the operator once.");
        std::vector<std::shared_ptr<Port>> ordered;
        for (const auto& name : names) {
            auto port = op.GetPort(name);
            if (!port)
                Fail(node,
                     L"the port order names \"" + name + L"\", which the operator does not have.");
            ordered.push_back(port);
        }
        for (const auto& port : ordered) {
            op.RemovePort(port->GetName());
            op.AdoptPort(port);
        }
    }

    IdEntry& Entry(const Element& element, const char* attribute, IdTable& ids) const {
        const auto& node = element.node;
        int id = Reference(element, attribute);
        auto* found = ids.Find(id);
        if (!found) Fail(node, L"the model has no operator with id " + std::to_wstring(id) + L".");
        return *found;
    }

    const std::shared_ptr<Operator>& Lookup(const Element& element, const char* attribute,
                                            IdTable& ids) const {
        return Entry(element, attribute, ids).op;
    }

    std::shared_ptr<Port> PortOf(const Element& element, const char* attribute,
                                 const std::shared_ptr<Operator>& op) const {
        const auto& node = element.node;
        const auto& name = RequiredName(element, attribute);
        auto port = op->GetPort(name);
        if (!port)
            Fail(node,
                 L"operator \"" + op->GetDisplayName() + L"\" has no port \"" + name + L"\".");
        return port;
    }

    std::shared_ptr<LattixBasic::ConditionalProcess> OwnerOf(const Element& element,
                                                             IdTable& ids) const {
        auto owner = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(
            Lookup(element, xml::Owner, ids));
        if (!owner)
            Fail(element.node,
                 L"the owner of a body, test or branch must be a conditional operator.");
        return owner;
    }

    void ReadLinks(const pugi::xml_node& links, Model& model, IdTable& ids) const {
        // One pass sorts the links by kind; each kind is then applied in the order of the file.
        const char* kinds[] = {xml::Parent, xml::Connection, xml::Alias,
                               xml::Body,   xml::Test,       xml::Tail};
        std::vector<pugi::xml_node> byKind[std::size(kinds)];
        for (auto child : links.children()) {
            if (child.type() != pugi::node_element) continue;
            std::size_t kind = 0;
            while (kind < std::size(kinds) && !Is(child, kinds[kind])) ++kind;
            if (kind == std::size(kinds))
                Fail(child, L"unexpected element <" + W(child.name()) + L"> in <Links>.");
            byKind[kind].push_back(child);
        }
        auto children = [&](const char* name) -> const std::vector<pugi::xml_node>& {
            std::size_t kind = 0;
            while (kinds[kind] != name) ++kind;
            return byKind[kind];
        };
        // Flow parents first, in their saved order; data links would otherwise add theirs first.
        for (const auto& node : children(xml::Parent)) {
            Element element(node);
            auto& child = Entry(element, xml::Child, ids);
            const auto& parent = Lookup(element, xml::ParentId, ids);
            if (child.op == parent) Fail(node, L"an operator cannot be its own flow parent.");
            bool added = false;
            Guard(node, [&] { added = child.op->AddParent(parent); });
            if (added) ++child.flowParents;
        }
        for (const auto& node : children(xml::Connection)) {
            Element element(node);
            auto parent = Lookup(element, xml::From, ids);
            auto child = Lookup(element, xml::To, ids);
            auto parentPort = PortOf(element, xml::FromPort, parent);
            auto childPort = PortOf(element, xml::ToPort, child);
            Guard(node, [&] { Operator::ConnectParent(child, parent, parentPort, childPort); });
        }
        // A data link whose flow link the user removed afterwards: connecting gave the child a flow
        // parent after those the file lists.
        ids.ForEach([](int id, const IdEntry& entry) {
            if (id == 0) return;
            if (LinkAccess::Of(*entry.op).parents.size() <= entry.flowParents) return;
            auto all = entry.op->GetParents();
            for (auto i = entry.flowParents; i < all.size(); ++i) entry.op->RemoveParent(all[i]);
        });
        for (const auto& node : children(xml::Alias)) {
            Element element(node);
            auto inner = Lookup(element, xml::OperatorRef, ids);
            if (inner.get() == &model)
                Fail(node, L"a model port cannot alias a port of the model itself.");
            auto innerPort = PortOf(element, xml::PortRef, inner);
            auto name = Required(element, xml::ModelPort);
            Guard(node, [&] { model.AliasPort(innerPort, name); });
        }
        for (const auto& node : children(xml::Body)) {
            Element element(node);
            auto owner = OwnerOf(element, ids);
            auto op = Lookup(element, xml::OperatorRef, ids);
            Guard(node, [&] { owner->AddBodyOperator(op); });
        }
        for (const auto& node : children(xml::Test)) {
            Element element(node);
            auto owner = OwnerOf(element, ids);
            auto op = Lookup(element, xml::OperatorRef, ids);
            auto port = element.Has(xml::PortRef) ? PortOf(element, xml::PortRef, op) : nullptr;
            Guard(node, [&] { owner->SetTest(op, port); });
        }
        for (const auto& node : children(xml::Tail)) {
            Element element(node);
            auto owner = std::dynamic_pointer_cast<LattixBasic::IfProcess>(OwnerOf(element, ids));
            if (!owner) Fail(node, L"only an if operator has branches.");
            auto op = Lookup(element, xml::OperatorRef, ids);
            if (!element.Has(xml::Branch)) Fail(node, L"the attribute \"branch\" is missing.");
            bool branch = Flag(element, xml::Branch);
            Guard(node, [&] { branch ? owner->AddIfTail(op) : owner->AddElseTail(op); });
        }
    }

    std::string_view bytes;
    std::wstring source;
    struct KnownType {
        ObjectName type;
        std::shared_ptr<Data> prototype;
        bool isDouble;
    };
    mutable std::map<std::string, KnownType, std::less<>> dataTypes;
    mutable std::map<std::string, KnownType, std::less<>>::iterator lastType = dataTypes.end();
    // Hashed: a file looks up a handful of names once or twice for every element.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    mutable std::unordered_map<std::string, std::wstring, NameHash, std::equal_to<>> names;
    // Keyed by the widened names above, which stay in place. A built-in type is made from its
    // definition directly; any other goes through the factory.
    struct KnownOperator {
        ObjectName type;
        std::shared_ptr<const preparedDefinition> builtIn;
    };
    std::map<std::pair<const std::wstring*, const std::wstring*>, KnownOperator> operatorTypes;
};

}  // namespace

std::shared_ptr<Model> ReadModelXml(std::string_view bytes, const std::wstring& source) {
    return Reader(bytes, source).Read();
}

}  // namespace Velmar::Lattix::format
