#include "Velmar/Lattix/OperatorFactory.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>

#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "QuarnLog/UnthrownException.h"
#include "Velmar/Lattix/Model.h"
#include "core/records.h"
#include "core/textutil.h"
#include "operators/catalogue.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix {

using quarn::plugin::PluginTypeInfo;
namespace fs = std::filesystem;

namespace {

constexpr const wchar_t* userNamespace = L"User";
constexpr const wchar_t* userCategory = L"User Operators";

struct changedCallbackEntry {
    std::wstring name;
    OperatorFactory::ChangedCallback fn;
};

struct userOperator {
    std::wstring path;
    std::shared_ptr<PluginTypeInfo> info;
};

struct operatorFactoryRecord {
    std::mutex lock;
    // Definitions never change once registered (Register replaces them whole), so operators
    // made from them share them instead of copying.
    std::map<ObjectName, std::shared_ptr<const preparedDefinition>> builtIns;
    std::map<ObjectName, std::shared_ptr<PluginTypeInfo>> builtInInfos;
    std::map<ObjectName, userOperator> userOperators;
    std::wstring folderOverride;
    OperatorFactory::UserOperatorLoader loader;
    std::wstring signature;
    bool scanned = false;
    std::vector<std::shared_ptr<changedCallbackEntry>> callbacks;
    // Serialises folder scans; never held while callbacks run.
    std::mutex scanLock;
};

std::shared_ptr<PluginTypeInfo> InfoOf(const OperatorDefinition& definition) {
    auto info = std::make_shared<PluginTypeInfo>(L"Operator");
    info->SetProperty(L"Namespace", definition.name.GetNamespace());
    info->SetProperty(L"ObjectName", definition.name.GetName());
    info->SetProperty(L"DisplayName", definition.displayName.empty() ? definition.name.GetName()
                                                                     : definition.displayName);
    info->SetProperty(L"DisplayCategory", definition.displayCategory);
    info->SetProperty(L"Description", definition.description);
    info->SetProperty(L"Keywords", detail::Join(definition.keywords, L", "));
    info->SetProperty(L"IsUsableInExpression", definition.usableInExpression ? L"true" : L"false");
    info->SetProperty(L"Icon", definition.icon);
    info->SetProperty(L"ColorCategory", definition.colorCategory);
    info->SetProperty(L"uri", L"");
    info->SetProperty(L"OriginalNamespace", definition.name.GetNamespace());
    info->SetProperty(L"OriginalName", definition.name.GetName());
    info->SetProperty(L"Syntax", detail::Join(definition.syntaxForms, L"\n"));
    return info;
}

operatorFactoryRecord& Registry() {
    static operatorFactoryRecord registry;
    static std::once_flag once;
    std::call_once(once, [] {
        for (auto& definition : detail::BuiltInOperators()) {
            registry.builtInInfos[definition.name] = InfoOf(definition);
            auto name = definition.name;
            registry.builtIns[name] = preparedDefinition::Prepare(std::move(definition));
        }
    });
    return registry;
}

// Read on every query (the environment may change), so kept to plain string work: it runs for
// every operator made outside a held rescan.
std::wstring DefaultUserFolder() {
    std::string base;
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data)
        base = data;
    else if (const char* home = std::getenv("HOME"); home && *home)
        base = std::string(home) + "/.local/share";
    else
        base = fs::temp_directory_path().string();
    if (base.empty() || base.back() != '/') base += '/';
    return qtxt::widen(base + "lattix/operators");
}

std::wstring FileUri(const std::wstring& path) {
    // Percent-encode what a URI path cannot hold as is; UTF-8 bytes beyond ASCII as well.
    std::string utf8 = qtxt::narrow(path);
    std::string encoded;
    const char* hex = "0123456789ABCDEF";
    for (unsigned char c : utf8) {
        if (std::isalnum(c) || std::string_view("/-._~!$&'()*+,;=:@").find(static_cast<char>(c)) !=
                                   std::string_view::npos) {
            encoded.push_back(static_cast<char>(c));
        } else {
            encoded.push_back('%');
            encoded.push_back(hex[c >> 4]);
            encoded.push_back(hex[c & 15]);
        }
    }
    return qtxt::widen("file://" + encoded);
}

bool IsModelFile(const fs::path& path) {
    auto extension = detail::Lower(qtxt::widen(path.extension().string()));
    return extension == L".gmdx" || extension == L".gmdc";
}

