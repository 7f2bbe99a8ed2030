// SPDX-License-Identifier: GPL-3.0-or-later

// How many digits the fits reach on problems with certified results. Each
// problem of a file is given to the program as a user would give it, and the
// answers are compared with the certified ones.
//
//     regression-accuracy FILE           prints the table of docs/accuracy.md
//     regression-accuracy --check FILE   fails when a fit falls below the
//                                        digits that the file asks of it
//
// The digits of a number are -log10 of its relative error, at most those that
// are certified; of a set of numbers they are those of the worst.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/calc.h"
#include "numerics/line_fit.h"
#include "test_host.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

/// Digits of the parameters and of their standard errors.
struct Digits {
    double parameters = 0, errors = 0;
    bool converged = true;
};

struct Start {
    std::string parameters;
    Digits standard, tight;  ///< asked for, with the tolerance left out and with the tightest
};

struct Problem {
    std::string name, model;
    double certifiedDigits = 11;
    std::vector<Start> starts;
    Numbers parameters, errors;
    double sumOfSquares = 0;
    Numbers x, y;

    [[nodiscard]] double degreesOfFreedom() const {
        return static_cast<double>(x.size()) - static_cast<double>(parameters.size());
    }
};

Numbers numbersIn(std::istream& text) {
    Numbers numbers;
    for (std::string word; text >> word;) {
        double value = 0;
        const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (fault != std::errc{} || end != word.data() + word.size())
            throw std::runtime_error("no number: " + word);
        numbers.push_back(value);
    }
    return numbers;
}

std::string restOf(std::istream& text) {
    std::string rest;
    std::getline(text >> std::ws, rest);
    return rest;
}

void readLine(const std::string& line, std::vector<Problem>& problems) {
    std::istringstream text(line);
    std::string key;
    text >> key;
    if (key == "problem") {
        problems.emplace_back().name = restOf(text);
        return;
    }
    Problem& problem = problems.back();
    if (key == "certified") {
        problem.certifiedDigits = numbersIn(text).at(0);
    } else if (key == "model") {
        problem.model = restOf(text);
    } else if (key == "start") {
        problem.starts.push_back({restOf(text), {}, {}});
    } else if (key == "reached") {
        const Numbers digits = numbersIn(text);
        Start& start = problem.starts.back();
        start.standard = {digits.at(0), digits.at(1)};
        start.tight = {digits.at(2), digits.at(3)};
    } else if (key == "parameters") {
        problem.parameters = numbersIn(text);
    } else if (key == "errors") {
        problem.errors = numbersIn(text);
    } else if (key == "squares") {
        problem.sumOfSquares = numbersIn(text).at(0);
    } else {
        std::istringstream pair(line);
        const Numbers point = numbersIn(pair);
        problem.x.push_back(point.at(0));
        problem.y.push_back(point.at(1));
    }
}

std::vector<Problem> readProblems(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::vector<Problem> problems;
    for (std::string line; std::getline(file, line);)
        if (!line.empty() && line[0] != '#') readLine(line, problems);
    return problems;
}

double digitsOf(std::span<const double> found, std::span<const double> certified, double most) {
    if (found.size() != certified.size()) return 0;
    double digits = most;
    for (std::size_t i = 0; i < certified.size(); ++i) {
        // An error of 0 is certified where the model is exact; it has no digits to compare.
        if (certified[i] == 0) continue;
        const double deviation = std::fabs(found[i] - certified[i]) / std::fabs(certified[i]);
        const double reached = -std::log10(deviation);
        if (!(reached > 0)) return 0;
        digits = std::min(digits, reached);
    }
    return digits;
}

/// An engine that fits.
class Session {
public:
    Session() : host_("/"), calc_(host_, true) {
        calc_.console().setLineListener([this](const std::string& line) { printed_.push_back(line); });
    }

    void run(const std::string& line) {
        calc_.beginInput(line, 's');
        calc_.run();
        calc_.console().endLine();
    }

    void set(const std::string& name, const Numbers& numbers) {
        run(name + "=[0.0,0.0];");
        DoubleValue& variable = find(name);
        variable.setSizeShapeMark(static_cast<std::int64_t>(numbers.size()), 1, FORM_NUMERIC);
        std::ranges::copy(numbers, variable.data());
    }

