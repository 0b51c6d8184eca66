// The editor control of the model-editor window: model, selection, history and canvas wiring.

#include "EditorHost.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "LoopPoints.h"
#include "QuarnLog/ErrorContext.h"
#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/Issue.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/Event.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/AddConnection.h"
#include "modelgui/DrawGraph.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/MessageManager.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortNode.h"
#include "modelgui/RemoveConnection.h"
#include "modelgui/TextNode.h"
#include "modelgui/UndoRedoManager.h"
#include "modelgui/UpdateOperatorInfo.h"
#include "qtxt/Text.h"

namespace lattix::modeler {

using Velmar::Lattix::Model;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
namespace mg = quarn::modelgui;

struct EditorHostRecord {
    std::shared_ptr<Model> model;
    std::wstring path;
    bool modified = false;
    // Open batches and whether anything inside them changed the model.
    int batchDepth = 0;
    bool pendingChange = false;
    std::function<void()> stateChanged;
    std::vector<std::string> gestureErrors;
    // Released first when the host goes, so that no canvas report reaches a host being taken down.
    std::vector<ZML::FlowGraphPart::Token> canvasTokens;
    std::vector<ZML::HandlerId> mouseHandlers;
};

namespace {

std::shared_ptr<Velmar::Lattix::Data> Whole(int value) {
    return std::make_shared<Velmar::Lattix::IntData>(value);
}

void Notify(const EditorHostRecord& data) {
    if (data.stateChanged) data.stateChanged();
}

// Every drawing of the model goes through here, so that loops always show their Body and Test
// points. A freshly opened model is fitted to the view once those points have sized its nodes.
void Draw(const std::shared_ptr<ZML::FlowGraphPart>& canvas, const std::shared_ptr<Model>& model,
          bool first) {
    mg::DrawGraph::DrawProcess(canvas, model, nullptr, false, false, false);
    LoopPoints::Add(canvas, model);
    if (first) canvas->ZoomToFit();
}

}  // namespace

EditorHost::EditorHost(std::shared_ptr<ZML::FlowGraphPart> canvas)
    : SolutionBuilderControl(canvas), editorHostData(std::make_shared<EditorHostRecord>()) {
    if (!canvas) QUARN_THROW("The model editor was given no canvas.");
    editorHostData->model = std::make_shared<Model>();

    // Each gesture runs as one change. An engine error is logged under the gesture's name, shown
    // in the message list, and the model redrawn, since the canvas may now show what the model
    // refused.
    auto guarded = [this](const char* operation, const std::function<void()>& body) {
        PrepareForChange(true);
        QuarnLog::ErrorContext context(operation, __FILE__);
        const bool succeeded = context.Run(body);
        if (!succeeded) {
            for (const auto& message : context.Messages()) {
                editorHostData->gestureErrors.push_back(message);
                GetMessageManager()->AddMessage(nullptr, nullptr, qtxt::UTF8toDefaultWide(message),
                                                L"", Velmar::Lattix::Issue::Severity::Error);
            }
            RedrawModel();
        }
        ChangeCompleted(true, succeeded);
    };
    auto& tokens = editorHostData->canvasTokens;
    tokens.push_back(canvas->OnConnectionAdded(
        [this, guarded](const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection) {
            guarded("lattix::modeler::EditorHost::OnConnectionAdded", [&] {
                mg::AddConnection::OnAdded(GetFlowGraphPart(), GetEditedModel(), connection);
            });
        }));
    tokens.push_back(canvas->OnConnectionRemoved(
        [this, guarded](const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection) {
            guarded("lattix::modeler::EditorHost::OnConnectionRemoved", [&] {
                mg::RemoveConnection::OnRemoved(GetFlowGraphPart(), GetEditedModel(), connection);
            });
        }));
    tokens.push_back(
        canvas->OnNodeChanged([this, guarded](const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
            guarded("lattix::modeler::EditorHost::OnNodeChanged",
                    [&] { mg::UpdateOperatorInfo::UpdateInfo(GetFlowGraphPart(), node); });
        }));
    // The canvas has already reported the node's connections as removed.
    tokens.push_back(
        canvas->OnNodeRemoved([this, guarded](const std::shared_ptr<ZML::FlowGraphNodeEx>& node) {
            guarded("lattix::modeler::EditorHost::OnNodeRemoved", [&] {
                const auto model = GetEditedModel();
                if (const auto opNode = std::dynamic_pointer_cast<mg::OperatorNode>(node)) {
                    if (const auto op = opNode->GetOperator()) model->RemoveOperator(op);
                } else if (const auto portNode = std::dynamic_pointer_cast<mg::PortNode>(node)) {
                    if (const auto port = portNode->GetPort()) model->RemovePort(port->GetName());
                } else if (const auto textNode = std::dynamic_pointer_cast<mg::TextNode>(node)) {
                    const auto dictionary = textNode->GetDictionary();
                    const auto texts = model->GetTextAnnotations();
                    auto items = texts->GetItems();
                    std::erase(items, dictionary);
                    texts->SetItems(items);
                }
            });
        }));
    // The canvas's mouse codes go on, unchanged, to whoever listens through the control's table.
    for (const char* name : {"mousedown", "mouseup", "doubleclick"}) {
        editorHostData->mouseHandlers.push_back(
            canvas->OnMessage(name, [](const ZML::Event& event) {
                QuarnLog::ErrorContext context("lattix::modeler::EditorHost::MouseEvent", __FILE__);
                context.Run([&] { CallMouseEventCB(static_cast<std::uint32_t>(event.key)); });
            }));
    }
}

EditorHost::~EditorHost() {
    for (const auto id : editorHostData->mouseHandlers) GetFlowGraphPart()->RemoveMessage(id);
    editorHostData->canvasTokens.clear();
    editorHostData->stateChanged = nullptr;
    GetMessageManager()->UpdateProcess(nullptr);
}

namespace {

void SwapIn(mg::SolutionBuilderControl& control, EditorHostRecord& data,
            const std::shared_ptr<Model>& model) {
    data.model = model;
    control.GetMessageManager()->UpdateProcess(model);
}

}  // namespace

void EditorHost::NewModel() {
    auto model = std::make_shared<Model>();
    GetMessageManager()->ClearMessages();
    editorHostData->gestureErrors.clear();
    SwapIn(*this, *editorHostData, model);
    Draw(GetFlowGraphPart(), model, true);
    GetUndoRedoManager()->SetBaseline(model);
    editorHostData->path.clear();
    editorHostData->modified = false;
    Notify(*editorHostData);
}

void EditorHost::OpenModelFile(const std::wstring& path) {
    // Read first: a file that cannot be read leaves the shown model as it was.
    const auto model = Velmar::Lattix::ModelFormatFactory::Open(path);
    GetMessageManager()->ClearMessages();
    editorHostData->gestureErrors.clear();
    SwapIn(*this, *editorHostData, model);
    Draw(GetFlowGraphPart(), model, true);
    GetUndoRedoManager()->SetBaseline(model);
    editorHostData->path = path;
    editorHostData->modified = false;
    Notify(*editorHostData);
}

void EditorHost::SaveModelFile(const std::wstring& path) {
    Velmar::Lattix::ModelFormatFactory::Save(editorHostData->model, path);
    editorHostData->path = path;
    editorHostData->modified = false;
    Notify(*editorHostData);
}

std::wstring EditorHost::GetPath() const {
    return editorHostData->path;
}

bool EditorHost::IsModified() const {
    return editorHostData->modified;
}

bool EditorHost::Undo() {
    const auto history = GetUndoRedoManager();
    if (!history->CanUndo()) return false;
    auto model = editorHostData->model;
    std::shared_ptr<mg::UndoRedoManager::ModelState> state;
    history->Undo(model, state);
    SwapIn(*this, *editorHostData, model);
    RedrawModel();
    editorHostData->modified = true;
    Notify(*editorHostData);
    return true;
}

bool EditorHost::Redo() {
    const auto history = GetUndoRedoManager();
    if (!history->CanRedo()) return false;
    auto model = editorHostData->model;
    std::shared_ptr<mg::UndoRedoManager::ModelState> state;
    history->Redo(model, state);
    SwapIn(*this, *editorHostData, model);
    RedrawModel();
    editorHostData->modified = true;
    Notify(*editorHostData);
    return true;
}

std::shared_ptr<Operator> EditorHost::AddOperator(const Velmar::Lattix::ObjectName& type, int x,
                                                  int y) {
    if (!IsEditable()) return nullptr;
    auto op = Velmar::Lattix::OperatorFactory::Create(type);
    const auto scope = BatchUpdateInScope(true);
    editorHostData->model->AddOperator(op);
    op->SetAttribute(L"PositionX", Whole(x));
    op->SetAttribute(L"PositionY", Whole(y));
    RedrawModel();
    return op;
}

void EditorHost::AddTextAnnotation(const std::wstring& text, int x, int y) {
    if (!IsEditable()) return;
    const auto scope = BatchUpdateInScope(true);
    auto entry = std::make_shared<Velmar::Lattix::DictionaryData>();
    (*entry)[L"String"] = text;
    (*entry)[L"PositionX"] = static_cast<std::int64_t>(x);
    (*entry)[L"PositionY"] = static_cast<std::int64_t>(y);
    editorHostData->model->GetTextAnnotations()->Append(entry);
    RedrawModel();
}

void EditorHost::AutoLayout() {
    if (!IsEditable()) return;
    // Layout reports every moved node, and each report keeps the node's new position.
    const auto scope = BatchUpdateInScope(true);
    GetFlowGraphPart()->Layout();
    GetFlowGraphPart()->ZoomToFit();
}

void EditorHost::SetShowPortNames(bool show) {
    GetFlowGraphPart()->SetShowPortNames(show);
    RedrawModel();
}

void EditorHost::SetShowPortData(bool show) {
    GetFlowGraphPart()->SetShowPortData(show);
    RedrawModel();
}

void EditorHost::SetStateChangedCallback(std::function<void()> callback) {
    editorHostData->stateChanged = std::move(callback);
}

std::vector<std::string> EditorHost::GetGestureErrors() const {
    return editorHostData->gestureErrors;
}

void EditorHost::GetSelectedOperators(std::vector<std::shared_ptr<Operator>>& operators) {
    for (const auto& node : GetFlowGraphPart()->GetSelectedNodes()) {
        if (const auto opNode = std::dynamic_pointer_cast<mg::OperatorNode>(node)) {
            if (auto op = opNode->GetOperator()) operators.push_back(std::move(op));
        }
    }
}

void EditorHost::GetSelectedPorts(std::vector<std::shared_ptr<Port>>& ports) {
    for (const auto& node : GetFlowGraphPart()->GetSelectedNodes()) {
        if (const auto portNode = std::dynamic_pointer_cast<mg::PortNode>(node)) {
            if (auto port = portNode->GetPort()) ports.push_back(std::move(port));
        }
    }
}

std::shared_ptr<Model> EditorHost::GetModel() {
    return editorHostData->model;
}

std::shared_ptr<Model> EditorHost::GetEditedModel() {
    return editorHostData->model;
}

void EditorHost::PrepareForChange(bool batch) {
    if (batch) ++editorHostData->batchDepth;
}

void EditorHost::ChangeCompleted(bool batch, bool changed) {
    auto& data = *editorHostData;
    if (batch && data.batchDepth > 0) --data.batchDepth;
    data.pendingChange = data.pendingChange || changed;
    if (data.batchDepth > 0 || !data.pendingChange) return;
    data.pendingChange = false;
    GetUndoRedoManager()->ModelChanged(data.model, nullptr);
    // Operators added by the change report to the message list from now on.
    GetMessageManager()->UpdateProcess(data.model);
    data.modified = true;
    Notify(data);
}

void EditorHost::RedrawModel() {
    Draw(GetFlowGraphPart(), editorHostData->model, false);
}

void EditorHost::PortValuesChanged() {
    if (GetFlowGraphPart()->GetShowPortData()) RedrawModel();
}

void EditorHost::RemoveSelectedOperators() {
    if (!IsEditable()) return;
    const auto scope = BatchUpdateInScope(false);
    GetFlowGraphPart()->UserDeleteSelection();
}

namespace {

bool ShowsFlowControl(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                      const std::shared_ptr<Operator>& op) {
    return mg::GUIUtils::FindPrevPoint(canvas, op) != nullptr;
}

bool HasFlowLinks(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                  const std::shared_ptr<Operator>& op) {
    for (const auto& point :
         {mg::GUIUtils::FindPrevPoint(canvas, op), mg::GUIUtils::FindNextPoint(canvas, op)}) {
        if (point && !canvas->GetConnections(point).empty()) return true;
    }
    return false;
}

}  // namespace

bool EditorHost::CanToggleFlowControl() {
    if (!IsEditable()) return false;
    std::vector<std::shared_ptr<Operator>> selected;
    GetSelectedOperators(selected);
    return !selected.empty();
}

bool EditorHost::SelectionShowsFlowControl() {
    std::vector<std::shared_ptr<Operator>> selected;
    GetSelectedOperators(selected);
    const auto canvas = GetFlowGraphPart();
    return !selected.empty() && std::ranges::all_of(selected, [&canvas](const auto& op) {
        return ShowsFlowControl(canvas, op);
    });
}

std::vector<std::shared_ptr<Operator>> EditorHost::ToggleFlowControl() {
    std::vector<std::shared_ptr<Operator>> kept;
    if (!CanToggleFlowControl()) return kept;
    std::vector<std::shared_ptr<Operator>> selected;
    GetSelectedOperators(selected);
    const auto canvas = GetFlowGraphPart();
    const bool hide = SelectionShowsFlowControl();
    std::vector<std::shared_ptr<Operator>> changing;
    for (const auto& op : selected) {
        if (hide && HasFlowLinks(canvas, op)) {
            kept.push_back(op);
        } else if (hide || !ShowsFlowControl(canvas, op)) {
            changing.push_back(op);
        }
    }
    if (changing.empty()) return kept;
    const auto scope = BatchUpdateInScope(true);
    for (const auto& op : changing) {
        if (hide) {
            mg::GUIUtils::RemoveFlowControl(canvas, op);
        } else {
            mg::GUIUtils::AddFlowControl(canvas, op);
        }
        // Written from the node, as a moved node writes it, so the saved state is what is shown.
        op->SetAttribute(L"FlowControl",
                         std::make_shared<Velmar::Lattix::BoolData>(ShowsFlowControl(canvas, op)));
    }
    return kept;
}

bool EditorHost::IsEditable() {
    const auto& model = editorHostData->model;
    return model && !model->IsReadonly() && !model->IsLocked();
}

}  // namespace lattix::modeler
