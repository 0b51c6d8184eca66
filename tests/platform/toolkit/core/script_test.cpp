#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ZML/Button.h"
#include "ZML/Dialog.h"
#include "ZML/EditText.h"
#include "ZML/Filename.h"
#include "ZML/Group.h"
#include "ZML/HeadlessAnswers.h"
#include "ZML/Label.h"
#include "ZML/Number.h"
#include "ZML/PopupList.h"
#include "ZML/Script.h"
#include "ZML/ScriptError.h"
#include "ZML/ScrollList.h"
#include "ZML/SplitPanel.h"
#include "ZML/TreeView.h"
#include "testenv.h"

using namespace ZML;

namespace {

struct ErrorCase {
    const char* what;
    const char* text;
    int line;
    int column;
    const char* fragment;
};

// Parses and builds `text`; returns the error it raised.
std::optional<ScriptError> ErrorOf(const std::string& text) {
    try {
        auto document = ParseScript(text, "case.zml");
        Frame frame("f");
        for (const auto& declaration : document.declarations) {
            if (declaration.kind != "menu") {
                BuildFrame(frame, declaration, document.file);
            }
        }
    } catch (const ScriptError& error) {
        return error;
    }
    return std::nullopt;
}

}  // namespace

TEST(ScriptErrors, NameFileLineAndColumn) {
    const ErrorCase cases[] = {
        {"missing semicolon", "frame \"a\" {\n  title \"x\"\n}\n", 3, 1, "expected ';'"},
        {"open string", "frame \"a\" {\n  title \"abc;\n}\n", 2, 9, "string not closed"},
        {"unclosed brace", "frame \"a\" {\n  label \"l\" {\n", 2, 13, "never closed"},
        {"stray character", "frame \"a\" {\n  geometry 1 2 @ 4;\n}", 2, 16,
         "unexpected character '@'"},
        {"unknown escape", "frame \"a\" { title \"a\\q\"; }", 1, 21, "unknown escape"},
        {"bad number", "frame \"a\" { geometry 1 2 3x 4; }", 1, 26, "malformed number"},
        {"statement at top", "title \"x\";", 1, 10, "expected '{'"},
        {"columns count characters", "frame \"\xc3\xa9t\xc3\xa9\" { title \"\xc3\xbc\" }", 1, 25,
         "expected ';'"},
        {"unknown kind", "frame \"a\" {\n  slider \"s\" { }\n}", 2, 3,
         "unknown part kind 'slider'"},
        {"unknown setting", "frame \"a\" {\n  label \"l\" { colour 3; }\n}", 2, 15,
         "a label has no setting 'colour'"},
        {"value count", "frame \"a\" {\n  button \"b\" { geometry 1 2 3; }\n}", 2, 16,
         "'geometry' takes 4 values, not 3"},
        {"value type", "frame \"a\" { label \"l\" { title 5; } }", 1, 31, "expected a quoted text"},
        {"fraction where whole", "frame \"a\" { label \"l\" { geometry 1 2.5 3 4; } }", 1, 36,
         "expected a whole number"},
        {"refused by the part", "frame \"a\" { label \"l\" { titlewhere 12; } }", 1, 25,
         "not a position code"},
        {"label holding parts", "frame \"a\" { label \"l\" { button \"b\" { } } }", 1, 25,
         "a label cannot hold other parts"},
        {"value not in list", "frame \"a\" { popuplist \"p\" { values \"x\"; value \"y\"; } }", 1,
         47, "not one of the values"},
        {"third pane",
         "frame \"a\" { splitpanel \"s\" { group \"1\" {} group \"2\" {} group \"3\" {} } }", 1, 56,
         "one too many"},
    };
    for (const auto& c : cases) {
        auto error = ErrorOf(c.text);
        ASSERT_TRUE(error.has_value()) << c.what;
        EXPECT_EQ(error->File(), "case.zml") << c.what;
        EXPECT_EQ(error->Line(), c.line) << c.what << ": " << error->what();
        EXPECT_EQ(error->Column(), c.column) << c.what << ": " << error->what();
        EXPECT_NE(error->Problem().find(c.fragment), std::string::npos)
            << c.what << ": " << error->what();
        EXPECT_EQ(
            std::string(error->what())
                .rfind("case.zml:" + std::to_string(c.line) + ":" + std::to_string(c.column) + ": ",
                       0),
            0u)
            << error->what();
    }
}

