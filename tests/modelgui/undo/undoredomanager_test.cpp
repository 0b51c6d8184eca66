// The undo history: walks through the steps (with the state each direction hands back), the
// snapshot files on disk, and what is left after a save or an open that fails.
#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "QuarnLog/Exception.h"
#include "UndoModelState.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "modelgui/UndoRedoManager.h"

namespace {

namespace fs = std::filesystem;
using quarn::modelgui::UndoRedoManager;
using ModelState = quarn::modelgui::UndoRedoManager::ModelState;
using Velmar::Lattix::Model;
using Velmar::Lattix::ModelFormatFactory;
using Velmar::Lattix::Operator;
using Velmar::Lattix::OperatorFactory;

// A model told apart by its process name, with a chain of `operators` linked Add operators.
std::shared_ptr<Model> Named(const std::wstring& name, int operators = 1) {
    auto model = std::make_shared<Model>();
    model->SetProcessName(name);
    std::shared_ptr<Operator> previous;
    for (int i = 0; i < operators; ++i) {
        auto op = OperatorFactory::Create(L"TAMARIN", L"Add");
        op->SetDisplayName(name + L" " + std::to_wstring(i));
        model->AddOperator(op);
        if (previous)
            Operator::ConnectParent(op, previous, previous->GetPort(L"Output"),
                                    op->GetPort(L"Input1"));
        previous = op;
    }
    return model;
}

std::shared_ptr<ModelState> State(const std::wstring& description) {
    auto state = std::make_shared<ModelState>();
    state->description = description;
    return state;
}

std::wstring Describe(const std::shared_ptr<ModelState>& state) {
    return state ? state->description : L"<none>";
}

// Each test gets its own TMPDIR, so the undo folders it makes can be counted and broken.
class UndoTest : public testing::Test {
protected:
    void SetUp() override {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        std::string leaf = std::string(info->test_suite_name()) + "." + info->name() + "." +
                           std::to_string(::getpid());
        std::replace(leaf.begin(), leaf.end(), '/', '_');
        root = fs::path(LATTIX_BINARY_DIR) / "test-home" / "undo" / leaf;
        fs::remove_all(root);
        fs::create_directories(root);
        if (const char* old = std::getenv("TMPDIR")) savedTmpdir = old;
        ::setenv("TMPDIR", root.c_str(), 1);
    }
    void TearDown() override {
        if (savedTmpdir)
            ::setenv("TMPDIR", savedTmpdir->c_str(), 1);
        else
            ::unsetenv("TMPDIR");
        std::error_code ignored;
        fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, ignored);
        fs::remove_all(root, ignored);
    }

    std::vector<fs::path> UndoFolders() const {
        std::vector<fs::path> folders;
        for (const auto& entry : fs::directory_iterator(root))
            if (entry.path().filename().string().rfind("LX_UNDO_REDO_", 0) == 0)
                folders.push_back(entry.path());
        return folders;
    }
    fs::path UndoFolder() const {
        const auto folders = UndoFolders();
        EXPECT_EQ(folders.size(), 1U);
        return folders.empty() ? fs::path() : folders.front();
    }
    std::set<fs::path> Snapshots() const {
        std::set<fs::path> files;
        for (const auto& folder : UndoFolders())
            for (const auto& entry : fs::directory_iterator(folder)) files.insert(entry.path());
        return files;
    }

    fs::path root;
    std::optional<std::string> savedTmpdir;
};

// ---- walks through the history

// One step of a walk: 'C' records the model and state called `name` (an empty name records no
// state), 'B' sets the model called `name` as the baseline, 'U' undoes and 'R' redoes. Undo and
// redo start from outputs called "untouched", so a no-op shows as "untouched". The step constructor
// made an empty model with the process name "".
struct walkStep {
    char action;
    std::wstring name;
    std::wstring model;  // for 'U' and 'R': the process name of the model handed back
    std::wstring state;  // for 'U' and 'R': the state handed back ("<none>" for an empty one)
    bool canUndo;
    bool canRedo;
};

struct walkCase {
    const char* name;
    std::vector<walkStep> steps;
};

class UndoWalk : public UndoTest, public testing::WithParamInterface<walkCase> {};

