#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "QuarnLog/CaptureSink.h"
#include "QuarnLog/Exception.h"
#include "qpmg/Preference.h"
#include "qpmg/PreferenceManager.h"

namespace fs = std::filesystem;
using namespace qpmg;

namespace {

class PreferencesTest : public ::testing::Test {
protected:
    fs::path dir;
    std::string file;
    void SetUp() override {
        dir = fs::temp_directory_path() /
              ("lattix-prefs-" + std::to_string(::getpid()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        file = (dir / "config" / "lattix" / "preferences").string();
    }
    void TearDown() override {
        SetPreferenceManager(nullptr);
        fs::remove_all(dir);
    }
    void WriteFile(const std::string& text) {
        fs::create_directories(fs::path(file).parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    std::string ReadFile() {
        std::ifstream in(file, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
};

}  // namespace

TEST_F(PreferencesTest, KnownPreferencesHaveTheirDefaults) {
    PreferenceManager prefs(file);
    EXPECT_TRUE(prefs.GetBoolean("zml", "use_bubble_help"));
    EXPECT_EQ(prefs.GetNumber("zml", "bubble_help_delay"), 0.5);
    EXPECT_FALSE(prefs.GetBoolean("batch", "batch_flatten_output_paths"));
    EXPECT_FALSE(prefs.GetString("zml", "default_output_path").empty());
    EXPECT_EQ(prefs.GetString("zml", "default_data_path"),
              prefs.GetString("zml", "default_output_path"));
    // Undeclared and unset.
    EXPECT_FALSE(prefs.GetBoolean("other", "flag"));
    EXPECT_EQ(prefs.GetNumber("other", "count"), 0);
    EXPECT_EQ(prefs.GetString("other", "text"), L"");
    EXPECT_FALSE(fs::exists(file)) << "reading must not write";
}

TEST_F(PreferencesTest, ValuesSurviveARestart) {
    const std::wstring path = L"/data/\u00e9t\u00e9 \"quoted\"\\x\n\u6a21\u578b";
    {
        PreferenceManager prefs(file);
        prefs.Set("batch", "batch_flatten_output_paths", true);
        prefs.Set("zml", "bubble_help_delay", 1250.5);
        prefs.Set("zml", "default_output_path", path);
        prefs.Set("plugin-x", "level.max", -3e-7);
    }
    PreferenceManager restarted(file);
    EXPECT_TRUE(restarted.GetBoolean("batch", "batch_flatten_output_paths"));
    EXPECT_EQ(restarted.GetNumber("zml", "bubble_help_delay"), 1250.5);
    EXPECT_EQ(restarted.GetString("zml", "default_output_path"), path);
    EXPECT_EQ(restarted.GetNumber("plugin-x", "level.max"), -3e-7);
    EXPECT_TRUE(restarted.GetBoolean("zml", "use_bubble_help"));  // never set: default
    EXPECT_EQ(ReadFile().find("use_bubble_help"), std::string::npos);
}

TEST_F(PreferencesTest, ProcessWideShorthandsUseTheInstalledManager) {
    SetPreferenceManager(std::make_shared<PreferenceManager>(file));
    SetStringPreference("zml", "default_data_path", L"/srv/dem");
    SetBooleanPreference("zml", "use_bubble_help", false);
    SetNumberPreference("zml", "bubble_help_delay", 40);
    EXPECT_EQ(GetStringPreference("zml", "default_data_path"), L"/srv/dem");
    EXPECT_FALSE(GetBooleanPreference("zml", "use_bubble_help"));
    EXPECT_EQ(GetNumberPreference("zml", "bubble_help_delay"), 40);
    EXPECT_EQ(GetPreferenceManager()->File(), file);
    SetPreferenceManager(nullptr);
    EXPECT_EQ(GetPreferenceManager()->File(), PreferenceManager::DefaultFile());
}

TEST_F(PreferencesTest, DamagedFileGivesWarningsAndDefaults) {
    WriteFile(
        "# comment\n"
        "zml.use_bubble_help = false\n"
        "zml.bubble_help_delay = soon\n"
        "batch.batch_flatten_output_paths = \"yes\"\n"
        "zml.default_data_path = \"unterminated\n"
        "no equals sign\n"
        "\xff\xfe garbage = 1\n"
        "zml.default_output_path = \"/out\"\n");
    QuarnLog::CaptureSink sink;
    PreferenceManager prefs(file);
    EXPECT_FALSE(prefs.GetBoolean("zml", "use_bubble_help"));  // the good lines still count
    EXPECT_EQ(prefs.GetString("zml", "default_output_path"), L"/out");
    EXPECT_EQ(prefs.GetNumber("zml", "bubble_help_delay"), 0.5);
    EXPECT_FALSE(prefs.GetBoolean("batch", "batch_flatten_output_paths"));
    EXPECT_TRUE(sink.Contains(file + ", line 3"));
    EXPECT_TRUE(sink.Contains(file + ", line 5"));
    EXPECT_TRUE(sink.Contains(file + ", line 6"));
    EXPECT_TRUE(sink.Contains(file + ", line 7"));
    EXPECT_TRUE(sink.Contains("batch.batch_flatten_output_paths holds a string, not a boolean"));
    for (const auto& r : sink.Records()) EXPECT_EQ(r.level, QuarnLog::Level::Warning) << r.text;

    // Saving rewrites a clean file.
    prefs.Set("zml", "bubble_help_delay", 100.0);
    sink.Clear();
    PreferenceManager again(file);
    EXPECT_TRUE(sink.Records().empty());
    EXPECT_EQ(again.GetNumber("zml", "bubble_help_delay"), 100);
}

TEST_F(PreferencesTest, WrongTypesAndBadKeysAreRefused) {
    PreferenceManager prefs(file);
    EXPECT_THROW(prefs.Set("zml", "use_bubble_help", std::wstring(L"yes")), QuarnLog::Exception);
    EXPECT_THROW(prefs.GetString("zml", "use_bubble_help"), QuarnLog::Exception);
    EXPECT_THROW(prefs.Set("bad category", "x", true), QuarnLog::Exception);
    EXPECT_THROW(prefs.Set("zml", "", true), QuarnLog::Exception);
    EXPECT_TRUE(prefs.GetBoolean("zml", "use_bubble_help"));
    // An unwritable file: the value stays as it was.
    WriteFile("");
    fs::create_directories(file + ".XXXXXX");
    fs::permissions(fs::path(file).parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
    if (::access(fs::path(file).parent_path().c_str(), W_OK) != 0) {  // not when run as root
        EXPECT_THROW(prefs.Set("zml", "bubble_help_delay", 1.0), QuarnLog::Exception);
        EXPECT_EQ(prefs.GetNumber("zml", "bubble_help_delay"), 500);
    }
    fs::permissions(fs::path(file).parent_path(), fs::perms::owner_all);
}

TEST_F(PreferencesTest, CallbacksFireOnChangeAndStopWhenTheHolderGoes) {
    auto prefs = std::make_shared<PreferenceManager>(file);
    std::vector<bool> seen;
    {
        Preference bubble("zml", "use_bubble_help", prefs);
        bubble.OnChanged([&seen](const Value& v) { seen.push_back(std::get<bool>(v)); });
        bubble.Set(false);
        prefs->Set("zml", "use_bubble_help", false);  // unchanged: no call
        prefs->Set("zml", "use_bubble_help", true);
        EXPECT_TRUE(bubble.GetBoolean());
        EXPECT_EQ(std::get<bool>(bubble.Get()), true);
    }
    prefs->Set("zml", "use_bubble_help", false);
    EXPECT_EQ(seen, (std::vector<bool>{false, true}));

    int calls = 0;
    auto token =
        prefs->AddChangeCallback("zml", "bubble_help_delay", [&calls](const Value&) { ++calls; });
    prefs->Set("zml", "bubble_help_delay", 10.0);
    token.reset();
    prefs->Set("zml", "bubble_help_delay", 20.0);
    EXPECT_EQ(calls, 1);
}

TEST_F(PreferencesTest, ConcurrentWritersKeepEveryValue) {
    // Two managers on one file stand for two processes; each keeps the other's values.
    auto a = std::make_shared<PreferenceManager>(file);
    auto b = std::make_shared<PreferenceManager>(file);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, m = (t % 2 ? a : b)] {
            for (int i = 0; i < 20; ++i) {
                m->Set("test", "t" + std::to_string(t) + "_" + std::to_string(i), double(i));
            }
        });
    }
    for (auto& t : threads) t.join();
    PreferenceManager reader(file);
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(reader.GetNumber("test", "t" + std::to_string(t) + "_" + std::to_string(i)),
                      i);
        }
    }
}
