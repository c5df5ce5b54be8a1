#pragma once

#include <span>
#include <string>

namespace rq::viewport
{
/// What a key, or a button, can ask the viewport to do.
enum class Command
{
    FrameSelected,
    FrameAll,
    ViewFront,
    ViewRight,
    ViewTop,
    ToggleWire,
    TogglePoints,
    ToggleNormals,
    ToggleFaces,
    NextShading,
    ToggleBackFaces,
    NextColour,
    SelectPrevious,
    SelectNext,
    SelectNothing,
    TogglePlaying,
    PreviousFrame,
    NextFrame,
    Finer,
    Coarser,
    Reload,
    Screenshot,
    ToggleSidebar,
    ToggleHelp,
    Quit
};

/// A key and what it does.  This table is what the window obeys, what "?" shows and what the manual has.
struct KeyBinding
{
    Command command;
    unsigned character;  ///< what the key types, small letters; 0 for keys that type nothing
    int key;             ///< the key by its place, as the window system names it; 0 for characters
    const char *shown;
    const char *meaning;
};
std::span<const KeyBinding> keyBindings();

/// The binding of a character, or of a key; null when there is none.
const KeyBinding *findCharacter(unsigned character);
const KeyBinding *findKey(int key);

/// The key of a command and what it does, for buttons.
const char *keyOf(Command command);
const char *meaningOf(Command command);

/// What the mouse does; it has no commands of its own.
struct MouseBinding
{
    const char *shown;
    const char *meaning;
};
std::span<const MouseBinding> mouseBindings();

/// Both tables as the manual has them.
std::string keysAsMarkdown();
}  // namespace rq::viewport