TEST(ScriptParse, ReadsNestedDeclarationsAndValues) {
    auto document = ParseScript(
        "// comment\n"
        "dialog \"d\" {\n"
        "  geometry 1 -2 3 4; # trailing comment\n"
        "  group \"g\" { label \"l\" { title \"say \\\"hi\\\"\\n\"; } }\n"
        "}\n"
        "menu \"m\" { item \"a\" \"A\"; separator; }\n",
        "doc.zml");
    ASSERT_EQ(document.declarations.size(), 2u);
    const auto& dialog = document.declarations[0];
    EXPECT_EQ(dialog.kind, "dialog");
    ASSERT_EQ(dialog.statements.size(), 1u);
    EXPECT_EQ(dialog.statements[0].values[1].number, -2);
    const auto& label = dialog.children.at(0).children.at(0);
    EXPECT_EQ(label.name, "l");
    EXPECT_EQ(label.statements.at(0).values.at(0).text, L"say \"hi\"\n");
    EXPECT_EQ(label.line, 4);
    EXPECT_EQ(document.declarations[1].kind, "menu");
}

namespace {

// A dialog of its own class, loaded from the sample script, that fills its parts on display and
// binds its buttons, as the library's dialogs do.
class SampleDialog : public Dialog {
public:
    SampleDialog() : Dialog("sample_dialog") {}

    void Bind() {
        SetSource("sample_dialog");
        auto self = std::static_pointer_cast<SampleDialog>(shared_from_this());
        std::weak_ptr<SampleDialog> weak = self;
        Find<Button>("ok_button")->OnMessage("mousedown", [weak](const Event&) {
            if (auto dialog = weak.lock()) dialog->Okay();
        });
        Find<Button>("cancel_button")->OnMessage("mousedown", [weak](const Event&) {
            if (auto dialog = weak.lock()) dialog->Cancel();
        });
    }
    int displayed = 0;
    int okays = 0;

    void Okay() override {
        ++okays;
        Dialog::Okay();
    }

protected:
    void OnDisplay() override {
        ++displayed;
        Find<EditText>("expr")->SetUnicodeText(L"$Input1 + 1");
    }
};

}  // namespace

TEST(ScriptDialog, SampleBuildsEveryPartWithItsSettings) {
    zmltest::HeadlessReset reset;
    auto dialog = std::make_shared<SampleDialog>();
    dialog->Bind();
    EXPECT_EQ(dialog->Title(), L"Sample Settings");
    EXPECT_TRUE(dialog->IsResizable());
    EXPECT_EQ(dialog->Geometry(), (Rect{200, 200, 420, 320}));
    auto expr = dialog->Find<EditText>("expr");
    EXPECT_EQ(expr->Hint(), L"Enter LXL expression here");
    EXPECT_EQ(expr->Info(), L"The expression to evaluate");
    EXPECT_EQ(expr->TitleWhere(), TitleAboveLeft);
    EXPECT_EQ(expr->TitleOffset(), 18);
    auto count = dialog->Find<Number>("count");
    EXPECT_EQ(count->Value(), 10);
    EXPECT_EQ(count->Max(), 100);
    EXPECT_TRUE(count->Properties().IsYes(L"WholeNumber"));
    EXPECT_EQ(dialog->Find<PopupList>("mode")->ValueList().size(), 3u);
    auto output = dialog->Find<Filename>("output");
    EXPECT_EQ(output->Mode(), FilenameOutput);
    EXPECT_TRUE(output->IsShortForm());
    ASSERT_EQ(output->TypeDefs().size(), 2u);
    EXPECT_EQ(output->TypeDefs()[0].flags[1], 1);
    auto list = dialog->Find<ScrollList>("list");
    EXPECT_EQ(list->RowCount(), 2);
    EXPECT_EQ(list->Parent(), dialog->Find<Group>("choices"));
    EXPECT_EQ(dialog->Find<Button>("ok_button")->LockFlags(), LockRight | LockBottom);
    ASSERT_TRUE(dialog->FindMenu("list_menu").has_value());
    EXPECT_EQ(dialog->FindMenu("list_menu")->items.size(), 3u);
    EXPECT_TRUE(dialog->FindMenu("list_menu")->items[1].separator);

    // Resizing the frame moves the locked buttons with its corner.
    dialog->GeometrySet(200, 200, 520, 420);
    EXPECT_EQ(dialog->Find<Button>("ok_button")->Geometry(), (Rect{350, 380, 75, 27}));
}

