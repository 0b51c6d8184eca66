#include <cmath>
#include <functional>
#include <map>
#include <mutex>

#include "ZML/Button.h"
#include "ZML/Dialog.h"
#include "ZML/EditText.h"
#include "ZML/Filename.h"
#include "ZML/Group.h"
#include "ZML/Label.h"
#include "ZML/Number.h"
#include "ZML/PopupList.h"
#include "ZML/Script.h"
#include "ZML/ScriptError.h"
#include "ZML/ScrollGroup.h"
#include "ZML/ScrollList.h"
#include "ZML/SplitPanel.h"
#include "ZML/TreeView.h"
#include "qtxt/Text.h"
#include "qzml/Icons.h"

namespace ZML {

namespace {

std::mutex kindsLock;

std::map<std::string, PartMaker>& RegisteredKinds() {
    static std::map<std::string, PartMaker> kinds;
    return kinds;
}

template <class T>
std::shared_ptr<Part> Make(const std::string& name) {
    return std::make_shared<T>(name);
}

const std::map<std::string, PartMaker>& CoreKinds() {
    static const std::map<std::string, PartMaker> kinds{
        {"frame", &Make<Frame>},           {"dialog", &Make<Dialog>},
        {"group", &Make<Group>},           {"scrollgroup", &Make<ScrollGroup>},
        {"splitpanel", &Make<SplitPanel>}, {"label", &Make<Label>},
        {"button", &Make<Button>},         {"edittext", &Make<EditText>},
        {"number", &Make<Number>},         {"popuplist", &Make<PopupList>},
        {"filename", &Make<Filename>},     {"scrolllist", &Make<ScrollList>},
        {"treeview", &Make<TreeView>},
    };
    return kinds;
}

class Builder {
public:
    explicit Builder(const std::string& file) : file(file) {}

    void Fill(Frame& frame, const ScriptDeclaration& declaration) {
        for (const auto& statement : declaration.statements) {
            Apply(frame, statement);
        }
        for (const auto& child : declaration.children) {
            if (child.kind == "menu") {
                frame.AddMenu(BuildMenu(child));
            } else {
                frame.Add(BuildPart(frame, child));
            }
        }
    }

private:
    [[noreturn]] void Fail(int line, int column, const std::string& problem) const {
        throw ScriptError(file, line, column, problem);
    }

    void Count(const ScriptStatement& s, std::size_t least, std::size_t most) const {
        if (s.values.size() < least || s.values.size() > most) {
            std::string wanted = least == most ? std::to_string(least)
                                 : most == SIZE_MAX
                                     ? "at least " + std::to_string(least)
                                     : std::to_string(least) + " to " + std::to_string(most);
            Fail(s.line, s.column,
                 "'" + s.keyword + "' takes " + wanted + " value" +
                     (most == 1 && least == 1 ? "" : "s") + ", not " +
                     std::to_string(s.values.size()));
        }
    }

    std::wstring Text(const ScriptValue& v) const {
        if (v.type != ScriptValue::Type::String) {
            Fail(v.line, v.column,
                 "expected a quoted text, found '" + qtxt::DefaultWideToUTF8(v.text) + "'");
        }
        return v.text;
    }

    double Real(const ScriptValue& v) const {
        if (v.type != ScriptValue::Type::Number) {
            Fail(v.line, v.column,
                 "expected a number, found '" + qtxt::DefaultWideToUTF8(v.text) + "'");
        }
        return v.number;
    }

    int Whole(const ScriptValue& v) const {
        double n = Real(v);
        if (n != std::floor(n) || std::fabs(n) > 1e9) {
            Fail(v.line, v.column,
                 "expected a whole number, found " + qtxt::DefaultWideToUTF8(v.text));
        }
        return static_cast<int>(n);
    }

    std::string Word(const ScriptValue& v) const {
        if (v.type != ScriptValue::Type::Word) {
            Fail(v.line, v.column,
                 "expected a word, found '" + qtxt::DefaultWideToUTF8(v.text) + "'");
        }
        return qtxt::DefaultWideToUTF8(v.text);
    }

