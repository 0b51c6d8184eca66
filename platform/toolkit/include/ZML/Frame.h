#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZML/Menu.h"
#include "ZML/Part.h"

namespace ZML {

struct frameData;

// The results a modal run ends with.
enum ModalResult : int { ResultCancel = 0, ResultOk = 1 };

// A top-level window (or a window embedded in another, as a part). Holds its parts, the context
// menus its script declares, and its modal state.
class Frame : public Part {
public:
    explicit Frame(std::string name = {});
    ~Frame() override;

    std::string Kind() const override;

    // Adds `part` as a child; the frame owns it from now on.
    void Add(const std::shared_ptr<Part>& part);
    void ResizableSet(bool resizable);
    bool IsResizable() const;

    // Loads the dialog script `scriptName` (found as <scriptName>.zml on the script search path,
    // see docs/zml-scripts.md): its first frame or dialog gives this frame its settings and its
    // parts, and every menu of the script becomes one of this frame's menus. Throws
    // ZML::ScriptError (file, line, column) for a script that does not parse or build, and
    // QuarnLog::Exception when no script of that name exists. Nothing is added on failure.
    void SetSource(const std::string& scriptName);
    // The script file this frame was loaded from, or empty.
    const std::string& Source() const;

    void AddMenu(Menu menu);
    // The menu named `name`, or nothing.
    std::optional<Menu> FindMenu(const std::string& name) const;
    std::vector<Menu> Menus() const;

    // Shows the frame modally through the current backend and returns the result it was ended
    // with (EndModal, Dialog::Okay, Dialog::Cancel). Headless, the frame's display step runs and
    // then the driver a test queued with HeadlessAnswers::QueueModal; see HeadlessBackend.
    int ShowModal();
    // Shows the frame without waiting (display step included).
    void Show();
    // Ends a modal run with `result` (or closes a frame shown without waiting) and fires "close".
    // A second call while closed does nothing.
    void EndModal(int result);
    bool IsOpen() const;
    // The result of the last modal run, ResultCancel before any.
    int ModalResult() const;

    // The display step: runs OnDisplay, then fires "display". Backends call it when the frame is
    // about to appear; the frame is open from here until EndModal.
    void Display();

protected:
    // Called when the frame is about to be shown; override to fill parts with their values.
    virtual void OnDisplay();

private:
    std::shared_ptr<frameData> frameRecord;
};

}  // namespace ZML
