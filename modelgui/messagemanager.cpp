#include "modelgui/MessageManager.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
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

std::wstring FormatText(const std::wstring& raw) {
    // Most reports are one line, kept as they are.
    if (raw.find(L'\n') == std::wstring::npos) return raw;

    std::vector<std::wstring> lines;
    std::size_t start = 0;
    for (auto end = raw.find(L'\n'); end != std::wstring::npos; end = raw.find(L'\n', start)) {
        lines.push_back(raw.substr(start, end - start));
        start = end + 1;
    }
    lines.push_back(raw.substr(start));

    std::erase_if(lines, [](const std::wstring& line) {
        std::wstring lower(line.size(), L' ');
        std::transform(line.begin(), line.end(), lower.begin(),
                       [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
        return lower == L"args" || lower == L"args!";
    });
    if (lines.empty()) return {};
    if (lines.size() == 1) return lines.front();
    std::wstring text = lines.back() + L" (";
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        if (i > 0) text += L' ';
        text += lines[i];
    }
    return text + L")";
}

std::uint64_t Mix(std::uint64_t value) {
    value ^= value >> 30;
    value *= 0xbf58476d1ce4e5b9ULL;
    value ^= value >> 27;
    value *= 0x94d049bb133111ebULL;
    return value ^ (value >> 31);
}

// The index keys, already hashed: text and severity; text, severity and the operator's address.
std::size_t TextKey(const std::wstring& text, Issue::Severity severity) {
    return Mix(std::hash<std::wstring>{}(text) + static_cast<std::uint64_t>(severity));
}

std::size_t OperatorKey(std::size_t textKey, const Operator* op) {
    return Mix(textKey ^ reinterpret_cast<std::uintptr_t>(op));
}

struct identityHash {
    std::size_t operator()(std::size_t key) const noexcept { return key; }
};

}  // namespace

// The duplicate rule compares a stored message's text and severity exactly, then its operator and
// port through their weak pointers. Two indexes narrow the candidates without changing the rule:
// a live operator equal to the reported one has the address it was reported with, so a report
// about an operator looks only at the messages reported for that address with that text and
// severity; a report about no operator must also find messages whose operator is gone, so it looks
// at every message with that text and severity. The rule itself is applied to each candidate.
//
// Each index maps a key to the newest of the messages with that key; the messages of one key are
// chained through the stored messages themselves, so that removing one is constant time however
// many operators report the same text.
struct messageData {
    struct storedMessage;
    using MessageList = std::list<storedMessage>;
    struct chainLink {
        storedMessage* previous = nullptr;
        storedMessage* next = nullptr;
    };
    using Heads = std::unordered_map<std::size_t, storedMessage*, identityHash>;
    struct storedMessage {
        std::shared_ptr<MessageManager::Message> message;
        MessageList::iterator self;
        std::size_t textKey = 0;
        std::size_t operatorKey = 0;
        chainLink textChain;
        chainLink operatorChain;
    };

    MessageList messages;
    std::shared_ptr<void> hookToken;
    boost::signals2::signal<void()> messagesChanged;
    mutable std::shared_mutex lock;

    // The thread inside an exclusive section, so that a listener can read the list it is being
    // told about without waiting for itself.
    std::atomic<std::thread::id> writer;
    Heads byText;
    Heads byOperator;

    // The hook goes first: the engine waits for a report in progress, which still needs the lock,
    // the list and the signal.
    ~messageData() { hookToken.reset(); }

    static void Link(Heads& heads, std::size_t key, storedMessage* stored,
                     chainLink storedMessage::*chain) {
        auto [head, added] = heads.try_emplace(key, stored);
        if (added) return;
        (stored->*chain).next = head->second;
        (head->second->*chain).previous = stored;
        head->second = stored;
    }

    static void Unlink(Heads& heads, std::size_t key, storedMessage* stored,
                       chainLink storedMessage::*chain) {
        auto& link = stored->*chain;
        if (link.next) (link.next->*chain).previous = link.previous;
        if (link.previous) {
            (link.previous->*chain).next = link.next;
        } else if (link.next) {
            heads[key] = link.next;
        } else {
            heads.erase(key);
        }
    }

    static bool IsRepeat(const MessageManager::Message& stored, const std::shared_ptr<Operator>& op,
                         const std::shared_ptr<Port>& port, const std::wstring& text,
                         Issue::Severity severity) {
        return stored.severity == severity && stored.text == text && stored.op.lock() == op &&
               stored.port.lock() == port;
    }

    // Under the exclusive lock.
    void Add(std::shared_ptr<MessageManager::Message> message, const std::shared_ptr<Operator>& op,
             const std::shared_ptr<Port>& port, const std::wstring& text,
             Issue::Severity severity) {
        const std::size_t rawKey = TextKey(text, severity);
        std::vector<storedMessage*> repeats;
        if (op) {
            const auto head = byOperator.find(OperatorKey(rawKey, op.get()));
            for (auto* stored = head == byOperator.end() ? nullptr : head->second; stored;
                 stored = stored->operatorChain.next)
                if (IsRepeat(*stored->message, op, port, text, severity)) repeats.push_back(stored);
        } else {
            const auto head = byText.find(rawKey);
            for (auto* stored = head == byText.end() ? nullptr : head->second; stored;
                 stored = stored->textChain.next)
                if (IsRepeat(*stored->message, op, port, text, severity)) repeats.push_back(stored);
        }
        for (auto* repeat : repeats) {
            Unlink(byText, repeat->textKey, repeat, &storedMessage::textChain);
            Unlink(byOperator, repeat->operatorKey, repeat, &storedMessage::operatorChain);
            messages.erase(repeat->self);
        }

        const std::size_t storedKey =
            message->text == text ? rawKey : TextKey(message->text, severity);
        auto& stored = messages.emplace_back();
        stored.message = std::move(message);
        stored.self = std::prev(messages.end());
        stored.textKey = storedKey;
        stored.operatorKey = OperatorKey(storedKey, op.get());
        Link(byText, stored.textKey, &stored, &storedMessage::textChain);
        Link(byOperator, stored.operatorKey, &stored, &storedMessage::operatorChain);
    }

    void Clear() {
        byText.clear();
        byOperator.clear();
        messages.clear();
    }

    std::vector<std::shared_ptr<MessageManager::Message>> Copy() const {
        std::vector<std::shared_ptr<MessageManager::Message>> copy;
        copy.reserve(messages.size());
        for (const auto& stored : messages) copy.push_back(stored.message);
        return copy;
    }
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

void AddToList(messageData& data, const std::shared_ptr<Operator>& op,
               const std::shared_ptr<Port>& port, const std::wstring& text,
               const std::wstring& helpKey, Issue::Severity severity) {
    auto message = std::make_shared<MessageManager::Message>(op, port, text, helpKey, severity);
    exclusiveSection section(data);
    data.Add(std::move(message), op, port, text, severity);
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
    messageData->Clear();
    messageData->messagesChanged();
}

std::vector<std::shared_ptr<MessageManager::Message>> MessageManager::GetMessages() const {
    const auto& data = *messageData;
    // On the writer's own thread the exclusive lock is already held by this very call chain.
    if (data.writer.load() == std::this_thread::get_id()) return data.Copy();
    std::shared_lock guard(data.lock);
    return data.Copy();
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
