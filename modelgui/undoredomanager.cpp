#include "modelgui/UndoRedoManager.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "qfio/TmpDir.h"
#include "quarn/os/Random.h"
#include "urilib/URI.h"

namespace quarn::modelgui {

using Velmar::Lattix::Model;
using Velmar::Lattix::ModelFormatFactory;

namespace {

constexpr const wchar_t* kSnapshotFormat = L"SpatialModelFormat";
constexpr const wchar_t* kTmpDirName = L"LX_UNDO_REDO";
constexpr const wchar_t* kSnapshotExtension = L".gmdx";

struct step {
    std::wstring path;
    std::shared_ptr<UndoRedoManager::ModelState> state;
};

// A random version-4 identifier, "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx" in lower case, from 16
// bytes of the kernel's random source.
std::wstring NewIdentifier() {
    std::array<std::uint8_t, 16> bytes{};
    quarn::os::FillRandom(bytes);
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    static constexpr wchar_t digits[] = L"0123456789abcdef";
    std::wstring text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += L'-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0x0F];
    }
    return text;
}

}  // namespace

struct undoRedoData {
    std::shared_ptr<qfio::TmpDir> temporaryDirectory;
    std::uint64_t currentIndex = 0;
    std::vector<step> history;

    void Record(const std::shared_ptr<Model>& model,
                const std::shared_ptr<UndoRedoManager::ModelState>& state) {
        // The redo steps go first, newest first; their files stay with the folder.
        while (history.size() > currentIndex + 1) history.pop_back();

        const std::wstring identifier = NewIdentifier();
        if (!temporaryDirectory) temporaryDirectory = std::make_shared<qfio::TmpDir>(kTmpDirName);
        std::wstring path = temporaryDirectory->Name() + L"/" + identifier + kSnapshotExtension;
        ModelFormatFactory::Save(model, urilib::URI::fromFile(path), kSnapshotFormat);

        history.push_back(step{std::move(path), state});
        currentIndex = history.size() - 1;
    }

    std::shared_ptr<Model> OpenCurrent() const {
        return ModelFormatFactory::Open(urilib::URI::fromFile(history[currentIndex].path), L"");
    }
};

namespace {

void RequireModel(const std::shared_ptr<Model>& model, const char* function) {
    if (!model) throw QuarnLog::Exception(function, __FILE__, "No model given to record.");
}

}  // namespace

UndoRedoManager::UndoRedoManager()
    : undoRedoData(std::make_shared<quarn::modelgui::undoRedoData>()) {
    undoRedoData->Record(std::make_shared<Model>(), nullptr);
}

UndoRedoManager::~UndoRedoManager() = default;

void UndoRedoManager::SetBaseline(const std::shared_ptr<Model>& model) {
    RequireModel(model, "quarn::modelgui::UndoRedoManager::SetBaseline");
    undoRedoData->temporaryDirectory.reset();
    undoRedoData->history.clear();
    undoRedoData->currentIndex = 0;
    undoRedoData->Record(model, nullptr);
}

void UndoRedoManager::ModelChanged(const std::shared_ptr<Model>& model,
                                   const std::shared_ptr<ModelState>& state) {
    RequireModel(model, "quarn::modelgui::UndoRedoManager::ModelChanged");
    undoRedoData->Record(model, state);
}

bool UndoRedoManager::CanUndo() const {
    return undoRedoData->currentIndex > 0;
}

bool UndoRedoManager::CanRedo() const {
    // Written without "size - 1" so that a history emptied by a failed SetBaseline answers false.
    return undoRedoData->currentIndex + 1 < undoRedoData->history.size();
}

void UndoRedoManager::Undo(std::shared_ptr<Model>& model, std::shared_ptr<ModelState>& state) {
    if (!CanUndo()) return;
    // The state of the step being undone describes the edit the host is taking back.
    state = undoRedoData->history[undoRedoData->currentIndex].state;
    --undoRedoData->currentIndex;
    model = undoRedoData->OpenCurrent();
}

void UndoRedoManager::Redo(std::shared_ptr<Model>& model, std::shared_ptr<ModelState>& state) {
    if (!CanRedo()) return;
    ++undoRedoData->currentIndex;
    model = undoRedoData->OpenCurrent();
    state = undoRedoData->history[undoRedoData->currentIndex].state;
}

}  // namespace quarn::modelgui
