#include "ZML/TreeView.h"

#include <algorithm>
#include <functional>
#include <map>

#include "QuarnLog/Exception.h"
#include "qtxt/Text.h"
#include "qzml/Icons.h"

namespace ZML {

// ---- nodes ----

struct treeViewNodeData {
    std::wstring text;
    std::string kind;
    std::any data;
    std::vector<std::shared_ptr<TreeViewNode>> children;
    std::weak_ptr<TreeViewNode> parent;
    bool expanded = false;
    bool selected = false;
};

TreeViewNode::TreeViewNode(std::wstring text, std::string kind, std::any data)
    : treeViewNodeRecord(std::make_shared<treeViewNodeData>()) {
    treeViewNodeRecord->text = std::move(text);
    treeViewNodeRecord->kind = std::move(kind);
    treeViewNodeRecord->data = std::move(data);
}
TreeViewNode::~TreeViewNode() = default;

const std::wstring& TreeViewNode::Text() const {
    return treeViewNodeRecord->text;
}
void TreeViewNode::TextSet(const std::wstring& text) {
    treeViewNodeRecord->text = text;
}
const std::string& TreeViewNode::NodeKind() const {
    return treeViewNodeRecord->kind;
}
const std::any& TreeViewNode::Data() const {
    return treeViewNodeRecord->data;
}
void TreeViewNode::DataSet(std::any data) {
    treeViewNodeRecord->data = std::move(data);
}

std::shared_ptr<TreeViewNode> TreeViewNode::AddChild(const std::shared_ptr<TreeViewNode>& child) {
    if (!child || child.get() == this || child->Parent()) {
        QUARN_THROW("A tree node can only be added once, and not to itself.");
    }
    child->treeViewNodeRecord->parent = weak_from_this();
    treeViewNodeRecord->children.push_back(child);
    return child;
}

std::vector<std::shared_ptr<TreeViewNode>> TreeViewNode::Children() const {
    return treeViewNodeRecord->children;
}
std::shared_ptr<TreeViewNode> TreeViewNode::Parent() const {
    return treeViewNodeRecord->parent.lock();
}
bool TreeViewNode::IsExpanded() const {
    return treeViewNodeRecord->expanded;
}
bool TreeViewNode::IsSelected() const {
    return treeViewNodeRecord->selected;
}

void TreeViewNode::ParentSet(const std::shared_ptr<TreeViewNode>& parent) {
    treeViewNodeRecord->parent = parent;
}
void TreeViewNode::ExpandedSet(bool expanded) {
    treeViewNodeRecord->expanded = expanded;
}
void TreeViewNode::SelectedSet(bool selected) {
    treeViewNodeRecord->selected = selected;
}
void TreeViewNode::RemoveChildAt(std::size_t index) {
    auto& children = treeViewNodeRecord->children;
    children[index]->treeViewNodeRecord->parent.reset();
    children.erase(children.begin() + static_cast<std::ptrdiff_t>(index));
}
void TreeViewNode::InsertChildAt(std::size_t index, const std::shared_ptr<TreeViewNode>& child) {
    auto& children = treeViewNodeRecord->children;
    child->treeViewNodeRecord->parent = weak_from_this();
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(index), child);
}

// ---- default node behaviour ----

bool TreeViewNodeProperties::CanDrag(const std::shared_ptr<TreeViewNode>&) {
    return false;
}
std::string TreeViewNodeProperties::GetRibbonContextMenu(const std::shared_ptr<TreeViewNode>&) {
    return {};
}
void TreeViewNodeProperties::OnDoubleClick(const std::shared_ptr<TreeViewNode>&) {}
void TreeViewNodeProperties::OnExpand(const std::shared_ptr<TreeViewNode>&) {}
void TreeViewNodeProperties::OnCollapse(const std::shared_ptr<TreeViewNode>&) {}
std::wstring TreeViewNodeProperties::GetIconName(const std::shared_ptr<TreeViewNode>&) {
    return {};
}

// ---- the tree ----

