#pragma once

// A control whose host operations only record that they were called, for the tests of the
// control's own behaviour.

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/SolutionBuilderControl.h"

namespace quarn::modelgui::testing {

class RecordingControl : public SolutionBuilderControl {
public:
    explicit RecordingControl(
        std::shared_ptr<ZML::FlowGraphPart> canvas = std::make_shared<ZML::FlowGraphPart>())
        : SolutionBuilderControl(canvas) {}

    std::vector<std::string> calls;
    std::vector<std::shared_ptr<Velmar::Lattix::Operator>> selectedOperators;
    std::vector<std::shared_ptr<Velmar::Lattix::Port>> selectedPorts;
    bool editable = true;

    void GetSelectedOperators(
        std::vector<std::shared_ptr<Velmar::Lattix::Operator>>& operators) override {
        operators.insert(operators.end(), selectedOperators.begin(), selectedOperators.end());
    }
    void GetSelectedPorts(std::vector<std::shared_ptr<Velmar::Lattix::Port>>& ports) override {
        ports.insert(ports.end(), selectedPorts.begin(), selectedPorts.end());
    }
    std::shared_ptr<Velmar::Lattix::Model> GetModel() override { return nullptr; }
    std::shared_ptr<Velmar::Lattix::Model> GetEditedModel() override { return nullptr; }
    void PrepareForChange(bool batch) override {
        calls.push_back(std::string("PrepareForChange(") + (batch ? "true" : "false") + ")");
    }
    void ChangeCompleted(bool batch, bool changed) override {
        calls.push_back(std::string("ChangeCompleted(") + (batch ? "true" : "false") + ", " +
                        (changed ? "true" : "false") + ")");
    }
    void RedrawModel() override { calls.emplace_back("RedrawModel"); }
    void PortValuesChanged() override { calls.emplace_back("PortValuesChanged"); }
    void RemoveSelectedOperators() override { calls.emplace_back("RemoveSelectedOperators"); }
    bool IsEditable() override { return editable; }
};

}  // namespace quarn::modelgui::testing
