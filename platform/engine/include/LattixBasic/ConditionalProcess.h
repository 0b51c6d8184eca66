#pragma once

#include <memory>
#include <vector>

#include "Velmar/Lattix/Model.h"

namespace LattixBasic {

struct conditionalProcessRecord;

// An operator that runs a body when a boolean test holds ("TAMARIN.Conditional"). The body is a
// list of operators of the same model hung under it; the test is an operator with the boolean
// output port it reads. Both are referred to weakly. Being a model, it may also contain operators
// of its own.
class ConditionalProcess : public Velmar::Lattix::Model {
public:
    ConditionalProcess();
    ConditionalProcess(std::wstring nameSpace, std::wstring name);
    ~ConditionalProcess() override;

    // Adds op to the body (false when it is there already); op must not be this operator.
    bool AddBodyOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op);
    bool RemoveBodyOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op);
    std::vector<std::shared_ptr<Velmar::Lattix::Operator>> GetBody() const;

    // The test: op's port (an output port of op; null port: op's first output). Raises
    // QuarnLog::Exception when the port is not op's.
    void SetTest(const std::shared_ptr<Velmar::Lattix::Operator>& op,
                 const std::shared_ptr<Velmar::Lattix::Port>& port);
    // Answers false when there was no test.
    bool ClearTest();
    std::shared_ptr<Velmar::Lattix::Operator> GetTestOperator() const;
    std::shared_ptr<Velmar::Lattix::Port> GetTestPort() const;

    // Forgets any link (body, test and, in subclasses, tails) to op; false when there was none.
    virtual bool ForgetOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op);

private:
    std::shared_ptr<conditionalProcessRecord> conditionalProcessData;
};

}  // namespace LattixBasic
