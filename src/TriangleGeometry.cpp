#include "TriangleGeometry.h"

#include "Node.h"

#include <cmath>

void TriangleGeometry::update(const Node& n1, const Node& n2, const Node& n3) {
    const double x1 = n1.getX_pos(), y1 = n1.getY_pos(), z1 = n1.getZ_pos();
    const double a[3] = {n2.getX_pos() - x1, n2.getY_pos() - y1, n2.getZ_pos() - z1};
    const double b[3] = {n3.getX_pos() - x1, n3.getY_pos() - y1, n3.getZ_pos() - z1};
    update(a, b);
}

void TriangleGeometry::update(const double (&a)[3], const double (&b)[3]) {
    const double ax = a[0], ay = a[1], az = a[2];
    const double bx = b[0], by = b[1], bz = b[2];
    const double nx = ay * bz - az * by, ny = az * bx - ax * bz, nz = ax * by - ay * bx;
    const double la = std::sqrt(ax * ax + ay * ay + az * az);
    const double ln = std::sqrt(nx * nx + ny * ny + nz * nz);

    const double u1 = ax / la, u2 = ay / la, u3 = az / la;
    const double w1 = nx / ln, w2 = ny / ln, w3 = nz / ln;
    frame[0][0] = u1;
    frame[0][1] = u2;
    frame[0][2] = u3;
    frame[1][0] = w2 * u3 - w3 * u2;
    frame[1][1] = w3 * u1 - w1 * u3;
    frame[1][2] = w1 * u2 - w2 * u1;
    frame[2][0] = w1;
    frame[2][1] = w2;
    frame[2][2] = w3;

    twiceArea = ln;
    localX2 = la;
    localX3 = (bx * ax + by * ay + bz * az) / la;
    localY3 = ln / la;
}

double TriangleGeometry::stableStep(const Node& n1, const Node& n2, const Node& n3, double area,
                                    double waveSpeed) {
    auto squared = [](const Node& p, const Node& q) {
        const double dx = q.getX_pos() - p.getX_pos(), dy = q.getY_pos() - p.getY_pos(),
                     dz = q.getZ_pos() - p.getZ_pos();
        return dx * dx + dy * dy + dz * dz;
    };
    double longest = squared(n1, n2);
    const double l23 = squared(n2, n3), l31 = squared(n3, n1);
    if (l23 > longest) longest = l23;
    if (l31 > longest) longest = l31;
    return 0.1 * (2.0 * area / std::sqrt(longest)) / waveSpeed;
}

void TriangleGeometry::currentDirection(const double (&F)[2][2], const double (&d)[2],
                                        double (&out)[3]) const {
    const double p0 = F[0][0] * d[0] + F[0][1] * d[1];
    const double p1 = F[1][0] * d[0] + F[1][1] * d[1];
    double v[3], length2 = 0.0;
    for (int k = 0; k < 3; ++k) {
        v[k] = p0 * frame[0][k] + p1 * frame[1][k];
        length2 += v[k] * v[k];
    }
    const double length = std::sqrt(length2);
    if (!(length > 0.0) || !std::isfinite(length)) return;
    for (int k = 0; k < 3; ++k)
        out[k] = v[k] / length;
}

void TriangleGeometry::lumpMass(Node& n1, Node& n2, Node& n3, double mass, double thickness, double area) {
    const double I = nodalInertia(mass, thickness, area);
    TNT::Array2D<double> inertia(3, 3, 0.0);
    for (int r = 0; r < 3; ++r)
        inertia[r][r] = I;
    for (Node* n : {&n1, &n2, &n3}) {
        n->addMass(mass / 3.0);
        n->addInertia(inertia);
    }
}