    bool Flag(const ScriptStatement& s) const {
        Count(s, 0, 1);
        if (s.values.empty()) {
            return true;
        }
        std::string word = Word(s.values[0]);
        if (word == "yes" || word == "true" || word == "on") {
            return true;
        }
        if (word == "no" || word == "false" || word == "off") {
            return false;
        }
        Fail(s.values[0].line, s.values[0].column, "expected yes or no, found '" + word + "'");
    }

    unsigned LockWords(const ScriptStatement& s) const {
        Count(s, 1, SIZE_MAX);
        static const std::map<std::string, unsigned> words{
            {"none", LockNone},         {"left", LockLeft},     {"top", LockTop},
            {"right", LockRight},       {"bottom", LockBottom}, {"horizontal", LockHorizontal},
            {"vertical", LockVertical}, {"all", LockAll}};
        unsigned lock = LockNone;
        for (const auto& v : s.values) {
            if (v.type == ScriptValue::Type::Number) {
                lock |= static_cast<unsigned>(Whole(v));
                continue;
            }
            auto it = words.find(Word(v));
            if (it == words.end()) {
                Fail(v.line, v.column,
                     "unknown lock '" + qtxt::DefaultWideToUTF8(v.text) +
                         "' (left, top, right, bottom, horizontal, vertical, "
                         "all, none)");
            }
            lock |= it->second;
        }
        return lock;
    }

    // Runs `action`, turning a refusal by the part into an error at the statement.
    void Guard(const ScriptStatement& s, const std::function<void()>& action) const {
        try {
            action();
        } catch (const ScriptError&) {
            throw;
        } catch (const std::exception& error) {
            Fail(s.line, s.column, error.what());
        }
    }

    bool ApplyCommon(Part& part, const ScriptStatement& s) const {
        const std::string& k = s.keyword;
        if (k == "title") {
            Count(s, 1, 1);
            part.TitleSet(Text(s.values[0]));
        } else if (k == "info") {
            Count(s, 1, 1);
            part.InfoSet(Text(s.values[0]));
        } else if (k == "geometry") {
            Count(s, 4, 4);
            int x = Whole(s.values[0]), y = Whole(s.values[1]);
            int w = Whole(s.values[2]), h = Whole(s.values[3]);
            Guard(s, [&] { part.GeometrySet(x, y, w, h); });
        } else if (k == "lock") {
            part.LockSet(LockWords(s));
        } else if (k == "titleoffset") {
            Count(s, 1, 1);
            part.TitleOffsetSet(Whole(s.values[0]));
        } else if (k == "titlewhere") {
            Count(s, 1, 1);
            int where = Whole(s.values[0]);
            Guard(s, [&] { part.TitleWhereSet(where); });
        } else if (k == "enabled") {
            part.EnableSet(Flag(s));
        } else if (k == "visible") {
            Flag(s) ? part.Show() : part.Hide();
        } else if (k == "property") {
            Count(s, 2, 2);
            part.Properties().Set(Text(s.values[0]), Text(s.values[1]));
        } else {
            return false;
        }
        return true;
    }

