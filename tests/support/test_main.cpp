// The entry point of every test program. It gives the program the private environment of the
// suite before any test runs, so that a test never reads or writes the user's own state,
// configuration, data or clipboard folders, whether it runs under ctest or by hand.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

// Folders and resources are always replaced; the rest (display platform) only fills a gap, so a
// test run under a real or virtual display can choose its own.
bool AlwaysReplaced(std::string_view name) { return name.rfind("QT_", 0) != 0; }

void ApplyTestEnvironment(std::string_view list) {
    while (!list.empty()) {
        const auto bar = list.find('|');
        const std::string_view item = list.substr(0, bar);
        list = bar == std::string_view::npos ? std::string_view{} : list.substr(bar + 1);
        const auto eq = item.find('=');
        if (eq == std::string_view::npos) continue;
        const std::string name(item.substr(0, eq));
        const std::string value(item.substr(eq + 1));
        if (name.rfind("XDG_", 0) == 0) {
            std::error_code ec;
            std::filesystem::create_directories(value, ec);
            if (name == "XDG_RUNTIME_DIR") {
                std::filesystem::permissions(value, std::filesystem::perms::owner_all,
                                             std::filesystem::perm_options::replace, ec);
            }
        }
        ::setenv(name.c_str(), value.c_str(), AlwaysReplaced(name) ? 1 : 0);
    }
}

}  // namespace

int main(int argc, char** argv) {
    ApplyTestEnvironment(LATTIX_TEST_ENVIRONMENT);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
