#include "QuarnLog/Exception.h"

#include "QuarnLog/ErrorContext.h"
#include "QuarnLog/Log.h"
#include "QuarnLog/UnthrownException.h"
#include "qtxt/Text.h"

namespace QuarnLog {

Exception::Exception(std::string function, std::string source, std::string message)
    : function(std::move(function)), source(std::move(source)), message(std::move(message)) {}

Exception::Exception(std::string function, std::string source, const std::wstring& message)
    : Exception(std::move(function), std::move(source), qtxt::DefaultWideToUTF8(message)) {}

std::wstring Exception::WideMessage() const { return qtxt::UTF8toDefaultWide(message); }

void Exception::Log() const noexcept { Write(Level::Error, function, source, message); }

// ---------------------------------------------------------------------------------------------

struct unthrownData {
    std::string function;
    std::string source;
    std::vector<std::string> messages;
    bool done = false;  // thrown or cleared
};

UnthrownException::UnthrownException(std::string function, std::string source,
                                     std::string message)
    : unthrownRecord(std::make_shared<unthrownData>()) {
    unthrownRecord->function = std::move(function);
    unthrownRecord->source = std::move(source);
    if (!message.empty()) unthrownRecord->messages.push_back(std::move(message));
}

UnthrownException::UnthrownException(std::string function, std::string source,
                                     const std::wstring& message)
    : UnthrownException(std::move(function), std::move(source),
                        qtxt::DefaultWideToUTF8(message)) {}

UnthrownException::~UnthrownException() {
    if (unthrownRecord->done) return;
    if (unthrownRecord->messages.empty()) {
        Write(Level::Error, unthrownRecord->function, unthrownRecord->source,
              std::string_view("error reported without a message"));
        return;
    }
    for (const auto& m : unthrownRecord->messages) {
        Write(Level::Error, unthrownRecord->function, unthrownRecord->source, m);
    }
}

void UnthrownException::AddMessage(const std::string& message) {
    unthrownRecord->messages.push_back(message);
}

void UnthrownException::AddMessage(const std::wstring& message) {
    unthrownRecord->messages.push_back(qtxt::DefaultWideToUTF8(message));
}

const std::vector<std::string>& UnthrownException::Messages() const {
    return unthrownRecord->messages;
}

bool UnthrownException::HasMessages() const { return !unthrownRecord->messages.empty(); }
const std::string& UnthrownException::Function() const { return unthrownRecord->function; }
const std::string& UnthrownException::Source() const { return unthrownRecord->source; }

void UnthrownException::Throw() {
    unthrownRecord->done = true;
    std::string text;
    for (const auto& m : unthrownRecord->messages) {
        if (!text.empty()) text += '\n';
        text += m;
    }
    throw Exception(unthrownRecord->function, unthrownRecord->source, text);
}

void UnthrownException::Clear() {
    unthrownRecord->done = true;
    unthrownRecord->messages.clear();
}

// ---------------------------------------------------------------------------------------------

struct errorContextData {
    std::string operation;
    std::string source;
    std::vector<std::string> messages;
};

ErrorContext::ErrorContext(std::string operation, std::string source)
    : errorContext(std::make_shared<errorContextData>()) {
    errorContext->operation = std::move(operation);
    errorContext->source = std::move(source);
}

ErrorContext::~ErrorContext() {
    for (const auto& m : errorContext->messages) {
        Write(Level::Error, errorContext->operation, errorContext->source, m);
    }
}

const std::string& ErrorContext::Operation() const { return errorContext->operation; }
const std::string& ErrorContext::Source() const { return errorContext->source; }

void ErrorContext::Add(const std::string& message) { errorContext->messages.push_back(message); }

void ErrorContext::Add(const std::wstring& message) {
    errorContext->messages.push_back(qtxt::DefaultWideToUTF8(message));
}

void ErrorContext::Add(const std::exception& error) {
    // The text alone: it is what message boxes show; the log record names the operation.
    errorContext->messages.emplace_back(error.what());
}

bool ErrorContext::Run(const std::function<void()>& body) {
    try {
        body();
        return true;
    } catch (const std::exception& e) {
        Add(e);
    }
    return false;
}

bool ErrorContext::HasErrors() const { return !errorContext->messages.empty(); }

const std::vector<std::string>& ErrorContext::Messages() const { return errorContext->messages; }

std::wstring ErrorContext::Text() const {
    std::string text;
    for (const auto& m : errorContext->messages) {
        if (!text.empty()) text += '\n';
        text += m;
    }
    return qtxt::UTF8toDefaultWide(text);
}

void ErrorContext::Clear() { errorContext->messages.clear(); }

}  // namespace QuarnLog
