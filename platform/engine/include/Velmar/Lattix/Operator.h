#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/Issue.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/OperatorMessage.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"
#include "Velmar/Lattix/PortDefinition.h"
#include "Velmar/Lattix/PortDirection.h"

namespace Velmar::Lattix {

class Model;
class Port;
class PortConnection;
struct OperatorDefinition;
struct operatorRecord;
struct LinkAccess;

// A processing step of a model: a type (namespace and name) with its description, ports,
// attributes saved with the model, flow-control parents, data links, messages and execution
// state. Always held by shared pointer; it refers to its process (the model containing it)
// weakly, and its ports refer to it weakly. Editing happens on one thread; messages, progress and
// execution state may be set from any thread.
class Operator : public std::enable_shared_from_this<Operator> {
public:
    // Called for each message: the operator and port it is about (either may be null), the raw
    // text, the help key and the severity.
    using MessageCallback = std::function<void(
        const std::shared_ptr<Operator>& op, const std::shared_ptr<Port>& port,
        const std::wstring& text, const std::wstring& helpKey, Issue::Severity severity)>;

    Operator();
    Operator(std::wstring nameSpace, std::wstring name);
    virtual ~Operator();
    Operator(const Operator&) = delete;
    Operator& operator=(const Operator&) = delete;

    // Identity and description.
    std::wstring GetOperatorNamespace() const;
    std::wstring GetOperatorName() const;
    ObjectName GetObjectName() const;
    void SetOperatorName(const ObjectName& name);
    // The display name, or the operator name when none was set.
    std::wstring GetDisplayName() const;
    void SetDisplayName(const std::wstring& displayName);
    std::wstring GetDescription() const;
    void SetDescription(const std::wstring& description);
    std::wstring GetIcon() const;
    void SetIcon(const std::wstring& icon);
    std::wstring GetDisplayCategory() const;
    void SetDisplayCategory(const std::wstring& category);
    std::wstring GetColorCategory() const;
    void SetColorCategory(const std::wstring& category);
    std::vector<std::wstring> GetKeywords() const;
    void SetKeywords(const std::vector<std::wstring>& keywords);
    bool IsUsableInExpression() const;
    void SetUsableInExpression(bool usable);
    std::vector<std::wstring> GetSyntaxForms() const;
    void SetSyntaxForms(const std::vector<std::wstring>& forms);
    // The file an operator defined by the user was loaded from ("file:///..."); empty otherwise.
    std::wstring GetUri() const;
    void SetUri(const std::wstring& uri);

    // Takes identity, description and declared ports from a definition, then Initialize().
    void ApplyDefinition(const OperatorDefinition& definition);
    std::vector<PortDefinition> GetDeclaredPorts() const;
    // Creates the declared ports that are missing (with their flags, types and defaults); ports
    // that exist are left as they are, so calling it again changes nothing.
    virtual void Initialize();

    // Ports, in the order they were added.
    std::vector<std::shared_ptr<Port>> GetPorts() const;
    // The named port, or null.
    std::shared_ptr<Port> GetPort(const std::wstring& name) const;
    // The named port, made (as an input, or the given direction) when missing.
    std::shared_ptr<Port> GetOrCreatePort(const std::wstring& name,
                                          PortDirection direction = PortDirection::Input);
    // A new port; an existing name or an empty one raises QuarnLog::Exception.
    std::shared_ptr<Port> AddPort(const std::wstring& name, PortDirection direction);
    // Adds a port made elsewhere (it must belong to no operator, and its name must be free).
    void AdoptPort(const std::shared_ptr<Port>& port);
    // Removes the port and its links; false when there is no such port.
    bool RemovePort(const std::wstring& name);
    // Renames a port; false when there is no such port, raises when the new name is taken.
    bool RenamePort(const std::wstring& oldName, const std::wstring& newName);
    // The input ports that a user may give values: inputs that are not private. A model answers
    // its own input ports, then the open input ports of its operators (see Model).
    virtual std::vector<std::shared_ptr<Port>> GetInputPorts() const;
    std::vector<std::shared_ptr<Port>> GetOutputPorts() const;

    // Attributes saved with the model ("PositionX", "PositionY", "Orientation", "FlowControl",
    // "Text" and any other). A null value removes the attribute.
    void SetAttribute(const std::wstring& name, const std::shared_ptr<Data>& value);
    // The value itself (not a copy), or null.
    std::shared_ptr<Data> GetAttribute(const std::wstring& name) const;
    bool HasAttribute(const std::wstring& name) const;
    bool RemoveAttribute(const std::wstring& name);
    std::map<std::wstring, std::shared_ptr<Data>> GetAttributeMap() const;

