#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "ZML/Part.h"

namespace ZML {

struct filenameData;

// Whether a file name field picks an existing file or names a new one.
enum FilenameMode : int { FilenameInput = 0, FilenameOutput = 1 };

// One file type a file name field offers. The five flag states tune how an output type's
// options are offered by the file chooser: 0 hidden, 1 shown and on, 2 shown and off, 3 shown
// and fixed. They are kept as given.
struct FilenameTypeDef {
    std::wstring typeName;
    std::shared_ptr<Part> optionsPart;
    std::array<int, 5> flags{0, 0, 0, 0, 0};
    bool hasFlags = false;
};

// A file name field with a browse button.
class Filename : public Part {
public:
    explicit Filename(std::string name = {});
    ~Filename() override;

    std::string Kind() const override;

    // `mode` is one of FilenameMode; other values are refused with an exception.
    void ModeSet(int mode);
    int Mode() const;
    // Offers the file type `typeName` ("raster", "vector", ...).
    void TypeDefAdd(const std::wstring& typeName);
    // Offers `typeName` with an options part (may be null) and the five flag states.
    void TypeDefAdd(const std::wstring& typeName, std::shared_ptr<Part> optionsPart, int flag1,
                    int flag2, int flag3, int flag4, int flag5);
    std::vector<FilenameTypeDef> TypeDefs() const;
    // Sets the field's text: a folder and a pattern ("/data/*.img") or a file path.
    void Select(const std::wstring& path);
    std::wstring GetPath() const;
    // The short form shows only the text and the browse button, no type chooser.
    void SetShortForm(bool shortForm);
    bool IsShortForm() const;

    // A user typing or browsing to `path`: as Select, then "valuechanged" fires.
    bool UserSelect(const std::wstring& path);

private:
    std::shared_ptr<filenameData> filenameRecord;
};

}  // namespace ZML
