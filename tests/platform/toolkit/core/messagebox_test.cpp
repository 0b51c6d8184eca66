#include <gtest/gtest.h>

#include <string>

#include "QuarnLog/CaptureSink.h"
#include "QuarnLog/Exception.h"
#include "ZML/HeadlessAnswers.h"
#include "qzml/Dialogs.h"
#include "testenv.h"

using namespace ZML;

TEST(MessageBoxes, QueuedAnswersAreTakenInOrder) {
    zmltest::HeadlessReset reset;
    HeadlessAnswers::Queue(Answer::Yes);
    HeadlessAnswers::Queue(Answer::No);
    HeadlessAnswers::Queue(Answer::Cancel);
    HeadlessAnswers::Queue(Answer::No);
    HeadlessAnswers::Queue(L"Elevation");
    HeadlessAnswers::Queue(Answer::Cancel);

    EXPECT_TRUE(qzml_DialogYesNo(L"Delete it?"));
    EXPECT_FALSE(qzml_DialogYesNo(L"Delete it?"));
    EXPECT_EQ(qzml_DialogYesNoCancel(L"Replace references?"), Answer::Cancel);
    EXPECT_EQ(qzml_DialogYesNoCancel(L"Replace references?"), Answer::No);
    EXPECT_EQ(qzml_DialogEditText(L"New name:", L"Input1"),
              std::optional<std::wstring>(L"Elevation"));
    EXPECT_EQ(qzml_DialogEditText(L"New name:", L"Input1"), std::nullopt);
    EXPECT_EQ(HeadlessAnswers::PendingAnswers(), 0u);

    auto shown = HeadlessAnswers::Shown();
    ASSERT_EQ(shown.size(), 6u);
    EXPECT_EQ(shown[2].kind, MessageKind::YesNoCancel);
    EXPECT_EQ(shown[4].text, L"New name:");
    EXPECT_EQ(shown[4].initialText, L"Input1");
}

TEST(MessageBoxes, AQuestionWithoutAnAnswerFailsNamingIt) {
    zmltest::HeadlessReset reset;
    QuarnLog::CaptureSink sink;
    const std::wstring question = L"The port \"Input1\" is connected. Do you want to delete it?";
    try {
        qzml_DialogYesNo(question);
        FAIL() << "the question did not fail";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_EQ(e.Message(),
                  "No answer queued for the yes/no question \"The port \"Input1\" is connected. "
                  "Do you want to delete it?\".");
    }
    EXPECT_TRUE(sink.Contains("No answer queued for the yes/no question"));
    EXPECT_THROW(qzml_DialogEditText(L"New name:", L""), QuarnLog::Exception);
}

TEST(MessageBoxes, AnAnswerOfTheWrongShapeFailsAndStaysQueued) {
    zmltest::HeadlessReset reset;
    HeadlessAnswers::Queue(L"text");
    EXPECT_THROW(qzml_DialogYesNo(L"Sure?"), QuarnLog::Exception);
    EXPECT_EQ(HeadlessAnswers::PendingAnswers(), 1u);
    HeadlessAnswers::Reset();
    HeadlessAnswers::Queue(Answer::Cancel);
    EXPECT_THROW(qzml_DialogYesNo(L"Sure?"), QuarnLog::Exception);
}

TEST(MessageBoxes, WarningsAndErrorsNeedNoAnswerAndAreRecorded) {
    zmltest::HeadlessReset reset;
    QuarnLog::CaptureSink sink;
    qzml_DialogWarning(L"Arguments in brackets have to be replaced.");
    qzml_ShowError(L"RemovePort",
                   QuarnLog::Exception("f", "s", "Port does not support any data types."));
    auto shown = HeadlessAnswers::Shown();
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0].kind, MessageKind::Warning);
    EXPECT_EQ(shown[1].kind, MessageKind::Error);
    EXPECT_EQ(shown[1].caption, L"RemovePort");
    EXPECT_EQ(shown[1].text, L"Port does not support any data types.");
    EXPECT_TRUE(sink.Contains("Port does not support any data types.", "RemovePort"));
}
