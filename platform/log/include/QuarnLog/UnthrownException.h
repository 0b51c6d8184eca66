#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QuarnLog/Exception.h"

namespace QuarnLog {

struct unthrownData;

// An error record for failures that must not interrupt the user: made like an Exception, it writes
// itself to the log when destroyed unless it was thrown (Throw) or cleared (Clear). Messages can be
// added until then; the first one is the main message.
class UnthrownException {
public:
    UnthrownException(std::string function, std::string source, std::string message = {});
    UnthrownException(std::string function, std::string source, const std::wstring& message);
    ~UnthrownException();
    UnthrownException(const UnthrownException&) = delete;
    UnthrownException& operator=(const UnthrownException&) = delete;

    void AddMessage(const std::string& message);
    void AddMessage(const std::wstring& message);
    const std::vector<std::string>& Messages() const;
    bool HasMessages() const;
    const std::string& Function() const;
    const std::string& Source() const;

    // Raises the record as an Exception (messages joined by new lines); it will not report itself.
    [[noreturn]] void Throw();
    // Forgets the record: nothing is logged when it is destroyed.
    void Clear();

private:
    std::shared_ptr<unthrownData> unthrownRecord;
};

}  // namespace QuarnLog
