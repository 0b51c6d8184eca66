#include "modelgui/MessageManager.h"

#include <atomic>
#include <cwctype>
#include <list>
#include <mutex>
#include <shared_mutex>
#include <thread>
#include <unordered_map>
#include <utility>

#include <boost/signals2/connection.hpp>
#include <boost/signals2/signal.hpp>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"

namespace quarn::modelgui {

using Velmar::Lattix::Issue;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;

namespace {

using MessageList = std::list<std::shared_ptr<MessageManager::Message>>;

// The duplicate rule compares a stored message's text and severity exactly, then its operator and
// port through their weak pointers. The index narrows the candidates to the messages with that
// text and severity, grouped by the address of the operator they were reported for; the rule
// itself is still applied to every candidate, so expired pointers behave exactly as in a full walk.
struct textKey {
    std::wstring text;
    Issue::Severity severity;
    bool operator==(const textKey&) const = default;
};

struct textKeyHash {
    std::size_t operator()(const textKey& key) const noexcept {
        return std::hash<std::wstring>{}(key.text) ^
               (static_cast<std::size_t>(key.severity) * 0x9e3779b97f4a7c15ULL);
    }
};

// Messages of one text and severity, by the operator address given when they were reported.
using textBucket = std::unordered_map<const Operator*, std::vector<MessageList::iterator>>;

std::vector<std::wstring> SplitLines(const std::wstring& text) {
    std::vector<std::wstring> lines;
    std::size_t start = 0;
    for (;;) {
        const auto end = text.find(L'\n', start);
        if (end == std::wstring::npos) {
            lines.push_back(text.substr(start));
            return lines;
        }
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

bool IsArgsLine(const std::wstring& line) {
    std::wstring lower;
    lower.reserve(line.size());
    for (wchar_t c : line) lower.push_back(static_cast<wchar_t>(std::towlower(c)));
    return lower == L"args" || lower == L"args!";
}

std::wstring FormatText(const std::wstring& raw) {
    auto lines = SplitLines(raw);
    if (lines.size() >= 2) std::erase_if(lines, IsArgsLine);
    if (lines.empty()) return {};
    if (lines.size() == 1) return lines.front();
    std::wstring text = lines.back() + L" (";
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        if (i > 0) text += L' ';
        text += lines[i];
    }
    return text + L")";
}

}  // namespace

struct messageData {
    MessageList messages;
    std::shared_ptr<void> hookToken;
    boost::signals2::signal<void()> messagesChanged;
    mutable std::shared_mutex lock;

    // The thread inside an exclusive section, so that a listener can read the list it is being
    // told about without waiting for itself.
    std::atomic<std::thread::id> writer;
    std::unordered_map<textKey, textBucket, textKeyHash> index;