struct treeViewData {
    std::vector<std::shared_ptr<TreeViewNode>> roots;
    std::map<std::string, std::shared_ptr<TreeViewNodeProperties>> properties;
    std::shared_ptr<TreeViewNodeProperties> plain = std::make_shared<TreeViewNodeProperties>();
    std::vector<std::weak_ptr<TreeViewNode>> selection;
    int contentHeight = 0;
};

namespace {

std::shared_ptr<TreeViewNode> RootOf(std::shared_ptr<TreeViewNode> node) {
    while (auto parent = node->Parent()) {
        node = parent;
    }
    return node;
}

void ForEachNode(const std::shared_ptr<TreeViewNode>& node,
                 const std::function<void(const std::shared_ptr<TreeViewNode>&)>& visit) {
    visit(node);
    for (const auto& child : node->Children()) {
        ForEachNode(child, visit);
    }
}

Event NodeEvent(const std::shared_ptr<TreeViewNode>& node) {
    Event event;
    event.detail = node;
    event.text = node ? node->Text() : std::wstring{};
    return event;
}

}  // namespace

TreeView::TreeView(std::string name)
    : Part(std::move(name)), treeViewRecord(std::make_shared<treeViewData>()) {}
TreeView::~TreeView() = default;

std::string TreeView::Kind() const {
    return "treeview";
}

void TreeView::SetNodeProperties(const std::string& kind,
                                 std::shared_ptr<TreeViewNodeProperties> properties) {
    if (properties) {
        treeViewRecord->properties[kind] = std::move(properties);
    } else {
        treeViewRecord->properties.erase(kind);
    }
}

std::shared_ptr<TreeViewNodeProperties> TreeView::PropertiesFor(
    const std::shared_ptr<TreeViewNode>& node) const {
    const auto& known = treeViewRecord->properties;
    if (node) {
        if (auto it = known.find(node->NodeKind()); it != known.end()) {
            return it->second;
        }
    }
    if (auto it = known.find(std::string{}); it != known.end()) {
        return it->second;
    }
    return treeViewRecord->plain;
}

bool TreeView::Contains(const std::shared_ptr<TreeViewNode>& node) const {
    if (!node) {
        return false;
    }
    auto root = RootOf(node);
    const auto& roots = treeViewRecord->roots;
    return std::find(roots.begin(), roots.end(), root) != roots.end();
}

std::shared_ptr<TreeViewNode> TreeView::AddNode(const std::shared_ptr<TreeViewNode>& node,
                                                const std::shared_ptr<TreeViewNode>& parent) {
    if (!node) {
        QUARN_THROW("Cannot add an empty node to tree \"" + Name() + "\".");
    }
    if (node->Parent() || Contains(node)) {
        QUARN_THROW("Node \"" + qtxt::DefaultWideToUTF8(node->Text()) + "\" is already in a tree.");
    }
    if (parent) {
        if (!Contains(parent)) {
            QUARN_THROW("The parent of node \"" + qtxt::DefaultWideToUTF8(node->Text()) +
                        "\" is not in tree \"" + Name() + "\".");
        }
        parent->AddChild(node);
    } else {
        treeViewRecord->roots.push_back(node);
    }
    return node;
}

namespace {

// Drops from the selection every node that is no longer in the tree, clearing their flags.
bool PruneSelection(std::vector<std::weak_ptr<TreeViewNode>>& selection, const TreeView& tree) {
    bool changed = false;
    auto out = selection.begin();
    for (auto& weak : selection) {
        auto node = weak.lock();
        if (node && tree.Contains(node)) {
            *out++ = weak;
        } else {
            changed = true;
        }
    }
    selection.erase(out, selection.end());
    return changed;
}

void UnselectSubtree(const std::shared_ptr<TreeViewNode>& node,
                     const std::function<void(const std::shared_ptr<TreeViewNode>&)>& clear) {
    ForEachNode(node, clear);
}

}  // namespace

