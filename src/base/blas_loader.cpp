// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/blas_loader.h"

#include <dlfcn.h>
#include <gsl/gsl_cblas.h>

#include <cstddef>
#include <string>
#include <tuple>

#include "base/errors.h"

namespace vorpen {
namespace {

struct BlasLibrary {
    void* handle = nullptr;  ///< never closed: its threads live as long as the program
    void (*setThreads)(int) = nullptr;
    int (*getThreads)() = nullptr;
};

template <typename Function>
Function* findSymbol(void* library, const char* name) {
    return library ? reinterpret_cast<Function*>(dlsym(library, name)) : nullptr;
}

const BlasLibrary& blasLibrary() {
    static const BlasLibrary library = [] {
        BlasLibrary found;
        for (const char* file : {"libopenblas.so.0", "libgslcblas.so.0"}) {
            found.handle = dlopen(file, RTLD_NOW | RTLD_LOCAL);
            if (found.handle) break;
        }
        found.setThreads = findSymbol<void(int)>(found.handle, "openblas_set_num_threads");
        found.getThreads = findSymbol<int()>(found.handle, "openblas_get_num_threads");
        return found;
    }();
    return library;
}

/// The routine of the loaded library. The failure can only arise when the
/// caller did not ask for the BLAS first.
template <typename Function>
Function* findRoutine(const char* name) {
    requireBlas();
    Function* const routine = findSymbol<Function>(blasLibrary().handle, name);
    if (!routine) throw PlainFailure{std::string("the BLAS library has no routine ") + name};
    return routine;
}

template <typename Function>
struct Signature;

template <typename R, typename... A>
struct Signature<R(A...)> {
    using Result = R;
    template <std::size_t i>
    using Argument = std::tuple_element_t<i, std::tuple<A...>>;
};

}  // namespace

bool ensureBlas() { return blasLibrary().handle != nullptr; }

void requireBlas() {
    if (!ensureBlas()) throw PlainFailure{"matrix routines are not available: libopenblas.so.0 is missing"};
}

bool isOpenBlas() { return blasLibrary().setThreads != nullptr; }

int blasThreads() {
    auto* const get = blasLibrary().getThreads;
    return get ? get() : 1;
}

void setBlasThreads(int count) {
    auto* const set = blasLibrary().setThreads;
    if (set && count > 0) set(count);
}

OneBlasThread::OneBlasThread() : before(blasThreads()) { setBlasThreads(1); }

OneBlasThread::~OneBlasThread() { setBlasThreads(before); }

}  // namespace vorpen

// A routine of C linkage needs its name and its parameters spelt out, which no
// template can do. A row below gives the number of parameters and the name;
// their types are taken from the declaration of the routine.

#define VORPEN_TYPE(f, i) vorpen::Signature<decltype(f)>::Argument<i>

#define VORPEN_PARAMETERS_3(f) VORPEN_TYPE(f, 0) a0, VORPEN_TYPE(f, 1) a1, VORPEN_TYPE(f, 2) a2
#define VORPEN_PARAMETERS_4(f) VORPEN_PARAMETERS_3(f), VORPEN_TYPE(f, 3) a3
#define VORPEN_PARAMETERS_5(f) VORPEN_PARAMETERS_4(f), VORPEN_TYPE(f, 4) a4
#define VORPEN_PARAMETERS_6(f) VORPEN_PARAMETERS_5(f), VORPEN_TYPE(f, 5) a5
#define VORPEN_PARAMETERS_7(f) VORPEN_PARAMETERS_6(f), VORPEN_TYPE(f, 6) a6
#define VORPEN_PARAMETERS_8(f) VORPEN_PARAMETERS_7(f), VORPEN_TYPE(f, 7) a7
#define VORPEN_PARAMETERS_9(f) VORPEN_PARAMETERS_8(f), VORPEN_TYPE(f, 8) a8
#define VORPEN_PARAMETERS_10(f) VORPEN_PARAMETERS_9(f), VORPEN_TYPE(f, 9) a9
#define VORPEN_PARAMETERS_11(f) VORPEN_PARAMETERS_10(f), VORPEN_TYPE(f, 10) a10
#define VORPEN_PARAMETERS_12(f) VORPEN_PARAMETERS_11(f), VORPEN_TYPE(f, 11) a11
#define VORPEN_PARAMETERS_13(f) VORPEN_PARAMETERS_12(f), VORPEN_TYPE(f, 12) a12
#define VORPEN_PARAMETERS_14(f) VORPEN_PARAMETERS_13(f), VORPEN_TYPE(f, 13) a13

#define VORPEN_ARGUMENTS_3 a0, a1, a2
#define VORPEN_ARGUMENTS_4 VORPEN_ARGUMENTS_3, a3
#define VORPEN_ARGUMENTS_5 VORPEN_ARGUMENTS_4, a4
#define VORPEN_ARGUMENTS_6 VORPEN_ARGUMENTS_5, a5
#define VORPEN_ARGUMENTS_7 VORPEN_ARGUMENTS_6, a6
#define VORPEN_ARGUMENTS_8 VORPEN_ARGUMENTS_7, a7
#define VORPEN_ARGUMENTS_9 VORPEN_ARGUMENTS_8, a8
#define VORPEN_ARGUMENTS_10 VORPEN_ARGUMENTS_9, a9
#define VORPEN_ARGUMENTS_11 VORPEN_ARGUMENTS_10, a10
#define VORPEN_ARGUMENTS_12 VORPEN_ARGUMENTS_11, a11
#define VORPEN_ARGUMENTS_13 VORPEN_ARGUMENTS_12, a12
#define VORPEN_ARGUMENTS_14 VORPEN_ARGUMENTS_13, a13

