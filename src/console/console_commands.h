// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What can be commanded in the console's window, as tables: each command has a
// number, which menus, keys and buttons name, and one action. Most items of
// the menus do no more than type a line.

#include <span>
#include <string_view>

namespace vorpen {

/// The numbers of the commands.
enum ConsoleCommand : int {
    COMMAND_ABOUT_KEY = 104,
    COMMAND_PASTE = 106,
    COMMAND_COPY = 107,
    COMMAND_F5 = 116,
    COMMAND_F9 = 120,
    COMMAND_EXIT = 201,
    COMMAND_RESTORE = 202,
    COMMAND_SAVE = 203,
    COMMAND_CHOOSE_FOLDER = 204,
    COMMAND_RESET = 210,
    COMMAND_EXECUTE = 211,
    COMMAND_ABORT = 213,
    COMMAND_RUN_CLIPBOARD = 214,
    COMMAND_CLEAR_CLIPBOARD = 215,
    COMMAND_LAUNCH = 217,
    COMMAND_ZOOM_IN = 220,
    COMMAND_ZOOM_OUT = 221,
    COMMAND_BASIC_HELP = 230,
    COMMAND_ABOUT = 231,
    COMMAND_FUNCTIONS = 232,
    COMMAND_EXEC_BUTTON = 301,
    COMMAND_AGAIN_BUTTON = 304,
};

enum class CommandAction {
    nothing,
    typeText,       ///< types `text` and a carriage return
    paste,          ///< the clipboard into the input line
    copy,           ///< the selected lines to the clipboard
    execute,        ///< runs the input line
    runClipboard,   ///< runs the clipboard's text
    execClipboard,  ///< the same if there is one, and back to the input line
    again,          ///< runs the last line again
    clearClipboard,
    abort,  ///< ends what runs
    zoom,   ///< multiplies the font's size by `factor`
    close,
    launch,  ///< opens a second console
    about,
};

/// Eight steps double or halve the size.
inline constexpr double zoomInFactor = 1.09050773266526, zoomOutFactor = 0.9170040432046693;

struct CommandRow {
    int id;
    CommandAction action;
    std::string_view text = {};
    double factor = 1;
};

/// The row of a command; one that does nothing for a number that is none.
[[nodiscard]] const CommandRow& commandRow(int id);
[[nodiscard]] std::span<const CommandRow> commandRows();

/// An item of a menu. A row of blanks in an item separates its name from the
/// key that does the same, "&" stands before the letter that chooses it.
struct MenuRow {
    std::string_view menu;
    std::string_view item;
    int id;
};

/// The menus in order.
[[nodiscard]] std::span<const MenuRow> consoleMenu();

}  // namespace vorpen
