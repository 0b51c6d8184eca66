#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace QuarnLog {

struct errorContextData;

// The error record a handler opens, named after its operation ("HidePort",
// "quarn::modelgui::CreateOperatorDialog::RemovePort"). Errors raised inside Run, or added by hand,
// are kept and written to the log, under the operation's name, when the context is destroyed; they
// never reach the caller. Toolkit and engine calls that take an error record add their failures
// with Add.
class ErrorContext {
public:
    explicit ErrorContext(std::string operation, std::string source = {});
    ~ErrorContext();
    ErrorContext(const ErrorContext&) = delete;
    ErrorContext& operator=(const ErrorContext&) = delete;

    // The operation's name; message boxes use it as their caption.
    const std::string& Operation() const;
    const std::string& Source() const;

    void Add(const std::string& message);
    void Add(const std::wstring& message);
    void Add(const std::exception& error);

    // Runs `body`; an exception it raises is added to this context instead of escaping.
    // Returns true when `body` finished without raising.
    bool Run(const std::function<void()>& body);

    bool HasErrors() const;
    const std::vector<std::string>& Messages() const;
    // Messages joined by new lines, as wide text for message boxes.
    std::wstring Text() const;
    // Forgets the kept errors: nothing is logged for them.
    void Clear();

private:
    std::shared_ptr<errorContextData> errorContext;
};

}  // namespace QuarnLog
