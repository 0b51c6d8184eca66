#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ZML/MessageRequest.h"

namespace ZML {

class Frame;

// What the headless backend answers in place of a user, queued by tests in the order the
// questions and modal frames will come. A question or a modal frame that arrives with nothing
// queued fails loudly: QuarnLog::Exception naming the question (or frame) is raised and logged.
// Process-wide; safe to call from any thread.
class HeadlessAnswers {
public:
    // Queues the answer to the next yes/no or yes/no/cancel question (Yes, No, Cancel), or Cancel
    // for the next text-entry box.
    static void Queue(Answer answer);
    // Queues OK with `text` for the next text-entry box.
    static void Queue(const std::wstring& text);
    // Queues the driver of the next modal frame: it runs after the frame's display step, sets
    // values and fires events as a user would, and must end the frame (Okay, Cancel, EndModal).
    static void QueueModal(std::function<void(Frame&)> driver);

    // Answers and drivers still queued.
    static std::size_t PendingAnswers();
    static std::size_t PendingModals();
    // Every message box shown so far (questions, warnings, errors), oldest first.
    static std::vector<MessageRequest> Shown();
    // Every document or address opened so far, oldest first.
    static std::vector<std::wstring> OpenedDocuments();
    // Forgets queued answers and drivers and the records above.
    static void Reset();

    // Used by the headless backend.
    static MessageReply Take(const MessageRequest& request);
    static std::function<void(Frame&)> TakeModal(const std::string& frameName);
    static void RecordDocument(const std::wstring& target);
};

}  // namespace ZML