TEST_P(UndoWalk, HandsBackTheExpectedModelsAndStates) {
    UndoRedoManager manager;
    int index = 0;
    for (const auto& step : GetParam().steps) {
        SCOPED_TRACE(testing::Message() << "step " << index++ << " '" << step.action << "'");
        switch (step.action) {
            case 'C':
                manager.ModelChanged(Named(step.name),
                                     step.name.empty() ? nullptr : State(step.name));
                break;
            case 'B':
                manager.SetBaseline(Named(step.name));
                break;
            case 'U':
            case 'R': {
                auto model = Named(L"untouched");
                auto state = State(L"untouched");
                if (step.action == 'U')
                    manager.Undo(model, state);
                else
                    manager.Redo(model, state);
                ASSERT_TRUE(model);
                EXPECT_EQ(model->GetProcessName(), step.model);
                EXPECT_EQ(Describe(state), step.state);
                break;
            }
        }
        EXPECT_EQ(manager.CanUndo(), step.canUndo);
        EXPECT_EQ(manager.CanRedo(), step.canRedo);
    }
}

INSTANTIATE_TEST_SUITE_P(
    History, UndoWalk,
    testing::Values(walkCase{"FreshManagerHasNothingToUndoOrRedo",
                             {{'U', L"", L"untouched", L"untouched", false, false},
                              {'R', L"", L"untouched", L"untouched", false, false}}},
                    // Both directions hand back the state of the later of the two steps involved.
                    walkCase{"UndoAndRedoHandBackTheLaterState",
                             {{'C', L"m1", L"", L"", true, false},
                              {'U', L"", L"", L"m1", false, true},
                              {'R', L"", L"m1", L"m1", true, false}}},
                    walkCase{"WalkToBothEndsAndStop",
                             {{'C', L"m1", L"", L"", true, false},
                              {'C', L"m2", L"", L"", true, false},
                              {'U', L"", L"m1", L"m2", true, true},
                              {'U', L"", L"", L"m1", false, true},
                              {'U', L"", L"untouched", L"untouched", false, true},
                              {'R', L"", L"m1", L"m1", true, true},
                              {'R', L"", L"m2", L"m2", true, false},
                              {'R', L"", L"untouched", L"untouched", true, false}}},
                    walkCase{"NewEditDiscardsTheRedoSteps",
                             {{'C', L"m1", L"", L"", true, false},
                              {'C', L"m2", L"", L"", true, false},
                              {'U', L"", L"m1", L"m2", true, true},
                              {'C', L"m3", L"", L"", true, false},
                              {'U', L"", L"m1", L"m3", true, true},
                              {'U', L"", L"", L"m1", false, true},
                              {'R', L"", L"m1", L"m1", true, true},
                              {'R', L"", L"m3", L"m3", true, false}}},
                    walkCase{"EditAtTheFirstStepDiscardsEverythingAfterIt",
                             {{'C', L"m1", L"", L"", true, false},
                              {'U', L"", L"", L"m1", false, true},
                              {'C', L"m2", L"", L"", true, false},
                              {'U', L"", L"", L"m2", false, true},
                              {'R', L"", L"m2", L"m2", true, false}}},
                    walkCase{"EmptyStateIsAState",
                             {{'C', L"", L"", L"", true, false},
                              {'U', L"", L"", L"<none>", false, true},
                              {'R', L"", L"", L"<none>", true, false}}},
                    walkCase{"BaselineStartsANewHistory",
                             {{'C', L"m1", L"", L"", true, false},
                              {'C', L"m2", L"", L"", true, false},
                              {'U', L"", L"m1", L"m2", true, true},
                              {'B', L"base", L"", L"", false, false},
                              {'U', L"", L"untouched", L"untouched", false, false},
                              {'C', L"m3", L"", L"", true, false},
                              {'U', L"", L"base", L"m3", false, true}}}),
    [](const testing::TestParamInfo<walkCase>& info) { return info.param.name; });

TEST_F(UndoTest, SnapshotsKeepTheWholeModel) {
    UndoRedoManager manager;
    auto first = Named(L"first", 25);
    auto second = Named(L"second", 3);
    manager.SetBaseline(first);
    manager.ModelChanged(second, nullptr);

    std::shared_ptr<Model> model;
    std::shared_ptr<ModelState> state;
    manager.Undo(model, state);
    ASSERT_TRUE(model);
    EXPECT_NE(model, first);  // a new model, read back from the snapshot
    EXPECT_EQ(ModelFormatFactory::SaveToBuffer(model, L"SpatialModelFormat"),
              ModelFormatFactory::SaveToBuffer(first, L"SpatialModelFormat"));
    manager.Redo(model, state);
    EXPECT_EQ(ModelFormatFactory::SaveToBuffer(model, L"SpatialModelFormat"),
              ModelFormatFactory::SaveToBuffer(second, L"SpatialModelFormat"));
}

TEST_F(UndoTest, TheModelIsReadAsItWasWhenRecorded) {
    UndoRedoManager manager;
    auto model = Named(L"before");
    manager.ModelChanged(model, nullptr);
    model->SetProcessName(L"after");  // later edits of the same object do not reach the snapshot
    manager.ModelChanged(model, nullptr);
    std::shared_ptr<Model> back;
    std::shared_ptr<ModelState> state;
    manager.Undo(back, state);
    EXPECT_EQ(back->GetProcessName(), L"before");
}

