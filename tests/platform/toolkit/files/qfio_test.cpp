#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "QuarnLog/CaptureSink.h"
#include "qfio/qfio.h"
#include "qtxt/Text.h"

namespace fs = std::filesystem;

TEST(FilenameTest, SplittingTable) {
    struct Row {
        std::wstring name, path, base, extension, internal;
    };
    const Row rows[] = {
        {L"C:\\data\\dem.tif", L"C:/data/", L"dem", L".tif", L"C:/data/dem.tif"},
        {L"/a/archive.tar.gz", L"/a/", L"archive.tar", L".gz", L"/a/archive.tar.gz"},
        {L"notes", L"", L"notes", L"", L"notes"},
        {L"/a/.profile", L"/a/", L".profile", L"", L"/a/.profile"},
        {L"/a.b/c", L"/a.b/", L"c", L"", L"/a.b/c"},
        {L"out\\\\dir//x.", L"out/dir/", L"x", L".", L"out/dir/x."},
        {L"\\\\server\\share\\m.gmdx", L"//server/share/", L"m", L".gmdx",
         L"//server/share/m.gmdx"},
        {L"/d/\u00e9t\u00e9 \U0001F600.img", L"/d/", L"\u00e9t\u00e9 \U0001F600", L".img",
         L"/d/\u00e9t\u00e9 \U0001F600.img"},
        {L"", L"", L"", L"", L""},
        {L"dir/", L"dir/", L"", L"", L"dir/"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(qtxt::narrow(r.name));
        EXPECT_EQ(qfio_FilenamePath(r.name), r.path);
        EXPECT_EQ(qfio_FilenameBase(r.name), r.base);
        EXPECT_EQ(qfio_FilenameExtension(r.name), r.extension);
        EXPECT_EQ(qfio_FilenameExternalToInternal(r.name), r.internal);
        EXPECT_EQ(r.path + r.base + r.extension, r.internal);
    }
}

class QfioFileTest : public ::testing::Test {
protected:
    fs::path dir;
    void SetUp() override {
        dir = fs::temp_directory_path() / ("lattix-qfio-" + std::to_string(::getpid()));
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::wstring Write(const std::string& name, const std::string& bytes) {
        std::ofstream(dir / name, std::ios::binary) << bytes;
        return (dir / name).wstring();
    }
};

TEST_F(QfioFileTest, FileExistsReportsOnlyRealFailures) {
    QuarnLog::ErrorContext record("test");
    EXPECT_TRUE(qfio_FileExists(Write("a", "x"), record));
    EXPECT_TRUE(qfio_FileExists(dir.wstring(), record));
    EXPECT_FALSE(qfio_FileExists((dir / "missing").wstring(), record));
    EXPECT_FALSE(qfio_FileExists((dir / "a" / "below-a-file").wstring(), record));
    EXPECT_FALSE(record.HasErrors());
    EXPECT_FALSE(qfio_FileExists(std::wstring(5000, L'x'), record));  // name too long
    ASSERT_TRUE(record.HasErrors());
    EXPECT_NE(record.Messages()[0].find("stat"), std::string::npos);
    record.Clear();
}

TEST_F(QfioFileTest, ReadsLinesInAnyLineEndingAndSplitsLongOnes) {
    const auto path =
        Write("help.txt", "alpha  beta\r\n\ncaf\xc3\xa9 \xf0\x9f\x98\x80\nabcdefg\nbad\xff\nlast");
    auto file = qfio_Open(path, "rt");
    ASSERT_TRUE(file);
    std::vector<std::wstring> lines;
    std::wstring line;
    while (qfio_Fgets(*file, line, 4)) lines.push_back(line);
    const std::vector<std::wstring> expected = {L"alph",      L"a  b",        L"eta",  L"",
                                                L"caf\u00e9", L" \U0001F600", L"abcd", L"efg",
                                                L"bad\uFFFD", L"last"};
    EXPECT_EQ(lines, expected);
    EXPECT_TRUE(qfio_Close(file));
    EXPECT_FALSE(file);
}

TEST_F(QfioFileTest, WritesTextAndReportsOpenFailures) {
    const auto path = qtxt::widen((dir / "\xc3\xbc"
                                         "ber.txt")
                                      .string());
    auto out = qfio_Open(path, "wt");
    ASSERT_TRUE(out);
    EXPECT_TRUE(qfio_Fputs(*out, L"\u6a21\u578b\n"));
    EXPECT_TRUE(qfio_Close(out));
    auto in = qfio_Open(path, "r");
    std::wstring line;
    ASSERT_TRUE(in && qfio_Fgets(*in, line));
    EXPECT_EQ(line, L"\u6a21\u578b");
    EXPECT_FALSE(qfio_Fgets(*in, line));

    QuarnLog::ErrorContext record("KeyValueMap::Read");
    EXPECT_FALSE(qfio_Open((dir / "missing.txt").wstring(), "rt", record));
    ASSERT_TRUE(record.HasErrors());
    EXPECT_NE(record.Messages()[0].find("missing.txt"), std::string::npos);
    EXPECT_NE(record.Messages()[0].find("fopen"), std::string::npos);
    QuarnLog::CaptureSink sink;
    {
        QuarnLog::ErrorContext logged("ShowAlternateHelpFor");
        qfio_Open((dir / "missing.txt").wstring(), "rt", logged);
    }
    EXPECT_TRUE(sink.Contains("missing.txt"));
    record.Clear();
}
