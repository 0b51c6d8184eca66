#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/PortDirection.h"

namespace Velmar::Lattix {

class Operator;
class PortConnection;
struct portRecord;
struct LinkAccess;

// A named, typed input or output of an operator (or of a model, whose ports alias ports of the
// operators inside it). A port holds its value, an optional default, flags, the data types it
// supports, free attributes and per-type data attributes. It refers to its operator weakly.
// Ports are made by their operator (Operator::AddPort, GetOrCreatePort, Model::AddNewPort) or
// stand alone through Create; they are used on one thread at a time.
class Port : public std::enable_shared_from_this<Port> {
public:
    using AttributeMap = std::map<std::wstring, std::shared_ptr<Data>>;
    // Data type full name -> attribute name -> value.
    using DataTypeAttributeMapMap = std::map<std::wstring, AttributeMap>;

    // A port that belongs to no operator (yet).
    static std::shared_ptr<Port> Create(const std::wstring& name, PortDirection direction);
    // Use Create or the operator's port calls; a port must be held by a shared pointer.
    Port(std::wstring name, PortDirection direction);
    // For the engine: a port over a record it has made, which must get its shape before the port
    // is used (the record type is not public).
    explicit Port(std::shared_ptr<portRecord> record);
    ~Port();
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    // Identity and description.
    std::wstring GetName() const;
    // The display name, or the name when none was set.
    std::wstring GetDisplayName() const;
    void SetDisplayName(const std::wstring& displayName);
    std::wstring GetDescription() const;
    void SetDescription(const std::wstring& description);
    std::vector<std::wstring> GetKeywords() const;
    void SetKeywords(const std::vector<std::wstring>& keywords);

    // Flags.
    PortDirection GetDirection() const;
    bool IsInput() const;
    bool IsOutput() const;
    bool IsOptional() const;
    void SetOptional(bool optional);
    bool IsHidden() const;
    // Hides or shows the port. A port connected to another port cannot be hidden: answers false
    // and stays visible. Showing always succeeds.
    bool SetIsHidden(const bool& hidden);
    // Private ports are internal to their operator and never shown.
    bool IsPrivate() const;
    void SetPrivate(bool isPrivate);
    // Native ports are created by the operator itself (not added by the user).
    bool IsNative() const;
    void SetNative(bool native);

    // Data types. The effective list is the supported types plus the extra-supported ones, minus
    // the excluded ones, in that order without repeats. A port whose effective list is empty or
    // holds the generic type "TAMARIN.Data" accepts every type that is not excluded.
    std::vector<ObjectName> GetSupportedDataTypes() const;
    std::vector<ObjectName> GetDeclaredSupportedTypes() const;
    void SetSupportedTypes(const std::vector<ObjectName>& types);
    void AddSupportedType(const ObjectName& type);
    void ClearSupportedTypes();
    std::vector<ObjectName> GetExtraSupportedTypes() const;
    void AddExtraSupportedType(const ObjectName& type);
    void ClearExtraSupportedTypes();
    std::vector<ObjectName> GetExcludedTypes() const;
    void AddExcludedType(const ObjectName& type);
    void ClearExcludedTypes();
    bool SupportsType(const ObjectName& type) const;

    // Data. GetExistingData answers the port's own value, or (withDefault) its default when it
    // has none; null when there is neither.
    std::shared_ptr<Data> GetExistingData(bool withDefault = true) const;
    std::shared_ptr<Data> GetData() const;
    std::shared_ptr<Data> GetDefaultData() const;
    bool HasData() const;
    // Stores data (null clears the value). The type must be supported and the operator must accept
    // the value (an expression port checks its text); otherwise QuarnLog::Exception is raised
    // naming the port, and the value is unchanged. The port keeps the object itself.
    void SetData(const std::shared_ptr<Data>& data);
    void ClearData();
    // The default is checked against the supported types like SetData.
    void SetDefaultData(const std::shared_ptr<Data>& data);
    // Reads text as each effective supported type in turn (for a port accepting every type: Int,
    // Double, Bool, then String) and stores the first value that reads; true when one did. An
    // empty text clears the value and answers true. A text that a type reads but the operator
    // refuses raises the operator's error.
    bool SetDataFromString(const std::wstring& text);

    // Attributes. The map also shows the keywords ("Keywords") and the extra and excluded types
    // ("AdditionalTypes", "ExcludedTypes") as string lists; setting those names goes to the
    // dedicated calls. A null value is stored as an attribute without value.
    AttributeMap GetAttributeMap() const;
    std::shared_ptr<Data> GetAttribute(const std::wstring& name) const;
    bool HasAttribute(const std::wstring& name) const;
    void SetAttribute(const std::wstring& name, const std::shared_ptr<Data>& value);
    bool RemoveAttribute(const std::wstring& name);

    // Data attributes, per data type: the port's own, the ones it inherits from the ports it
    // aliases, and for one type both merged (own values win).
    DataTypeAttributeMapMap GetDataTypeAttributeMapMap() const;
    DataTypeAttributeMapMap GetDataTypeAttributeMapMapInherited() const;
    AttributeMap GetDataTypeAttributeMap(const ObjectName& type) const;
    void SetDataTypeAttribute(const ObjectName& type, const std::wstring& name,
                              const std::shared_ptr<Data>& value);
    bool RemoveDataTypeAttribute(const ObjectName& type, const std::wstring& name);

    // Owner and links.
    std::shared_ptr<Operator> TryGetOperator() const;
    // True when the port has a data connection or takes part in an alias.
    bool IsConnected() const;
    // Connections at this port: those feeding it, then those it feeds.
    std::vector<std::shared_ptr<PortConnection>> GetConnections() const;
    // True when every connection of the port is an alias link with a model port (also when it has
    // none): nothing else feeds or reads it.
    bool AreAllConnectionInnerAliases() const;

    // Aliasing: a model port stands for ports of operators inside the model (its inner aliased
    // ports); each such port knows the model port that aliases it.
    std::vector<std::shared_ptr<Port>> GetInnerAliasedPorts() const;
    bool RemoveInnerAliasedPort(const std::shared_ptr<Port>& innerPort);
    std::shared_ptr<Port> GetAliasingPort() const;

    // Copies everything but the name, the owner and the links: direction, flags (hidden only while
    // unlinked), description, keywords, types, values (cloned), attributes and data attributes.
    void CopyContentsFrom(const Port& other);

private:
    friend struct LinkAccess;
    std::shared_ptr<portRecord> portData;
};

}  // namespace Velmar::Lattix
