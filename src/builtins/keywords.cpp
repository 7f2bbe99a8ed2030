// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/keywords.h"

#include <algorithm>
#include <array>

namespace vorpen {
namespace {

struct Keyword {
    std::string_view name;
    KeywordCode code;
};

constexpr std::array keywords{
    Keyword{"break", KEY_BREAK},
    Keyword{"clear", KEY_CLEAR},
    Keyword{"const", KEY_CONST},
    Keyword{"continue", KEY_CONTINUE},
    Keyword{"else", KEY_ELSE},
    Keyword{"end", KEY_END},
    Keyword{"for", KEY_FOR},
    Keyword{"funcdec", KEY_FUNCDEC},
    Keyword{"function", KEY_FUNCTION},
    Keyword{"global", KEY_GLOBAL},
    Keyword{"if", KEY_IF},
    Keyword{"persistent", KEY_PERSISTENT},
    Keyword{"return", KEY_RETURN},
    Keyword{"unless", KEY_UNLESS},
    Keyword{"use", KEY_USE},
    Keyword{"while", KEY_WHILE},
};
static_assert(std::ranges::is_sorted(keywords, {}, &Keyword::name));

}  // namespace

KeywordCode keywordCode(std::string_view name) {
    const auto place = std::ranges::lower_bound(keywords, name, {}, &Keyword::name);
    return place != keywords.end() && place->name == name ? place->code : KEY_NONE;
}

std::string listKeywords() {
    std::string names;
    for (const auto& keyword : keywords) (names += keyword.name) += ' ';
    return names;
}

}  // namespace vorpen
