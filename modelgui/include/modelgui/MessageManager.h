#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Issue.h"

namespace Velmar::Lattix {
class Model;
class Operator;
class Port;
}  // namespace Velmar::Lattix

namespace quarn::modelgui {

struct messageData;

// The diagnostic messages the engine reports for one editor's model: an ordered list (oldest
// first) without repeated reports, and a signal fired after every change of the list.
//
// Threads: reports may arrive on any thread while the display reads on the user-interface thread.
// Changes and subscriptions take the manager's lock exclusively and fire the signal inside that
// section, so listeners run on the reporting thread and must hand work to the user-interface
// thread themselves. A listener may call GetMessages (see there) but must not change the list or
// subscribe from inside the signal: that raises QuarnLog::Exception rather than dead-locking.
class MessageManager {
public:
    // One message about an operator and port (either may be empty: messages about the model as a
    // whole carry neither). The message never keeps the operator or port alive.
    struct Message {
        // Keeps helpKey and severity as given and formats the display text from the raw text: the
        // raw text is split at line feeds; when there are two lines or more, lines that read
        // "args" or "args!" (in any case) are dropped; what remains gives an empty text (no line),
        // the line itself (one line), or the last line followed by the others, blank-separated,
        // in parentheses ("Input1\nargs\nFile not found" -> "File not found (Input1)").
        Message(const std::shared_ptr<Velmar::Lattix::Operator>& op,
                const std::shared_ptr<Velmar::Lattix::Port>& port, const std::wstring& text,
                const std::wstring& helpKey, Velmar::Lattix::Issue::Severity severity);
        virtual ~Message();

        // The operator and port, or null once they are gone (or when none was given).
        std::shared_ptr<Velmar::Lattix::Operator> GetOperator() const;
        std::shared_ptr<Velmar::Lattix::Port> GetPort() const;
        std::wstring GetText() const;
        std::wstring GetHelpKey() const;
        Velmar::Lattix::Issue::Severity GetSeverity() const;

    private:
        // The manager's record reads the stored text in place when it looks for repeats.
        friend struct quarn::modelgui::messageData;

        std::weak_ptr<Velmar::Lattix::Operator> op;
        std::weak_ptr<Velmar::Lattix::Port> port;
        std::wstring text;
        std::wstring helpKey;
        Velmar::Lattix::Issue::Severity severity;
    };

    // An empty list, hooked to no model.
    MessageManager();
    // Unhooks from the model first, so that no report arrives while the manager is taken apart.
    ~MessageManager();
    MessageManager(const MessageManager&) = delete;
    MessageManager& operator=(const MessageManager&) = delete;

    // Adds one report: every stored message with the same operator, port and severity whose stored
    // (formatted) text equals the raw `text` is removed, the new message is appended and the signal
    // fires. A multi-line report is formatted differently from its raw text, so it is never taken
    // for a repetition of an earlier one. Callable from any thread. An exception from a listener
    // passes to the caller after the list has changed.
    void AddMessage(const std::shared_ptr<Velmar::Lattix::Operator>& op,
                    const std::shared_ptr<Velmar::Lattix::Port>& port, const std::wstring& text,
                    const std::wstring& helpKey, Velmar::Lattix::Issue::Severity severity);
    // Empties the list and fires the signal. Callable from any thread.
    void ClearMessages();
    // A copy of the list, oldest first. Waits for a change in progress on another thread; on the
    // thread that is changing the list (a listener) it reads at once.
    std::vector<std::shared_ptr<Message>> GetMessages() const;
    // Subscribes fn (must not be empty) to the messages-changed signal. Releasing the last copy of
    // the returned token unsubscribes; the token may outlive the manager.
    std::shared_ptr<void> AddMessagesChangedCB(const std::function<void()>& fn);
    // Hooks the manager to the reports of model and of every operator inside it, releasing the
    // hook of the previous model (whose reports stop arriving). A null model only releases the
    // previous hook. Neither clears the list nor fires the signal: call ClearMessages first for a
    // fresh list. Call on the user-interface thread.
    void UpdateProcess(const std::shared_ptr<Velmar::Lattix::Model>& model);

private:
    std::shared_ptr<quarn::modelgui::messageData> messageData;
};

}  // namespace quarn::modelgui