// ---- snapshot files

TEST_F(UndoTest, NewManagerWritesOneSnapshotOfAnEmptyModel) {
    UndoRedoManager manager;
    const auto folder = UndoFolder();
    const auto files = Snapshots();
    ASSERT_EQ(files.size(), 1U);
    const auto file = *files.begin();
    EXPECT_EQ(file.parent_path(), folder);
    static const std::regex uuidV4(
        "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}\\.gmdx");
    EXPECT_TRUE(std::regex_match(file.filename().string(), uuidV4)) << file;
    auto empty = ModelFormatFactory::Open(file.wstring(), L"SpatialModelFormat");
    EXPECT_TRUE(empty->GetOperators().empty());
}

TEST_F(UndoTest, EveryStepIsANewFileAndDiscardedStepsStay) {
    UndoRedoManager manager;
    std::shared_ptr<Model> model;
    std::shared_ptr<ModelState> state;
    manager.ModelChanged(Named(L"m1"), nullptr);
    manager.ModelChanged(Named(L"m2"), nullptr);
    const auto beforeUndo = Snapshots();
    manager.Undo(model, state);
    manager.Redo(model, state);
    EXPECT_EQ(Snapshots(), beforeUndo);  // walking writes nothing
    manager.Undo(model, state);
    manager.ModelChanged(Named(L"m3"), nullptr);
    EXPECT_EQ(Snapshots().size(), 4U);  // the discarded m2 file is still there
    manager.ModelChanged(Named(L"m3"), nullptr);
    EXPECT_EQ(Snapshots().size(), 5U);  // same model again, new file
    std::set<std::string> identifiers;
    for (const auto& file : Snapshots()) identifiers.insert(file.stem().string());
    EXPECT_EQ(identifiers.size(), 5U);
}

TEST_F(UndoTest, BaselineMovesToANewFolder) {
    std::optional<UndoRedoManager> manager(std::in_place);
    manager->ModelChanged(Named(L"m1"), nullptr);
    const auto first = UndoFolder();
    manager->SetBaseline(Named(L"base"));
    const auto second = UndoFolder();
    EXPECT_NE(first, second);
    EXPECT_FALSE(fs::exists(first));  // the toolkit folder takes its files with it
    EXPECT_EQ(Snapshots().size(), 1U);
    manager.reset();
    EXPECT_TRUE(UndoFolders().empty());
}

// ---- failures

TEST_F(UndoTest, FailingSaveKeepsTheIndexAndLosesTheRedoSteps) {
    UndoRedoManager manager;
    manager.ModelChanged(Named(L"m1"), State(L"m1"));
    manager.ModelChanged(Named(L"m2"), State(L"m2"));
    std::shared_ptr<Model> model;
    std::shared_ptr<ModelState> state;
    manager.Undo(model, state);
    ASSERT_TRUE(manager.CanRedo());

    // A file where the folder was: nothing can be written into it, whoever we are.
    const auto folder = UndoFolder();
    const auto aside = fs::path(folder.string() + ".aside");
    fs::rename(folder, aside);
    { std::ofstream(folder) << "not a folder"; }
    try {
        manager.ModelChanged(Named(L"m3"), State(L"m3"));
        ADD_FAILURE() << "the save did not fail";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_NE(std::string(e.what()).find(folder.filename().string()), std::string::npos)
            << e.what();
    }
    EXPECT_TRUE(manager.CanUndo());
    EXPECT_FALSE(manager.CanRedo());  // the redo step went before the save was tried
    fs::remove(folder);
    fs::rename(aside, folder);
    EXPECT_EQ(Snapshots().size(), 3U);

    // Still at m1: one undo reaches the empty first step, one redo comes back to m1 and no further.
    manager.Undo(model, state);
    EXPECT_EQ(model->GetProcessName(), L"");
    EXPECT_EQ(Describe(state), L"m1");
    manager.Redo(model, state);
    EXPECT_EQ(model->GetProcessName(), L"m1");
    EXPECT_FALSE(manager.CanRedo());
}

