// Uses a little of every installed library and checks that the installation finds its own files.
#include <cstdio>
#include <filesystem>
#include <string>

#include "qtxt/Text.h"
#include "quarn/os/Random.h"
#ifdef HAVE_ZML
#include "qfio/qfio.h"
#include "qstr/qstr.h"
#endif

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: consumer INSTALL_PREFIX\n");
        return 2;
    }
    const std::string prefix = std::filesystem::canonical(argv[1]).string();
    int failures = 0;

    const std::string text = "caf\xc3\xa9 \xe6\xa8\xa1\xe5\x9e\x8b \xf0\x9f\x98\x80";
    if (qtxt::DefaultWideToUTF8(qtxt::UTF8toDefaultWide(text)) != text) {
        std::fprintf(stderr, "text conversion does not round-trip\n");
        ++failures;
    }
    const std::string id = quarn::os::NewUuidV4();
    std::printf("uuid %s\n", id.c_str());
    if (id.size() != 36) ++failures;

#ifdef HAVE_ZML
    const std::string home = qtxt::narrow(qstr_TamarinHome());
    std::printf("TAMARIN_HOME %s\n", home.c_str());
    if (home != prefix + "/share/lattix") {
        std::fprintf(stderr, "resource folder %s is not the installed one\n", home.c_str());
        ++failures;
    }
    const std::string expanded = qtxt::narrow(qstr_PathExpand(L"$TAMARIN_HOME\\help"));
    if (expanded != prefix + "/share/lattix/help") {
        std::fprintf(stderr, "expansion gave %s\n", expanded.c_str());
        ++failures;
    }
#endif
    std::printf("%s\n", failures ? "consumer: FAILED" : "consumer: ok");
    return failures ? 1 : 0;
}
