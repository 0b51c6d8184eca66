#pragma once

#include "ZML/Backend.h"

namespace ZML {

// The backend without a screen, used by tests and command-line tools. Parts keep their state and
// get no peers. RunModal runs the frame's display step, then the next driver queued with
// HeadlessAnswers::QueueModal, and returns the frame's result; it never waits. Message boxes take
// their answers from HeadlessAnswers (warnings, errors and information need none: they are
// recorded and logged). Opened documents are recorded.
class HeadlessBackend : public Backend {
public:
    void Realize(Part& part) override;
    int RunModal(Frame& frame) override;
    void Show(Frame& frame) override;
    void Close(Frame& frame) override;
    MessageReply Ask(const MessageRequest& request) override;
    void OpenDocument(const std::wstring& target) override;
};

}  // namespace ZML
