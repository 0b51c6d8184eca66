#pragma once

namespace ZML {

// A part's place inside its parent, in pixels.
struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Rect&) const = default;
};

// Which edges of its parent a part keeps its distance to when the parent is resized (LockSet).
// A part locked left and right stretches with its parent; locked right only, it moves with the
// right edge.
enum Lock : unsigned {
    LockNone = 0,
    LockLeft = 1,
    LockTop = 2,
    LockRight = 4,
    LockBottom = 8,
    LockHorizontal = LockLeft | LockRight,
    LockVertical = LockTop | LockBottom,
    LockAll = LockHorizontal | LockVertical,
};

// Where a part's title stands, as the keys of a numeric keypad around the part: 7 above at the
// left, 8 above centred, 9 above at the right, 4 at the left, 6 at the right, 1, 2 and 3 below,
// 5 inside the part (buttons, group frames). The title offset is the gap in pixels between the
// title and the part (for 7, 8 and 9 the distance of the title's baseline above the part's top).
enum TitleWhere : int {
    TitleBelowLeft = 1,
    TitleBelow = 2,
    TitleBelowRight = 3,
    TitleLeft = 4,
    TitleInside = 5,
    TitleRight = 6,
    TitleAboveLeft = 7,
    TitleAbove = 8,
    TitleAboveRight = 9,
};

// What changed on a part; a backend peer refreshes only that aspect.
enum class PartChange {
    All,
    Title,
    Geometry,
    Enabled,
    Visible,
    Info,
    Lock,
    Properties,
    Value,
    Children,
    Content,
};

// Keyboard modifiers held during a mouse or key event.
enum Modifier : unsigned {
    ModNone = 0,
    ModShift = 1,
    ModControl = 2,
    ModAlt = 4,
};

enum class MouseButton { None, Left, Right, Middle };

}  // namespace ZML
