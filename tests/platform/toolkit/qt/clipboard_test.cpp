#include <QClipboard>
#include <QEventLoop>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTimer>
#include <cstdlib>

#include "QuarnLog/Exception.h"
#include "ZMLQt/QtClipboardBackend.h"
#include "qttestkit.h"
#include "quarn/os/Clipboard.h"

using ZML::Qt6::QtClipboardBackend;

namespace {

const std::vector<std::uint8_t> kBytes{0, 1, 2, 0x7F, 0x80, 0xFE, 0xFF, 'L', 'x'};

QByteArray Hex(const std::vector<std::uint8_t>& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<qsizetype>(bytes.size()))
        .toHex();
}

}  // namespace

TEST(QtClipboard, FormatsTravelAsTheirOwnMimeTypes) {
    QtClipboardBackend clipboard;
    const auto model = clipboard.RegisterFormat(L"LattixModel");
    const auto text = clipboard.RegisterFormat(L"LattixText");
    EXPECT_NE(model, text);
    EXPECT_EQ(clipboard.RegisterFormat(L"LattixModel"), model);
    EXPECT_EQ(QtClipboardBackend::MimeType(L"LattixModel"), "application/x-lattix-LattixModel");

    clipboard.Open();
    clipboard.Empty();
    clipboard.SetData(model, kBytes);
    clipboard.Close();
    const QMimeData* shown = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->data("application/x-lattix-LattixModel").toHex(), Hex(kBytes));

    clipboard.Open();
    EXPECT_EQ(clipboard.GetData(model), kBytes);
    EXPECT_EQ(clipboard.GetData(text), std::nullopt);
    clipboard.SetData(text, std::vector<std::uint8_t>{'h', 'i'});
    clipboard.Close();
    clipboard.Open();
    EXPECT_EQ(clipboard.GetData(model), kBytes) << "without Empty, other formats stay";
    clipboard.Empty();
    clipboard.Close();
    clipboard.Open();
    EXPECT_EQ(clipboard.GetData(model), std::nullopt);
    clipboard.Close();
}

TEST(QtClipboard, MisuseIsAnErrorNotACrash) {
    QtClipboardBackend clipboard;
    const auto format = clipboard.RegisterFormat(L"LattixModel");
    EXPECT_THROW(clipboard.SetData(format, kBytes), QuarnLog::Exception) << "not open";
    EXPECT_THROW(clipboard.GetData(format), QuarnLog::Exception) << "not open";
    EXPECT_THROW(clipboard.RegisterFormat(L""), QuarnLog::Exception);
    clipboard.Open();
    EXPECT_THROW(clipboard.Open(), QuarnLog::Exception) << "open twice in one thread";
    EXPECT_THROW(clipboard.SetData(format + 100, kBytes), QuarnLog::Exception) << "unknown id";
    clipboard.Close();
    clipboard.Close();
}

// The writing half of the test between processes; the reading half below runs in a child process.
// Both run only under a real X server (tests/qtclipboard/tests.cmake starts one).
TEST(DesktopClipboardBetweenProcesses, BytesCopiedHereArePastedInAnotherProcess) {
    if (!std::getenv("LATTIX_CLIPBOARD_BETWEEN_PROCESSES")) {
        GTEST_SKIP() << "needs an X server; run by the qt_clipboard_between_processes test";
    }
    ASSERT_EQ(QGuiApplication::platformName(), "xcb");
    quarn::os::SetClipboardBackend(std::make_shared<QtClipboardBackend>());
    {
        const auto format = quarn::os::RegisterClipboardFormat(L"LattixModel");
        quarn::os::ClipboardSession session;
        quarn::os::EmptyClipboard();
        quarn::os::SetClipboardData(format, kBytes);
    }

    // This process owns the selection, so it must keep serving it while the child reads.
    QProcess child;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove("LATTIX_CLIPBOARD_BETWEEN_PROCESSES");
    environment.insert("LATTIX_CLIPBOARD_EXPECT", QString::fromLatin1(Hex(kBytes)));
    child.setProcessEnvironment(environment);
    QEventLoop loop;
    QObject::connect(&child, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&child, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    child.start(LATTIX_TEST_BINARY, {"--gtest_filter=DesktopClipboardReader.*"});
    loop.exec();
    const QByteArray output = child.readAllStandardOutput();
    quarn::os::SetClipboardBackend(nullptr);
    ASSERT_EQ(child.state(), QProcess::NotRunning) << "the reader did not finish";
    EXPECT_EQ(child.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains("[  PASSED  ] 1 test")) << output.toStdString();
}

TEST(DesktopClipboardReader, ReadsWhatTheOtherProcessCopied) {
    const char* expected = std::getenv("LATTIX_CLIPBOARD_EXPECT");
    if (!expected) {
        GTEST_SKIP() << "the reading half of DesktopClipboardBetweenProcesses";
    }
    ASSERT_EQ(QGuiApplication::platformName(), "xcb");
    quarn::os::SetClipboardBackend(std::make_shared<QtClipboardBackend>());
    std::optional<std::vector<std::uint8_t>> bytes;
    {
        const auto format = quarn::os::RegisterClipboardFormat(L"LattixModel");
        quarn::os::ClipboardSession session;
        bytes = quarn::os::GetClipboardData(format);
    }
    quarn::os::SetClipboardBackend(nullptr);
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(Hex(*bytes), QByteArray(expected));
}
