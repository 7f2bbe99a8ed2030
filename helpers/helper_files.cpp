// SPDX-License-Identifier: GPL-3.0-or-later
#include "helper_files.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

namespace vorpen::helper {
namespace {

namespace fs = std::filesystem;

fs::path ownFolder() {
    std::error_code fault;
    const fs::path own = fs::read_symlink("/proc/self/exe", fault);
    return fault ? fs::path() : own.parent_path();
}

}  // namespace

fs::path findDataFolder(const std::string& name) {
    const fs::path own = ownFolder();
    const fs::path places[] = {own / name, own.parent_path() / "share/vorpen" / name,
                               own.parent_path().parent_path() / "share/vorpen" / name};
    std::error_code fault;
    for (const auto& place : places)
        if (fs::is_directory(place, fault)) return place;
    return {};
}

std::vector<fs::path> textFilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code fault;
    for (auto entry = fs::recursive_directory_iterator(folder, fault);
         !fault && entry != fs::recursive_directory_iterator(); entry.increment(fault))
        if (entry->path().extension() == ".txt") files.push_back(entry->path());
    std::ranges::sort(files);
    return files;
}

std::vector<std::string> readLines(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        if (line.ends_with('\r')) line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

bool writeAnswer(const std::string& fileName, const std::string& text) {
    std::ofstream out(fileName, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    return !out.fail();
}

std::string trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == text.npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

std::vector<std::string> words(std::string_view text) {
    std::istringstream in{std::string(text)};
    std::vector<std::string> found;
    for (std::string word; in >> word;) found.push_back(word);
    return found;
}

int spellingDistance(std::string_view a, std::string_view b) {
    const std::size_t n = a.size(), m = b.size();
    std::vector<std::vector<int>> d(n + 1, std::vector<int>(m + 1));
    for (std::size_t i = 0; i <= n; ++i) d[i][0] = static_cast<int>(i);
    for (std::size_t j = 0; j <= m; ++j) d[0][j] = static_cast<int>(j);
    for (std::size_t i = 1; i <= n; ++i)
        for (std::size_t j = 1; j <= m; ++j) {
            const int changed = a[i - 1] != b[j - 1];
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + changed});
            const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (exchanged) d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    return d[n][m];
}

}  // namespace vorpen::helper
