#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "QuarnLog/CaptureSink.h"
#include "QuarnLog/ErrorContext.h"
#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "QuarnLog/UnthrownException.h"

using namespace QuarnLog;

TEST(ExceptionTest, CarriesFunctionSourceAndMessage) {
    try {
        throw Exception("quarn::modelgui::PortAttributes::GetAttribute", "attributehelper.cpp",
                        std::wstring(L"No attribute \u00e9t\u00e9"));
    } catch (const std::exception& e) {
        const auto& q = dynamic_cast<const Exception&>(e);
        EXPECT_STREQ(e.what(), "No attribute \xc3\xa9t\xc3\xa9");
        EXPECT_EQ(q.Function(), "quarn::modelgui::PortAttributes::GetAttribute");
        EXPECT_EQ(q.Source(), "attributehelper.cpp");
        EXPECT_EQ(q.WideMessage(), L"No attribute \u00e9t\u00e9");
    }
}

TEST(ExceptionTest, ThrowMacroNamesEnclosingFunction) {
    try {
        QUARN_THROW("bad value");
        FAIL() << "not thrown";
    } catch (const Exception& e) {
        EXPECT_NE(e.Function().find("TestBody"), std::string::npos) << e.Function();
        EXPECT_NE(e.Source().find("log_test.cpp"), std::string::npos);
    }
}

TEST(UnthrownExceptionTest, ReportsItselfWhenDestroyed) {
    CaptureSink sink;
    {
        UnthrownException e("quarn::modelgui::opConfigData::Save", "operatorconfig",
                            "Could not save operators history.");
    }
    auto records = sink.Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].level, Level::Error);
    EXPECT_EQ(records[0].function, "quarn::modelgui::opConfigData::Save");
    EXPECT_EQ(records[0].source, "operatorconfig");
    EXPECT_EQ(records[0].text, "Could not save operators history.");
}

TEST(UnthrownExceptionTest, ThrownOrClearedRecordsStaySilent) {
    CaptureSink sink;
    {
        UnthrownException e("f", "s", "first");
        e.AddMessage(std::wstring(L"second"));
        try {
            e.Throw();
        } catch (const Exception& ex) {
            EXPECT_STREQ(ex.what(), "first\nsecond");
        }
    }
    {
        UnthrownException e("f", "s", "dropped");
        e.Clear();
    }
    EXPECT_TRUE(sink.Records().empty());
}

TEST(ErrorContextTest, KeepsRaisedErrorsAndLogsThemUnderTheOperationName) {
    CaptureSink sink;
    {
        ErrorContext ctx("HidePort");
        EXPECT_TRUE(ctx.Run([] {}));
        EXPECT_FALSE(ctx.HasErrors());
        EXPECT_FALSE(ctx.Run([] { throw Exception("Port::SetIsHidden", "port.cpp", "connected"); }));
        EXPECT_FALSE(ctx.Run([] { throw std::runtime_error("plain"); }));
        EXPECT_TRUE(ctx.HasErrors());
        EXPECT_EQ(ctx.Text(), L"connected\nplain");
        EXPECT_EQ(ctx.Operation(), "HidePort");
        EXPECT_TRUE(sink.Records().empty()) << "nothing is logged before the context closes";
    }
    auto records = sink.Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].function, "HidePort");
    EXPECT_EQ(records[0].text, "connected");
    EXPECT_EQ(records[1].text, "plain");
}

TEST(LogTest, RecordsFromManyThreadsAllArrive) {
    CaptureSink sink;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 50; ++i) {
                Write(Level::Warning, "worker", "log_test.cpp", "t" + std::to_string(t));
            }
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(sink.Records().size(), 200u);
}

TEST(LogTest, WritesToRotatingFileUnderStateHome) {
    const std::string path = LogFilePath();
    ASSERT_FALSE(path.empty());
    // ctest points XDG_STATE_HOME into the build tree; the file must be under it.
    if (const char* state = std::getenv("XDG_STATE_HOME")) {
        EXPECT_EQ(path.rfind(std::string(state) + "/lattix/", 0), 0u) << path;
    }
    Write(Level::Error, "LogTest", "log_test.cpp", "marker-7f3a");
    std::ifstream in(path);
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(all.find("marker-7f3a"), std::string::npos);
    EXPECT_NE(all.find("LogTest"), std::string::npos);
}
