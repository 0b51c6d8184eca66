#pragma once

// Helpers of the tests that compare written XML with pugixml's own output.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include <pugixml.hpp>

namespace xml_test {

// Equal bytes, or where they first differ (the documents are long).
inline testing::AssertionResult SameBytes(const std::string& actual, const std::string& expected) {
    if (actual == expected) return testing::AssertionSuccess();
    std::size_t at = 0;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) ++at;
    auto around = [at](const std::string& text) {
        auto from = at < 60 ? 0 : at - 60;
        return testing::PrintToString(text.substr(from, 120));
    };
    return testing::AssertionFailure() << "sizes " << actual.size() << " and " << expected.size()
                                       << ", first difference at byte " << at << ":\n  "
                                       << around(actual) << "\nexpected\n  " << around(expected);
}

struct StringSink : pugi::xml_writer {
    std::string text;
    void write(const void* data, size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

}  // namespace xml_test