// The model files of the folder with their sizes and times, one per line, sorted.
std::wstring ListingSignature(const std::wstring& folder, std::vector<fs::path>& files) {
    std::error_code error;
    std::vector<std::wstring> lines;
    fs::directory_iterator it(fs::path(qtxt::narrow(folder)), error);
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const auto& entry = *it;
        std::error_code entryError;
        if (!entry.is_regular_file(entryError) || !IsModelFile(entry.path())) continue;
        auto size = entry.file_size(entryError);
        auto time = entry.last_write_time(entryError).time_since_epoch().count();
        files.push_back(entry.path());
        lines.push_back(qtxt::widen(entry.path().string()) + L"|" + std::to_wstring(size) + L"|" +
                        std::to_wstring(time));
    }
    std::sort(lines.begin(), lines.end());
    std::sort(files.begin(), files.end());
    return detail::Join(lines, L"\n");
}

std::shared_ptr<PluginTypeInfo> UserInfoOf(const Model& model, const std::wstring& stem,
                                           const std::wstring& path) {
    auto info = std::make_shared<PluginTypeInfo>(L"Operator");
    info->SetProperty(L"Namespace", userNamespace);
    info->SetProperty(L"ObjectName", stem);
    auto display = model.GetDisplayName();
    info->SetProperty(L"DisplayName",
                      display.empty() || display == model.GetOperatorName() ? stem : display);
    auto category = model.GetDisplayCategory();
    info->SetProperty(L"DisplayCategory",
                      category.empty() || category == L"Model" ? userCategory : category);
    info->SetProperty(L"Description", model.GetDescription());
    info->SetProperty(L"Keywords", detail::Join(model.GetKeywords(), L", "));
    info->SetProperty(L"IsUsableInExpression", L"false");
    info->SetProperty(L"Icon", model.GetIcon());
    info->SetProperty(L"ColorCategory", L"SubModel");
    info->SetProperty(L"uri", FileUri(path));
    info->SetProperty(L"OriginalNamespace", model.GetOperatorNamespace());
    info->SetProperty(L"OriginalName", model.GetOperatorName());
    info->SetProperty(L"Syntax", L"");
    return info;
}

void RunCallbacks(operatorFactoryRecord& registry) {
    std::vector<std::shared_ptr<changedCallbackEntry>> callbacks;
    {
        std::lock_guard guard(registry.lock);
        callbacks = registry.callbacks;
    }
    for (const auto& entry : callbacks) {
        {
            // Skip callbacks unregistered by an earlier one in this round.
            std::lock_guard guard(registry.lock);
            if (std::find(registry.callbacks.begin(), registry.callbacks.end(), entry) ==
                registry.callbacks.end())
                continue;
        }
        entry->fn();
    }
}

struct factoryCallbackToken {
    std::weak_ptr<changedCallbackEntry> entry;
    ~factoryCallbackToken() {
        auto live = entry.lock();
        if (!live) return;
        auto& registry = Registry();
        std::lock_guard guard(registry.lock);
        auto& callbacks = registry.callbacks;
        callbacks.erase(std::remove(callbacks.begin(), callbacks.end(), live), callbacks.end());
    }
};

std::wstring FoldProperties(const std::map<ObjectName, userOperator>& operators) {
    std::wstring text;
    for (const auto& [name, op] : operators) {
        text += name.GetFullName() + L"\n";
        for (const auto& [key, value] : op.info->GetProperties())
            text += key + L"=" + value + L"\n";
    }
    return text;
}

// Scans held on this thread: by HoldRescan tokens, and by a scan calling the loader (which makes
// operators itself and must neither scan again nor wait for its own scan).
thread_local int rescanHeld = 0;

}  // namespace

std::shared_ptr<void> OperatorFactory::HoldRescan() {
    Rescan();
    ++rescanHeld;
    return std::shared_ptr<void>(nullptr, [](void*) { --rescanHeld; });
}

bool OperatorFactory::Rescan() {
    if (rescanHeld > 0) return false;
    auto& registry = Registry();
    std::unique_lock scan(registry.scanLock);
    std::wstring folder;
    UserOperatorLoader loader;
    std::wstring previous;
    bool scanned = false;
    {
        std::lock_guard guard(registry.lock);
        folder = registry.folderOverride.empty() ? DefaultUserFolder() : registry.folderOverride;
        loader = registry.loader;
        previous = registry.signature;
        scanned = registry.scanned;
    }
    std::vector<fs::path> files;
    auto signature = ListingSignature(folder, files);
    if (scanned && signature == previous) return false;

    std::map<ObjectName, userOperator> found;
    if (loader) {
        ++rescanHeld;
        std::shared_ptr<void> release(nullptr, [](void*) { --rescanHeld; });
        for (const auto& file : files) {
            auto path = qtxt::widen(file.string());
            auto stem = qtxt::widen(file.stem().string());
            try {
                auto model = loader(path);
                if (!model) continue;
                ObjectName name(userNamespace, stem);
                if (found.count(name)) {
                    QuarnLog::UnthrownException warning(
                        __PRETTY_FUNCTION__, __FILE__,
                        L"User operator " + path + L" has the name of another one and is skipped.");
                    continue;
                }
                found[name] = userOperator{path, UserInfoOf(*model, stem, path)};
            } catch (const std::exception& error) {
                QuarnLog::UnthrownException skipped(
                    __PRETTY_FUNCTION__, __FILE__,
                    L"User operator " + path + L" cannot be read and is skipped.");
                skipped.AddMessage(std::string(error.what()));
            }
        }
    } else if (!files.empty()) {
        QuarnLog::Write(QuarnLog::Level::Debug, __PRETTY_FUNCTION__, __FILE__,
                        L"No model reader installed: the user operators in " + folder +
                            L" are not listed yet.");
    }

    bool changed = false;
    {
        std::lock_guard guard(registry.lock);
        changed = FoldProperties(registry.userOperators) != FoldProperties(found);
        registry.userOperators = std::move(found);
        registry.signature = signature;
        registry.scanned = true;
    }
    scan.unlock();
    if (changed) RunCallbacks(registry);
    return changed;
}

