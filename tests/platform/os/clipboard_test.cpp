#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "QuarnLog/Exception.h"
#include "quarn/os/Clipboard.h"
#include "quarn/os/FileClipboardBackend.h"

using namespace quarn::os;
namespace fs = std::filesystem;

extern char** environ;

namespace {

const std::wstring kFormat = L"SOLUTION_BUILDER_PROCESS";

std::vector<std::uint8_t> Bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

// A private clipboard folder per test, so that tests running in parallel never share contents.
struct ClipboardFolder {
    fs::path path;
    ClipboardFolder() {
        path = fs::temp_directory_path() /
               ("lattix-clipboard-test-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(path);
        SetClipboardBackend(std::make_shared<FileClipboardBackend>(path.string()));
    }
    ~ClipboardFolder() {
        SetClipboardBackend(nullptr);
        fs::remove_all(path);
    }
};

std::string ReadText(ClipboardFormat format) {
    ClipboardSession session;
    auto data = GetClipboardData(format);
    return data ? std::string(data->begin(), data->end()) : std::string("<none>");
}

void WriteText(ClipboardFormat format, const std::string& text) {
    ClipboardSession session;
    EmptyClipboard();
    SetClipboardData(format, Bytes(text));
}

// Runs this test program again, selecting only `test`, with `extra` added to the environment;
// returns its exit status.
int RunChild(const std::string& test, const std::vector<std::string>& extra) {
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e) env.emplace_back(*e);
    env.insert(env.end(), extra.begin(), extra.end());
    std::vector<char*> envp;
    for (auto& e : env) envp.push_back(e.data());
    envp.push_back(nullptr);
    std::string program = LATTIX_TEST_BINARY;
    std::string filter = "--gtest_filter=" + test;
    char* argv[] = {program.data(), filter.data(), nullptr};
    pid_t pid = 0;
    if (::posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv, envp.data()) != 0) return -1;
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

// Acts only as the child of CrossProcess below: writes the text it is given to the folder it is
// given.
TEST(ClipboardChild, WritesWhenAsked) {
    const char* folder = std::getenv("LATTIX_CLIPBOARD_CHILD_FOLDER");
    const char* text = std::getenv("LATTIX_CLIPBOARD_CHILD_TEXT");
    if (!folder || !text) GTEST_SKIP() << "helper of ClipboardTest.CrossProcess";
    SetClipboardBackend(std::make_shared<FileClipboardBackend>(folder));
    WriteText(RegisterClipboardFormat(kFormat), text);
    SetClipboardBackend(nullptr);
}

TEST(ClipboardTest, CrossProcessWriteIsReadByParent) {
    ClipboardFolder folder;
    const std::string text = "<model name=\"caf\xc3\xa9\">\xe6\xa8\xa1\xe5\x9e\x8b</model>";
    ASSERT_EQ(RunChild("ClipboardChild.WritesWhenAsked",
                       {"LATTIX_CLIPBOARD_CHILD_FOLDER=" + folder.path.string(),
                        "LATTIX_CLIPBOARD_CHILD_TEXT=" + text}),
              0);
    EXPECT_EQ(ReadText(RegisterClipboardFormat(kFormat)), text);
}

TEST(ClipboardTest, FormatIdsAreStableByName) {
    ClipboardFolder folder;
    const auto a = RegisterClipboardFormat(kFormat);
    const auto b = RegisterClipboardFormat(L"OTHER_FORMAT");
    EXPECT_NE(a, 0u);
    EXPECT_NE(a, b);
    EXPECT_EQ(RegisterClipboardFormat(kFormat), a);
    EXPECT_EQ(RegisterClipboardFormat(L"OTHER_FORMAT"), b);
}

TEST(ClipboardTest, UnknownOrEmptiedFormatReadsAsNothing) {
    ClipboardFolder folder;
    EXPECT_EQ(ReadText(RegisterClipboardFormat(L"NEVER_WRITTEN \u00e9/..")), "<none>");
    const auto format = RegisterClipboardFormat(kFormat);
    WriteText(format, "first");
    WriteText(RegisterClipboardFormat(L"OTHER"), "second");  // empties the first
    EXPECT_EQ(ReadText(format), "<none>");
    EXPECT_EQ(ReadText(RegisterClipboardFormat(L"OTHER")), "second");
}

TEST(ClipboardTest, WritesReplaceAndKeepBinaryBytes) {
    ClipboardFolder folder;
    const auto format = RegisterClipboardFormat(kFormat);
    const std::string binary("a\0b\xff", 4);
    WriteText(format, "old contents that are longer");
    WriteText(format, binary);
    EXPECT_EQ(ReadText(format), binary);
    struct stat st {};
    ASSERT_EQ(::stat(folder.path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST(ClipboardTest, CallsOutsideOpenAndBadFoldersGiveClearErrors) {
    ClipboardFolder folder;
    const auto format = RegisterClipboardFormat(kFormat);
    try {
        SetClipboardData(format, Bytes("x"));
        FAIL() << "wrote without opening";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_NE(std::string(e.what()).find("SetClipboardData"), std::string::npos) << e.what();
    }
    // A folder below a plain file cannot be made.
    const auto file = folder.path.string() + "-file";
    {
        std::FILE* f = std::fopen(file.c_str(), "w");
        std::fclose(f);
    }
    SetClipboardBackend(std::make_shared<FileClipboardBackend>(file + "/clipboard"));
    try {
        OpenClipboard();
        FAIL() << "opened below a file";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_NE(std::string(e.what()).find("mkdir"), std::string::npos) << e.what();
    }
    fs::remove(file);
}

TEST(ClipboardTest, DefaultFolderFollowsRuntimeDirectory) {
    const char* saved = std::getenv("XDG_RUNTIME_DIR");
    const std::string keep = saved ? saved : "";
    ::setenv("XDG_RUNTIME_DIR", "/run/user/4242", 1);
    EXPECT_EQ(FileClipboardBackend::DefaultFolder(), "/run/user/4242/lattix/clipboard");
    ::unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(FileClipboardBackend::DefaultFolder(),
              "/tmp/lattix-" + std::to_string(::getuid()) + "/clipboard");
    if (saved) ::setenv("XDG_RUNTIME_DIR", keep.c_str(), 1);
}

TEST(ClipboardTest, OpenWaitsForAnotherThreadToClose) {
    ClipboardFolder folder;
    const auto format = RegisterClipboardFormat(kFormat);
    WriteText(format, "before");
    std::atomic<bool> opened{false};
    std::thread writer([&opened, format] {
        ClipboardSession session;
        opened = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EmptyClipboard();
        SetClipboardData(format, Bytes("after"));
    });
    while (!opened) std::this_thread::yield();
    EXPECT_EQ(ReadText(format), "after");  // never the state in between
    writer.join();
}
