// The editor queries: which dialogs the selection and the clicked point offer.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/OperatorUIProvider.h"
#include "Velmar/Lattix/PortUIProvider.h"
#include "Velmar/Lattix/UIProviderFactory.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "recordingcontrol.h"

namespace {

using namespace quarn::modelgui;
using quarn::modelgui::testing::RecordingControl;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;
using Velmar::Lattix::UIProviderFactory;

// Offers a dialog for operators named "WithDialog" and for every input port.
class Dialogs : public Velmar::Lattix::OperatorUIProvider, public Velmar::Lattix::PortUIProvider {
public:
    bool HandlesOperator(const Operator& op) const override {
        return op.GetOperatorName() == L"WithDialog";
    }
    bool ShowDialog(const std::shared_ptr<Operator>&) override { return true; }
    bool HandlesPort(const Port& port) const override { return port.IsInput(); }
    bool ShowDialog(const std::shared_ptr<Port>&) override { return true; }
};

class EditorQueries : public ::testing::Test {
protected:
    std::shared_ptr<Dialogs> dialogs = std::make_shared<Dialogs>();
    std::shared_ptr<void> operatorToken = UIProviderFactory::RegisterOperatorProvider(dialogs);
    std::shared_ptr<void> portToken = UIProviderFactory::RegisterPortProvider(dialogs);
    RecordingControl control;
    std::shared_ptr<Operator> withDialog = std::make_shared<Operator>(L"TEST", L"WithDialog");
    std::shared_ptr<Operator> without = std::make_shared<Operator>(L"TEST", L"Without");
    std::shared_ptr<Port> port = Port::Create(L"Outer", PortDirection::Input);
};

TEST_F(EditorQueries, SelectedOperatorDialog) {
    struct Row {
        const char* name;
        std::vector<std::shared_ptr<Operator>> operators;
        std::vector<std::shared_ptr<Port>> ports;
        bool editable;
        bool expected;
    };
    const std::vector<Row> rows = {
        {"nothing selected", {}, {}, true, false},
        {"operator with a dialog", {withDialog}, {}, true, true},
        {"operator without a dialog", {without}, {}, true, false},
        {"one port", {}, {port}, true, true},
        {"operator and port", {withDialog}, {port}, true, false},
        {"two operators", {withDialog, withDialog}, {}, true, false},
        {"read-only editor", {withDialog}, {}, false, false},
        {"read-only editor, one port", {}, {port}, false, false},
    };
    for (const auto& row : rows) {
        control.selectedOperators = row.operators;
        control.selectedPorts = row.ports;
        control.editable = row.editable;
        EXPECT_EQ(control.DoesSelectedOperatorHaveDialog(), row.expected) << row.name;
    }
}

TEST_F(EditorQueries, ClickedPortAndItsDialog) {
    const auto canvas = control.GetFlowGraphPart();
    auto node = std::make_shared<OperatorNode>();
    auto inputPoint = std::make_shared<PortDescriptionConnectionPoint>();
    inputPoint->SetThePort(withDialog->AddPort(L"In", PortDirection::Input));
    auto outputPoint = std::make_shared<PortDescriptionConnectionPoint>();
    outputPoint->SetThePort(withDialog->AddPort(L"Out", PortDirection::Output));
    outputPoint->SetOutput();
    auto unboundPoint = std::make_shared<PortDescriptionConnectionPoint>();
    auto flowPoint = std::make_shared<FlowControlConnectionPoint>();
    for (const auto& point : std::vector<std::shared_ptr<ZML::FlowGraphConnectionPointEx>>{
             inputPoint, outputPoint, unboundPoint, flowPoint}) {
        node->AddConnectionPoint(point);
    }
    canvas->AddNode(node);

    struct Row {
        const char* name;
        std::shared_ptr<ZML::FlowGraphConnectionPointEx> clicked;
        bool editable;
        bool haveClickedPort;
        bool portHasDialog;
    };
    const std::vector<Row> rows = {
        {"nothing clicked", nullptr, true, false, false},
        {"input port", inputPoint, true, true, true},
        {"output port", outputPoint, true, true, false},
        {"port point without port", unboundPoint, true, false, false},
        {"flow-control point", flowPoint, true, false, false},
        {"input port, read-only", inputPoint, false, false, false},
    };
    for (const auto& row : rows) {
        canvas->UserClickPoint(row.clicked);
        control.editable = row.editable;
        EXPECT_EQ(control.HaveClickedPort(), row.haveClickedPort) << row.name;
        EXPECT_EQ(control.DoesSelectedPortHaveDialog(), row.portHasDialog) << row.name;
    }
}

TEST_F(EditorQueries, RunCompletedRedrawsThenRefreshesPortValues) {
    control.RunCompleted();
    EXPECT_EQ(control.calls, (std::vector<std::string>{"RedrawModel", "PortValuesChanged"}));
}

}  // namespace
