// Small linear-algebra operations on TNT arrays that Debian's TNT does not
// provide: matrix-vector products, transposed products, the 3D cross product
// and the explicit inverse of 2x2 and 3x3 matrices.
#pragma once

#include <tnt_array1d.h>
#include <tnt_array1d_utils.h>
#include <tnt_array2d.h>
#include <tnt_array2d_utils.h>

namespace TNT {

// y = A x
template <class T> Array1D<T> matmult(const Array2D<T>& A, const Array1D<T>& x) {
    const int m = A.dim1(), n = A.dim2();
    if (n != x.dim1()) return Array1D<T>();
    Array1D<T> y(m, T(0));
    for (int i = 0; i < m; ++i) {
        T s = 0;
        for (int j = 0; j < n; ++j)
            s += A[i][j] * x[j];
        y[i] = s;
    }
    return y;
}

// C = A^T B
template <class T> Array2D<T> transpose_mult(const Array2D<T>& A, const Array2D<T>& B) {
    if (A.dim1() != B.dim1()) return Array2D<T>();
    const int m = A.dim2(), n = B.dim2(), k = A.dim1();
    Array2D<T> C(m, n, T(0));
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) {
            T s = 0;
            for (int r = 0; r < k; ++r)
                s += A[r][i] * B[r][j];
            C[i][j] = s;
        }
    return C;
}

// y = A^T x
template <class T> Array1D<T> transpose_mult(const Array2D<T>& A, const Array1D<T>& x) {
    if (A.dim1() != x.dim1()) return Array1D<T>();
    const int m = A.dim2(), k = A.dim1();
    Array1D<T> y(m, T(0));
    for (int i = 0; i < m; ++i) {
        T s = 0;
        for (int r = 0; r < k; ++r)
            s += A[r][i] * x[r];
        y[i] = s;
    }
    return y;
}

template <class T> Array2D<T> transpose(const Array2D<T>& A) {
    Array2D<T> B(A.dim2(), A.dim1());
    for (int i = 0; i < A.dim1(); ++i)
        for (int j = 0; j < A.dim2(); ++j)
            B[j][i] = A[i][j];
    return B;
}

// c = a x b for three-component vectors
template <class T> Array1D<T> cross(const Array1D<T>& a, const Array1D<T>& b) {
    Array1D<T> c(3);
    c[0] = a[1] * b[2] - a[2] * b[1];
    c[1] = a[2] * b[0] - a[0] * b[2];
    c[2] = a[0] * b[1] - a[1] * b[0];
    return c;
}

template <class T> Array1D<T> operator*(const Array1D<T>& a, const T& s) {
    Array1D<T> c(a.dim1());
    for (int i = 0; i < a.dim1(); ++i)
        c[i] = a[i] * s;
    return c;
}

template <class T> Array2D<T> operator*(const Array2D<T>& A, const T& s) {
    Array2D<T> C(A.dim1(), A.dim2());
    for (int i = 0; i < A.dim1(); ++i)
        for (int j = 0; j < A.dim2(); ++j)
            C[i][j] = A[i][j] * s;
    return C;
}

// Explicit inverse of a 2x2 or 3x3 matrix: the adjugate divided by the
// determinant (expanded along the first row). A singular matrix, or one of
// another size, gives an empty 0x0 array.
template <class T> Array2D<T> invert(const Array2D<T>& A) {
    if (A.dim1() == 2 && A.dim2() == 2) {
        const T det = A[0][0] * A[1][1] - A[0][1] * A[1][0];
        if (det == T(0)) return Array2D<T>();
        Array2D<T> B(2, 2);
        B[0][0] = A[1][1] / det;
        B[0][1] = -A[0][1] / det;
        B[1][0] = -A[1][0] / det;
        B[1][1] = A[0][0] / det;
        return B;
    }
    if (A.dim1() == 3 && A.dim2() == 3) {
        const T c00 = A[1][1] * A[2][2] - A[1][2] * A[2][1];
        const T c01 = A[1][2] * A[2][0] - A[1][0] * A[2][2];
        const T c02 = A[1][0] * A[2][1] - A[1][1] * A[2][0];
        const T det = A[0][0] * c00 + A[0][1] * c01 + A[0][2] * c02;
        if (det == T(0)) return Array2D<T>();
        Array2D<T> B(3, 3);
        B[0][0] = c00 / det;
        B[1][0] = c01 / det;
        B[2][0] = c02 / det;
        B[0][1] = (A[0][2] * A[2][1] - A[0][1] * A[2][2]) / det;
        B[1][1] = (A[0][0] * A[2][2] - A[0][2] * A[2][0]) / det;
        B[2][1] = (A[0][1] * A[2][0] - A[0][0] * A[2][1]) / det;
        B[0][2] = (A[0][1] * A[1][2] - A[0][2] * A[1][1]) / det;
        B[1][2] = (A[0][2] * A[1][0] - A[0][0] * A[1][2]) / det;
        B[2][2] = (A[0][0] * A[1][1] - A[0][1] * A[1][0]) / det;
        return B;
    }
    return Array2D<T>();
}

} // namespace TNT