    bool ApplyKind(Part& part, const ScriptStatement& s) const {
        const std::string& k = s.keyword;
        if (auto* frame = dynamic_cast<Frame*>(&part)) {
            if (k == "resizable") {
                frame->ResizableSet(Flag(s));
                return true;
            }
            if (k == "source") {
                Count(s, 1, 1);
                std::string name = qtxt::DefaultWideToUTF8(Text(s.values[0]));
                Guard(s, [&] { frame->SetSource(name); });
                return true;
            }
        }
        if (auto* group = dynamic_cast<Group*>(&part); group && k == "background") {
            Count(s, 1, 1);
            int type = Whole(s.values[0]);
            Guard(s, [&] { group->BackgroundTypeSet(type); });
            return true;
        }
        if (auto* split = dynamic_cast<SplitPanel*>(&part)) {
            if (k == "orientation") {
                Count(s, 1, 1);
                std::string word = Word(s.values[0]);
                if (word != "horizontal" && word != "vertical") {
                    Fail(s.values[0].line, s.values[0].column,
                         "expected horizontal or vertical, found '" + word + "'");
                }
                split->HorizontalSet(word == "horizontal");
                return true;
            }
            if (k == "split") {
                Count(s, 1, 1);
                split->SplitPositionSet(Whole(s.values[0]));
                return true;
            }
        }
        if (auto* label = dynamic_cast<Label*>(&part); label && k == "wrap") {
            label->WrapTextSet(Flag(s));
            return true;
        }
        if (auto* button = dynamic_cast<Button*>(&part); button && k == "icon") {
            Count(s, 1, 1);
            button->IconSet(Text(s.values[0]));
            return true;
        }
        if (auto* edit = dynamic_cast<EditText*>(&part)) {
            if (k == "hint") {
                Count(s, 1, 1);
                edit->SetHint(Text(s.values[0]));
            } else if (k == "text") {
                Count(s, 1, 1);
                edit->SetUnicodeText(Text(s.values[0]));
            } else if (k == "multiline") {
                edit->MultiLineSet(Flag(s));
            } else if (k == "readonly") {
                edit->ReadOnlySet(Flag(s));
            } else {
                return false;
            }
            return true;
        }
        if (auto* number = dynamic_cast<Number*>(&part)) {
            if (k == "min" || k == "max") {
                Count(s, 1, 1);
                double v = Real(s.values[0]);
                Guard(s, [&] {
                    k == "min" ? number->LimitsSet(v, number->Max())
                               : number->LimitsSet(number->Min(), v);
                });
            } else if (k == "step") {
                Count(s, 1, 1);
                double v = Real(s.values[0]);
                Guard(s, [&] { number->StepSet(v); });
            } else if (k == "format") {
                Count(s, 1, 1);
                std::string format = qtxt::DefaultWideToUTF8(s.values[0].text);
                Guard(s, [&] { number->FormatSet(format); });
            } else if (k == "value") {
                Count(s, 1, 1);
                number->SetValue(Real(s.values[0]));
            } else if (k == "blank") {
                Count(s, 0, 0);
                number->SetBlank();
            } else {
                return false;
            }
            return true;
        }
        if (auto* popup = dynamic_cast<PopupList*>(&part)) {
            if (k == "values") {
                std::vector<std::wstring> values;
                for (const auto& v : s.values) {
                    values.push_back(Text(v));
                }
                popup->ValueListSet(values);
            } else if (k == "value") {
                Count(s, 1, 1);
                if (!popup->SetValue(Text(s.values[0]))) {
                    Fail(s.values[0].line, s.values[0].column,
                         "'" + qtxt::DefaultWideToUTF8(s.values[0].text) +
                             "' is not one of the values of the list");
                }
            } else {
                return false;
            }
            return true;
        }
        if (auto* filename = dynamic_cast<Filename*>(&part)) {
            if (k == "mode") {
                Count(s, 1, 1);
                std::string word = Word(s.values[0]);
                if (word != "input" && word != "output") {
                    Fail(s.values[0].line, s.values[0].column,
                         "expected input or output, found '" + word + "'");
                }
                filename->ModeSet(word == "input" ? FilenameInput : FilenameOutput);
            } else if (k == "type") {
                if (s.values.size() != 1 && s.values.size() != 6) {
                    Fail(s.line, s.column,
                         "'type' takes a type name, optionally followed by five "
                         "flag states");
                }
                std::wstring type = Text(s.values[0]);
                if (s.values.size() == 1) {
                    filename->TypeDefAdd(type);
                } else {
                    filename->TypeDefAdd(type, nullptr, Whole(s.values[1]), Whole(s.values[2]),
                                         Whole(s.values[3]), Whole(s.values[4]),
                                         Whole(s.values[5]));
                }
            } else if (k == "shortform") {
                filename->SetShortForm(Flag(s));
            } else if (k == "path") {
                Count(s, 1, 1);
                filename->Select(Text(s.values[0]));
            } else {
                return false;
            }
            return true;
        }
        if (auto* list = dynamic_cast<ScrollList*>(&part); list && k == "row") {
            Count(s, 1, 2);
            std::shared_ptr<Icon> icon;
            if (s.values.size() == 2) {
                icon = qzml_IconCreateFromFile(Text(s.values[1]));
            }
            list->AddRow(Text(s.values[0]), icon);
            return true;
        }
        return false;
    }