    // The process (model) that contains the operator, or null; set by Model::AddOperator.
    std::shared_ptr<Model> GetProcess() const;
    void SetProcess(const std::shared_ptr<Model>& process);
    // The outermost model above the operator (a model without a process answers itself); null for
    // an operator in no model.
    std::shared_ptr<Model> GetMainProcess() const;

    // Flow control: the operators that must run before this one.
    // Adds parent (answers false when it was one already). parent must not be this operator.
    bool AddParent(const std::shared_ptr<Operator>& parent);
    bool IsParent(const std::shared_ptr<Operator>& parent) const;
    // Answers false when parent was not a parent.
    bool RemoveParent(const std::shared_ptr<Operator>& parent);
    // Live parents, in the order they were added.
    std::vector<std::shared_ptr<Operator>> GetParents() const;

    // Data links. ConnectParent feeds childPort of child from parentPort of parent, replacing any
    // link that fed childPort, and makes parent a flow parent of child. The ports must belong to
    // the operators and the operators must differ; otherwise QuarnLog::Exception. The link is made
    // even when the types do not fit: its status says so.
    static std::shared_ptr<PortConnection> ConnectParent(const std::shared_ptr<Operator>& child,
                                                         const std::shared_ptr<Operator>& parent,
                                                         const std::shared_ptr<Port>& parentPort,
                                                         const std::shared_ptr<Port>& childPort);
    // Removes the data link from parentPort of parent to childPort of this operator; false when
    // there was none. The flow parent link stays.
    bool DisconnectParent(const std::shared_ptr<Operator>& parent,
                          const std::shared_ptr<Port>& parentPort,
                          const std::shared_ptr<Port>& childPort);
    bool DisconnectParent(const std::shared_ptr<PortConnection>& connection);
    // Every link at the operator's ports (data and alias), feeding links first.
    std::vector<std::shared_ptr<PortConnection>> GetPortConnections() const;
    // The operators at the other end of the operator's data links (not alias links), each once.
    std::vector<std::shared_ptr<Operator>> GetConnectedOperators() const;
    // A data link from parent to this operator, or null.
    std::shared_ptr<PortConnection> FindParentConnection(
        const std::shared_ptr<Operator>& parent) const;

    // Messages. Each one is kept (HasError and friends) and reported to the message callbacks of
    // the operator and of every process above it. Callable from any thread.
    void SetInfoMessage(const std::wstring& text, const std::shared_ptr<Port>& port = nullptr,
                        const std::wstring& helpKey = {});
    void SetWarningMessage(const std::wstring& text, const std::shared_ptr<Port>& port = nullptr,
                           const std::wstring& helpKey = {});
    void SetErrorMessage(const std::wstring& text, const std::shared_ptr<Port>& port = nullptr,
                         const std::wstring& helpKey = {});
    void AddMessage(const std::shared_ptr<Port>& port, const std::wstring& text,
                    const std::wstring& helpKey, Issue::Severity severity);
    void ClearMessages();
    std::vector<OperatorMessage> GetMessages() const;
    bool HasError() const;
    bool HasWarning() const;
    bool HasInfo() const;
    // Registers fn for the messages of this operator and of every operator inside it. fn may be
    // called from any thread, never after the last copy of the token is released (releasing waits
    // for a call in progress on another thread). Releasing the token inside fn is allowed.
    std::shared_ptr<void> AddOnMessageCallback(MessageCallback fn);

    // Execution state (written by the runner, read by the canvas); callable from any thread.
    bool IsExecuted() const;
    void SetExecuted(bool executed);
    double GetProgress() const;
    double GetMinimumProgress() const;
    double GetMaximumProgress() const;
    void SetProgress(double progress);
    void SetProgressBounds(double minimum, double maximum);
    // Forgets results: not executed, progress back to the minimum, for this operator, the
    // operators fed by it and its processes.
    void InvalidateExecution();

protected:
    // Checks a value about to be stored on one of the operator's ports; raises QuarnLog::Exception
    // to refuse it. The default accepts everything.
    virtual void ValidatePortData(const Port& port, const std::shared_ptr<Data>& data);
    // Called after a port's value changed.
    virtual void OnPortDataChanged(const std::shared_ptr<Port>& port);
    // Delivers a message to this operator's callbacks and to its processes'.
    void DeliverMessage(const std::shared_ptr<Operator>& op, const std::shared_ptr<Port>& port,
                        const std::wstring& text, const std::wstring& helpKey,
                        Issue::Severity severity);

private:
    friend struct LinkAccess;
    std::shared_ptr<operatorRecord> operatorData;
};

}  // namespace Velmar::Lattix
