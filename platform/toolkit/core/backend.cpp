#include "ZML/Backend.h"

#include <deque>
#include <mutex>

#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "ZML/Frame.h"
#include "ZML/HeadlessAnswers.h"
#include "ZML/HeadlessBackend.h"
#include "qtxt/Text.h"

namespace ZML {

namespace {

std::mutex backendLock;

std::shared_ptr<Backend>& InstalledBackend() {
    static std::shared_ptr<Backend> backend;
    return backend;
}

struct HeadlessState {
    std::mutex lock;
    std::deque<MessageReply> answers;
    std::deque<std::function<void(Frame&)>> drivers;
    std::vector<MessageRequest> shown;
    std::vector<std::wstring> documents;
};

HeadlessState& State() {
    static HeadlessState state;
    return state;
}

const char* KindName(MessageKind kind) {
    switch (kind) {
        case MessageKind::Warning:
            return "warning";
        case MessageKind::Error:
            return "error";
        case MessageKind::Information:
            return "information";
        case MessageKind::YesNo:
            return "yes/no question";
        case MessageKind::YesNoCancel:
            return "yes/no/cancel question";
        case MessageKind::EditText:
            return "text-entry box";
    }
    return "message box";
}

[[noreturn]] void FailLoudly(const std::string& text) {
    QuarnLog::Exception error("ZML::HeadlessAnswers", __FILE__, text);
    error.Log();
    throw error;
}

}  // namespace

std::shared_ptr<Backend> Backend::Current() {
    std::lock_guard<std::mutex> lock(backendLock);
    auto& backend = InstalledBackend();
    if (!backend) {
        backend = std::make_shared<HeadlessBackend>();
    }
    return backend;
}

void Backend::Install(std::shared_ptr<Backend> backend) {
    std::lock_guard<std::mutex> lock(backendLock);
    InstalledBackend() = std::move(backend);
}

// ---- answers queued by tests ----

void HeadlessAnswers::Queue(Answer answer) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    state.answers.push_back(MessageReply{answer, std::nullopt});
}

void HeadlessAnswers::Queue(const std::wstring& text) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    state.answers.push_back(MessageReply{Answer::Ok, text});
}

void HeadlessAnswers::QueueModal(std::function<void(Frame&)> driver) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    state.drivers.push_back(std::move(driver));
}

std::size_t HeadlessAnswers::PendingAnswers() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    return state.answers.size();
}

std::size_t HeadlessAnswers::PendingModals() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    return state.drivers.size();
}

std::vector<MessageRequest> HeadlessAnswers::Shown() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    return state.shown;
}

std::vector<std::wstring> HeadlessAnswers::OpenedDocuments() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    return state.documents;
}

void HeadlessAnswers::Reset() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    state.answers.clear();
    state.drivers.clear();
    state.shown.clear();
    state.documents.clear();
}

MessageReply HeadlessAnswers::Take(const MessageRequest& request) {
    auto& state = State();
    std::unique_lock<std::mutex> lock(state.lock);
    state.shown.push_back(request);
    const std::string what =
        std::string(KindName(request.kind)) + " \"" + qtxt::DefaultWideToUTF8(request.text) + "\"";
    switch (request.kind) {
        case MessageKind::Warning:
        case MessageKind::Error:
        case MessageKind::Information:
            lock.unlock();
            QuarnLog::Write(QuarnLog::Level::Info, "ZML::HeadlessBackend::Ask", __FILE__,
                            "Shown " + what + " (caption \"" +
                                qtxt::DefaultWideToUTF8(request.caption) + "\").");
            return MessageReply{Answer::Ok, std::nullopt};
        default:
            break;
    }
    if (state.answers.empty()) {
        lock.unlock();
        FailLoudly("No answer queued for the " + what + ".");
    }
    MessageReply reply = state.answers.front();
    bool fits = false;
    switch (request.kind) {
        case MessageKind::YesNo:
            fits = !reply.text && (reply.answer == Answer::Yes || reply.answer == Answer::No);
            break;
        case MessageKind::YesNoCancel:
            fits = !reply.text && reply.answer != Answer::Ok;
            break;
        case MessageKind::EditText:
            fits = reply.text.has_value() || reply.answer == Answer::Cancel;
            break;
        default:
            break;
    }
    if (!fits) {
        lock.unlock();
        FailLoudly("The next queued answer does not fit the " + what + ".");
    }
    state.answers.pop_front();
    return reply;
}

std::function<void(Frame&)> HeadlessAnswers::TakeModal(const std::string& frameName) {
    auto& state = State();
    std::unique_lock<std::mutex> lock(state.lock);
    if (state.drivers.empty()) {
        lock.unlock();
        FailLoudly("No driver queued for the modal frame \"" + frameName + "\".");
    }
    auto driver = std::move(state.drivers.front());
    state.drivers.pop_front();
    return driver;
}

void HeadlessAnswers::RecordDocument(const std::wstring& target) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.lock);
    state.documents.push_back(target);
}

// ---- the headless backend ----

void HeadlessBackend::Realize(Part&) {}

int HeadlessBackend::RunModal(Frame& frame) {
    frame.Display();
    if (frame.IsOpen()) {
        auto driver = HeadlessAnswers::TakeModal(frame.Name());
        if (driver) {
            driver(frame);
        }
    }
    if (frame.IsOpen()) {
        // A real modal loop would still be waiting; headless we must not, so the run fails.
        frame.EndModal(ResultCancel);
        FailLoudly("The modal frame \"" + frame.Name() +
                   "\" was still open after its driver ran; a driver must end it.");
    }
    return frame.ModalResult();
}

void HeadlessBackend::Show(Frame& frame) {
    frame.Display();
}

void HeadlessBackend::Close(Frame&) {}

MessageReply HeadlessBackend::Ask(const MessageRequest& request) {
    return HeadlessAnswers::Take(request);
}

void HeadlessBackend::OpenDocument(const std::wstring& target) {
    QuarnLog::Write(QuarnLog::Level::Info, "ZML::HeadlessBackend::OpenDocument", __FILE__,
                    "Open " + qtxt::DefaultWideToUTF8(target));
    HeadlessAnswers::RecordDocument(target);
}

}  // namespace ZML
