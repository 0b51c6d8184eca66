#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZML/Icon.h"
#include "ZML/Part.h"
#include "ZML/TreeViewNode.h"
#include "ZML/TreeViewNodeProperties.h"

namespace ZML {

struct treeViewData;

// One visible row of a tree: a node and its depth (0 for root nodes).
struct TreeViewRow {
    std::shared_ptr<TreeViewNode> node;
    int depth = 0;
};

// A tree of nodes whose behaviour per node kind comes from TreeViewNodeProperties. Events:
// "mousedown" and "doubleclick" (detail: the node, as std::shared_ptr<TreeViewNode>),
// "SelectionChanged", "expand" and "collapse" (detail: the node), "dragstart" (detail: the node),
// "menu" (text: the chosen item's name, detail: the node).
class TreeView : public Part {
public:
    explicit TreeView(std::string name = {});
    ~TreeView() override;

    std::string Kind() const override;

    // Registers how nodes of `kind` behave; the empty kind is the default for nodes whose kind
    // has no properties of its own. Replaces an earlier registration of the same kind.
    void SetNodeProperties(const std::string& kind,
                           std::shared_ptr<TreeViewNodeProperties> properties);
    // The properties that apply to `node`: its kind's, else the default, else a plain object
    // with the default behaviour.
    std::shared_ptr<TreeViewNodeProperties> PropertiesFor(
        const std::shared_ptr<TreeViewNode>& node) const;

    // Appends `node` (with its children) under `parent`, or as a root node when `parent` is
    // null. The node must not be in a tree already; `parent` must be in this tree. Returns node.
    std::shared_ptr<TreeViewNode> AddNode(const std::shared_ptr<TreeViewNode>& node,
                                          const std::shared_ptr<TreeViewNode>& parent = nullptr);
    // Puts `replacement` (with its children) where `existing` stands; `existing` and its
    // children leave the tree and the selection. False when `existing` is not in this tree.
    bool ReplaceNode(const std::shared_ptr<TreeViewNode>& existing,
                     const std::shared_ptr<TreeViewNode>& replacement);
    // Removes `node` and its children; false when it is not in this tree.
    bool RemoveNode(const std::shared_ptr<TreeViewNode>& node);
    // Removes every node and clears the selection.
    void ClearNodes();
    std::vector<std::shared_ptr<TreeViewNode>> GetRootNodes() const;
    // The parent of `node`, or null for a root node.
    std::shared_ptr<TreeViewNode> GetParentNode(const std::shared_ptr<TreeViewNode>& node) const;
    bool Contains(const std::shared_ptr<TreeViewNode>& node) const;

    // Opens (or closes) `node`; when its state changes, the node's properties hear of it
    // (OnExpand/OnCollapse) and "expand"/"collapse" fires.
    void Expand(const std::shared_ptr<TreeViewNode>& node, bool expand = true);
    void Collapse(const std::shared_ptr<TreeViewNode>& node);

    // The rows a user sees: root nodes and the children of open nodes, depth first.
    std::vector<TreeViewRow> VisibleRows() const;
    // The icon of `node` from its properties (null when they name none).
    std::shared_ptr<Icon> NodeIcon(const std::shared_ptr<TreeViewNode>& node) const;
    // Recomputes the content height (visible rows times RowHeight) and asks the backend to
    // redraw.
    void ComputeSizeAndRedraw();
    int ContentHeight() const;
    static constexpr int RowHeight = 18;

    std::vector<std::shared_ptr<TreeViewNode>> GetSelectedNodes() const;
    // Selects `node` alone, or adds it to the selection when `add` is true; fires
    // "SelectionChanged" when the selection changed.
    void SelectNode(const std::shared_ptr<TreeViewNode>& node, bool add = false);
    void ClearSelection();

    // A user's click on `node`: selects it (Control adds to the selection), then fires
    // "mousedown". Ignored when the tree is disabled.
    bool UserClick(const std::shared_ptr<TreeViewNode>& node, unsigned modifiers = ModNone);
    // A user's double click: selects the node, calls its properties' OnDoubleClick, fires
    // "doubleclick".
    bool UserDoubleClick(const std::shared_ptr<TreeViewNode>& node);
    // A user's click on the node's opener: toggles it.
    bool UserToggle(const std::shared_ptr<TreeViewNode>& node);
    // A user starting to drag `node`: true, and "dragstart" fires, when its properties allow.
    bool UserStartDrag(const std::shared_ptr<TreeViewNode>& node);
    // The context menu to open on `node` (empty for none); selects the node first.
    std::string UserContextMenu(const std::shared_ptr<TreeViewNode>& node);

private:
    std::shared_ptr<treeViewData> treeViewRecord;
};

}  // namespace ZML