    void Apply(Part& part, const ScriptStatement& s) const {
        if (!ApplyCommon(part, s) && !ApplyKind(part, s)) {
            Fail(s.line, s.column, "a " + part.Kind() + " has no setting '" + s.keyword + "'");
        }
    }

    Menu BuildMenu(const ScriptDeclaration& declaration) const {
        if (!declaration.children.empty()) {
            const auto& child = declaration.children.front();
            Fail(child.line, child.column,
                 "a menu holds items and separators, not a " + child.kind);
        }
        Menu menu;
        menu.name = declaration.name;
        for (const auto& s : declaration.statements) {
            if (s.keyword == "item") {
                Count(s, 2, 2);
                menu.items.push_back(
                    MenuItem{qtxt::DefaultWideToUTF8(Text(s.values[0])), Text(s.values[1]), false});
            } else if (s.keyword == "separator") {
                Count(s, 0, 0);
                menu.items.push_back(MenuItem{{}, {}, true});
            } else {
                Fail(s.line, s.column, "a menu has no setting '" + s.keyword + "'");
            }
        }
        return menu;
    }

    std::shared_ptr<Part> BuildPart(Frame& frame, const ScriptDeclaration& declaration) const {
        PartMaker maker = nullptr;
        if (auto it = CoreKinds().find(declaration.kind); it != CoreKinds().end()) {
            maker = it->second;
        } else {
            std::lock_guard<std::mutex> lock(kindsLock);
            if (auto found = RegisteredKinds().find(declaration.kind);
                found != RegisteredKinds().end()) {
                maker = found->second;
            }
        }
        if (maker == nullptr) {
            Fail(declaration.line, declaration.column,
                 "unknown part kind '" + declaration.kind + "'");
        }
        std::shared_ptr<Part> part = maker(declaration.name);
        if (!part) {
            Fail(declaration.line, declaration.column,
                 "no part could be made of kind '" + declaration.kind + "'");
        }
        if (auto* nested = dynamic_cast<Frame*>(part.get())) {
            Builder(file).Fill(*nested, declaration);
            return part;
        }
        for (const auto& s : declaration.statements) {
            Apply(*part, s);
        }
        for (const auto& child : declaration.children) {
            if (child.kind == "menu") {
                frame.AddMenu(BuildMenu(child));
                continue;
            }
            auto built = BuildPart(frame, child);
            if (auto* group = dynamic_cast<Group*>(part.get())) {
                group->Add(built);
            } else if (auto* split = dynamic_cast<SplitPanel*>(part.get())) {
                Guard(ScriptStatement{child.kind, {}, child.line, child.column},
                      [&] { split->Add(built); });
            } else {
                Fail(child.line, child.column, "a " + part->Kind() + " cannot hold other parts");
            }
        }
        return part;
    }

    const std::string& file;
};

}  // namespace

void BuildFrame(Frame& frame, const ScriptDeclaration& declaration, const std::string& file) {
    if (declaration.kind != "frame" && declaration.kind != "dialog") {
        throw ScriptError(file, declaration.line, declaration.column,
                          "expected a frame or a dialog, found a " + declaration.kind);
    }
    // Built once on a scratch frame, so that a mistake anywhere leaves `frame` untouched.
    {
        Frame scratch(frame.Name());
        Builder(file).Fill(scratch, declaration);
    }
    Builder(file).Fill(frame, declaration);
}

void RegisterPartKind(const std::string& kind, PartMaker maker) {
    std::lock_guard<std::mutex> lock(kindsLock);
    if (maker) {
        RegisteredKinds()[kind] = maker;
    } else {
        RegisteredKinds().erase(kind);
    }
}

}  // namespace ZML
