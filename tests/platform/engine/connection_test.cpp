#include <gtest/gtest.h>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/PortConnection.h"
#include "engine_test_support.h"

using namespace Velmar::Lattix;
using enginetest::AddOperator;
using enginetest::Type;

namespace {

struct StatusCase {
    std::vector<const wchar_t*> from;
    std::vector<const wchar_t*> to;
    int status;
};

std::vector<ObjectName> Types(const std::vector<const wchar_t*>& names) {
    std::vector<ObjectName> types;
    for (auto* name : names) types.push_back(Type(name));
    return types;
}

TEST(ConnectionTest, StatusTable) {
    const StatusCase cases[] = {
        {{L"TAMARIN.Int"}, {L"TAMARIN.Int"}, PortConnection::StatusMatching},
        {{L"TAMARIN.Raster", L"TAMARIN.Double"}, {L"TAMARIN.Double"}, 0},
        {{L"TAMARIN.Int"}, {L"TAMARIN.Data"}, 0},
        {{}, {L"TAMARIN.Bool"}, 0},
        {{L"TAMARIN.Int"}, {L"TAMARIN.Double"}, PortConnection::StatusConvertible},
        {{L"TAMARIN.Double"}, {L"TAMARIN.String"}, 2},
        {{L"TAMARIN.String"}, {L"TAMARIN.File"}, 2},
        {{L"TAMARIN.File"}, {L"TAMARIN.Raster"}, 2},
        {{L"TAMARIN.List"}, {L"TAMARIN.StringList"}, 2},
        {{L"TAMARIN.Raster"}, {L"TAMARIN.Bool"}, PortConnection::StatusIncompatible},
        {{L"TAMARIN.String"}, {L"TAMARIN.Int"}, 1},
        {{L"TAMARIN.List"}, {L"TAMARIN.Double"}, 1},
    };
    for (const auto& c : cases) {
        auto model = std::make_shared<Model>();
        auto a = AddOperator(model, L"A", {}, Types(c.from));
        auto b = AddOperator(model, L"B", Types(c.to), {});
        auto link = Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
        ASSERT_TRUE(link);
        EXPECT_EQ(link->GetStatus(), c.status)
            << (c.from.empty() ? L"any" : c.from[0]) << " -> " << (c.to.empty() ? L"any" : c.to[0]);
        EXPECT_EQ(PortConnection::ComputeStatus(*a->GetPort(L"Out"), *b->GetPort(L"In")), c.status);
    }
}

TEST(ConnectionTest, ConnectAndDisconnectKeepBothEndsInStep) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {Type(L"TAMARIN.Int")});
    auto b = AddOperator(model, L"B", {Type(L"TAMARIN.Int")}, {});
    auto c = AddOperator(model, L"C", {}, {Type(L"TAMARIN.Int")});
    auto link = Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
    EXPECT_EQ(link->GetParent(), a);
    EXPECT_EQ(link->GetChildPort(), b->GetPort(L"In"));
    EXPECT_TRUE(b->IsParent(a)) << "a data link brings a flow link";
    EXPECT_EQ(b->FindParentConnection(a), link);
    EXPECT_EQ(a->GetConnectedOperators(), std::vector<std::shared_ptr<Operator>>{b});
    EXPECT_EQ(a->GetPortConnections().size(), 1u);
    EXPECT_EQ(Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In")), link)
        << "no duplicate";

    // A second feed replaces the first.
    Operator::ConnectParent(b, c, c->GetPort(L"Out"), b->GetPort(L"In"));
    EXPECT_FALSE(b->FindParentConnection(a));
    EXPECT_TRUE(a->GetPortConnections().empty());
    EXPECT_TRUE(b->IsParent(a)) << "the flow link stays until removed";
    EXPECT_FALSE(b->DisconnectParent(a, a->GetPort(L"Out"), b->GetPort(L"In")));
    EXPECT_TRUE(b->DisconnectParent(c, c->GetPort(L"Out"), b->GetPort(L"In")));
    EXPECT_FALSE(b->DisconnectParent(c, c->GetPort(L"Out"), b->GetPort(L"In")));
    EXPECT_FALSE(b->GetPort(L"In")->IsConnected());
}