    // The hook goes first: the engine waits for a report in progress, which still needs the lock,
    // the list and the signal.
    ~messageData() { hookToken.reset(); }
};

namespace {

// Holds the lock exclusively and marks the calling thread as the writer.
class exclusiveSection {
public:
    explicit exclusiveSection(messageData& data) : data(data) {
        if (data.writer.load() == std::this_thread::get_id())
            QUARN_THROW(
                "The message list cannot be changed or subscribed to from inside one of its "
                "listeners.");
        guard = std::unique_lock(data.lock);
        data.writer.store(std::this_thread::get_id());
    }
    ~exclusiveSection() { data.writer.store(std::thread::id()); }
    exclusiveSection(const exclusiveSection&) = delete;
    exclusiveSection& operator=(const exclusiveSection&) = delete;

private:
    messageData& data;
    std::unique_lock<std::shared_mutex> guard;
};

void Unindex(messageData& data, MessageList::iterator message, const Operator* reportedFor) {
    const textKey key{(*message)->GetText(), (*message)->GetSeverity()};
    const auto bucket = data.index.find(key);
    if (bucket == data.index.end()) return;
    const auto group = bucket->second.find(reportedFor);
    if (group == bucket->second.end()) return;
    auto& entries = group->second;
    std::erase(entries, message);
    if (entries.empty()) bucket->second.erase(group);
    if (bucket->second.empty()) data.index.erase(bucket);
}

bool IsDuplicate(const MessageManager::Message& message, const std::shared_ptr<Operator>& op,
                 const std::shared_ptr<Port>& port) {
    return message.GetOperator() == op && message.GetPort() == port;
}

void AddToList(messageData& data, const std::shared_ptr<Operator>& op,
               const std::shared_ptr<Port>& port, const std::wstring& text,
               const std::wstring& helpKey, Issue::Severity severity) {
    auto message = std::make_shared<MessageManager::Message>(op, port, text, helpKey, severity);
    exclusiveSection section(data);

    // Stored messages whose text is the raw text of this report and whose severity is its own.
    auto bucket = data.index.find(textKey{text, severity});
    if (bucket != data.index.end()) {
        std::vector<std::pair<MessageList::iterator, const Operator*>> doomed;
        auto collect = [&](const Operator* reportedFor,
                           const std::vector<MessageList::iterator>& entries) {
            for (auto entry : entries)
                if (IsDuplicate(**entry, op, port)) doomed.emplace_back(entry, reportedFor);
        };
        if (op) {
            // A live operator equal to op was reported at op's address.
            if (auto group = bucket->second.find(op.get()); group != bucket->second.end())
                collect(group->first, group->second);
        } else {
            // Messages whose operator is gone compare equal to no operator, whatever address
            // they were reported for.
            for (const auto& [reportedFor, entries] : bucket->second) collect(reportedFor, entries);
        }
        for (const auto& [entry, reportedFor] : doomed) {
            Unindex(data, entry, reportedFor);
            data.messages.erase(entry);
        }
    }

    data.messages.push_back(message);
    data.index[textKey{message->GetText(), severity}][op.get()].push_back(
        std::prev(data.messages.end()));
    data.messagesChanged();
}

}  // namespace

// ---- Message

MessageManager::Message::Message(const std::shared_ptr<Operator>& op,
                                 const std::shared_ptr<Port>& port, const std::wstring& text,
                                 const std::wstring& helpKey, Issue::Severity severity)
    : op(op), port(port), text(FormatText(text)), helpKey(helpKey), severity(severity) {}

MessageManager::Message::~Message() = default;

std::shared_ptr<Operator> MessageManager::Message::GetOperator() const {
    return op.lock();
}
std::shared_ptr<Port> MessageManager::Message::GetPort() const {
    return port.lock();
}
std::wstring MessageManager::Message::GetText() const {
    return text;
}
std::wstring MessageManager::Message::GetHelpKey() const {
    return helpKey;
}
Issue::Severity MessageManager::Message::GetSeverity() const {
    return severity;
}

// ---- MessageManager

MessageManager::MessageManager() : messageData(std::make_shared<quarn::modelgui::messageData>()) {}

MessageManager::~MessageManager() = default;

void MessageManager::AddMessage(const std::shared_ptr<Operator>& op,
                                const std::shared_ptr<Port>& port, const std::wstring& text,
                                const std::wstring& helpKey, Issue::Severity severity) {
    AddToList(*messageData, op, port, text, helpKey, severity);
}

void MessageManager::ClearMessages() {
    exclusiveSection section(*messageData);
    messageData->messages.clear();
    messageData->index.clear();
    messageData->messagesChanged();
}

std::vector<std::shared_ptr<MessageManager::Message>> MessageManager::GetMessages() const {
    const auto& data = *messageData;
    auto copy = [&data] {
        return std::vector<std::shared_ptr<Message>>(data.messages.begin(), data.messages.end());
    };
    // On the writer's own thread the exclusive lock is already held by this very call chain.
    if (data.writer.load() == std::this_thread::get_id()) return copy();
    std::shared_lock guard(data.lock);
    return copy();
}

std::shared_ptr<void> MessageManager::AddMessagesChangedCB(const std::function<void()>& fn) {
    if (!fn) QUARN_THROW("The messages-changed callback is empty.");
    exclusiveSection section(*messageData);
    return std::make_shared<boost::signals2::scoped_connection>(
        messageData->messagesChanged.connect(fn));
}

void MessageManager::UpdateProcess(const std::shared_ptr<Velmar::Lattix::Model>& model) {
    std::shared_ptr<void> token;
    if (model) {
        // The hook lives in the record and is released first when the record goes, so the plain
        // pointer never outlives what it points to.
        auto* data = messageData.get();
        token = model->AddOnMessageCallback(
            [data](const std::shared_ptr<Operator>& op, const std::shared_ptr<Port>& port,
                   const std::wstring& text, const std::wstring& helpKey,
                   Issue::Severity severity) {
                AddToList(*data, op, port, text, helpKey, severity);
            });
    }
    // The previous model's hook is released here, after the new one is in place.
    std::swap(messageData->hookToken, token);
}

}  // namespace quarn::modelgui
