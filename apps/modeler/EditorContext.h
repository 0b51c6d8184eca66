#pragma once

#include <memory>

#include "modelgui/Context.h"

namespace lattix::modeler {

struct EditorContextRecord;

// The workspace of the model editor: one window, so one active editor control (not owned; it
// must outlive its use here or be cleared first).
class EditorContext : public quarn::modelgui::Context {
public:
    explicit EditorContext(quarn::modelgui::SolutionBuilderControl* control = nullptr);
    ~EditorContext() override;

    quarn::modelgui::SolutionBuilderControl* GetControl() override;
    void SetControl(quarn::modelgui::SolutionBuilderControl* control);

private:
    std::shared_ptr<EditorContextRecord> editorContextData;
};

}  // namespace lattix::modeler
