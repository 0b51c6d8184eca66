#pragma once

#include <memory>

namespace quarn::modelgui {

class SolutionBuilderControl;
class OperatorsTreeView;
struct ContextData;

// A workspace of the host: it names the active editor and remembers the operator palettes shown
// in it. The host derives one per workspace and makes it current; the library asks the current
// context. The current context and the palette queue belong to the user-interface thread.
class Context {
public:
    virtual ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    // The context's active editor, or null. Not owned by the caller.
    virtual SolutionBuilderControl* GetControl() = 0;

    // Replaces the current context (an empty pointer clears it), releasing the previous one.
    static void SetCurrentContext(const std::shared_ptr<Context>& context);
    // The current context's GetControl(), or null when there is no current context.
    static SolutionBuilderControl* GetCurrentControl();
    // Remembers `view` (weakly) as the newest palette shown in the current context; ignored when
    // there is no current context.
    static void OperatorsTreeViewDisplayed(const std::shared_ptr<OperatorsTreeView>& view);
    // The newest remembered palette still alive, or empty. Palettes that have gone are forgotten
    // from the newest end only, as they are met.
    static std::shared_ptr<OperatorsTreeView> GetCurrentOperatorsTreeView();

protected:
    Context();

private:
    std::shared_ptr<ContextData> contextData;
};

}  // namespace quarn::modelgui
