// SPDX-License-Identifier: GPL-3.0-or-later

// lookup: the program that knows physical properties.
//
//     lookup SUBJECT_KEY          iron_density, earth_mass, water_specific_heat
//     lookup SUBJECT_KEY_NUMBER   water_density_50: from a table, at 50 degrees
//     lookup SUBJECT_KEY_table    the table itself, in pairs; also without the
//                                 word when no single value is known
//     lookup SUBJECT_properties   what is known of a subject
//     lookup SET_KEY              a property of all of elements, planets, ...
//     lookup SET_names            the names in a set
//     lookup "formula SUBJECT"    its formula
//
// Blanks in names are written as "_"; capital letters make no difference,
// except that a symbol of an element is written as usual (Fe). The answer goes
// into "property_result.txt" in the working directory: a line with a remark,
// then a number, or "\pairs" and a count and pairs of numbers, or "\table" and
// a count and lines of text. Status 1 tells that the property is not known.
// The data are the files in the folder "properties"; docs/properties.md has
// their form and their sources.

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "helper_files.h"

namespace vorpen::helper {
namespace {

constexpr const char* resultFile = "property_result.txt";
constexpr std::string_view unknown = "-";

/// Other words for the name of a property.
const std::map<std::string, std::string> otherKeys = {
    {"atomic_mass", "mass"},
    {"atomic_number", "number"},
    {"atomic_weight", "mass"},
    {"boiling", "boiling_point"},
    {"conductivity", "thermal_conductivity"},
    {"cp", "specific_heat"},
    {"distance", "semi_major_axis"},
    {"g", "gravity"},
    {"heat_capacity", "specific_heat"},
    {"melting", "melting_point"},
    {"n", "refractive_index"},
    {"orbital_period", "period"},
    {"rotation_period", "rotation"},
    {"semimajor_axis", "semi_major_axis"},
    {"specific_heat_capacity", "specific_heat"},
};

std::string canonicalKey(const std::string& key) {
    const auto place = otherKeys.find(key);
    return place == otherKeys.end() ? key : place->second;
}

std::optional<double> numberIn(std::string_view text) {
    double number = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string numberText(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number, std::chars_format::general, 9).ptr};
}

/// Subjects with the same properties: the elements, the substances, ...
struct DataSet {
    struct Column {
        std::string key, unit;
    };
    std::string name;
    std::vector<Column> columns;
    std::vector<std::vector<std::string>> rows;

    [[nodiscard]] int column(std::string_view key) const {
        const auto place = std::ranges::find(columns, key, &Column::key);
        return place == columns.end() ? -1 : static_cast<int>(place - columns.begin());
    }
    [[nodiscard]] const std::string& cell(const std::vector<std::string>& row, std::string_view key) const {
        static const std::string none(unknown);
        const int at = column(key);
        return at < 0 ? none : row[at];
    }
    [[nodiscard]] std::string remark(std::string_view subject, int at) const {
        return std::string(subject) + " " + columns[at].key + ", " + columns[at].unit;
    }
};

/// A property of one subject that depends on a number.
struct PairTable {
    std::string subject, key, remark;
    std::vector<std::pair<double, double>> pairs;

    /// Between the points of the table on a straight line; nothing outside.
    [[nodiscard]] std::optional<double> at(double x) const {
        for (std::size_t i = 1; i < pairs.size(); ++i) {
            const auto [x0, y0] = pairs[i - 1];
            const auto [x1, y1] = pairs[i];
            if (x >= x0 && x <= x1) return y0 + (y1 - y0) * (x - x0) / (x1 - x0);
        }
        return std::nullopt;
    }
};

/// The words behind a heading such as "columns:".
std::optional<std::string> behindHeading(const std::string& line, std::string_view heading) {
    if (!line.starts_with(heading)) return std::nullopt;
    return trimmed(std::string_view(line).substr(heading.size()));
}

class Database {
public:
    explicit Database(const std::filesystem::path& folder) {
        for (const auto& file : textFilesIn(folder)) read(file);
    }

