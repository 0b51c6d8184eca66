#pragma once

#include <memory>
#include <string>

#include "ZML/MessageRequest.h"

namespace ZML {

class Frame;
class Part;

// What the toolkit needs from a windowing system. One backend serves the whole process; the
// headless backend (HeadlessBackend) is installed until another is. Everything is called on the
// user-interface thread.
class Backend {
public:
    virtual ~Backend() = default;

    // The backend in use; never null.
    static std::shared_ptr<Backend> Current();
    // Makes `backend` the one in use; null restores the headless backend.
    static void Install(std::shared_ptr<Backend> backend);

    // Creates the peers that show `part` and its children (Part::PeerSet).
    virtual void Realize(Part& part) = 0;
    // Shows `frame` modally and returns when it was ended (Frame::EndModal), with its result.
    // Must call frame.Display() before the frame appears.
    virtual int RunModal(Frame& frame) = 0;
    // Shows `frame` without waiting; calls frame.Display().
    virtual void Show(Frame& frame) = 0;
    // Takes `frame` off the screen (after EndModal).
    virtual void Close(Frame& frame) = 0;
    // Shows a message box and returns the user's answer.
    virtual MessageReply Ask(const MessageRequest& request) = 0;
    // Opens a document or an address (a help page, a web page) with the desktop's viewer.
    virtual void OpenDocument(const std::wstring& target) = 0;
};

}  // namespace ZML
