// SPDX-License-Identifier: GPL-3.0-or-later

// VorpenHelp: the program that knows the help texts.
//
//     VorpenHelp NAME        writes the text on a name
//     VorpenHelp NAME ??     writes the longer text
//     VorpenHelp --topics    prints the names that there are texts for
//
// The answer goes into "vorpenhelp.txt" in the working directory, in the
// marked-up text of the console, in lines that need no wrapping. A name
// without a text leaves no file, unless there are names that look like it.
// The texts are the files in the folder "help"; docs/help.md has their form.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "helper_files.h"

namespace vorpen::helper {
namespace {

constexpr const char* resultFile = "vorpenhelp.txt";

/// A console of 80 columns shows a line of this width as it stands, whatever
/// marks it needs.
constexpr std::size_t lineWidth = 74;

/// One topic: the lines of each of its sections.
struct Topic {
    std::string name;
    std::map<std::string, std::vector<std::string>> sections;

    [[nodiscard]] const std::vector<std::string>& lines(const std::string& section) const {
        static const std::vector<std::string> none;
        const auto place = sections.find(section);
        return place == sections.end() ? none : place->second;
    }
    [[nodiscard]] std::string line(const std::string& section) const {
        const auto& all = lines(section);
        return all.empty() ? std::string() : all.front();
    }
};

/// A section begins with its name and a colon at the start of a line; what is
/// indented below belongs to it.
Topic readTopic(const std::filesystem::path& file) {
    Topic topic;
    std::vector<std::string>* section = nullptr;
    for (const std::string& line : readLines(file)) {
        if (line.starts_with('#')) continue;
        const bool belongs = line.empty() || line[0] == ' ' || line[0] == '\t';
        if (!belongs) {
            const std::size_t colon = line.find(':');
            section = &topic.sections[line.substr(0, colon)];
            const std::string rest = colon == line.npos ? "" : trimmed(line.substr(colon + 1));
            if (!rest.empty()) section->push_back(rest);
        } else if (section) {
            section->push_back(line.starts_with("  ") ? line.substr(2) : trimmed(line));
        }
    }
    for (auto& [name, lines] : topic.sections)
        while (!lines.empty() && lines.back().empty()) lines.pop_back();
    return topic;
}

/// The topics in a folder. The file of a name mostly bears it; only for signs,
/// second names and slips of the keyboard all files have to be looked at.
class Library {
public:
    explicit Library(std::filesystem::path folder) : folder_(std::move(folder)) {}

    [[nodiscard]] std::optional<Topic> find(const std::string& name) {
        std::filesystem::path file = fileCalled(name);
        if (file.empty()) {
            const auto place = index().find(name);
            if (place == index().end()) return std::nullopt;
            file = place->second;
        }
        Topic topic = readTopic(file);
        topic.name = name;
        return topic;
    }

    /// The note on all functions of a group.
    [[nodiscard]] Topic note(const std::string& group) const {
        return readTopic(folder_ / "groups" / (group + ".txt"));
    }

    [[nodiscard]] std::vector<std::string> names() {
        std::vector<std::string> all;
        for (const auto& [name, file] : index()) all.push_back(name);
        return all;
    }

    /// Names that a slip of the keyboard may have missed.
    [[nodiscard]] std::vector<std::string> similar(const std::string& name) {
        std::vector<std::string> found;
        if (name.size() < 3 || name.size() > longestSlip) return found;
        const std::string lower = lowerCase(name);
        const int allowed = name.size() < 6 ? 1 : 2;
        for (const auto& [other, file] : index())
            if (other.size() > 1 && spellingDistance(lower, lowerCase(other)) <= allowed)
                found.push_back(other);
        return found;
    }

private:
    using Index = std::map<std::string, std::filesystem::path>;

    /// Names are shorter; the comparison takes the product of both lengths.
    static constexpr std::size_t longestSlip = 100;

    /// The names in the first line of a file: the rest need not be read.
    static std::vector<std::string> namesIn(const std::filesystem::path& file) {
        constexpr std::string_view start = "topic:";
        std::ifstream in(file);
        std::string line;
        while (std::getline(in, line))
            if (line.starts_with(start)) return words(std::string_view(line).substr(start.size()));
        return {};
    }

    [[nodiscard]] std::filesystem::path fileCalled(const std::string& name) const {
        const bool isPlain = std::ranges::all_of(
            name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; });
        if (!isPlain || name.size() > longestSlip) return {};
        for (const char* section : {"functions", "keywords", "topics", "constants"}) {
            const std::filesystem::path file = folder_ / section / (name + ".txt");
            if (std::ranges::count(namesIn(file), name) > 0) return file;
        }
        return {};
    }

    const Index& index() {
        if (files_.empty())
            for (const auto& file : textFilesIn(folder_))
                for (const std::string& name : namesIn(file)) files_.emplace(name, file);
        return files_;
    }

