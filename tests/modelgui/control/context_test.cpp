// The current context, its active editor and the queue of operator palettes.

#include <gtest/gtest.h>

#include <memory>

#include "modelgui/Context.h"
#include "recordingcontrol.h"
#include "testhost/TestHost.h"

namespace quarn::modelgui {
class OperatorsTreeView;
}

namespace {

using quarn::modelgui::Context;
using quarn::modelgui::OperatorsTreeView;
using quarn::modelgui::testhost::TestContext;

// A palette stand-in: the queue only ever holds and compares pointers to palettes, so any owner
// with an address of its own will do.
std::shared_ptr<OperatorsTreeView> Palette() {
    auto owner = std::make_shared<char>();
    return {owner, reinterpret_cast<OperatorsTreeView*>(owner.get())};
}

class CurrentContext : public ::testing::Test {
protected:
    void TearDown() override { Context::SetCurrentContext(nullptr); }
};

TEST_F(CurrentContext, ControlOfTheCurrentContext) {
    EXPECT_EQ(Context::GetCurrentControl(), nullptr);
    quarn::modelgui::testing::RecordingControl control;
    auto context = std::make_shared<TestContext>(&control);
    Context::SetCurrentContext(context);
    EXPECT_EQ(Context::GetCurrentControl(), &control);
    context->SetControl(nullptr);
    EXPECT_EQ(Context::GetCurrentControl(), nullptr);

    // Replacing the context releases the previous one.
    const std::weak_ptr<TestContext> watched = context;
    context.reset();
    Context::SetCurrentContext(std::make_shared<TestContext>());
    EXPECT_TRUE(watched.expired());
}

TEST_F(CurrentContext, PalettesShownWithoutAContextAreIgnored) {
    const auto palette = Palette();
    Context::OperatorsTreeViewDisplayed(palette);
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), nullptr);
    Context::SetCurrentContext(std::make_shared<TestContext>());
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), nullptr);
}

TEST_F(CurrentContext, ClosedPalettesAreDroppedFromTheNewestEndOnly) {
    Context::SetCurrentContext(std::make_shared<TestContext>());
    auto a = Palette();
    auto b = Palette();
    auto c = Palette();
    for (const auto& palette : {a, b, c}) Context::OperatorsTreeViewDisplayed(palette);
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), c);

    // C closed: B answers, and A and B stay queued.
    c.reset();
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), b);

    // A new palette D above B; B closes while D lives: D answers and B stays queued below it.
    auto d = Palette();
    Context::OperatorsTreeViewDisplayed(d);
    b.reset();
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), d);
    // Once D closes too, the expired B is met and dropped, and A answers.
    d.reset();
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), a);
    a.reset();
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), nullptr);

    // The queue belongs to the context: a new context starts empty.
    auto e = Palette();
    Context::OperatorsTreeViewDisplayed(e);
    Context::SetCurrentContext(std::make_shared<TestContext>());
    EXPECT_EQ(Context::GetCurrentOperatorsTreeView(), nullptr);
}

}  // namespace
