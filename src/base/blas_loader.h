// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The BLAS behind GSL, loaded on first use. Loading OpenBLAS takes about two
// milliseconds and four megabytes and starts its threads, which a session that
// multiplies no matrix should not pay for; so it is not linked. The source
// file defines every `cblas_` routine that GSL's BLAS interface calls, each of
// which finds the routine of the same name in the loaded library the first
// time it is called and hands the call over. GSL itself is linked statically
// and needs no change. Where OpenBLAS is missing, GSL's own slow BLAS takes
// its place.

namespace vorpen {

/// Loads a BLAS unless one is loaded. False when there is none.
bool ensureBlas();

/// Loads a BLAS; raises a PlainFailure when there is none. Code that calls
/// GSL's BLAS or eigenvalue routines calls this first, so that the failure
/// does not pass through GSL.
void requireBlas();

/// Whether the loaded BLAS is OpenBLAS.
bool isOpenBlas();

/// The number of threads of the BLAS; 1 for one that has none.
int blasThreads();

/// Sets the number of threads; without effect on a BLAS that has none.
void setBlasThreads(int count);

/// Keeps the BLAS to one thread for the life of the guard. GSL's eigenvalue
/// routines make very many short calls, which threads only slow down.
class OneBlasThread {
public:
    OneBlasThread();
    ~OneBlasThread();
    OneBlasThread(const OneBlasThread&) = delete;
    OneBlasThread& operator=(const OneBlasThread&) = delete;

private:
    int before;
};

}  // namespace vorpen
