#include "ZMLQt/QtClipboardBackend.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QThread>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>

#include "QuarnLog/Exception.h"
#include "qtxt/Text.h"

namespace ZML::Qt6 {

struct qtClipboardData {
    std::mutex lock;  // guards the fields below
    std::map<std::wstring, quarn::os::ClipboardFormat> ids;
    std::map<quarn::os::ClipboardFormat, std::string> mimeTypes;
    // Held from Open to Close, so that the threads of this process take turns.
    std::timed_mutex session;
    bool open = false;
    std::thread::id owner;
    // The contents being written in this session, handed to the desktop at Close.
    std::unique_ptr<QMimeData> pending;
};

namespace {

// Runs `work` on the application's thread, where QClipboard lives, and waits for it.
template <class Work>
void OnGuiThread(Work&& work) {
    auto* application = QGuiApplication::instance();
    if (!application) {
        QUARN_THROW("The desktop clipboard needs a QGuiApplication.");
    }
    if (QThread::currentThread() == application->thread()) {
        work();
        return;
    }
    QMetaObject::invokeMethod(application, std::forward<Work>(work),
                              ::Qt::BlockingQueuedConnection);
}

std::unique_ptr<QMimeData> CopyOf(const QMimeData* source) {
    auto copy = std::make_unique<QMimeData>();
    if (source) {
        for (const QString& format : source->formats()) {
            copy->setData(format, source->data(format));
        }
    }
    return copy;
}

}  // namespace

QtClipboardBackend::QtClipboardBackend() : qtClipboardRecord(std::make_shared<qtClipboardData>()) {}

QtClipboardBackend::~QtClipboardBackend() = default;

std::string QtClipboardBackend::MimeType(const std::wstring& formatName) {
    return "application/x-lattix-" + qtxt::DefaultWideToUTF8(formatName);
}

quarn::os::ClipboardFormat QtClipboardBackend::RegisterFormat(const std::wstring& name) {
    if (name.empty()) {
        QUARN_THROW("A clipboard format needs a name.");
    }
    auto& data = *qtClipboardRecord;
    std::lock_guard<std::mutex> guard(data.lock);
    auto found = data.ids.find(name);
    if (found != data.ids.end()) {
        return found->second;
    }
    const auto id = static_cast<quarn::os::ClipboardFormat>(data.ids.size() + 1);
    data.ids.emplace(name, id);
    data.mimeTypes.emplace(id, MimeType(name));
    return id;
}

void QtClipboardBackend::Open() {
    auto& data = *qtClipboardRecord;
    {
        std::lock_guard<std::mutex> guard(data.lock);
        if (data.open && data.owner == std::this_thread::get_id()) {
            QUARN_THROW("The clipboard is open already in this thread; close it first.");
        }
    }
    if (!data.session.try_lock_for(std::chrono::seconds(5))) {
        QUARN_THROW("The clipboard stayed open in another thread for more than 5 seconds.");
    }
    std::lock_guard<std::mutex> guard(data.lock);
    data.open = true;
    data.owner = std::this_thread::get_id();
    data.pending.reset();
}

void QtClipboardBackend::Empty() {
    auto& data = *qtClipboardRecord;
    std::lock_guard<std::mutex> guard(data.lock);
    if (!data.open) {
        QUARN_THROW("EmptyClipboard needs an open clipboard.");
    }
    data.pending = std::make_unique<QMimeData>();
}

void QtClipboardBackend::SetData(ClipboardFormat format, std::span<const std::uint8_t> bytes) {
    auto& data = *qtClipboardRecord;
    std::unique_lock<std::mutex> guard(data.lock);
    if (!data.open) {
        QUARN_THROW("SetClipboardData needs an open clipboard.");
    }
    auto type = data.mimeTypes.find(format);
    if (type == data.mimeTypes.end()) {
        QUARN_THROW("Clipboard format " + std::to_string(format) + " was never registered.");
    }
    if (!data.pending) {
        // Without Empty, the other formats on the clipboard stay.
        guard.unlock();
        std::unique_ptr<QMimeData> current;
        OnGuiThread([&current] { current = CopyOf(QGuiApplication::clipboard()->mimeData()); });
        guard.lock();
        data.pending = std::move(current);
    }
    data.pending->setData(QString::fromStdString(type->second),
                          QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                     static_cast<qsizetype>(bytes.size())));
}

std::optional<std::vector<std::uint8_t>> QtClipboardBackend::GetData(ClipboardFormat format) {
    auto& data = *qtClipboardRecord;
    std::unique_lock<std::mutex> guard(data.lock);
    if (!data.open) {
        QUARN_THROW("GetClipboardData needs an open clipboard.");
    }
    auto type = data.mimeTypes.find(format);
    if (type == data.mimeTypes.end()) {
        QUARN_THROW("Clipboard format " + std::to_string(format) + " was never registered.");
    }
    const QString mime = QString::fromStdString(type->second);
    std::optional<QByteArray> bytes;
    if (data.pending) {
        if (data.pending->hasFormat(mime)) {
            bytes = data.pending->data(mime);
        }
    } else {
        guard.unlock();
        OnGuiThread([&bytes, &mime] {
            const QMimeData* current = QGuiApplication::clipboard()->mimeData();
            if (current && current->hasFormat(mime)) {
                bytes = current->data(mime);
            }
        });
    }
    if (!bytes) {
        return std::nullopt;
    }
    return std::vector<std::uint8_t>(bytes->begin(), bytes->end());
}

void QtClipboardBackend::Close() {
    auto& data = *qtClipboardRecord;
    std::unique_ptr<QMimeData> pending;
    {
        std::lock_guard<std::mutex> guard(data.lock);
        if (!data.open) {
            return;
        }
        data.open = false;
        data.owner = {};
        pending = std::move(data.pending);
    }
    if (pending) {
        // The clipboard takes ownership of the MIME data.
        OnGuiThread([&pending] { QGuiApplication::clipboard()->setMimeData(pending.release()); });
    }
    data.session.unlock();
}

}  // namespace ZML::Qt6
