#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace ZML {

class Part;
class Frame;

// One value of a script statement.
struct ScriptValue {
    enum class Type { Word, String, Number };
    Type type = Type::Word;
    // The word, or the string's text (escapes resolved), or the number as written.
    std::wstring text;
    double number = 0;
    int line = 0;
    int column = 0;
};

// A statement inside a declaration: `title "OK";`, `geometry 10 10 80 27;`.
struct ScriptStatement {
    std::string keyword;
    std::vector<ScriptValue> values;
    int line = 0;
    int column = 0;
};

// A declaration: `button "ok" { ... }`, `menu "context" { ... }`, and nested declarations.
struct ScriptDeclaration {
    std::string kind;
    std::string name;
    std::vector<ScriptStatement> statements;
    std::vector<ScriptDeclaration> children;
    int line = 0;
    int column = 0;
};

// A parsed script file.
struct ScriptDocument {
    std::string file;
    std::vector<ScriptDeclaration> declarations;
};

// Parses script text (UTF-8) read from `file` (used in error messages). Throws ScriptError.
ScriptDocument ParseScript(const std::string& text, const std::string& file);
// Reads and parses a script file. Throws ScriptError, or QuarnLog::Exception when it cannot be
// read.
ScriptDocument ParseScriptFile(const std::filesystem::path& file);
// The file of the script `scriptName` (<scriptName>.zml on the script search path, see
// docs/zml-scripts.md), or empty when there is none.
std::filesystem::path FindScript(const std::string& scriptName);
// The folders searched, in order.
std::vector<std::filesystem::path> ScriptSearchPath();

// Gives `frame` the settings and parts of `declaration` (a frame or dialog declaration) and adds
// the menus it declares. Throws ScriptError for unknown kinds, unknown statements and wrong
// values; `frame` is left unchanged then.
void BuildFrame(Frame& frame, const ScriptDeclaration& declaration, const std::string& file);

// Makes parts of a kind that scripts may declare, for kinds that live outside the toolkit core
// (the flow-graph canvas). Replaces an earlier registration of `kind`.
using PartMaker = std::shared_ptr<Part> (*)(const std::string& name);
void RegisterPartKind(const std::string& kind, PartMaker maker);

}  // namespace ZML
