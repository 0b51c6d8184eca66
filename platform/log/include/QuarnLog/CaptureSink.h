#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "QuarnLog/Record.h"

namespace QuarnLog {

struct captureSinkData;

// Collects every record written while it lives, so that tests read what was logged without
// scraping files. Several may live at once; each sees the records written after it was made.
class CaptureSink {
public:
    CaptureSink();
    ~CaptureSink();
    CaptureSink(const CaptureSink&) = delete;
    CaptureSink& operator=(const CaptureSink&) = delete;

    std::vector<Record> Records() const;
    // True when a record's text contains `fragment` (and, when given, its function is `function`).
    bool Contains(std::string_view fragment, std::string_view function = {}) const;
    void Clear();

private:
    std::shared_ptr<captureSinkData> captureData;
};

}  // namespace QuarnLog
