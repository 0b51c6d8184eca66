// The example models through the real engine and a real editor host: draw, edit with the canvas
// gestures a user makes (connect, remove, move), each recorded as an undo step, undo everything and
// save: the file is the original, byte for byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "qtxt/Text.h"
#include "testhost/TestHost.h"

namespace {

namespace fs = std::filesystem;
using namespace quarn::modelgui;
using quarn::modelgui::testhost::TestHost;

std::string ReadBytes(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

fs::path WorkFolder(const std::string& name) {
    auto folder = fs::path(LATTIX_BINARY_DIR) / "test-home" / "roundtrip" / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

std::wstring Wide(const fs::path& path) {
    return qtxt::widen(path.string());
}

// The first data connection on the canvas (between two port points), or null.
std::shared_ptr<ZML::FlowGraphConnectionEx> FirstDataConnection(const ZML::FlowGraphPart& canvas) {
    for (const auto& connection : canvas.GetConnections()) {
        if (std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(
                connection->GetInputPoint()) &&
            std::dynamic_pointer_cast<PortDescriptionConnectionPoint>(connection->GetOutputPoint()))
            return connection;
    }
    return nullptr;
}

class RoundTrip : public ::testing::TestWithParam<std::string> {};

TEST_P(RoundTrip, EditsUndoneGiveTheOriginalFileBack) {
    const fs::path example = fs::path(LATTIX_SOURCE_DIR) / "examples" / GetParam();
    const auto folder = WorkFolder(fs::path(GetParam()).stem().string());
    const auto original = ReadBytes(example);
    ASSERT_FALSE(original.empty());

    TestHost host;
    host.OpenModelFile(Wide(example));
    const auto canvas = host.GetFlowGraphPart();
    const auto opened = host.GetModel();
    // Saving what was opened reproduces the file: the format itself is faithful.
    host.SaveModelFile(Wide(folder / "opened.gmdx"));
    ASSERT_EQ(ReadBytes(folder / "opened.gmdx"), original);
    host.ResetCalls();

    // Remove a data connection, draw it again from its input end, then move a node.
    auto connection = FirstDataConnection(*canvas);
    ASSERT_NE(connection, nullptr);
    const auto from = connection->GetOutputPoint();
    const auto to = connection->GetInputPoint();
    ASSERT_TRUE(canvas->UserRemoveConnection(connection));
    ASSERT_NE(canvas->UserConnect(to, from), nullptr);
    auto node = canvas->GetNodes().front();
    ASSERT_TRUE(canvas->UserMoveNodes({node}, 35, 45));
    EXPECT_TRUE(host.GetCalls().errors.empty());
    EXPECT_EQ(host.GetCalls().recorded, 3);

    host.SaveModelFile(Wide(folder / "edited.gmdx"));
    EXPECT_NE(ReadBytes(folder / "edited.gmdx"), original);

    int undone = 0;
    while (host.Undo()) ++undone;
    EXPECT_EQ(undone, 3);
    host.SaveModelFile(Wide(folder / "undone.gmdx"));
    EXPECT_EQ(ReadBytes(folder / "undone.gmdx"), original);
}

INSTANTIATE_TEST_SUITE_P(Examples, RoundTrip,
                         ::testing::Values("if-else.gmdx", "loop.gmdx", "annotated-ports.gmdx",
                                           "raster-expression.gmdx"),
                         [](const auto& info) {
                             std::string name = fs::path(info.param).stem().string();
                             std::erase(name, '-');
                             return name;
                         });

// The if/else example edited as a user would: a tail's input rewired to the other source, the
// condition's operator moved; every step undone in turn.
TEST(RoundTripIfElse, RewiringATailAndUndoingIt) {
    const fs::path example = fs::path(LATTIX_SOURCE_DIR) / "examples" / "if-else.gmdx";
    const auto folder = WorkFolder("if-else-rewire");
    const auto original = ReadBytes(example);
    TestHost host;
    host.OpenModelFile(Wide(example));
    const auto canvas = host.GetFlowGraphPart();
    const auto ops = host.GetModel()->GetOperators();
    ASSERT_EQ(ops.size(), 6u);
    const auto first = ops[0];
    const auto second = ops[1];
    const auto above = ops[4];
    auto point = [&canvas](const std::shared_ptr<Velmar::Lattix::Operator>& op,
                           const std::wstring& name) {
        return GUIUtils::FindPortDescriptionPoint(canvas, op, op->GetPort(name));
    };
    auto link = canvas->FindConnection(point(above, L"Value"), point(first, L"Output"));
    ASSERT_NE(link, nullptr);
    ASSERT_TRUE(canvas->UserRemoveConnection(link));
    EXPECT_EQ(above->FindParentConnection(first), nullptr);
    // The gesture goes to the engine, which links the other source.
    ASSERT_NE(canvas->UserConnect(point(second, L"Output"), point(above, L"Value")), nullptr);
    EXPECT_NE(above->FindParentConnection(second), nullptr);
    ASSERT_TRUE(canvas->UserMoveNodes({GUIUtils::FindOperatorNode(canvas, ops[2])}, -20, 10));
    EXPECT_EQ(host.GetCalls().recorded, 3);

    // Each undo swaps in the model as it was before the step: first unlinked, then fed by the
    // first source again.
    ASSERT_TRUE(host.Undo());
    ASSERT_TRUE(host.Undo());
    auto restored = host.GetModel()->GetOperators();
    EXPECT_EQ(restored[4]->FindParentConnection(restored[0]), nullptr);
    EXPECT_EQ(restored[4]->FindParentConnection(restored[1]), nullptr);
    ASSERT_TRUE(host.Undo());
    restored = host.GetModel()->GetOperators();
    EXPECT_NE(restored[4]->FindParentConnection(restored[0]), nullptr);
    EXPECT_EQ(restored[4]->FindParentConnection(restored[1]), nullptr);
    EXPECT_FALSE(host.Undo());
    host.SaveModelFile(Wide(folder / "undone.gmdx"));
    EXPECT_EQ(ReadBytes(folder / "undone.gmdx"), original);
}

}  // namespace
