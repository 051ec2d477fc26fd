// The script that a scripted hand plays: one command a line, read by people first. Used by demo-drive.
//
//     # comment
//     await "Title" [within 20]        a window whose title contains the text
//     move 640 400 over 0.8            along a curve, slow at both ends
//     click [left|middle|right]        doubleclick, press and release take the same buttons
//     drag 900 400 over 1.0            press here, move there, release
//     circle 640 400 120 60 turns 2 over 1.5
//     scroll -5 over 1.0               wheel notches, negative is down
//     type "text" [over 1.2]           "\"", "\\" and "\n" are understood
//     key ctrl+s
//     wait 0.5
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace morvelin {

/// A place on the screen, in pixels.
struct Spot {
    double x = 0;
    double y = 0;
};

/// X11's own numbers of the buttons.
enum class Button { left = 1, middle = 2, right = 3 };

namespace Step {

struct Await {
    std::string title;
    double within = 20;
};
struct Move {
    Spot to;
    double over = 0.5;
};
struct Click {
    Button button = Button::left;
};
struct DoubleClick {
    Button button = Button::left;
};
struct Press {
    Button button = Button::left;
};
struct Release {
    Button button = Button::left;
};
struct Drag {
    Spot to;
    double over = 0.5;
};
struct Circle {
    Spot centre;
    Spot radii;
    double turns = 1;
    double over = 1;
};
struct Scroll {
    int notches = 0;
    double over = 0.5;
};
struct Type {
    std::u32string text;
    double over = 0;
};
struct Key {
    std::vector<std::string> names;
};
struct Wait {
    double seconds = 0;
};

} // namespace Step

using StoryStep = std::variant<Step::Await, Step::Move, Step::Click, Step::DoubleClick, Step::Press, Step::Release,
                               Step::Drag, Step::Circle, Step::Scroll, Step::Type, Step::Key, Step::Wait>;

/// Reads a whole script; the error names the line and what is wrong with it.
std::expected<std::vector<StoryStep>, std::string> parseStory(std::string_view script);

} // namespace morvelin
