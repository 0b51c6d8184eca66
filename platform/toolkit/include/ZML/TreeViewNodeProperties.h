#pragma once

#include <memory>
#include <string>

namespace ZML {

class TreeViewNode;

// How a tree view treats the nodes of one kind; register it with TreeView::SetNodeProperties.
// Each operation has a default that a subclass overrides where the kind needs more.
class TreeViewNodeProperties {
public:
    virtual ~TreeViewNodeProperties() = default;

    // Whether the user may drag `node` out of the tree. Default: no.
    virtual bool CanDrag(const std::shared_ptr<TreeViewNode>& node);
    // The name of the context menu (declared in a dialog script) opened on `node`. Default:
    // none (empty).
    virtual std::string GetRibbonContextMenu(const std::shared_ptr<TreeViewNode>& node);
    // A double click on `node`. Default: nothing.
    virtual void OnDoubleClick(const std::shared_ptr<TreeViewNode>& node);
    // `node` was opened or closed (by the user or by TreeView::Expand). Default: nothing.
    virtual void OnExpand(const std::shared_ptr<TreeViewNode>& node);
    virtual void OnCollapse(const std::shared_ptr<TreeViewNode>& node);
    // The icon file name shown for `node` in its present state (it may depend on
    // node->IsExpanded()), loaded with qzml_IconCreateFromFile. Default: none (empty).
    virtual std::wstring GetIconName(const std::shared_ptr<TreeViewNode>& node);
};

}  // namespace ZML