    std::filesystem::path folder_;
    Index files_;
};

// ---- the text

/// Builds the answer line by line.
class Page {
public:
    [[nodiscard]] const std::string& text() const { return text_; }

    /// A line that holds marks of its own.
    void marked(const std::string& line) { (text_ += line) += '\n'; }

    /// A line as it stands, with its braces.
    void plain(const std::string& line) {
        const bool holdsBrace = line.find_first_of("{}") != line.npos;
        marked(holdsBrace ? "{:" + line : line);
    }

    void blank() {
        if (!text_.empty() && !text_.ends_with("\n\n")) text_ += '\n';
    }

    /// Words set into lines of the width, all but the first indented further.
    void wrapped(const std::string& indent, const std::string& hanging, const std::string& paragraph) {
        std::string line = indent;
        bool isEmpty = true;
        for (const std::string& word : words(paragraph)) {
            if (!isEmpty && line.size() + 1 + word.size() > lineWidth) {
                plain(line);
                line = hanging;
                isEmpty = true;
            }
            if (!isEmpty) line += ' ';
            line += word;
            isEmpty = false;
        }
        if (!isEmpty) plain(line);
    }

    /// Paragraphs, with an empty line between them; a line that is indented
    /// further stands as it is.
    void paragraphs(const std::vector<std::string>& lines, const std::string& indent = "") {
        std::string paragraph;
        const auto finish = [&] {
            if (!paragraph.empty()) wrapped(indent, indent, paragraph);
            paragraph.clear();
        };
        for (const std::string& line : lines) {
            if (line.empty()) {
                finish();
                blank();
            } else if (line[0] == ' ') {
                finish();
                plain(indent + line);
            } else {
                paragraph += (paragraph.empty() ? "" : " ") + line;
            }
        }
        finish();
    }

private:
    std::string text_;
};

/// A section whose lines are items of their own, "name - what it is".
void writeItems(Page& page, const std::string& heading, const std::vector<std::string>& lines) {
    if (lines.empty()) return;
    page.blank();
    page.marked("{*" + heading + "}");
    for (const std::string& line : lines) page.wrapped("  ", "      ", line);
}

/// Typed lines in green, so that a click types them; what they show below.
void writeExample(Page& page, const std::vector<std::string>& lines) {
    if (lines.empty()) return;
    page.blank();
    page.marked("{*Example}");
    for (const std::string& line : lines)
        line.starts_with("> ") ? page.marked("{g:" + line.substr(2)) : page.plain("    " + line);
}

/// Names to click on. A console counts the marks when it wraps a line.
void writeSeeAlso(Page& page, const std::vector<std::string>& names) {
    if (names.empty()) return;
    page.blank();
    std::string line = "See also";
    for (const std::string& name : names) {
        const std::string link = " {=" + name + "}";
        if (line.size() + link.size() > lineWidth) {
            page.marked(line);
            line = "        ";
        }
        line += link;
    }
    page.marked(line);
}

std::string pageOf(const Topic& topic, const Library& library, bool detailed) {
    Page page;
    const std::string title = topic.line("title");
    page.marked("{*" + topic.name + "}  " + title);
    for (const std::string& form : topic.lines("forms")) page.plain("  " + form);
    page.blank();
    page.paragraphs(topic.lines("about"));
    writeItems(page, "Arguments", topic.lines("arguments"));
    writeItems(page, "Result", topic.lines("result"));
    writeItems(page, "Fails", topic.lines("fails"));
    if (detailed) {
        page.blank();
        page.paragraphs(topic.lines("more"));
        if (const std::string group = topic.line("group"); !group.empty()) {
            page.blank();
            page.paragraphs(library.note(group).lines("about"));
        }
    }
    writeExample(page, topic.lines("example"));
    writeSeeAlso(page, words(topic.line("see")));
    return page.text();
}

std::string suggestions(const std::vector<std::string>& names) {
    std::string text = "Names that look like it:";
    for (const std::string& name : names) text += " {=" + name + "}";
    return text + "\n";
}

Status answer(const std::string& name, bool detailed) {
    const std::filesystem::path folder = findDataFolder("help");
    if (folder.empty()) return failed;
    Library library(folder);
    std::string text;
    if (const auto topic = library.find(name))
        text = pageOf(*topic, library, detailed);
    else if (const auto names = library.similar(name); !names.empty())
        text = suggestions(names);
    else
        return answered;
    return writeAnswer(resultFile, text) ? answered : failed;
}

Status printTopics() {
    const std::filesystem::path folder = findDataFolder("help");
    if (folder.empty()) return failed;
    for (const std::string& name : Library(folder).names()) std::printf("%s\n", name.c_str());
    return answered;
}

}  // namespace
}  // namespace vorpen::helper

int main(int count, char** arguments) {
    using namespace vorpen::helper;
    if (count < 2 || count > 3) return wrongArguments;
    const std::string name = arguments[1];
    if (name == "--topics") return printTopics();
    return answer(name, count == 3 && std::string_view(arguments[2]) == "\?\?");
}