TEST(ScriptDialog, DrivenToOk) {
    zmltest::HeadlessReset reset;
    auto dialog = std::make_shared<SampleDialog>();
    dialog->Bind();
    HeadlessAnswers::QueueModal([](Frame& frame) {
        auto expr = frame.Find<EditText>("expr");
        EXPECT_EQ(expr->GetUnicodeText(), L"$Input1 + 1");  // filled by OnDisplay
        expr->SetSelection(0, 7);
        expr->UserType(L"$Input2");
        frame.Find<PopupList>("mode")->UserChoose(2);
        EXPECT_TRUE(frame.Find<Number>("count")->UserEnter(L"35"));
        frame.Find<Button>("ok_button")->Press();
    });
    EXPECT_EQ(dialog->ShowModal(), ResultOk);
    EXPECT_TRUE(dialog->WasOkay());
    EXPECT_FALSE(dialog->IsOpen());
    EXPECT_EQ(dialog->displayed, 1);
    EXPECT_EQ(dialog->okays, 1);
    EXPECT_EQ(dialog->Find<EditText>("expr")->GetUnicodeText(), L"$Input2 + 1");
    EXPECT_EQ(dialog->Find<PopupList>("mode")->Value(), L"exact");
    EXPECT_EQ(dialog->Find<Number>("count")->Value(), 35);
    EXPECT_EQ(HeadlessAnswers::PendingModals(), 0u);
}

TEST(ScriptDialog, DrivenToCancelWithOkDisabled) {
    zmltest::HeadlessReset reset;
    auto dialog = std::make_shared<SampleDialog>();
    dialog->Bind();
    bool closed = false;
    dialog->OnMessage("close", [&closed](const Event&) { closed = true; });
    HeadlessAnswers::QueueModal([](Frame& frame) {
        auto ok = frame.Find<Button>("ok_button");
        ok->Disable();
        EXPECT_FALSE(ok->Press());  // a greyed-out button takes no click
        frame.Find<Button>("cancel_button")->Press();
    });
    EXPECT_EQ(dialog->ShowModal(), ResultCancel);
    EXPECT_FALSE(dialog->WasOkay());
    EXPECT_EQ(dialog->okays, 0);
    EXPECT_TRUE(closed);
}

TEST(ScriptDialog, ModalWithoutDriverOrLeftOpenFailsLoudly) {
    zmltest::HeadlessReset reset;
    auto dialog = std::make_shared<SampleDialog>();
    dialog->Bind();
    try {
        dialog->ShowModal();
        FAIL() << "no exception";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_NE(e.Message().find("\"sample_dialog\""), std::string::npos) << e.Message();
    }
    HeadlessAnswers::QueueModal([](Frame&) {});
    EXPECT_THROW(dialog->ShowModal(), QuarnLog::Exception);
    EXPECT_FALSE(dialog->IsOpen());
}