std::shared_ptr<Operator> OperatorFactory::TryCreate(const ObjectName& name) {
    auto& registry = Registry();
    Rescan();
    std::shared_ptr<const preparedDefinition> definition;
    userOperator user;
    UserOperatorLoader loader;
    bool builtIn = false;
    {
        std::lock_guard guard(registry.lock);
        if (auto found = registry.builtIns.find(name); found != registry.builtIns.end()) {
            definition = found->second;
            builtIn = true;
        } else if (auto userFound = registry.userOperators.find(name);
                   userFound != registry.userOperators.end()) {
            user = userFound->second;
            loader = registry.loader;
        } else {
            return nullptr;
        }
    }
    if (builtIn) return LinkAccess::Instantiate(definition);
    if (!loader) return nullptr;
    auto model = loader(user.path);
    if (!model) QUARN_THROW(L"The user operator file " + user.path + L" gave no model.");
    model->SetOperatorName(name);
    model->SetUri(user.info->GetProperty(L"uri"));
    return model;
}

std::shared_ptr<Operator> LinkAccess::Instantiate(
    const std::shared_ptr<const preparedDefinition>& definition) {
    auto op = definition->definition.make ? definition->definition.make()
                                          : std::make_shared<Operator>();
    ApplySharedDefinition(*op, definition);
    return op;
}

std::shared_ptr<const preparedDefinition> LinkAccess::FindBuiltIn(const ObjectName& name) {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    auto found = registry.builtIns.find(name);
    return found == registry.builtIns.end() ? nullptr : found->second;
}

std::shared_ptr<Operator> OperatorFactory::Create(const ObjectName& name) {
    auto op = TryCreate(name);
    if (!op) QUARN_THROW(L"Unknown operator \"" + name.GetFullName() + L"\".");
    return op;
}

std::shared_ptr<Operator> OperatorFactory::Create(const std::wstring& nameSpace,
                                                  const std::wstring& name) {
    return Create(ObjectName(nameSpace, name));
}

bool OperatorFactory::IsKnown(const ObjectName& name) {
    auto& registry = Registry();
    Rescan();
    std::lock_guard guard(registry.lock);
    return registry.builtIns.count(name) > 0 || registry.userOperators.count(name) > 0;
}

std::vector<std::shared_ptr<PluginTypeInfo>> OperatorFactory::GetAllPluginTypeInfos() {
    auto& registry = Registry();
    Rescan();
    std::map<std::wstring, std::shared_ptr<PluginTypeInfo>> byName;
    {
        std::lock_guard guard(registry.lock);
        for (const auto& [name, info] : registry.builtInInfos)
            byName[name.GetFullName()] = info->Clone();
        for (const auto& [name, user] : registry.userOperators)
            byName[name.GetFullName()] = user.info->Clone();
    }
    std::vector<std::shared_ptr<PluginTypeInfo>> result;
    for (auto& [name, info] : byName) result.push_back(info);
    return result;
}

std::shared_ptr<PluginTypeInfo> OperatorFactory::GetPluginTypeInfo(const std::wstring& fullName) {
    ObjectName name;
    if (!ObjectName::TryParse(fullName, name)) return nullptr;
    auto& registry = Registry();
    Rescan();
    std::lock_guard guard(registry.lock);
    if (auto found = registry.builtInInfos.find(name); found != registry.builtInInfos.end())
        return found->second->Clone();
    if (auto found = registry.userOperators.find(name); found != registry.userOperators.end())
        return found->second.info->Clone();
    return nullptr;
}