TEST(ConnectionTest, BadLinksAreRefused) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {});
    auto b = AddOperator(model, L"B", {}, {});
    EXPECT_THROW(Operator::ConnectParent(a, a, a->GetPort(L"Out"), a->GetPort(L"In")),
                 QuarnLog::Exception);
    EXPECT_THROW(Operator::ConnectParent(b, a, b->GetPort(L"Out"), b->GetPort(L"In")),
                 QuarnLog::Exception);
    EXPECT_THROW(Operator::ConnectParent(b, a, a->GetPort(L"In"), b->GetPort(L"In")),
                 QuarnLog::Exception);
    EXPECT_THROW(Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"Out")),
                 QuarnLog::Exception);
    EXPECT_THROW(Operator::ConnectParent(b, a, nullptr, b->GetPort(L"In")), QuarnLog::Exception);
}

TEST(ConnectionTest, FlowParentsAnswerFalseForMissingLinks) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {});
    auto b = AddOperator(model, L"B", {}, {});
    EXPECT_FALSE(b->RemoveParent(a));
    EXPECT_TRUE(b->AddParent(a));
    EXPECT_FALSE(b->AddParent(a));
    EXPECT_TRUE(b->IsParent(a));
    EXPECT_EQ(b->GetParents(), std::vector<std::shared_ptr<Operator>>{a});
    EXPECT_TRUE(b->RemoveParent(a));
    EXPECT_FALSE(b->RemoveParent(a));
    EXPECT_THROW(a->AddParent(a), QuarnLog::Exception);
}

TEST(AliasTest, ModelInputFeedsAnInnerPortAndBack) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {Type(L"TAMARIN.Int")}, {Type(L"TAMARIN.Int")});
    auto b = AddOperator(model, L"B", {Type(L"TAMARIN.Int")}, {});
    auto input = model->AliasPort(a->GetPort(L"In"), L"Count");
    EXPECT_TRUE(input->IsInput());
    EXPECT_EQ(input->TryGetOperator(), model);
    EXPECT_EQ(input->GetSupportedDataTypes(), std::vector<ObjectName>{Type(L"TAMARIN.Int")});
    EXPECT_EQ(model->GetAliasedPort(a->GetPort(L"In")), input);
    EXPECT_EQ(model->AliasPort(b->GetPort(L"In"), L"Count"), input)
        << "inputs may feed several ports";
    EXPECT_EQ(input->GetInnerAliasedPorts().size(), 2u);

    auto modelLinks = model->GetPortConnections();
    ASSERT_EQ(modelLinks.size(), 2u);
    EXPECT_TRUE(modelLinks[0]->IsInnerAlias());
    EXPECT_EQ(modelLinks[0]->GetParent(), model);
    EXPECT_EQ(modelLinks[0]->GetChild(), a);
    EXPECT_TRUE(a->GetPort(L"In")->AreAllConnectionInnerAliases());
    EXPECT_TRUE(a->GetPort(L"In")->IsConnected());
    EXPECT_FALSE(model->IsOperatorConnected(a)) << "an alias is not a link between operators";

    // The output direction: the model is the child.
    auto output = model->AliasPort(a->GetPort(L"Out"), L"Result");
    EXPECT_TRUE(output->IsOutput());
    auto outLinks = output->GetConnections();
    ASSERT_EQ(outLinks.size(), 1u);
    EXPECT_EQ(outLinks[0]->GetChild(), model);
    EXPECT_EQ(outLinks[0]->GetParentPort(), a->GetPort(L"Out"));
    auto c = AddOperator(model, L"C", {Type(L"TAMARIN.Int")}, {});
    EXPECT_THROW(model->AliasPort(c->GetPort(L"In"), L"Result"), QuarnLog::Exception)
        << "direction differs";

    // Undo both ways.
    EXPECT_TRUE(input->RemoveInnerAliasedPort(a->GetPort(L"In")));
    EXPECT_FALSE(input->RemoveInnerAliasedPort(a->GetPort(L"In")));
    EXPECT_FALSE(a->GetPort(L"In")->IsConnected());
    EXPECT_EQ(model->GetAliasedPort(a->GetPort(L"In")), nullptr);
    EXPECT_TRUE(output->RemoveInnerAliasedPort(a->GetPort(L"Out")));
    EXPECT_TRUE(output->GetConnections().empty());
    EXPECT_EQ(model->GetPortConnections().size(), 1u) << "B's alias is left";
}

