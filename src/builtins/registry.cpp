// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/registry.h"

#include <math.h>

#include <algorithm>
#include <array>

#include "base/errors.h"
#include "builtins/array_bodies.h"
#include "builtins/bitmap_bodies.h"
#include "builtins/clock_bodies.h"
#include "builtins/console_bodies.h"
#include "builtins/constants.h"
#include "builtins/data_file_bodies.h"
#include "builtins/exact_bodies.h"
#include "builtins/fit_bodies.h"
#include "builtins/file_handle_bodies.h"
#include "builtins/function_bodies.h"
#include "builtins/integration_bodies.h"
#include "builtins/help_bodies.h"
#include "builtins/figure_bodies.h"
#include "builtins/interaction_bodies.h"
#include "builtins/language_bodies.h"
#include "builtins/linear_bodies.h"
#include "builtins/model_bodies.h"
#include "builtins/plot_bodies.h"
#include "builtins/plot_label_bodies.h"
#include "builtins/random_bodies.h"
#include "builtins/reduction_bodies.h"
#include "builtins/scalar_bodies.h"
#include "builtins/set_bodies.h"
#include "builtins/string_bodies.h"
#include "numerics/scalar_functions.h"

namespace vorpen {
namespace {

// ---- rows

template <class Body>
struct Row {
    std::string_view name;
    Body body;
    unsigned traits = NO_TRAIT;
};

struct GeneralRow {
    std::string_view name;
    GeneralBody body;
    int minArgs, maxArgs;
    unsigned traits = NO_TRAIT;
};

constexpr int noLimit = -1;

// ---- the tables; the order of the rows is the index

// clang-format off
constexpr Row<TicLikeBody> ticLikeTable[] = {
    {"tic", builtin::startClock},
    {"toc", builtin::elapsedMilliseconds},
    {"Toc", builtin::elapsedSeconds},
    {"fix", builtin::fixFrame},
    {"unfix", builtin::unfixFrame},
    {"rnd", builtin::uniformNumber},
    {"help", builtin::help},
    {"on", builtin::on},
    {"off", builtin::off},
    {"end", builtin::endOutsideIndex, END_OF_INDEX},
    {"update", builtin::updateFigure},
    {"getkeyb", builtin::keyDown},
    {"getch", builtin::readCharacter},
    {"pi", builtin::pi},
};

constexpr Row<AnsBody> ansTable[] = {
    {"ans", builtin::lastAnswer},
    {"true", builtin::trueValue},
    {"false", builtin::falseValue},
    {"exepath", builtin::programPath},
    {"oclock", builtin::timeOfDay},
    {"today", builtin::dateText},
};

constexpr Row<RealBody> realFuncTable[] = {
    {"sqrt", ::sqrt, THREAD_SAFE},
    {"exp", ::exp, THREAD_SAFE},
    {"sin", ::sin, THREAD_SAFE},
    {"cos", ::cos, THREAD_SAFE},
    {"tan", ::tan, THREAD_SAFE},
    {"asin", ::asin, THREAD_SAFE},
    {"acos", ::acos, THREAD_SAFE},
    {"atan", ::atan, THREAD_SAFE},
    {"log", ::log, THREAD_SAFE},
    {"ln", ::log, THREAD_SAFE},
    {"log10", ::log10, THREAD_SAFE},
    {"sinh", ::sinh, THREAD_SAFE},
    {"cosh", ::cosh, THREAD_SAFE},
    {"tanh", ::tanh, THREAD_SAFE},
    {"asinh", ::asinh, THREAD_SAFE},
    {"acosh", ::acosh, THREAD_SAFE},
    {"atanh", ::atanh, THREAD_SAFE},
    {"abs", ::fabs, THREAD_SAFE},
    {"erf", ::erf, THREAD_SAFE},
    {"erfc", ::erfc, THREAD_SAFE},
    {"gamma", ::tgamma, THREAD_SAFE},
    {"lgamma", builtin::logGamma, THREAD_SAFE},
    {"log2", log2Raised, THREAD_SAFE},
    {"sign", sign, THREAD_SAFE},
    {"fstep", fstep, THREAD_SAFE},
    {"tophat", tophat, THREAD_SAFE},
    {"floor", ::floor, THREAD_SAFE},
    {"ceil", ::ceil, THREAD_SAFE},
    {"ceiling", ::ceil, THREAD_SAFE},
    {"round", ::round, THREAD_SAFE},
    {"sinc", sinc, THREAD_SAFE},
    {"conj", builtin::realPart, THREAD_SAFE},
    {"real", builtin::realPart, THREAD_SAFE},
    {"imag", builtin::imaginaryPart, THREAD_SAFE},
    {"arg", phase, THREAD_SAFE},
    {"G", ::tgamma, THREAD_SAFE},
    {"besselj0", besselJ0},
    {"besselj1", besselJ1},
    {"airy", airy},
    {"isnan", nanFlag, THREAD_SAFE},
    {"erfinv", erfinv},
    {"zeta", zeta},
};

constexpr Row<IntBody> intFuncTable[] = {
    {"close", builtin::closeFigure},
    {"randseed", builtin::setSeed},
    {"pause", builtin::waitMilliseconds},
    {"wait", builtin::waitMilliseconds},
    {"lower", lowerCase},
    {"grid", builtin::setGrid},
    {"fclose", builtin::closeFile},
    {"feof", builtin::endOfFile},
    {"bitweight", bitWeight},
};

/// The rows that reduce a whole value; all others reduce columns.
constexpr std::size_t wholeValueToDoubleRows = 3;
constexpr Row<ValueToDoubleBody> valueToDoubleTable[] = {
    {"numeric_limits", builtin::numericLimits},
    {"trace", builtin::trace},
    {"grindex", builtin::componentCount},
    {"mean", builtin::mean},
    {"sumsq", builtin::sumOfSquares},
    {"variance", builtin::variance},
    {"stdev", builtin::standardDeviation},
    {"elsum", builtin::sumOfElements},
    {"min", builtin::minimum},
    {"max", builtin::maximum},
    {"range", builtin::range},
    {"prod", builtin::product},
    {"binteg", builtin::integralOfSamples},
    {"$lastElement", builtin::lastElement},
    {"norm", builtin::norm},
};

/// The rows that reduce columns; all others reduce a whole value.
constexpr std::size_t columnToIntRows = 6;
constexpr Row<ValueToIntBody> valueToIntTable[] = {
    {"all", builtin::allNonZero, LOGICAL},
    {"any", builtin::anyNonZero, LOGICAL},
    {"minind", builtin::minimumIndex},
    {"maxind", builtin::maximumIndex},
    {"find", builtin::firstNonZero},
    {"rfind", builtin::lastNonZero},
    {"size", builtin::size},
    {"nrow", builtin::rowCount},
    {"ncol", builtin::columnCount},
    {"type", builtin::formOf},
    {"typeinfo", builtin::markOf},
    {"isempty", builtin::isEmpty},
    {"isscalar", builtin::isScalar},
    {"isvector", builtin::isVector},
    {"figure", builtin::selectFigure, EMPTY_ARGUMENT},
    {"qplot", builtin::quickPlot},
    {"subplot", builtin::selectSubplot},
    {"isboolean", builtin::isBoolean},
    {"ischar", builtin::isString},
    {"setLU", builtin::factorise},
    {"messageBox", builtin::showBox},
    {"isdefined", builtin::isDefined},
    {"isnum", builtin::isNumber},
};

constexpr Row<BuiltinBody> vectorToDoubleTable[] = {
    {"seq", builtin::evenlySpaced},
    {"linspace", builtin::evenlySpaced},
    {"zeros", builtin::zeros},
    {"ones", builtin::ones},
    {"eye", builtin::identity},
    {"rand", builtin::uniformArray},
    {"randexp", builtin::exponentialArray},
    {"err", builtin::normalArray},
    {"cumsum", builtin::runningSum, PURE},
    {"reverse", builtin::reverse, PURE},
    {"shuffle", builtin::shuffle},
    {"diff", builtin::differences},
    {"diff2", builtin::secondDifferences},
    {"vdiffer", builtin::sampledDerivative},
    {"top", builtin::top},
    {"pop", builtin::pop},
    {"getmouse", builtin::mouseValues, EMPTY_ARGUMENT},
    {"setmouse", builtin::setMouseValue},
    {"getclick", builtin::waitForClick, EMPTY_ARGUMENT},
    {"unique", builtin::unique, PURE},
    {"colsums", builtin::columnSums},
    {"rowsums", builtin::rowSums},
    {"inv", builtin::inverse},
    {"det", builtin::determinant},
    {"eigval", builtin::eigenvalues},
    {"eigvec", builtin::eigenvectors},
    {"SGfilter", builtin::smoothingFilter},
    {"qpop", builtin::popFirst},
    {"zipkey", builtin::packKey},
    {"eval", builtin::evaluate},
};

constexpr Row<BuiltinBody> vectorToIntTable[] = {
    {"rat", builtin::rationalApproximation},
    {"whatis", builtin::closedForm},
    {"findall", builtin::findAll},
    {"irand", builtin::integerArray},
    {"unbinary", builtin::fromBinaryDigits},
    {"shape", builtin::shape},
    {"sortind", builtin::sortIndices},
    {"sortit", builtin::sortInPlace},
    {"polyshow", builtin::polynomialText},
    {"nextPerm", builtin::nextPermutation},
    {"prevPerm", builtin::previousPermutation},
    {"figpos", builtin::figurePosition, EMPTY_ARGUMENT},
    {"wipe", builtin::wipe, EMPTY_ARGUMENT},
    {"trim", builtin::trim},
    {"sortrows", builtin::sortedRowOrder},
    {"sysCommand", builtin::runSystemCommand},
    {"useColour", builtin::useColour},
    {"unzipg", builtin::components},
    {"getline", builtin::readLine},
    {"unzipkey", builtin::unpackKey},
};

/// The rows with parameters and points; all others have an optional second
/// argument.
constexpr std::size_t functorRows = 10;
constexpr Row<BuiltinBody> twoArgTable[] = {
    {"poly", builtin::polynomial},
    {"poisson", builtin::poisson},
    {"bnc", builtin::binomialCoefficient},
    {"interp", builtin::cubicInterpolation},
    {"qfind", builtin::positionInSorted},
    {"gauss", builtin::gaussian},
    {"lor", builtin::lorentzian},
    {"besselj", builtin::besselOfOrder},
    {"linterp", builtin::linearInterpolation},
    {"binomial", builtin::binomial},
    {"diag", builtin::diagonal},
    {"reshape", builtin::reshape},
    {"dragable", builtin::makeDragable},
    {"str", builtin::toText},
    {"push", builtin::push},
    {"replot_move", builtin::moveItem},
    {"sort", builtin::sort, PURE},
    {"issubset", builtin::isSubset},
    {"intersect", builtin::intersection},
    {"union", builtin::unionOf},
    {"setminus", builtin::difference},
    {"setxor", builtin::symmetricDifference},
    {"fopen", builtin::openFile},
    {"fread", builtin::readFile},
    {"fwrite", builtin::writeFile},
    {"swaprows", builtin::swapRows},
    {"solve", builtin::solveLinear},
    {"strfind", builtin::findText},
    {"findstr", builtin::findText},
    {"str2num", builtin::toNumber},
    {"before", builtin::before},
    {"error", builtin::fail},
    {"smooth", builtin::smoothed},
    {"circle", builtin::circle},
    {"getpixel", builtin::pixelColour},
    {"loadBitmap", builtin::loadBitmap},
    {"binary", builtin::binaryDigits},
};

/// The first rows return lists, the next complex numbers, then integers; the
/// rest returns doubles.
constexpr std::size_t listRows = 4, complexRows = 4, integerRows = 27;
constexpr GeneralRow generalTable[] = {
    {"dir", builtin::listDirectory, 0, 1, WORD_FORM},
    {"list", builtin::makeList, 0, noLimit, ANY_ARGUMENT},
    {"split", builtin::split, 1, 3},
    {"readtext", builtin::readLines, 1, 1},
    {"complex", builtin::complexFromParts, 2, 2},
    {"fft", builtin::fourierForward, 1, 1, ANY_ARGUMENT},
    {"ifft", builtin::fourierBackward, 1, 1, ANY_ARGUMENT},
    {"cdiag", builtin::complexDiagonal, 1, 1, ANY_ARGUMENT},
    {"plot", builtin::plot, 1, noLimit},
    {"loglog", builtin::loglog, 1, noLimit},
    {"semilogx", builtin::semilogx, 1, noLimit},
    {"semilogy", builtin::semilogy, 1, noLimit},
    {"disp", builtin::display, 1, noLimit, ANY_ARGUMENT},
    {"cd", builtin::changeDirectory, 0, 1, WORD_FORM},
    {"errbar", builtin::errorBars, 3, 3},
    {"barchart", builtin::barChart, 2, 3},
    {"replot", builtin::replot, 0, 3},
    {"text", builtin::text, 2, 5},
    {"title", builtin::title, 1, 2},
    {"xlabel", builtin::labelX, 1, 2},
    {"ylabel", builtin::labelY, 1, 2},
    {"fill", builtin::fill, 2, noLimit},
    {"assert", builtin::assertTrue, 1, noLimit},
    {"debug", builtin::switchBreakpoints, 0, noLimit},
    {"createButton", builtin::createButton, 1, 3},
    {"menu", builtin::createMenus, 2, 2, ANY_ARGUMENT},
    {"dispfile", builtin::showFile, 1, 2},
    {"join", builtin::join, 1, 2, ANY_ARGUMENT},
    {"print", builtin::printFigure, 1, 1},
    {"save", builtin::saveTable, 2, noLimit, ANY_ARGUMENT},
    {"qsave", builtin::saveValue, 2, 2, ANY_ARGUMENT},
    {"writetext", builtin::writeLines, 2, 2, ANY_ARGUMENT},
    {"pad", builtin::pad, 2, 4},
    {"snipImage", builtin::snipImage, 2, 3},
    {"fplot", builtin::functionPlot, 1, 3},
    {"axis", builtin::axis, 1, 4, EMPTY_ARGUMENT},
    {"load", builtin::loadTable, 1, 2},
    {"qload", builtin::loadValue, 1, 1, TYPED_BY_FILE},
    {"slf", builtin::straightLineFit, 2, 4},
    {"debugtest", builtin::shakeFigure, 0, noLimit},
    {"property", builtin::property, 2, 3, WORD_FORM},
    {"$multiassign", builtin::assignEach, 1, noLimit},
    {"fzero", builtin::fzero, 1, 5, KEEPS_RESULT},
    {"differ", builtin::differ, 1, 3},
    {"fminbrac", builtin::fminbrac, 2, 3},
    {"fmin", builtin::fmin, 2, 3},
    {"sum", builtin::sum, 1, 3},
    {"table", builtin::table, 2, 3},
    {"lsfit", builtin::curveFit, 4, 7},
    {"qinteg", builtin::qinteg, 2, 4},
    {"integ", builtin::integ, 0, noLimit},
    {"eigvv", builtin::eigenSystem, 1, 1},
    {"set", builtin::setParameter, 0, 2},
    {"ode", builtin::ode, 5, 5},
    {"odetest", builtin::odetest, 5, 5},
};
// clang-format on

// ---- complex variants

struct ComplexPair {
    RealBody real;
    ComplexVariant variant;
};

/// Pairs in the order in which they are entered. `conj` and `real` share one
/// body, so the later pair, the real part, holds for both.
constexpr ComplexPair complexPairs[] = {
    {::sqrt, {builtin::complexSqrt, COMPLEX_VAL}},
    {::exp, {builtin::complexExp, COMPLEX_VAL}},
    {::log, {builtin::complexLog, COMPLEX_VAL}},
    {::sin, {builtin::complexSin, COMPLEX_VAL}},
    {::cos, {builtin::complexCos, COMPLEX_VAL}},
    {::tan, {builtin::complexTan, COMPLEX_VAL}},
    {::sinh, {builtin::complexSinh, COMPLEX_VAL}},
    {::cosh, {builtin::complexCosh, COMPLEX_VAL}},
    {::tanh, {builtin::complexTanh, COMPLEX_VAL}},
    {builtin::realPart, {builtin::complexConjugate, COMPLEX_VAL}},
    {builtin::realPart, {builtin::complexRealPart, DOUBLE_VAL}},
    {builtin::imaginaryPart, {builtin::complexImaginaryPart, DOUBLE_VAL}},
    {::fabs, {builtin::complexModulus, DOUBLE_VAL}},
    {phase, {builtin::complexPhase, DOUBLE_VAL}},
};

// ---- all rows by name

constexpr std::size_t builtinCount = std::size(ticLikeTable) + std::size(ansTable) + std::size(realFuncTable) +
                                     std::size(intFuncTable) + std::size(valueToDoubleTable) +
                                     std::size(valueToIntTable) + std::size(vectorToDoubleTable) +
                                     std::size(vectorToIntTable) + std::size(twoArgTable) + std::size(generalTable);

struct ArgumentLimits {
    int minArgs, maxArgs;
};

constexpr ArgumentLimits limitsOf(BuiltinKind kind) {
    switch (kind) {
        case TICLIKE: return {0, 0};
        case ANSFUNC: return {0, 1};
        case TWOARG: return {1, 2};
        case FUNCTOR: return {2, 2};
        default: return {1, 1};
    }
}

constexpr int generalResultType(std::size_t row) {
    if (row < listRows) return LIST_VAL;
    if (row < listRows + complexRows) return COMPLEX_VAL;
    return row < listRows + complexRows + integerRows ? INTEGER_VAL : DOUBLE_VAL;
}

using Registry = std::array<BuiltinInfo, builtinCount>;

consteval Registry makeRegistry() {
    Registry all;
    std::size_t n = 0;
    // The first rows of some tables are of another kind than the rest.
    const auto add = [&](const auto& table, int resultType, BuiltinKind kind, std::size_t otherRows = 0,
                         BuiltinKind otherKind = GENERAL) {
        int index = 0;
        for (const auto& row : table) {
            const BuiltinKind its = static_cast<std::size_t>(index) < otherRows ? otherKind : kind;
            const auto [least, most] = limitsOf(its);
            all[n++] = {row.name, its, index++, resultType, least, most, row.traits, BuiltinBody(row.body)};
        }
    };
    add(ticLikeTable, DOUBLE_VAL, TICLIKE);
    add(ansTable, DOUBLE_VAL, ANSFUNC);
    add(realFuncTable, DOUBLE_VAL, SCALAR2SCALAR);
    add(intFuncTable, INTEGER_VAL, SCALAR2SCALAR);
    add(valueToDoubleTable, DOUBLE_VAL, COLUMN2SCALAR, wholeValueToDoubleRows, VALUE2SCALAR);
    add(valueToIntTable, INTEGER_VAL, VALUE2SCALAR, columnToIntRows, COLUMN2SCALAR);
    add(vectorToDoubleTable, DOUBLE_VAL, VECTOR2VECTOR);
    add(vectorToIntTable, INTEGER_VAL, VECTOR2VECTOR);
    add(twoArgTable, DOUBLE_VAL, TWOARG, functorRows, FUNCTOR);
    int index = 0;
    for (const GeneralRow& row : generalTable) {
        const int type = generalResultType(static_cast<std::size_t>(index));
        all[n++] = {row.name, GENERAL, index++, type, row.minArgs, row.maxArgs, row.traits, BuiltinBody(row.body)};
    }
    std::ranges::sort(all, {}, &BuiltinInfo::name);
    return all;
}

constexpr Registry registry = makeRegistry();
static_assert(std::ranges::adjacent_find(registry, {}, &BuiltinInfo::name) == registry.end());

}  // namespace

const BuiltinInfo* findBuiltin(std::string_view name) {
    const auto place = std::ranges::lower_bound(registry, name, {}, &BuiltinInfo::name);
    return place != registry.end() && place->name == name ? &*place : nullptr;
}

std::span<const BuiltinInfo> allBuiltins() { return registry; }

std::optional<ComplexVariant> complexVariantOf(RealBody body) {
    const auto pair = std::find_if(std::rbegin(complexPairs), std::rend(complexPairs),
                                   [body](const ComplexPair& p) { return p.real == body; });
    if (pair == std::rend(complexPairs)) return std::nullopt;
    return pair->variant;
}

ComplexVariantCounts complexVariantCounts() {
    std::vector<RealBody> functions;
    for (const ComplexPair& pair : complexPairs)
        if (std::ranges::find(functions, pair.real) == functions.end()) functions.push_back(pair.real);
    return {static_cast<int>(functions.size()), static_cast<int>(std::size(complexPairs))};
}

}  // namespace vorpen
