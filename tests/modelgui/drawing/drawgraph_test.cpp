// Drawing a model onto the canvas: positions and layout, colours and states, ports, read-only
// models, text annotations and the connections between what was drawn.

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "LattixBasic/Color.h"
#include "LattixBasic/IfProcess.h"
#include "QuarnLog/CaptureSink.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/StringData.h"
#include "drawing_support.h"
#include "modelgui/DrawGraph.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "modelgui/TextNode.h"
#include "modelgui/TrueFalseConnectionPoint.h"
#include "modelgui/UpdateOperatorInfo.h"
#include "qpmg/PreferenceManager.h"
#include "qtxt/Text.h"

namespace {

using namespace quarn::modelgui;
using namespace drawtest;
using ZML::FlowGraphNodeEx;
using ZML::FlowGraphPart;

class DrawGraphTest : public ::testing::Test {
protected:
    std::shared_ptr<FlowGraphPart> canvas = std::make_shared<FlowGraphPart>();
    std::shared_ptr<lx::Model> model = std::make_shared<lx::Model>();

    void Draw(bool showHidden = false, bool forceLayout = false) {
        DrawGraph::DrawProcess(canvas, model, nullptr, false, showHidden, forceLayout);
    }
    std::shared_ptr<OperatorNode> NodeOf(const std::shared_ptr<lx::Operator>& op) {
        return GUIUtils::FindOperatorNode(canvas, op);
    }
};

TEST_F(DrawGraphTest, StoredPositionsAreKeptAndLayoutRunsOnlyWhenTwoAreMissing) {
    struct Case {
        const char* name;
        int positioned;  // of three operators
        bool withText;
        bool forceLayout;
        bool laidOut;
    };
    const Case cases[] = {
        {"all positioned", 3, false, false, false},
        {"one missing", 2, false, false, false},
        {"two missing", 1, false, false, true},
        {"two missing, with text", 1, true, false, false},
        {"all positioned, forced", 3, false, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        model = std::make_shared<lx::Model>();
        std::vector<std::shared_ptr<lx::Operator>> ops;
        for (int i = 0; i < 3; ++i) {
            ops.push_back(AddStep(model, L"Step" + std::to_wstring(i)));
            if (i < c.positioned) SetPosition(ops.back(), 500 + 300 * i, 700);
        }
        lx::Operator::ConnectParent(ops[1], ops[0], ops[0]->GetPort(L"Out"),
                                    ops[1]->GetPort(L"In"));
        if (c.withText) {
            auto note = std::make_shared<lx::DictionaryData>();
            (*note)[L"String"] = L"note";
            model->GetTextAnnotations()->Append(note);
        }
        Draw(false, c.forceLayout);
        bool moved = false;
        for (int i = 0; i < c.positioned; ++i) {
            const auto at = NodeOf(ops[i])->GetLocation();
            if (at != ZML::FlowGraphLocation{500 + 300 * i, 700}) moved = true;
        }
        for (int i = c.positioned; i < 3; ++i) {
            if (NodeOf(ops[i])->GetLocation() != ZML::FlowGraphLocation{}) moved = true;
        }
        EXPECT_EQ(moved, c.laidOut);
        EXPECT_TRUE(UpdateOperatorInfo::IsUpdating());
    }
}

TEST_F(DrawGraphTest, LayoutMovesAreWrittenBackButDrawingMovesAreNot) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    lx::Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
    auto token = canvas->OnNodeChanged([this](const std::shared_ptr<FlowGraphNodeEx>& node) {
        UpdateOperatorInfo::UpdateInfo(canvas, node);
    });
    Draw();
    // Layout ran after the updating flag was set again, so the host's write-back kept its moves.
    ASSERT_TRUE(a->HasAttribute(L"PositionX"));
    EXPECT_EQ(a->GetAttribute(L"PositionX")->ToString(),
              std::to_wstring(NodeOf(a)->GetLocation().x));

    // A second pass draws from the stored positions and writes nothing during the pass.
    a->SetAttribute(L"PositionX", std::make_shared<lx::IntData>(900));
    Draw();
    EXPECT_EQ(NodeOf(a)->GetLocation().x, 900);
}

TEST_F(DrawGraphTest, ColoursAndNodeTypesFollowTheColourCategory) {
    struct Case {
        const wchar_t* category;
        std::uint32_t fill;
        std::uint32_t outline;
        int type;
    };
    const Case cases[] = {
        {L"Input_Output", 13951992, 3307742, 1},
        {L"SUBMODEL", 13226709, 7374992, 3},
        {L"deprecated", 14737632, 10526880, 0},
        {L"Default", 15135466, 5810291, 0},
        {L"Not_Found", 8684799, 1316095, 0},
        {L"Unheard Of", 15135466, 5810291, 0},
        {L"Port_Input_Output", 16504529, 15754578, 2},
        {L"port_default_data_text", 5268580, 5810291, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(qtxt::narrow(c.category));
        model = std::make_shared<lx::Model>();
        auto op = AddStep(model, L"Op");
        op->SetColorCategory(c.category);
        Draw();
        auto node = NodeOf(op);
        EXPECT_EQ(node->GetColor(), c.fill);
        EXPECT_EQ(node->GetOutlineColor(), c.outline);
        EXPECT_EQ(node->GetFlowNodeType(), c.type);
        EXPECT_EQ(DrawGraph::GetFillColor(c.category), c.fill);
    }
}

TEST_F(DrawGraphTest, StateTakesTheFirstMatch) {
    auto errorOp = AddStep(model, L"E");
    errorOp->SetErrorMessage(L"bad");
    errorOp->SetWarningMessage(L"meh");
    auto warningOp = AddStep(model, L"W");
    warningOp->SetWarningMessage(L"meh");
    warningOp->SetExecuted(true);
    auto infoOp = AddStep(model, L"I");
    infoOp->SetInfoMessage(L"fyi");
    auto doneOp = AddStep(model, L"X");
    doneOp->SetExecuted(true);
    auto runningOp = AddStep(model, L"R");
    runningOp->SetProgressBounds(0, 50);
    runningOp->SetProgress(20);
    auto idleOp = AddStep(model, L"Idle");
    Draw();
    EXPECT_EQ(NodeOf(errorOp)->GetState(), FlowGraphNodeEx::Error);
    EXPECT_EQ(NodeOf(warningOp)->GetState(), FlowGraphNodeEx::Warning);
    EXPECT_EQ(NodeOf(infoOp)->GetState(), FlowGraphNodeEx::Information);
    EXPECT_EQ(NodeOf(doneOp)->GetState(), FlowGraphNodeEx::Executed);
    EXPECT_EQ(NodeOf(runningOp)->GetState(), FlowGraphNodeEx::Running);
    EXPECT_EQ(NodeOf(runningOp)->GetProgress(), 20);
    EXPECT_EQ(NodeOf(runningOp)->GetProgressMaximum(), 50);
    EXPECT_EQ(NodeOf(idleOp)->GetState(), FlowGraphNodeEx::Idle);
}

TEST_F(DrawGraphTest, CaptionTooltipAndIcon) {
    auto op = AddStep(model, L"Add them");
    op->SetDescription(L"Adds two numbers.");
    op->SetDisplayCategory(L"Arithmetic");
    auto iconed = AddStep(model, L"Gear");
    iconed->SetIcon(L"gear.ico");
    Draw();
    auto node = NodeOf(op);
    EXPECT_EQ(node->GetCaption(), L"Add them");
    EXPECT_EQ(node->GetTooltip(), L"TEST.Step\nAdds two numbers.");
    // "OpCategory_Arithmetic.ico" resolves to the category icon of the resource folder.
    EXPECT_NE(node->GetIcon().find(L"arithmetic"), std::wstring::npos);
    EXPECT_NE(NodeOf(iconed)->GetIcon().find(L"gear.svg"), std::wstring::npos);

    setenv("LATTIX_DEVELOPMENT_INFO", "1", 1);
    Draw();
    unsetenv("LATTIX_DEVELOPMENT_INFO");
    EXPECT_EQ(NodeOf(op)->GetTooltip(),
              L"TEST.Step\nAdds two numbers.\n\n(ICONNAME=OpCategory_Arithmetic.ico");
}

TEST_F(DrawGraphTest, PrivatePortsNeverAndHiddenPortsOnRequest) {
    auto op = AddStep(model, L"Op");
    auto hidden = AddTypedPort(op, L"Hidden", lx::PortDirection::Input);
    hidden->SetIsHidden(true);
    auto secret = AddTypedPort(op, L"Secret", lx::PortDirection::Input);
    secret->SetPrivate(true);
    for (bool showHidden : {false, true}) {
        Draw(showHidden);
        EXPECT_NE(GUIUtils::FindPortDescriptionPoint(canvas, op, op->GetPort(L"In")), nullptr);
        EXPECT_EQ(GUIUtils::FindPortDescriptionPoint(canvas, op, hidden) != nullptr, showHidden);
        EXPECT_EQ(GUIUtils::FindPortDescriptionPoint(canvas, op, secret), nullptr);
    }
}

TEST_F(DrawGraphTest, PortPointsDirectionLimitAndOpenInputColour) {
    auto op = AddStep(model, L"Op");
    auto optional = AddTypedPort(op, L"Optional", lx::PortDirection::Input);
    optional->SetOptional(true);
    auto valued = AddTypedPort(op, L"Valued", lx::PortDirection::Input);
    valued->SetData(std::make_shared<lx::IntData>(3));
    Draw();
    auto in = GUIUtils::FindPortDescriptionPoint(canvas, op, op->GetPort(L"In"));
    auto out = GUIUtils::FindPortDescriptionPoint(canvas, op, op->GetPort(L"Out"));
    EXPECT_TRUE(in->IsInput());
    EXPECT_EQ(in->GetMaxConnections(), 1);
    EXPECT_TRUE(out->IsOutput());
    EXPECT_EQ(out->GetMaxConnections(), 0);
    const std::uint32_t red = 6579455;
    EXPECT_EQ(in->GetColor(), red);
    EXPECT_NE(out->GetColor(), red);
    EXPECT_NE(GUIUtils::FindPortDescriptionPoint(canvas, op, optional)->GetColor(), red);
    EXPECT_NE(GUIUtils::FindPortDescriptionPoint(canvas, op, valued)->GetColor(), red);
}

TEST_F(DrawGraphTest, PortCaptionsShowDataWhenTheCanvasAsks) {
    auto op = AddStep(model, L"Op");
    auto own = AddTypedPort(op, L"Own", lx::PortDirection::Input);
    own->SetDisplayName(L"Count");
    own->SetDescription(L"How many.");
    own->SetData(std::make_shared<lx::IntData>(7));
    auto byDefault = AddTypedPort(op, L"ByDefault", lx::PortDirection::Input);
    byDefault->SetDefaultData(std::make_shared<lx::IntData>(4));
    auto empty = AddTypedPort(op, L"Text", lx::PortDirection::Input, StringType());
    empty->SetData(std::make_shared<lx::StringData>(L""));

    struct Case {
        bool data;
        bool names;
        std::wstring own, byDefault, empty;
        bool italics;
    };
    const Case cases[] = {
        {false, true, L"Count", L"ByDefault", L"Text", false},
        {true, true, L"Count=7", L"ByDefault=4", L"Text=\"\"", false},
        {true, false, L"7", L"4", L"\"\"", true},
    };
    for (const auto& c : cases) {
        canvas->SetShowPortData(c.data);
        canvas->SetShowPortNames(c.names);
        Draw();
        auto ownPoint = GUIUtils::FindPortDescriptionPoint(canvas, op, own);
        auto defaultPoint = GUIUtils::FindPortDescriptionPoint(canvas, op, byDefault);
        EXPECT_EQ(ownPoint->GetCaption(), c.own);
        EXPECT_EQ(defaultPoint->GetCaption(), c.byDefault);
        EXPECT_EQ(GUIUtils::FindPortDescriptionPoint(canvas, op, empty)->GetCaption(), c.empty);
        EXPECT_EQ(ownPoint->GetItalics(), c.italics);
        if (c.data) {
            EXPECT_EQ(ownPoint->GetTooltip(), L"How many.\nCount = 7 (TAMARIN.Int)");
        } else {
            EXPECT_EQ(ownPoint->GetTooltip(), L"How many.");
        }
        if (c.italics) {
            EXPECT_EQ(ownPoint->GetCaptionColor(), 0u);
            EXPECT_EQ(defaultPoint->GetCaptionColor(), 5268580u);
        }
    }
}

TEST_F(DrawGraphTest, ModelPortsBecomePortNodesWithTheirAliasLinks) {
    auto op = AddStep(model, L"Op");
    auto input = model->AliasPort(op->GetPort(L"In"), L"Source");
    auto output = model->AliasPort(op->GetPort(L"Out"), L"Result");
    auto native = model->AddNewPort(L"Native", lx::PortDirection::Input);
    native->SetNative(true);
    input->SetAttribute(L"PositionX", std::make_shared<lx::IntData>(11));
    input->SetAttribute(L"PositionY", std::make_shared<lx::IntData>(12));
    input->SetAttribute(L"Orientation", std::make_shared<lx::IntData>(1));
    SetPosition(op, 200, 12);  // one element without a position: no layout
    Draw();

    auto inNode = GUIUtils::FindPortNode(canvas, input);
    auto outNode = GUIUtils::FindPortNode(canvas, output);
    ASSERT_TRUE(inNode && outNode);
    EXPECT_EQ(GUIUtils::FindPortNode(canvas, native), nullptr);
    EXPECT_EQ(inNode->GetCaption(), L"Source");
    EXPECT_EQ(inNode->GetColor(), 16504529u);
    EXPECT_EQ(inNode->GetOutlineColor(), 15754578u);
    EXPECT_EQ(inNode->GetFlowNodeType(), 2);
    EXPECT_EQ(inNode->GetLocation(), (ZML::FlowGraphLocation{11, 12}));
    EXPECT_EQ(inNode->GetOrientation(), FlowGraphNodeEx::TopToBottom);
    auto inPoint = inNode->GetFlowConnectionPoints().at(0);
    auto outPoint = outNode->GetFlowConnectionPoints().at(0);
    EXPECT_TRUE(inPoint->IsOutput());
    EXPECT_TRUE(outPoint->IsInput());
    EXPECT_EQ(outPoint->GetMaxConnections(), 1);

    auto opIn = GUIUtils::FindPortDescriptionPoint(canvas, op, op->GetPort(L"In"));
    auto opOut = GUIUtils::FindPortDescriptionPoint(canvas, op, op->GetPort(L"Out"));
    EXPECT_NE(canvas->FindConnection(opIn, inPoint), nullptr);
    EXPECT_NE(canvas->FindConnection(outPoint, opOut), nullptr);
    EXPECT_EQ(canvas->GetConnectionCount(), 2u);
}

TEST_F(DrawGraphTest, DataLinksAreColouredByStatusAndFlowLinksDrawnOnce) {
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    auto c = AddStep(model, L"C");
    auto text = AddTypedPort(c, L"Text", lx::PortDirection::Input, StringType());
    auto flag = AddTypedPort(a, L"Flag", lx::PortDirection::Output, BoolType());
    for (const auto& op : {a, b}) {
        op->SetAttribute(L"FlowControl", std::make_shared<lx::BoolData>(true));
    }
    auto matching = lx::Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
    auto mismatched = lx::Operator::ConnectParent(c, a, flag, c->GetPort(L"In"));
    auto converted = lx::Operator::ConnectParent(c, b, b->GetPort(L"Out"), text);
    Draw();
    auto colourOf = [this](const std::shared_ptr<lx::PortConnection>& link) {
        auto connection = canvas->FindConnection(
            GUIUtils::FindPortDescriptionPoint(canvas, link->GetChild(), link->GetChildPort()),
            GUIUtils::FindPortDescriptionPoint(canvas, link->GetParent(), link->GetParentPort()));
        EXPECT_NE(connection, nullptr);
        return connection ? connection->GetColor() : 0u;
    };
    EXPECT_EQ(colourOf(mismatched), mismatched->GetStatus() == 1 ? 6579455u : 52685u);
    EXPECT_EQ(converted->GetStatus(), 2);
    EXPECT_EQ(colourOf(converted), 52685u);
    EXPECT_EQ(colourOf(matching), ZML::FlowGraphConnectionEx().GetColor());

    // The engine made A a flow parent of B with the data link; it is drawn once, Next to Previous.
    auto flow = canvas->FindConnection(GUIUtils::FindPrevPoint(canvas, b),
                                       GUIUtils::FindNextPoint(canvas, a));
    EXPECT_NE(flow, nullptr);
    EXPECT_EQ(canvas->GetConnectionCount(), 4u);
    // "Next" comes first on a node that has both.
    EXPECT_EQ(NodeOf(a)->GetFlowConnectionPoints().at(0)->GetCaption(), L"Next");
    EXPECT_EQ(GUIUtils::FindPrevPoint(canvas, c), nullptr);
}

TEST_F(DrawGraphTest, IfOperatorsGetBranchPointsAndTheirTails) {
    auto branch = std::make_shared<LattixBasic::IfProcess>();
    model->AddOperator(branch);
    auto yes = AddStep(model, L"Yes");
    auto no = AddStep(model, L"No");
    branch->AddIfTail(yes);
    branch->AddElseTail(no);
    Draw();
    const auto points = NodeOf(branch)->GetFlowConnectionPoints();
    ASSERT_GE(points.size(), 2u);
    auto truePoint = std::dynamic_pointer_cast<TrueFalseConnectionPoint>(points[points.size() - 2]);
    auto falsePoint = std::dynamic_pointer_cast<TrueFalseConnectionPoint>(points.back());
    ASSERT_TRUE(truePoint && falsePoint);
    EXPECT_EQ(truePoint->GetCaption(), L"True");
    EXPECT_EQ(falsePoint->GetCaption(), L"False");
    EXPECT_NE(canvas->FindConnection(GUIUtils::FindPrevPoint(canvas, yes), truePoint), nullptr);
    EXPECT_NE(canvas->FindConnection(GUIUtils::FindPrevPoint(canvas, no), falsePoint), nullptr);
    EXPECT_EQ(GUIUtils::FindBodyPoint(canvas, branch), nullptr);
    EXPECT_EQ(GUIUtils::FindTestPoint(canvas, branch), nullptr);
}

TEST_F(DrawGraphTest, LockedOrReadonlyModelsGiveAReadonlyCanvas) {
    struct Case {
        bool readonly, locked, outerLocked, expected;
    };
    const Case cases[] = {{false, false, false, false},
                          {true, false, false, true},
                          {false, true, false, true},
                          {false, false, true, true}};
    for (const auto& c : cases) {
        model->SetReadonly(c.readonly);
        model->SetLocked(c.locked);
        auto outer = std::make_shared<lx::Model>();
        outer->SetLocked(c.outerLocked);
        DrawGraph::DrawProcess(canvas, model, outer, false, false, false);
        EXPECT_EQ(canvas->IsReadonly(), c.expected);
    }
    // A read-only canvas refuses the user's gestures.
    auto a = AddStep(model, L"A");
    auto b = AddStep(model, L"B");
    model->SetLocked(true);
    Draw();
    EXPECT_EQ(canvas->UserConnect(GUIUtils::FindPortDescriptionPoint(canvas, a, a->GetPort(L"Out")),
                                  GUIUtils::FindPortDescriptionPoint(canvas, b, b->GetPort(L"In"))),
              nullptr);
}

TEST_F(DrawGraphTest, TextAnnotationsWithFonts) {
    auto list = model->GetTextAnnotations();
    auto plain = std::make_shared<lx::DictionaryData>();
    (*plain)[L"String"] = L"A note";
    (*plain)[L"PositionX"] = 40;
    (*plain)[L"PositionY"] = 50;
    list->Append(plain);
    auto styled = std::make_shared<lx::DictionaryData>();
    (*styled)[L"String"] = L"Styled";
    (*styled)[L"Font"] = L"Serif";
    (*styled)[L"Size"] = 1.25;
    (*styled)[L"Bold"] = true;
    (*styled)[L"Underline"] = true;
    (*styled)[L"Color"] = std::make_shared<LattixBasic::Color>(1.0, 0.5, 0.2);
    list->Append(styled);
    auto sizeless = std::make_shared<lx::DictionaryData>();
    (*sizeless)[L"String"] = L"Sizeless";
    (*sizeless)[L"Font"] = L"Mono";
    (*sizeless)[L"Italics"] = true;
    list->Append(sizeless);
    list->Append(std::make_shared<lx::IntData>(3));  // not a dictionary: logged, not drawn

    QuarnLog::CaptureSink log;
    Draw();
    EXPECT_TRUE(log.Contains("Text annotation 4"));
    std::vector<std::shared_ptr<TextNode>> texts;
    for (const auto& node : canvas->GetNodes())
        if (auto text = std::dynamic_pointer_cast<TextNode>(node)) texts.push_back(text);
    ASSERT_EQ(texts.size(), 3u);
    EXPECT_EQ(texts[0]->GetCaption(), L"A note");
    EXPECT_EQ(texts[0]->GetLocation(), (ZML::FlowGraphLocation{40, 50}));
    EXPECT_EQ(texts[0]->GetDictionary(), plain);
    EXPECT_TRUE(texts[0]->IsTextOnly());
    EXPECT_EQ(texts[0]->GetTextFont(), ZML::FlowGraphFont{});

    EXPECT_EQ(texts[1]->GetTextFont(), (ZML::FlowGraphFont{L"Serif", 13, true, false, true}));
    EXPECT_EQ(texts[1]->GetTextColor(), 255u | (127u << 8) | (51u << 16));
    EXPECT_EQ(texts[2]->GetTextFont(), (ZML::FlowGraphFont{L"Mono", 15, false, true, false}));
}

TEST_F(DrawGraphTest, TooltipDelayComesFromThePreferenceInSeconds) {
    auto prefs = std::make_shared<qpmg::PreferenceManager>(std::string(LATTIX_BINARY_DIR) +
                                                           "/test-home/d2b-draw-prefs");
    qpmg::SetPreferenceManager(prefs);
    prefs->Set("zml", "bubble_help_delay", 1.5);
    AddStep(model, L"Op");
    Draw();
    qpmg::SetPreferenceManager(nullptr);
    EXPECT_EQ(canvas->GetTooltipDelay(), 1500);
}

TEST_F(DrawGraphTest, AnEmptyModelLeavesTheCanvasAlone) {
    AddStep(model, L"Op");
    Draw();
    DrawGraph::DrawProcess(canvas, nullptr, nullptr, false, false, false);
    EXPECT_EQ(canvas->GetNodeCount(), 1u);
}

TEST_F(DrawGraphTest, ABadOrientationIsLoggedAndIgnored) {
    auto op = AddStep(model, L"Op");
    op->SetAttribute(L"Orientation", std::make_shared<lx::IntData>(9));
    QuarnLog::CaptureSink log;
    Draw();
    EXPECT_TRUE(log.Contains("The orientation \"9\" of \"Op\""));
    EXPECT_EQ(NodeOf(op)->GetOrientation(), FlowGraphNodeEx::LeftToRight);
}

}  // namespace
