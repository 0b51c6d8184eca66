// The flow-control operators: conditional, if/else and loop.
#include <algorithm>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "LattixBasic/LoopProcess.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/OperatorDefinition.h"
#include "Velmar/Lattix/Port.h"

namespace LattixBasic {

using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;

namespace {
using OperatorList = std::vector<std::weak_ptr<Operator>>;

std::vector<std::shared_ptr<Operator>> Live(const OperatorList& list) {
    std::vector<std::shared_ptr<Operator>> result;
    for (const auto& link : list)
        if (auto live = link.lock()) result.push_back(live);
    return result;
}

bool Contains(const OperatorList& list, const std::shared_ptr<Operator>& op) {
    return std::any_of(list.begin(), list.end(),
                       [&](const std::weak_ptr<Operator>& link) { return link.lock() == op; });
}

void Erase(OperatorList& list, const std::shared_ptr<Operator>& op) {
    list.erase(std::remove_if(list.begin(), list.end(),
                              [&](const std::weak_ptr<Operator>& link) {
                                  auto live = link.lock();
                                  return !live || live == op;
                              }),
               list.end());
}
}  // namespace

struct conditionalProcessRecord {
    OperatorList body;
    std::weak_ptr<Operator> testOperator;
    std::weak_ptr<Port> testPort;
};

ConditionalProcess::ConditionalProcess() : ConditionalProcess(L"TAMARIN", L"Conditional") {}

ConditionalProcess::ConditionalProcess(std::wstring nameSpace, std::wstring name)
    : Model(std::move(nameSpace), std::move(name)),
      conditionalProcessData(std::make_shared<conditionalProcessRecord>()) {
    SetDisplayCategory(L"Conditional");
    SetColorCategory(L"Default");
}

ConditionalProcess::~ConditionalProcess() = default;

bool ConditionalProcess::AddBodyOperator(const std::shared_ptr<Operator>& op) {
    if (!op || op.get() == this)
        QUARN_THROW(L"Operator \"" + GetDisplayName() +
                    L"\" cannot take itself or nothing as its body.");
    if (Contains(conditionalProcessData->body, op)) return false;
    conditionalProcessData->body.push_back(op);
    return true;
}

bool ConditionalProcess::RemoveBodyOperator(const std::shared_ptr<Operator>& op) {
    bool had = op && Contains(conditionalProcessData->body, op);
    Erase(conditionalProcessData->body, op);
    return had;
}

std::vector<std::shared_ptr<Operator>> ConditionalProcess::GetBody() const {
    return Live(conditionalProcessData->body);
}

void ConditionalProcess::SetTest(const std::shared_ptr<Operator>& op,
                                 const std::shared_ptr<Port>& port) {
    if (!op || op.get() == this)
        QUARN_THROW(L"Operator \"" + GetDisplayName() + L"\" needs another operator as its test.");
    auto testPort = port;
    if (!testPort) {
        auto outputs = op->GetOutputPorts();
        if (!outputs.empty()) testPort = outputs.front();
    }
    if (testPort && testPort->TryGetOperator() != op)
        QUARN_THROW(L"Port \"" + testPort->GetName() + L"\" is not a port of operator \"" +
                    op->GetDisplayName() + L"\".");
    conditionalProcessData->testOperator = op;
    conditionalProcessData->testPort = testPort;
}

bool ConditionalProcess::ClearTest() {
    bool had = conditionalProcessData->testOperator.lock() != nullptr;
    conditionalProcessData->testOperator.reset();
    conditionalProcessData->testPort.reset();
    return had;
}

std::shared_ptr<Operator> ConditionalProcess::GetTestOperator() const {
    return conditionalProcessData->testOperator.lock();
}
std::shared_ptr<Port> ConditionalProcess::GetTestPort() const {
    return GetTestOperator() ? conditionalProcessData->testPort.lock() : nullptr;
}

bool ConditionalProcess::ForgetOperator(const std::shared_ptr<Operator>& op) {
    bool changed = RemoveBodyOperator(op);
    if (op && GetTestOperator() == op) changed = ClearTest() || changed;
    return changed;
}

// ---- if

struct ifProcessRecord {
    OperatorList trueTails;
    OperatorList falseTails;
};

IfProcess::IfProcess()
    : ConditionalProcess(L"TAMARIN", L"If"), ifProcessData(std::make_shared<ifProcessRecord>()) {}

IfProcess::~IfProcess() = default;

namespace {
bool AddTail(const Operator& self, OperatorList& branch, OperatorList& other,
             const std::shared_ptr<Operator>& op) {
    if (!op || op.get() == &self)
        QUARN_THROW(L"Operator \"" + self.GetDisplayName() +
                    L"\" cannot take itself or nothing as a branch.");
    Erase(other, op);
    if (Contains(branch, op)) return false;
    branch.push_back(op);
    return true;
}
}  // namespace

bool IfProcess::AddIfTail(const std::shared_ptr<Operator>& op) {
    return AddTail(*this, ifProcessData->trueTails, ifProcessData->falseTails, op);
}
bool IfProcess::AddElseTail(const std::shared_ptr<Operator>& op) {
    return AddTail(*this, ifProcessData->falseTails, ifProcessData->trueTails, op);
}

bool IfProcess::RemoveTail(const std::shared_ptr<Operator>& op) {
    if (!op) return false;
    bool had = Contains(ifProcessData->trueTails, op) || Contains(ifProcessData->falseTails, op);
    Erase(ifProcessData->trueTails, op);
    Erase(ifProcessData->falseTails, op);
    return had;
}

std::vector<std::shared_ptr<Operator>> IfProcess::GetIfTails(bool branch) const {
    return Live(branch ? ifProcessData->trueTails : ifProcessData->falseTails);
}

void IfProcess::GetIfTails(std::vector<std::shared_ptr<Operator>>& trueTails,
                           std::vector<std::shared_ptr<Operator>>& falseTails) const {
    trueTails = GetIfTails(true);
    falseTails = GetIfTails(false);
}

bool IfProcess::ForgetOperator(const std::shared_ptr<Operator>& op) {
    bool changed = ConditionalProcess::ForgetOperator(op);
    return RemoveTail(op) || changed;
}

// ---- loop

LoopProcess::LoopProcess() : ConditionalProcess(L"TAMARIN", L"Loop") {
    SetDisplayCategory(L"FlowControl");
}
LoopProcess::~LoopProcess() = default;

}  // namespace LattixBasic