TEST_F(UndoTest, FailingOpenLeavesTheIndexMoved) {
    UndoRedoManager manager;
    auto files = Snapshots();
    manager.ModelChanged(Named(L"m1"), State(L"m1"));
    fs::path m1File;
    for (const auto& file : Snapshots())
        if (!files.count(file)) m1File = file;
    manager.ModelChanged(Named(L"m2"), State(L"m2"));
    fs::remove(m1File);

    auto model = Named(L"untouched");
    auto state = State(L"untouched");
    EXPECT_THROW(manager.Undo(model, state), QuarnLog::Exception);
    EXPECT_EQ(model->GetProcessName(), L"untouched");
    EXPECT_EQ(Describe(state), L"m2");  // set before the file was read
    EXPECT_TRUE(manager.CanUndo());     // now at the unreadable m1 step
    EXPECT_TRUE(manager.CanRedo());

    manager.Undo(model, state);
    EXPECT_EQ(model->GetProcessName(), L"");
    EXPECT_EQ(Describe(state), L"m1");

    state = State(L"untouched");
    EXPECT_THROW(manager.Redo(model, state), QuarnLog::Exception);
    EXPECT_EQ(Describe(state), L"untouched");  // redo sets the state after reading
    manager.Redo(model, state);
    EXPECT_EQ(model->GetProcessName(), L"m2");
    EXPECT_EQ(Describe(state), L"m2");
}

// In a child process whose getrandom calls fail with EIO: a recording raises the random source's
// error naming the call, records nothing, and has already dropped the redo steps. Answers what
// went wrong, or an empty text.
std::string RecordWithoutRandomness() {
    UndoRedoManager manager;
    manager.ModelChanged(Named(L"m1"), State(L"m1"));
    manager.ModelChanged(Named(L"m2"), State(L"m2"));
    std::shared_ptr<Model> model;
    std::shared_ptr<ModelState> state;
    manager.Undo(model, state);

    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getrandom, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | (EIO & SECCOMP_RET_DATA)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        return "cannot install the seccomp filter";

    try {
        manager.ModelChanged(Named(L"m3"), State(L"m3"));
        return "the recording did not fail";
    } catch (const QuarnLog::Exception& e) {
        if (std::string(e.what()).find("getrandom") == std::string::npos)
            return std::string("the error does not name getrandom: ") + e.what();
    }
    if (manager.CanRedo()) return "the redo step is still there";
    manager.Undo(model, state);
    if (model->GetProcessName() != L"" || Describe(state) != L"m1")
        return "the history moved or grew";
    return {};
}

TEST_F(UndoTest, FailingRandomSourceRecordsNothing) {
    int report[2];
    ASSERT_EQ(::pipe(report), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::close(report[0]);
        std::string problem;
        try {
            problem = RecordWithoutRandomness();
        } catch (const std::exception& e) {
            problem = std::string("unexpected error: ") + e.what();
        }
        if (!problem.empty()) (void)!::write(report[1], problem.data(), problem.size());
        ::_exit(problem.empty() ? 0 : 1);
    }
    ::close(report[1]);
    std::string problem;
    char buffer[256];
    for (ssize_t got; (got = ::read(report[0], buffer, sizeof buffer)) > 0;)
        problem.append(buffer, static_cast<std::size_t>(got));
    ::close(report[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << problem;
}

TEST_F(UndoTest, MissingModelIsRefusedBeforeAnythingChanges) {
    UndoRedoManager manager;
    manager.ModelChanged(Named(L"m1"), nullptr);
    std::shared_ptr<Model> model;
    std::shared_ptr<ModelState> state;
    manager.Undo(model, state);
    EXPECT_THROW(manager.ModelChanged(nullptr, nullptr), QuarnLog::Exception);
    EXPECT_THROW(manager.SetBaseline(nullptr), QuarnLog::Exception);
    EXPECT_TRUE(manager.CanRedo());
    manager.Redo(model, state);
    EXPECT_EQ(model->GetProcessName(), L"m1");
}

TEST_F(UndoTest, FailingBaselineLeavesNothingToWalk) {
    UndoRedoManager manager;
    manager.ModelChanged(Named(L"m1"), nullptr);
    ::setenv("TMPDIR", (root / "missing").c_str(), 1);
    EXPECT_THROW(manager.SetBaseline(Named(L"base")), QuarnLog::Exception);
    EXPECT_FALSE(manager.CanUndo());
    EXPECT_FALSE(manager.CanRedo());
    auto model = Named(L"untouched");
    std::shared_ptr<ModelState> state;
    manager.Undo(model, state);
    manager.Redo(model, state);
    EXPECT_EQ(model->GetProcessName(), L"untouched");

    // Recording works again once a folder can be made.
    ::setenv("TMPDIR", root.c_str(), 1);
    manager.ModelChanged(Named(L"m2"), nullptr);
    manager.ModelChanged(Named(L"m3"), nullptr);
    manager.Undo(model, state);
    EXPECT_EQ(model->GetProcessName(), L"m2");
    EXPECT_FALSE(manager.CanUndo());
}

}  // namespace
