#include "ZML/Part.h"

#include <algorithm>
#include <cassert>
#include <map>

#include "QuarnLog/Exception.h"

namespace ZML {

namespace {

struct BoundHandler {
    HandlerId id = 0;
    EventHandler handler;
};

}  // namespace

struct partState {
    std::string name;
    std::wstring title;
    int titleOffset = 0;
    int titleWhere = TitleLeft;
    std::wstring info;
    Rect geometry;
    bool enabled = true;
    bool visible = true;
    unsigned lock = LockNone;
    PartPropertyList properties;
    std::map<std::string, std::vector<BoundHandler>> handlers;
    HandlerId nextHandler = 1;
    std::weak_ptr<Part> parent;
    std::vector<std::shared_ptr<Part>> children;
    std::shared_ptr<PartPeer> peer;
};

Part::Part(std::string name) : partData(std::make_shared<partState>()) {
    partData->name = std::move(name);
}

Part::~Part() {
    // Children outlive their parent only when someone else holds them; they must not point back.
    for (auto& child : partData->children) {
        child->partData->parent.reset();
    }
}

std::string Part::Kind() const {
    return "part";
}
const std::string& Part::Name() const {
    return partData->name;
}

void Part::TitleSet(const std::wstring& title) {
    partData->title = title;
    Refresh(PartChange::Title);
}
const std::wstring& Part::Title() const {
    return partData->title;
}

void Part::TitleOffsetSet(int offset) {
    partData->titleOffset = offset;
    Refresh(PartChange::Title);
}
int Part::TitleOffset() const {
    return partData->titleOffset;
}

void Part::TitleWhereSet(int where) {
    if (where < TitleBelowLeft || where > TitleAboveRight) {
        QUARN_THROW("Title position " + std::to_string(where) + " of part \"" + partData->name +
                    "\" is not a position code from 1 to 9.");
    }
    partData->titleWhere = where;
    Refresh(PartChange::Title);
}
int Part::TitleWhere() const {
    return partData->titleWhere;
}

void Part::InfoSet(const std::wstring& info) {
    partData->info = info;
    Refresh(PartChange::Info);
}
const std::wstring& Part::Info() const {
    return partData->info;
}

void Part::GeometrySet(int x, int y, int width, int height) {
    if (width < 0 || height < 0) {
        QUARN_THROW("Part \"" + partData->name + "\" cannot have the size " +
                    std::to_string(width) + " x " + std::to_string(height) + ".");
    }
    Rect old = partData->geometry;
    partData->geometry = Rect{x, y, width, height};
    Refresh(PartChange::Geometry);
    if (old.width != width || old.height != height) {
        for (const auto& child : Children()) {
            child->ParentResized(old.width, old.height, width, height);
        }
    }
}
Rect Part::Geometry() const {
    return partData->geometry;
}

void Part::Enable() {
    EnableSet(true);
}
void Part::Disable() {
    EnableSet(false);
}
void Part::EnableSet(bool enabled) {
    if (partData->enabled != enabled) {
        partData->enabled = enabled;
        Refresh(PartChange::Enabled);
    }
}
bool Part::IsEnabled() const {
    return partData->enabled;
}
bool Part::IsEffectivelyEnabled() const {
    if (!partData->enabled || !partData->visible) {
        return false;
    }
    for (auto part = Parent(); part; part = part->Parent()) {
        if (!part->partData->enabled || !part->partData->visible) {
            return false;
        }
    }
    return true;
}

void Part::Show() {
    if (!partData->visible) {
        partData->visible = true;
        Refresh(PartChange::Visible);
    }
}
void Part::Hide() {
    if (partData->visible) {
        partData->visible = false;
        Refresh(PartChange::Visible);
    }
}
bool Part::IsVisible() const {
    return partData->visible;
}

void Part::LockSet(unsigned lock) {
    partData->lock = lock & LockAll;
    Refresh(PartChange::Lock);
}
unsigned Part::LockFlags() const {
    return partData->lock;
}

void Part::ParentResized(int oldWidth, int oldHeight, int newWidth, int newHeight) {
    Rect r = partData->geometry;
    const unsigned lock = partData->lock;
    const int dw = newWidth - oldWidth;
    const int dh = newHeight - oldHeight;
    if ((lock & LockHorizontal) == LockHorizontal) {
        r.width = std::max(0, r.width + dw);
    } else if (lock & LockRight) {
        r.x += dw;
    }
    if ((lock & LockVertical) == LockVertical) {
        r.height = std::max(0, r.height + dh);
    } else if (lock & LockBottom) {
        r.y += dh;
    }
    if (r != partData->geometry) {
        GeometrySet(r.x, r.y, r.width, r.height);
    }
}

PartPropertyList& Part::Properties() {
    return partData->properties;
}
const PartPropertyList& Part::Properties() const {
    return partData->properties;
}

HandlerId Part::OnMessage(const std::string& eventName, EventHandler handler) {
    assert(handler);
    HandlerId id = partData->nextHandler++;
    partData->handlers[eventName].push_back(BoundHandler{id, std::move(handler)});
    return id;
}

bool Part::RemoveMessage(HandlerId id) {
    for (auto& [name, list] : partData->handlers) {
        auto it = std::find_if(list.begin(), list.end(),
                               [id](const BoundHandler& bound) { return bound.id == id; });
        if (it != list.end()) {
            list.erase(it);
            return true;
        }
    }
    return false;
}

bool Part::HasHandler(const std::string& eventName) const {
    auto it = partData->handlers.find(eventName);
    return it != partData->handlers.end() && !it->second.empty();
}

bool Part::Fire(const std::string& eventName, const Event& event) {
    auto it = partData->handlers.find(eventName);
    if (it == partData->handlers.end() || it->second.empty()) {
        return false;
    }
    // A copy, so that handlers may bind and unbind while we run them, and a hold on the part
    // (and so on its record), so that a handler that drops the last other owner does not pull the
    // record from under the loop.
    std::vector<BoundHandler> handlers = it->second;
    auto self = weak_from_this().lock();
    auto keep = partData;
    Event delivered = event;
    delivered.name = eventName;
    if (!delivered.source) {
        delivered.source = self;
    }
    for (const auto& bound : handlers) {
        bound.handler(delivered);
    }
    return true;
}

bool Part::FireMessage(const std::string& eventName) {
    return Fire(eventName, Event{});
}

bool Part::UserEvent(const std::string& eventName, const Event& event) {
    if (!IsEffectivelyEnabled()) {
        return false;
    }
    return Fire(eventName, event);
}

std::shared_ptr<Part> Part::Parent() const {
    return partData->parent.lock();
}

std::vector<std::shared_ptr<Part>> Part::Children() const {
    return partData->children;
}

std::shared_ptr<Part> Part::FindPart(const std::string& name) const {
    for (const auto& child : partData->children) {
        if (child->Name() == name) {
            return child;
        }
        if (auto found = child->FindPart(name)) {
            return found;
        }
    }
    return nullptr;
}

void Part::ThrowNotFound(const std::string& name, bool wrongKind) const {
    std::string where = partData->name.empty() ? Kind() : "\"" + partData->name + "\"";
    if (wrongKind) {
        QUARN_THROW("Part \"" + name + "\" of " + where + " is a " + FindPart(name)->Kind() +
                    ", not the kind of part asked for.");
    }
    QUARN_THROW("No part named \"" + name + "\" in " + where + ".");
}

void Part::PeerSet(std::shared_ptr<PartPeer> peer) {
    partData->peer = std::move(peer);
    Refresh(PartChange::All);
}
std::shared_ptr<PartPeer> Part::Peer() const {
    return partData->peer;
}

void Part::Refresh(PartChange change) {
    if (auto peer = partData->peer) {
        peer->Refresh(*this, change);
    }
}

void Part::AddChild(const std::shared_ptr<Part>& child) {
    if (!child) {
        QUARN_THROW("Cannot add an empty part to \"" + partData->name + "\".");
    }
    for (const Part* p = this; p; p = p->Parent().get()) {
        if (p == child.get()) {
            QUARN_THROW("Part \"" + child->Name() +
                        "\" cannot be added to itself or below itself.");
        }
    }
    if (auto old = child->Parent()) {
        old->RemoveChild(child);
    }
    child->partData->parent = weak_from_this();
    partData->children.push_back(child);
    Refresh(PartChange::Children);
}

bool Part::RemoveChild(const std::shared_ptr<Part>& child) {
    auto& children = partData->children;
    auto it = std::find(children.begin(), children.end(), child);
    if (it == children.end()) {
        return false;
    }
    (*it)->partData->parent.reset();
    children.erase(it);
    Refresh(PartChange::Children);
    return true;
}

void Part::RemoveAllChildren() {
    for (auto& child : partData->children) {
        child->partData->parent.reset();
    }
    partData->children.clear();
    Refresh(PartChange::Children);
}

}  // namespace ZML