TEST(ScriptSearch, EnvironmentPathComesFirstAndFailuresChangeNothing) {
    zmltest::ScratchDir dir("zml-path");
    dir.Write("sample_dialog.zml", "dialog \"x\" { title \"Overridden\"; }");
    dir.Write("stray.zml", "dialog \"x\" { }\nbutton \"b\" { }");
    dir.Write("broken.zml",
              "dialog \"x\" { title \"Half\"; label \"fine\" { } label \"bad\" { bogus 1; } }");
    zmltest::EnvGuard path("LATTIX_ZML_PATH", "/nonexistent:" + dir.path.string());

    auto overridden = std::make_shared<Dialog>("d");
    overridden->SetSource("sample_dialog");
    EXPECT_EQ(overridden->Title(), L"Overridden");
    EXPECT_EQ(overridden->Source(), (dir.path / "sample_dialog.zml").string());

    auto frame = std::make_shared<Frame>("f");
    EXPECT_THROW(frame->SetSource("broken"), ScriptError);
    EXPECT_TRUE(frame->Children().empty());
    EXPECT_EQ(frame->Title(), L"");

    try {
        frame->SetSource("stray");
        FAIL() << "no exception";
    } catch (const ScriptError& e) {
        EXPECT_EQ(e.Line(), 2);
        EXPECT_NE(e.Problem().find("found a button"), std::string::npos) << e.what();
    }
    try {
        frame->SetSource("no_such_script");
        FAIL() << "no exception";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_NE(e.Message().find("no_such_script.zml"), std::string::npos);
        EXPECT_NE(e.Message().find(dir.path.string()), std::string::npos);
    }
}

TEST(ScriptSearch, InstalledScriptsAllBuild) {
    for (const char* name : {"sample_dialog", "process_dialog", "live_preview", "live_process",
                             "create_operator_dialog", "operator_tree"}) {
        auto frame = std::make_shared<Dialog>(name);
        EXPECT_NO_THROW(frame->SetSource(name)) << name;
    }
    auto editor = std::make_shared<Dialog>("e");
    editor->SetSource("create_operator_dialog");
    EXPECT_EQ(editor->Find<Button>("clearsearch")->GetIcon()->RequestedName(), L"delete.icon");
    EXPECT_FALSE(editor->Find<Button>("clearsearch")->GetIcon()->IsPlaceholder());
    EXPECT_TRUE(editor->Find<Label>("syntax")->IsWrapText());
    EXPECT_NE(editor->Find<SplitPanel>("SPlit")->SecondPane(), nullptr);
    auto tree = std::make_shared<Frame>("t");
    tree->SetSource("operator_tree");
    EXPECT_NE(tree->TryFind<TreeView>("OperatorTreeView"), nullptr);
    EXPECT_TRUE(tree->FindMenu("UserOperatorTreeViewMenu").has_value());
}

TEST(ScriptSearch, RegisteredKindsCanBeDeclared) {
    struct Gauge : Part {
        using Part::Part;
        std::string Kind() const override { return "gauge"; }
    };
    RegisterPartKind("gauge", [](const std::string& name) -> std::shared_ptr<Part> {
        return std::make_shared<Gauge>(name);
    });
    auto document = ParseScript("frame \"f\" { gauge \"g\" { title \"Level\"; } }", "g.zml");
    Frame frame("f");
    BuildFrame(frame, document.declarations[0], document.file);
    EXPECT_EQ(frame.FindPart("g")->Kind(), "gauge");
    EXPECT_EQ(frame.FindPart("g")->Title(), L"Level");
    RegisterPartKind("gauge", nullptr);
    EXPECT_THROW(BuildFrame(frame, document.declarations[0], document.file), ScriptError);
}

TEST(ScriptSearch, ScriptsThatLoadEachOtherFailInsteadOfRecursing) {
    zmltest::ScratchDir dir("zml-loop");
    dir.Write("loop.zml", "frame \"l\" { frame \"inner\" { source \"loop\"; } }");
    zmltest::EnvGuard path("LATTIX_ZML_PATH", dir.path.string());
    auto frame = std::make_shared<Frame>("f");
    try {
        frame->SetSource("loop");
        FAIL() << "no exception";
    } catch (const ScriptError& e) {
        EXPECT_NE(e.Problem().find("nested more than 8 deep"), std::string::npos) << e.what();
        EXPECT_EQ(e.Line(), 1);
    }
    EXPECT_TRUE(frame->Children().empty());
}