    /// The text of the result file for a query, or nothing.
    [[nodiscard]] std::optional<std::string> answer(const std::string& query) const {
        for (const std::string_view start : {"formula ", "formula_"})
            if (query.starts_with(start)) return formulaOf(query.substr(start.size()));
        // The longest name that the query begins with is meant: "carbon_dioxide"
        // rather than "carbon".
        for (std::size_t end = query.rfind('_'); end != query.npos && end > 0;
             end = query.rfind('_', end - 1))
            if (auto text = answer(query.substr(0, end), lowerCase(query.substr(end + 1)))) return text;
        return std::nullopt;
    }

private:
    void read(const std::filesystem::path& file) {
        DataSet set;
        set.name = file.stem().string();
        PairTable table;
        for (const std::string& line : readLines(file)) {
            if (line.empty() || line[0] == '#') continue;
            if (const auto columns = behindHeading(line, "columns:"))
                for (const auto& key : words(*columns)) set.columns.push_back({key, ""});
            else if (const auto units = behindHeading(line, "units:"))
                readUnits(set, words(*units));
            else if (const auto what = behindHeading(line, "table:"))
                beginTable(table, *what);
            else if (!table.key.empty())
                readPair(table, words(line));
            else if (auto row = words(line); row.size() == set.columns.size())
                set.rows.push_back(std::move(row));
        }
        if (!table.key.empty())
            tables_.push_back(std::move(table));
        else
            sets_.push_back(std::move(set));
    }

    static void readUnits(DataSet& set, const std::vector<std::string>& units) {
        for (std::size_t i = 0; i < units.size() && i < set.columns.size(); ++i)
            set.columns[i].unit = units[i];
    }

    /// "table: SUBJECT KEY what the two columns are"
    static void beginTable(PairTable& table, const std::string& what) {
        const auto parts = words(what);
        if (parts.size() < 2) return;
        table.subject = parts[0];
        table.key = parts[1];
        table.remark = parts[0] + " " + parts[1];
        const std::size_t meaning = what.find(parts[1]) + parts[1].size();
        table.remark += ": " + trimmed(std::string_view(what).substr(meaning));
    }

    static void readPair(PairTable& table, const std::vector<std::string>& numbers) {
        if (numbers.size() != 2) return;
        const auto x = numberIn(numbers[0]), y = numberIn(numbers[1]);
        if (x && y) table.pairs.emplace_back(*x, *y);
    }

    struct Found {
        const DataSet* set;
        const std::vector<std::string>* row;
    };

    /// All subjects of a name: an element is a substance too. With the set in
    /// front, as in "planet_mercury", only that one.
    [[nodiscard]] std::vector<Found> find(const std::string& subject) const {
        std::vector<Found> found;
        const std::string lower = lowerCase(subject);
        for (const DataSet& set : sets_) {
            const std::string one = set.name.substr(0, set.name.size() - 1) + "_";
            for (const auto& row : set.rows) {
                const std::string& name = set.cell(row, "name");
                if (name == lower || one + name == lower || set.cell(row, "symbol") == subject)
                    found.push_back({&set, &row});
            }
        }
        return found;
    }

    [[nodiscard]] const PairTable* findTable(const std::string& subject, const std::string& key) const {
        const auto place = std::ranges::find_if(
            tables_, [&](const PairTable& table) { return table.subject == subject && table.key == key; });
        return place == tables_.end() ? nullptr : &*place;
    }

    [[nodiscard]] std::optional<std::string> answer(const std::string& subject,
                                                    const std::string& rest) const {
        if (rest == "properties") return propertiesOf(subject);
        if (auto text = valueOf(subject, canonicalKey(rest))) return text;
        if (const PairTable* table = findTable(lowerCase(subject), canonicalKey(rest)))
            return pairsText(table->remark, table->pairs);
        if (auto text = valuesInSet(lowerCase(subject), canonicalKey(rest))) return text;
        return tableOf(subject, rest);
    }

    [[nodiscard]] std::optional<std::string> valueOf(const std::string& subject,
                                                     const std::string& key) const {
        for (const auto& [set, row] : find(subject)) {
            const int at = set->column(key);
            if (at < 0 || (*row)[at] == unknown) continue;
            const std::string remark = set->remark(subject, at);
            if (numberIn((*row)[at])) return remark + "\n" + (*row)[at] + "\n";
            return remark + "\n\\table\n1\n" + (*row)[at] + "\n";
        }
        return std::nullopt;
    }

