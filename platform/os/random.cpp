#include "quarn/os/Random.h"

#include <sys/random.h>

#include <cerrno>
#include <cstring>

#include "QuarnLog/Exception.h"

namespace quarn::os {

void FillRandom(std::span<std::uint8_t> buffer) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        ssize_t got = ::getrandom(buffer.data() + done, buffer.size() - done, 0);
        if (got < 0) {
            if (errno == EINTR) continue;
            const int error = errno;
            throw QuarnLog::Exception("quarn::os::FillRandom", __FILE__,
                                      std::string("getrandom failed: ") + std::strerror(error));
        }
        done += static_cast<std::size_t>(got);
    }
}

std::vector<std::uint8_t> RandomBytes(std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    FillRandom(bytes);
    return bytes;
}

std::string NewUuidV4() {
    std::uint8_t b[16];
    FillRandom(b);
    b[6] = static_cast<std::uint8_t>((b[6] & 0x0f) | 0x40);  // version 4
    b[8] = static_cast<std::uint8_t>((b[8] & 0x3f) | 0x80);  // variant 10xx
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(36);
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
        text.push_back(digits[b[i] >> 4]);
        text.push_back(digits[b[i] & 0x0f]);
    }
    return text;
}

}  // namespace quarn::os
