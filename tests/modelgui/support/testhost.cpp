// The editor host used by the tests: model, selection, history and canvas wiring.

#include "testhost/TestHost.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "QuarnLog/ErrorContext.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/AddConnection.h"
#include "modelgui/DrawGraph.h"
#include "modelgui/MessageManager.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortNode.h"
#include "modelgui/RemoveConnection.h"
#include "modelgui/TextNode.h"
#include "modelgui/UndoRedoManager.h"
#include "modelgui/UpdateOperatorInfo.h"

namespace quarn::modelgui::testhost {

using Velmar::Lattix::Model;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;

struct TestHostData {
    std::shared_ptr<Model> model;
    bool editable = true;
    bool showHidden = false;
    TestHost::Calls calls;
    // Released first when the host goes, so that no canvas report reaches a host being taken down.
    std::vector<ZML::FlowGraphPart::Token> canvasTokens;
};

struct TestContextData {
    SolutionBuilderControl* control = nullptr;
};

namespace {

std::shared_ptr<ZML::FlowGraphPart> CanvasOrNew(std::shared_ptr<ZML::FlowGraphPart> canvas) {
    return canvas ? std::move(canvas) : std::make_shared<ZML::FlowGraphPart>();
}

}  // namespace

TestHost::TestHost(std::shared_ptr<ZML::FlowGraphPart> canvas)
    : SolutionBuilderControl(CanvasOrNew(std::move(canvas))),
      testHostData(std::make_shared<struct TestHostData>()) {
    testHostData->model = std::make_shared<Model>();
    WireCanvas();
}

TestHost::~TestHost() {
    testHostData->canvasTokens.clear();
}

// Each handler runs as one change. An engine error is logged under the handler's name and the
// model redrawn, since the canvas may now show what the model refused.
void TestHost::WireCanvas() {
    const auto canvas = GetFlowGraphPart();
    auto guarded = [this](const char* operation, const std::function<void()>& body) {
        PrepareForChange(true);
        QuarnLog::ErrorContext context(operation, __FILE__);
        const bool succeeded = context.Run(body);
        if (!succeeded) {
            for (const auto& message : context.Messages()) {
                testHostData->calls.errors.push_back(message);
            }
            RedrawModel();
        }
        ChangeCompleted(true, succeeded);
    };
    auto& tokens = testHostData->canvasTokens;
    tokens.push_back(canvas->OnConnectionAdded(
        [this, guarded](const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection) {
            guarded("quarn::modelgui::testhost::TestHost::OnConnectionAdded", [&] {
                AddConnection::OnAdded(GetFlowGraphPart(), GetEditedModel(), connection);
            });
        }));
    tokens.push_back(canvas->OnConnectionRemoved(
        [this, guarded](const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection) {
            guarded("quarn::modelgui::testhost::TestHost::OnConnectionRemoved", [&] {
                RemoveConnection::OnRemoved(GetFlowGraphPart(), GetEditedModel(), connection);
            });
        }));
    tokens.push_back(
        canvas->OnNodeChanged([this, guarded](const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
            guarded("quarn::modelgui::testhost::TestHost::OnNodeChanged",
                    [&] { UpdateOperatorInfo::UpdateInfo(GetFlowGraphPart(), node); });
        }));
    // The canvas has already reported the node's connections as removed.
    tokens.push_back(
        canvas->OnNodeRemoved([this, guarded](const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
            guarded("quarn::modelgui::testhost::TestHost::OnNodeRemoved", [&] {
                const auto model = GetEditedModel();
                if (const auto opNode = std::dynamic_pointer_cast<OperatorNode>(node)) {
                    if (const auto op = opNode->GetOperator()) model->RemoveOperator(op);
                } else if (const auto portNode = std::dynamic_pointer_cast<PortNode>(node)) {
                    if (const auto port = portNode->GetPort()) model->RemovePort(port->GetName());
                } else if (const auto textNode = std::dynamic_pointer_cast<TextNode>(node)) {
                    const auto dictionary = textNode->GetDictionary();
                    const auto texts = model->GetTextAnnotations();
                    auto items = texts->GetItems();
                    std::erase(items, dictionary);
                    texts->SetItems(items);
                }
            });
        }));
}

void TestHost::Draw(bool first) {
    ++testHostData->calls.redraws;
    DrawGraph::DrawProcess(GetFlowGraphPart(), testHostData->model, nullptr, first,
                           testHostData->showHidden, false);
}

void TestHost::SwapIn(const std::shared_ptr<Model>& model) {
    testHostData->model = model;
    GetMessageManager()->UpdateProcess(model);
}

void TestHost::OpenModel(const std::shared_ptr<Model>& model) {
    if (!model) QUARN_THROW("The test host was given no model to open.");
    GetMessageManager()->ClearMessages();
    SwapIn(model);
    Draw(true);
    GetUndoRedoManager()->SetBaseline(model);
}

void TestHost::OpenModelFile(const std::wstring& path) {
    OpenModel(Velmar::Lattix::ModelFormatFactory::Open(path));
}

void TestHost::SaveModelFile(const std::wstring& path) {
    Velmar::Lattix::ModelFormatFactory::Save(testHostData->model, path,
                                             Velmar::Lattix::ModelFormatFactory::PlainFormatName);
}

bool TestHost::Undo() {
    const auto history = GetUndoRedoManager();
    if (!history->CanUndo()) return false;
    auto model = testHostData->model;
    std::shared_ptr<UndoRedoManager::ModelState> state;
    history->Undo(model, state);
    SwapIn(model);
    RedrawModel();
    return true;
}

bool TestHost::Redo() {
    const auto history = GetUndoRedoManager();
    if (!history->CanRedo()) return false;
    auto model = testHostData->model;
    std::shared_ptr<UndoRedoManager::ModelState> state;
    history->Redo(model, state);
    SwapIn(model);
    RedrawModel();
    return true;
}

void TestHost::Select(const std::vector<std::shared_ptr<ZML::FlowGraphNodeEx>>& nodes) {
    const auto canvas = GetFlowGraphPart();
    canvas->ClearSelection();
    for (const auto& node : nodes) canvas->AddNodeToSelection(node);
}

void TestHost::SetEditable(bool editable) {
    testHostData->editable = editable;
}

void TestHost::SetShowHidden(bool showHidden) {
    testHostData->showHidden = showHidden;
}

const TestHost::Calls& TestHost::GetCalls() const {
    return testHostData->calls;
}

void TestHost::ResetCalls() {
    testHostData->calls = {};
}

void TestHost::GetSelectedOperators(std::vector<std::shared_ptr<Operator>>& operators) {
    for (const auto& node : GetFlowGraphPart()->GetSelectedNodes()) {
        if (const auto opNode = std::dynamic_pointer_cast<OperatorNode>(node)) {
            if (auto op = opNode->GetOperator()) operators.push_back(std::move(op));
        }
    }
}

void TestHost::GetSelectedPorts(std::vector<std::shared_ptr<Port>>& ports) {
    for (const auto& node : GetFlowGraphPart()->GetSelectedNodes()) {
        if (const auto portNode = std::dynamic_pointer_cast<PortNode>(node)) {
            if (auto port = portNode->GetPort()) ports.push_back(std::move(port));
        }
    }
}

std::shared_ptr<Model> TestHost::GetModel() {
    return testHostData->model;
}

std::shared_ptr<Model> TestHost::GetEditedModel() {
    return testHostData->model;
}

void TestHost::PrepareForChange(bool batch) {
    testHostData->calls.prepared.push_back(batch);
}

void TestHost::ChangeCompleted(bool batch, bool changed) {
    testHostData->calls.completed.emplace_back(batch, changed);
    if (!changed) return;
    GetUndoRedoManager()->ModelChanged(testHostData->model, nullptr);
    ++testHostData->calls.recorded;
}

void TestHost::RedrawModel() {
    Draw(false);
}

void TestHost::PortValuesChanged() {
    ++testHostData->calls.portValuesChanged;
}

void TestHost::RemoveSelectedOperators() {
    if (!IsEditable()) return;
    std::vector<std::shared_ptr<Operator>> operators;
    GetSelectedOperators(operators);
    if (operators.empty()) return;
    const auto scope = BatchUpdateInScope(true);
    for (const auto& op : operators) testHostData->model->RemoveOperator(op);
    RedrawModel();
}

bool TestHost::IsEditable() {
    return testHostData->editable;
}

TestContext::TestContext(SolutionBuilderControl* control)
    : testContextData(std::make_shared<struct TestContextData>()) {
    testContextData->control = control;
}

TestContext::~TestContext() = default;

SolutionBuilderControl* TestContext::GetControl() {
    return testContextData->control;
}

void TestContext::SetControl(SolutionBuilderControl* control) {
    testContextData->control = control;
}

}  // namespace quarn::modelgui::testhost
