#pragma once

#include <exception>
#include <optional>
#include <string>

#include "ZML/MessageRequest.h"

// Message boxes, shown modally through the current backend (ZML::Backend). Headless, questions
// take the answers a test queued with ZML::HeadlessAnswers and fail loudly without one.

// A warning with an OK button.
void qzml_DialogWarning(const std::wstring& text, const std::wstring& caption = L"Warning");
// A yes/no question; true for Yes.
bool qzml_DialogYesNo(const std::wstring& question, const std::wstring& caption = L"Question");
// A yes/no/cancel question; Answer::Yes, Answer::No or Answer::Cancel.
ZML::Answer qzml_DialogYesNoCancel(const std::wstring& question,
                                   const std::wstring& caption = L"Question");
// A text-entry box showing `prompt` and `initialText`; the entered text, or nothing on Cancel.
std::optional<std::wstring> qzml_DialogEditText(const std::wstring& prompt,
                                                const std::wstring& initialText,
                                                const std::wstring& caption = L"Enter text");
// The box a dialog handler shows for a failure: `caption` (usually the operation's name) and
// the error's text. Also writes the text to the log.
void qzml_ShowError(const std::wstring& caption, const std::wstring& text);
void qzml_ShowError(const std::wstring& caption, const std::exception& error);
