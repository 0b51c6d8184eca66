#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "QuarnLog/Exception.h"
#include "ZML/TreeView.h"

using namespace ZML;

namespace {

using NodePtr = std::shared_ptr<TreeViewNode>;

// Categories remember their open state, as a palette does.
struct CategoryProperties : TreeViewNodeProperties {
    std::map<std::wstring, bool> expanded;
    void OnExpand(const NodePtr& node) override { expanded[node->Text()] = true; }
    void OnCollapse(const NodePtr& node) override { expanded[node->Text()] = false; }
    std::wstring GetIconName(const NodePtr& node) override {
        return node->IsExpanded() ? L"ToolboxOpen.ico" : L"ToolboxClosed.ico";
    }
};

struct OperatorProperties : TreeViewNodeProperties {
    std::vector<std::wstring> doubleClicked;
    bool CanDrag(const NodePtr&) override { return true; }
    std::string GetRibbonContextMenu(const NodePtr& node) override {
        return node->Text() == L"Mine" ? "UserOperatorTreeViewMenu" : "OperatorTreeViewMenu";
    }
    void OnDoubleClick(const NodePtr& node) override { doubleClicked.push_back(node->Text()); }
};

NodePtr Category(const std::wstring& name, std::initializer_list<const wchar_t*> operators) {
    auto node = std::make_shared<TreeViewNode>(name);
    for (const auto* op : operators) {
        node->AddChild(std::make_shared<TreeViewNode>(op, "Operator"));
    }
    return node;
}

std::vector<std::wstring> Texts(const std::vector<TreeViewRow>& rows) {
    std::vector<std::wstring> texts;
    for (const auto& row : rows) {
        texts.push_back(std::wstring(static_cast<std::size_t>(row.depth), L' ') + row.node->Text());
    }
    return texts;
}

class TreeViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        tree->SetNodeProperties("", categories);
        tree->SetNodeProperties("Operator", operators);
        favorites = tree->AddNode(Category(L"Favorites", {L"Add"}));
        arithmetic = tree->AddNode(Category(L"Arithmetic", {L"Add", L"Mine"}));
    }
    std::shared_ptr<TreeView> tree = std::make_shared<TreeView>("OperatorTreeView");
    std::shared_ptr<CategoryProperties> categories = std::make_shared<CategoryProperties>();
    std::shared_ptr<OperatorProperties> operators = std::make_shared<OperatorProperties>();
    NodePtr favorites;
    NodePtr arithmetic;
};

}  // namespace

TEST_F(TreeViewTest, KindsChooseTheirProperties) {
    auto add = arithmetic->Children()[0];
    auto mine = arithmetic->Children()[1];
    EXPECT_EQ(tree->PropertiesFor(arithmetic), categories);
    EXPECT_EQ(tree->PropertiesFor(add), operators);
    EXPECT_EQ(tree->PropertiesFor(std::make_shared<TreeViewNode>(L"x", "Unknown")), categories);

    EXPECT_FALSE(tree->UserStartDrag(arithmetic));
    EXPECT_TRUE(tree->UserStartDrag(add));
    EXPECT_EQ(tree->UserContextMenu(add), "OperatorTreeViewMenu");
    EXPECT_EQ(tree->UserContextMenu(mine), "UserOperatorTreeViewMenu");
    EXPECT_EQ(tree->UserContextMenu(arithmetic), "");
    EXPECT_TRUE(tree->UserDoubleClick(mine));
    EXPECT_EQ(operators->doubleClicked, std::vector<std::wstring>{L"Mine"});
}