// Hidden, so that the library loaded never binds its own calls to these.
#define FORWARD(n, f)                                                                  \
    extern "C" [[gnu::visibility("hidden")]] vorpen::Signature<decltype(f)>::Result f( \
        VORPEN_PARAMETERS_##n(f)) {                                                    \
        static auto* const routine = vorpen::findRoutine<decltype(f)>(#f);             \
        return routine(VORPEN_ARGUMENTS_##n);                                          \
    }

// clang-format off
// Vectors with vectors
FORWARD(3, cblas_snrm2)      FORWARD(3, cblas_dnrm2)      FORWARD(3, cblas_scnrm2)     FORWARD(3, cblas_dznrm2)
FORWARD(3, cblas_sasum)      FORWARD(3, cblas_dasum)      FORWARD(3, cblas_scasum)     FORWARD(3, cblas_dzasum)
FORWARD(3, cblas_isamax)     FORWARD(3, cblas_idamax)     FORWARD(3, cblas_icamax)     FORWARD(3, cblas_izamax)
FORWARD(6, cblas_sdsdot)     FORWARD(5, cblas_dsdot)      FORWARD(5, cblas_sdot)       FORWARD(5, cblas_ddot)
FORWARD(6, cblas_cdotu_sub)  FORWARD(6, cblas_zdotu_sub)
FORWARD(6, cblas_cdotc_sub)  FORWARD(6, cblas_zdotc_sub)
FORWARD(5, cblas_sswap)      FORWARD(5, cblas_dswap)      FORWARD(5, cblas_cswap)      FORWARD(5, cblas_zswap)
FORWARD(5, cblas_scopy)      FORWARD(5, cblas_dcopy)      FORWARD(5, cblas_ccopy)      FORWARD(5, cblas_zcopy)
FORWARD(6, cblas_saxpy)      FORWARD(6, cblas_daxpy)      FORWARD(6, cblas_caxpy)      FORWARD(6, cblas_zaxpy)
FORWARD(4, cblas_sscal)      FORWARD(4, cblas_dscal)      FORWARD(4, cblas_cscal)      FORWARD(4, cblas_zscal)
FORWARD(4, cblas_csscal)     FORWARD(4, cblas_zdscal)
FORWARD(4, cblas_srotg)      FORWARD(4, cblas_drotg)
FORWARD(5, cblas_srotmg)     FORWARD(5, cblas_drotmg)
FORWARD(7, cblas_srot)       FORWARD(7, cblas_drot)
FORWARD(6, cblas_srotm)      FORWARD(6, cblas_drotm)
// Matrices with vectors
FORWARD(12, cblas_sgemv)     FORWARD(12, cblas_dgemv)     FORWARD(12, cblas_cgemv)     FORWARD(12, cblas_zgemv)
FORWARD(9, cblas_strmv)      FORWARD(9, cblas_dtrmv)      FORWARD(9, cblas_ctrmv)      FORWARD(9, cblas_ztrmv)
FORWARD(9, cblas_strsv)      FORWARD(9, cblas_dtrsv)      FORWARD(9, cblas_ctrsv)      FORWARD(9, cblas_ztrsv)
FORWARD(11, cblas_ssymv)     FORWARD(11, cblas_dsymv)
FORWARD(11, cblas_chemv)     FORWARD(11, cblas_zhemv)
FORWARD(10, cblas_sger)      FORWARD(10, cblas_dger)
FORWARD(10, cblas_cgeru)     FORWARD(10, cblas_zgeru)
FORWARD(10, cblas_cgerc)     FORWARD(10, cblas_zgerc)
FORWARD(8, cblas_ssyr)       FORWARD(8, cblas_dsyr)
FORWARD(8, cblas_cher)       FORWARD(8, cblas_zher)
FORWARD(10, cblas_ssyr2)     FORWARD(10, cblas_dsyr2)
FORWARD(10, cblas_cher2)     FORWARD(10, cblas_zher2)
// Matrices with matrices
FORWARD(14, cblas_sgemm)     FORWARD(14, cblas_dgemm)     FORWARD(14, cblas_cgemm)     FORWARD(14, cblas_zgemm)
FORWARD(13, cblas_ssymm)     FORWARD(13, cblas_dsymm)     FORWARD(13, cblas_csymm)     FORWARD(13, cblas_zsymm)
FORWARD(13, cblas_chemm)     FORWARD(13, cblas_zhemm)
FORWARD(11, cblas_ssyrk)     FORWARD(11, cblas_dsyrk)     FORWARD(11, cblas_csyrk)     FORWARD(11, cblas_zsyrk)
FORWARD(11, cblas_cherk)     FORWARD(11, cblas_zherk)
FORWARD(13, cblas_ssyr2k)    FORWARD(13, cblas_dsyr2k)    FORWARD(13, cblas_csyr2k)    FORWARD(13, cblas_zsyr2k)
FORWARD(13, cblas_cher2k)    FORWARD(13, cblas_zher2k)
FORWARD(12, cblas_strmm)     FORWARD(12, cblas_dtrmm)     FORWARD(12, cblas_ctrmm)     FORWARD(12, cblas_ztrmm)
FORWARD(12, cblas_strsm)     FORWARD(12, cblas_dtrsm)     FORWARD(12, cblas_ctrsm)     FORWARD(12, cblas_ztrsm)
    // clang-format on