namespace {
void Insert(std::vector<OperatorCategory>& level, const std::vector<std::wstring>& path,
            std::size_t depth, const std::shared_ptr<PluginTypeInfo>& info) {
    auto found = std::find_if(level.begin(), level.end(), [&](const OperatorCategory& category) {
        return category.name == path[depth];
    });
    if (found == level.end()) {
        level.push_back(OperatorCategory{path[depth], {}, {}});
        found = level.end() - 1;
    }
    if (depth + 1 == path.size())
        found->operators.push_back(info);
    else
        Insert(found->subCategories, path, depth + 1, info);
}

void SortTree(std::vector<OperatorCategory>& level, bool top) {
    const auto& order = detail::BuiltInCategoryOrder();
    auto rank = [&](const std::wstring& name) {
        if (!top) return order.size();
        auto found = std::find(order.begin(), order.end(), name);
        return static_cast<std::size_t>(found - order.begin());
    };
    std::stable_sort(level.begin(), level.end(),
                     [&](const OperatorCategory& a, const OperatorCategory& b) {
                         auto ra = rank(a.name);
                         auto rb = rank(b.name);
                         return ra != rb ? ra < rb : a.name < b.name;
                     });
    for (auto& category : level) {
        std::stable_sort(category.operators.begin(), category.operators.end(),
                         [](const auto& a, const auto& b) {
                             return a->GetProperty(L"DisplayName") < b->GetProperty(L"DisplayName");
                         });
        SortTree(category.subCategories, false);
    }
}
}  // namespace

std::vector<OperatorCategory> OperatorFactory::GetCategories() {
    std::vector<OperatorCategory> tree;
    for (const auto& info : GetAllPluginTypeInfos()) {
        auto path = detail::SplitTrimmed(info->GetProperty(L"DisplayCategory"), L'/');
        if (path.empty()) path.push_back(L"Other");
        Insert(tree, path, 0, info);
    }
    SortTree(tree, true);
    return tree;
}

bool OperatorFactory::IsExpressionFunction(const std::wstring& name) {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    for (const auto& [type, definition] : registry.builtIns) {
        if (!definition->definition.usableInExpression) continue;
        if (type.GetName() == name || type.GetFullName() == name) return true;
    }
    return false;
}

std::shared_ptr<void> OperatorFactory::RegisterFactoryChangedCallback(const std::wstring& name,
                                                                      ChangedCallback fn) {
    if (!fn) QUARN_THROW(L"The factory-changed callback \"" + name + L"\" is empty.");
    auto& registry = Registry();
    auto entry = std::make_shared<changedCallbackEntry>(changedCallbackEntry{name, std::move(fn)});
    {
        std::lock_guard guard(registry.lock);
        registry.callbacks.push_back(entry);
    }
    return std::make_shared<factoryCallbackToken>(std::weak_ptr<changedCallbackEntry>(entry));
}

void OperatorFactory::UnregisterFactoryChangedCallback(const std::wstring& name) {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    auto& callbacks = registry.callbacks;
    callbacks.erase(std::remove_if(callbacks.begin(), callbacks.end(),
                                   [&](const auto& entry) { return entry->name == name; }),
                    callbacks.end());
}

void OperatorFactory::Register(const OperatorDefinition& definition) {
    if (definition.name.GetNamespace().empty() || definition.name.GetName().empty())
        QUARN_THROW(L"An operator type needs a namespace and a name (got \"" +
                    definition.name.GetFullName() + L"\").");
    auto& registry = Registry();
    // Prepared outside the lock: reading the defaults may raise.
    auto prepared = preparedDefinition::Prepare(definition);
    {
        std::lock_guard guard(registry.lock);
        registry.builtIns[definition.name] = std::move(prepared);
        registry.builtInInfos[definition.name] = InfoOf(definition);
    }
    RunCallbacks(registry);
}

bool OperatorFactory::Unregister(const ObjectName& name) {
    auto& registry = Registry();
    {
        std::lock_guard guard(registry.lock);
        if (registry.builtIns.erase(name) == 0) return false;
        registry.builtInInfos.erase(name);
    }
    RunCallbacks(registry);
    return true;
}

std::wstring OperatorFactory::GetUserOperatorFolder() {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    return registry.folderOverride.empty() ? DefaultUserFolder() : registry.folderOverride;
}

void OperatorFactory::SetUserOperatorFolder(const std::wstring& folder) {
    auto& registry = Registry();
    {
        std::lock_guard guard(registry.lock);
        registry.folderOverride = folder;
        registry.scanned = false;
    }
}

OperatorFactory::UserOperatorLoader OperatorFactory::GetUserOperatorLoader() {
    auto& registry = Registry();
    std::lock_guard guard(registry.lock);
    return registry.loader;
}

void OperatorFactory::SetUserOperatorLoader(UserOperatorLoader loader) {
    auto& registry = Registry();
    {
        std::lock_guard guard(registry.lock);
        registry.loader = std::move(loader);
        registry.scanned = false;
    }
}

}  // namespace Velmar::Lattix
