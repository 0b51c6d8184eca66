#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZML/Event.h"
#include "ZML/PartPeer.h"
#include "ZML/PartPropertyList.h"
#include "ZML/PartTypes.h"

namespace ZML {

struct partState;

// The base of every toolkit part: a retained object that holds its whole state (name, title,
// geometry, enabled and visible flags, lock, tool tip, properties, handlers, children) and works
// without any backend. Parts are always held by std::shared_ptr (make them with
// std::make_shared); a parent owns its children, a child knows its parent weakly.
// Everything here belongs to the user-interface thread.
class Part : public std::enable_shared_from_this<Part> {
public:
    // `name` identifies the part inside its frame (Find); it may be empty for anonymous parts.
    explicit Part(std::string name = {});
    virtual ~Part();
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;

    // The kind of part as written in dialog scripts ("label", "button", "group", ...).
    virtual std::string Kind() const;
    const std::string& Name() const;

    void TitleSet(const std::wstring& title);
    const std::wstring& Title() const;
    void TitleOffsetSet(int offset);
    int TitleOffset() const;
    // `where` is one of the TitleWhere codes; other values are refused with an exception.
    void TitleWhereSet(int where);
    int TitleWhere() const;

    // The tool tip.
    void InfoSet(const std::wstring& info);
    const std::wstring& Info() const;

    // Width and height must not be negative.
    void GeometrySet(int x, int y, int width, int height);
    Rect Geometry() const;

    void Enable();
    void Disable();
    void EnableSet(bool enabled);
    // The part's own flag; IsEffectivelyEnabled also looks at the ancestors.
    bool IsEnabled() const;
    bool IsEffectivelyEnabled() const;
    void Show();
    void Hide();
    bool IsVisible() const;

    // `lock` combines Lock flags.
    void LockSet(unsigned lock);
    unsigned LockFlags() const;
    // Moves or stretches this part, as its lock says, for a parent that changed size from
    // `oldWidth` x `oldHeight` to `newWidth` x `newHeight`; then lays out its own children.
    void ParentResized(int oldWidth, int oldHeight, int newWidth, int newHeight);

    // The part property list. After changing it, call Refresh(PartChange::Properties) when a
    // backend shows the part.
    PartPropertyList& Properties();
    const PartPropertyList& Properties() const;

    // Binds `handler` to the event `eventName`. Handlers of one event run in the order they were
    // bound. The binding lasts as long as the part or until RemoveMessage.
    HandlerId OnMessage(const std::string& eventName, EventHandler handler);
    bool RemoveMessage(HandlerId id);
    bool HasHandler(const std::string& eventName) const;

    // Runs the handlers bound to `eventName` with a copy of `event` whose name is `eventName` and
    // whose source is this part when the event names none. Handlers may bind or remove handlers
    // while running; changes take effect from the next Fire. An exception from a handler stops
    // the dispatch and reaches the caller. Returns true when at least one handler ran.
    bool Fire(const std::string& eventName, const Event& event);
    bool FireMessage(const std::string& eventName);
    // A user's gesture: as Fire, but ignored (false) while the part, or one of its ancestors, is
    // disabled or hidden, as a real click on a greyed-out button would be.
    bool UserEvent(const std::string& eventName, const Event& event = {});

    std::shared_ptr<Part> Parent() const;
    std::vector<std::shared_ptr<Part>> Children() const;
    // The nearest descendant named `name` (depth first, in the order added), or null.
    std::shared_ptr<Part> FindPart(const std::string& name) const;
    // The descendant named `name` as a `T`; throws QuarnLog::Exception naming the part and this
    // part when there is none or it is of another kind.
    template <class T>
    std::shared_ptr<T> Find(const std::string& name) const {
        auto part = std::dynamic_pointer_cast<T>(FindPart(name));
        if (!part) {
            ThrowNotFound(name, FindPart(name) != nullptr);
        }
        return part;
    }
    // The descendant named `name` as a `T`, or null.
    template <class T>
    std::shared_ptr<T> TryFind(const std::string& name) const {
        return std::dynamic_pointer_cast<T>(FindPart(name));
    }

    // The backend peer that shows this part, or null (headless).
    void PeerSet(std::shared_ptr<PartPeer> peer);
    std::shared_ptr<PartPeer> Peer() const;
    // Tells the peer, if any, that `change` was made.
    void Refresh(PartChange change = PartChange::All);

protected:
    // Makes `child` a child of this part; it must not have another parent already (it is moved
    // otherwise) and must not be this part or one of its ancestors.
    void AddChild(const std::shared_ptr<Part>& child);
    bool RemoveChild(const std::shared_ptr<Part>& child);
    void RemoveAllChildren();

private:
    [[noreturn]] void ThrowNotFound(const std::string& name, bool wrongKind) const;

    std::shared_ptr<partState> partData;
};

}  // namespace ZML
