#include <fstream>
#include <sstream>

#include "ZML/Script.h"
#include "ZML/ScriptError.h"
#include "core/resources.h"
#include "qtxt/Text.h"

namespace ZML {

ScriptError::ScriptError(const std::string& file, int line, int column, const std::string& problem)
    : QuarnLog::Exception(
          "ZML::ParseScript", file,
          file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + problem),
      file(file),
      line(line),
      column(column),
      problem(problem) {}

namespace {

enum class TokenType { Word, String, Number, Open, Close, Semicolon, End };

struct Token {
    TokenType type = TokenType::End;
    std::string text;  // UTF-8: the word, the string's content, the number as written
    int line = 1;
    int column = 1;
};

std::string Describe(const Token& token) {
    switch (token.type) {
        case TokenType::Word:
            return "the word '" + token.text + "'";
        case TokenType::String:
            return "a string";
        case TokenType::Number:
            return "the number " + token.text;
        case TokenType::Open:
            return "'{'";
        case TokenType::Close:
            return "'}'";
        case TokenType::Semicolon:
            return "';'";
        case TokenType::End:
            return "the end of the file";
    }
    return "something";
}

class Lexer {
public:
    Lexer(const std::string& text, const std::string& file) : text(text), file(file) {}

    Token Next() {
        SkipBlanksAndComments();
        Token token;
        token.line = line;
        token.column = column;
        if (at >= text.size()) {
            return token;
        }
        char c = text[at];
        if (c == '{' || c == '}' || c == ';') {
            token.type = c == '{'   ? TokenType::Open
                         : c == '}' ? TokenType::Close
                                    : TokenType::Semicolon;
            Advance();
            return token;
        }
        if (c == '"') {
            token.type = TokenType::String;
            token.text = ReadString(token);
            return token;
        }
        if (IsDigit(c) ||
            ((c == '-' || c == '+') && at + 1 < text.size() && IsDigit(text[at + 1]))) {
            token.type = TokenType::Number;
            token.text.push_back(c);
            Advance();
            while (at < text.size() && (IsDigit(text[at]) || text[at] == '.')) {
                token.text.push_back(text[at]);
                Advance();
            }
            if (at < text.size() && IsWordChar(text[at])) {
                throw ScriptError(file, token.line, token.column,
                                  "malformed number '" + token.text + text[at] + "'");
            }
            return token;
        }
        if (IsWordStart(c)) {
            token.type = TokenType::Word;
            while (at < text.size() && IsWordChar(text[at])) {
                token.text.push_back(text[at]);
                Advance();
            }
            return token;
        }
        std::string shown = (static_cast<unsigned char>(c) < 0x20)
                                ? "a control character"
                                : std::string("'") + Glyph() + "'";
        throw ScriptError(file, line, column, "unexpected character " + shown);
    }

private:
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
    static bool IsWordStart(char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    }
    static bool IsWordChar(char c) { return IsWordStart(c) || IsDigit(c) || c == '-'; }

    // The whole UTF-8 character at the cursor.
    std::string Glyph() const {
        std::size_t end = at + 1;
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
            ++end;
        }
        return text.substr(at, end - at);
    }

    void Advance() {
        if (text[at] == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
        ++at;
        // Continuation bytes belong to the character just counted.
        while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) {
            ++at;
        }
    }

    void SkipBlanksAndComments() {
        while (at < text.size()) {
            char c = text[at];
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
                Advance();
            } else if (c == '#' || (c == '/' && at + 1 < text.size() && text[at + 1] == '/')) {
                while (at < text.size() && text[at] != '\n') {
                    Advance();
                }
            } else {
                return;
            }
        }
    }

    std::string ReadString(const Token& start) {
        std::string value;
        Advance();  // the opening quote
        while (true) {
            if (at >= text.size() || text[at] == '\n') {
                throw ScriptError(file, start.line, start.column,
                                  "string not closed before the end of the line");
            }
            char c = text[at];
            if (c == '"') {
                Advance();
                return value;
            }
            if (c != '\\') {
                std::string glyph = Glyph();
                value += glyph;
                Advance();
                continue;
            }
            int escLine = line;
            int escColumn = column;
            Advance();
            if (at >= text.size()) {
                continue;
            }
            char e = text[at];
            switch (e) {
                case '"':
                    value.push_back('"');
                    break;
                case '\\':
                    value.push_back('\\');
                    break;
                case 'n':
                    value.push_back('\n');
                    break;
                case 't':
                    value.push_back('\t');
                    break;
                default:
                    throw ScriptError(file, escLine, escColumn,
                                      std::string("unknown escape '\\") + Glyph() +
                                          "' (use \\\", \\\\, \\n or \\t)");
            }
            Advance();
        }
    }

    const std::string& text;
    const std::string& file;
    std::size_t at = 0;
    int line = 1;
    int column = 1;
};

class Parser {
public:
    Parser(const std::string& text, const std::string& file) : lexer(text, file), file(file) {
        Shift();
    }

