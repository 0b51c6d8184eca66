#include "Velmar/Lattix/DataFactory.h"

#include <map>
#include <mutex>

#include "LattixBasic/Color.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/EnumData.h"
#include "Velmar/Lattix/FileData.h"
#include "Velmar/Lattix/GenericData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/RasterData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"
#include "Velmar/Lattix/UnsignedData.h"
#include "core/textutil.h"
#include "data/datautil.h"

namespace Velmar::Lattix {

namespace {

struct dataFactoryRecord {
    std::mutex lock;
    std::map<ObjectName, std::shared_ptr<Data>> prototypes;
};

dataFactoryRecord& Registry() {
    static dataFactoryRecord registry;
    static std::once_flag once;
    std::call_once(once, [] {
        std::vector<std::shared_ptr<Data>> builtIn = {
            std::make_shared<IntData>(),
            std::make_shared<UnsignedData>(),
            std::make_shared<DoubleData>(),
            std::make_shared<StringData>(),
            std::make_shared<StringListData>(),
            std::make_shared<BoolData>(),
            std::make_shared<FileData>(),
            std::make_shared<ListData>(),
            std::make_shared<RasterData>(),
            std::make_shared<GenericData>(),
            std::make_shared<DictionaryData>(),
            std::make_shared<LattixBasic::Color>(),
            std::make_shared<EnumData>(
                ObjectName(L"TAMARIN", L"FocalStatistic"),
                std::vector<std::wstring>{L"Mean", L"Maximum", L"Minimum", L"Sum",
                                          L"StandardDeviation", L"Median", L"Majority", L"Range"}),
            std::make_shared<EnumData>(
                ObjectName(L"TAMARIN", L"ZonalStatistic"),
                std::vector<std::wstring>{L"Mean", L"Maximum", L"Minimum", L"Sum", L"Count",
                                          L"StandardDeviation"}),
            std::make_shared<EnumData>(ObjectName(L"TAMARIN", L"KernelShape"),
                                       std::vector<std::wstring>{L"Square", L"Circle", L"Cross"}),
        };
        for (auto& prototype : builtIn)
            registry.prototypes[prototype->GetDataTypeName()] = prototype;
    });
    return registry;
}

}  // namespace

std::shared_ptr<Data> DataFactory::TryCreate(const ObjectName& type) {
    auto& registry = Registry();
    std::shared_ptr<Data> prototype;
    {
        std::lock_guard guard(registry.lock);
        auto found = registry.prototypes.find(type);
        if (found == registry.prototypes.end()) return nullptr;
        prototype = found->second;
    }
    auto value = prototype->Clone();
    value->Initialize();
    return value;
}

std::shared_ptr<Data> DataFactory::Create(const ObjectName& type) {
    auto value = TryCreate(type);
    if (!value) QUARN_THROW(L"Unknown data type \"" + type.GetFullName() + L"\".");
    return value;
}

std::shared_ptr<Data> DataFactory::Create(const std::wstring& fullTypeName) {
    ObjectName type;
    if (!ObjectName::TryParse(fullTypeName, type))
        QUARN_THROW(L"Unknown data type \"" + fullTypeName + L"\": Invalid full name format.");
    return Create(type);
}

bool DataFactory::IsKnownType(const ObjectName& type) {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    return registry.prototypes.count(type) > 0;
}

std::vector<ObjectName> DataFactory::GetListOfAllTypes() {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    std::vector<ObjectName> types;
    for (const auto& [type, prototype] : registry.prototypes) types.push_back(type);
    std::sort(types.begin(), types.end(), [](const ObjectName& a, const ObjectName& b) {
        return a.GetFullName() < b.GetFullName();
    });
    return types;
}

void DataFactory::Register(const std::shared_ptr<Data>& prototype) {
    if (!prototype) QUARN_THROW("Cannot register an empty data prototype.");
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    registry.prototypes[prototype->GetDataTypeName()] = prototype->Clone();
}

std::shared_ptr<Data> DataFactory::FromString(const ObjectName& type, const std::wstring& text) {
    auto value = Create(type);
    value->FromString(text);
    return value;
}

std::shared_ptr<Data> DataFactory::FromTypedJson(const JsonValue& typed) {
    // Lists and dictionaries read their items through here: bound the nesting so that a hostile
    // document cannot exhaust the stack.
    constexpr int maximumDepth = 64;
    thread_local int depth = 0;
    if (depth >= maximumDepth)
        QUARN_THROW("Typed values nest deeper than " + std::to_string(maximumDepth) + " levels.");
    ++depth;
    std::shared_ptr<void> leave(nullptr, [](void*) { --depth; });
    const auto& json = typed.GetJson();
    if (!json.is_object() || !json.contains("type") || !json["type"].is_string() ||
        !json.contains("value"))
        QUARN_THROW(L"Expected a typed value {\"type\": ..., \"value\": ...} but found " +
                    detail::Quote(detail::FromUtf8(typed.ToText())) + L".");
    auto value = Create(detail::FromUtf8(json["type"].get<std::string>()));
    value->FromJson(JsonValue(json["value"]));
    return value;
}

JsonValue DataFactory::ToTypedJson(const Data& data) {
    nlohmann::json json = nlohmann::json::object();
    json["type"] = detail::ToUtf8(data.GetDataTypeName().GetFullName());
    json["value"] = data.ToJson().GetJson();
    return JsonValue(std::move(json));
}

}  // namespace Velmar::Lattix
