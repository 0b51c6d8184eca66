#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "QuarnLog/Exception.h"
#include "qstr/qstr.h"
#include "qtxt/Text.h"
#include "urilib/URI.h"

namespace {

// Sets environment variables for the life of a test and puts the old values back.
class Env {
public:
    void Set(const char* name, const char* value) {
        if (!saved.count(name)) {
            const char* old = std::getenv(name);
            saved[name] = old ? std::optional<std::string>(old) : std::nullopt;
        }
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    }
    ~Env() {
        for (auto& [name, value] : saved) {
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        }
    }

private:
    std::map<std::string, std::optional<std::string>> saved;
};

}  // namespace

TEST(PathExpandTest, Table) {
    Env env;
    env.Set("XDG_DATA_HOME", "/home/u/.data");
    env.Set("TAMARIN_HOME", "/opt/lattix/share");
    struct Row {
        std::wstring in, out;
    } rows[] = {
        {L"$PERSONAL\\OperatorHistory", L"/home/u/.data/lattix/OperatorHistory"},
        {L"${PERSONAL}/x", L"/home/u/.data/lattix/x"},
        {L"$TAMARIN_HOME\\help\\LXL", L"/opt/lattix/share/help/LXL"},
        {L"${TAMARIN_HOME}", L"/opt/lattix/share"},
        {L"$TAMARIN_HOME$PERSONAL", L"/opt/lattix/share/home/u/.data/lattix"},
        {L"$HOME/x", L"$HOME/x"},
        {L"$PERSONALITY/x", L"$PERSONALITY/x"},
        {L"${PERSONAL/x", L"${PERSONAL/x"},
        {L"out/$(in.root)_$(in.FileNumber).img", L"out/$(in.root)_$(in.FileNumber).img"},
        {L"cost $ 5 $", L"cost $ 5 $"},
        {L"C:\\data\\\u00e9t\u00e9", L"C:/data/\u00e9t\u00e9"},
        {L"", L""},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(qstr_PathExpand(r.in), r.out) << qtxt::narrow(r.in);
    }
}

TEST(PathExpandTest, FallbacksWhenVariablesAreUnset) {
    Env env;
    env.Set("XDG_DATA_HOME", nullptr);
    env.Set("HOME", "/home/v");
    env.Set("TAMARIN_HOME", nullptr);
    EXPECT_EQ(qstr_PathExpand(L"$PERSONAL"), L"/home/v/.local/share/lattix");
    // In a build tree the library finds the source tree's resources.
    const auto home = qstr_TamarinHome();
    EXPECT_TRUE(std::filesystem::is_directory(home)) << qtxt::narrow(home);
    env.Set("TAMARIN_HOME", "");
    EXPECT_EQ(qstr_TamarinHome(), home);
}

TEST(GetEnvTest, WideInWideOutEmptyWhenUnset) {
    Env env;
    env.Set("LATTIX_TEST_VALUE", "caf\xc3\xa9 \xf0\x9f\x98\x80");
    EXPECT_EQ(qstr_GetEnv(L"LATTIX_TEST_VALUE"), L"caf\u00e9 \U0001F600");
    env.Set("LATTIX_TEST_VALUE", nullptr);
    EXPECT_EQ(qstr_GetEnv(L"LATTIX_TEST_VALUE"), L"");
}

TEST(UriTest, FileRoundTripWithSpacesAndNonAscii) {
    struct Row {
        std::wstring path, uri;
    } rows[] = {
        {L"/tmp/a b/\u00e9.gmdx", L"file:///tmp/a%20b/%C3%A9.gmdx"},
        {L"/tmp/LX_UNDO_REDO_x\\3f2b.gmdx", L"file:///tmp/LX_UNDO_REDO_x/3f2b.gmdx"},
        {L"/d/\u6a21\u578b #1%?.gmdx", L"file:///d/%E6%A8%A1%E5%9E%8B%20%231%25%3F.gmdx"},
        {L"/e/\U0001F600~x", L"file:///e/%F0%9F%98%80~x"},
    };
    for (const auto& r : rows) {
        const auto uri = urilib::URI::fromFile(r.path);
        EXPECT_EQ(uri.toString(), r.uri);
        EXPECT_TRUE(uri.IsFile());
        std::wstring back = r.path;
        for (auto& c : back) c = c == L'\\' ? L'/' : c;
        EXPECT_EQ(uri.toFile(), back);
    }
    const auto relative = urilib::URI::fromFile(L"model.gmdx");
    EXPECT_EQ(std::filesystem::path(relative.toFile()),
              std::filesystem::current_path() / "model.gmdx");
}

TEST(UriTest, ForeignOrMalformedUrisAreRefused) {
    EXPECT_EQ(urilib::URI(L"file://localhost/x%20y").toFile(), L"/x y");
    EXPECT_EQ(urilib::URI(L"FILE:///x?query#frag").toFile(), L"/x");
    EXPECT_EQ(urilib::URI(L"HTTPS://example.org").Scheme(), L"https");
    for (const wchar_t* bad : {L"https://example.org/x", L"file://server/x", L"file:///x%2",
                               L"file:///x%zz", L"file:relative", L"no scheme"}) {
        EXPECT_THROW(urilib::URI(bad).toFile(), QuarnLog::Exception) << qtxt::narrow(bad);
    }
}