TEST(AliasTest, ConnectPortLinksAnExistingModelPort) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {Type(L"TAMARIN.Int")}, {Type(L"TAMARIN.Int")});
    auto given = model->AddNewPort(L"Given", PortDirection::Input);
    auto link = model->ConnectPort(given, a->GetPort(L"In"));
    ASSERT_TRUE(link);
    EXPECT_TRUE(link->IsInnerAlias());
    EXPECT_EQ(link->GetParentPort(), given);
    EXPECT_EQ(link->GetChild(), a);
    EXPECT_EQ(given->GetSupportedDataTypes(), std::vector<ObjectName>{Type(L"TAMARIN.Int")});
    auto foreign = Port::Create(L"Loose", PortDirection::Input);
    EXPECT_THROW(model->ConnectPort(foreign, a->GetPort(L"Out")), QuarnLog::Exception);
}

TEST(AliasTest, PortsOutsideTheModelOrAlreadyAliasedAreRefused) {
    auto model = std::make_shared<Model>();
    auto other = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {});
    auto stranger = AddOperator(other, L"S", {}, {});
    EXPECT_THROW(model->AliasPort(stranger->GetPort(L"In"), L"X"), QuarnLog::Exception);
    model->AliasPort(a->GetPort(L"In"), L"X");
    EXPECT_THROW(model->AliasPort(a->GetPort(L"In"), L"Y"), QuarnLog::Exception);
}

TEST(ModelNotificationTest, ConnectingAndUnconnected) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {});
    auto b = AddOperator(model, L"B", {}, {});
    auto outsider = AddOperator(nullptr, L"O", {}, {});
    b->SetExecuted(true);
    model->NotifyOperatorConnecting(b);
    EXPECT_FALSE(b->IsExecuted());
    EXPECT_THROW(model->NotifyOperatorConnecting(outsider), QuarnLog::Exception);

    Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
    EXPECT_TRUE(model->IsOperatorConnected(a));
    b->SetInfoMessage(
        L"The value set on In will not be used because a connection has been made to the port.");
    b->SetWarningMessage(L"kept");
    EXPECT_FALSE(model->NotifyOperatorUnconnected(b)) << "still linked";
    EXPECT_TRUE(b->HasInfo());

    b->DisconnectParent(a, a->GetPort(L"Out"), b->GetPort(L"In"));
    b->RemoveParent(a);
    EXPECT_FALSE(model->IsOperatorConnected(b));
    EXPECT_TRUE(model->NotifyOperatorUnconnected(b));
    EXPECT_FALSE(b->HasInfo());
    EXPECT_TRUE(b->HasWarning());
}

TEST(ExecutionStateTest, InvalidationFollowsDataAndFlowLinks) {
    auto model = std::make_shared<Model>();
    auto a = AddOperator(model, L"A", {}, {});
    auto b = AddOperator(model, L"B", {}, {});
    auto c = AddOperator(model, L"C", {}, {});
    auto lone = AddOperator(model, L"Lone", {}, {});
    Operator::ConnectParent(b, a, a->GetPort(L"Out"), b->GetPort(L"In"));
    c->AddParent(b);
    c->AddParent(a);  // a diamond must not be walked twice
    for (auto& op : {a, b, c, lone}) {
        op->SetExecuted(true);
        op->SetProgressBounds(0, 10);
        op->SetProgress(10);
    }
    model->SetExecuted(true);
    a->InvalidateExecution();
    EXPECT_FALSE(a->IsExecuted());
    EXPECT_FALSE(b->IsExecuted());
    EXPECT_FALSE(c->IsExecuted());
    EXPECT_EQ(c->GetProgress(), 0.0);
    EXPECT_TRUE(lone->IsExecuted());
    EXPECT_FALSE(model->IsExecuted());
    EXPECT_THROW(a->SetProgressBounds(5, 1), QuarnLog::Exception);
}

}  // namespace
