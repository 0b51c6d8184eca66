#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

fs::path Tool() { return fs::path(LATTIX_BINARY_DIR) / "apps" / "lxmodel" / "lxmodel"; }

struct Run {
    int status = -1;
    std::string output;
};

// Runs lxmodel with arguments (each quoted), stdout and stderr together.
Run Lxmodel(const std::vector<std::string>& args, const std::string& environment = {}) {
    std::string command = environment + " '" + Tool().string() + "'";
    for (const auto& arg : args) command += " '" + arg + "'";
    command += " 2>&1";
    Run run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return run;
    std::array<char, 4096> buffer{};
    while (auto got = std::fread(buffer.data(), 1, buffer.size(), pipe)) run.output.append(buffer.data(), got);
    int status = ::pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace

TEST(Lxmodel, InfoConvertAndExitCodes) {
    if (!fs::exists(Tool())) GTEST_SKIP() << "lxmodel is not built in this tree";
    auto examples = fs::path(LATTIX_SOURCE_DIR) / "examples";
    auto folder = fs::path(LATTIX_BINARY_DIR) / "test-home" / "lxmodel";
    fs::remove_all(folder);
    fs::create_directories(folder);
    const std::string key =
        "LATTIX_MODEL_KEY=00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff";
    auto encrypted = (folder / "loop.gmdc").string();
    auto plain = (folder / "loop.gmdx").string();

    struct Case {
        std::vector<std::string> args;
        std::string environment;
        int status;
        std::string expected;
    };
    std::vector<Case> cases = {
        {{"info", (examples / "if-else.gmdx").string()}, "", 0, "TAMARIN.If"},
        {{"info", (examples / "annotated-ports.gmdx").string()}, "", 0, "Note: Smoothing"},
        {{"convert", (examples / "loop.gmdx").string(), encrypted}, key, 0, ""},
        {{"info", encrypted}, key, 0, "encrypted only"},
        {{"convert", encrypted, plain}, key, 1, "may not be saved in the plain format"},
        {{"convert", encrypted, (folder / "loop.txt").string()}, key, 2, "names no model format"},
        {{"info", (folder / "missing.gmdx").string()}, "", 1, "No such file"},
        {{"frobnicate"}, "", 2, "usage:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args.front() + " " + (c.args.size() > 1 ? c.args[1] : ""));
        auto run = Lxmodel(c.args, c.environment);
        EXPECT_EQ(run.status, c.status) << run.output;
        EXPECT_NE(run.output.find(c.expected), std::string::npos) << run.output;
    }
    EXPECT_FALSE(fs::exists(plain));
}
