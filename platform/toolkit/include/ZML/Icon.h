#pragma once

#include <memory>
#include <string>

namespace ZML {

struct iconData;

// An icon resolved on the icon path (made by qzml_IconCreateFromFile). A name that no file
// matches gives a placeholder icon: IsPlaceholder is true, Path is empty and SvgText holds a
// drawing that makes the gap visible. Immutable once made; share it freely.
class Icon {
public:
    // `requested` is the name asked for ("gear.ico"); `path` the file found, or empty for the
    // placeholder.
    Icon(std::wstring requested, std::wstring path);
    ~Icon();

    const std::wstring& RequestedName() const;
    const std::wstring& Path() const;
    bool IsPlaceholder() const;
    // The icon's SVG text: the file's content for an .svg file, the placeholder drawing for a
    // placeholder, empty for a bitmap icon (read Path instead).
    std::string SvgText() const;

    // The drawing shown for an icon that could not be found: a magenta square with a question
    // mark.
    static const std::string& PlaceholderSvg();

private:
    std::shared_ptr<iconData> iconRecord;
};

}  // namespace ZML
