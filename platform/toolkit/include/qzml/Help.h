#pragma once

#include <string>

#include "QuarnLog/ErrorContext.h"

// Help topics stored as HTML pages under <resources>/help/<helpSet>/: the topic `key` is the page
// <key>.html (compared without regard to case); with a `subKey`, the page <key>/<subKey>.html or,
// failing that, the anchor #<subKey> of <key>.html.

// Non-zero when the help set has the topic. Problems (no such help set) are added to `errors`.
int qzml_LXHelpIsAvailable(const std::wstring& helpSet, const std::wstring& key,
                           const std::wstring& subKey, QuarnLog::ErrorContext& errors);
// Opens the topic through the backend (headless: recorded in HeadlessAnswers::OpenedDocuments).
// A missing topic opens the set's page missing.html with the topic as its query, so that the
// reader sees what was asked; that is also added to `errors`. Returns non-zero when the topic
// itself was opened.
int qzml_LXHelp(const std::wstring& helpSet, const std::wstring& key, const std::wstring& subKey,
                QuarnLog::ErrorContext& errors);
// The page that shows the topic, as a file URI ("file:///.../LXL/index.html"), or empty.
std::wstring qzml_LXHelpTopicUri(const std::wstring& helpSet, const std::wstring& key,
                                 const std::wstring& subKey);

// True when the development-information switch is on: the environment variable
// LATTIX_DEVELOPMENT_INFO set to 1, yes, true or on. Read on every call.
bool qzml_ShowDevelopmentInfo();