    ScriptDocument Document() {
        ScriptDocument document;
        document.file = file;
        while (current.type != TokenType::End) {
            if (current.type != TokenType::Word) {
                Fail(current, "expected a declaration such as frame \"name\" { ... }, found " +
                                  Describe(current));
            }
            Token keyword = current;
            Shift();
            if (current.type != TokenType::String && current.type != TokenType::Open) {
                Fail(current, "expected the name of the " + keyword.text + " or '{', found " +
                                  Describe(current));
            }
            document.declarations.push_back(Declaration(keyword, 0));
        }
        return document;
    }

private:
    static constexpr int MaxDepth = 64;

    void Shift() { current = lexer.Next(); }

    [[noreturn]] void Fail(const Token& at, const std::string& problem) const {
        throw ScriptError(file, at.line, at.column, problem);
    }

    // `keyword` was read; the cursor is on the name or the '{'.
    ScriptDeclaration Declaration(const Token& keyword, int depth) {
        if (depth > MaxDepth) {
            Fail(keyword, "declarations nested deeper than " + std::to_string(MaxDepth));
        }
        ScriptDeclaration declaration;
        declaration.kind = keyword.text;
        declaration.line = keyword.line;
        declaration.column = keyword.column;
        if (current.type == TokenType::String) {
            declaration.name = current.text;
            Shift();
        }
        if (current.type != TokenType::Open) {
            Fail(current, "expected '{' after " + keyword.text + " \"" + declaration.name +
                              "\", found " + Describe(current));
        }
        Token open = current;
        Shift();
        while (current.type != TokenType::Close) {
            if (current.type == TokenType::End) {
                Fail(open,
                     "'{' of " + keyword.text + " \"" + declaration.name + "\" is never closed");
            }
            if (current.type != TokenType::Word) {
                Fail(current, "expected a statement or a declaration, found " + Describe(current));
            }
            Token word = current;
            Shift();
            std::vector<Token> values;
            while (current.type == TokenType::Word || current.type == TokenType::String ||
                   current.type == TokenType::Number) {
                values.push_back(current);
                Shift();
            }
            if (current.type == TokenType::Open) {
                if (values.size() > 1 ||
                    (values.size() == 1 && values[0].type != TokenType::String)) {
                    Fail(values.back(), "a declaration takes one quoted name before '{'");
                }
                ScriptDeclaration child;
                if (values.empty()) {
                    child = Declaration(word, depth + 1);
                } else {
                    // Re-enter with the name already read.
                    child = DeclarationWithName(word, values[0], depth + 1);
                }
                declaration.children.push_back(std::move(child));
                continue;
            }
            if (current.type != TokenType::Semicolon) {
                Fail(current, "expected ';' after the statement '" + word.text + "', found " +
                                  Describe(current));
            }
            Shift();
            ScriptStatement statement;
            statement.keyword = word.text;
            statement.line = word.line;
            statement.column = word.column;
            for (const auto& token : values) {
                statement.values.push_back(Value(token));
            }
            declaration.statements.push_back(std::move(statement));
        }
        Shift();
        return declaration;
    }

    ScriptDeclaration DeclarationWithName(const Token& keyword, const Token& name, int depth) {
        // The cursor is on '{'; hand Declaration a name by treating it as already consumed.
        ScriptDeclaration declaration = Declaration(keyword, depth);
        declaration.name = name.text;
        return declaration;
    }

    ScriptValue Value(const Token& token) const {
        ScriptValue value;
        value.line = token.line;
        value.column = token.column;
        value.text = qtxt::UTF8toDefaultWide(token.text);
        if (token.type == TokenType::String) {
            value.type = ScriptValue::Type::String;
        } else if (token.type == TokenType::Number) {
            value.type = ScriptValue::Type::Number;
            std::size_t used = 0;
            try {
                value.number = std::stod(token.text, &used);
            } catch (const std::exception&) {
                used = 0;
            }
            if (used != token.text.size()) {
                Fail(token, "malformed number '" + token.text + "'");
            }
        } else {
            value.type = ScriptValue::Type::Word;
        }
        return value;
    }

    Lexer lexer;
    const std::string& file;
    Token current;
};

}  // namespace

ScriptDocument ParseScript(const std::string& text, const std::string& file) {
    return Parser(text, file).Document();
}

ScriptDocument ParseScriptFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        QUARN_THROW("Cannot read the dialog script " + file.string() + ".");
    }
    std::ostringstream text;
    text << in.rdbuf();
    return ParseScript(text.str(), file.string());
}

std::vector<std::filesystem::path> ScriptSearchPath() {
    return detail::ScriptSearchPath();
}

std::filesystem::path FindScript(const std::string& scriptName) {
    if (scriptName.empty() || scriptName.find('/') != std::string::npos) {
        return {};
    }
    for (const auto& folder : ScriptSearchPath()) {
        std::filesystem::path candidate = folder / (scriptName + ".zml");
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error)) {
            return candidate;
        }
    }
    return {};
}

}  // namespace ZML