    /// "SUBJECT_KEY" with "table" or a number behind it has been cut before its
    /// last word, so that the key stands at the end of the subject.
    [[nodiscard]] std::optional<std::string> tableOf(const std::string& subjectAndKey,
                                                     const std::string& rest) const {
        const std::string both = lowerCase(subjectAndKey);
        for (std::size_t end = both.find('_'); end != both.npos; end = both.find('_', end + 1)) {
            const PairTable* table = findTable(both.substr(0, end), canonicalKey(both.substr(end + 1)));
            if (!table) continue;
            if (rest == "table") return pairsText(table->remark, table->pairs);
            const auto number = numberIn(rest);
            const auto value = number ? table->at(*number) : std::nullopt;
            if (value) return table->remark + "\n" + numberText(*value) + "\n";
        }
        return std::nullopt;
    }

    [[nodiscard]] std::optional<std::string> valuesInSet(const std::string& name,
                                                         const std::string& key) const {
        for (const DataSet& set : sets_) {
            if (set.name != name) continue;
            if (key == "names") return namesIn(set);
            const int at = set.column(key);
            std::vector<std::pair<double, double>> pairs;
            for (std::size_t i = 0; at >= 0 && i < set.rows.size(); ++i)
                if (const auto value = numberIn(set.rows[i][at]))
                    pairs.emplace_back(static_cast<double>(i + 1), *value);
            if (!pairs.empty()) return pairsText(set.remark(name, at), pairs);
        }
        return std::nullopt;
    }

    static std::string pairsText(const std::string& remark,
                                 const std::vector<std::pair<double, double>>& pairs) {
        std::string text = remark + "\n\\pairs\n" + std::to_string(pairs.size()) + "\n";
        for (const auto& [x, y] : pairs) text += numberText(x) + " " + numberText(y) + "\n";
        return text;
    }

    static std::string linesText(const std::string& remark, const std::vector<std::string>& lines) {
        std::string text = remark + "\n\\table\n" + std::to_string(lines.size()) + "\n";
        for (const auto& line : lines) text += line + "\n";
        return text;
    }

    static std::string namesIn(const DataSet& set) {
        std::vector<std::string> names;
        for (const auto& row : set.rows) names.push_back(set.cell(row, "name"));
        return linesText("the names of the " + set.name, names);
    }

    [[nodiscard]] std::optional<std::string> formulaOf(const std::string& subject) const {
        for (const auto& [set, row] : find(subject))
            for (const std::string_view key : {"formula", "symbol"})
                if (const std::string& formula = set->cell(*row, key); formula != unknown)
                    return linesText("formula of " + subject, {formula});
        return std::nullopt;
    }

    [[nodiscard]] std::optional<std::string> propertiesOf(const std::string& subject) const {
        std::vector<std::string> lines;
        for (const auto& [set, row] : find(subject))
            for (std::size_t at = 0; at < row->size(); ++at) {
                if ((*row)[at] == unknown || set->columns[at].key == "name") continue;
                const std::string& unit = set->columns[at].unit;
                lines.push_back(set->columns[at].key + "  " + (*row)[at] +
                                (unit == unknown ? "" : " " + unit));
            }
        const std::string lower = lowerCase(subject);
        for (const PairTable& table : tables_)
            if (table.subject == lower) lines.push_back(table.key + "_table  " + table.remark);
        if (lines.empty()) return std::nullopt;
        return linesText("what is known of " + subject, lines);
    }

    std::vector<DataSet> sets_;
    std::vector<PairTable> tables_;
};

std::string joined(std::string text) {
    std::ranges::replace(text, ' ', '_');
    return text;
}

Status look(const std::string& query) {
    // No name of a subject with a property comes near; each of its words would be
    // tried as the end of one.
    constexpr std::size_t longestQuery = 500;
    if (query.size() > longestQuery) return failed;
    const std::filesystem::path folder = findDataFolder("properties");
    if (folder.empty()) return failed;
    constexpr std::string_view formula = "formula ";
    const bool asksFormula = query.starts_with(formula);
    const std::string tidy = asksFormula ? "formula " + joined(query.substr(formula.size())) : joined(query);
    const auto text = Database(folder).answer(tidy);
    return text && writeAnswer(resultFile, *text) ? answered : failed;
}

}  // namespace
}  // namespace vorpen::helper

int main(int count, char** arguments) {
    using namespace vorpen::helper;
    return count == 2 ? look(arguments[1]) : wrongArguments;
}
