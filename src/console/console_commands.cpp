// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_commands.h"

#include <algorithm>

namespace vorpen {
namespace {

// clang-format off
constexpr CommandRow rows[] = {
    {COMMAND_ABOUT_KEY,       CommandAction::about},
    {COMMAND_PASTE,           CommandAction::paste},
    {COMMAND_COPY,            CommandAction::copy},
    {COMMAND_F5,              CommandAction::nothing},
    {COMMAND_F9,              CommandAction::runClipboard},
    {COMMAND_EXIT,            CommandAction::close},
    {COMMAND_RESTORE,         CommandAction::typeText, "cd ?"},
    {COMMAND_SAVE,            CommandAction::typeText, "cd ?"},
    {COMMAND_CHOOSE_FOLDER,   CommandAction::typeText, "cd ?"},
    {COMMAND_RESET,           CommandAction::typeText, "clear reset"},
    {COMMAND_EXECUTE,         CommandAction::execute},
    {COMMAND_ABORT,           CommandAction::abort},
    {COMMAND_RUN_CLIPBOARD,   CommandAction::runClipboard},
    {COMMAND_CLEAR_CLIPBOARD, CommandAction::clearClipboard},
    {COMMAND_LAUNCH,          CommandAction::launch},
    {COMMAND_ZOOM_IN,         CommandAction::zoom, {}, zoomInFactor},
    {COMMAND_ZOOM_OUT,        CommandAction::zoom, {}, zoomOutFactor},
    {COMMAND_BASIC_HELP,      CommandAction::typeText, "?"},
    {COMMAND_ABOUT,           CommandAction::about},
    {COMMAND_FUNCTIONS,       CommandAction::typeText, "?func a"},
    {COMMAND_EXEC_BUTTON,     CommandAction::execClipboard},
    {COMMAND_AGAIN_BUTTON,    CommandAction::again},
};

constexpr MenuRow menuRows[] = {
    {"&File", "&Restore",                              COMMAND_RESTORE},
    {"&File", "&Save",                                 COMMAND_SAVE},
    {"&File", "&cd ?",                                 COMMAND_CHOOSE_FOLDER},
    {"&File", "E&xit                         Alt-F4",  COMMAND_EXIT},
    {"&Run",  "&Reset",                                COMMAND_RESET},
    {"&Run",  "&E&xecute                     <ret>",   COMMAND_EXECUTE},
    {"&Run",  "&Abort",                                COMMAND_ABORT},
    {"&Run",  "&Run clipboard        F9",              COMMAND_RUN_CLIPBOARD},
    {"&Run",  "&Clear clipboard",                      COMMAND_CLEAR_CLIPBOARD},
    {"&Run",  "&Launch vorpen",                        COMMAND_LAUNCH},
    {"&View", "Zoom &in      <<",                      COMMAND_ZOOM_IN},
    {"&View", "Zoom &out     >>",                      COMMAND_ZOOM_OUT},
    {"&Help", "&Basic help   ??",                      COMMAND_BASIC_HELP},
    {"&Help", "&Functions    ?func",                   COMMAND_FUNCTIONS},
    {"&Help", "&About vorpen",                         COMMAND_ABOUT},
};
// clang-format on

constexpr CommandRow noCommand{0, CommandAction::nothing};

}  // namespace

const CommandRow& commandRow(int id) {
    const auto row = std::ranges::find(rows, id, &CommandRow::id);
    return row == std::end(rows) ? noCommand : *row;
}

std::span<const CommandRow> commandRows() { return rows; }

std::span<const MenuRow> consoleMenu() { return menuRows; }

}  // namespace vorpen