    Digits fit(const Problem& problem, const std::string& start, const std::string& options) {
        run("f(p,x) := " + problem.model);
        set("x", problem.x);
        set("y", problem.y);
        std::istringstream text(start);
        set("p0", numbersIn(text));
        run("p=[]; e=[]; s=[];");
        printed_.clear();
        run("[p,e,s]=lsfit(f,p0,x,y" + options + ");");
        Digits digits;
        digits.converged = printed_.empty();
        digits.parameters = digitsOf(find("p").items(), problem.parameters, problem.certifiedDigits);
        // The fit took errors of 1; the certified ones are from the residuals.
        Numbers errors(find("e").items().begin(), find("e").items().end());
        if (find("s").size() == 2)
            for (double& error : errors) error *= std::sqrt(find("s")[0] / problem.degreesOfFreedom());
        digits.errors = digitsOf(errors, problem.errors, problem.certifiedDigits);
        return digits;
    }

    /// Digits of the sum of squares at the certified parameters: whether the
    /// problem is the published one.
    double digitsOfData(const Problem& problem) {
        run("f(p,x) := " + problem.model);
        set("x", problem.x);
        set("y", problem.y);
        set("p", problem.parameters);
        run("s=sumsq(y-f(p,x));");
        if (problem.sumOfSquares == 0) return find("s")[0] < 1e-9 ? problem.certifiedDigits : 0;
        return digitsOf(find("s").items(), std::span(&problem.sumOfSquares, 1), problem.certifiedDigits);
    }

private:
    DoubleValue& find(const std::string& name) { return asDouble(*calc_.symbols().classify(name).found); }

    TestHost host_;
    Calc calc_;
    std::vector<std::string> printed_;
};

/// The straight line of `slf`, with the errors from the residuals.
Digits straightLine(const Problem& problem) {
    const double one = 1;
    const LineFit fit = fitLine(problem.x, problem.y, {&one, 1});
    const double error = std::sqrt(fit.chi2 / problem.degreesOfFreedom());
    Digits digits;
    digits.parameters = digitsOf(Numbers{fit.a, fit.b}, problem.parameters, problem.certifiedDigits);
    digits.errors =
        digitsOf(Numbers{fit.sigmaA * error, fit.sigmaB * error}, problem.errors, problem.certifiedDigits);
    return digits;
}

/// The least that `lsfit` can be asked for; only a change of exactly 0 is less.
constexpr const char* tightest = ",[],[0,1e-300]";

std::string cells(const Digits& digits) {
    char text[64];
    std::snprintf(text, sizeof text, " %.1f | %.1f%s |", digits.parameters, digits.errors,
                  digits.converged ? "" : " *");
    return text;
}

bool falls(const Digits& reached, const Digits& asked, const std::string& what) {
    if (reached.parameters >= asked.parameters && reached.errors >= asked.errors) return false;
    std::printf("FAILED %s: %.2f and %.2f digits, less than %.2f and %.2f\n", what.c_str(),
                reached.parameters, reached.errors, asked.parameters, asked.errors);
    return true;
}

int measure(const std::vector<Problem>& problems, bool check) {
    if (!check)
        std::printf(
            "| problem | start | parameters | errors | parameters, tight | errors, tight |\n"
            "|---|---|---|---|---|---|\n");
    Session session;
    int failures = 0, fits = 0;
    for (const Problem& problem : problems) {
        // A few digits are lost where a model cancels.
        if (session.digitsOfData(problem) < 6) {
            std::printf("FAILED %s: not the published sum of squares\n", problem.name.c_str());
            ++failures;
        }
        if (problem.name == "Norris") {
            const Digits line = straightLine(problem);
            if (!check) std::printf("| Norris, `slf` | |%s | |\n", cells(line).c_str());
            failures += falls(line, {11, 11}, "Norris, slf");
        }
        int number = 0;
        for (const Start& start : problem.starts) {
            const std::string what = problem.name + ", start " + std::to_string(++number);
            const Digits standard = session.fit(problem, start.parameters, "");
            const Digits tight = session.fit(problem, start.parameters, tightest);
            failures += falls(standard, start.standard, what) + falls(tight, start.tight, what + ", tight");
            ++fits;
            if (!check)
                std::printf("| %s | %d |%s%s\n", problem.name.c_str(), number, cells(standard).c_str(),
                            cells(tight).c_str());
        }
    }
    if (check)
        std::printf("%d fits of %zu problems, %d below their digits\n", fits, problems.size(), failures);
    return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace vorpen

int main(int argc, char** argv) {
    const bool check = argc == 3 && std::string_view(argv[1]) == "--check";
    if (argc != (check ? 3 : 2)) {
        std::fprintf(stderr, "usage: regression-accuracy [--check] FILE\n");
        return 2;
    }
    try {
        return vorpen::measure(vorpen::readProblems(argv[argc - 1]), check);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s\n", fault.what());
        return 2;
    }
}
