#include "ZML/Frame.h"

#include <algorithm>

#include "QuarnLog/Exception.h"
#include "ZML/Backend.h"
#include "ZML/Script.h"
#include "ZML/ScriptError.h"

namespace ZML {

struct frameData {
    bool resizable = false;
    std::string source;
    std::vector<Menu> menus;
    bool open = false;
    int result = ResultCancel;
};

Frame::Frame(std::string name)
    : Part(std::move(name)), frameRecord(std::make_shared<frameData>()) {}
Frame::~Frame() = default;

std::string Frame::Kind() const {
    return "frame";
}

void Frame::Add(const std::shared_ptr<Part>& part) {
    AddChild(part);
}

void Frame::ResizableSet(bool resizable) {
    frameRecord->resizable = resizable;
    Refresh(PartChange::Content);
}
bool Frame::IsResizable() const {
    return frameRecord->resizable;
}

void Frame::SetSource(const std::string& scriptName) {
    // Inner frames may load scripts of their own; a script that loads itself must not recurse
    // without end.
    static thread_local int depth = 0;
    if (depth >= 8) {
        QUARN_THROW("Dialog script \"" + scriptName +
                    "\" is loaded by scripts nested more than 8 deep; do they load each other?");
    }
    struct DepthGuard {
        int& depth;
        explicit DepthGuard(int& d) : depth(d) { ++depth; }
        ~DepthGuard() { --depth; }
    } guard(depth);
    auto file = FindScript(scriptName);
    if (file.empty()) {
        std::string searched;
        for (const auto& folder : ScriptSearchPath()) {
            searched += (searched.empty() ? "" : ", ") + folder.string();
        }
        QUARN_THROW("No dialog script \"" + scriptName + ".zml\" in " + searched + ".");
    }
    ScriptDocument document = ParseScriptFile(file);
    auto first =
        std::find_if(document.declarations.begin(), document.declarations.end(),
                     [](const ScriptDeclaration& declaration) {
                         return declaration.kind == "frame" || declaration.kind == "dialog";
                     });
    if (first == document.declarations.end()) {
        QUARN_THROW("Dialog script " + file.string() + " declares no frame or dialog.");
    }
    // The whole script is checked before this frame changes: menus first, the frame last, and
    // BuildFrame itself only touches the frame once every part was made.
    std::vector<Menu> menus;
    for (const auto& declaration : document.declarations) {
        if (declaration.kind != "menu" && declaration.kind != "frame" &&
            declaration.kind != "dialog") {
            throw ScriptError(file.string(), declaration.line, declaration.column,
                              "expected a frame, a dialog or a menu at the top level, found a " +
                                  declaration.kind);
        }
        if (declaration.kind == "menu") {
            ScriptDeclaration holder;
            holder.kind = "frame";
            holder.children.push_back(declaration);
            Frame scratch;
            BuildFrame(scratch, holder, file.string());
            for (auto& menu : scratch.Menus()) {
                menus.push_back(std::move(menu));
            }
        }
    }
    BuildFrame(*this, *first, file.string());
    for (auto& menu : menus) {
        AddMenu(std::move(menu));
    }
    frameRecord->source = file.string();
}

const std::string& Frame::Source() const {
    return frameRecord->source;
}

void Frame::AddMenu(Menu menu) {
    auto& menus = frameRecord->menus;
    auto it = std::find_if(menus.begin(), menus.end(),
                           [&menu](const Menu& known) { return known.name == menu.name; });
    if (it != menus.end()) {
        *it = std::move(menu);
    } else {
        menus.push_back(std::move(menu));
    }
}

std::optional<Menu> Frame::FindMenu(const std::string& name) const {
    for (const auto& menu : frameRecord->menus) {
        if (menu.name == name) {
            return menu;
        }
    }
    return std::nullopt;
}

std::vector<Menu> Frame::Menus() const {
    return frameRecord->menus;
}

int Frame::ShowModal() {
    // Held so that a handler that drops the caller's last reference cannot end the run early.
    auto keep = weak_from_this().lock();
    frameRecord->result = ResultCancel;
    return Backend::Current()->RunModal(*this);
}

void Frame::Show() {
    Backend::Current()->Show(*this);
}

void Frame::EndModal(int result) {
    if (!frameRecord->open) {
        return;
    }
    frameRecord->open = false;
    frameRecord->result = result;
    Backend::Current()->Close(*this);
    FireMessage("close");
}

bool Frame::IsOpen() const {
    return frameRecord->open;
}
int Frame::ModalResult() const {
    return frameRecord->result;
}

void Frame::Display() {
    frameRecord->open = true;
    OnDisplay();
    FireMessage("display");
}

void Frame::OnDisplay() {}

}  // namespace ZML
