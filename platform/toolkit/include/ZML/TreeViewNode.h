#pragma once

#include <any>
#include <memory>
#include <string>
#include <vector>

namespace ZML {

struct treeViewNodeData;
class TreeView;

// One node of a tree view: a text, a kind (the name under which the tree finds the node's
// TreeViewNodeProperties; empty for the default kind), any data its owner attaches, and child
// nodes. Build a node and its children first, then hand it to TreeView::AddNode or ReplaceNode.
class TreeViewNode : public std::enable_shared_from_this<TreeViewNode> {
public:
    explicit TreeViewNode(std::wstring text = {}, std::string kind = {}, std::any data = {});
    ~TreeViewNode();
    TreeViewNode(const TreeViewNode&) = delete;
    TreeViewNode& operator=(const TreeViewNode&) = delete;

    const std::wstring& Text() const;
    void TextSet(const std::wstring& text);
    const std::string& NodeKind() const;
    const std::any& Data() const;
    void DataSet(std::any data);

    // Appends `child` (which must not have a parent yet) and returns it.
    std::shared_ptr<TreeViewNode> AddChild(const std::shared_ptr<TreeViewNode>& child);
    std::vector<std::shared_ptr<TreeViewNode>> Children() const;
    std::shared_ptr<TreeViewNode> Parent() const;

    bool IsExpanded() const;
    bool IsSelected() const;

private:
    friend class TreeView;
    void ParentSet(const std::shared_ptr<TreeViewNode>& parent);
    void ExpandedSet(bool expanded);
    void SelectedSet(bool selected);
    void RemoveChildAt(std::size_t index);
    void InsertChildAt(std::size_t index, const std::shared_ptr<TreeViewNode>& child);

    std::shared_ptr<treeViewNodeData> treeViewNodeRecord;
};

}  // namespace ZML
