#pragma once

#include <memory>
#include <string>

namespace urilib {

struct uriData;

// A URI, kept as its text. Immutable: copies share the text.
class URI {
public:
    // Takes `text` as it stands (no check beyond being non-empty when used).
    explicit URI(std::wstring text);

    // The "file:" URI of `path`: made absolute against the current folder, '\' taken as '/', every
    // byte of its UTF-8 form other than letters, digits, "-._~" and '/' percent-encoded:
    // "/tmp/a b/é.gmdx" -> "file:///tmp/a%20b/%C3%A9.gmdx".
    static URI fromFile(const std::wstring& path);

    // The text of the URI.
    const std::wstring& toString() const;
    // Lets a URI be passed where the engine takes a URI as wide text.
    operator const std::wstring&() const { return toString(); }

    // The scheme in lower case ("file", "https"), or empty when the text has none.
    std::wstring Scheme() const;
    bool IsFile() const;
    // The local path of a "file:" URI (host empty or "localhost"), percent-decoded. Raises
    // QuarnLog::Exception naming the URI when it is not a local file URI or its encoding is
    // malformed.
    std::wstring toFile() const;

    bool operator==(const URI& other) const { return toString() == other.toString(); }

private:
    std::shared_ptr<const urilib::uriData> uriData;
};

}  // namespace urilib
