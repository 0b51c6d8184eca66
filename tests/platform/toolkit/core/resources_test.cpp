#include <gtest/gtest.h>

#include <string>

#include "QuarnLog/CaptureSink.h"
#include "QuarnLog/ErrorContext.h"
#include "ZML/HeadlessAnswers.h"
#include "qtxt/Text.h"
#include "qzml/Help.h"
#include "qzml/Icons.h"
#include "testenv.h"

namespace {

std::string FileName(const qzml_Icon& icon) {
    return std::filesystem::path(qtxt::DefaultWideToUTF8(icon->Path())).filename().string();
}

}  // namespace

TEST(Icons, FoundByStemWhateverTheExtensionAndCase) {
    const std::pair<const char*, const char*> cases[] = {
        {"gear.ico", "gear.svg"},
        {"GEAR.ICO", "gear.svg"},
        {"delete.icon", "delete.svg"},
        {"Remove.ico", "Remove.svg"},
        {"ToolboxOpen.ico", "ToolboxOpen.svg"},
        {"OpCategory_Focal.ico", "focal.svg"},
        {"operator", "operator.svg"},
    };
    for (const auto& [name, file] : cases) {
        auto icon = qzml_IconCreateFromFile(std::string(name));
        ASSERT_TRUE(icon) << name;
        EXPECT_FALSE(icon->IsPlaceholder()) << name;
        EXPECT_EQ(FileName(icon), file) << name;
        EXPECT_NE(icon->SvgText().find("<svg"), std::string::npos) << name;
        qzml_IconFree(icon);
        EXPECT_FALSE(icon);
    }
}

TEST(Icons, DrawingsArePreferredToBitmaps) {
    zmltest::ScratchDir dir("icons");
    dir.Write("icons/both.png", "png");
    dir.Write("icons/both.svg", "<svg/>");
    dir.Write("icons/bitmap.PNG", "png");
    zmltest::EnvGuard root("LATTIX_RESOURCE_PATH", dir.path.string());
    EXPECT_EQ(FileName(qzml_IconCreateFromFile(L"both.ico")), "both.svg");
    auto bitmap = qzml_IconCreateFromFile(L"bitmap.ico");
    EXPECT_EQ(FileName(bitmap), "bitmap.PNG");
    EXPECT_EQ(bitmap->SvgText(), "");
}

TEST(Icons, AMissingIconGivesAPlaceholderAndOneLogRecord) {
    QuarnLog::CaptureSink sink;
    const std::string name = "NoSuchIcon_" + std::to_string(::getpid()) + ".ico";
    auto first = qzml_IconCreateFromFile(name);
    auto second = qzml_IconCreateFromFile(name);
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->IsPlaceholder());
    EXPECT_TRUE(second->IsPlaceholder());
    EXPECT_EQ(first->SvgText(), ZML::Icon::PlaceholderSvg());
    EXPECT_EQ(qtxt::DefaultWideToUTF8(first->RequestedName()), name);
    int records = 0;
    for (const auto& record : sink.Records()) {
        records += record.text.find(name) != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(records, 1);
}

TEST(Help, TopicsAreAvailableByKeyWithoutRegardToCase) {
    QuarnLog::ErrorContext errors("IsHelpAvailableFor");
    struct Case {
        const wchar_t* set;
        const wchar_t* key;
        const wchar_t* subKey;
        int available;
    };
    const Case cases[] = {
        {L"LXL", L"index", L"", 1},
        {L"LXL", L"Lattix_CreateOperatorDialog", L"", 1},
        {L"lxl", L"tamarin_add", L"", 1},
        {L"LXL", L"tamarin_add", L"ports", 1},
        {L"LXL", L"no_such_topic", L"", 0},
        {L"LXL", L"../LXL/index", L"", 0},
        {L"LXL", L"", L"", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(qzml_LXHelpIsAvailable(c.set, c.key, c.subKey, errors), c.available)
            << qtxt::DefaultWideToUTF8(c.key);
    }
    EXPECT_FALSE(errors.HasErrors());
    EXPECT_EQ(qzml_LXHelpIsAvailable(L"NOPE", L"index", L"", errors), 0);
    EXPECT_TRUE(errors.HasErrors());
    errors.Clear();
}

TEST(Help, OpeningIsRecordedAndAMissingTopicOpensTheMissingPage) {
    zmltest::HeadlessReset reset;
    QuarnLog::ErrorContext errors("ShowHelpFor");
    EXPECT_EQ(qzml_LXHelp(L"LXL", L"lattix_processdialog", L"", errors), 1);
    EXPECT_EQ(qzml_LXHelp(L"LXL", L"tamarin_add", L"ports", errors), 1);
    EXPECT_FALSE(errors.HasErrors());
    EXPECT_EQ(qzml_LXHelp(L"LXL", L"no such topic", L"", errors), 0);
    EXPECT_TRUE(errors.HasErrors());
    errors.Clear();

    auto opened = ZML::HeadlessAnswers::OpenedDocuments();
    ASSERT_EQ(opened.size(), 3u);
    const std::wstring folder = qtxt::UTF8toDefaultWide("file://" + std::string(LATTIX_SOURCE_DIR) +
                                                        "/resources/help/LXL/");
    EXPECT_EQ(opened[0], folder + L"lattix_processdialog.html");
    EXPECT_EQ(opened[1], folder + L"tamarin_add.html#ports");
    EXPECT_EQ(opened[2], folder + L"missing.html?topic=no%20such%20topic");
}

TEST(Help, DevelopmentInfoFollowsTheEnvironment) {
    const std::pair<const char*, bool> cases[] = {{"1", true},  {"yes", true}, {"ON", true},
                                                  {"0", false}, {"", false},   {"maybe", false}};
    for (const auto& [value, on] : cases) {
        zmltest::EnvGuard guard("LATTIX_DEVELOPMENT_INFO", value);
        EXPECT_EQ(qzml_ShowDevelopmentInfo(), on) << value;
    }
}
