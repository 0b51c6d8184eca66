// Which far ends each receiving point accepts, asked both directly and through the canvas gesture.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/TestConnectionPoint.h"
#include "modelgui/TrueFalseConnectionPoint.h"

namespace {

using namespace quarn::modelgui;
using Velmar::Lattix::ObjectName;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;
using PointPtr = std::shared_ptr<ZML::FlowGraphConnectionPointEx>;

std::shared_ptr<Port> TypedPort(const std::vector<std::wstring>& typeNames) {
    auto port = Port::Create(L"value", PortDirection::Output);
    std::vector<ObjectName> types;
    for (const auto& name : typeNames) types.emplace_back(L"TAMARIN", name);
    port->SetSupportedTypes(types);
    return port;
}

PointPtr PortPoint(const std::vector<std::wstring>& typeNames) {
    auto point = std::make_shared<PortDescriptionConnectionPoint>();
    point->SetThePort(TypedPort(typeNames));
    point->SetOutput();
    return point;
}

PointPtr FlowPoint() {
    auto point = std::make_shared<FlowControlConnectionPoint>();
    point->SetOutput();
    return point;
}

PointPtr TrueFalse(bool isTrue) {
    auto point = std::make_shared<TrueFalseConnectionPoint>();
    point->SetIsTruePoint(isTrue);
    return point;
}

struct FarEnd {
    const char* name;
    std::function<PointPtr()> make;
};

const std::vector<FarEnd>& FarEnds() {
    static const std::vector<FarEnd> ends = {
        {"bool port", [] { return PortPoint({L"Bool"}); }},
        {"raster port", [] { return PortPoint({L"Raster"}); }},
        {"number port",
         [] {
             return PortPoint({L"Double", L"Int"});
         }},
        {"bool among others",
         [] {
             return PortPoint({L"Raster", L"Bool", L"Int"});
         }},
        {"port point without port",
         [] { return std::make_shared<PortDescriptionConnectionPoint>(); }},
        {"next", FlowPoint},
        {"true", [] { return TrueFalse(true); }},
        {"false", [] { return TrueFalse(false); }},
        {"body", [] { return std::make_shared<BodyConnectionPoint>(); }},
        {"test", [] { return std::make_shared<TestConnectionPoint>(); }},
        {"null", [] { return PointPtr(); }},
    };
    return ends;
}

struct Receiver {
    const char* name;
    std::function<PointPtr()> make;
    // One answer per entry of FarEnds(), in order.
    std::vector<bool> accepts;
};

TEST(ConnectionRules, MatrixFromTheReceivingSide) {
    const std::vector<Receiver> receivers = {
        {"port description",
         [] { return std::make_shared<PortDescriptionConnectionPoint>(); },
         {true, true, true, true, true, false, false, false, false, false, false}},
        {"previous",
         [] { return std::make_shared<FlowControlConnectionPoint>(); },
         {false, false, false, false, false, true, true, true, true, false, false}},
        {"test",
         [] { return std::make_shared<TestConnectionPoint>(); },
         {true, false, false, true, false, false, false, false, false, false, false}},
    };
    for (const auto& receiver : receivers) {
        ASSERT_EQ(receiver.accepts.size(), FarEnds().size());
        for (std::size_t i = 0; i < FarEnds().size(); ++i) {
            auto point = receiver.make();
            EXPECT_EQ(point->CanConnect(FarEnds()[i].make()), receiver.accepts[i])
                << receiver.name << " offered " << FarEnds()[i].name;
        }
    }
}

TEST(ConnectionRules, ConstructionSetsDirectionAndCaption) {
    const auto body = std::make_shared<BodyConnectionPoint>();
    EXPECT_TRUE(body->IsOutput());
    EXPECT_EQ(body->GetCaption(), L"Body");
    const auto test = std::make_shared<TestConnectionPoint>();
    EXPECT_TRUE(test->IsInput());
    EXPECT_EQ(test->GetCaption(), L"Test");
    const auto branch = std::make_shared<TrueFalseConnectionPoint>();
    EXPECT_TRUE(branch->IsOutput());
    EXPECT_EQ(branch->GetCaption(), L"");
    EXPECT_FALSE(branch->IsTruePoint());
}

TEST(ConnectionRules, TrueFalseFlagDrivesTheCaption) {
    const auto branch = std::make_shared<TrueFalseConnectionPoint>();
    branch->SetIsTruePoint(true);
    EXPECT_TRUE(branch->IsTruePoint());
    EXPECT_EQ(branch->GetCaption(), L"True");
    branch->SetIsTruePoint(false);
    EXPECT_FALSE(branch->IsTruePoint());
    EXPECT_EQ(branch->GetCaption(), L"False");
}

TEST(ConnectionRules, PortDescriptionPreDrawLeavesTheTooltipAlone) {
    const auto point = std::make_shared<PortDescriptionConnectionPoint>();
    point->SetCaption(L"Input");
    point->PreDraw();
    EXPECT_EQ(point->GetTooltip(), L"");
}

// The same rules as a user meets them: a gesture on the canvas asks the receiving (input) point.
TEST(ConnectionRules, CanvasGestureAsksTheReceivingPoint) {
    ZML::FlowGraphPart canvas;
    auto loop = std::make_shared<OperatorNode>();
    auto body = std::make_shared<BodyConnectionPoint>();
    auto boolOut = std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(PortPoint({L"Bool"}));
    auto rasterOut =
        std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(PortPoint({L"Raster"}));
    loop->AddConnectionPoint(body);
    loop->AddConnectionPoint(boolOut);
    loop->AddConnectionPoint(rasterOut);

    auto next = std::make_shared<OperatorNode>();
    auto previous = std::make_shared<FlowControlConnectionPoint>();
    previous->SetInput();
    auto test = std::make_shared<TestConnectionPoint>();
    next->AddConnectionPoint(previous);
    next->AddConnectionPoint(test);
    canvas.AddNode(loop);
    canvas.AddNode(next);

    EXPECT_EQ(canvas.CheckConnect(body, previous), ZML::FlowGraphConnectCheck::Accepted);
    EXPECT_EQ(canvas.CheckConnect(boolOut, test), ZML::FlowGraphConnectCheck::Accepted);
    EXPECT_EQ(canvas.CheckConnect(test, boolOut), ZML::FlowGraphConnectCheck::Accepted);
    EXPECT_EQ(canvas.CheckConnect(rasterOut, test), ZML::FlowGraphConnectCheck::Refused);
    EXPECT_EQ(canvas.CheckConnect(boolOut, previous), ZML::FlowGraphConnectCheck::Refused);
    EXPECT_EQ(canvas.CheckConnect(body, test), ZML::FlowGraphConnectCheck::Refused);
}

}  // namespace
