#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Operator.h"

namespace Velmar::Lattix {

class ListData;
struct modelRecord;

// A model: an operator that contains operators (and sub-models) and has model ports that alias
// ports of the operators inside it. The model owns its operators; they refer to it weakly.
//
// Connection notifications. The editor tells the model before it links an operator and after it
// unlinks one:
//  - NotifyOperatorConnecting(op), before a flow or operator-to-operator data link is made: op
//    must be in this model (else QuarnLog::Exception, so that nothing links across models); the
//    operator's results and the model's are invalidated.
//  - NotifyOperatorUnconnected(op), after a removal when IsOperatorConnected(op) turned false: the
//    information messages the operator carried about its links are cleared and its results
//    invalidated. Answers whether op really is unconnected (a call for a linked operator changes
//    nothing).
//  - NotifyOperatorAttached(owner, op, testPort), when op is hung under a conditional, if or loop
//    operator (body, branch or test): both must be in this model (else QuarnLog::Exception), and
//    owner must be a conditional operator; when testPort is given it must be a port of op. Both
//    operators' results are invalidated. The body, branch or test itself is then set on the owner
//    (ConditionalProcess::AddBodyOperator, SetTest; IfProcess::AddIfTail, AddElseTail); such a
//    link counts as a connection for IsOperatorConnected.
class Model : public Operator {
public:
    // An empty model, type "TAMARIN.Model". Hold it by shared pointer (std::make_shared).
    Model();
    Model(std::wstring nameSpace, std::wstring name);
    ~Model() override;

    // Operators and sub-models, in the order they were added.
    std::vector<std::shared_ptr<Operator>> GetOperators() const;
    std::vector<std::shared_ptr<Model>> GetSubModels() const;
    // Adds op and makes this model its process. op must not be in another model, nor be this model
    // or a model above it; otherwise QuarnLog::Exception.
    void AddOperator(const std::shared_ptr<Operator>& op);
    void AddSubModel(const std::shared_ptr<Model>& subModel);
    // Removes op with all its links (data, alias, flow, branches, bodies and tests); the model
    // ports it fed stay, without inner port. False when op is not in this model.
    bool RemoveOperator(const std::shared_ptr<Operator>& op);
    bool ContainsOperator(const std::shared_ptr<Operator>& op) const;
    // The operators whose display name (else operator name) is name, in model order.
    std::vector<std::shared_ptr<Operator>> FindOperators(const std::wstring& name) const;

    // Model ports. AddNewPort makes a model port with no inner port.
    std::shared_ptr<Port> AddNewPort(const std::wstring& name, PortDirection direction);
    // Aliases innerPort (a port of an operator in this model) under the model port called name,
    // making that port (same direction, the inner port's types) when missing. Several inner input
    // ports may share one model input; an output model port aliases one port. Raises
    // QuarnLog::Exception for a port outside the model, a port already aliased by another model
    // port, or a model port of the other direction. Answers the model port.
    std::shared_ptr<Port> AliasPort(const std::shared_ptr<Port>& innerPort,
                                    const std::wstring& name);
    // Links an existing model port of this model with innerPort (the alias of AliasPort, made
    // under the model port's name) and answers that alias link. modelPort must be one of this
    // model's ports; otherwise as AliasPort.
    std::shared_ptr<PortConnection> ConnectPort(const std::shared_ptr<Port>& modelPort,
                                                const std::shared_ptr<Port>& innerPort);
    // The model port that aliases innerPort, or null.
    std::shared_ptr<Port> GetAliasedPort(const std::shared_ptr<Port>& innerPort) const;
    // The open input ports: the model's own input ports that are not private, then every input
    // port of its operators that is not private, has no data link and is not aliased.
    std::vector<std::shared_ptr<Port>> GetInputPorts() const override;

    // Connection notifications (see the class comment).
    bool IsOperatorConnected(const std::shared_ptr<Operator>& op) const;
    virtual void NotifyOperatorConnecting(const std::shared_ptr<Operator>& op);
    virtual bool NotifyOperatorUnconnected(const std::shared_ptr<Operator>& op);
    virtual void NotifyOperatorAttached(const std::shared_ptr<Operator>& owner,
                                        const std::shared_ptr<Operator>& op,
                                        const std::shared_ptr<Port>& testPort);

    // Editing state.
    bool IsReadonly() const;
    void SetReadonly(bool readonly);
    bool IsLocked() const;
    void SetLocked(bool locked);
    // The name under which the model is run ("" when unset).
    std::wstring GetProcessName() const;
    void SetProcessName(const std::wstring& name);

    // Whether the model may be written in the plain model format; a model read from the encrypted
    // format is forbidden to (and so is every copy a format makes of it).
    bool CanSaveInPlainFormat() const;
    void SetPlainFormatForbidden(bool forbidden);

    // Sets port values from "Operator.Port=value" texts, in order (docs/engine.md has the syntax).
    // A bad entry raises QuarnLog::Exception quoting it; entries before it stay applied.
    void SetPortValues(const std::vector<std::wstring>& portValues);

    // The text annotations: the "Text" attribute, a list of dictionaries (made when missing).
    std::shared_ptr<ListData> GetTextAnnotations();

private:
    friend struct LinkAccess;
    std::shared_ptr<modelRecord> modelData;
};

}  // namespace Velmar::Lattix