TEST_F(TreeViewTest, ExpandShowsChildrenAndTellsTheProperties) {
    EXPECT_EQ(Texts(tree->VisibleRows()), (std::vector<std::wstring>{L"Favorites", L"Arithmetic"}));
    EXPECT_EQ(tree->NodeIcon(arithmetic)->RequestedName(), L"ToolboxClosed.ico");
    std::vector<std::string> events;
    tree->OnMessage("expand", [&events](const Event& e) {
        events.push_back("expand:" + std::string(e.text.begin(), e.text.end()));
    });
    tree->OnMessage("collapse", [&events](const Event&) { events.push_back("collapse"); });

    tree->Expand(arithmetic);
    tree->Expand(arithmetic);  // already open: nothing more
    EXPECT_EQ(Texts(tree->VisibleRows()),
              (std::vector<std::wstring>{L"Favorites", L"Arithmetic", L" Add", L" Mine"}));
    EXPECT_EQ(tree->NodeIcon(arithmetic)->RequestedName(), L"ToolboxOpen.ico");
    tree->ComputeSizeAndRedraw();
    EXPECT_EQ(tree->ContentHeight(), 4 * TreeView::RowHeight);
    EXPECT_TRUE(tree->UserToggle(arithmetic));
    EXPECT_EQ(categories->expanded[L"Arithmetic"], false);
    EXPECT_EQ(events, (std::vector<std::string>{"expand:Arithmetic", "collapse"}));
}

TEST_F(TreeViewTest, ReplaceKeepsThePlaceAndDropsTheOldSelection) {
    auto oldAdd = favorites->Children()[0];
    tree->SelectNode(oldAdd);
    int selectionChanges = 0;
    tree->OnMessage("SelectionChanged", [&selectionChanges](const Event&) { ++selectionChanges; });

    auto fresh = Category(L"Favorites", {L"Sub", L"Mul"});
    EXPECT_TRUE(tree->ReplaceNode(favorites, fresh));
    EXPECT_FALSE(tree->ReplaceNode(favorites, Category(L"Again", {})));
    auto roots = tree->GetRootNodes();
    ASSERT_EQ(roots.size(), 2u);
    EXPECT_EQ(roots[0], fresh);
    EXPECT_EQ(roots[1], arithmetic);
    EXPECT_TRUE(tree->GetSelectedNodes().empty());
    EXPECT_FALSE(oldAdd->IsSelected());
    EXPECT_EQ(selectionChanges, 1);
    EXPECT_FALSE(tree->Contains(oldAdd));
    EXPECT_EQ(tree->GetParentNode(oldAdd), nullptr);
    EXPECT_EQ(tree->GetParentNode(fresh->Children()[1]), fresh);
    EXPECT_EQ(tree->GetParentNode(fresh), nullptr);
}

TEST_F(TreeViewTest, SelectionByClicksAndControlClicks) {
    auto add = arithmetic->Children()[0];
    auto mine = arithmetic->Children()[1];
    std::vector<NodePtr> clicked;
    tree->OnMessage("mousedown", [&clicked](const Event& e) {
        clicked.push_back(std::any_cast<NodePtr>(e.detail));
    });
    tree->UserClick(add);
    tree->UserClick(mine, ModControl);
    EXPECT_EQ(tree->GetSelectedNodes(), (std::vector<NodePtr>{add, mine}));
    tree->UserClick(favorites);
    EXPECT_EQ(tree->GetSelectedNodes(), std::vector<NodePtr>{favorites});
    EXPECT_FALSE(add->IsSelected());
    EXPECT_EQ(clicked, (std::vector<NodePtr>{add, mine, favorites}));

    tree->Disable();
    EXPECT_FALSE(tree->UserClick(add));
    tree->Enable();
    tree->ClearNodes();
    EXPECT_TRUE(tree->GetRootNodes().empty());
    EXPECT_TRUE(tree->GetSelectedNodes().empty());
}

TEST_F(TreeViewTest, RefusesNodesFromElsewhere) {
    auto stranger = std::make_shared<TreeViewNode>(L"stranger");
    EXPECT_THROW(tree->AddNode(std::make_shared<TreeViewNode>(L"x"), stranger),
                 QuarnLog::Exception);
    EXPECT_THROW(tree->AddNode(arithmetic), QuarnLog::Exception);
    EXPECT_THROW(tree->SelectNode(stranger), QuarnLog::Exception);
    EXPECT_THROW(tree->Expand(stranger), QuarnLog::Exception);
    EXPECT_FALSE(tree->RemoveNode(stranger));
    EXPECT_TRUE(tree->RemoveNode(arithmetic->Children()[0]));
    EXPECT_EQ(arithmetic->Children().size(), 1u);
}
