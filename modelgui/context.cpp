// The host's workspace: the current context, its active editor and the palettes shown in it.

#include <deque>
#include <memory>
#include <utility>

#include "modelgui/Context.h"

namespace quarn::modelgui {

struct ContextData {
    // Newest at the back. Palettes that have closed are dropped lazily from the back only, when
    // the newest one is asked for.
    std::deque<std::weak_ptr<OperatorsTreeView>> treeViews;
};

namespace {

std::shared_ptr<Context>& CurrentContext() {
    static std::shared_ptr<Context> current;
    return current;
}

}  // namespace

Context::Context() : contextData(std::make_shared<ContextData>()) {}

Context::~Context() = default;

void Context::SetCurrentContext(const std::shared_ptr<Context>& context) {
    // Swap first, release after: the old context's destructor may ask for the current one.
    auto previous = std::exchange(CurrentContext(), context);
    previous.reset();
}

SolutionBuilderControl* Context::GetCurrentControl() {
    const auto& current = CurrentContext();
    return current ? current->GetControl() : nullptr;
}

void Context::OperatorsTreeViewDisplayed(const std::shared_ptr<OperatorsTreeView>& view) {
    const auto& current = CurrentContext();
    if (!current) return;
    current->contextData->treeViews.push_back(view);
}

std::shared_ptr<OperatorsTreeView> Context::GetCurrentOperatorsTreeView() {
    const auto& current = CurrentContext();
    if (!current) return nullptr;
    auto& views = current->contextData->treeViews;
    std::shared_ptr<OperatorsTreeView> result;
    while (!result && !views.empty()) {
        result = views.back().lock();
        if (!result) views.pop_back();
    }
    return result;
}

}  // namespace quarn::modelgui