bool TreeView::ReplaceNode(const std::shared_ptr<TreeViewNode>& existing,
                           const std::shared_ptr<TreeViewNode>& replacement) {
    if (!replacement || !Contains(existing)) {
        return false;
    }
    if (replacement->Parent() || Contains(replacement)) {
        QUARN_THROW("Replacement node \"" + qtxt::DefaultWideToUTF8(replacement->Text()) +
                    "\" is already in a tree.");
    }
    if (auto parent = existing->Parent()) {
        auto siblings = parent->Children();
        auto index = static_cast<std::size_t>(
            std::find(siblings.begin(), siblings.end(), existing) - siblings.begin());
        parent->RemoveChildAt(index);
        parent->InsertChildAt(index, replacement);
    } else {
        auto& roots = treeViewRecord->roots;
        *std::find(roots.begin(), roots.end(), existing) = replacement;
    }
    UnselectSubtree(existing,
                    [](const std::shared_ptr<TreeViewNode>& n) { n->SelectedSet(false); });
    if (PruneSelection(treeViewRecord->selection, *this)) {
        FireMessage("SelectionChanged");
    }
    return true;
}

bool TreeView::RemoveNode(const std::shared_ptr<TreeViewNode>& node) {
    if (!Contains(node)) {
        return false;
    }
    if (auto parent = node->Parent()) {
        auto siblings = parent->Children();
        parent->RemoveChildAt(static_cast<std::size_t>(
            std::find(siblings.begin(), siblings.end(), node) - siblings.begin()));
    } else {
        auto& roots = treeViewRecord->roots;
        roots.erase(std::find(roots.begin(), roots.end(), node));
    }
    UnselectSubtree(node, [](const std::shared_ptr<TreeViewNode>& n) { n->SelectedSet(false); });
    if (PruneSelection(treeViewRecord->selection, *this)) {
        FireMessage("SelectionChanged");
    }
    return true;
}

void TreeView::ClearNodes() {
    for (const auto& root : treeViewRecord->roots) {
        UnselectSubtree(root,
                        [](const std::shared_ptr<TreeViewNode>& n) { n->SelectedSet(false); });
    }
    treeViewRecord->roots.clear();
    bool hadSelection = !treeViewRecord->selection.empty();
    treeViewRecord->selection.clear();
    Refresh(PartChange::Content);
    if (hadSelection) {
        FireMessage("SelectionChanged");
    }
}

std::vector<std::shared_ptr<TreeViewNode>> TreeView::GetRootNodes() const {
    return treeViewRecord->roots;
}

std::shared_ptr<TreeViewNode> TreeView::GetParentNode(
    const std::shared_ptr<TreeViewNode>& node) const {
    if (!Contains(node)) {
        return nullptr;
    }
    return node->Parent();
}

void TreeView::Expand(const std::shared_ptr<TreeViewNode>& node, bool expand) {
    if (!Contains(node)) {
        QUARN_THROW("Cannot expand a node that is not in tree \"" + Name() + "\".");
    }
    if (node->IsExpanded() == expand) {
        return;
    }
    node->ExpandedSet(expand);
    auto self = weak_from_this().lock();
    auto properties = PropertiesFor(node);
    if (expand) {
        properties->OnExpand(node);
    } else {
        properties->OnCollapse(node);
    }
    Refresh(PartChange::Content);
    Fire(expand ? "expand" : "collapse", NodeEvent(node));
}

void TreeView::Collapse(const std::shared_ptr<TreeViewNode>& node) {
    Expand(node, false);
}

std::vector<TreeViewRow> TreeView::VisibleRows() const {
    std::vector<TreeViewRow> rows;
    std::function<void(const std::shared_ptr<TreeViewNode>&, int)> walk =
        [&rows, &walk](const std::shared_ptr<TreeViewNode>& node, int depth) {
            rows.push_back(TreeViewRow{node, depth});
            if (node->IsExpanded()) {
                for (const auto& child : node->Children()) {
                    walk(child, depth + 1);
                }
            }
        };
    for (const auto& root : treeViewRecord->roots) {
        walk(root, 0);
    }
    return rows;
}

