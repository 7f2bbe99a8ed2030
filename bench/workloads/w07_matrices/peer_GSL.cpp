// SPDX-License-Identifier: GPL-3.0-or-later
// flags: -lgsl -lopenblas
// The eigenvalue routines that ours call, with one thread as ours has there.
#include <gsl/gsl_eigen.h>

#include "../timed.h"

extern "C" void openblas_set_num_threads(int);

int main() {
    const std::size_t n = 400;
    const Numbers w = fractions(n * n, 0, 0.414213562373095);
    Numbers m(n * n), values(n), vectors(n * n);
    openblas_set_num_threads(1);
    gsl_vector_view eval = gsl_vector_view_array(values.data(), n);
    gsl_matrix_view evec = gsl_matrix_view_array(vectors.data(), n, n);
    gsl_eigen_symm_workspace* const forValues = gsl_eigen_symm_alloc(n);
    gsl_eigen_symmv_workspace* const forVectors = gsl_eigen_symmv_alloc(n);
    const auto matrix = [&] {
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t i = 0; i < n; ++i) m[i + j * n] = w[i + j * n] + w[j + i * n];
        return gsl_matrix_view_array(m.data(), n, n);
    };
    for (int r = 0; r < 5; ++r) {
        gsl_matrix_view a = matrix();
        timed("eigval", 1, [&] { gsl_eigen_symm(&a.matrix, &eval.vector, forValues); });
        a = matrix();
        timed("eigvec", 1, [&] {
            gsl_eigen_symmv(&a.matrix, &eval.vector, &evec.matrix, forVectors);
            gsl_eigen_symmv_sort(&eval.vector, &evec.matrix, GSL_EIGEN_SORT_ABS_ASC);
        });
    }
    gsl_eigen_symm_free(forValues);
    gsl_eigen_symmv_free(forVectors);
}
