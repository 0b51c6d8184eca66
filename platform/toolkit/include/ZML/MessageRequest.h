#pragma once

#include <optional>
#include <string>

namespace ZML {

// The kinds of message box.
enum class MessageKind { Warning, Error, Information, YesNo, YesNoCancel, EditText };

// A user's answer to a message box. A warning, error or information box answers Ok.
enum class Answer { Ok, Yes, No, Cancel };

// One message box as the toolkit hands it to the backend.
struct MessageRequest {
    MessageKind kind = MessageKind::Warning;
    std::wstring caption;
    std::wstring text;
    // The text-entry box's initial text.
    std::wstring initialText;
};

// What the backend gives back. For a text-entry box, `text` holds the entered text on Ok.
struct MessageReply {
    Answer answer = Answer::Ok;
    std::optional<std::wstring> text;
};

}  // namespace ZML