std::shared_ptr<Icon> TreeView::NodeIcon(const std::shared_ptr<TreeViewNode>& node) const {
    std::wstring name = PropertiesFor(node)->GetIconName(node);
    if (name.empty()) {
        return nullptr;
    }
    return qzml_IconCreateFromFile(name);
}

void TreeView::ComputeSizeAndRedraw() {
    treeViewRecord->contentHeight = static_cast<int>(VisibleRows().size()) * RowHeight;
    Refresh(PartChange::Content);
}
int TreeView::ContentHeight() const {
    return treeViewRecord->contentHeight;
}

std::vector<std::shared_ptr<TreeViewNode>> TreeView::GetSelectedNodes() const {
    std::vector<std::shared_ptr<TreeViewNode>> nodes;
    for (const auto& weak : treeViewRecord->selection) {
        if (auto node = weak.lock(); node && Contains(node)) {
            nodes.push_back(node);
        }
    }
    return nodes;
}

void TreeView::SelectNode(const std::shared_ptr<TreeViewNode>& node, bool add) {
    if (!Contains(node)) {
        QUARN_THROW("Cannot select a node that is not in tree \"" + Name() + "\".");
    }
    auto& selection = treeViewRecord->selection;
    bool changed = false;
    if (!add) {
        for (auto& weak : selection) {
            if (auto other = weak.lock(); other && other != node) {
                other->SelectedSet(false);
                changed = true;
            }
        }
        selection.clear();
        selection.push_back(node);
    } else if (!node->IsSelected()) {
        selection.push_back(node);
    }
    if (!node->IsSelected()) {
        node->SelectedSet(true);
        changed = true;
    }
    if (changed) {
        Refresh(PartChange::Value);
        FireMessage("SelectionChanged");
    }
}

void TreeView::ClearSelection() {
    auto& selection = treeViewRecord->selection;
    if (selection.empty()) {
        return;
    }
    for (auto& weak : selection) {
        if (auto node = weak.lock()) {
            node->SelectedSet(false);
        }
    }
    selection.clear();
    Refresh(PartChange::Value);
    FireMessage("SelectionChanged");
}

bool TreeView::UserClick(const std::shared_ptr<TreeViewNode>& node, unsigned modifiers) {
    if (!IsEffectivelyEnabled() || !Contains(node)) {
        return false;
    }
    auto self = weak_from_this().lock();
    SelectNode(node, (modifiers & ModControl) != 0);
    Event click = NodeEvent(node);
    click.button = MouseButton::Left;
    click.modifiers = modifiers;
    Fire("mousedown", click);
    return true;
}

bool TreeView::UserDoubleClick(const std::shared_ptr<TreeViewNode>& node) {
    if (!IsEffectivelyEnabled() || !Contains(node)) {
        return false;
    }
    auto self = weak_from_this().lock();
    SelectNode(node);
    PropertiesFor(node)->OnDoubleClick(node);
    Event click = NodeEvent(node);
    click.button = MouseButton::Left;
    Fire("doubleclick", click);
    return true;
}

bool TreeView::UserToggle(const std::shared_ptr<TreeViewNode>& node) {
    if (!IsEffectivelyEnabled() || !Contains(node)) {
        return false;
    }
    Expand(node, !node->IsExpanded());
    return true;
}

bool TreeView::UserStartDrag(const std::shared_ptr<TreeViewNode>& node) {
    if (!IsEffectivelyEnabled() || !Contains(node) || !PropertiesFor(node)->CanDrag(node)) {
        return false;
    }
    auto self = weak_from_this().lock();
    Fire("dragstart", NodeEvent(node));
    return true;
}

std::string TreeView::UserContextMenu(const std::shared_ptr<TreeViewNode>& node) {
    if (!IsEffectivelyEnabled() || !Contains(node)) {
        return {};
    }
    if (!node->IsSelected()) {
        SelectNode(node);
    }
    return PropertiesFor(node)->GetRibbonContextMenu(node);
}

}  // namespace ZML
