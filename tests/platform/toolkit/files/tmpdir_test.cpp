#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <thread>

#include "QuarnLog/Exception.h"
#include "qfio/qfio.h"
#include "qtxt/Text.h"

namespace fs = std::filesystem;

TEST(TmpDirTest, PrivateUniqueNamedAfterItsNameAndRemovedWithItsFiles) {
    fs::path first;
    {
        qfio::TmpDir a(L"LX_UNDO_REDO");
        qfio::TmpDir b(L"LX_UNDO_REDO");
        first = fs::path(a.Name());
        EXPECT_NE(a.Name(), b.Name());
        EXPECT_EQ(first.parent_path(), fs::path(qfio_TmpdirName()));
        EXPECT_EQ(first.filename().string().rfind("LX_UNDO_REDO_", 0), 0u) << first;
        struct stat st {};
        ASSERT_EQ(::stat(first.c_str(), &st), 0);
        EXPECT_TRUE(S_ISDIR(st.st_mode));
        EXPECT_EQ(st.st_mode & 0777, 0700u);
        fs::create_directories(first / "sub");
        std::ofstream(first / "sub" / "snapshot.gmdx") << "model";
    }
    EXPECT_FALSE(fs::exists(first));
}

TEST(TmpDirTest, SeparatorsInTheNameStayInsideTheTemporaryFolder) {
    qfio::TmpDir dir(L"../a\\b/c");
    EXPECT_EQ(fs::path(dir.Name()).parent_path(), fs::path(qfio_TmpdirName()));
}

TEST(TmpDirTest, UnusableTmpdirGivesAnErrorNamingTheCall) {
    const std::string saved = std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "";
    ::setenv("TMPDIR", "/nonexistent-lattix-folder", 1);
    EXPECT_THROW(qfio::TmpDir(L"X"), QuarnLog::Exception);
    try {
        qfio_TempNameInTmpdir(L"LX_BATCH_");
        ADD_FAILURE() << "no error";
    } catch (const QuarnLog::Exception& e) {
        EXPECT_NE(std::string(e.what()).find("mkstemp"), std::string::npos) << e.what();
    }
    saved.empty() ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", saved.c_str(), 1);
}

TEST(TempNameTest, UniqueUnderConcurrentUseFromManyThreads) {
    constexpr int kThreads = 8;
    constexpr int kPerThread = 200;
    std::mutex mutex;
    std::set<std::wstring> names;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&mutex, &names] {
            for (int i = 0; i < kPerThread; ++i) {
                auto name = qfio_TempNameInTmpdir(L"LX_BATCH_BCF_");
                std::lock_guard lock(mutex);
                names.insert(std::move(name));
            }
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(names.size(), static_cast<std::size_t>(kThreads * kPerThread));
    for (const auto& name : names) {
        EXPECT_EQ(fs::path(name).filename().wstring().rfind(L"LX_BATCH_BCF_", 0), 0u);
        struct stat st {};
        ASSERT_EQ(::stat(qtxt::narrow(name).c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0600u);
        fs::remove(name);
    }
}
