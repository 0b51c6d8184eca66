#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/OperatorCategory.h"
#include "Velmar/Lattix/OperatorDefinition.h"
#include "quarn/plugin/PluginTypeInfo.h"

namespace Velmar::Lattix {

class Model;
class Operator;

// The process-wide registry of operator types: the built-in catalogue (registered on first use)
// and the operators that the user saved as model files in the user operator folder
// ($XDG_DATA_HOME/lattix/operators). User operators are listed under namespace "User" and the
// file's base name, with "uri" set to the file; they are read through the loader that the model
// format installs (SetUserOperatorLoader). The folder is looked at again on every query, and
// the factory-changed callbacks run (outside any lock) when its set of files changed.
// Safe to call from any thread.
class OperatorFactory {
public:
    using ChangedCallback = std::function<void()>;
    using UserOperatorLoader = std::function<std::shared_ptr<Model>(const std::wstring& path)>;

    // A new, initialized operator of the type; an unknown type raises QuarnLog::Exception naming
    // it.
    static std::shared_ptr<Operator> Create(const std::wstring& nameSpace,
                                            const std::wstring& name);
    static std::shared_ptr<Operator> Create(const ObjectName& name);
    // Like Create, but null for an unknown type.
    static std::shared_ptr<Operator> TryCreate(const ObjectName& name);
    static bool IsKnown(const ObjectName& name);

    // The category tree: the built-in categories in their fixed order, then the others by name.
    static std::vector<OperatorCategory> GetCategories();
    // A copy of the type information of a full name ("TAMARIN.Add"), or null.
    static std::shared_ptr<quarn::plugin::PluginTypeInfo> GetPluginTypeInfo(
        const std::wstring& fullName);
    // Copies of every type's information, ordered by full name.
    static std::vector<std::shared_ptr<quarn::plugin::PluginTypeInfo>> GetAllPluginTypeInfos();
    // Whether an operator of that name (case-insensitive "ObjectName") may be called in an
    // expression.
    static bool IsExpressionFunction(const std::wstring& name);

    // Runs fn whenever the set of operators changes. Answers a token: releasing its last copy
    // unregisters fn; UnregisterFactoryChangedCallback(name) unregisters every callback of name.
    static std::shared_ptr<void> RegisterFactoryChangedCallback(const std::wstring& name,
                                                                ChangedCallback fn);
    static void UnregisterFactoryChangedCallback(const std::wstring& name);

    // Adds or replaces a type (callbacks run). definition.name must be a valid name.
    static void Register(const OperatorDefinition& definition);
    // False when there was no such type.
    static bool Unregister(const ObjectName& name);

    // The user operator folder; SetUserOperatorFolder overrides it (empty: back to the default).
    // Both setters only mark the folder for reading again at the next query, so that a loader may
    // be installed while libraries are still being loaded.
    static std::wstring GetUserOperatorFolder();
    static void SetUserOperatorFolder(const std::wstring& folder);
    static void SetUserOperatorLoader(UserOperatorLoader loader);
    static UserOperatorLoader GetUserOperatorLoader();
    // Reads the user operator folder now; true when its set of operators changed (callbacks ran).
    static bool Rescan();
    // Reads the folder once; while the token lives, queries on this thread use that reading
    // instead of looking again (a model reader making many operators). Release it on this thread.
    static std::shared_ptr<void> HoldRescan();
};

}  // namespace Velmar::Lattix
