#include "EditorContext.h"

namespace lattix::modeler {

struct EditorContextRecord {
    quarn::modelgui::SolutionBuilderControl* control = nullptr;
};

EditorContext::EditorContext(quarn::modelgui::SolutionBuilderControl* control)
    : editorContextData(std::make_shared<EditorContextRecord>()) {
    editorContextData->control = control;
}

EditorContext::~EditorContext() = default;

quarn::modelgui::SolutionBuilderControl* EditorContext::GetControl() {
    return editorContextData->control;
}

void EditorContext::SetControl(quarn::modelgui::SolutionBuilderControl* control) {
    editorContextData->control = control;
}

}  // namespace lattix::modeler
