#pragma once

#include <exception>
#include <string>

namespace QuarnLog {

// The error that engine-facing code raises: the fully qualified function name (for example
// "quarn::modelgui::PortAttributes::GetAttribute"), the source file name and a message. what() is
// the message text in UTF-8; dialog handlers show it to the user.
class Exception : public std::exception {
public:
    Exception(std::string function, std::string source, std::string message);
    Exception(std::string function, std::string source, const std::wstring& message);

    const char* what() const noexcept override { return message.c_str(); }
    const std::string& Function() const noexcept { return function; }
    const std::string& Source() const noexcept { return source; }
    const std::string& Message() const noexcept { return message; }
    std::wstring WideMessage() const;

    // Writes this error to the log at error level.
    void Log() const noexcept;

private:
    std::string function;
    std::string source;
    std::string message;
};

}  // namespace QuarnLog

// Raises a QuarnLog::Exception naming the enclosing function and this source file.
#define QUARN_THROW(message) \
    throw ::QuarnLog::Exception(__PRETTY_FUNCTION__, __FILE__, (message))
