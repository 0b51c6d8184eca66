#pragma once

#include "LattixBasic/ConditionalProcess.h"

namespace LattixBasic {

// A loop ("TAMARIN.Loop"): runs its body again and again while its test holds, at most
// "MaxIterations" times (0: no limit); "Iteration" gives the body the running count.
class LoopProcess : public ConditionalProcess {
public:
    LoopProcess();
    ~LoopProcess() override;
};

}  // namespace LattixBasic
