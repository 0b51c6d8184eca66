#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

// The kernel's cryptographic random source. Safe to call from any thread.
namespace quarn::os {

// Fills `buffer` with random bytes from getrandom(2), retrying after interruptions and short reads.
// Raises QuarnLog::Exception naming getrandom and the system's error text when the kernel refuses.
void FillRandom(std::span<std::uint8_t> buffer);

// `count` random bytes; see FillRandom.
std::vector<std::uint8_t> RandomBytes(std::size_t count);

// A new random version-4 identifier in its 36-character lower-case 8-4-4-4-12 form, for example
// "3f2b8c1e-6a0d-4c7b-9e55-0b1d2c3e4f5a". Raises as FillRandom does.
std::string NewUuidV4();

}  // namespace quarn::os
