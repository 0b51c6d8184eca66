#include "qzml/Dialogs.h"

#include "QuarnLog/Log.h"
#include "ZML/Backend.h"
#include "qtxt/Text.h"

namespace {

ZML::MessageReply Ask(ZML::MessageKind kind, const std::wstring& caption, const std::wstring& text,
                      const std::wstring& initial = {}) {
    ZML::MessageRequest request;
    request.kind = kind;
    request.caption = caption;
    request.text = text;
    request.initialText = initial;
    return ZML::Backend::Current()->Ask(request);
}

}  // namespace

void qzml_DialogWarning(const std::wstring& text, const std::wstring& caption) {
    Ask(ZML::MessageKind::Warning, caption, text);
}

bool qzml_DialogYesNo(const std::wstring& question, const std::wstring& caption) {
    return Ask(ZML::MessageKind::YesNo, caption, question).answer == ZML::Answer::Yes;
}

ZML::Answer qzml_DialogYesNoCancel(const std::wstring& question, const std::wstring& caption) {
    auto answer = Ask(ZML::MessageKind::YesNoCancel, caption, question).answer;
    return answer == ZML::Answer::Ok ? ZML::Answer::Yes : answer;
}

std::optional<std::wstring> qzml_DialogEditText(const std::wstring& prompt,
                                                const std::wstring& initialText,
                                                const std::wstring& caption) {
    auto reply = Ask(ZML::MessageKind::EditText, caption, prompt, initialText);
    if (reply.answer == ZML::Answer::Cancel) {
        return std::nullopt;
    }
    return reply.text.value_or(initialText);
}

void qzml_ShowError(const std::wstring& caption, const std::wstring& text) {
    QuarnLog::Write(QuarnLog::Level::Error, qtxt::DefaultWideToUTF8(caption), __FILE__, text);
    Ask(ZML::MessageKind::Error, caption, text);
}

void qzml_ShowError(const std::wstring& caption, const std::exception& error) {
    qzml_ShowError(caption, qtxt::UTF8toDefaultWide(error.what()));
}
