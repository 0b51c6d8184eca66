#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "QuarnLog/Exception.h"
#include "quarn/os/ShellOpen.h"

namespace fs = std::filesystem;
using quarn::os::ShellOpen;

namespace {

struct OpenCommand {
    explicit OpenCommand(const std::string& program) {
        ::setenv("LATTIX_OPEN_COMMAND", program.c_str(), 1);
    }
    ~OpenCommand() { ::unsetenv("LATTIX_OPEN_COMMAND"); }
};

std::string WaitForFile(const fs::path& path) {
    for (int i = 0; i < 1000 && !fs::exists(path); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

TEST(ShellOpenTest, OpenerReceivesTheTargetAsOneArgument) {
    const fs::path dir = fs::temp_directory_path() / ("lattix-open-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    const fs::path opener = dir / "opener";
    const fs::path record = dir / "record";
    {
        std::ofstream out(opener);
        out << "#!/bin/sh\nprintf '%s|%s' \"$#\" \"$1\" > \"" << record.string() << ".tmp\"\n"
            << "mv \"" << record.string() << ".tmp\" \"" << record.string() << "\"\n";
    }
    fs::permissions(opener, fs::perms::owner_all);
    OpenCommand command(opener.string());

    ShellOpen(L"https://example.org/a b?q=\u00fcber&x=$(HOME)");
    EXPECT_EQ(WaitForFile(record),
              "1|https://example.org/a b?q=\xc3\xbc"
              "ber&x=$(HOME)");
    fs::remove_all(dir);
}

TEST(ShellOpenTest, MissingOpenerGivesAnErrorNamingTheCall) {
    OpenCommand command("lattix-no-such-opener-program");
    try {
        ShellOpen(L"page.htm");
        FAIL() << "no error";
    } catch (const QuarnLog::Exception& e) {
        const std::string text = e.what();
        EXPECT_NE(text.find("posix_spawnp"), std::string::npos) << text;
        EXPECT_NE(text.find("lattix-no-such-opener-program"), std::string::npos) << text;
    }
}
