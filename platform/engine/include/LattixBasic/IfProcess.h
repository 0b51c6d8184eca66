#pragma once

#include <memory>
#include <vector>

#include "LattixBasic/ConditionalProcess.h"

namespace LattixBasic {

struct ifProcessRecord;

// If/else ("TAMARIN.If"): reads its "Condition" port and runs its if tails when true, its else
// tails when false. Tails are operators of the same model, referred to weakly.
class IfProcess : public ConditionalProcess {
public:
    IfProcess();
    ~IfProcess() override;

    // Each adds op to its branch (false when it is there already); an operator is on one branch
    // at most, so it leaves the other one. op must not be this operator.
    bool AddIfTail(const std::shared_ptr<Velmar::Lattix::Operator>& op);
    bool AddElseTail(const std::shared_ptr<Velmar::Lattix::Operator>& op);
    // Takes op off whichever branch holds it; false when none did.
    bool RemoveTail(const std::shared_ptr<Velmar::Lattix::Operator>& op);
    // The tails of the true (branch true) or the false branch, in the order added.
    std::vector<std::shared_ptr<Velmar::Lattix::Operator>> GetIfTails(bool branch) const;
    // Both branches at once.
    void GetIfTails(std::vector<std::shared_ptr<Velmar::Lattix::Operator>>& trueTails,
                    std::vector<std::shared_ptr<Velmar::Lattix::Operator>>& falseTails) const;

    bool ForgetOperator(const std::shared_ptr<Velmar::Lattix::Operator>& op) override;

private:
    std::shared_ptr<ifProcessRecord> ifProcessData;
};

}  // namespace LattixBasic
